// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The scripts that the models print when they fail are those that vlan-scale-agent replay reads:
// they leave the same index there.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "tests/flow/RunAgent.h"
#include "tests/model/RangeMgrModel.h"
#include "tests/model/RoadModel.h"

namespace {

using nlohmann::json;

// As a failure prints it.
template < class Script >
std::string
printed( const Script& script ) {
   std::ostringstream out;
   rc::state::showValue( script, out );
   return out.str();
}

json
replayed( const std::string& script ) {
   const FlowTest::Outcome outcome =
      FlowTest::runAgent( { "replay", "-" }, script + RangeScript::event( "state" ) + "\n" );
   EXPECT_EQ( outcome.exitCode, 0 ) << outcome.text() << script;
   EXPECT_EQ( outcome.err, "" ) << script;
   // Behind what refused events print.
   const std::size_t last = outcome.out.find_last_of( '\n', outcome.out.size() - 2 );
   return json::parse( outcome.out.substr( last == std::string::npos ? 0 : last + 1 ) );
}

std::string
indexText( const json& state, std::uint64_t ports ) {
   std::string all;
   for ( std::uint64_t port = 1; port <= ports; ++port ) {
      const auto at = state[ "ports" ].find( RangeScript::portName( port ) );
      if ( at != state[ "ports" ].end() ) {
         all +=
            RangeScript::indexText( port, ( *at )[ "ranges" ].dump(), ( *at )[ "starts" ].dump() );
      }
   }
   return all;
}

// Scripts of growing length, by number.
template < class Model, class Real >
TestSupport::ModelScript< Model, Real >
scriptNumber( int number, const rc::Gen< typename Model::Step >& steps ) {
   const rc::Random random( TestSupport::testSeed() + static_cast< std::uint64_t >( number ) );
   return TestSupport::modelScripts< Model, Real >( steps )( random, 10 + 10 * number ).value();
}

TEST( ScriptReplayTest, ScriptsOfTheRangeManagerLeaveTheSameIndex ) {
   SCOPED_TRACE( TestSupport::seedNote( TestSupport::testSeed() ) );
   std::string compared;
   for ( int number = 0; number < 10; ++number ) {
      const auto script = scriptNumber< RangeMgrModel::Model, RangeMgrModel::Real >(
         number, number % 2 == 0 ? RangeMgrModel::fewIds() : RangeMgrModel::manyIds() );
      RangeMgrModel::Real real;
      rc::state::runAll( script, RangeMgrModel::Model(), real );
      const std::string text = printed( script );
      ASSERT_EQ( indexText( replayed( text ), RangeMgrModel::kPorts ), real.indexText() ) << text;
      compared += real.indexText();
   }
   EXPECT_NE( compared, "" ) << "every script ended without a range";
}

TEST( ScriptReplayTest, ScriptsOfTheRoadLeaveTheSameState ) {
   SCOPED_TRACE( TestSupport::seedNote( TestSupport::testSeed() ) );
   for ( int number = 0; number < 10; ++number ) {
      const auto script = scriptNumber< RoadModel::Model, RoadModel::Real >(
         number, RoadModel::steps( true, false ) );
      RoadModel::Real real;
      rc::state::runAll( script, RoadModel::Model(), real );
      const std::string text = RoadModel::kOpening + printed( script );
      const json state = replayed( text );
      ASSERT_EQ( indexText( state, RoadModel::kPorts ) + "status " + state[ "status" ].dump() +
                    "\n",
                 real.indexText() )
         << text;
      ASSERT_EQ( state[ "schedule" ].dump(), real.scheduleText() ) << text;
      for ( std::uint64_t port = 1; port <= RoadModel::kPorts; ++port ) {
         const auto at = state[ "ports" ].find( RangeScript::portName( port ) );
         const bool isSorted = at != state[ "ports" ].end() && !( *at )[ "sorted" ].is_null();
         ASSERT_EQ( isSorted ? ( *at )[ "sorted" ].dump() : "[]", real.sortedText( port ) ) << text;
      }
   }
}

}   // namespace
