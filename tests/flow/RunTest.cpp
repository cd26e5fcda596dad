// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// `run` on the samples, and on what is no configuration.
#include <gtest/gtest.h>

#include <map>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

constexpr const char* kSwitch = "switch-52port.json";

std::string
closingLine( const Outcome& outcome ) {
   const std::vector< std::string > lines = linesOf( outcome.out );
   return lines.empty() ? outcome.text() : lines.back();
}

// "RANK low high size relay" of each port, ports in alphabetical order, from a table of ranges.
std::map< std::string, std::vector< std::string > >
rangesOfTable( const std::string& name ) {
   std::map< std::string, std::vector< std::string > > ports;
   for ( const std::string& line : linesOf( textOfFile( sample( name ) ) ) ) {
      if ( line.starts_with( '#' ) ) {
         continue;
      }
      std::istringstream fields( line );
      std::string port;
      std::string field;
      std::string rest;
      fields >> port;
      while ( fields >> field ) {
         rest += ( rest.empty() ? "" : " " ) + field;
      }
      ports[ port ].push_back( rest );
   }
   return ports;
}

// The same from the agent.
std::map< std::string, std::vector< std::string > >
rangesOfAgent( const std::string& name ) {
   std::map< std::string, std::vector< std::string > > ports;
   const Outcome outcome = runAgent( { "show", "ranges", "--json", sample( name ) } );
   const auto document = nlohmann::json::parse( outcome.out, nullptr, false );
   EXPECT_TRUE( document.is_object() ) << outcome.err;
   for ( const auto& [ port, ranges ] : document.items() ) {
      for ( const auto& range : ranges ) {
         const int low = range.at( "low" );
         const int high = range.at( "high" );
         std::ostringstream line;
         line << range.at( "rank" ) << ' ' << low << ' ' << high << ' ' << high - low << ' '
              << range.at( "relay" );
         ports[ port ].push_back( line.str() );
      }
   }
   return ports;
}

TEST( AgentRun, closesWithWhatTheSampleSwitchTakes ) {
   const Outcome outcome = runAgent( { "run", sample( kSwitch ) } );
   EXPECT_EQ( outcome.exitCode, 0 );
   EXPECT_EQ( closingLine( outcome ),
              "36,775 mappings -> 4,092 ranges -> 357 range entries + 4,407 exact entries at 8 "
              "entries per port" );
}

TEST( AgentRun, fewerRangeEntriesLeaveMoreIdsToExactEntries ) {
   const std::string begin = "36,775 mappings -> 4,092 ranges -> ";
   const std::map< std::string, std::string > closing{
      { "0", "0 range entries + 36,775 exact entries at 0 entries per port" },
      { "1", "51 range entries + 15,154 exact entries at 1 entry per port" },
      { "4", "193 range entries + 5,547 exact entries at 4 entries per port" },
      { "16", "653 range entries + 3,887 exact entries at 16 entries per port" },
      { "32", "1,053 range entries + 3,039 exact entries at 32 entries per port" },
      { "4094", "4,092 range entries + 0 exact entries at 4,094 entries per port" } };
   for ( const auto& [ entries, end ] : closing ) {
      EXPECT_EQ(
         closingLine( runAgent( { "run", "--range-entries", entries, sample( kSwitch ) } ) ),
         begin + end );
   }
}

TEST( AgentRun, showsARowForEachPortInTheOrderOfTheFile ) {
   EXPECT_EQ(
      runAgent( { "run", "--range-entries", "3", sample( "small-ieee.json" ) } ).text(),
      exited( 0,
              "port     mappings  ranges  range entries  exact entries\n"
              "uplink1        20       3              3              0\n"
              "access1        34       3              3              0\n"
              "access2         4       4              3              1\n"
              "edge1           4       4              3              1\n"
              "spare1          0       0              0              0\n"
              "spare2          0       0              0              0\n"
              "trunk1         64       2              2              0\n"
              "\n"
              "126 mappings -> 16 ranges -> 14 range entries + 2 exact entries at 3 entries per "
              "port\n",
              tableOffNote() ) );
}

TEST( AgentRun, rowsOfTheSampleSwitchAgreeWithItsTableOfRanges ) {
   const auto table = rangesOfTable( "expected-52port.tsv" );
   const Outcome outcome = runAgent( { "run", "--json", sample( kSwitch ) } );
   const auto rows = nlohmann::json::parse( outcome.out ).at( "ports" );
   EXPECT_EQ( rows.size(), 52u );
   for ( const auto& [ port, row ] : rows.items() ) {
      const auto ranges = table.find( port );
      std::size_t mappings = 0;
      if ( ranges != table.end() ) {
         for ( const std::string& range : ranges->second ) {
            std::istringstream fields( range );
            std::size_t rank = 0;
            std::size_t low = 0;
            std::size_t high = 0;
            fields >> rank >> low >> high;
            mappings += high - low + 1;
         }
      }
      EXPECT_EQ( row.at( "mappings" ), mappings ) << port;
      EXPECT_EQ( row.at( "ranges" ), ranges == table.end() ? 0u : ranges->second.size() ) << port;
   }
}

TEST( AgentRun, smallIeeeSampleArrivesAtItsTableOfRanges ) {
   EXPECT_EQ( rangesOfAgent( "small-ieee.json" ), rangesOfTable( "expected-small-ieee.tsv" ) );
}

TEST( AgentRun, smallOpenConfigSampleArrivesAtItsTableOfRanges ) {
   EXPECT_EQ( rangesOfAgent( "small-openconfig.json" ),
              rangesOfTable( "expected-small-openconfig.tsv" ) );
}

TEST( AgentRun, sampleSwitchArrivesAtItsTableOfRanges ) {
   EXPECT_EQ( rangesOfAgent( kSwitch ), rangesOfTable( "expected-52port.tsv" ) );
}

TEST( AgentRun, membersOfAnAggregateNameIt ) {
   const Outcome outcome = runAgent( { "run", "--json", sample( "small-openconfig.json" ) } );
   const auto ports = nlohmann::json::parse( outcome.out ).at( "ports" );
   EXPECT_EQ( ports.at( "member1" ).at( "lag" ), "bundle1" );
   EXPECT_EQ( ports.at( "member2" ).at( "lag" ), "bundle1" );
   EXPECT_EQ( ports.at( "bundle1" ).at( "lag" ), nullptr );
}

TEST( AgentRun, dashReadsStandardInput ) {
   const std::string text = textOfFile( sample( "small-ieee.json" ) );
   EXPECT_EQ( runAgent( { "run", "-" }, text ).text(),
              exited( 0, runAgent( { "run", sample( "small-ieee.json" ) } ).out,
                      tableOffNote( "<stdin>" ) ) );
}

TEST( AgentRun, readsAPipeToItsEnd ) {
   const Outcome outcome =
      runProgram( { "/bin/sh", "-c", "cat \"$1\" | \"$0\" run -", MOX_AGENT, sample( kSwitch ) } );
   EXPECT_EQ( outcome.text(), runAgent( { "run", sample( kSwitch ) } ).text() );
}

TEST( AgentRun, writesNothingToStandardError ) {
   EXPECT_EQ( runAgent( { "run", sample( kSwitch ) } ).err, "" );
}

// Every trace line there is makes the work long enough for a bar.
TEST( AgentRun, drawsNoProgressBarIntoAPipe ) {
   const Outcome piped = runProgram( { "/bin/sh", "-c",
                                       "\"$0\" run --trace '*/*' \"$1\" 2>&1 >/dev/null |"
                                       " tr -cd '\\r\\033'",
                                       MOX_AGENT, sample( kSwitch ) } );
   EXPECT_EQ( piped.text(), exited( 0, "", "" ) );
}

TEST( AgentRun, anEmptyListOfPortsIsAConfiguration ) {
   EXPECT_EQ(
      runAgent( { "run", "-" }, R"({"ietf-interfaces:interfaces":{"interface":[]}})" ).text(),
      exited( 0,
              "port  mappings  ranges  range entries  exact entries\n\n"
              "0 mappings -> 0 ranges -> 0 range entries + 0 exact entries at 8 entries "
              "per port\n",
              "" ) );
}

TEST( AgentRun, verboseNamesTheUnusedMembersAndChangesNothingElse ) {
   const std::string file = sample( "small-ieee.json" );
   const Outcome plain = runAgent( { "run", file } );
   const Outcome verbose = runAgent( { "run", "--verbose", file } );
   EXPECT_EQ( verbose.out, plain.out );
   const std::vector< std::string > lines = linesOf( verbose.err );
   ASSERT_GT( lines.size(), 1u );
   EXPECT_EQ( lines[ lines.size() - 2 ],
              "not used: /ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/"
              "vid-translations (2x): enable-vid-translation-table is false" );
}

}   // namespace
}   // namespace FlowTest
