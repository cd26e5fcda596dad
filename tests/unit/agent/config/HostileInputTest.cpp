// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Inputs made to hurt: whatever stands in a file, there is a result, and each finding of it is
// one line of bounded length.
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "agent/config/ConfigurationReader.h"
#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

void
expectUsableAnswer( const ReadResult& result ) {
   EXPECT_NE( result.configuration.has_value(), !result.findings.empty() );
   EXPECT_TRUE( !result.unusable || result.findings.size() == 1 );
   for ( const Finding& finding : result.findings ) {
      const std::string line = finding.text();
      EXPECT_LE( line.size(), 3000U );
      EXPECT_EQ( line.find_first_of( std::string( "\0\n\r\x1b\x7f", 5 ) ), std::string::npos );
   }
   if ( result.configuration ) {
      for ( const Port& port : result.configuration->ports ) {
         for ( const IngressMapping& mapping : port.ingress ) {
            EXPECT_TRUE( mapping.vlan >= 1 && mapping.vlan <= 4094 );
            EXPECT_TRUE( mapping.relay >= 1 && mapping.relay <= 4094 );
         }
         for ( const EgressMapping& mapping : port.egress ) {
            EXPECT_TRUE( mapping.vlan >= 1 && mapping.vlan <= 4094 );
            EXPECT_TRUE( mapping.relay >= 1 && mapping.relay <= 4094 );
         }
      }
   }
}

// Small configurations that use every part of the readers.
std::string
seedText( bool ieee ) {
   if ( ieee ) {
      return ieeePort( R"("port-type":"d-bridge-port",)"
                       R"("enable-vid-translation-table":true,"pvid":1,)"
                       R"("vid-translations":[{"local-vid":10,"relay-vid":20},)"
                       R"({"local-vid":11,"relay-vid":21}],)"
                       R"("egress-vid-translations":[{"relay-vid":20,"local-vid":10}])" );
   }
   return openConfig(
      R"({"name":"m","config":{"name":"m","type":"iana-if-type:ieee8023adLag"},)"
      R"("openconfig-if-ethernet:ethernet":{"config":)"
      R"({"openconfig-if-aggregate:aggregate-id":"eth1"}}},)" +
      openConfigPort(
         "eth1",
         subinterface( 1, R"("match":{"single-tagged-range":{"config":{"low-vlan-id":5,)"
                          R"("high-vlan-id":9}}},)" +
                             swapMapping( "ingress", 7 ) + ',' + swapMapping( "egress", 5 ) ) +
            ',' +
            subinterface( 2, R"("match":{"single-tagged-list":{"config":{"vlan-ids":[1,3]}}},)" +
                                swapMapping( "ingress", 8 ) ) ) );
}

std::size_t
any( std::mt19937_64& random, std::size_t below ) {
   return static_cast< std::size_t >( random() % below );
}

TEST( HostileInput, EveryPrefixOfAConfigurationHasAnAnswer ) {
   for ( const bool ieee : { true, false } ) {
      const std::string text = seedText( ieee );
      ASSERT_EQ( findingsOf( read( text ) ), "" );
      for ( std::size_t size = 0; size < text.size(); ++size ) {
         const ReadResult result = read( std::string_view( text ).substr( 0, size ) );
         EXPECT_TRUE( result.unusable );
         expectUsableAnswer( result );
      }
   }
}

TEST( HostileInput, ChangedBytesHaveAnAnswer ) {
   const std::uint64_t seed = testSeed();
   SCOPED_TRACE( "MOX_TEST_SEED=" + std::to_string( seed ) );
   std::mt19937_64 random( seed );
   const std::string bytes = std::string( "{}[],:\"\\0123456789-.eE\n \x80\xff\x1b", 27 ) + "tfn";
   for ( int round = 0; round < 20000; ++round ) {
      std::string text = seedText( round % 2 == 0 );
      for ( std::uint64_t edits = 1 + random() % 3; edits > 0; --edits ) {
         text[ any( random, text.size() ) ] = bytes[ any( random, bytes.size() ) ];
      }
      expectUsableAnswer( read( text ) );
   }
}

// Replaces one value of the text, a number or a string, by something of another kind.
TEST( HostileInput, ReplacedValuesHaveAnAnswer ) {
   const std::uint64_t seed = testSeed();
   SCOPED_TRACE( "MOX_TEST_SEED=" + std::to_string( seed ) );
   std::mt19937_64 random( seed );
   const std::string values[] = { "null",  "true",      "0",      "4095", "-1",
                                  "1.5",   "1e999",     "\"\"",   "[]",   "{}",
                                  "[[]]",  "[null]",    "[{}]",   "1e2",  "99999999999999999999",
                                  "\"x\"", "{\"a\":1}", "\"\\n\"" };
   for ( int round = 0; round < 20000; ++round ) {
      const std::string text = seedText( round % 2 == 0 );
      std::size_t colon = text.find( ':', any( random, text.size() ) );
      if ( colon == std::string::npos ) {
         continue;
      }
      const std::size_t end = text.find_first_of( ",}]", colon );
      expectUsableAnswer( read( text.substr( 0, colon + 1 ) +
                                values[ any( random, std::size( values ) ) ] +
                                text.substr( end ) ) );
   }
}

TEST( HostileInput, DeepNestingInsideAKnownMemberIsRefused ) {
   const ReadResult result =
      read( "{\"ietf-interfaces:interfaces\":" + std::string( 500000, '[' ) );
   EXPECT_EQ( findingsOf( result ),
              "f.json:1:158: not valid JSON: nesting is deeper than 128 levels; allowed: JSON in "
              "UTF-8 as RFC 8259 defines it\n" );
}

TEST( HostileInput, TheDeepestUnusedMemberIsWalked ) {
   const std::string open( 120, '[' );
   const std::string close( 120, ']' );
   EXPECT_EQ(
      unusedOf( read( "{\"openconfig-interfaces:interfaces\":{},\"a:b\":" + open + close + "}" ) ),
      "/a:b 1 of another module\n" );
}

TEST( HostileInput, ALongNameDoesNotMakeALongFinding ) {
   const std::string name( 1000000, 'n' );
   const ReadResult result = read( R"({"ietf-interfaces:interfaces":{"interface":[{"name":")" +
                                   name + R"(","type":"x"},{"name":")" + name + R"("}]}})" );
   EXPECT_EQ( result.findings.size(), 3U );
   expectUsableAnswer( result );
}

TEST( HostileInput, ThousandsOfFindingsAreAllReported ) {
   std::string entries;
   for ( int i = 0; i < 20000; ++i ) {
      entries += ( i == 0 ? "" : ",\n" ) + std::string( R"({"local-vid":0})" );
   }
   const ReadResult result = read( ieeePort( "\"vid-translations\":[" + entries + "]" ) );
   EXPECT_EQ( result.findings.size(), 40000U );
   EXPECT_EQ( result.findings.back().line, 20002U );
}

TEST( HostileInput, ManySubinterfacesOverTheSameVidsHaveAnAnswer ) {
   std::string subinterfaces;
   for ( int i = 0; i < 1000; ++i ) {
      subinterfaces +=
         ( i == 0 ? "" : ",\n" ) + subinterface( i, R"("match":{"single-tagged-range":{"config":)"
                                                    R"({"low-vlan-id":1,"high-vlan-id":4094}}},)" +
                                                       swapMapping( "ingress", 7 ) );
   }
   const ReadResult result = read( openConfig( openConfigPort( "eth1", subinterfaces ) ) );
   EXPECT_EQ( result.findings.size(), 999U );
   EXPECT_EQ( result.findings[ 0 ].value, "1-4094" );
}

TEST( HostileInput, AnObjectOfManyMembersIsCheckedForDuplicates ) {
   std::string members;
   for ( int i = 0; i < 50000; ++i ) {
      members += ",\"x:x" + std::to_string( i ) + "\":0";
   }
   const std::string text = "{\"openconfig-interfaces:interfaces\":{\"x:a\":0" + members;
   EXPECT_EQ( findingsOf( read( text + "}}" ) ), "" );
   EXPECT_EQ( findingsOf( read( text + ",\n\"x:x49999\":0}}" ) ),
              "f.json:2: /openconfig-interfaces:interfaces/x:x49999: value 0 is given twice, on "
              "lines 1 and 2; allowed: each member once\n" );
}

}   // namespace
}   // namespace Agent
