// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// `replay`: what each event does, seen through the line that "state" prints.
#include <gtest/gtest.h>

#include <csignal>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/flow/Script.h"

namespace FlowTest {
namespace {

constexpr const char* kIdle = R"("task":{"pending":0,"scheduled":true,"work":0}})";
constexpr const char* kVlanError =
   R"({"error":"Bridging::VlanId::value < 1 or > 4094 not allowed"})";
constexpr const char* kStartError =
   R"({"error":"MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed"})";
constexpr const char* kNoneError =
   R"({"error":"Bridging::VlanIdOrNone::value > 4094 not allowed"})";

// Ten entries of a run, ingress and egress.
Script&
addTenIds( Script& script ) {
   for ( unsigned vlan = 100; vlan < 110; ++vlan ) {
      script.op( "ingress-set", "eth1", vlan, 3001 );
   }
   return script.op( "egress-set", "eth1", 3001, 100 );
}

// A state line before anything ran: no scale entry, nothing handed.
std::string
unsorted( const std::string& ports, const std::string& schedule, const std::string& status ) {
   return R"({"codef":{"completed":0,"handed":[]},"ports":{)" + ports + R"(},"schedule":[)" +
          schedule + R"(],"status":[)" + status + "]," + kIdle + "\n";
}

// All states that a script prints.
std::vector< nlohmann::json >
statesOf( const Outcome& outcome ) {
   std::vector< nlohmann::json > states;
   for ( const std::string& line : linesOf( outcome.out ) ) {
      states.push_back( nlohmann::json::parse( line ) );
   }
   return states;
}

TEST( AgentReplay, stateIsOneLineWithSortedKeys ) {
   Script script;
   addTenIds( script ).op( "run" ).op( "state" );
   EXPECT_EQ( script.replay().text(),
              exited( 0,
                      R"({"codef":{"completed":1,"handed":["eth1"]},"ports":{"eth1":{"exact":[],)"
                      R"("ranges":[[100,109,3001]],"sorted":[[100,109,3001]],"starts":[100]}},)"
                      R"("schedule":[],"status":[["eth1",3001,100]],)"
                      R"("task":{"pending":0,"scheduled":false,"work":1}})"
                      "\n",
                      "" ) );
}

TEST( AgentReplay, beforeTheFirstRunNothingIsSorted ) {
   Script script;
   addTenIds( script ).op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted( R"("eth1":{"exact":[],"ranges":[[100,109,3001]],"sorted":null,"starts":[100]})",
                R"("eth1")", R"(["eth1",3001,100])" ) );
}

TEST( AgentReplay, handedAndCompletedCountFromTheLastState ) {
   Script script;
   addTenIds( script ).op( "run" ).op( "state" ).op( "state" );
   script.op( "schedule", "eth1" ).op( "run" ).op( "state" );
   std::string seen;
   for ( const auto& state : statesOf( script.replay() ) ) {
      seen += state.at( "codef" ).dump() + state.at( "task" ).at( "work" ).dump() + "\n";
   }
   EXPECT_EQ( seen, R"({"completed":1,"handed":["eth1"]}1)"
                    "\n"
                    R"({"completed":0,"handed":[]}1)"
                    "\n"
                    R"({"completed":1,"handed":["eth1"]}2)"
                    "\n" );
}

TEST( AgentReplay, aFreshLibraryRunsOnceAndCompletes ) {
   Script script;
   script.op( "state" ).op( "run" ).op( "state" );
   EXPECT_EQ( script.replay().out,
              unsorted( "", "", "" ) +
                 R"({"codef":{"completed":1,"handed":[]},"ports":{},"schedule":[],"status":[],)"
                 R"("task":{"pending":0,"scheduled":false,"work":0}})"
                 "\n" );
}

TEST( AgentReplay, anEmptyScriptPrintsNothing ) {
   EXPECT_EQ( Script().replay().text(), exited( 0, "", "" ) );
}

TEST( AgentReplay, ingressDelSplitsShrinksAndRemovesRanges ) {
   Script script;
   addTenIds( script );
   for ( const unsigned vlan : { 100u, 109u, 105u, 50u } ) {
      script.op( "ingress-del", "eth1", vlan );
   }
   script.op( "state" );
   for ( unsigned vlan = 101; vlan < 109; ++vlan ) {
      script.op( "ingress-del", "eth1", vlan );
   }
   script.op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted(
         R"("eth1":{"exact":[],"ranges":[[101,104,3001],[106,108,3001]],"sorted":null,"starts":[106,101]})",
         R"("eth1")", R"(["eth1",3001,100])" ) +
         unsorted( R"("eth1":{"exact":[],"ranges":[],"sorted":null,"starts":[]})", R"("eth1")",
                   R"(["eth1",3001,100])" ) );
}

TEST( AgentReplay, egressDelRemovesTheStatus ) {
   Script script;
   script.op( "egress-set", "b", 7, 70 )
      .op( "egress-set", "a", 8, 80 )
      .op( "egress-set", "a", 7, 71 );
   script.op( "state" ).op( "egress-del", "a", 8 ).op( "egress-del", "a", 9 ).op( "state" );
   EXPECT_EQ( script.replay().out, unsorted( "", "", R"(["a",7,71],["a",8,80],["b",7,70])" ) +
                                      unsorted( "", "", R"(["a",7,71],["b",7,70])" ) );
}

TEST( AgentReplay, aChangedEntryIsDeletedAndAdded ) {
   Script script;
   script.op( "ingress-set", "e", 7, 8 )
      .op( "ingress-set", "e", 8, 8 )
      .op( "ingress-set", "e", 9, 8 );
   script.op( "ingress-set", "e", 8, 5 ).op( "state" );
   script.op( "ingress-set", "e", 8, 8 ).op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted(
         R"("e":{"exact":[],"ranges":[[7,7,8],[8,8,5],[9,9,8]],"sorted":null,"starts":[9,8,7]})",
         R"("e")", "" ) +
         unsorted( R"("e":{"exact":[],"ranges":[[7,9,8]],"sorted":null,"starts":[7]})", R"("e")",
                   "" ) );
}

TEST( AgentReplay, anUnchangedEntrySchedulesNothing ) {
   Script script;
   script.op( "ingress-set", "e", 7, 8 ).op( "run" ).op( "ingress-set", "e", 7, 8 ).op( "state" );
   EXPECT_EQ( statesOf( script.replay() ).at( 0 ).at( "schedule" ).dump(), "[]" );
}

TEST( AgentReplay, rangesBeyondTheRangeEntriesGetExactEntries ) {
   Script script;
   for ( const unsigned vlan : { 10u, 11u, 12u, 20u, 21u, 30u, 4094u } ) {
      script.op( "ingress-set", "e", vlan, 9 );
   }
   script.op( "run" ).op( "state" );
   EXPECT_EQ( statesOf( script.replay( "1" ) ).at( 0 ).at( "ports" ).dump(),
              R"({"e":{"exact":[20,21,30,4094],)"
              R"("ranges":[[10,12,9],[20,21,9],[30,30,9],[4094,4094,9]],)"
              R"("sorted":[[10,12,9],[20,21,9],[30,30,9],[4094,4094,9]],)"
              R"("starts":[4094,30,20,10]}})" );
}

TEST( AgentReplay, exactEntriesFollowTheRangesOfTheNextRun ) {
   Script script;
   script.op( "ingress-set", "e", 10, 9 ).op( "ingress-set", "e", 12, 9 ).op( "run" ).op( "state" );
   script.op( "ingress-set", "e", 11, 9 ).op( "state" ).op( "run" ).op( "state" );
   std::string seen;
   for ( const auto& state : statesOf( script.replay( "1" ) ) ) {
      seen += state.at( "ports" ).at( "e" ).dump() + "\n";
   }
   EXPECT_EQ(
      seen,
      R"({"exact":[12],"ranges":[[10,10,9],[12,12,9]],"sorted":[[10,10,9],[12,12,9]],"starts":[12,10]})"
      "\n"
      R"({"exact":[12],"ranges":[[10,12,9]],"sorted":[[10,10,9],[12,12,9]],"starts":[10]})"
      "\n"
      R"({"exact":[],"ranges":[[10,12,9]],"sorted":[[10,12,9]],"starts":[10]})"
      "\n" );
}

TEST( AgentReplay, manualDeliversNothingBeforeInitialize ) {
   Script script;
   addTenIds( script.op( "manual" ) ).op( "state" ).op( "initialize" ).op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted( "", "", "" ) +
         unsorted( R"("eth1":{"exact":[],"ranges":[[100,109,3001]],"sorted":null,"starts":[100]})",
                   R"("eth1")", R"(["eth1",3001,100])" ) );
}

TEST( AgentReplay, manualIsHeldToTheEndOfTheScript ) {
   Script script;
   addTenIds( script.op( "manual" ) ).op( "run" ).op( "state" );
   EXPECT_EQ( script.replay().out,
              R"({"codef":{"completed":1,"handed":[]},"ports":{},"schedule":[],"status":[],)"
              R"("task":{"pending":0,"scheduled":false,"work":0}})"
              "\n" );
}

TEST( AgentReplay, manualMayFollowBlankLines ) {
   Script script;
   script.line( "" ).line( " \t\r" ).op( "manual" ).op( "ingress-set", "e", 1, 2 ).op( "state" );
   EXPECT_EQ( script.replay().text(), exited( 0, unsorted( "", "", "" ), "" ) );
}

TEST( AgentReplay, initializeTwiceChangesNoRange ) {
   Script script;
   addTenIds( script ).op( "initialize" ).op( "initialize" ).op( "state" );
   EXPECT_EQ( statesOf( script.replay() ).at( 0 ).at( "ports" ).dump(),
              R"({"eth1":{"exact":[],"ranges":[[100,109,3001]],"sorted":null,"starts":[100]}})" );
}

TEST( AgentReplay, policyAlwaysHandsOneInterfaceAStep ) {
   Script script;
   script.yield( "always" );
   for ( const char* port : { "c", "a", "b" } ) {
      script.op( "schedule", port );
   }
   script.op( "state" );
   for ( int step = 0; step < 5; ++step ) {
      script.op( "step" ).op( "state" );
   }
   std::string seen;
   for ( const auto& state : statesOf( script.replay() ) ) {
      seen += state.at( "codef" ).dump() + state.at( "schedule" ).dump() +
              state.at( "task" ).dump() + "\n";
   }
   EXPECT_EQ( seen,
              R"({"completed":0,"handed":[]}["c","a","b"]{"pending":0,"scheduled":true,"work":0}
{"completed":0,"handed":["c"]}["a","b"]{"pending":2,"scheduled":true,"work":1}
{"completed":0,"handed":["a"]}["b"]{"pending":1,"scheduled":true,"work":2}
{"completed":0,"handed":["b"]}[]{"pending":0,"scheduled":true,"work":3}
{"completed":1,"handed":[]}[]{"pending":0,"scheduled":false,"work":3}
{"completed":0,"handed":[]}[]{"pending":0,"scheduled":false,"work":3}
)" );
}

TEST( AgentReplay, policyNeverHandsAllInterfacesInOneStep ) {
   Script script;
   script.yield( "always" ).yield( "never" );
   for ( const char* port : { "c", "a", "b" } ) {
      script.op( "schedule", port );
   }
   script.op( "step" ).op( "state" );
   const auto state = statesOf( script.replay() ).at( 0 );
   EXPECT_EQ( state.at( "codef" ).dump(), R"({"completed":0,"handed":["c","a","b"]})" );
   EXPECT_EQ( state.at( "schedule" ).dump(), "[]" );
}

TEST( AgentReplay, policyQuantumComesToTheSameEnd ) {
   Script always;
   Script quantum;
   always.yield( "always" );
   quantum.yield( "always" ).yield( "quantum" );
   for ( Script* script : { &always, &quantum } ) {
      addTenIds( *script ).op( "schedule", "b" ).op( "run" ).op( "state" );
   }
   EXPECT_EQ( quantum.replay().text(), always.replay().text() );
}

TEST( AgentReplay, anInterfaceThatIsScheduledTwiceIsHandedOnce ) {
   Script script;
   script.op( "schedule", "a" )
      .op( "schedule", "b" )
      .op( "schedule", "a" )
      .op( "run" )
      .op( "state" );
   EXPECT_EQ( statesOf( script.replay() ).at( 0 ).at( "codef" ).at( "handed" ).dump(),
              R"(["a","b"])" );
}

TEST( AgentReplay, hookAddIngressWithoutEntryAddsTheEmptyMapping ) {
   Script script;
   script.op( "hook-add-ingress", "e", 5 ).op( "state" );
   EXPECT_EQ( script.replay().out,
              unsorted( R"("e":{"exact":[],"ranges":[[5,5,0]],"sorted":null,"starts":[5]})",
                        R"("e")", "" ) );
}

TEST( AgentReplay, hookAddIngressTakesTheEntryOfTheDirectory ) {
   Script script;
   script.op( "ingress-set", "e", 5, 9 ).op( "index-del", "e", 5 ).op( "hook-add-ingress", "e", 5 );
   script.op( "state" );
   EXPECT_EQ( statesOf( script.replay() ).at( 0 ).at( "ports" ).at( "e" ).at( "ranges" ).dump(),
              "[[5,5,9]]" );
}

TEST( AgentReplay, hookDelIngressRemovesFromTheIndexAndSchedules ) {
   Script script;
   script.op( "index-add", "e", 5, 9 ).op( "index-add", "e", 6, 9 );
   script.op( "hook-del-ingress", "e", 5 ).op( "state" );
   EXPECT_EQ( script.replay().out,
              unsorted( R"("e":{"exact":[],"ranges":[[6,6,9]],"sorted":null,"starts":[6]})",
                        R"("e")", "" ) );
}

TEST( AgentReplay, hookAddEgressWithoutEntryWritesTheDefaultStatus ) {
   Script script;
   script.op( "hook-add-egress", "e", 5 )
      .op( "state" )
      .op( "hook-del-egress", "e", 5 )
      .op( "state" );
   const std::string state = unsorted( "", "", R"(["",1,0])" );
   EXPECT_EQ( script.replay().out, state + state );
}

TEST( AgentReplay, hookDelEgressRemovesTheStatusAlone ) {
   Script script;
   script.op( "egress-set", "e", 5, 50 ).op( "hook-del-egress", "e", 5 ).op( "state" );
   script.op( "hook-add-egress", "e", 5 ).op( "state" );
   EXPECT_EQ( script.replay().out, unsorted( "", "", "" ) + unsorted( "", "", R"(["e",5,50])" ) );
}

TEST( AgentReplay, indexEventsScheduleNothing ) {
   Script script;
   script.op( "index-add", "e", 5, 9 ).op( "index-add", "e", 6, 9 ).op( "index-del", "e", 5 );
   script.op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted( R"("e":{"exact":[],"ranges":[[6,6,9]],"sorted":null,"starts":[6]})", "", "" ) );
}

TEST( AgentReplay, uncheckedIdsPrintTheRangeExceptionAndTheScriptGoesOn ) {
   Script script;
   script.op( "index-add", "e", 0, 5 )
      .op( "index-add", "e", 4095, 5 )
      .op( "index-add", "e", 5000, 5 );
   script.op( "hook-add-ingress", "e", 4095 ).op( "hook-del-ingress", "e", 0 ).op( "state" );
   EXPECT_EQ(
      script.replay().text(),
      exited( 0,
              std::string( kVlanError ) + "\n" + kStartError + "\n" + kStartError + "\n" +
                 kStartError + "\n" + kVlanError + "\n" +
                 unsorted( R"("e":{"exact":[],"ranges":[],"sorted":null,"starts":[]})", "", "" ),
              "" ) );
}

TEST( AgentReplay, aMappingTo4095IsRefusedBeforeAnythingIsAddedOrScheduled ) {
   Script script;
   script.op( "ingress-set", "e", 7, 4095 ).op( "state" );
   EXPECT_EQ( script.replay().text(),
              exited( 0, std::string( kNoneError ) + "\n" + unsorted( "", "", "" ), "" ) );
}

TEST( AgentReplay, theIndexTakesAMappingTo4095Unchecked ) {
   Script script;
   script.op( "index-add", "e", 7, 4095 ).op( "state" );
   EXPECT_EQ(
      script.replay().out,
      unsorted( R"("e":{"exact":[],"ranges":[[7,7,4095]],"sorted":null,"starts":[7]})", "", "" ) );
}

TEST( AgentReplay, anOverlappingRangeHidesTheOneBelow ) {
   Script script;
   for ( const unsigned vlan : { 10u, 11u, 12u } ) {
      script.op( "index-add", "e", vlan, 5 );
   }
   script.op( "index-add", "e", 11, 6 ).op( "state" ).op( "index-del", "e", 12 ).op( "state" );
   script.op( "index-del", "e", 11 ).op( "state" );
   const std::string overlap = unsorted(
      R"("e":{"exact":[],"ranges":[[10,12,5],[11,11,6]],"sorted":null,"starts":[11,10]})", "", "" );
   EXPECT_EQ( script.replay().out,
              overlap + overlap +
                 unsorted( R"("e":{"exact":[],"ranges":[[10,12,5]],"sorted":null,"starts":[10]})",
                           "", "" ) );
}

TEST( AgentReplay, vlanOneUnderTheEmptyMappingAbortsWhereItIsJoined ) {
   Script script;
   script.op( "index-add", "e", 1, 0 ).op( "state" ).op( "index-add", "e", 2, 0 ).op( "state" );
   const Outcome outcome = script.replay();
   EXPECT_EQ( outcome.signal, SIGABRT );
   EXPECT_EQ(
      outcome.out,
      unsorted( R"("e":{"exact":[],"ranges":[[1,1,0]],"sorted":null,"starts":[1]})", "", "" ) );
   EXPECT_NE( outcome.err.find(
                 "Assertion `vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )' failed." ),
              std::string::npos )
      << outcome.err;
   EXPECT_TRUE( outcome.err.starts_with( "MoxVlanMapping/MoxVlanRangeMgr:" ) ) << outcome.err;
}

TEST( AgentReplay, leavingAnAggregateSchedulesThePort ) {
   Script script;
   script.lagSet( "e", "lag1" ).op( "state" ).op( "lag-del", "e" ).op( "state" );
   EXPECT_EQ( script.replay().out, unsorted( "", "", "" ) + unsorted( "", R"("e")", "" ) );
}

TEST( AgentReplay, leavingNoAggregateSchedulesNothing ) {
   Script script;
   script.op( "lag-del", "e" ).lagSet( "e", "lag1" ).lagSet( "e", "lag2" ).op( "state" );
   EXPECT_EQ( script.replay().out, unsorted( "", "", "" ) );
}

TEST( AgentReplay, portsStandByNameAndStatusByPort ) {
   Script script;
   for ( const char* port : { "eth2", "eth10", "eth1" } ) {
      script.op( "ingress-set", port, 5, 6 ).op( "egress-set", port, 6, 5 );
   }
   script.op( "state" );
   EXPECT_EQ( script.replay().out,
              unsorted( R"("eth1":{"exact":[],"ranges":[[5,5,6]],"sorted":null,"starts":[5]},)"
                        R"("eth10":{"exact":[],"ranges":[[5,5,6]],"sorted":null,"starts":[5]},)"
                        R"("eth2":{"exact":[],"ranges":[[5,5,6]],"sorted":null,"starts":[5]})",
                        R"("eth2","eth10","eth1")",
                        R"(["eth1",6,5],["eth10",6,5],["eth2",6,5])" ) );
}

TEST( AgentReplay, readsAFileAsItReadsStandardInput ) {
   const ScratchFolder scratch;
   Script script;
   addTenIds( script ).op( "run" ).op( "state" );
   const std::string file = scratch.file( "script.jsonl", script.text() );
   EXPECT_EQ( runAgent( { "replay", file } ).text(), script.replay().text() );
}

TEST( AgentReplay, theLastLineNeedsNoLineEnd ) {
   EXPECT_EQ( runAgent( { "replay", "-" }, R"({"op":"state"})" ).text(),
              exited( 0, unsorted( "", "", "" ), "" ) );
}

}   // namespace
}   // namespace FlowTest
