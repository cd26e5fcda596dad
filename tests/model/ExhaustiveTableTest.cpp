// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The range manager in a small world whose ids are removed before another mapping takes them, against
// tables of which mapping holds which id.
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "tests/model/SmallWorldTest.h"

namespace SmallWorld {
namespace {

// Which mapping holds each id: 0 for none, else its number plus one. Nothing of the written algorithm
// is in here: an index is the maximal runs of a table.
using Table = std::array< std::uint8_t, kIds >;

class ExhaustiveTableTest : public SmallWorldTest {
 protected:
   struct Run {
      unsigned low;
      unsigned high;
      unsigned mapping;
   };

   static std::vector< Run > runsOf( const Table& table ) {
      std::vector< Run > runs;
      for ( unsigned id = 0; id < kIds; ++id ) {
         if ( table[ id ] != 0 && id > 0 && table[ id - 1 ] == table[ id ] ) {
            runs.back().high = id;
         } else if ( table[ id ] != 0 ) {
            runs.push_back( { id, id, table[ id ] - 1u } );
         }
      }
      return runs;
   }
   static State stateOfRuns( const std::vector< Run >& runs ) {
      State state = 0;
      for ( const Run& run : runs ) {
         state |= rangeState( run.low, run.high, run.mapping ) | startState( run.low );
      }
      return state;
   }
   static std::uint8_t at( const Table& table, unsigned id ) {
      return id < kIds ? table[ id ] : std::uint8_t( 0 );
   }
   static Table behind( Table table, Call call ) {
      table[ idOf( call ) ] =
         isAddition( call ) ? static_cast< std::uint8_t >( mappingOf( call ) + 1 ) : 0;
      return table;
   }
   // The caller of an index removes an id before another mapping takes it.
   static bool isAllowed( const Table& table, Call call ) {
      const std::uint8_t held = table[ idOf( call ) ];
      return !isAddition( call ) || held == 0 || held == mappingOf( call ) + 1;
   }

   // What a call decides, at level 1 of trace, and how many elements come and go.
   Outcome outcomeOf( const Table& table, Call call ) const {
      const unsigned id = idOf( call );
      Outcome outcome{ stateOfRuns( runsOf( behind( table, call ) ) ), 0, "", {} };
      const auto decide = [ & ]( const std::string& text, std::uint32_t changes ) {
         outcome.lines.push_back( "1 " + text );
         outcome.changes += changes;
      };
      const std::uint8_t held = table[ id ];
      if ( isAddition( call ) ) {
         const std::uint8_t mapping = static_cast< std::uint8_t >( mappingOf( call ) + 1 );
         const bool below = id > 0 && table[ id - 1 ] == mapping;
         const bool above = at( table, id + 1 ) == mapping;
         if ( held != 0 ) {
            decide( "addVlanToIdx already present returning ", 0 );
            return outcome;
         }
         if ( below && above ) {
            decide( "addVlanToIdx merge 2 ranges ", 4 );
         } else if ( below ) {
            decide( "addVlanToIdx append to end of prev range", 2 );
         } else if ( above ) {
            decide( "addVlanToIdx append to start of curRange ", 4 );
         } else {
            decide( "addVlanToIdx vid not present in prev and cur: ", 2 );
         }
         for ( const Run& run : runsOf( behind( table, call ) ) ) {
            if ( run.low <= id && id <= run.high ) {
               decide( Zel::traceText( "addVlanToIdx adding new Range: ",
                                       Range( world_.vid( run.low ), world_.vid( run.high ),
                                              world_.mapping( run.mapping ) ) ),
                       0 );
            }
         }
         return outcome;
      }
      const bool below = id > 0 && table[ id - 1 ] == held;
      const bool above = at( table, id + 1 ) == held;
      if ( held == 0 ) {
         decide( "deleteVlanFromIdx vid not present in lower and upper bound range ", 0 );
         return outcome;
      }
      decide( below ? "deleteVlanFromIdx vid present in lower bound range "
                    : "deleteVlanFromIdx vid present in upper bound range ",
              0 );
      if ( below && above ) {
         decide( "deleteVlanFromRange spliting  Range ", 4 );
      } else if ( below ) {
         decide( "deleteVlanFromRange remove highVid from Range ", 2 );
      } else if ( above ) {
         decide( "deleteVlanFromRange remove lowVid from Range ", 4 );
      } else {
         decide( "deleteVlanFromRange removing size 1 Range ", 2 );
      }
      return outcome;
   }

   // The bound tests, of each id under each mapping and under any.
   void expectAnswers( const Table& table ) {
      for ( unsigned id = 0; id < kIds; ++id ) {
         const bool starts = table[ id ] != 0 && ( id == 0 || table[ id - 1 ] != table[ id ] );
         for ( unsigned mapping = 0; mapping <= kMappings; ++mapping ) {
            const bool any = mapping == kMappings;
            const auto asked = any ? TestSupport::mappingOf( '-' ) : world_.mapping( mapping );
            const bool matches = table[ id ] != 0 && ( any || table[ id ] == mapping + 1 );
            const VlanId vid = world_.vid( id );
            ASSERT_EQ( mgr_->isVidAndDot1qInLowerBoundRange( kIntf, vid, asked ), matches )
               << vid << " in " << stateText( world_, stateOfRuns( runsOf( table ) ) );
            ASSERT_EQ( mgr_->isVidAndDot1qInUpperBoundRange( kIntf, vid, asked ),
                       matches && starts )
               << vid << " in " << stateText( world_, stateOfRuns( runsOf( table ) ) );
         }
      }
   }

   // Calls `visit` with every table, and a path that leads to it.
   template < class Visit >
   void eachTable( const Visit& visit ) {
      std::map< Table, Path > paths{ { Table{}, Path{} } };
      for ( std::deque< Table > front{ Table{} }; !front.empty(); front.pop_front() ) {
         const Table table = front.front();
         const Path path = paths[ table ];
         ASSERT_NO_FATAL_FAILURE( visit( table, path ) );
         for ( Call call = 0; call < kCalls; ++call ) {
            const Table next = behind( table, call );
            if ( isAllowed( table, call ) && paths.try_emplace( next, path ).second ) {
               paths[ next ].push_back( call );
               front.push_back( next );
            }
         }
      }
      ASSERT_EQ( paths.size(), 4096u );
   }
};

TEST_P( ExhaustiveTableTest, EveryCallLeavesTheMaximalRunsOfItsTable ) {
   eachTable( [ this ]( const Table& table, const Path& path ) {
      const State state = stateOfRuns( runsOf( table ) );
      restart( path );
      expectSorted( state );
      expectAnswers( table );
      for ( Call call = 0; call < kCalls && !HasFatalFailure(); ++call ) {
         if ( isAllowed( table, call ) ) {
            const Outcome outcome = outcomeOf( table, call );
            expectCall( path, state, call, outcome, "1" );
            expectCall( path, state, call, outcome, "" );
         }
      }
   } );
}

TEST_P( ExhaustiveTableTest, WhichCallLedToAnIndexDoesNotMatter ) {
   eachTable( [ this ]( const Table& table, const Path& path ) {
      for ( Call enters = 0; enters < kCalls; ++enters ) {
         if ( !isAllowed( table, enters ) ) {
            continue;
         }
         const Table entered = behind( table, enters );
         Path there = path;
         there.push_back( enters );
         for ( Call leaves = 0; leaves < kCalls && !HasFatalFailure(); ++leaves ) {
            if ( isAllowed( entered, leaves ) ) {
               expectCall( there, stateOfRuns( runsOf( entered ) ), leaves,
                           outcomeOf( entered, leaves ), "" );
            }
         }
      }
   } );
}

INSTANTIATE_TEST_SUITE_P( Worlds, ExhaustiveTableTest,
                          testing::Values( kLowestIds, kMiddleIds, kHighestIds ),
                          []( const auto& each ) { return std::string( each.param.name ); } );

}   // namespace
}   // namespace SmallWorld
