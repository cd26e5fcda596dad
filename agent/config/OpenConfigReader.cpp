// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/OpenConfigReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "agent/config/InterfaceTypes.h"
#include "agent/config/VlanList.h"

namespace Agent {

namespace {

constexpr std::string_view kVlanIds = "1..4094";
constexpr std::string_view kIndexes = "0..4294967295";
constexpr std::string_view kSwap = "SWAP";
constexpr std::string_view kNoMapping = "matched without an ingress-mapping";
constexpr std::string_view kStackActions[] = { "PUSH", "POP", "SWAP" };

constexpr std::string_view kTagged = "single-tagged";
constexpr std::string_view kTaggedList = "single-tagged-list";
constexpr std::string_view kTaggedRange = "single-tagged-range";
constexpr std::string_view kMatches = "single-tagged, single-tagged-list, single-tagged-range";
constexpr std::string_view kDoubleTagged[] = {
   "double-tagged",
   "double-tagged-inner-list",
   "double-tagged-outer-list",
   "double-tagged-inner-range",
   "double-tagged-outer-range",
   "double-tagged-inner-outer-range",
};

constexpr std::string_view kTpidNames[] = { "TPID_0X8100", "TPID_0X88A8", "TPID_0X9100",
                                            "TPID_0X9200", "TPID_ANY" };
constexpr IdentitySet kTpids = {
   "openconfig-vlan-types", kTpidNames,
   "an identity of openconfig-vlan-types: TPID_0X8100, TPID_0X88A8, TPID_0X9100, TPID_0X9200, "
   "TPID_ANY" };

// Where a port said something about a VID, so that a second word can name the first.
struct Word {
   std::uint16_t vlan = 0;
   std::uint32_t subinterface = 0;
   // 0 where nothing was said.
   std::size_t line = 0;
};
// Not on the stack: where memory is limited, one that cannot grow ends the process by a signal.
using Words = std::vector< Word >;
constexpr std::size_t kWords = kMaxVlanId + 1;

struct PortState {
   Port port;
   // By VID on the wire.
   Words matched = Words( kWords );
   // By relay VID; the word's vlan is the one on the way out.
   Words egress = Words( kWords );
};

class OpenConfigReader {
 public:
   explicit OpenConfigReader( Document& document ) : document_( document ) {}

   std::vector< Port > read( const JsonValue& root ) {
      const Place top( root );
      Members members( document_, top );
      if ( const auto interfaces = members.take( "openconfig-interfaces:interfaces" ) ) {
         Members inner( document_, *interfaces );
         if ( const auto list = inner.take( "interface" ) ) {
            readInterfaces( *list );
         }
         inner.finish();
      }
      members.finish();
      return std::move( ports_ );
   }

 private:
   void readInterfaces( const Place& list ) {
      // All names first: a member may stand before its aggregate.
      const JsonArray* entries = list.value().array();
      for ( std::size_t i = 0; entries && i < entries->size(); ++i ) {
         const JsonValue* name = keyOfEntry( ( *entries )[ i ], list.module(), "name" );
         if ( name && name->string() ) {
            interfaceNames_.insert( *name->string() );
         }
      }
      KeyRegister names;
      forEachEntry( document_, list, "name", [ & ]( const Place& entry ) {
         Members members( document_, entry );
         PortState state;
         Port& port = state.port;
         if ( const auto leaf = members.require( "name", "a name" ) ) {
            if ( const auto name = document_.name( *leaf ) ) {
               names.add( document_, *leaf, *name );
               port.name = *name;
            }
         }
         if ( const auto config = members.take( "config" ) ) {
            readInterfaceConfig( *config, port.name );
         } else if ( members.isObject() ) {
            document_.missing( entry, "config/type", kInterfaceTypes.allowed );
         }
         if ( const auto ethernet = members.take( "openconfig-if-ethernet:ethernet" ) ) {
            readEthernet( *ethernet, port );
         }
         if ( const auto subinterfaces = members.take( "subinterfaces" ) ) {
            Members inner( document_, *subinterfaces );
            if ( const auto inside = inner.take( "subinterface" ) ) {
               readSubinterfaces( *inside, state );
            }
            inner.finish();
         }
         members.finish();
         finishPort( state );
      } );
   }

   // `name` is the key of the list entry, empty where that is wrong itself.
   void readInterfaceConfig( const Place& place, const std::string& name ) {
      Members members( document_, place );
      if ( const auto leaf = members.take( "name" ) ) {
         const auto value = document_.string( *leaf );
         if ( value && !name.empty() && *value != name ) {
            document_.finding( *leaf, "differs from the key of its list entry",
                               fmt::format( "\"{}\"", shownText( name ) ) );
         }
      }
      if ( const auto leaf = members.require( "type", kInterfaceTypes.allowed ) ) {
         document_.identity( *leaf, kInterfaceTypes );
         document_.unused( *leaf, kCheckedOnly );
      }
      members.finish();
   }

   void readEthernet( const Place& place, Port& port ) {
      Members members( document_, place );
      if ( const auto config = members.take( "config" ) ) {
         Members inner( document_, *config );
         if ( const auto leaf = inner.take( "openconfig-if-aggregate:aggregate-id" ) ) {
            port.lag = document_.string( *leaf );
            if ( port.lag && !interfaceNames_.contains( *port.lag ) ) {
               document_.finding( *leaf, "names no interface of this file",
                                  "the name of an interface of this file" );
            } else if ( port.lag && *port.lag == port.name ) {
               document_.finding( *leaf, "is the interface itself",
                                  "the name of another interface" );
            }
         }
         inner.finish();
      }
      members.finish();
   }

   void readSubinterfaces( const Place& list, PortState& state ) {
      KeyRegister indexes;
      forEachEntry( document_, list, "index", [ & ]( const Place& entry ) {
         Members members( document_, entry );
         std::optional< std::uint32_t > index;
         if ( const auto leaf = members.require( "index", kIndexes ) ) {
            index = document_.unsigned32( *leaf );
            if ( index ) {
               indexes.add( document_, *leaf, std::to_string( *index ) );
            }
         }
         if ( const auto config = members.take( "config" ) ) {
            readSubinterfaceConfig( *config, index );
         }
         if ( const auto vlan = members.take( "openconfig-vlan:vlan" ) ) {
            readVlan( *vlan, index.value_or( 0 ), state );
         }
         members.finish();
      } );
   }

   void readSubinterfaceConfig( const Place& place, std::optional< std::uint32_t > index ) {
      Members members( document_, place );
      if ( const auto leaf = members.take( "index" ) ) {
         const auto value = document_.unsigned32( *leaf );
         if ( value && index && *value != *index ) {
            document_.finding( *leaf, "differs from the key of its list entry",
                               std::to_string( *index ) );
         }
      }
      members.finish();
   }

   void readVlan( const Place& place, std::uint32_t subinterface, PortState& state ) {
      Members members( document_, place );
      const auto match = members.take( "match" );
      const auto ingress = members.take( "ingress-mapping" );
      const auto egress = members.take( "egress-mapping" );
      std::vector< std::uint16_t > vlans;
      if ( match ) {
         vlans = readMatch( *match, ingress.has_value(), subinterface, state );
      } else if ( ingress ) {
         document_.missing( place, "match", kMatches );
      }
      std::uint16_t relay = 0;
      if ( ingress ) {
         readSwap( *ingress, [ & ]( const Place&, std::uint16_t vlan ) { relay = vlan; } );
      } else if ( egress ) {
         document_.missing( place, "ingress-mapping",
                            "a SWAP, which tells the relay VID of the egress-mapping" );
      }
      if ( egress ) {
         readSwap( *egress, [ & ]( const Place& leaf, std::uint16_t vlan ) {
            if ( relay != 0 ) {
               addEgress( leaf, { vlan, subinterface, leaf.value().line }, relay, state );
            }
         } );
      }
      members.finish();
      for ( const std::uint16_t vlan : vlans ) {
         if ( relay != 0 ) {
            state.port.ingress.push_back( { vlan, relay } );
         }
      }
   }

   void addEgress( const Place& leaf, const Word& word, std::uint16_t relay, PortState& state ) {
      Word& first = state.egress[ relay ];
      if ( first.line == 0 ) {
         first = word;
         state.port.egress.push_back( { relay, word.vlan } );
      } else if ( first.vlan != word.vlan ) {
         document_.finding(
            leaf,
            fmt::format( "conflicts with {} for relay VID {} in subinterface {} on line {}",
                         first.vlan, relay, first.subinterface, first.line ),
            "one egress VID for each relay VID of a port" );
      }
   }

   // The VIDs that this subinterface is the first of its port to match.
   std::vector< std::uint16_t > readMatch( const Place& place, bool hasMapping,
                                           std::uint32_t subinterface, PortState& state ) {
      Members members( document_, place );
      std::vector< std::uint16_t > vlans;
      std::size_t kinds = 0;
      const auto claim = [ & ]( const Place& where, std::uint16_t low, std::uint16_t high ) {
         claimVlans( where, low, high, { 0, subinterface, where.value().line }, state.matched,
                     vlans );
         if ( !hasMapping ) {
            document_.unused( where, kNoMapping );
         }
      };
      const auto readKind = [ & ]( std::string_view kind, const auto& read ) {
         if ( const auto container = members.take( kind ) ) {
            ++kinds;
            readMatchKind( *container, read, claim );
         }
      };
      readKind( kTagged, &OpenConfigReader::readTagged< decltype( claim ) > );
      readKind( kTaggedList, &OpenConfigReader::readTaggedList< decltype( claim ) > );
      readKind( kTaggedRange, &OpenConfigReader::readTaggedRange< decltype( claim ) > );
      for ( const std::string_view kind : kDoubleTagged ) {
         if ( const auto container = members.take( kind ) ) {
            ++kinds;
            if ( hasMapping ) {
               document_.finding( *container, "is not supported by this agent", kMatches );
            } else {
               document_.unusedBelow( *container );
            }
         }
      }
      if ( kinds > 1 ) {
         document_.finding( place, "", fmt::format( "has {} kinds of match", kinds ),
                            "one kind in each subinterface" );
      } else if ( kinds == 0 && hasMapping && members.isObject() ) {
         document_.finding( place, "", "has no kind of match", kMatches );
      }
      members.finish();
      return vlans;
   }

   template < typename Read, typename Claim >
   void readMatchKind( const Place& container, const Read& read, const Claim& claim ) {
      Members members( document_, container );
      if ( const auto config = members.require( "config", "an object" ) ) {
         Members inner( document_, *config );
         ( this->*read )( inner, claim );
         inner.finish();
      }
      members.finish();
   }

   template < typename Claim >
   void readTagged( Members& config, const Claim& claim ) {
      const auto leaf = config.require( "vlan-id", kVlanIds );
      if ( const std::uint16_t vlan = document_.vlanId( leaf ) ) {
         claim( *leaf, vlan, vlan );
      }
   }

   template < typename Claim >
   void readTaggedList( Members& config, const Claim& claim ) {
      constexpr std::string_view kVlanIdArray = "an array of one or more VIDs 1..4094";
      const auto leaf = config.require( "vlan-ids", kVlanIdArray );
      const JsonArray* items = leaf ? leaf->value().array() : nullptr;
      if ( leaf && !items ) {
         document_.wrongType( *leaf, kVlanIdArray );
      } else if ( items && items->empty() ) {
         document_.finding( *leaf, "is empty", kVlanIdArray );
      }
      for ( std::size_t i = 0; items && i < items->size(); ++i ) {
         const Place item( *leaf, i, ( *items )[ i ] );
         if ( const std::uint16_t vlan = document_.vlanId( item ) ) {
            claim( item, vlan, vlan );
         }
      }
   }

   template < typename Claim >
   void readTaggedRange( Members& config, const Claim& claim ) {
      const auto lowLeaf = config.require( "low-vlan-id", kVlanIds );
      const auto highLeaf = config.require( "high-vlan-id", kVlanIds );
      const std::uint16_t low = document_.vlanId( lowLeaf );
      const std::uint16_t high = document_.vlanId( highLeaf );
      if ( low == 0 || high == 0 ) {
         return;
      }
      if ( low > high ) {
         document_.finding( *highLeaf, fmt::format( "is below low-vlan-id {}", low ),
                            fmt::format( "{}..{}", low, kMaxVlanId ) );
      } else {
         claim( config.place(), low, high );
      }
   }

   // Takes the VIDs low..high for one subinterface. Those that another one has already are
   // one finding for each of the others.
   void claimVlans( const Place& where, std::uint16_t low, std::uint16_t high, const Word& word,
                    Words& matched, std::vector< std::uint16_t >& vlans ) {
      std::map< std::pair< std::size_t, std::uint32_t >, std::vector< std::uint16_t > > taken;
      for ( std::uint16_t vlan = low; vlan <= high; ++vlan ) {
         Word& first = matched[ vlan ];
         if ( first.line != 0 ) {
            taken[ { first.line, first.subinterface } ].push_back( vlan );
         } else {
            first = word;
            vlans.push_back( vlan );
         }
      }
      for ( const auto& [ first, ids ] : taken ) {
         document_.finding( where, formatVlanList( ids ),
                            fmt::format( "is already matched in subinterface {} on line {}",
                                         first.second, first.first ),
                            "each VID once on one port" );
      }
   }

   // Reads a mapping and gives `use( leaf, vlan )` the VID that a tag is swapped to.
   template < typename Use >
   void readSwap( const Place& mapping, const Use& use ) {
      Members members( document_, mapping );
      const auto config = members.take( "config" );
      if ( !config ) {
         if ( members.isObject() ) {
            document_.missing( mapping, "config/vlan-stack-action", kSwap );
         }
         members.finish();
         return;
      }
      Members inner( document_, *config );
      const auto actionLeaf = inner.require( "vlan-stack-action", kSwap );
      const auto action =
         actionLeaf ? document_.enumeration( *actionLeaf, kStackActions ) : std::nullopt;
      if ( action && *action != kSwap ) {
         document_.finding( *actionLeaf, "is not supported by this agent", kSwap );
      }
      const bool swaps = action == kSwap;
      const auto vlanLeaf = swaps ? inner.require( "vlan-id", kVlanIds ) : inner.take( "vlan-id" );
      const std::uint16_t vlan = document_.vlanId( vlanLeaf );
      if ( const auto leaf = inner.take( "tpid" ) ) {
         document_.identity( *leaf, kTpids );
         document_.unused( *leaf, kCheckedOnly );
      }
      if ( swaps && vlan != 0 ) {
         use( *vlanLeaf, vlan );
      }
      inner.finish();
      members.finish();
   }

   void finishPort( PortState& state ) {
      std::sort( state.port.ingress.begin(), state.port.ingress.end(),
                 []( const auto& a, const auto& b ) { return a.vlan < b.vlan; } );
      std::sort( state.port.egress.begin(), state.port.egress.end(),
                 []( const auto& a, const auto& b ) { return a.relay < b.relay; } );
      ports_.push_back( std::move( state.port ) );
   }

   Document& document_;
   std::set< std::string > interfaceNames_;
   std::vector< Port > ports_;
};

}   // namespace

std::vector< Port >
readOpenConfig( Document& document, const JsonValue& root ) {
   return OpenConfigReader( document ).read( root );
}

}   // namespace Agent
