// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/OpenConfigReader.h"

#include <algorithm>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "agent/config/OpenConfigSchema.h"
#include "agent/config/VlanList.h"

namespace Agent {

namespace {

constexpr std::string_view kVlanIds = "1..4094";
constexpr std::string_view kSwap = "SWAP";
constexpr UnusedReason kNoMapping = { "matched without an ingress-mapping", UnusedKind::known };

constexpr std::string_view kTagged = "single-tagged";
constexpr std::string_view kTaggedList = "single-tagged-list";
constexpr std::string_view kTaggedRange = "single-tagged-range";
constexpr std::string_view kMatches = "single-tagged, single-tagged-list, single-tagged-range";

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

// Calls `each( Place )` for the interfaces.
template < typename Each >
void
forEachInterface( const Place& top, const Each& each ) {
   if ( const auto interfaces = top.member( "openconfig-interfaces:interfaces" ) ) {
      forEachEntry( interfaces->member( "interface" ), "name", each );
   }
}

// Calls `each( Place )` for the subinterfaces of an interface.
template < typename Each >
void
forEachSubinterface( const Place& interface, const Each& each ) {
   if ( const auto subinterfaces = interface.member( "subinterfaces" ) ) {
      forEachEntry( subinterfaces->member( "subinterface" ), "index", each );
   }
}

class OpenConfigReader {
 public:
   explicit OpenConfigReader( Document& document ) : document_( document ) {}

   std::vector< Port > read( const Place& top ) {
      // All names first: a member may stand before its aggregate.
      forEachInterface( top, [ & ]( const Place& interface ) {
         interfaceNames_.insert( textOf( interface.member( "name" ) ) );
      } );
      forEachInterface( top, [ & ]( const Place& interface ) {
         PortState state;
         state.port.name = textOf( interface.member( "name" ) );
         readAggregate( interface, state.port );
         forEachSubinterface( interface, [ & ]( const Place& entry ) {
            if ( const auto vlan = entry.member( "openconfig-vlan:vlan" ) ) {
               const auto leaf = entry.member( "index" );
               const std::uint64_t* index = leaf ? leaf->value().unsignedInteger() : nullptr;
               readVlan( *vlan, static_cast< std::uint32_t >( index ? *index : 0 ), state );
            }
         } );
         finishPort( state );
      } );
      return std::move( ports_ );
   }

 private:
   void readAggregate( const Place& interface, Port& port ) {
      const auto ethernet = interface.member( "openconfig-if-ethernet:ethernet" );
      const auto config = ethernet ? ethernet->member( "config" ) : std::nullopt;
      const auto leaf =
         config ? config->member( "openconfig-if-aggregate:aggregate-id" ) : std::nullopt;
      if ( !leaf || !leaf->value().string() ) {
         return;
      }
      port.lag = *leaf->value().string();
      if ( !interfaceNames_.contains( *port.lag ) ) {
         document_.finding( *leaf, "names no interface of this file",
                            "the name of an interface of this file" );
      } else if ( *port.lag == port.name ) {
         document_.finding( *leaf, "is the interface itself", "the name of another interface" );
      }
   }

   void readVlan( const Place& place, std::uint32_t subinterface, PortState& state ) {
      const auto match = place.member( "match" );
      const auto ingress = place.member( "ingress-mapping" );
      const auto egress = place.member( "egress-mapping" );
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

   // The VIDs that this subinterface is the first of its port to match. Without a mapping the
   // match has no effect, and may be anything that the model allows.
   std::vector< std::uint16_t > readMatch( const Place& place, bool hasMapping,
                                           std::uint32_t subinterface, PortState& state ) {
      std::vector< std::uint16_t > vlans;
      const auto claim = [ & ]( const Place& where, std::uint16_t low, std::uint16_t high ) {
         claimVlans( where, low, high, { 0, subinterface, where.value().line }, state.matched,
                     vlans );
         if ( !hasMapping ) {
            document_.unused( where, kNoMapping );
         }
      };
      std::size_t kinds = 0;
      bool anyUnknown = false;   // which has been reported
      const JsonObject* members = place.value().object();
      for ( std::size_t i = 0; members && i < members->size(); ++i ) {
         const Place kind( place, ( *members )[ i ] );
         const std::string_view name = kind.name();
         if ( name == kTagged ) {
            readTagged( kind, hasMapping, claim );
         } else if ( name == kTaggedList ) {
            readTaggedList( kind, hasMapping, claim );
         } else if ( name == kTaggedRange ) {
            readTaggedRange( kind, hasMapping, claim );
         } else if ( !name.starts_with( "double-tagged" ) ) {
            anyUnknown = anyUnknown || name.find( ':' ) == std::string_view::npos;
            continue;
         } else if ( hasMapping ) {
            document_.finding( kind, "is not supported by this agent", kMatches );
         }
         ++kinds;
      }
      if ( hasMapping && kinds > 1 ) {
         document_.finding( place, "", fmt::format( "has {} kinds of match", kinds ),
                            "one kind in each subinterface" );
      } else if ( hasMapping && members && kinds == 0 && !anyUnknown ) {
         document_.finding( place, "", "has no kind of match", kMatches );
      }
      return vlans;
   }

   // Neither is something else than an object, which has been reported.
   static bool isWhole( const Place& parent, const std::optional< Place >& config ) {
      return parent.value().object() && ( !config || config->value().object() );
   }

   // The leaf that a mapped match cannot do without.
   std::optional< Place > matchLeaf( const std::optional< Place >& config, const Place& kind,
                                     std::string_view name, bool needed,
                                     std::string_view allowed = kVlanIds ) {
      auto leaf = config ? config->member( name ) : std::nullopt;
      if ( !leaf && needed && isWhole( kind, config ) ) {
         document_.missing( kind, fmt::format( "config/{}", name ), allowed );
      }
      return leaf;
   }

   template < typename Claim >
   void readTagged( const Place& kind, bool needed, const Claim& claim ) {
      const auto config = kind.member( "config" );
      const auto leaf = matchLeaf( config, kind, "vlan-id", needed );
      if ( const std::uint16_t vlan = vlanIdOf( leaf ) ) {
         claim( *leaf, vlan, vlan );
      }
   }

   template < typename Claim >
   void readTaggedList( const Place& kind, bool needed, const Claim& claim ) {
      constexpr std::string_view kVlanIdArray = "an array of one or more VIDs 1..4094";
      const auto config = kind.member( "config" );
      const auto leaf = matchLeaf( config, kind, "vlan-ids", needed, kVlanIdArray );
      const JsonArray* items = leaf ? leaf->value().array() : nullptr;
      if ( items && items->empty() && needed ) {
         document_.finding( *leaf, "is empty", kVlanIdArray );
      }
      for ( std::size_t i = 0; items && i < items->size(); ++i ) {
         const Place item( *leaf, i, ( *items )[ i ] );
         if ( const std::uint16_t vlan = vlanIdOf( &item.value() ) ) {
            claim( item, vlan, vlan );
         }
      }
   }

   template < typename Claim >
   void readTaggedRange( const Place& kind, bool needed, const Claim& claim ) {
      const auto config = kind.member( "config" );
      const std::uint16_t low = vlanIdOf( matchLeaf( config, kind, "low-vlan-id", needed ) );
      const auto highLeaf = matchLeaf( config, kind, "high-vlan-id", needed );
      const std::uint16_t high = vlanIdOf( highLeaf );
      if ( low == 0 || high == 0 ) {
         return;
      }
      if ( low <= high ) {
         claim( *config, low, high );
      } else if ( needed ) {
         document_.finding( *highLeaf, fmt::format( "is below low-vlan-id {}", low ),
                            fmt::format( "{}..{}", low, kMaxVlanId ) );
      }
   }

   // Takes the VIDs low..high for one subinterface. Those that others have already are one finding,
   // for a few lines of text can clash with each other in very many places.
   void claimVlans( const Place& where, std::uint16_t low, std::uint16_t high, const Word& word,
                    Words& matched, std::vector< std::uint16_t >& vlans ) {
      std::vector< std::uint16_t > taken;
      const Word* first = nullptr;
      bool anyOther = false;
      for ( std::uint16_t vlan = low; vlan <= high; ++vlan ) {
         Word& earlier = matched[ vlan ];
         if ( earlier.line == 0 ) {
            earlier = word;
            vlans.push_back( vlan );
         } else if ( earlier.subinterface != word.subinterface ) {
            first = first ? first : &earlier;
            anyOther = anyOther || earlier.subinterface != first->subinterface;
            taken.push_back( vlan );
         }
      }
      if ( first ) {
         document_.finding( where, formatVlanList( taken ),
                            fmt::format( "is already matched in subinterface {} on line {}{}",
                                         first->subinterface, first->line,
                                         anyOther ? " and in others" : "" ),
                            "each VID once on one port" );
      }
   }

   // Reads a mapping and gives `use( leaf, vlan )` the VID that a tag is swapped to.
   template < typename Use >
   void readSwap( const Place& mapping, const Use& use ) {
      const auto config = mapping.member( "config" );
      const auto action = config ? config->member( "vlan-stack-action" ) : std::nullopt;
      if ( !action ) {
         if ( isWhole( mapping, config ) ) {
            document_.missing( mapping, "config/vlan-stack-action", kSwap );
         }
         return;
      }
      const std::string name = textOf( action );
      if ( name == "PUSH" || name == "POP" ) {
         document_.finding( *action, "is not supported by this agent", kSwap );
      } else if ( name == kSwap ) {
         const auto leaf = config->member( "vlan-id" );
         if ( !leaf ) {
            document_.missing( *config, "vlan-id", kVlanIds );
         }
         if ( const std::uint16_t vlan = vlanIdOf( leaf ) ) {
            use( *leaf, vlan );
         }
      }
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

// How many VIDs a subinterface matches and maps.
std::uint64_t
mappingsOf( const Place& subinterface ) {
   const auto vlan = subinterface.member( "openconfig-vlan:vlan" );
   const auto match = vlan ? vlan->member( "match" ) : std::nullopt;
   if ( !match || !vlan->member( "ingress-mapping" ) ) {
      return 0;
   }
   const JsonValue* list = match->valueBelow( "single-tagged-list/config/vlan-ids" );
   const JsonArray* ids = list ? list->array() : nullptr;
   const std::uint16_t low =
      vlanIdOf( match->valueBelow( "single-tagged-range/config/low-vlan-id" ) );
   const std::uint16_t high =
      vlanIdOf( match->valueBelow( "single-tagged-range/config/high-vlan-id" ) );
   return ( match->valueBelow( "single-tagged/config/vlan-id" ) ? 1U : 0U ) +
          ( ids ? ids->size() : 0U ) +
          ( low != 0 && high >= low ? std::uint64_t( high - low ) + 1 : 0U );
}

}   // namespace

std::uint64_t
countOpenConfigMappings( const Place& top ) {
   std::uint64_t count = 0;
   forEachInterface( top, [ & ]( const Place& interface ) {
      forEachSubinterface( interface,
                           [ & ]( const Place& entry ) { count += mappingsOf( entry ); } );
   } );
   return count;
}

std::vector< Port >
readOpenConfig( Document& document, const Place& top ) {
   return OpenConfigReader( document ).read( top );
}

}   // namespace Agent
