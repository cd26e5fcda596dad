// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Ieee8021qReader.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>
#include <string_view>
#include <vector>

#include <fmt/format.h>

#include "agent/config/InterfaceTypes.h"

namespace Agent {

namespace {

constexpr std::string_view kModule = "ieee802-dot1q-bridge";
constexpr std::string_view kVlanIds = "1..4094";
constexpr std::string_view kEnableIngress = "enable-vid-translation-table";
constexpr std::string_view kEnableEgress = "enable-egress-vid-translation-table";
constexpr std::string_view kIngressOff = "enable-vid-translation-table is false";
constexpr std::string_view kEgressOff = "enable-egress-vid-translation-table is false";

constexpr std::string_view kBridgeTypeNames[] = {
   "customer-vlan-bridge", "provider-bridge", "provider-edge-bridge", "two-port-mac-relay-bridge" };
constexpr IdentitySet kBridgeTypes = {
   kModule, kBridgeTypeNames,
   "customer-vlan-bridge, provider-bridge, provider-edge-bridge, two-port-mac-relay-bridge" };

constexpr std::string_view kComponentTypeNames[] = { "c-vlan-component", "s-vlan-component",
                                                     "d-bridge-component", "edge-relay-component" };
constexpr IdentitySet kComponentTypes = {
   kModule, kComponentTypeNames,
   "c-vlan-component, s-vlan-component, d-bridge-component, edge-relay-component" };

constexpr std::string_view kPortTypeNames[] = {
   "c-vlan-bridge-port", "provider-network-port", "customer-network-port",
   "customer-edge-port", "d-bridge-port",         "remote-customer-access-port" };
constexpr IdentitySet kPortTypes = {
   kModule, kPortTypeNames,
   "c-vlan-bridge-port, provider-network-port, customer-network-port, customer-edge-port, "
   "d-bridge-port, remote-customer-access-port" };

// The interface types that can be a bridge port.
constexpr std::string_view kBridgePortTypes[] = { "bridge", "ethernetCsmacd", "ieee8023adLag",
                                                  "ilan" };

constexpr std::size_t kMaxBridgeName = 32;

// Component name to component type.
using Components = std::map< std::string, std::string_view >;

struct TableEntry {
   std::uint16_t key;
   std::uint16_t value;
};

// One kind of translation table.
struct TableKind {
   std::string_view list;
   std::string_view key;
   std::string_view value;
};
constexpr TableKind kIngressTable = { "vid-translations", "local-vid", "relay-vid" };
constexpr TableKind kEgressTable = { "egress-vid-translations", "relay-vid", "local-vid" };

struct SeenVlan {
   std::uint16_t partner = 0;
   std::size_t line = 0;
};
// Not on the stack: where memory is limited, one that cannot grow ends the process by a signal.
using SeenVlans = std::vector< SeenVlan >;
constexpr std::size_t kSeenVlans = kMaxVlanId + 1;

bool
isMacAddress( std::string_view text ) {
   constexpr std::size_t kLength = 17;
   for ( std::size_t i = 0; i < text.size(); ++i ) {
      const bool fits =
         i % 3 == 2 ? text[ i ] == '-' : std::isxdigit( static_cast< unsigned char >( text[ i ] ) );
      if ( !fits ) {
         return false;
      }
   }
   return text.size() == kLength;
}

std::size_t
characters( std::string_view utf8 ) {
   return static_cast< std::size_t >( std::count_if( utf8.begin(), utf8.end(), []( char c ) {
      return ( static_cast< unsigned char >( c ) & 0xc0 ) != 0x80;
   } ) );
}

class Ieee8021qReader {
 public:
   explicit Ieee8021qReader( Document& document ) : document_( document ) {}

   std::vector< Port > read( const JsonValue& root ) {
      const Place top( root );
      Members members( document_, top );
      // First the bridges: ports refer to them, wherever they stand in the text.
      if ( const auto bridges = members.take( "ieee802-dot1q-bridge:bridges" ) ) {
         Members inner( document_, *bridges );
         if ( const auto list = inner.take( "bridge" ) ) {
            readBridges( *list );
         }
         inner.finish();
      }
      if ( const auto interfaces = members.take( "ietf-interfaces:interfaces" ) ) {
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
   void readBridges( const Place& list ) {
      KeyRegister names;
      KeyRegister addresses;
      forEachEntry( document_, list, "name", [ & ]( const Place& entry ) {
         Members members( document_, entry );
         std::string bridge;
         if ( const auto leaf = members.require( "name", "a name" ) ) {
            const auto name = document_.name( *leaf );
            if ( name && characters( *name ) > kMaxBridgeName ) {
               document_.finding( *leaf, "is too long", "a name of 1..32 characters" );
            } else if ( name && names.add( document_, *leaf, *name ) ) {
               bridge = *name;
            }
         }
         constexpr std::string_view kAddress = "six octets such as \"02-00-5E-00-53-01\"";
         if ( const auto leaf = members.require( "address", kAddress ) ) {
            readAddress( *leaf, kAddress, addresses );
         }
         readIdentity( members.require( "bridge-type", kBridgeTypes.allowed ), kBridgeTypes );
         Components& components = bridges_[ bridge ];
         if ( const auto leaf = members.take( "component" ) ) {
            readComponents( *leaf, components );
         }
         members.finish();
      } );
      // Bridges without a usable name cannot be referred to.
      bridges_.erase( "" );
   }

   void readAddress( const Place& leaf, std::string_view allowed, KeyRegister& addresses ) {
      std::optional< std::string > address = document_.string( leaf );
      if ( !address ) {
         return;
      }
      if ( !isMacAddress( *address ) ) {
         document_.finding( leaf, "is not a MAC address", allowed );
         return;
      }
      std::transform( address->begin(), address->end(), address->begin(), []( char c ) {
         return static_cast< char >( std::toupper( static_cast< unsigned char >( c ) ) );
      } );
      addresses.add( document_, leaf, *address );
      document_.unused( leaf, kCheckedOnly );
   }

   void readComponents( const Place& list, Components& components ) {
      KeyRegister names;
      forEachEntry( document_, list, "name", [ & ]( const Place& entry ) {
         Members members( document_, entry );
         std::optional< std::string > component;
         if ( const auto leaf = members.require( "name", "a name" ) ) {
            component = document_.name( *leaf );
            if ( component ) {
               names.add( document_, *leaf, *component );
            }
         }
         const std::string_view type =
            readIdentity( members.require( "type", kComponentTypes.allowed ), kComponentTypes );
         if ( component ) {
            components.emplace( *component, type );
         }
         members.finish();
      } );
   }

   // The identity, empty where there is none.
   std::string_view readIdentity( const std::optional< Place >& leaf,
                                  const IdentitySet& identities ) {
      if ( !leaf ) {
         return {};
      }
      document_.unused( *leaf, kCheckedOnly );
      return document_.identity( *leaf, identities ).value_or( std::string_view() );
   }

   void readInterfaces( const Place& list ) {
      KeyRegister names;
      forEachEntry( document_, list, "name", [ & ]( const Place& entry ) {
         Members members( document_, entry );
         Port port;
         if ( const auto leaf = members.require( "name", "a name" ) ) {
            if ( const auto name = document_.name( *leaf ) ) {
               names.add( document_, *leaf, *name );
               port.name = *name;
            }
         }
         const std::string_view type =
            readIdentity( members.require( "type", kInterfaceTypes.allowed ), kInterfaceTypes );
         if ( const auto bridgePort = members.take( "ieee802-dot1q-bridge:bridge-port" ) ) {
            if ( !type.empty() &&
                 std::find( std::begin( kBridgePortTypes ), std::end( kBridgePortTypes ), type ) ==
                    std::end( kBridgePortTypes ) ) {
               document_.finding( *bridgePort, "",
                                  fmt::format( "an interface of type {} is no bridge port", type ),
                                  "types bridge, ethernetCsmacd, ieee8023adLag, ilan" );
            }
            readBridgePort( *bridgePort, port );
         }
         members.finish();
         ports_.push_back( std::move( port ) );
      } );
   }

   void readBridgePort( const Place& place, Port& port ) {
      Members members( document_, place );
      readIdentity( members.take( "port-type" ), kPortTypes );
      const bool ingressOn = readFlag( members, kEnableIngress );
      const bool egressOn = readFlag( members, kEnableEgress );
      const auto ingressList = members.take( kIngressTable.list );
      const auto egressList = members.take( kEgressTable.list );
      readComponentReference( members, ingressList ? ingressList : egressList );
      std::vector< TableEntry > ingress;
      std::vector< TableEntry > egress;
      if ( ingressList ) {
         ingress = readTable( *ingressList, kIngressTable, ingressOn && !egressOn );
         if ( !ingressOn ) {
            switchedOff( *ingressList, kIngressOff );
         }
      }
      if ( egressList ) {
         egress = readTable( *egressList, kEgressTable, false );
         if ( !egressOn ) {
            switchedOff( *egressList, kEgressOff );
         }
      }
      members.finish();
      if ( ingressOn ) {
         for ( const TableEntry& entry : ingress ) {
            port.ingress.push_back( { entry.key, entry.value } );
         }
      }
      if ( egressOn ) {
         for ( const TableEntry& entry : egress ) {
            port.egress.push_back( { entry.key, entry.value } );
         }
      } else {
         for ( const IngressMapping& mapping : port.ingress ) {
            port.egress.push_back( { mapping.relay, mapping.vlan } );
         }
      }
      std::sort( port.ingress.begin(), port.ingress.end(),
                 []( const auto& a, const auto& b ) { return a.vlan < b.vlan; } );
      std::sort( port.egress.begin(), port.egress.end(),
                 []( const auto& a, const auto& b ) { return a.relay < b.relay; } );
   }

   // Checks which component the port belongs to; `table` is one of the port's tables, which
   // not every component has.
   void readComponentReference( Members& members, const std::optional< Place >& table ) {
      const auto bridgeLeaf = members.take( "bridge-name" );
      const auto componentLeaf = members.take( "component-name" );
      if ( componentLeaf && !bridgeLeaf ) {
         document_.missing( members.place(), "bridge-name", "the bridge of component-name" );
      } else if ( bridgeLeaf && !componentLeaf && table ) {
         document_.missing( members.place(), "component-name", "the component that translates" );
      }
      const auto bridge = readReference( bridgeLeaf, bridges_, "names no bridge of this file" );
      if ( !bridge ) {
         return;
      }
      const auto type = readReference( componentLeaf, *bridge, "names no component of the bridge" );
      if ( table && type && *type == "d-bridge-component" ) {
         document_.finding( *table, "", "a port of a d-bridge-component has no translation table",
                            "components of another type" );
      }
   }

   // What `leaf` names among `targets`; null where it names nothing or is not there.
   template < typename Target >
   const Target* readReference( const std::optional< Place >& leaf,
                                const std::map< std::string, Target >& targets,
                                std::string_view problem ) {
      if ( !leaf ) {
         return nullptr;
      }
      document_.unused( *leaf, kCheckedOnly );
      const auto name = document_.string( *leaf );
      const auto at = name ? targets.find( *name ) : targets.end();
      if ( name && at == targets.end() ) {
         document_.finding( *leaf, std::string( problem ), namesOf( targets ) );
      }
      return at == targets.end() ? nullptr : &at->second;
   }

   template < typename Map >
   static std::string namesOf( const Map& map ) {
      constexpr std::size_t kShownNames = 8;
      std::string out;
      std::size_t count = 0;
      for ( const auto& [ name, ignored ] : map ) {
         if ( ++count > kShownNames ) {
            return out + ", ...";
         }
         out += fmt::format( "{}\"{}\"", out.empty() ? "" : ", ", shownText( name ) );
      }
      return out.empty() ? "none, as there is none" : out;
   }

   bool readFlag( Members& members, std::string_view name ) {
      const auto leaf = members.take( name );
      return leaf && document_.boolean( *leaf ).value_or( false );
   }

   void switchedOff( const Place& list, std::string_view reason ) {
      const JsonArray* entries = list.value().array();
      document_.unused( list, reason, entries ? entries->size() : 0 );
   }

   // All good entries in file order. `oneToOne` refuses a second key for one value.
   std::vector< TableEntry > readTable( const Place& list, const TableKind& kind, bool oneToOne ) {
      std::vector< TableEntry > entries;
      SeenVlans keys( kSeenVlans );
      SeenVlans values( kSeenVlans );
      forEachEntry( document_, list, kind.key, [ & ]( const Place& entry ) {
         Members members( document_, entry );
         const auto keyLeaf = members.require( kind.key, kVlanIds );
         const auto valueLeaf = members.require( kind.value, kVlanIds );
         const std::uint16_t key = document_.vlanId( keyLeaf );
         const std::uint16_t value = document_.vlanId( valueLeaf );
         members.finish();
         if ( key != 0 && keys[ key ].line != 0 ) {
            document_.finding( *keyLeaf,
                               fmt::format( "is already used on line {}", keys[ key ].line ),
                               fmt::format( "each {} once", kind.key ) );
            return;
         }
         if ( key != 0 ) {
            keys[ key ].line = keyLeaf->value().line;
         }
         if ( key == 0 || value == 0 ) {
            return;
         }
         SeenVlan& first = values[ value ];
         if ( oneToOne && first.line != 0 ) {
            document_.finding( *valueLeaf,
                               fmt::format( "is already the {} of {} {} on line {}", kind.value,
                                            kind.key, first.partner, first.line ),
                               fmt::format( "one {} for each {} while {} is false", kind.key,
                                            kind.value, kEnableEgress ) );
            return;
         }
         first = { key, valueLeaf->value().line };
         entries.push_back( { key, value } );
      } );
      return entries;
   }

   Document& document_;
   std::map< std::string, Components > bridges_;
   std::vector< Port > ports_;
};

}   // namespace

std::vector< Port >
readIeee8021q( Document& document, const JsonValue& root ) {
   return Ieee8021qReader( document ).read( root );
}

}   // namespace Agent
