// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// `replay`: lines that cannot be carried out.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tests/flow/Script.h"

namespace FlowTest {
namespace {

constexpr const char* kFresh =
   R"({"codef":{"completed":0,"handed":[]},"ports":{},"schedule":[],"status":[],)"
   R"("task":{"pending":0,"scheduled":true,"work":0}})"
   "\n";

// What comes of `line` as the fourth, between two states: the first is printed, the second not.
void
expectRefused( const std::string& line, const std::string& cause ) {
   Script script;
   script.op( "state" ).line( "" ).line( "  " ).line( line ).op( "state" );
   EXPECT_EQ( script.replay().text(), exited( 2, kFresh, "<stdin>:4: " + cause + "\n" ) );
}

TEST( AgentReplayError, anUnknownEventNamesTheKnownOnes ) {
   expectRefused( R"({"op":"nope"})",
                  R"("op": "nope" is not allowed; allowed: ingress-set, ingress-del, egress-set, )"
                  "egress-del, hook-add-ingress, hook-del-ingress, hook-add-egress, "
                  "hook-del-egress, index-add, index-del, lag-set, lag-del, schedule, yield, "
                  "step, run, initialize, manual, state" );
}

TEST( AgentReplayError, everyEventNeedsAllItsMembers ) {
   const std::vector< std::pair< std::string, std::string > > lines{
      { R"({})", "op" },
      { R"({"port":"e"})", "op" },
      { R"({"op":"ingress-set","vlan":1,"relay":2})", "port" },
      { R"({"op":"ingress-set","port":"e","relay":2})", "vlan" },
      { R"({"op":"ingress-set","port":"e","vlan":1})", "relay" },
      { R"({"op":"egress-set","port":"e","vlan":1})", "relay" },
      { R"({"op":"ingress-del","port":"e"})", "vlan" },
      { R"({"op":"egress-del","port":"e"})", "vlan" },
      { R"({"op":"hook-add-ingress","port":"e"})", "vlan" },
      { R"({"op":"hook-del-ingress","port":"e"})", "vlan" },
      { R"({"op":"hook-add-egress","vlan":1})", "port" },
      { R"({"op":"hook-del-egress","vlan":1})", "port" },
      { R"({"op":"index-add","port":"e","vlan":1})", "relay" },
      { R"({"op":"index-del","port":"e"})", "vlan" },
      { R"({"op":"lag-set","port":"e"})", "lag" },
      { R"({"op":"lag-del"})", "port" },
      { R"({"op":"schedule"})", "port" },
      { R"({"op":"yield"})", "policy" } };
   for ( const auto& [ line, member ] : lines ) {
      expectRefused( line, "\"" + member + "\" is missing" );
   }
}

TEST( AgentReplayError, aSurplusMemberNamesTheAllowedOnes ) {
   expectRefused( R"({"op":"schedule","port":"e","x":1})",
                  R"("x" is not allowed; allowed: "port")" );
   expectRefused( R"({"op":"index-del","port":"e","vlan":1,"relay":2})",
                  R"("relay" is not allowed; allowed: "port", "vlan")" );
   for ( const std::string op : { "state", "run", "step", "initialize" } ) {
      expectRefused( R"({"op":")" + op + R"(","port":"e"})",
                     R"("port" is not allowed; allowed: nothing besides "op")" );
   }
}

TEST( AgentReplayError, aMemberOfTheWrongTypeNamesTheRightOne ) {
   expectRefused( R"({"op":3})", R"("op": 3 is not allowed; allowed: a string)" );
   expectRefused( R"({"op":"schedule","port":1})",
                  R"("port": 1 is not allowed; allowed: a string)" );
   expectRefused( R"({"op":"lag-set","port":"e","lag":null})",
                  R"("lag": null is not allowed; allowed: a string)" );
   for ( const std::string vlan : { "\"1\"", "1.0", "true", "null", "[...]" } ) {
      const std::string written = vlan == "[...]" ? "[1]" : vlan;
      expectRefused( R"({"op":"index-del","port":"e","vlan":)" + written + "}",
                     R"("vlan": )" + vlan + " is not allowed; allowed: 0..65535" );
   }
}

TEST( AgentReplayError, aNumberBeyondSixteenBitsNamesTheRange ) {
   for ( const std::string number : { "65536", "-1", "4294967297", "18446744073709551617" } ) {
      const Outcome outcome =
         Script()
            .line( R"({"op":"index-add","port":"e","vlan":1,"relay":)" + number + "}" )
            .replay();
      EXPECT_EQ( outcome.exitCode, 2 ) << number;
      EXPECT_EQ( outcome.out, "" ) << number;
      EXPECT_TRUE( outcome.err.starts_with( R"(<stdin>:1: "relay": )" ) ) << outcome.err;
      EXPECT_TRUE( outcome.err.ends_with( " is not allowed; allowed: 0..65535\n" ) ) << outcome.err;
   }
}

TEST( AgentReplayError, sixteenBitsAreTaken ) {
   Script script;
   script.op( "index-add", "e", 1, 65535 );
   EXPECT_EQ( script.replay().text(), exited( 0, "", "" ) );
}

TEST( AgentReplayError, aMemberThatStandsTwiceIsRefused ) {
   expectRefused( R"({"op":"schedule","port":"e","port":"f"})", R"("port" stands twice)" );
   expectRefused( R"({"op":"state","op":"state"})", R"("op" stands twice)" );
}

TEST( AgentReplayError, aLineIsAnObject ) {
   expectRefused( "[1]", "[...] is not allowed; allowed: an object" );
   expectRefused( "null", "null is not allowed; allowed: an object" );
   expectRefused( "\"state\"", "\"state\" is not allowed; allowed: an object" );
}

TEST( AgentReplayError, brokenJsonNamesFileLineAndCause ) {
   for ( const std::string line :
         { R"({"op":)", R"({"op":"state"} x)", R"({"op":"state"}{"op":"state"})", "}",
           "\xEF\xBB\xBF{\"op\":\"state\"}", "{\"op\":\"sta\xFFte\"}" } ) {
      const ScratchFolder scratch;
      const std::string file = scratch.file( "script", "\n" + line + "\n" );
      const Outcome outcome = runAgent( { "replay", file } );
      EXPECT_EQ( outcome.exitCode, 2 ) << line;
      EXPECT_EQ( outcome.out, "" ) << line;
      EXPECT_TRUE( outcome.err.starts_with( file + ":2: " ) ) << outcome.err;
      EXPECT_EQ( linesOf( outcome.err ).size(), 1u ) << outcome.err;
   }
}

TEST( AgentReplayError, aLineHasAMebibyteAtMost ) {
   constexpr std::size_t kMost = 1024 * 1024;
   const std::string event = R"({"op":"state"})";
   const std::string longest = event + std::string( kMost - event.size(), ' ' );
   for ( const std::string end : { "", "\n" } ) {
      EXPECT_EQ( runAgent( { "replay", "-" }, longest + end ).exitCode, 0 );
      EXPECT_EQ( runAgent( { "replay", "-" }, "\n" + longest + " " + end ).text(),
                 exited( 2, "", "<stdin>:2: the line is longer than 1048576 bytes\n" ) );
   }
   EXPECT_EQ( runAgent( { "replay", "/dev/zero" } ).text(),
              exited( 2, "", "/dev/zero:1: the line is longer than 1048576 bytes\n" ) );
}

TEST( AgentReplayError, anUnknownPolicyNamesTheKnownOnes ) {
   expectRefused( R"({"op":"yield","policy":"often"})",
                  R"("policy": "often" is not allowed; allowed: "quantum", "always", "never")" );
}

TEST( AgentReplayError, manualStandsOnTheFirstLineAlone ) {
   expectRefused( R"({"op":"manual"})", R"("manual" is allowed on the first line alone)" );
   EXPECT_EQ( Script().op( "manual" ).op( "manual" ).replay().text(),
              exited( 2, "", "<stdin>:2: \"manual\" is allowed on the first line alone\n" ) );
}

TEST( AgentReplayError, withoutRangeManagerNothingReachesTheIndex ) {
   for ( const std::string op : { "hook-add-ingress", "hook-del-ingress", "index-del" } ) {
      EXPECT_EQ( Script().op( "manual" ).op( op, "e", 5 ).replay().text(),
                 exited( 2, "", "<stdin>:2: there is no range manager before \"initialize\"\n" ) );
   }
   EXPECT_EQ( Script().op( "manual" ).op( "index-add", "e", 5, 6 ).replay().exitCode, 2 );
}

TEST( AgentReplayError, whatTheLinesBeforePrintedStaysPrinted ) {
   Script script;
   script.op( "ingress-set", "e", 7, 4095 ).op( "state" ).line( "nonsense" );
   const Outcome outcome = script.replay();
   EXPECT_EQ( outcome.exitCode, 2 );
   EXPECT_EQ( outcome.out,
              std::string( R"({"error":"Bridging::VlanIdOrNone::value > 4094 not allowed"})" ) +
                 "\n" + kFresh );
}

TEST( AgentReplayError, aScriptThatCannotBeReadIsNamed ) {
   const ScratchFolder scratch;
   const std::string absent = scratch.path( "absent" );
   EXPECT_EQ( runAgent( { "replay", absent } ).text(),
              exited( 2, "", absent + ": No such file or directory\n" ) );
   const std::string folder = scratch.path();
   EXPECT_EQ( runAgent( { "replay", folder } ).text(),
              exited( 2, "", folder + ": cannot be read to its end\n" ) );
}

}   // namespace
}   // namespace FlowTest
