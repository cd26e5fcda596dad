// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Memory that runs out: wherever it does, a command ends by itself and says what it was at.
#include <gtest/gtest.h>

#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "tests/flow/Script.h"

namespace FlowTest {
namespace {

using Words = std::vector< std::string >;

// Little text that becomes many ranges, so that what is made of it is larger than itself.
std::string
manyRanges() {
   std::string ids;
   for ( unsigned vlan = 2; vlan <= 4094; vlan += 2 ) {
      ids += ( ids.empty() ? "" : "," ) + std::to_string( vlan );
   }
   std::string ports;
   for ( const std::string name : { "a", "b", "c", "d" } ) {
      ports += ( ports.empty() ? "" : ",\n" ) +
               ( R"({"name": ")" + name + R"(", "config": {"name": ")" + name +
                 R"(", "type": "iana-if-type:ethernetCsmacd"}, "subinterfaces": {"subinterface": [
{"index": 1, "config": {"index": 1}, "openconfig-vlan:vlan": {
"match": {"single-tagged-list": {"config": {"vlan-ids": [)" +
                 ids + R"(]}}},
"ingress-mapping": {"config": {"vlan-stack-action": "SWAP", "vlan-id": 5}},
"egress-mapping": {"config": {"vlan-stack-action": "SWAP", "vlan-id": 2}}}}]}})" );
   }
   return R"({"openconfig-interfaces:interfaces": {"interface": [)" + ports + "]}}\n";
}

std::string
longScript() {
   Script script;
   for ( const std::string port : { "a", "b" } ) {
      for ( unsigned vlan = 2; vlan <= 4094; vlan += 2 ) {
         script.op( "ingress-set", port, vlan, 5 );
      }
   }
   return script.op( "run" ).op( "state" ).text();
}

Outcome
runWithin( unsigned kibibytes, const Words& words, const std::string& file ) {
   Words all{ "/bin/sh", "-c", "ulimit -v " + std::to_string( kibibytes ) + "; exec \"$0\" \"$@\"",
              MOX_AGENT };
   all.insert( all.end(), words.begin(), words.end() );
   all.push_back( file );
   return runProgram( all );
}

struct Command {
   std::string name;
   Words words;
   bool replays = false;
};

std::ostream&
operator<<( std::ostream& out, const Command& command ) {
   return out << command.name;
}

class AgentMemoryLimit : public testing::TestWithParam< Command > {};

TEST_P( AgentMemoryLimit, isAnErrorThatNamesTheFileAndTheWork ) {
   constexpr unsigned kStep = 192;
   constexpr unsigned kMost = 512 * 1024;
   const auto& [ name, words, replays ] = GetParam();
   const ScratchFolder scratch;
   const std::string file = scratch.file( "file", replays ? longScript() : manyRanges() );
   Words unlimited = words;
   unlimited.push_back( file );
   const Outcome whole = runAgent( unlimited );
   ASSERT_EQ( whole.exitCode, 0 ) << whole.text();

   // From where the program itself can start.
   unsigned limit = kStep;
   while ( limit < kMost && runWithin( limit, words, "/no/such/file" ).err.find( "No such file" ) ==
                               std::string::npos ) {
      limit += kStep;
   }
   std::set< std::string > told;
   for ( ; limit < kMost; limit += kStep ) {
      const Outcome outcome = runWithin( limit, words, file );
      if ( outcome.exitCode == 0 ) {
         EXPECT_EQ( outcome.text(), whole.text() );
         break;
      }
      EXPECT_EQ( outcome.exitCode, 2 ) << limit << " KiB: " << outcome.text();
      EXPECT_TRUE( whole.out.starts_with( outcome.out ) ) << limit << " KiB";
      told.insert( outcome.err );
   }
   EXPECT_LT( limit, kMost );
   const std::string begin = file + ": out of memory while ";
   const std::set< std::string > wanted =
      replays ? std::set< std::string >{ begin + "replaying it\n" }
              : std::set< std::string >{ begin + "reading it\n", begin + "applying it\n",
                                         begin + "reporting on it\n" };
   EXPECT_FALSE( told.empty() );
   for ( const std::string& line : told ) {
      EXPECT_TRUE( wanted.contains( line ) ) << line;
   }
}

INSTANTIATE_TEST_SUITE_P(
   Commands, AgentMemoryLimit,
   testing::Values( Command{ "run", { "run" } }, Command{ "runJson", { "run", "--json" } },
                    Command{ "check", { "check" } },
                    Command{ "showRangesJson", { "show", "ranges", "--json" } },
                    Command{ "showPortJson", { "show", "port", "--json", "a" } },
                    Command{ "replay", { "replay" }, true } ),
   []( const auto& each ) { return each.param.name; } );

}   // namespace
}   // namespace FlowTest
