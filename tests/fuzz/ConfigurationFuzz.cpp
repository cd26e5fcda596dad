// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Configuration files of both formats: every text has an answer that keeps its promises, and what
// was accepted reads the same when it is written again in either format.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <nlohmann/json.hpp>
#include <set>
#include <string>
#include <string_view>

#include "agent/config/ConfigurationReader.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using Agent::Configuration;
using Agent::EgressMapping;
using Agent::IngressMapping;
using Agent::Port;
using Agent::ReadResult;
using Fuzz::require;
using nlohmann::json;

ReadResult
read( std::string_view text ) {
   ReadResult result = Agent::readConfigurationText( "f.json", text );
   if ( Fuzz::planted() && result.configuration ) {
      for ( Port& port : result.configuration->ports ) {
         if ( !port.ingress.empty() && port.name.size() < 4 ) {
            port.ingress.back().vlan = Agent::kMaxVlanId + 1;
         }
      }
   }
   return result;
}

bool
isVlan( std::uint16_t id ) {
   return id >= Agent::kMinVlanId && id <= Agent::kMaxVlanId;
}

template < class Mapping >
void
checkTable( const std::vector< Mapping >& table, std::uint16_t Mapping::*key ) {
   for ( const Mapping& mapping : table ) {
      require( isVlan( mapping.vlan ) && isVlan( mapping.relay ), "an id that is no VLAN id" );
   }
   require( std::ranges::adjacent_find( table, std::ranges::greater_equal(), key ) == table.end(),
            "a table that is not ascending" );
}

void
checkPorts( const std::vector< Port >& ports ) {
   std::set< std::string > names;
   for ( const Port& port : ports ) {
      require( names.insert( port.name ).second, "a port twice" );
      checkTable( port.ingress, &IngressMapping::vlan );
      checkTable( port.egress, &EgressMapping::relay );
   }
   for ( const Port& port : ports ) {
      require( !port.lag || names.contains( *port.lag ), "an aggregate that is no port" );
   }
}

void
checkAnswer( const ReadResult& result ) {
   require( result.configuration.has_value() == result.findings.empty(),
            "neither a configuration nor findings, or both" );
   require( !result.unusable || result.findings.size() == 1, "unusable with several findings" );
   require( std::ranges::is_sorted( result.findings, {}, &Agent::Finding::line ),
            "findings that are not ascending" );
   for ( const Agent::Finding& finding : result.findings ) {
      const std::string line = finding.text();
      require( line.size() <= 3000, "a finding that is too long" );
      require( line.find_first_of( std::string( "\0\n\r\x1b\x7f", 5 ) ) == std::string::npos,
               "a finding with control characters" );
   }
   if ( result.configuration ) {
      checkPorts( result.configuration->ports );
   }
}

std::string
textOf( const std::vector< Port >& ports, bool withLags ) {
   std::string text;
   for ( const Port& port : ports ) {
      text += json( port.name ).dump() + ':';
      for ( const IngressMapping& mapping : port.ingress ) {
         text += ' ' + std::to_string( mapping.vlan ) + '>' + std::to_string( mapping.relay );
      }
      text += ';';
      for ( const EgressMapping& mapping : port.egress ) {
         text += ' ' + std::to_string( mapping.relay ) + '>' + std::to_string( mapping.vlan );
      }
      text += withLags && port.lag ? "; in " + json( *port.lag ).dump() + '\n' : "\n";
   }
   return text;
}

// The aggregates have no place in this format.
json
ieeeOf( const std::vector< Port >& ports ) {
   json interfaces = json::array();
   for ( const Port& port : ports ) {
      json ingress = json::array();
      for ( const IngressMapping& mapping : port.ingress ) {
         ingress.push_back( { { "local-vid", mapping.vlan }, { "relay-vid", mapping.relay } } );
      }
      json egress = json::array();
      for ( const EgressMapping& mapping : port.egress ) {
         egress.push_back( { { "relay-vid", mapping.relay }, { "local-vid", mapping.vlan } } );
      }
      interfaces.push_back( { { "name", port.name },
                              { "type", "iana-if-type:ethernetCsmacd" },
                              { "ieee802-dot1q-bridge:bridge-port",
                                { { "bridge-name", "b" },
                                  { "component-name", "c" },
                                  { "enable-vid-translation-table", true },
                                  { "vid-translations", ingress },
                                  { "enable-egress-vid-translation-table", true },
                                  { "egress-vid-translations", egress } } } } );
   }
   const json component{ { "name", "c" }, { "type", "ieee802-dot1q-bridge:c-vlan-component" } };
   const json bridge{ { "name", "b" },
                      { "address", "00-00-5E-00-53-00" },
                      { "bridge-type", "ieee802-dot1q-bridge:customer-vlan-bridge" },
                      { "component", json::array( { component } ) } };
   return { { "ieee802-dot1q-bridge:bridges", { { "bridge", json::array( { bridge } ) } } },
            { "ietf-interfaces:interfaces", { { "interface", interfaces } } } };
}

json
swapTo( std::uint16_t vlan ) {
   return { { "config", { { "vlan-stack-action", "SWAP" }, { "vlan-id", vlan } } } };
}

// One subinterface for each VLAN; the first of a relay says how that leaves.
json
subinterfacesOf( const Port& port ) {
   std::map< std::uint16_t, std::uint16_t > leaves;
   for ( const EgressMapping& mapping : port.egress ) {
      leaves[ mapping.relay ] = mapping.vlan;
   }
   json all = json::array();
   for ( const IngressMapping& mapping : port.ingress ) {
      json vlan{
         { "match", { { "single-tagged", { { "config", { { "vlan-id", mapping.vlan } } } } } } },
         { "ingress-mapping", swapTo( mapping.relay ) } };
      if ( const auto left = leaves.extract( mapping.relay ) ) {
         vlan[ "egress-mapping" ] = swapTo( left.mapped() );
      }
      all.push_back( { { "index", all.size() },
                       { "config", { { "index", all.size() } } },
                       { "openconfig-vlan:vlan", vlan } } );
   }
   return all;
}

json
openConfigOf( const std::vector< Port >& ports ) {
   json interfaces = json::array();
   for ( const Port& port : ports ) {
      json interface {
         { "name", port.name },
            { "config", { { "name", port.name }, { "type", "iana-if-type:ethernetCsmacd" } } }, {
            "subinterfaces", {
               { "subinterface", subinterfacesOf( port ) }
            }
         }
      };
      if ( port.lag ) {
         interface[ "openconfig-if-ethernet:ethernet" ] = {
            { "config", { { "openconfig-if-aggregate:aggregate-id", *port.lag } } } };
      }
      interfaces.push_back( interface );
   }
   return { { "openconfig-interfaces:interfaces", { { "interface", interfaces } } } };
}

// What leaves hangs on what enters in that format.
bool
fitsOpenConfig( const std::vector< Port >& ports ) {
   return std::ranges::all_of( ports, []( const Port& port ) {
      return std::ranges::all_of( port.egress, [ & ]( const EgressMapping& mapping ) {
         return std::ranges::find( port.ingress, mapping.relay, &IngressMapping::relay ) !=
                port.ingress.end();
      } );
   } );
}

void
checkReadsAs( const json& written, const std::vector< Port >& ports, bool withLags ) {
   const ReadResult again = read( written.dump() );
   if ( !again.configuration ) {
      Fuzz::finding( "what was written is refused: " + again.findings.front().text() );
   }
   require( textOf( again.configuration->ports, withLags ) == textOf( ports, withLags ),
            "what was written is read differently" );
}

}   // namespace

extern "C" int
LLVMFuzzerTestOneInput( const std::uint8_t* data, std::size_t size ) {
   const std::string_view text( reinterpret_cast< const char* >( data ), size );
   const ReadResult result = read( text );
   checkAnswer( result );
   if ( !result.configuration ) {
      return 0;
   }
   const std::vector< Port >& ports = result.configuration->ports;
   checkReadsAs( json::parse( text ), ports, true );   // members in another order
   checkReadsAs( ieeeOf( ports ), ports, false );
   if ( fitsOpenConfig( ports ) ) {
      checkReadsAs( openConfigOf( ports ), ports, true );
   }
   return 0;
}
