// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// `check`, and what every command makes of a file that it cannot apply.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

constexpr const char* kPortPath =
   "/ietf-interfaces:interfaces/interface[name='eth1']/ieee802-dot1q-bridge:bridge-port/";

// One port with the entries of its ingress table from line 8 on, and one unused member.
std::string
onePort( const std::string& entries ) {
   return R"({"ieee802-dot1q-bridge:bridges": {"bridge": [{"name": "b", )"
          R"("address": "00-00-5E-00-53-01", "bridge-type": "provider-bridge", )"
          R"("component": [{"name": "c", "type": "s-vlan-component"}]}]}, )"
          R"("ietf-interfaces:interfaces": {"interface": [
  {"name": "eth1",
   "type": "iana-if-type:ethernetCsmacd",
   "enabled": true,
   "ieee802-dot1q-bridge:bridge-port": {
     "bridge-name": "b", "component-name": "c", "enable-vid-translation-table": true,
     "vid-translations": [
)" + entries +
          "\n]}}]}}\n";
}

const std::string&
oneFault() {
   static const std::string text = onePort( R"({"local-vid": 10, "relay-vid": 110},
{"local-vid": 4095, "relay-vid": 111})" );
   return text;
}

std::string
finding( const std::string& file, const std::string& place, const std::string& sentence ) {
   return file + ":" + place + " " + sentence + "\n";
}

std::string
faultOf( const std::string& file ) {
   return finding(
      file, std::string( "9: " ) + kPortPath + "vid-translations[local-vid='4095']/local-vid:",
      "value 4095 is not allowed; allowed: 1..4094" );
}

// Every command that reads a configuration, without the file.
std::vector< std::vector< std::string > >
applyingCommands() {
   return { { "run" },
            { "run", "--json" },
            { "show", "ranges" },
            { "show", "ranges", "--json" },
            { "show", "summary" },
            { "show", "port", "eth1" } };
}

Outcome
applied( std::vector< std::string > command, const std::string& file,
         const std::string& input = "" ) {
   command.push_back( file );
   return runAgent( command, input );
}

TEST( AgentCheck, aCleanFileExitsWithZero ) {
   const std::string file = sample( "small-ieee.json" );
   EXPECT_EQ( runAgent( { "check", file } ).text(),
              exited( 0, "", tableOffNote() + file + ": clean, 7 ports, 126 mappings\n" ) );
}

TEST( AgentCheck, theSampleSwitchIsClean ) {
   const std::string file = sample( "switch-52port.json" );
   EXPECT_EQ( runAgent( { "check", file } ).text(),
              exited( 0, "", file + ": clean, 52 ports, 36,775 mappings\n" ) );
}

TEST( AgentCheck, listsEveryFindingOnALineOfItsOwnAndExitsWithOne ) {
   const ScratchFolder scratch;
   const std::string file =
      scratch.file( "bad.json", onePort( R"({"local-vid": 0, "relay-vid": 110},
{"local-vid": 11, "relay-vid": 4095},
{"local-vid": 12},
{"local-vid": 13, "relay-vid": 113},
{"local-vid": 13, "relay-vid": 114},
{"local-vid": 14, "relay-vid": 113})" ) );
   const std::string path = std::string( kPortPath ) + "vid-translations";
   EXPECT_EQ(
      runAgent( { "check", file } ).text(),
      exited( 1,
              finding( file, "8: " + path + "[local-vid='0']/local-vid:",
                       "value 0 is not allowed; allowed: 1..4094" ) +
                 finding( file, "9: " + path + "[local-vid='11']/relay-vid:",
                          "value 4095 is not allowed; allowed: 1..4094" ) +
                 finding( file, "10: " + path + "[local-vid='12']/relay-vid:",
                          "is missing; allowed: 1..4094" ) +
                 finding( file, "12: " + path + "[local-vid='13']/local-vid:",
                          "value 13 is already used on line 11; allowed: each key once" ) +
                 finding( file, "13: " + path + "[local-vid='14']/relay-vid:",
                          "value 113 is already the relay-vid of local-vid 13 on line 11; allowed: "
                          "one local-vid for each relay-vid while "
                          "enable-egress-vid-translation-table is false" ),
              file + ": 5 findings\n" ) );
}

TEST( AgentCheck, oneFindingIsCountedInTheSingular ) {
   EXPECT_EQ( runAgent( { "check", "-" }, oneFault() ).text(),
              exited( 1, faultOf( "<stdin>" ), "<stdin>: 1 finding\n" ) );
}

TEST( AgentCheck, verboseNamesTheUnusedMembersWithTheirNumber ) {
   const ScratchFolder scratch;
   const std::string file =
      scratch.file( "good.json", onePort( R"({"local-vid": 10, "relay-vid": 9})" ) );
   EXPECT_EQ( runAgent( { "check", "--verbose", file } ).text(),
              exited( 0, "",
                      "not used: /ieee802-dot1q-bridge:bridges/bridge/address (1x): checked, has "
                      "no effect\n"
                      "not used: /ieee802-dot1q-bridge:bridges/bridge/bridge-type (1x): checked, "
                      "has no effect\n"
                      "not used: /ieee802-dot1q-bridge:bridges/bridge/component/type (1x): "
                      "checked, has no effect\n"
                      "not used: /ietf-interfaces:interfaces/interface/type (1x): checked, has "
                      "no effect\n"
                      "not used: /ietf-interfaces:interfaces/interface/enabled (1x): not used "
                      "by this agent\n"
                      "not used: /ietf-interfaces:interfaces/interface/"
                      "ieee802-dot1q-bridge:bridge-port/bridge-name (1x): checked, has no effect\n"
                      "not used: /ietf-interfaces:interfaces/interface/"
                      "ieee802-dot1q-bridge:bridge-port/component-name (1x): checked, has no "
                      "effect\n" +
                         file + ": clean, 1 port, 1 mapping\n" ) );
}

TEST( AgentCheck, jsonNamesEveryFinding ) {
   EXPECT_EQ( runAgent( { "check", "--json", "-" }, oneFault() ).text(),
              exited( 1,
                      R"({
  "file": "<stdin>",
  "findings": [
    {
      "allowed": "1..4094",
      "column": null,
      "line": 9,
      "path": ")" + std::string( kPortPath ) +
                         R"(vid-translations[local-vid='4095']/local-vid",
      "problem": "is not allowed",
      "value": "4095"
    }
  ],
  "mappings": null,
  "ports": null,
  "unused": []
}
)",
                      "<stdin>: 1 finding\n" ) );
}

TEST( AgentCheck, jsonOfACleanFileCountsWhatIsThere ) {
   EXPECT_EQ(
      runAgent( { "check", "--json", "-" }, onePort( R"({"local-vid": 10, "relay-vid": 9})" ) )
         .text(),
      exited( 0, R"({
  "file": "<stdin>",
  "findings": [],
  "mappings": 1,
  "ports": 1,
  "unused": [
    {
      "count": 1,
      "path": "/ieee802-dot1q-bridge:bridges/bridge/address",
      "reason": "checked, has no effect"
    },
    {
      "count": 1,
      "path": "/ieee802-dot1q-bridge:bridges/bridge/bridge-type",
      "reason": "checked, has no effect"
    },
    {
      "count": 1,
      "path": "/ieee802-dot1q-bridge:bridges/bridge/component/type",
      "reason": "checked, has no effect"
    },
    {
      "count": 1,
      "path": "/ietf-interfaces:interfaces/interface/type",
      "reason": "checked, has no effect"
    },
    {
      "count": 1,
      "path": "/ietf-interfaces:interfaces/interface/enabled",
      "reason": "not used by this agent"
    },
    {
      "count": 1,
      "path": "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/bridge-name",
      "reason": "checked, has no effect"
    },
    {
      "count": 1,
      "path": "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/component-name",
      "reason": "checked, has no effect"
    }
  ]
}
)",
              "<stdin>: clean, 1 port, 1 mapping\n" ) );
}

TEST( AgentCheck, jsonOfAFileThatCannotBeLookedIntoHasTheCause ) {
   const ScratchFolder scratch;
   const std::string absent = scratch.path( "ab\u200bsent.json" );
   const Outcome outcome = runAgent( { "check", "--json", absent } );
   EXPECT_EQ( outcome.exitCode, 2 );
   const auto document = nlohmann::json::parse( outcome.out );
   EXPECT_EQ( document.at( "file" ), absent );
   EXPECT_EQ( document.at( "ports" ), nullptr );
   ASSERT_EQ( document.at( "findings" ).size(), 1u );
   EXPECT_EQ( document.at( "findings" )[ 0 ].at( "problem" ),
              "cannot be opened: No such file or directory" );
   EXPECT_EQ( document.at( "findings" )[ 0 ].at( "line" ), nullptr );
}

TEST( AgentCheck, aMisspeltTableIsAFinding ) {
   std::string text = onePort( R"({"local-vid": 10, "relay-vid": 9})" );
   text.replace( text.find( "vid-translations" ), std::string( "vid-translations" ).size(),
                 "vid-translation" );
   EXPECT_EQ( runAgent( { "check", "-" }, text ).text(),
              exited( 1,
                      finding( "<stdin>", std::string( "7: " ) + kPortPath + "vid-translation:",
                               "is unknown; allowed: vid-translations perhaps" ),
                      "<stdin>: 1 finding\n" ) );
}

TEST( AgentCheck, oneLineCountsMembersOfOtherModulesAndTablesThatAreOff ) {
   std::string text = onePort( R"({"local-vid": 10, "relay-vid": 9})" );
   text.replace( text.find( "true,\n     \"vid" ), 4, "false" );
   const std::string off = "1 entry of tables that are not enabled";
   EXPECT_EQ( runAgent( { "check", "-" }, text ).text(),
              exited( 0, "",
                      "<stdin>: not used: " + off +
                         "; -v names them\n<stdin>: clean, 1 port, 0 mappings\n" ) );
   text.insert( 1, R"("acme:a": {"x": 1, "y": [2]}, )" );
   const std::string both = "<stdin>: not used: 2 members of other modules, " + off;
   EXPECT_EQ( runAgent( { "check", "-" }, text ).text(),
              exited( 0, "", both + "; -v names them\n<stdin>: clean, 1 port, 0 mappings\n" ) );
   const std::string named = runAgent( { "check", "-v", "-" }, text ).err;
   EXPECT_NE( named.find( "not used: /acme:a/y (1x): of another module\n" ), std::string::npos );
   EXPECT_NE( named.find( "vid-translations (1x): enable-vid-translation-table is false\n" ),
              std::string::npos );
   EXPECT_NE( named.find( both + "\n<stdin>: clean" ), std::string::npos ) << named;
}

TEST( AgentCheck, aFileThatCannotBeLookedIntoExitsWithTwo ) {
   const ScratchFolder scratch;
   const std::string absent = scratch.path( "absent.json" );
   EXPECT_EQ( runAgent( { "check", absent } ).text(),
              exited( 2, "", absent + ": cannot be opened: No such file or directory\n" ) );
   const std::string folder = scratch.path();
   EXPECT_EQ( runAgent( { "check", folder } ).text(),
              exited( 2, "", folder + ": cannot be read: Is a directory\n" ) );
   const std::string empty = scratch.file( "empty.json", "" );
   EXPECT_EQ( runAgent( { "check", empty } ).text(),
              exited( 2, "",
                      empty + ":1:1: not valid JSON: the text is empty; allowed: JSON in UTF-8 as "
                              "RFC 8259 defines it\n" ) );
}

TEST( AgentCheck, brokenJsonNamesLineAndColumn ) {
   const Outcome outcome = runAgent( { "check", "-" }, "{\n\"a\": 1,\n\"b\" 2}\n" );
   EXPECT_EQ( outcome.exitCode, 2 );
   EXPECT_EQ( outcome.out, "" );
   EXPECT_TRUE( outcome.err.starts_with( "<stdin>:3:5: not valid JSON: " ) ) << outcome.err;
   EXPECT_EQ( linesOf( outcome.err ).size(), 1u ) << outcome.err;
}

TEST( AgentCheck, anUnknownFormatNamesTheKnownOnes ) {
   EXPECT_EQ( runAgent( { "check", "-" }, R"({"some:thing": {}})" ).text(),
              exited( 2, "",
                      "<stdin>:1: unknown format: no known member stands at the top; allowed: a "
                      "top-level member openconfig-interfaces:interfaces, or "
                      "ietf-interfaces:interfaces and ieee802-dot1q-bridge:bridges\n" ) );
}

TEST( AgentBadFile, oneFaultIsOneLineAndNothingIsShown ) {
   const ScratchFolder scratch;
   const std::string file = scratch.file( "bad.json", oneFault() );
   for ( const auto& command : applyingCommands() ) {
      EXPECT_EQ( applied( command, file ).text(), exited( 2, "", faultOf( file ) ) );
   }
}

TEST( AgentBadFile, furtherFaultsAreCountedBehindTheFirst ) {
   const ScratchFolder scratch;
   const std::string bad = R"({"local-vid": 10, "relay-vid": 0})";
   const std::vector< std::vector< std::string > > cases{
      { R"({"local-vid": 4095, "relay-vid": 10})", "1 finding" },
      { R"({"local-vid": 4095, "relay-vid": 4096})", "2 findings" } };
   for ( const auto& more : cases ) {
      const std::string file = scratch.file( "bad.json", onePort( bad + ",\n" + more[ 0 ] ) );
      const std::string first = finding(
         file, std::string( "8: " ) + kPortPath + "vid-translations[local-vid='10']/relay-vid:",
         "value 0 is not allowed; allowed: 1..4094" );
      for ( const auto& command : applyingCommands() ) {
         EXPECT_EQ( applied( command, file ).text(),
                    exited( 2, "",
                            first + "and " + more[ 1 ] + " more; `vlan-scale-agent check " + file +
                               "` shows all\n" ) );
      }
   }
}

TEST( AgentBadFile, moreMappingsThanTheLimitAreRefusedByEveryCommand ) {
   const ScratchFolder scratch;
   const std::string file =
      scratch.file( "three.json", onePort( R"({"local-vid": 1, "relay-vid": 5},
{"local-vid": 2, "relay-vid": 6}, {"local-vid": 3, "relay-vid": 7})" ) );
   std::vector< std::vector< std::string > > commands = applyingCommands();
   commands.push_back( { "console" } );
   for ( std::vector< std::string > command : commands ) {
      command.insert( command.end(), { "--max-mappings", "3" } );
      EXPECT_EQ( applied( command, file ).exitCode, 0 );
      command.back() = "2";
      EXPECT_EQ( applied( command, file ).text(),
                 exited( 2, "",
                         file + ":1: /: asks for 3 mappings; allowed: at most 2; --max-mappings "
                                "sets another limit\n" ) );
   }
   EXPECT_EQ( runAgent( { "check", "--max-mappings", "2", file } ).exitCode, 1 );
   EXPECT_EQ( runAgent( { "check", "--max-mappings", "0", file } ).exitCode, 2 );
}

TEST( AgentBadFile, anUnusableFileIsOneLineForEveryCommand ) {
   const ScratchFolder scratch;
   const std::string absent = scratch.path( "absent.json" );
   for ( const auto& command : applyingCommands() ) {
      EXPECT_EQ( applied( command, absent ).text(),
                 exited( 2, "", absent + ": cannot be opened: No such file or directory\n" ) );
      for ( const std::string text : { "", "{", "[]", "null", "{}" } ) {
         const Outcome outcome = applied( command, "-", text );
         EXPECT_EQ( outcome.exitCode, 2 ) << text;
         EXPECT_EQ( outcome.out, "" ) << text;
         EXPECT_TRUE( outcome.err.starts_with( "<stdin>:1:" ) ) << outcome.err;
         EXPECT_EQ( linesOf( outcome.err ).size(), 1u ) << outcome.err;
      }
   }
}

TEST( AgentBadFile, aMappingWithoutTranslatedVlanNeverReachesTheLibrary ) {
   for ( const std::string relay : { "0", "4095", "null", "\"\"" } ) {
      const Outcome outcome =
         runAgent( { "run", "-" }, onePort( R"({"local-vid": 1, "relay-vid": )" + relay + "}" ) );
      EXPECT_EQ( outcome.exitCode, 2 ) << outcome.text();
      EXPECT_EQ( outcome.signal, 0 ) << outcome.text();
      EXPECT_NE( outcome.err.find( "1..4094" ), std::string::npos ) << outcome.err;
   }
}

}   // namespace
}   // namespace FlowTest
