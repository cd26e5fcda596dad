// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Random configurations, written out in both formats, come back as the maps they were made of.
#include <algorithm>
#include <map>
#include <random>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "agent/config/ConfigurationReader.h"
#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

using Table = std::map< int, int >;

struct RandomPort {
   std::string name;
   Table ingress;
   Table egress;
};

class RandomConfiguration : public testing::Test {
 protected:
   int number( int low, int high ) {
      return std::uniform_int_distribution< int >( low, high )( random_ );
   }
   bool chance() { return number( 0, 1 ) == 1; }

   // Runs, holes and single ids, at the edges of the id space as well.
   std::vector< RandomPort > ports( bool oneToOne ) {
      std::vector< RandomPort > made;
      const int count = number( 0, 5 );
      for ( int p = 0; p < count; ++p ) {
         RandomPort port{ "port" + std::to_string( p ), {}, {} };
         const int blocks = number( 0, 12 );
         for ( int block = 0; block < blocks; ++block ) {
            const int low = chance() ? number( 1, 4094 ) : number( 0, 1 ) * 4085 + 1;
            const int high = std::min( 4094, low + number( 0, 40 ) );
            const int relay = number( 1, 4094 );
            for ( int vlan = low; vlan <= high; ++vlan ) {
               port.ingress[ vlan ] = relay;
            }
         }
         if ( oneToOne ) {
            Table unique;
            for ( const auto& [ vlan, relay ] : port.ingress ) {
               if ( port.egress.try_emplace( relay, vlan ).second ) {
                  unique[ vlan ] = relay;
               }
            }
            port.ingress = unique;
         } else {
            for ( const auto& [ vlan, relay ] : port.ingress ) {
               if ( number( 0, 3 ) != 0 ) {
                  port.egress.try_emplace( relay, number( 1, 4094 ) );
               }
            }
         }
         made.push_back( port );
      }
      return made;
   }

   std::string newline() { return number( 0, 3 ) == 0 ? "\n" : " "; }

   std::string table( const Table& entries, const std::string& key, const std::string& value ) {
      std::vector< std::pair< int, int > > order( entries.begin(), entries.end() );
      std::shuffle( order.begin(), order.end(), random_ );
      std::string out = "[";
      for ( const auto& [ from, to ] : order ) {
         const std::string first = '"' + key + "\":" + newline() + std::to_string( from );
         const std::string second = '"' + value + "\":" + std::to_string( to ) + newline();
         out += ( out.size() > 1 ? "," : "" ) + newline() + '{' +
                ( chance() ? first + ',' + second : second + ',' + first ) + '}';
      }
      return out + ']';
   }

   std::string ieeeText( const std::vector< RandomPort >& ports, bool oneToOne ) {
      std::string interfaces;
      for ( const RandomPort& port : ports ) {
         interfaces +=
            ( interfaces.empty() ? "" : "," ) + newline() + R"({"name":")" + port.name +
            R"(","type":"iana-if-type:ethernetCsmacd","ieee802-dot1q-bridge:bridge-port":{)"
            R"("bridge-name":"b","component-name":"c","enable-vid-translation-table":true,)"
            R"("vid-translations":)" +
            table( port.ingress, "local-vid", "relay-vid" );
         if ( !oneToOne ) {
            interfaces += R"(,"enable-egress-vid-translation-table":true,)"
                          R"("egress-vid-translations":)" +
                          table( port.egress, "relay-vid", "local-vid" );
         }
         interfaces += "}}";
      }
      return std::string( kBridges ) + R"("ietf-interfaces:interfaces":{"interface":[)" +
             interfaces + "]}}";
   }

   // Cuts the ids of one relay VID into matches of random kinds.
   std::vector< std::string > matches( const std::vector< int >& ids ) {
      std::vector< std::string > out;
      for ( std::size_t i = 0; i < ids.size(); ) {
         std::size_t end = i + 1;
         const std::size_t most = static_cast< std::size_t >( number( 1, 20 ) );
         const bool consecutive = chance();
         while ( end < ids.size() && end - i < most &&
                 ( !consecutive || ids[ end ] == ids[ end - 1 ] + 1 ) ) {
            ++end;
         }
         if ( consecutive ) {
            out.push_back( R"("match":{"single-tagged-range":{"config":{"low-vlan-id":)" +
                           std::to_string( ids[ i ] ) + R"(,"high-vlan-id":)" +
                           std::to_string( ids[ end - 1 ] ) + "}}}" );
         } else if ( end - i == 1 ) {
            out.push_back( R"("match":{"single-tagged":{"config":{"vlan-id":)" +
                           std::to_string( ids[ i ] ) + "}}}" );
         } else {
            std::string list;
            for ( std::size_t k = i; k < end; ++k ) {
               list += ( list.empty() ? "" : "," ) + newline() + std::to_string( ids[ k ] );
            }
            out.push_back( R"("match":{"single-tagged-list":{"config":{"vlan-ids":[)" + list +
                           "]}}}" );
         }
         i = end;
      }
      return out;
   }

   std::string openConfigText( const std::vector< RandomPort >& ports ) {
      std::string interfaces;
      for ( const RandomPort& port : ports ) {
         std::map< int, std::vector< int > > byRelay;
         for ( const auto& [ vlan, relay ] : port.ingress ) {
            byRelay[ relay ].push_back( vlan );
         }
         std::vector< std::string > vlans;
         for ( const auto& [ relay, ids ] : byRelay ) {
            for ( const std::string& match : matches( ids ) ) {
               const auto out = port.egress.find( relay );
               vlans.push_back(
                  match + ',' + swapMapping( "ingress", relay ) +
                  ( out == port.egress.end() ? "" : ',' + swapMapping( "egress", out->second ) ) );
            }
         }
         std::shuffle( vlans.begin(), vlans.end(), random_ );
         std::string subinterfaces;
         for ( std::size_t i = 0; i < vlans.size(); ++i ) {
            subinterfaces +=
               ( i == 0 ? "" : ",\n" ) + subinterface( static_cast< int >( i ), vlans[ i ] );
         }
         interfaces +=
            ( interfaces.empty() ? "" : "," ) + openConfigPort( port.name, subinterfaces );
      }
      return openConfig( interfaces );
   }

   static std::string rendered( const std::vector< RandomPort >& ports ) {
      std::string out;
      for ( const RandomPort& port : ports ) {
         out += port.name + ':';
         for ( const auto& [ vlan, relay ] : port.ingress ) {
            out += ' ' + std::to_string( vlan ) + '>' + std::to_string( relay );
         }
         out += ';';
         for ( const auto& [ relay, vlan ] : port.egress ) {
            out += ' ' + std::to_string( relay ) + '>' + std::to_string( vlan );
         }
         out += '\n';
      }
      return out;
   }

   static constexpr int kRounds = 60;
   const std::uint64_t seed_ = testSeed();
   testing::ScopedTrace trace_{ __FILE__, __LINE__, "MOX_TEST_SEED=" + std::to_string( seed_ ) };
   std::mt19937_64 random_{ seed_ };
};

TEST_F( RandomConfiguration, ComesBackFromTheIeeeFormWithBothTables ) {
   for ( int round = 0; round < kRounds; ++round ) {
      const std::vector< RandomPort > made = ports( false );
      ASSERT_EQ( portsOf( read( ieeeText( made, false ) ) ), rendered( made ) );
   }
}

TEST_F( RandomConfiguration, ComesBackFromTheIeeeFormWithOneTable ) {
   for ( int round = 0; round < kRounds; ++round ) {
      const std::vector< RandomPort > made = ports( true );
      ASSERT_EQ( portsOf( read( ieeeText( made, true ) ) ), rendered( made ) );
   }
}

TEST_F( RandomConfiguration, ComesBackFromTheOpenConfigForm ) {
   for ( int round = 0; round < kRounds; ++round ) {
      const std::vector< RandomPort > made = ports( false );
      ASSERT_EQ( portsOf( read( openConfigText( made ) ) ), rendered( made ) );
   }
}

}   // namespace
}   // namespace Agent
