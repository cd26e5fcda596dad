// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The range manager in a small world of six ids and three mappings: whatever the sequence of
// additions and deletions, it does what the oracle does.
//
// What a call does follows from what the index holds, so it is enough to try every call in every
// index that can be reached: that covers every sequence of calls. An index that was compared in
// full with the oracle's is known by its State; the manager itself comes to it by calls alone, never
// by a copy. That nothing else it may remember matters is tried, too: indexes are entered over every
// call that leads to them and left over every call again.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tests/model/SmallWorldTest.h"
#include "tests/support/AbortState.h"
#include "tests/support/InChild.h"

namespace SmallWorld {
namespace {

using TestSupport::LiteralRangeMgr;

// Indexes that so many calls lead to are entered over each of their last calls, fewer where the
// sequences are short.
constexpr unsigned kCallsEnteredAnew = 4;

// How many calls a sequence may have in the worlds where it takes long to try them all; 0: any
// number.
unsigned
greatestDepth() {
   const char* given = std::getenv( "MOX_EXHAUSTIVE_DEPTH" );
   return given ? static_cast< unsigned >( std::strtoul( given, nullptr, 10 ) ) : 6;
}

class ExhaustiveRangeTest : public SmallWorldTest {
 protected:
   struct Abort {
      Path path;
      Outcome outcome;
   };
   struct Reached {
      State from;
      Call call;
   };

   // The written algorithm.
   Outcome literal( State state, Call call ) const {
      LiteralRangeMgr mgr;
      LiteralRangeEntry& entry = mgr.entry( kIntf );
      entry = entryOf( world_, state );
      const std::uint32_t before = entry.ranges.changes() + entry.starts.changes();
      Outcome outcome;
      try {
         carryOut( mgr, world_, call );
      } catch ( const TestSupport::AssertionFailed& failure ) {
         outcome.aborts = failure.what();
      }
      outcome.state = stateOf( world_, entry );
      outcome.changes = entry.ranges.changes() + entry.starts.changes() - before;
      outcome.lines = std::move( mgr.lines );
      return outcome;
   }

   Path pathTo( State state ) const {
      Path path;
      for ( const Reached* at = &reached_.at( state ); at->call < kCalls;
            at = &reached_.at( at->from ) ) {
         path.push_back( at->call );
      }
      std::ranges::reverse( path );
      return path;
   }

   // Every call in `state`, the last call of `path` being whatever led there.
   void leaveByEveryCall( const Path& path, State state ) {
      for ( Call call = 0; call < kCalls; ++call ) {
         const Outcome outcome = literal( state, call );
         if ( outcome.aborts.empty() ) {
            ASSERT_NO_FATAL_FAILURE( expectCall( path, state, call, outcome, "" ) );
         }
      }
   }

   // Every call in `state`; the indexes that are new.
   std::vector< State > expand( State state, bool entersAnew ) {
      std::vector< State > fresh;
      Path path = pathTo( state );
      for ( Call call = 0; call < kCalls && !HasFatalFailure(); ++call ) {
         Outcome outcome = literal( state, call );
         ++callsTried_;
         if ( !outcome.aborts.empty() ) {
            aborts_.push_back( { path, std::move( outcome ) } );
            aborts_.back().path.push_back( call );
            continue;
         }
         expectCall( path, state, call, outcome, "*" );
         expectCall( path, state, call, outcome, "" );
         if ( reached_.try_emplace( outcome.state, Reached{ state, call } ).second ) {
            fresh.push_back( outcome.state );
            expectSorted( outcome.state );
         } else if ( entersAnew && !HasFatalFailure() ) {
            path.push_back( call );
            leaveByEveryCall( path, outcome.state );
            path.pop_back();
         }
      }
      return fresh;
   }

   // In a child, for it ends the process: same assertion, same lines, same index by then.
   void expectAbort( const Abort& abort, const std::string& levels ) {
      restart( Path( abort.path.begin(), abort.path.end() - 1 ) );
      lines_.clear();
      tracedIs( levels );
      const TestSupport::ChildEnd end = TestSupport::inChild( [ & ] {
         TestSupport::printOnAbort(
            [ this ] { return TestSupport::entryText( entry() ) + linesText( lines_ ); } );
         carryOut( *mgr_, world_, abort.path.back() );
      } );
      tracedIs( "" );
      EXPECT_TRUE( end.aborted() ) << pathText( world_, abort.path ) << end.text();
      const std::string tail =
         ": Assertion `" + abort.outcome.aborts +
         "' failed.\nstate at abort: " + stateText( world_, abort.outcome.state ) +
         ( levels.empty() ? "" : linesText( abort.outcome.lines ) ) + "\n";
      EXPECT_TRUE( end.said.ends_with( tail ) )
         << pathText( world_, abort.path ) << "\n  got " << end.said << "\n  not " << tail;
   }

   std::unordered_map< State, Reached > reached_{ { 0, { 0, kCalls } } };
   std::vector< Abort > aborts_;
   std::uint64_t callsTried_ = 0;
};

// Ids may be added while another mapping holds them.
TEST_P( ExhaustiveRangeTest, EveryCallInEveryIndexDoesWhatTheWrittenAlgorithmDoes ) {
   const unsigned depth = greatestDepth();
   const unsigned entered =
      depth == 0 ? kCallsEnteredAnew : std::min( kCallsEnteredAnew, depth - 2 );
   std::vector< State > front{ 0 };
   for ( unsigned made = 0; !front.empty() && ( depth == 0 || made < depth ); ++made ) {
      std::vector< State > behind;
      for ( const State state : front ) {
         const std::vector< State > fresh = expand( state, made < entered );
         ASSERT_FALSE( HasFailure() );
         behind.insert( behind.end(), fresh.begin(), fresh.end() );
      }
      front = std::move( behind );
      std::printf( "%u calls: %zu indexes, %zu of them new; %llu calls tried, %zu abort\n",
                   made + 1, reached_.size(), front.size(),
                   static_cast< unsigned long long >( callsTried_ ), aborts_.size() );
   }
   reached_ = {};   // a small process forks faster
   for ( std::size_t i = 0; i < aborts_.size() && !HasFailure(); ++i ) {
      expectAbort( aborts_[ i ], "*" );
      expectAbort( aborts_[ i ], "" );
   }
}

INSTANTIATE_TEST_SUITE_P( Worlds, ExhaustiveRangeTest,
                          testing::Values( kLowestIds, kMiddleIds, kHighestIds,
                                           World{ "LowestIdsWithTheEmptyMapping", 1, "AB-" },
                                           World{ "HighestIdsWithTheEmptyMapping", 4089, "AB-" } ),
                          []( const auto& each ) { return std::string( each.param.name ); } );

}   // namespace
}   // namespace SmallWorld
