// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/ConfigurationReader.h"

#include <algorithm>
#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <fstream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

// "unusable" and the one finding, or the ports.
std::string
outcome( const ReadResult& result ) {
   EXPECT_NE( result.configuration.has_value(), !result.findings.empty() );
   EXPECT_TRUE( !result.unusable || result.findings.size() == 1 );
   return ( result.unusable ? "unusable " : "" ) + portsOf( result );
}

const std::string kFormats = "a top-level member openconfig-interfaces:interfaces, or "
                             "ietf-interfaces:interfaces and ieee802-dot1q-bridge:bridges\n";

// A file of its own for each test.
class FileTest : public testing::Test {
 protected:
   FileTest() {
      const int fd = mkstemp( path_.data() );
      EXPECT_GE( fd, 0 );
      close( fd );
   }
   ~FileTest() override { std::remove( path_.c_str() ); }

   void write( const std::string& text ) { std::ofstream( path_, std::ios::binary ) << text; }

   std::string path_ = testing::TempDir() + "/configXXXXXX";
};

using ConfigurationFile = FileTest;

TEST_F( ConfigurationFile, IsReadByName ) {
   write( ieeePort( "" ) );
   EXPECT_EQ( outcome( readConfiguration( path_ ) ), "eth1:;\n" );
}

TEST_F( ConfigurationFile, IsNamedInItsFindings ) {
   write( ieeePort( "\"port-type\":1" ) );
   const ReadResult result = readConfiguration( path_ );
   ASSERT_EQ( result.findings.size(), 1U );
   EXPECT_EQ( result.findings[ 0 ].file, path_ );
   EXPECT_EQ( result.findings[ 0 ].line, 3U );
   EXPECT_EQ( result.findings[ 0 ].path, std::string( kIeeePort ) + "/port-type" );
   EXPECT_EQ( result.findings[ 0 ].value, "1" );
   EXPECT_FALSE( result.unusable );
}

TEST_F( ConfigurationFile, ThatDoesNotExistIsUnusable ) {
   EXPECT_EQ( outcome( readConfiguration( path_ + ".no" ) ),
              "unusable " + path_ + ".no: cannot be opened: No such file or directory\n" );
}

TEST_F( ConfigurationFile, ThatIsADirectoryIsUnusable ) {
   EXPECT_EQ( outcome( readConfiguration( "/" ) ), "unusable /: cannot be read: Is a directory\n" );
}

TEST_F( ConfigurationFile, ThatIsEmptyIsUnusable ) {
   EXPECT_EQ( outcome( readConfiguration( path_ ) ),
              "unusable " + path_ +
                 ":1:1: not valid JSON: the text is empty; allowed: JSON in UTF-8 as RFC 8259 "
                 "defines it\n" );
}

TEST_F( ConfigurationFile, LargerThanOneReadIsReadWhole ) {
   write( ieeePort( std::string( 600000, ' ' ) + "\n\"port-type\":1" ) );
   const ReadResult result = readConfiguration( path_ );
   ASSERT_EQ( result.findings.size(), 1U );
   EXPECT_EQ( result.findings[ 0 ].line, 4U );
}

// Standard input is a file while the object lives.
class RedirectedInput {
 public:
   explicit RedirectedInput( const std::string& path ) : saved_( dup( STDIN_FILENO ) ) {
      const int fd = open( path.c_str(), O_RDONLY | O_CLOEXEC );
      EXPECT_GE( fd, 0 );
      dup2( fd, STDIN_FILENO );
      close( fd );
      std::clearerr( stdin );
   }
   ~RedirectedInput() {
      dup2( saved_, STDIN_FILENO );
      close( saved_ );
      std::clearerr( stdin );
   }
   RedirectedInput( const RedirectedInput& ) = delete;
   RedirectedInput& operator=( const RedirectedInput& ) = delete;

 private:
   int saved_;
};

using StandardInput = FileTest;

TEST_F( StandardInput, IsReadForAHyphen ) {
   write( ieeePort( "" ) );
   RedirectedInput input( path_ );
   EXPECT_EQ( outcome( readConfiguration( "-" ) ), "eth1:;\n" );
}

TEST_F( StandardInput, HasANameInFindings ) {
   write( "{" );
   RedirectedInput input( path_ );
   EXPECT_EQ( outcome( readConfiguration( "-" ) ),
              "unusable <stdin>:1:1: not valid JSON: syntax error while parsing object key - "
              "unexpected end of input; expected string literal; allowed: JSON in UTF-8 as RFC "
              "8259 defines it\n" );
}

TEST( ConfigurationText, ShowsItsFormatInTheTopLevelMembers ) {
   EXPECT_EQ( read( ieeePort( "" ) ).configuration->format, ConfigurationFormat::ieee8021q );
   EXPECT_EQ( read( R"({"ieee802-dot1q-bridge:bridges":{}})" ).configuration->format,
              ConfigurationFormat::ieee8021q );
   EXPECT_EQ( read( openConfig( "" ) ).configuration->format, ConfigurationFormat::openConfig );
}

TEST( ConfigurationText, WithoutKnownMemberIsUnusable ) {
   for ( const char* text : { "{}", R"({"interfaces":{"interface":[]}})",
                              R"({"ietf-interfaces:interfaces-state":{}})" } ) {
      EXPECT_EQ( outcome( read( text ) ),
                 "unusable f.json:1: unknown format: no known member stands at the top; allowed: " +
                    kFormats );
   }
}

TEST( ConfigurationText, WithMembersOfBothFormatsIsUnusable ) {
   EXPECT_EQ( outcome( read( "\n{\"openconfig-interfaces:interfaces\":{},"
                             "\"ieee802-dot1q-bridge:bridges\":{}}" ) ),
              "unusable f.json:2: ambiguous format: members of both formats stand at the top; "
              "allowed: " +
                 kFormats );
}

TEST( ConfigurationText, ThatIsNoObjectIsUnusable ) {
   EXPECT_EQ( outcome( read( "\n[]" ) ),
              "unusable f.json:2: unknown format: the text is an array; allowed: an object with " +
                 kFormats );
   EXPECT_EQ( outcome( read( "7" ) ), "unusable f.json:1: unknown format: the text is an integer "
                                      "number; allowed: an object with " +
                                         kFormats );
}

TEST( ConfigurationText, ThatIsNoJsonIsUnusableWithItsLine ) {
   EXPECT_EQ( outcome( read( "{\n\"openconfig-interfaces:interfaces\": {]\n}" ) ),
              "unusable f.json:2:38: not valid JSON: syntax error while parsing object key - "
              "unexpected ']'; expected string literal; allowed: JSON in UTF-8 as RFC 8259 "
              "defines it\n" );
}

TEST( ConfigurationText, TopLevelNamesNeedTheirModule ) {
   EXPECT_EQ( outcome( read( "{\"openconfig-interfaces:interfaces\":{},\n\"interfaces\":{}}" ) ),
              "f.json:2: /interfaces: the top-level member lacks its module name; allowed: names "
              "of the form MODULE:NAME\n" );
}

// The match of each port is a range of all VIDs.
std::string
allVidsOf( int ports ) {
   std::string interfaces;
   for ( int i = 0; i < ports; ++i ) {
      interfaces += ( i == 0 ? "" : ",\n" ) +
                    openConfigPort( "p" + std::to_string( i ),
                                    subinterface( 1, R"("match":{"single-tagged-range":{"config":)"
                                                     R"({"low-vlan-id":1,"high-vlan-id":4094}}},)" +
                                                        swapMapping( "ingress", 7 ) ) );
   }
   return openConfig( interfaces );
}

TEST( ConfigurationLimit, AShortTextCannotAskForEverything ) {
   const std::string text = allVidsOf( 1025 );
   EXPECT_LT( text.size(), 400000u );
   EXPECT_EQ( findingsOf( read( text ) ),
              "f.json:1: /: asks for 4196350 mappings; allowed: at most 4192256; --max-mappings "
              "sets another limit\n" );
}

TEST( ConfigurationLimit, IsOnTheSumOverAllPortsAndKindsOfMatch ) {
   const std::string text = openConfig(
      openConfigPort( "a",
                      subinterface( 1, R"("match":{"single-tagged":{"config":{"vlan-id":5}}},)" +
                                          swapMapping( "ingress", 7 ) ) ) +
      "," +
      openConfigPort(
         "b", subinterface( 1, R"("match":{"single-tagged-list":{"config":{"vlan-ids":[5,6]}}},)" +
                                  swapMapping( "ingress", 7 ) ) +
                 "," +
                 subinterface( 2, R"("match":{"single-tagged-range":{"config":{"low-vlan-id":8,)"
                                  R"("high-vlan-id":11}}},)" +
                                     swapMapping( "ingress", 8 ) ) +
                 "," +
                 subinterface( 3, R"("match":{"single-tagged":{"config":{"vlan-id":40}}})" ) ) );
   EXPECT_EQ( findingsOf( readConfigurationText( "f.json", text, 6 ) ),
              "f.json:1: /: asks for 7 mappings; allowed: at most 6; --max-mappings sets another "
              "limit\n" );
   EXPECT_EQ( findingsOf( readConfigurationText( "f.json", text, 7 ) ), "" ) << text;
}

TEST( ConfigurationLimit, CountsTheEntriesOfTablesThatAct ) {
   const std::string entries =
      R"("vid-translations":[{"local-vid":1,"relay-vid":2},{"local-vid":2,"relay-vid":3}])";
   const std::string on = ieeePort( R"("enable-vid-translation-table":true,)" + entries );
   EXPECT_EQ( findingsOf( readConfigurationText( "f.json", on, 1 ) ),
              "f.json:1: /: asks for 2 mappings; allowed: at most 1; --max-mappings sets another "
              "limit\n" );
   EXPECT_EQ( findingsOf( readConfigurationText( "f.json", on, 2 ) ), "" );
   EXPECT_EQ( findingsOf( readConfigurationText( "f.json", ieeePort( entries ), 1 ) ), "" );
}

TEST( ConfigurationText, ANumberOfAnySizeIsAFindingWithAPlace ) {
   EXPECT_EQ( outcome( read( ieeePort( "\"pvid\":1e400,\n\"default-priority\":-2e999" ) ) ),
              "f.json:3: " + std::string( kIeeePort ) +
                 "/pvid: value 1e400 has the wrong type, a number with fraction or exponent; "
                 "allowed: 1..4094, 4096..4294967295, a JSON number without fraction and "
                 "exponent\nf.json:4: " +
                 std::string( kIeeePort ) +
                 "/default-priority: value -2e999 has the wrong type, a number with fraction or "
                 "exponent; allowed: 0..7, a JSON number without fraction and exponent\n" );
}

TEST( ConfigurationText, OtherTopLevelMembersAreUnused ) {
   EXPECT_EQ( unusedOf( read( R"({"openconfig-interfaces:interfaces":{},)"
                              R"("acme:system":{"name":"x"}})" ) ),
              "/acme:system/name 1 of another module\n" );
}

TEST( ConfigurationText, ATopLevelMemberGivenTwiceIsAFinding ) {
   EXPECT_EQ( outcome( read( "{\"openconfig-interfaces:interfaces\":{},\n"
                             "\"openconfig-interfaces:interfaces\":{}}" ) ),
              "f.json:2: /openconfig-interfaces:interfaces: value {} is given twice, on lines 1 "
              "and 2; allowed: each member once\n" );
}

TEST( ReadConfiguration, TellsHowFarItIs ) {
   // Each mebibyte is told of several times: while it is fetched, and while it is taken apart.
   const std::string text = "[" + std::string( 1024 * 1024, ' ' ) + "\n" + [] {
      std::string values;
      for ( int i = 0; i < 200000; ++i ) {
         values += "12345,\n";
      }
      return values;
   }() + "0]";
   std::vector< std::size_t > fetched;
   std::vector< std::size_t > taken;
   const ReadProgress progress = [ & ]( std::size_t bytes, std::size_t ofBytes ) {
      ( ofBytes == 0 ? fetched : taken ).push_back( bytes );
      EXPECT_TRUE( ofBytes == 0 || ofBytes == text.size() );
   };
   const std::string path = testing::TempDir() + "progress-" + std::to_string( getpid() );
   std::ofstream( path ) << text;
   EXPECT_TRUE( readConfiguration( path, kDefaultMaxMappings, progress ).unusable );
   std::remove( path.c_str() );
   ASSERT_GT( fetched.size(), 8u );
   ASSERT_GT( taken.size(), 16u );
   EXPECT_EQ( fetched.back(), text.size() );
   EXPECT_GT( taken.back(), text.size() - 128 * 1024 );
   for ( const auto* counts : { &fetched, &taken } ) {
      EXPECT_TRUE( std::is_sorted( counts->begin(), counts->end() ) );
   }
}

}   // namespace
}   // namespace Agent
