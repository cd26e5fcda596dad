// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// The command line itself: help, and what is refused.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

using Words = std::vector< std::string >;

// Nothing on standard output, and an error that holds each of `parts`.
void
expectRefused( const Words& words, const Words& parts ) {
   const Outcome outcome = runAgent( words );
   EXPECT_EQ( outcome.exitCode, 2 ) << outcome.text();
   EXPECT_EQ( outcome.out, "" );
   for ( const std::string& part : parts ) {
      EXPECT_NE( outcome.err.find( part ), std::string::npos ) << outcome.text();
   }
}

std::string
small() {
   return sample( "small-ieee.json" );
}

TEST( AgentCommandLine, helpNamesTheCommandsAndExitsWithZero ) {
   const Outcome outcome = runAgent( { "--help" } );
   EXPECT_EQ( outcome.exitCode, 0 );
   EXPECT_EQ( outcome.err, "" );
   for ( const std::string command :
         { "run", "check", "show", "replay", "rings", "console", "types" } ) {
      EXPECT_NE( outcome.out.find( "\n  " + command + " " ), std::string::npos ) << outcome.out;
   }
}

TEST( AgentCommandLine, everyCommandHasHelp ) {
   for ( const Words& command :
         { Words{ "run" }, Words{ "check" }, Words{ "show" }, Words{ "show", "ranges" },
           Words{ "show", "summary" }, Words{ "show", "port" }, Words{ "replay" }, Words{ "rings" },
           Words{ "console" }, Words{ "types" } } ) {
      Words words = command;
      words.push_back( "--help" );
      const Outcome outcome = runAgent( words );
      EXPECT_EQ( outcome.exitCode, 0 ) << outcome.text();
      EXPECT_NE( outcome.out.find( "Usage: " ), std::string::npos ) << outcome.text();
   }
}

TEST( AgentCommandLine, helpStatesTheRangeOfRangeEntriesAndItsDefault ) {
   const std::string out = runAgent( { "run", "--help" } ).out;
   EXPECT_NE( out.find( "--range-entries UINT:UINT in [0 - 4094]=8" ), std::string::npos ) << out;
}

TEST( AgentCommandLine, aCommandIsNeeded ) {
   expectRefused( {}, { "subcommand is required" } );
   expectRefused( { "show" }, { "subcommand is required" } );
}

TEST( AgentCommandLine, aFileIsNeeded ) {
   for ( const Words& command :
         { Words{ "run" }, Words{ "check" }, Words{ "show", "ranges" }, Words{ "show", "summary" },
           Words{ "show", "port", "eth1" }, Words{ "replay" }, Words{ "rings" } } ) {
      expectRefused( command, { "FILE is required" } );
   }
}

TEST( AgentCommandLine, unknownCommandsAreRefused ) {
   expectRefused( { "frob" }, { "frob: there is no such command; there are: run, check, " } );
   expectRefused( { "show", "frob" },
                  { "frob: there is no such command; there are: ranges, summary, port\n" } );
}

TEST( AgentCommandLine, unknownOptionsAreRefusedByName ) {
   expectRefused( { "run", "--frob", small() }, { "--frob" } );
   expectRefused( { "check", "--sort", "vid", small() }, { "--sort" } );
   expectRefused( { "run", small(), "surplus" }, { "surplus" } );
}

TEST( AgentCommandLine, nearMissesAreNamed ) {
   const std::string ending = "?\nRun with --help for more information.\n";
   const std::vector< std::pair< Words, std::string > > cases{
      { { "rnu", small() }, "rnu: did you mean run" },
      { { "chek", "--json" }, "chek: did you mean check" },
      { { "show", "rnages", small() }, "rnages: did you mean ranges" },
      { { "run", "--jsn", small() }, "--jsn: did you mean --json" },
      { { "run", "--range-entry=4", small() }, "--range-entry: did you mean --range-entries" },
      { { "show", "port", "eth1", "--vlan", "1", small() }, "--vlan: did you mean --vlans" },
      { { "--verison" }, "--verison: did you mean --version" } };
   for ( const auto& [ words, told ] : cases ) {
      EXPECT_EQ( runAgent( words ).text(), exited( 2, "", told + ending ) );
   }
}

TEST( AgentCommandLine, theVersionIsThatOfTheProject ) {
   EXPECT_EQ( runAgent( { "--version" } ).text(),
              exited( 0, "vlan-scale-agent " MOX_VERSION "\n", "" ) );
}

TEST( AgentCommandLine, rangeEntriesAreDecimal ) {
   for ( const std::string entries : { "010", "00", "08", "0x10", "+1", " 1", "1e1" } ) {
      expectRefused(
         { "run", "--range-entries", entries, small() },
         { "--range-entries: \"" + entries + "\" is no decimal number without leading zeros\n" } );
   }
   for ( const std::string entries : { "0", "10", "4094" } ) {
      EXPECT_EQ( runAgent( { "run", "--range-entries", entries, small() } ).exitCode, 0 )
         << entries;
   }
}

TEST( AgentCommandLine, rangeEntriesOutOfRangeNamesTheRange ) {
   for ( const Words& command :
         { Words{ "run" }, Words{ "show", "ranges" }, Words{ "show", "summary" },
           Words{ "show", "port", "eth1" }, Words{ "replay" } } ) {
      for ( const std::string entries : { "4095", "-1", "99999999999999999999", "many", "" } ) {
         Words words = command;
         words.insert( words.end(), { "--range-entries=" + entries, small() } );
         expectRefused( words, { "--range-entries" } );
      }
   }
   expectRefused( { "run", "--range-entries", "4095", small() },
                  { "--range-entries: Value 4095 not in range 0 to 4094" } );
}

TEST( AgentCommandLine, anUnknownSortOrderNamesTheKnownOnes ) {
   expectRefused( { "show", "ranges", "--sort", "relay", small() },
                  { "--sort", "relay", "size", "vid" } );
}

TEST( AgentCommandLine, sortTakesNamesAlone ) {
   expectRefused( { "show", "ranges", "--sort", "1", small() }, { "--sort", "size", "vid" } );
}

TEST( AgentCommandLine, outputThatCannotBeWrittenIsAnError ) {
   for ( const std::string command : { "run \"$1\"", "show ranges --json \"$1\"", "replay -" } ) {
      const Outcome outcome =
         runProgram( { "/bin/sh", "-c", "\"$0\" " + command + " >/dev/full", MOX_AGENT, small() },
                     "{\"op\":\"state\"}\n" );
      const std::string note = command == "replay -" ? "" : tableOffNote();
      EXPECT_EQ( outcome.text(), exited( 2, "", note + "standard output cannot be written\n" ) )
         << command;
   }
}

}   // namespace
}   // namespace FlowTest
