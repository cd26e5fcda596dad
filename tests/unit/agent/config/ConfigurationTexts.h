// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Small configurations as text, and results as text, so that a failure reads as a diff.
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

#include "agent/config/ConfigurationReader.h"

namespace Agent {

inline std::uint64_t
testSeed() {
   const char* seed = std::getenv( "MOX_TEST_SEED" );
   return seed ? std::strtoull( seed, nullptr, 10 ) : 20260117;
}

// All findings, one a line.
inline std::string
findingsOf( const ReadResult& result ) {
   std::string out;
   for ( const Finding& finding : result.findings ) {
      out += finding.text() + '\n';
   }
   return out;
}

// "eth1: 100>3001 101>3001; 3001>100; in lag1", a port a line. With findings, those instead.
inline std::string
portsOf( const ReadResult& result ) {
   if ( !result.configuration ) {
      return findingsOf( result );
   }
   std::string out;
   for ( const Port& port : result.configuration->ports ) {
      out += port.name + ':';
      for ( const IngressMapping& mapping : port.ingress ) {
         out += ' ' + std::to_string( mapping.vlan ) + '>' + std::to_string( mapping.relay );
      }
      out += ';';
      for ( const EgressMapping& mapping : port.egress ) {
         out += ' ' + std::to_string( mapping.relay ) + '>' + std::to_string( mapping.vlan );
      }
      out += port.lag ? "; in " + *port.lag + '\n' : "\n";
   }
   return out;
}

// "PATH COUNT REASON", a line each.
inline std::string
unusedOf( const ReadResult& result ) {
   if ( !result.configuration ) {
      return findingsOf( result );
   }
   std::string out;
   for ( const UnusedMember& member : result.configuration->unused ) {
      out += member.path + ' ' + std::to_string( member.count ) + ' ' + member.reason + '\n';
   }
   return out;
}

inline ReadResult
read( std::string_view text ) {
   return readConfigurationText( "f.json", text );
}

// The `bridges` of an IEEE configuration, one line without its end: bridge b, component c.
constexpr std::string_view kBridges =
   R"({"ieee802-dot1q-bridge:bridges":{"bridge":[{"name":"b","address":"00-00-5E-00-53-01",)"
   R"("bridge-type":"provider-bridge",)"
   R"("component":[{"name":"c","type":"s-vlan-component"}]}]},)";

// An IEEE configuration of one port that names no component; `members` of its bridge-port start on
// line 3.
inline std::string
ieeeBarePort( std::string_view members ) {
   return std::string( kBridges ) +
          "\n"
          R"("ietf-interfaces:interfaces":{"interface":[{"name":"eth1",)"
          R"("type":"iana-if-type:ethernetCsmacd","ieee802-dot1q-bridge:bridge-port":{)"
          "\n" +
          std::string( members ) + "\n}}]}}";
}

// The same of a port of that component.
inline std::string
ieeePort( std::string_view members ) {
   return ieeeBarePort( std::string( members ) + ( members.empty() ? "" : "," ) +
                        R"("bridge-name":"b","component-name":"c")" );
}

// The path of that bridge-port.
constexpr std::string_view kIeeePort = "/ietf-interfaces:interfaces/interface[name='eth1']/"
                                       "ieee802-dot1q-bridge:bridge-port";

// An OpenConfig configuration; `interfaces`, comma-separated, start on line 2.
inline std::string
openConfig( std::string_view interfaces ) {
   return R"({"openconfig-interfaces:interfaces":{"interface":[)"
          "\n" +
          std::string( interfaces ) + "\n]}}";
}

// One interface; `subinterfaces`, comma-separated, start on its second line.
inline std::string
openConfigPort( std::string_view name, std::string_view subinterfaces ) {
   const std::string quoted = '"' + std::string( name ) + '"';
   return R"({"name":)" + quoted + R"(,"config":{"name":)" + quoted +
          R"(,"type":"iana-if-type:ethernetCsmacd"},"subinterfaces":{"subinterface":[)"
          "\n" +
          std::string( subinterfaces ) + "\n]}}";
}

// One subinterface on one line with `vlan` as its openconfig-vlan:vlan.
inline std::string
subinterface( int index, std::string_view vlan ) {
   const std::string number = std::to_string( index );
   return R"({"index":)" + number + R"(,"config":{"index":)" + number +
          R"(},"openconfig-vlan:vlan":{)" + std::string( vlan ) + "}}";
}

inline std::string
swapMapping( std::string_view which, int vlan ) {
   return '"' + std::string( which ) +
          R"(-mapping":{"config":{"vlan-stack-action":"SWAP","vlan-id":)" + std::to_string( vlan ) +
          "}}";
}

}   // namespace Agent
