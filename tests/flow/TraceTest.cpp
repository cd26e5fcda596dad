// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// --trace and --ring, the agent's two ways of telling what happens inside.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <csignal>
#include <string>
#include <string_view>
#include <vector>

#include "tests/flow/Script.h"

namespace FlowTest {
namespace {

using Words = std::vector< std::string >;

Words
with( Words words, const Words& more ) {
   words.insert( words.end(), more.begin(), more.end() );
   return words;
}

// "2026-01-31T23:59:59.123456789Z " with 0 for each digit.
constexpr std::string_view kTime = "0000-00-00T00:00:00.000000000Z ";

bool
startsWithTime( const std::string& line ) {
   std::string begin = line.substr( 0, kTime.size() );
   std::ranges::replace_if(
      begin, []( unsigned char c ) { return std::isdigit( c ) != 0; }, '0' );
   return begin == kTime;
}

// Each line of a ring listing without its time; a line that has none stays whole.
std::string
withoutTimes( const std::string& listing ) {
   std::string text;
   for ( const std::string& line : linesOf( listing ) ) {
      text += ( startsWithTime( line ) ? line.substr( kTime.size() ) : line ) + "\n";
   }
   return text;
}

// A trace line without handle and source: "addVlanToIdx merge 2 ranges ".
std::string
messageOf( const std::string& line ) {
   const std::size_t source = line.find( ' ' ) + 1;
   return line.substr( line.find( ' ', source ) + 1 );
}

const char*
ringOfOneRun() {
   return "5 drainBacklog pending work count: 0\n"
          "5 drainBacklog Marking codef completed\n";
}

TEST( AgentTrace, linesGoToStandardErrorAndOutputStaysTheSame ) {
   const std::string file = sample( "small-ieee.json" );
   for ( const Words& command :
         { Words{ "run", file }, Words{ "show", "ranges", file },
           Words{ "show", "summary", "--json", file }, Words{ "show", "port", "edge1", file } } ) {
      const Outcome plain = runAgent( command );
      const Outcome traced = runAgent( with( command, { "--trace", "MoxVlanRangeMgr/1" } ) );
      EXPECT_EQ( traced.exitCode, 0 );
      EXPECT_EQ( traced.out, plain.out );
      EXPECT_EQ( plain.err, tableOffNote() );
      ASSERT_TRUE( traced.err.starts_with( plain.err ) );
      const std::vector< std::string > lines = linesOf( traced.err.substr( plain.err.size() ) );
      EXPECT_FALSE( lines.empty() );
      for ( const std::string& line : lines ) {
         EXPECT_TRUE( line.starts_with( "MoxVlanRangeMgr/1 MoxVlanMapping/MoxVlanRangeMgr:" ) )
            << line;
      }
   }
}

TEST( AgentTrace, replayTracesTheDecisionsInOrder ) {
   Script script;
   script.op( "index-add", "e", 10, 5 ).op( "index-add", "e", 12, 5 ).op( "index-add", "e", 11, 5 );
   script.op( "index-add", "e", 11, 5 ).op( "index-del", "e", 11 ).op( "index-del", "e", 11 );
   const Outcome outcome =
      runAgent( { "replay", "--trace", "MoxVlanRangeMgr/1", "-" }, script.text() );
   std::string decisions;
   for ( const std::string& line : linesOf( outcome.err ) ) {
      if ( line.find( "adding new Range" ) == std::string::npos ) {
         decisions += messageOf( line ) + "\n";
      }
   }
   EXPECT_EQ( decisions, "addVlanToIdx vid not present in prev and cur: \n"
                         "addVlanToIdx vid not present in prev and cur: \n"
                         "addVlanToIdx merge 2 ranges \n"
                         "addVlanToIdx already present returning \n"
                         "deleteVlanFromIdx vid present in lower bound range \n"
                         "deleteVlanFromRange spliting  Range \n"
                         "deleteVlanFromIdx vid not present in lower and upper bound range \n" );
}

TEST( AgentTrace, showsThatMembersJoinTheirAggregate ) {
   const Outcome outcome = runAgent(
      { "run", "--trace", "MoxVlanRangeMappingCodef/6", sample( "small-openconfig.json" ) } );
   std::size_t joined = 0;
   for ( const std::string& line : linesOf( outcome.err ) ) {
      joined += line.find( "handlePortToLag intfId " ) != std::string::npos ? 1u : 0u;
   }
   EXPECT_EQ( joined, 2u ) << outcome.err;
}

TEST( AgentTrace, mayBeRepeatedAndMayNameSeveralHandles ) {
   Script script;
   script.op( "ingress-set", "e", 10, 5 ).op( "run" );
   const Outcome once = runAgent(
      { "replay", "-", "--trace", "MoxVlanMappingScaleSm/5;MoxVlanRangeMappingCodef/5-6" },
      script.text() );
   const Outcome twice = runAgent( { "replay", "-", "--trace", "MoxVlanMappingScaleSm/5", "--trace",
                                     "MoxVlanRangeMappingCodef/5-6" },
                                   script.text() );
   EXPECT_EQ( once.text(), twice.text() );
   EXPECT_NE( once.err.find( "MoxVlanMappingScaleSm/5 " ), std::string::npos ) << once.err;
   EXPECT_NE( once.err.find( "MoxVlanRangeMappingCodef/6 " ), std::string::npos ) << once.err;
}

TEST( AgentTrace, everyCommandTakesIt ) {
   const ScratchFolder scratch;
   const std::string file = sample( "small-ieee.json" );
   const std::string ring = scratch.path( "ring" );
   ASSERT_EQ( runAgent( { "run", "--ring", ring, file } ).exitCode, 0 );
   for ( const Words& command : { Words{ "check", file }, Words{ "rings", ring } } ) {
      EXPECT_EQ( runAgent( with( command, { "--trace", "MoxVlanRangeMgr/*" } ) ).text(),
                 runAgent( command ).text() );
   }
}

TEST( AgentTrace, aBadListIsRefusedByEveryCommand ) {
   const std::string file = sample( "small-ieee.json" );
   for ( const Words& command :
         { Words{ "run", file }, Words{ "check", file }, Words{ "show", "ranges", file },
           Words{ "show", "summary", file }, Words{ "show", "port", "edge1", file },
           Words{ "replay", file }, Words{ "rings", file } } ) {
      EXPECT_EQ( runAgent( with( command, { "--trace", "MoxVlanRangeMgr/32" } ) ).text(),
                 exited( 2, "",
                         "--trace MoxVlanRangeMgr/32: expected a number from 0 to 31, found "
                         "\"32\" at offset 16\n" ) );
   }
   for ( const std::string list : { "MoxVlanRangeMgr", "x/a", "x/2-1", "/1", "x/1;y" } ) {
      const Outcome outcome = runAgent( { "run", "--trace", list, file } );
      EXPECT_EQ( outcome.exitCode, 2 ) << list;
      EXPECT_EQ( outcome.out, "" ) << list;
      EXPECT_TRUE( outcome.err.starts_with( "--trace " + list + ": " ) ) << outcome.err;
   }
}

TEST( AgentTrace, anUnknownHandleIsRefusedWithTheKnownOnes ) {
   const std::string file = sample( "small-ieee.json" );
   for ( const std::string list : { "MoxVlanRangeMrg/1", "MoxVlanRangeMgr/1;MoxVlanRangeMrg/1" } ) {
      EXPECT_EQ(
         runAgent( { "run", "--trace", list, file } ).text(),
         exited( 2, "",
                 "--trace " + list +
                    ": there is no handle \"MoxVlanRangeMrg\"; there are: "
                    "MoxVlanMappingScaleSm, MoxVlanRangeMappingCodef, MoxVlanRangeMgr\n" ) );
   }
}

TEST( AgentTrace, theKnownHandlesAreThoseThatJoin ) {
   const std::string all =
      "set ranges.vlanRangeEntry 1\ncall sm.vlanRangeMgr.deleteVlanFromIdx 1 5\n"
      "set schedule.vlanXlateSchedule 1 true\nrun\ntrace\n";
   const std::string out = runAgent( { "console", sample( "small-ieee.json" ) }, all ).out;
   EXPECT_TRUE(
      out.ends_with( " runs\nMoxVlanMappingScaleSm\nMoxVlanRangeMappingCodef\nMoxVlanRangeMgr\n" ) )
      << out;
   EXPECT_EQ( runAgent( { "run", "--trace", "*/1", sample( "small-ieee.json" ) } ).exitCode, 0 );
}

TEST( AgentRing, keepsTheMessagesOfARun ) {
   const ScratchFolder scratch;
   const std::string ring = scratch.path( "ring" );
   const std::string file = sample( "small-ieee.json" );
   EXPECT_EQ( runAgent( { "run", "--ring", ring, file } ).text(),
              runAgent( { "run", file } ).text() );
   const Outcome listing = runAgent( { "rings", ring } );
   EXPECT_EQ( listing.exitCode, 0 );
   EXPECT_EQ( listing.err, "" );
   EXPECT_EQ( withoutTimes( listing.out ), ringOfOneRun() );
}

TEST( AgentRing, eachLineStartsWithItsTime ) {
   const ScratchFolder scratch;
   const std::string ring = scratch.path( "ring" );
   runAgent( { "run", "--ring", ring, sample( "small-ieee.json" ) } );
   const std::vector< std::string > lines = linesOf( runAgent( { "rings", ring } ).out );
   EXPECT_EQ( lines.size(), 2u );
   for ( const std::string& line : lines ) {
      EXPECT_TRUE( startsWithTime( line ) ) << line;
   }
}

TEST( AgentRing, aSecondRunStartsTheFileAnew ) {
   const ScratchFolder scratch;
   const std::string ring = scratch.path( "ring" );
   for ( int run = 0; run < 2; ++run ) {
      EXPECT_EQ( runAgent( { "run", "--ring", ring, sample( "small-ieee.json" ) } ).exitCode, 0 );
   }
   EXPECT_EQ( withoutTimes( runAgent( { "rings", ring } ).out ), ringOfOneRun() );
}

TEST( AgentRing, outlivesAnAbort ) {
   const ScratchFolder scratch;
   const std::string ring = scratch.path( "ring" );
   Script script;
   script.yield( "always" ).op( "schedule", "a" ).op( "schedule", "b" ).op( "step" );
   script.op( "index-add", "e", 1, 0 ).op( "index-add", "e", 2, 0 );
   EXPECT_EQ( runAgent( { "replay", "--ring", ring, "-" }, script.text() ).signal, SIGABRT );
   EXPECT_EQ( withoutTimes( runAgent( { "rings", ring } ).out ),
              "6 drainBacklog yeilding with pending vlanXlate backlogs: 1\n"
              "5 drainBacklog pending work count: 1\n" );
}

TEST( AgentRing, aFileThatCannotBeMadeStopsTheCommand ) {
   const ScratchFolder scratch;
   const Outcome outcome =
      runAgent( { "run", "--ring", scratch.path( "no/such/ring" ), sample( "small-ieee.json" ) } );
   EXPECT_EQ( outcome.exitCode, 2 );
   EXPECT_EQ( outcome.out, "" );
   EXPECT_NE( outcome.err.find( scratch.path( "no/such/ring" ) ), std::string::npos )
      << outcome.err;
}

TEST( AgentRing, aFileThatIsNoRingFileStopsTheCommandAndStays ) {
   const ScratchFolder scratch;
   const std::string text = "{ \"vlan\": 5 }\n";
   const std::string file = scratch.file( "vlans.json", text );
   EXPECT_EQ(
      runAgent( { "run", "--ring", file, sample( "small-ieee.json" ) } ).text(),
      exited( 2, "",
              "Pelrec trace: cannot replace what is no ring file: " + file + ": File exists\n" ) );
   EXPECT_EQ( contentOf( File( std::fopen( file.c_str(), "r" ) ).get() ), text );
}

TEST( AgentRing, ringsRefusesWhatIsNoRingFileByItsName ) {
   const ScratchFolder scratch;
   for ( const std::string& path : { sample( "small-ieee.json" ), scratch.file( "empty", "" ),
                                     scratch.path( "absent" ), scratch.path() } ) {
      const Outcome outcome = runAgent( { "rings", path } );
      EXPECT_EQ( outcome.exitCode, 2 ) << path;
      EXPECT_EQ( outcome.out, "" ) << path;
      EXPECT_EQ( linesOf( outcome.err ).size(), 1u ) << outcome.err;
      EXPECT_NE( outcome.err.find( path ), std::string::npos ) << outcome.err;
   }
}

}   // namespace
}   // namespace FlowTest
