// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Commands that the console refuses: what it says, and that nothing changes.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "tests/flow/ConsoleRun.h"

namespace FlowTest {
namespace {

struct Refused {
   std::string name;
   std::string command;
   std::string error;
};

std::ostream&
operator<<( std::ostream& out, const Refused& refused ) {
   return out << refused.command;
}

const std::string kLists = "iterate ranges.vlanRangeEntry\n"
                           "iterate ranges.vlanRangeEntry[7].vlanIdRange\n"
                           "iterate ranges.vlanRangeEntry[7].revSortedStartVid\n"
                           "iterate schedule.vlanXlateSchedule\n"
                           "iterate acsd.portToLag\n"
                           "iterate acsd.ingressConfigDir.config\n"
                           "get sm.vlanRangeMgr\n"
                           "get codef.task\n"
                           "ls codef\n"
                           "watch\n"
                           "ls\n";

std::vector< std::string >
splitAt( const std::string& text, const std::string& mark ) {
   std::vector< std::string > parts{ "" };
   for ( const std::string& line : linesOf( text ) ) {
      if ( line == mark ) {
         parts.emplace_back();
      } else {
         parts.back() += line + "\n";
      }
   }
   return parts;
}

class AgentConsoleError : public testing::TestWithParam< Refused > {};

TEST_P( AgentConsoleError, namesWhatIsWrongAndChangesNothing ) {
   const std::string before = addVlan( 7, 10, 100 ) + addVlan( 7, 20, 100 ) +
                              "set schedule.vlanXlateSchedule 7 true\n"
                              "set acsd.portToLag 7 1\n"
                              "watch acsd\n"
                              "new mark Zel::String ----\n" +
                              kLists;
   const Outcome outcome =
      console( before + GetParam().command + "\nget mark\n" + kLists + "quit\n" );

   const std::size_t line = linesOf( before ).size() + 1;
   EXPECT_EQ( outcome.err, "line " + std::to_string( line ) + ": " + GetParam().error + "\n" );
   EXPECT_EQ( outcome.exitCode, 2 );
   const std::vector< std::string > parts = splitAt( outcome.out, "----" );
   ASSERT_EQ( parts.size(), 3u ) << outcome.out;
   EXPECT_NE( parts[ 1 ], "" );
   EXPECT_EQ( parts[ 1 ], parts[ 2 ] );
}

const std::string kRoots = "acsd, codef, mark, ranges, schedule, scheduler, sm";
const std::string kAddArguments = "( intfId: Corvel::IntfId, vlanId: Bridging::VlanId, "
                                  "mapping: Bridging::VlanXlateMapping )";
const std::string kIdForm = "expected a number from 0 to 18446744073709551615, found ";
const std::string kPathForm = "a path is ROOT{.attribute | .attribute[key]}";

const std::vector< Refused > kRefused{
   // words
   { "unknownCommand", "frob ranges", "there is no command \"frob\"; `help` lists them" },
   { "unknownCommandInHelp", "help frob", "there is no command \"frob\"; `help` lists them" },
   { "tooFewWords", "get", "usage: get PATH" },
   { "tooManyWords", "step 3", "usage: step" },
   { "bracketNotClosed", "get ranges.vlanRangeEntry[7", "[ is not closed: [7" },
   { "bracketNotOpened", "get ranges]", "] without its partner: get ranges]" },
   { "bracketsCrossed", "get ranges[(])", "] without its partner: get ranges[(])" },
   { "quoteNotClosed", "set sm.bridgingConfig.bridgeName 'a b", "' is not closed: 'a b" },
   // paths
   { "unknownRoot", "get frob.x", "there is no \"frob\"; there are: " + kRoots },
   { "unknownAttribute", "get schedule.frob",
     "MoxVlanMapping::VlanXlateScheduleDir has no attribute \"frob\"; it has: vlanXlateSchedule" },
   { "attributeOfATypeWithoutAny", "get scheduler.workWaiting.frob",
     "bool has no attribute \"frob\"; it has: none" },
   { "emptyName", "get ranges..x", "\"ranges..x\" is no path; " + kPathForm },
   { "noPath", "get ranges!", "\"ranges!\" is no path: unexpected \"!\"; " + kPathForm },
   { "keyOfARoot", "get ranges[7]", "\"ranges[7]\" is no path: unexpected \"[7]\"; " + kPathForm },
   { "secondKey", "get acsd.portToLag[7][7]",
     "\"acsd.portToLag[7][7]\" is no path: unexpected \"[7]\"; " + kPathForm },
   { "keyOfAField", "get codef.initialized[7]",
     "codef.initialized is a settable value and has no keys" },
   { "missingKey", "get ranges.vlanRangeEntry",
     "ranges.vlanRangeEntry is an entity map: name a member, "
     "ranges.vlanRangeEntry[Corvel::IntfId], or iterate" },
   { "missingKeyOnTheWay", "get ranges.vlanRangeEntry.intfId",
     "ranges.vlanRangeEntry is an entity map: name a member, "
     "ranges.vlanRangeEntry[Corvel::IntfId], or iterate" },
   { "unparsableKey", "get ranges.vlanRangeEntry[x]",
     "ranges.vlanRangeEntry[x]: key is a Corvel::IntfId: " + kIdForm + "\"x\" at offset 0" },
   { "keyOutOfRange", "get ranges.vlanRangeEntry[7].vlanIdRange[4095]",
     "ranges.vlanRangeEntry[7].vlanIdRange[4095]: key is a Bridging::VlanId: "
     "Bridging::VlanId::value < 1 or > 4094 not allowed" },
   { "attributeOfNull", "get ranges.vlanRangeEntry[8].intfId", "ranges.vlanRangeEntry[8] is null" },
   { "lsOfNull", "ls ranges.vlanRangeEntry[8]", "ranges.vlanRangeEntry[8] is null" },
   { "getOfAMethod", "get codef.drainBacklog",
     "codef.drainBacklog is a callable method: no get; it supports: call" },
   // set
   { "setOfARoot", "set ranges 1", "ranges is no attribute; a path to one is ranges.attribute" },
   { "setOfAField", "set ranges.vlanRangeEntry[7].intfId 9",
     "ranges.vlanRangeEntry[7].intfId is a field: no set; it supports: get" },
   { "setOfAPointer", "set codef.acsd acsd", "codef.acsd is a pointer: no set; it supports: get" },
   { "setWithoutValue", "set schedule.vlanXlateSchedule[9]",
     "schedule.vlanXlateSchedule[9] takes ( key: Corvel::IntfId, value: bool ), 1 given" },
   { "setWithSurplusValue", "set codef.initialized true false",
     "codef.initialized takes ( value: bool ), 2 given" },
   { "setOfAWrongValue", "set codef.initialized maybe",
     "codef.initialized: value: expected false or true, found \"maybe\" at offset 0; "
     "takes ( value: bool )" },
   { "setWithTextBehindTheValue", "set acsd.portToLag 7 9x",
     "acsd.portToLag: value: expected the end of the text, found \"x\" at offset 1; "
     "takes ( key: Corvel::IntfId, value: Corvel::IntfId )" },
   { "setFalseInAHashSet", "set schedule.vlanXlateSchedule 7 false",
     "schedule.vlanXlateSchedule: a hash set only holds true; delete the key instead" },
   { "setOfNull", "set codef.task null",
     "codef.task: value: null is not accepted; name a Quen::Task by its path; "
     "takes ( value: Quen::Task )" },
   { "setOfANullPath", "set sm.vlanRangeMgr ranges.vlanRangeEntry[8]",
     "sm.vlanRangeMgr: vlanRangeEntryDir: ranges.vlanRangeEntry[8] is null; "
     "takes ( vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir )" },
   { "setOfAnotherEntity", "set codef.task scheduler",
     "codef.task: value: scheduler is a Quen::TaskScheduler, not a Quen::Task; "
     "takes ( value: Quen::Task )" },
   { "setOfAnotherValue", "set codef.initialized $ranges.vlanRangeEntry[7].intfId",
     "codef.initialized: value: ranges.vlanRangeEntry[7].intfId is a Corvel::IntfId, not a bool; "
     "takes ( value: bool )" },
   { "setOfAKeyBesideAValueThatHoldsIt", "set ranges.vlanRangeEntry[7].vlanIdRange[10]",
     "ranges.vlanRangeEntry[7].vlanIdRange[10]: the value holds its key; "
     "takes ( value: MoxVlanMapping::VlanRangeXlateMapping )" },
   // del
   { "delOfAField", "del ranges.vlanRangeEntry[7].intfId",
     "ranges.vlanRangeEntry[7].intfId is a field: no delete; it supports: get" },
   { "delOfACollection", "del acsd.portToLag",
     "acsd.portToLag takes ( key: Corvel::IntfId ), 0 given" },
   { "delOfAnAgentsRoot", "del ranges",
     "ranges belongs to the agent; only what `new` made can be deleted" },
   { "valueOutOfRange", "set codef.task.taskQuantum -1",
     "codef.task.taskQuantum: Quen::Task::taskQuantum < 0 not allowed" },
   // call
   { "callOfAMethodThatIsNotCallable", "call sm.vlanRangeMgr.deleteVlanFromRange 7 10 x",
     "sm.vlanRangeMgr.deleteVlanFromRange is described only; generic access does not call it" },
   { "callOfAField", "call codef.initialized",
     "codef.initialized is a settable value: no call; it supports: get, set" },
   { "callWithTooFewArguments", "call sm.vlanRangeMgr.addVlanToIdx 7 11",
     "sm.vlanRangeMgr.addVlanToIdx takes " + kAddArguments + ", 2 given" },
   { "callWithAWrongArgument",
     "call sm.vlanRangeMgr.addVlanToIdx 7 0 $ranges.vlanRangeEntry[7].vlanIdRange[10].mapping",
     "sm.vlanRangeMgr.addVlanToIdx: vlanId: Bridging::VlanId::value < 1 or > 4094 not allowed; "
     "takes " +
        kAddArguments },
   { "callWithAWrongPartOfAnArgument",
     "call sm.vlanRangeMgr.addVlanToIdx 7 11 Value('Bridging::VlanXlateMapping')",
     "sm.vlanRangeMgr.addVlanToIdx: mapping: expected \"Value('Bridging::VlanXlateMapping', ** "
     "{\", found \"Value('Bridging::VlanXla...\" at offset 0; takes " +
        kAddArguments },
   // new
   { "newOfAnUnknownType", "new x frob", "there is no type \"frob\"; `types` lists them" },
   { "newOfAnAbstractType", "new x MoxVlanMapping::MoxVlanRangeMappingCodef",
     "MoxVlanMapping::MoxVlanRangeMappingCodef is abstract; nothing can be made of it" },
   { "newUnderATakenName", "new ranges MoxVlanMapping::VlanRangeEntryDir",
     "there is already a \"ranges\"" },
   { "newUnderNoName", "new 1x bool true",
     "\"1x\" is no name; letters, digits and _ make one, no digit first" },
   { "newUnderTheNameNull", "new null bool true",
     "\"null\" is no name; letters, digits and _ make one, no digit first" },
   { "newWithTooFewArguments", "new x MoxVlanMapping::MoxVlanRangeMgr",
     "MoxVlanMapping::MoxVlanRangeMgr takes "
     "( vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir ), 0 given" },
   { "newOfAValueOutOfRange", "new x Bridging::VlanId 4095",
     "Bridging::VlanId: value: Bridging::VlanId::value < 1 or > 4094 not allowed; "
     "takes ( value: Bridging::VlanId )" },
   // the rest
   { "unknownType", "type frob", "there is no type \"frob\"; `types` lists them" },
   { "iterateOfAField", "iterate codef.initialized", "codef.initialized is no collection" },
   { "iterateOfAMember", "iterate acsd.portToLag[7]", "acsd.portToLag[7] is no collection" },
   { "watchOfAnEntityWithoutList", "watch ranges",
     "ranges is a MoxVlanMapping::VlanRangeEntryDir, which tells nobody of its changes" },
   { "watchOfAValue", "watch codef.initialized",
     "codef.initialized is a bool, which tells nobody of its changes" },
   { "unwatchOfWhatIsNotWatched", "unwatch ranges",
     "ranges is not watched; `watch` lists what is" },
   { "traceWithoutLevels", "trace frob",
     "frob: expected \"/\", found the end of the text at offset 4" },
};

INSTANTIATE_TEST_SUITE_P( Commands, AgentConsoleError, testing::ValuesIn( kRefused ),
                          []( const auto& each ) { return each.param.name; } );

TEST( AgentConsoleErrors, theNextLineIsCarriedOut ) {
   EXPECT_EQ( console( "get nope.x\n\nget codef.initialized\nfrob\n" ).text(),
              exited( 2, "true\n",
                      "line 1: there is no \"nope\"; there are: acsd, codef, ranges, schedule, "
                      "scheduler, sm\n"
                      "line 4: there is no command \"frob\"; `help` lists them\n" ) );
}

// One argument too few and one too many, where there is a bound.
TEST( AgentConsoleErrors, everyCommandKnowsHowManyArgumentsItTakes ) {
   const std::vector< std::pair< std::string, std::string > > usageOfEach{
      { "types x", "types" },
      { "type", "type NAME" },
      { "type x x", "type NAME" },
      { "ls x x", "ls [PATH]" },
      { "get", "get PATH" },
      { "get x x", "get PATH" },
      { "set", "set PATH [ARGUMENT...]" },
      { "del", "del PATH" },
      { "del x x", "del PATH" },
      { "call", "call PATH [ARGUMENT...]" },
      { "new x", "new NAME TYPE [ARGUMENT...]" },
      { "iterate", "iterate PATH" },
      { "iterate x x", "iterate PATH" },
      { "watch x x", "watch [PATH]" },
      { "unwatch", "unwatch PATH" },
      { "unwatch x x", "unwatch PATH" },
      { "step x", "step" },
      { "run x", "run" },
      { "trace x x", "trace [HANDLE/LEVELS]" },
      { "tracker x", "tracker" },
      { "help x x", "help [COMMAND]" },
      { "quit x", "quit" },
      { "exit x", "exit" },
   };
   std::string commands;
   std::string errors;
   std::size_t line = 0;
   for ( const auto& [ command, usage ] : usageOfEach ) {
      commands += command + "\n";
      errors += "line " + std::to_string( ++line ) + ": usage: " + usage + "\n";
   }
   EXPECT_EQ( console( commands ).text(), exited( 2, "", errors ) );
}

TEST( AgentConsoleErrors, standInOrderWithTheOutput ) {
   EXPECT_EQ( consoleInOneStream( "get codef.initialized\nstep 1\nget codef.initialized\n",
                                  sample( "small-ieee.json" ) )
                 .out,
              tableOffNote() + "true\nline 2: usage: step\ntrue\n" );
}

TEST( AgentConsoleErrors, deepNestingIsOnlyAnError ) {
   const Outcome outcome = console( "get " + std::string( 1000000, '[' ) + "\n" );
   EXPECT_EQ( outcome.text(),
              exited( 2, "", "line 1: [ is not closed: " + std::string( 60, '[' ) + "...\n" ) );
}

}   // namespace
}   // namespace FlowTest
