// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// The pages of docs/ that the agent can tell to be stale.
#include <gtest/gtest.h>

#include <cstddef>
#include <iterator>
#include <sstream>
#include <string>
#include <vector>

#include "tests/flow/ConsoleRun.h"

namespace FlowTest {
namespace {

std::string
page( const std::string& name ) {
   return textOfFile( std::string( MOX_DOCS_DIR ) + "/" + name );
}

TEST( Pages, typesIsWhatTheAgentPrints ) {
   EXPECT_EQ( page( "types.md" ), runAgent( { "types", "--markdown" } ).out )
      << "docs/types.md is stale: vlan-scale-agent types --markdown >docs/types.md";
}

// What stands behind prompts, and the rest.
struct Dialogue {
   std::string commands;
   std::string answers;
};

Dialogue
dialogueOf( const std::string& text ) {
   const std::string fence = "```\n";
   const std::size_t begin = text.find( "\n" + fence ) + 1 + fence.size();
   const std::size_t end = text.find( "\n" + fence, begin ) + 1;
   Dialogue dialogue;
   for ( const std::string& line : linesOf( text.substr( begin, end - begin ) ) ) {
      if ( line.starts_with( "> " ) ) {
         dialogue.commands += line.substr( 2 ) + "\n";
      } else {
         dialogue.answers += line + "\n";
      }
   }
   return dialogue;
}

// A terminal shows no "line N: " before errors.
std::string
asOnATerminal( const std::string& output ) {
   std::string shown;
   for ( const std::string& line : linesOf( output ) ) {
      const std::size_t number = line.starts_with( "line " ) ? 5 : std::string::npos;
      const std::size_t behind = line.find_first_not_of( "0123456789", number );
      const bool numbered =
         number < behind && behind < line.size() && line.compare( behind, 2, ": " ) == 0;
      shown += ( numbered ? line.substr( behind + 2 ) : line ) + "\n";
   }
   return shown;
}

// The first block of README.md: a command line and what it prints.
TEST( Pages, readmeShowsWhatTheAgentPrints ) {
   const std::string readme = page( "../README.md" );
   const std::string fence = "\n```\n";
   const std::size_t begin = readme.find( fence ) + fence.size();
   const std::string block = readme.substr( begin, readme.find( fence, begin ) + 1 - begin );
   const std::string prompt = "$ vlan-scale-agent ";
   ASSERT_TRUE( block.starts_with( prompt ) ) << block;
   const std::size_t end = block.find( '\n' );
   std::istringstream line( block.substr( prompt.size(), end - prompt.size() ) );
   std::vector< std::string > words{ std::istream_iterator< std::string >( line ), {} };
   const std::string folder = "samples/";
   ASSERT_TRUE( words.back().starts_with( folder ) ) << words.back();
   words.back() = sample( words.back().substr( folder.size() ) );
   const std::string shown = block.substr( end + 1 );
   EXPECT_EQ( runAgent( words ).out, shown );
   EXPECT_EQ( linesOf( shown ).size(), 10u );
}

TEST( Pages, consoleShowsASessionAsItGoes ) {
   const Dialogue shown = dialogueOf( page( "console.md" ) );
   ASSERT_GT( linesOf( shown.commands ).size(), 10u );
   const Outcome outcome = consoleInOneStream( shown.commands, sample( "small-ieee.json" ) );
   EXPECT_EQ( asOnATerminal( outcome.out ), tableOffNote() + shown.answers );
}

}   // namespace
}   // namespace FlowTest
