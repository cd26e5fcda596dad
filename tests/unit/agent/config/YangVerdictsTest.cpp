// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What yanglint says of a document and what this reader says, for thousands of them: every node
// that the schemas know, with everything about it that can be wrong. tools/record-yang makes the
// table and explains its form. Where the two differ, docs/agent.md says why.
#include <cstddef>
#include <fstream>
#include <sstream>
#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

using Json = nlohmann::ordered_json;

std::string
fileText( const std::string& path ) {
   std::ifstream file( path );
   EXPECT_TRUE( file ) << path;
   std::ostringstream text;
   text << file.rdbuf();
   return text.str();
}

struct Change {
   std::string at;
   std::string what;
   std::string text;
};

// The node at the pointer `here` as text, with the change made where it belongs.
std::string
changed( const Json& node, const Change& change, const std::string& here = "" ) {
   const bool isHere = here == change.at;
   if ( isHere && change.what == "is" ) {
      return change.text;
   }
   if ( !node.is_structured() ) {
      return node.dump();
   }
   std::string out = isHere && change.what == "with" ? change.text : "";
   std::size_t position = 0;
   for ( const auto& item : node.items() ) {
      const std::string next =
         here + '/' + ( node.is_array() ? std::to_string( position++ ) : item.key() );
      const bool isNext = next == change.at;
      if ( isNext && change.what == "gone" ) {
         continue;
      }
      out += out.empty() ? "" : ",";
      if ( node.is_object() ) {
         out += Json( isNext && change.what == "name" ? change.text : item.key() ).dump() + ':';
      }
      out += changed( item.value(), change, next );
   }
   return node.is_array() ? '[' + out + ']' : '{' + out + '}';
}

class YangVerdicts : public testing::Test {
 protected:
   YangVerdicts() {
      std::ifstream table( kFolder + "/verdicts.jsonl" );
      for ( std::string line; std::getline( table, line ); ) {
         rows_.push_back( Json::parse( line ) );
      }
   }

   // Calls `each( document, row, try )` for all documents.
   template < typename Each >
   void forEachDocument( const Each& each ) const {
      for ( const Json& row : rows_ ) {
         const Json& base = row[ "doc" ] == "ieee" ? ieee_ : openConfig_;
         for ( const Json& tried : row[ "tries" ] ) {
            each( changed( base, { row[ "at" ], tried[ 0 ], tried[ 1 ] } ), row, tried );
         }
      }
   }

   const std::string kFolder = MOX_YANG_DIR;
   const Json ieee_ = Json::parse( fileText( kFolder + "/ieee.json" ) );
   const Json openConfig_ = Json::parse( fileText( kFolder + "/openconfig.json" ) );
   std::vector< Json > rows_;
};

TEST_F( YangVerdicts, AreThoseOfTheTable ) {
   std::size_t documents = 0;
   std::size_t refused = 0;
   forEachDocument( [ & ]( const std::string& text, const Json& row, const Json& tried ) {
      const ReadResult result = read( text );
      ++documents;
      refused += result.configuration ? 0 : 1;
      EXPECT_EQ( result.configuration ? "yes" : "no", tried[ 3 ] )
         << row[ "doc" ] << ' ' << row[ "at" ] << ' ' << tried << '\n'
         << findingsOf( result );
   } );
   EXPECT_GE( documents, 400u );
   EXPECT_GE( refused, 400u );
   EXPECT_GE( documents - refused, 400u );
}

TEST_F( YangVerdicts, DifferFromThoseOfYanglintOnlyForDocumentedReasons ) {
   const std::string page = fileText( MOX_DOCS_DIR "/agent.md" );
   forEachDocument( [ & ]( const std::string&, const Json& row, const Json& tried ) {
      if ( tried[ 2 ] == tried[ 3 ] ) {
         EXPECT_EQ( tried.size(), 4u ) << row[ "at" ] << ' ' << tried;
         return;
      }
      ASSERT_EQ( tried.size(), 5u ) << row[ "at" ] << ' ' << tried;
      const std::string why = "| `" + tried[ 4 ].get< std::string >() + "` |";
      EXPECT_NE( page.find( why ), std::string::npos ) << why;
      // A document that yanglint refuses is taken for one reason alone.
      EXPECT_EQ( tried[ 3 ] == "yes", tried[ 4 ] == "other-modules" ) << row[ "at" ] << tried;
   } );
}

TEST_F( YangVerdicts, HoldForTheBaseDocuments ) {
   EXPECT_EQ( portsOf( read( ieee_.dump() ) ), "eth1: 100>3001 101>3001; 3001>100\nlo:;\n" );
   EXPECT_EQ( portsOf( read( openConfig_.dump() ) ),
              "eth1: 10>1010 20>1020 22>1020 30>1030 31>1030 32>1030 33>1030; 1010>10; in lag1\n"
              "lag1:;\nvlan7:;\n" );
}

}   // namespace
}   // namespace Agent
