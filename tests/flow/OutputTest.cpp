// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Output and errors that cannot be written: they end no command, and the exit code says what
// happened.
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

using Words = std::vector< std::string >;

struct Command {
   std::string name;
   Words words;
   std::string input;
};

std::ostream&
operator<<( std::ostream& out, const Command& command ) {
   return out << command.name;
}

std::string
small() {
   return sample( "small-ieee.json" );
}

const std::string kBad = R"({"openconfig-interfaces:interfaces": {"interface": [{}]}})";

// With each way to end: clean, findings, unusable.
std::vector< Command >
commands() {
   return { { "run", { "run", small() }, "" },
            { "runJson", { "run", "--json", small() }, "" },
            { "runVerbose", { "run", "-v", small() }, "" },
            { "runTraced", { "run", "--trace", "*/*", small() }, "" },
            { "runOfAnAbsentFile", { "run", "/no/such/file" }, "" },
            { "runOfABadFile", { "run", "-" }, kBad },
            { "check", { "check", small() }, "" },
            { "checkWithFindings", { "check", "-" }, kBad },
            { "checkOfNoJson", { "check", "-" }, "{" },
            { "showRanges", { "show", "ranges", small() }, "" },
            { "showRangesJson", { "show", "ranges", "--json", small() }, "" },
            { "showSummary", { "show", "summary", small() }, "" },
            { "showPort", { "show", "port", "uplink1", small() }, "" },
            { "showPortJson", { "show", "port", "--json", "uplink1", small() }, "" },
            { "showNoPort", { "show", "port", "nope", small() }, "" },
            { "showNoVlans", { "show", "ranges", "--vlans", "x", small() }, "" },
            { "replay", { "replay", "-" }, R"({"op":"state"})" },
            { "replayOfNonsense", { "replay", "-" }, "nonsense" },
            { "replayOfAnAbsentFile", { "replay", "/no/such/file" }, "" },
            { "ringsOfAnAbsentFile", { "rings", "/no/such/file" }, "" },
            { "console", { "console", small() }, "get codef.initialized\n" },
            { "consoleThatFails", { "console" }, "frob\n" },
            { "consoleOfStandardInput", { "console", "-" }, "" },
            { "types", { "types" }, "" },
            { "typesMarkdown", { "types", "--markdown" }, "" },
            { "help", { "--help" }, "" },
            { "noCommand", {}, "" },
            { "badTrace", { "run", "--trace", "x", small() }, "" } };
}

class AgentOutput : public testing::TestWithParam< Command > {};

TEST_P( AgentOutput, thatCannotBeWrittenEndsNothing ) {
   const auto& [ name, words, input ] = GetParam();
   const Outcome whole = runAgent( words, input );
   for ( const Stream out :
         { Stream::Kept, Stream::Closed, Stream::FullDevice, Stream::DeadPipe } ) {
      for ( const Stream err :
            { Stream::Kept, Stream::Closed, Stream::FullDevice, Stream::DeadPipe } ) {
         Outcome expected = whole;
         if ( out != Stream::Kept && !whole.out.empty() ) {
            expected.exitCode = 2;
            expected.out = "";
            expected.err += "standard output cannot be written\n";
         }
         if ( err != Stream::Kept ) {
            expected.err = "";
         }
         EXPECT_EQ( runAgent( words, input, out, err ).text(), expected.text() )
            << "output " << static_cast< int >( out ) << ", errors " << static_cast< int >( err );
      }
   }
}

INSTANTIATE_TEST_SUITE_P( Commands, AgentOutput, testing::ValuesIn( commands() ),
                          []( const auto& each ) { return each.param.name; } );

std::string
ringWithout( const Words& options, Stream err ) {
   const ScratchFolder scratch;
   const std::string ring = scratch.path( "ring" );
   Words words{ "run", "--ring", ring, small() };
   words.insert( words.end(), options.begin(), options.end() );
   EXPECT_EQ( runAgent( words, "", Stream::Closed, err ).exitCode, 2 );
   std::string messages;
   for ( const std::string& line : linesOf( runAgent( { "rings", ring } ).out ) ) {
      messages += line.substr( line.find( ' ' ) ) + "\n";
   }
   return messages;
}

TEST( AgentStreams, whatIsClosedTakesNoFileOfTheAgent ) {
   const std::string messages = ringWithout( {}, Stream::Kept );
   EXPECT_NE( messages, "" );
   EXPECT_EQ( ringWithout( { "--trace", "*/*" }, Stream::Closed ), messages );
}

TEST( AgentStreams, aClosedInputCannotBeRead ) {
   for ( const std::string command : { "check", "run", "replay" } ) {
      const Outcome outcome =
         runProgram( { "/bin/sh", "-c", "exec \"$0\" \"$1\" - <&-", MOX_AGENT, command } );
      EXPECT_EQ( outcome.exitCode, 2 ) << command << ": " << outcome.text();
      EXPECT_TRUE( outcome.err.starts_with( "<stdin>: cannot be read" ) ) << outcome.err;
   }
   EXPECT_EQ( runProgram( { "/bin/sh", "-c", "exec \"$0\" console <&-", MOX_AGENT } ).text(),
              exited( 2, "", "<stdin>: cannot be read to its end\n" ) );
}

TEST( AgentStreams, replayStopsWhenItsOutputIsGone ) {
   const ScratchFolder scratch;
   const std::string script = scratch.file( "script", "{\"op\":\"state\"}\nnonsense\n" );
   EXPECT_EQ( runAgent( { "replay", script } ).exitCode, 2 );
   EXPECT_EQ( runAgent( { "replay", script }, "", Stream::DeadPipe ).text(),
              exited( 2, "", "standard output cannot be written\n" ) );
}

}   // namespace
}   // namespace FlowTest
