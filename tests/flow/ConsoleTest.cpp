// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// The console's commands, from a pipe.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "tests/flow/ConsoleRun.h"

namespace FlowTest {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

// What the commands print, when all is well.
void
expectOutput( const std::string& commands, const std::string& output ) {
   EXPECT_EQ( console( commands ).text(), exited( 0, output, "" ) );
}

TEST( AgentConsole, blankLinesAndCommentsDoNothing ) {
   expectOutput( "\n   \n# get ranges\n  # nothing\n", "" );
}

TEST( AgentConsole, theLastLineNeedsNoEnd ) {
   expectOutput( "get codef.initialized", "true\n" );
}

TEST( AgentConsole, quitAndExitLeaveTheRestUnread ) {
   expectOutput( "quit\nget nothing\n", "" );
   expectOutput( "exit\nget nothing\n", "" );
}

TEST( AgentConsole, startsWithAnInitialisedStateMachineAndNoConfiguration ) {
   expectOutput( "get sm.vlanRangeMgr\niterate ranges.vlanRangeEntry\n",
                 "MoxVlanMapping::MoxVlanRangeMgr\n" );
}

TEST( AgentConsole, aFileIsAppliedFirst ) {
   const Outcome outcome = runAgent( { "console", sample( "small-ieee.json" ) },
                                     "iterate ranges.vlanRangeEntry[2].vlanIdRange\n"
                                     "get scheduler.workWaiting\n" );
   EXPECT_EQ( outcome.text(), exited( 0,
                                      "[700] " + rangeTo( 700, 731, 2200 ) + "\n[740] " +
                                         rangeTo( 740, 740, 2200 ) + "\n[742] " +
                                         rangeTo( 742, 742, 2200 ) + "\nfalse\n",
                                      tableOffNote() ) );
}

TEST( AgentConsole, standardInputIsRefusedAsFile ) {
   EXPECT_EQ( runAgent( { "console", "-" } ).text(),
              exited( 2, "", "console: FILE cannot be -: standard input carries the commands\n" ) );
}

TEST( AgentConsole, aFileThatCannotBeReadEndsIt ) {
   const Outcome outcome = runAgent( { "console", "/no/such/file" }, "ls\n" );
   EXPECT_EQ( outcome.exitCode, 2 );
   EXPECT_EQ( outcome.out, "" );
   EXPECT_THAT( outcome.err, HasSubstr( "/no/such/file" ) );
}

TEST( AgentConsole, typesAreThoseOfTheAgentsOwnCommand ) {
   expectOutput( "types\n", runAgent( { "types" } ).out );
}

TEST( AgentConsole, typeShowsKindBaseConstructorAndAttributes ) {
   expectOutput( "type MoxVlanMapping::VlanRangeEntryDir\n",
                 "MoxVlanMapping::VlanRangeEntryDir: entity, base Zel::PtrInterface, "
                 "MoxVlanMapping/MoxVlanRangeMgr 3\n"
                 "made without arguments\n"
                 "130  vlanRangeEntry  entity map  MoxVlanMapping::VlanRangeEntry  "
                 "[Corvel::IntfId]  ( intfId: Corvel::IntfId )  "
                 "get, set, delete, size, changes, has\n" );
}

TEST( AgentConsole, typeShowsTheAttributesOfTheBaseFirst ) {
   const std::string out = console( "type MoxVlanMapping::VlanMappingScaleSlaveSm\n" ).out;
   EXPECT_LT( out.find( "\n137  handleInitialized" ), out.find( "\n388  vlanRangeMgr" ) ) << out;
}

TEST( AgentConsole, lsListsTheRoots ) {
   expectOutput( "ls\n",
                 "acsd       Mox::MoxCommonSmData\n"
                 "codef      MoxVlanMapping::MoxVlanRangeMappingCodef( initialized: true )\n"
                 "ranges     MoxVlanMapping::VlanRangeEntryDir\n"
                 "schedule   MoxVlanMapping::VlanXlateScheduleDir\n"
                 "scheduler  Quen::TaskScheduler( workWaiting: false, tasksScheduled: 0, "
                 "yieldPolicy: Quantum, yieldTestsAllowed: 0 )\n"
                 "sm         MoxVlanMapping::VlanMappingScaleSlaveSm( undelivered: 0 )\n" );
}

TEST( AgentConsole, lsListsTheAttributesOfAnEntity ) {
   expectOutput( addVlan( 7, 10, 100 ) + "ls ranges.vlanRangeEntry[7]\nls sm.vlanRangeMgr\n",
                 "intfId             field        7\n"
                 "vlanIdRange        ordered map  1 element\n"
                 "revSortedStartVid  ordered set  1 element\n"
                 "vlanRangeEntryDir               pointer          "
                 "MoxVlanMapping::VlanRangeEntryDir\n"
                 "isVidInRange                    method           "
                 "( vidRange: MoxVlanMapping::VlanRangeXlateMapping, inVlanId: Bridging::VlanId ) "
                 "-> bool\n"
                 "isVidAndDot1qInLowerBoundRange  method           "
                 "( intfId: Corvel::IntfId, inVlanId: Bridging::VlanId, "
                 "mapping: Bridging::VlanXlateMapping ) -> bool\n"
                 "isVidAndDot1qInUpperBoundRange  method           "
                 "( intfId: Corvel::IntfId, inVlanId: Bridging::VlanId, "
                 "mapping: Bridging::VlanXlateMapping ) -> bool\n"
                 "addVlanToIdx                    callable method  "
                 "( intfId: Corvel::IntfId, vlanId: Bridging::VlanId, "
                 "mapping: Bridging::VlanXlateMapping )\n"
                 "deleteVlanFromIdx               callable method  "
                 "( intfId: Corvel::IntfId, vlanId: Bridging::VlanId )\n"
                 "deleteVlanFromRange             method           "
                 "( intfId: Corvel::IntfId, vlanId: Bridging::VlanId, "
                 "vidRange: MoxVlanMapping::VlanRangeXlateMapping )\n" );
}

TEST( AgentConsole, lsListsTheFieldsOfAValue ) {
   expectOutput( addVlan( 7, 10, 100 ) + "ls ranges.vlanRangeEntry[7].vlanIdRange[10]\n",
                 "lowVid   field  10\n"
                 "highVid  field  10\n"
                 "mapping  field  " +
                    mappingTo( 100 ) + "\n" );
}

TEST( AgentConsole, getReadsAlongAPath ) {
   expectOutput( addVlan( 7, 10, 100 ) + "get ranges.vlanRangeEntry[7]\n"
                                         "get ranges.vlanRangeEntry[7].vlanIdRange[10]\n"
                                         "get ranges.vlanRangeEntry[7].vlanIdRange[10].mapping\n"
                                         "get ranges.vlanRangeEntry[7].vlanIdRange[10].mapping"
                                         ".vlanId\n",
                 "MoxVlanMapping::VlanRangeEntry( intfId: 7 )\n" + rangeTo( 10, 10, 100 ) + "\n" +
                    mappingTo( 100 ) + "\n100\n" );
}

TEST( AgentConsole, getOfAnAbsentMemberIsTheDefault ) {
   expectOutput( "get acsd.portToLag[3]\nget schedule.vlanXlateSchedule[3]\n"
                 "get ranges.vlanRangeEntry[3]\n",
                 "0\nfalse\nnull\n" );
}

TEST( AgentConsole, aKeyMayHoldBlanksBracketsAndQuotes ) {
   const std::string key = "Value('Mox::PortVlanKey', ** {'intfId': 2, 'vlanId': 11, "
                           "'innerVlanId': 0})";
   expectOutput( "new key Mox::PortVlanKey 2 11 0\n"
                 "new m Bridging::VlanXlateMapping " +
                    mappingTo( 5 ) +
                    "\n"
                    "new c Mox::MoxVlanMappingConfig $key $m false true 9\n"
                    "set acsd.ingressConfigDir.config $c\n"
                    "get acsd.ingressConfigDir.config[" +
                    key + "].origin\n",
                 key + "\n" + mappingTo( 5 ) + "\nValue('Mox::MoxVlanMappingConfig', ** {'key': " +
                    key + ", 'mapping': " + mappingTo( 5 ) +
                    ", 'inLag': false, 'xlateUntagged': true, 'origin': 9})\n9\n" );
}

TEST( AgentConsole, setWritesAValue ) {
   expectOutput( "set codef.task.taskQuantum 0.25\nget codef.task.taskQuantum\n", "0.25\n" );
}

TEST( AgentConsole, quotesKeepBlanksTogetherAndEmptyTextPossible ) {
   expectOutput( "set sm.bridgingConfig.bridgeName \"a 'b' c\"\nget sm.bridgingConfig.bridgeName\n"
                 "set sm.bridgingConfig.bridgeName '$x'\nget sm.bridgingConfig.bridgeName\n"
                 "set sm.bridgingConfig.bridgeName ''\nget sm.bridgingConfig.bridgeName\n",
                 "a 'b' c\n$x\n\n" );
}

TEST( AgentConsole, setTakesTheKeyAsArgumentOrInThePath ) {
   expectOutput( "set acsd.portToLag 3 9\nset acsd.portToLag[4] 9\niterate acsd.portToLag\n",
                 "[3] 9\n[4] 9\n" );
}

TEST( AgentConsole, setOfAnEntityMapMakesTheEntity ) {
   expectOutput( "set ranges.vlanRangeEntry 5\niterate ranges.vlanRangeEntry\n",
                 "MoxVlanMapping::VlanRangeEntry( intfId: 5 )\n"
                 "[5] MoxVlanMapping::VlanRangeEntry( intfId: 5 )\n" );
}

TEST( AgentConsole, setTakesEntitiesByPath ) {
   expectOutput( "new t Quen::Task scheduler 5 mine\nset codef.task t\nget codef.task.name\n",
                 "Quen::Task( priority: 5, name: mine, taskQuantum: 0.01, scheduled: false, "
                 "taskWorkCount: 0, taskWorkPending: 0 )\nmine\n" );
}

TEST( AgentConsole, setOfAnInstantiatingPointerMakesItsEntity ) {
   expectOutput( "del sm.vlanRangeMgr\nget sm.vlanRangeMgr\nset sm.vlanRangeMgr ranges\n"
                 "get sm.vlanRangeMgr\n",
                 "MoxVlanMapping::MoxVlanRangeMgr\nnull\nMoxVlanMapping::MoxVlanRangeMgr\n"
                 "MoxVlanMapping::MoxVlanRangeMgr\n" );
}

TEST( AgentConsole, delTellsWhetherTheMemberWasThere ) {
   expectOutput( "set acsd.portToLag 3 9\ndel acsd.portToLag[3]\ndel acsd.portToLag[3]\n"
                 "iterate acsd.portToLag\n",
                 "true\nfalse\n" );
}

TEST( AgentConsole, delDropsWhatNewMade ) {
   expectOutput( "new d MoxVlanMapping::VlanRangeEntryDir\ndel d\n"
                 "new d Bridging::VlanId 9\nget d\n",
                 "MoxVlanMapping::VlanRangeEntryDir\n9\n9\n" );
}

TEST( AgentConsole, callPrintsWhatTheMethodReturns ) {
   expectOutput( "call codef.task.scheduleTask\ncall scheduler.runOnce\ncall scheduler.runOnce\n",
                 "true\nfalse\n" );
}

TEST( AgentConsole, callTakesAValueFromAPath ) {
   expectOutput( addVlan( 7, 10, 100 ) + "call sm.vlanRangeMgr.addVlanToIdx 7 11 "
                                         "$ranges.vlanRangeEntry[7].vlanIdRange[10].mapping\n"
                                         "iterate ranges.vlanRangeEntry[7].vlanIdRange\n",
                 "[10] " + rangeTo( 10, 11, 100 ) + "\n" );
}

TEST( AgentConsole, newMakesEntitiesOverOtherNewOnes ) {
   expectOutput( "new d MoxVlanMapping::VlanRangeEntryDir\n"
                 "new m MoxVlanMapping::MoxVlanRangeMgr d\n"
                 "call m.addVlanToIdx 1 20 " +
                    mappingTo( 3 ) +
                    "\n"
                    "iterate d.vlanRangeEntry[1].vlanIdRange\n",
                 "MoxVlanMapping::VlanRangeEntryDir\nMoxVlanMapping::MoxVlanRangeMgr\n[20] " +
                    rangeTo( 20, 20, 3 ) + "\n" );
}

TEST( AgentConsole, newMakesAValueOfItsPartsOrItsStringForm ) {
   expectOutput( "new m Bridging::VlanXlateMapping 8 0 0 0 0\n"
                 "new r MoxVlanMapping::VlanRangeXlateMapping 2 4 $m\n"
                 "new s MoxVlanMapping::VlanRangeXlateMapping " +
                    rangeTo( 2, 4, 8 ) +
                    "\n"
                    "new b bool true\n",
                 mappingTo( 8 ) + "\n" + rangeTo( 2, 4, 8 ) + "\n" + rangeTo( 2, 4, 8 ) +
                    "\ntrue\n" );
}

TEST( AgentConsole, iterateFollowsTheOrderOfTheCollection ) {
   expectOutput( addVlan( 7, 10, 1 ) + addVlan( 7, 30, 1 ) + addVlan( 7, 20, 1 ) +
                    "iterate ranges.vlanRangeEntry[7].revSortedStartVid\n",
                 "[30] true\n[20] true\n[10] true\n" );
}

TEST( AgentConsole, watchPrintsChangesAsTheyHappen ) {
   expectOutput( "watch acsd\nwatch scheduler\nwatch schedule\nset acsd.portToLag 3 9\n"
                 "del acsd.portToLag[3]\nget codef.task.scheduled\n",
                 "acsd: portToLag[3]\n"
                 "scheduler: workWaiting\n"
                 "schedule: vlanXlateSchedule[3]\n"
                 "acsd: portToLag[3]\n"
                 "true\n"
                 "true\n" );
}

TEST( AgentConsole, watchListsWhatIsWatchedUntilUnwatched ) {
   expectOutput( "watch acsd\nwatch acsd\nwatch codef.task\nwatch\nunwatch acsd\nwatch\n"
                 "set acsd.portToLag 3 9\n",
                 "acsd\ncodef.task\ncodef.task\n" );
}

TEST( AgentConsole, stepRunsOneTaskAndRunAllOfThem ) {
   expectOutput( "step\nrun\nset schedule.vlanXlateSchedule 4 true\nstep\nrun\n",
                 "0 runs\n0 runs\n1 run\n1 run\n" );
}

TEST( AgentConsole, traceListsHandlesAndSetsTheirLevels ) {
   const Outcome outcome = console( "trace MoxVlanRangeMgr/1\n" + addVlan( 7, 10, 1 ) + "trace\n" );
   EXPECT_THAT( outcome.err, StartsWith( "MoxVlanRangeMgr/1 MoxVlanMapping/MoxVlanRangeMgr:" ) );
   EXPECT_THAT( outcome.out, HasSubstr( "MoxVlanRangeMgr\n" ) );
   EXPECT_EQ( outcome.exitCode, 0 );
}

TEST( AgentConsole, traceSaysWhichHandlesWereNotUsedSoFar ) {
   const std::string use = addVlan( 7, 10, 1 );
   expectOutput( use + "trace MoxVlanRangeMgr/;*/\ntrace 'Frob/1;MoxVlanRangeMgr/;Knob/'\n",
                 "no handle \"Frob\" was used so far; `trace` lists those that were\n"
                 "no handle \"Knob\" was used so far; `trace` lists those that were\n" );
}

TEST( AgentConsole, trackerCountsObjectsByType ) {
   const std::string out = console( "set ranges.vlanRangeEntry 1\nset ranges.vlanRangeEntry 2\n"
                                    "del ranges.vlanRangeEntry[1]\ntracker\n" )
                              .out;
   EXPECT_THAT( out, testing::ContainsRegex( "\nMoxVlanMapping::VlanRangeEntry  +1  +2  +[1-9]" ) );
}

TEST( AgentConsole, helpNamesEveryCommand ) {
   const std::string help = "\n" + console( "help\n" ).out;
   for ( const std::string command :
         { "types", "type", "ls", "get", "set", "del", "call", "new", "iterate", "watch", "unwatch",
           "step", "run", "trace", "tracker", "help", "quit", "exit" } ) {
      EXPECT_THAT( help, HasSubstr( "\n" + command + " " ) );
      EXPECT_THAT( console( "help " + command + "\n" ).out, StartsWith( command + " " ) );
   }
}

TEST( AgentConsole, outputThatCannotBeWrittenEndsIt ) {
   const Outcome outcome =
      runProgram( { "/bin/sh", "-c", "\"$0\" console >/dev/full", MOX_AGENT }, "ls\nget frob\n" );
   EXPECT_EQ( outcome.text(), exited( 2, "", "standard output cannot be written\n" ) );
}

}   // namespace
}   // namespace FlowTest
