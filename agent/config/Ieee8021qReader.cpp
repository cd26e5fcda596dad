// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Ieee8021qReader.h"

#include <algorithm>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "agent/config/Ieee8021qSchema.h"

namespace Agent {

namespace {

constexpr std::string_view kModule = "ieee802-dot1q-bridge";
constexpr std::string_view kBridgePort = "ieee802-dot1q-bridge:bridge-port";
constexpr std::string_view kEnableIngress = "enable-vid-translation-table";
constexpr std::string_view kEnableEgress = "enable-egress-vid-translation-table";

// One kind of translation table.
struct TableKind {
   std::string_view list;
   std::string_view key;
   std::string_view value;
   UnusedReason off;
};
constexpr TableKind kIngressTable = {
   "vid-translations",
   "local-vid",
   "relay-vid",
   { "enable-vid-translation-table is false", UnusedKind::tableOff } };
constexpr TableKind kEgressTable = {
   "egress-vid-translations",
   "relay-vid",
   "local-vid",
   { "enable-egress-vid-translation-table is false", UnusedKind::tableOff } };

// What a port has only as a port of a component that knows VLANs.
constexpr std::string_view kVlanAware[] = { "pvid",
                                            "acceptable-frame",
                                            "enable-ingress-filtering",
                                            "enable-restricted-vlan-registration",
                                            kEnableIngress,
                                            kEnableEgress,
                                            "protocol-group-vid-set",
                                            kIngressTable.list,
                                            kEgressTable.list };

// Component name to component type.
using Components = std::map< std::string, std::string_view >;

struct TableEntry {
   std::uint16_t key;
   std::uint16_t value;
};

struct SeenVlan {
   std::uint16_t partner = 0;
   std::size_t line = 0;
};
// Not on the stack: where memory is limited, one that cannot grow ends the process by a signal.
using SeenVlans = std::vector< SeenVlan >;
constexpr std::size_t kVlanIdsEnd = kMaxVlanId + 1;

// Calls `each( Place )` for the interfaces.
template < typename Each >
void
forEachInterface( const Place& top, const Each& each ) {
   if ( const auto interfaces = top.member( "ietf-interfaces:interfaces" ) ) {
      forEachEntry( interfaces->member( "interface" ), "name", each );
   }
}

class Ieee8021qReader {
 public:
   explicit Ieee8021qReader( Document& document ) : document_( document ) {}

   std::vector< Port > read( const Place& top ) {
      // First the bridges: ports refer to them, wherever they stand in the text.
      if ( const auto bridges = top.member( "ieee802-dot1q-bridge:bridges" ) ) {
         forEachEntry( bridges->member( "bridge" ), "name", [ & ]( const Place& bridge ) {
            Components& components = bridges_[ textOf( bridge.member( "name" ) ) ];
            forEachEntry( bridge.member( "component" ), "name", [ & ]( const Place& component ) {
               components.emplace( textOf( component.member( "name" ) ), typeOf( component ) );
            } );
         } );
      }
      forEachInterface( top, [ & ]( const Place& entry ) {
         Port port;
         port.name = textOf( entry.member( "name" ) );
         if ( const auto bridgePort = entry.member( kBridgePort ) ) {
            readBridgePort( *bridgePort, port );
         }
         ports_.push_back( std::move( port ) );
      } );
      return std::move( ports_ );
   }

 private:
   static std::string_view typeOf( const Place& component ) {
      const auto type = component.member( "type" );
      const std::string* text = type ? type->value().string() : nullptr;
      return text ? withoutModule( *text, kModule ) : std::string_view();
   }

   void readBridgePort( const Place& place, Port& port ) {
      const bool ingressOn = isTrue( place.member( kEnableIngress ) );
      const bool egressOn = isTrue( place.member( kEnableEgress ) );
      checkComponent( place );
      const std::vector< TableEntry > ingress =
         readTable( place, kIngressTable, ingressOn, ingressOn && !egressOn );
      const std::vector< TableEntry > egress = readTable( place, kEgressTable, egressOn, false );
      for ( const TableEntry& entry : ingress ) {
         port.ingress.push_back( { entry.key, entry.value } );
      }
      for ( const TableEntry& entry : egress ) {
         port.egress.push_back( { entry.key, entry.value } );
      }
      if ( !egressOn ) {
         for ( const IngressMapping& mapping : port.ingress ) {
            port.egress.push_back( { mapping.relay, mapping.vlan } );
         }
      }
      std::sort( port.ingress.begin(), port.ingress.end(),
                 []( const auto& a, const auto& b ) { return a.vlan < b.vlan; } );
      std::sort( port.egress.begin(), port.egress.end(),
                 []( const auto& a, const auto& b ) { return a.relay < b.relay; } );
   }

   // Which component the port belongs to, and whether that has what the port has.
   void checkComponent( const Place& port ) {
      const auto bridgeLeaf = port.member( "bridge-name" );
      const auto componentLeaf = port.member( "component-name" );
      if ( componentLeaf && !bridgeLeaf ) {
         document_.missing( port, "bridge-name", "the bridge of component-name" );
      }
      const Components* bridge = referred( bridgeLeaf, bridges_, "names no bridge of this file" );
      const std::string_view* type =
         bridge ? referred( componentLeaf, *bridge, "names no component of the bridge" ) : nullptr;
      if ( ( bridgeLeaf && !bridge ) || ( componentLeaf && !type ) ) {
         return;
      }
      for ( const std::string_view name : kVlanAware ) {
         const auto member = port.member( name );
         const JsonArray* array = member ? member->value().array() : nullptr;
         if ( !member || ( array && array->empty() ) ) {
            continue;
         }
         if ( !type ) {
            document_.finding( *member, "", "needs a component that knows VLANs",
                               "a port with bridge-name and component-name" );
            return;
         }
         if ( *type == kDBridgeComponent ) {
            document_.finding( *member, "", "does not go with a d-bridge-component",
                               "components of another type" );
         }
      }
   }

   // What `leaf` names among `targets`; null where it names nothing or is not there.
   template < typename Target >
   const Target* referred( const std::optional< Place >& leaf,
                           const std::map< std::string, Target >& targets, std::string problem ) {
      const std::string* name = leaf ? leaf->value().string() : nullptr;
      const auto at = name ? targets.find( *name ) : targets.end();
      if ( name && at == targets.end() ) {
         document_.finding( *leaf, std::move( problem ), namesOf( targets ) );
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

   // All good entries in file order, none of a table that is off. `oneToOne` refuses a second
   // key for one value.
   std::vector< TableEntry > readTable( const Place& port, const TableKind& kind, bool on,
                                        bool oneToOne ) {
      const auto list = port.member( kind.list );
      std::vector< TableEntry > entries;
      if ( !on ) {
         const JsonArray* array = list ? list->value().array() : nullptr;
         if ( array ) {
            document_.unused( *list, kind.off, array->size() );
         }
         return entries;
      }
      std::vector< bool > keys( kVlanIdsEnd );
      SeenVlans values( kVlanIdsEnd );
      forEachEntry( list, kind.key, [ & ]( const Place& entry ) {
         const auto valueLeaf = entry.member( kind.value );
         const std::uint16_t key = vlanIdOf( entry.member( kind.key ) );
         const std::uint16_t value = vlanIdOf( valueLeaf );
         if ( key == 0 || value == 0 || keys[ key ] ) {
            return;
         }
         keys[ key ] = true;
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

std::uint64_t
countIeee8021qMappings( const Place& top ) {
   std::uint64_t count = 0;
   forEachInterface( top, [ & ]( const Place& entry ) {
      const auto port = entry.member( kBridgePort );
      const auto list = port && isTrue( port->member( kEnableIngress ) )
                         ? port->member( kIngressTable.list )
                         : std::nullopt;
      const JsonArray* entries = list ? list->value().array() : nullptr;
      count += entries ? entries->size() : 0;
   } );
   return count;
}

std::vector< Port >
readIeee8021q( Document& document, const Place& top ) {
   return Ieee8021qReader( document ).read( top );
}

}   // namespace Agent
