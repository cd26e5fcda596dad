// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Range manager and stores: each operation with a fault at each of its points.
#include <gtest/gtest.h>

#include "MoxVlanMapping/RangeSlots.h"
#include "tests/fault/FaultWorld.h"

namespace {

using Fault::backlog;
using Fault::nothing;
using Fault::sortedBefore;
using Fault::World;
using Row = Fault::Row< World >;
using Act = Row::Act;

// As many as the first array holds.
constexpr char kFullArray[] = "10-20 M, 50-50 M, 60-60 M, 70-70 M";
// Ranges of an interface above which their store takes its other form.
constexpr unsigned kMostFew = MoxVlanMapping::RangeSlots::kMaxArraySize;

Act
ranges( const char* text ) {
   return [ text ]( World& w ) { w.given( text ); };
}

Act
many( unsigned count ) {
   return [ count ]( World& w ) { w.givenMany( count ); };
}

Act
adds( unsigned vlan ) {
   return [ vlan ]( World& w ) { w.add( vlan ); };
}

Act
dels( unsigned vlan ) {
   return [ vlan ]( World& w ) { w.del( vlan ); };
}

const Row kRows[] = {
   { "AddToNothing", nothing, adds( 10 ) },
   { "AddAlone", ranges( kFullArray ), adds( 30 ) },
   needsNoMemory( Row{ "AddInFront", ranges( "10-20 M" ), adds( 9 ) } ),
   needsNoMemory( Row{ "AddBehind", ranges( "10-20 M" ), adds( 21 ) } ),
   needsNoMemory( Row{ "AddBetween", ranges( "10-12 M, 14-20 M" ), adds( 13 ) } ),
   needsNoMemory( Row{ "AddPresent", ranges( "10-20 M" ), adds( 13 ) } ),
   needsNoMemory( Row{ "DeleteOnly", ranges( "10-10 M" ), dels( 10 ) } ),
   needsNoMemory( Row{ "DeleteFirst", ranges( "10-20 M" ), dels( 10 ) } ),
   needsNoMemory( Row{ "DeleteLast", ranges( "10-20 M" ), dels( 20 ) } ),
   { "DeleteInside", ranges( kFullArray ), dels( 15 ) },
   needsNoMemory( Row{ "DeleteAbsent", ranges( "10-20 M" ), dels( 30 ) } ),
   { "AddTheOneTooMany", many( kMostFew ), adds( 1000 ) },
   { "SplitTheOneTooMany",
     []( World& w ) {
        w.givenMany( kMostFew - 1 );
        w.given( "1000-1010 M" );
     },
     dels( 1005 ) },
   { "AddToAnotherPage", many( kMostFew + 12 ), adds( 2000 ) },
   { "MoveToAnotherPage",
     []( World& w ) {
        w.givenMany( kMostFew + 12 );
        w.given( "1024-1030 M" );
     },
     adds( 1023 ) },
   { "DeleteTheOneTooFew",
     []( World& w ) {
        w.givenMany( kMostFew + 1 );
        for ( unsigned i = 0; i < kMostFew / 2; ++i ) {
           w.del( 2 + 2 * i );
        }
     },
     dels( kMostFew + 2 ) },
   { "BoundTests", ranges( "10-20 M" ),
     []( World& w ) {
        w.mgr->isVidAndDot1qInUpperBoundRange( w.port( 8 ), Bridging::VlanId( 1 ), {} );
        w.mgr->isVidAndDot1qInLowerBoundRange( w.port( 9 ), Bridging::VlanId( 1 ), {} );
     } },
   { "DeleteFromRange", ranges( kFullArray ),
     []( World& w ) {
        w.mgr->deleteVlanFromRange( w.port( 7 ), Bridging::VlanId( 15 ),
                                    TestSupport::rangeOf( 10, 20, 'M' ) );
     },
     dels( 15 ) },
   // Stores.
   { "RangeStored", ranges( kFullArray ),
     []( World& w ) {
        w.ranges->vlanRangeEntryIs( w.port( 7 ) )
           ->vlanIdRangeIs( TestSupport::rangeOf( 30, 40, 'M' ) );
     } },
   { "StartStored", ranges( kFullArray ),
     []( World& w ) {
        w.ranges->vlanRangeEntryIs( w.port( 7 ) )
           ->revSortedStartVidIs( MoxVlanMapping::ReverseStartIdVlanId( 30 ), true );
     } },
   { "ElementHeld", ranges( "10-20 M" ),
     []( World& w ) {
        const auto entry = w.ranges->vlanRangeEntryIs( w.port( 7 ) );
        const auto range = entry->vlanIdRange().first();
        const auto start = entry->revSortedStartVid().first();
        const auto held = range.element();
        EXPECT_TRUE( held->linked() && start.element()->linked() );
     } },
   needsNoMemory( Row{ "ChangedUnderHolders", ranges( "10-20 M" ),
                       []( World& w ) {
                          const auto entry = w.ranges->vlanRangeEntryIs( w.port( 7 ) );
                          const auto range = entry->vlanIdRange().first();
                          w.add( 21 );
                          EXPECT_FALSE( range.linked() );
                       } } ),
   needsNoMemory( Row{ "EntriesGone", ranges( "10-20 M" ),
                       []( World& w ) {
                          w.ranges->vlanRangeEntryDel( w.port( 7 ) );
                          w.ranges->vlanRangeEntryDelAll();
                       } } ),
   { "Mark", nothing, []( World& w ) { w.schedule->vlanXlateScheduleIs( w.port( 7 ) ); } },
   { "MarkWhenBucketsDouble",
     []( World& w ) {
        for ( std::uint64_t port = 1; port <= 4; ++port ) {
           w.schedule->vlanXlateScheduleIs( w.port( port ) );
        }
     },
     []( World& w ) { w.schedule->vlanXlateScheduleIs( w.port( 7 ) ); } },
   needsNoMemory( Row{ "Unmark", backlog,
                       []( World& w ) { w.schedule->vlanXlateScheduleDel( w.port( 1 ) ); } } ),
   needsNoMemory(
      Row{ "UnmarkAll", backlog, []( World& w ) { w.schedule->vlanXlateScheduleDelAll(); } } ),
   { "HashTable", sortedBefore,
     []( World& w ) {
        w.codef->vlanXlateScaleEntryDir()
           ->vlanXlateScaleEntryIs( w.port( 1 ) )
           ->vlanInXlateHashTableIs( Bridging::VlanId( 5 ) );
     } },
   { "SortedStored", sortedBefore,
     []( World& w ) {
        w.codef->vlanXlateScaleEntryDir()
           ->vlanXlateScaleEntryIs( w.port( 1 ) )
           ->vidRangeSortedIs( TestSupport::rangeOf( 3, 4, 'M' ), true );
     } },
};

class RangeFaultTest : public testing::TestWithParam< const Row* > {};

TEST_P( RangeFaultTest, LeavesBeforeOrAfterAndCanBeDoneAgain ) {
   Fault::sweep( *GetParam() );
}

INSTANTIATE_TEST_SUITE_P( All, RangeFaultTest, testing::ValuesIn( Fault::pointersTo( kRows ) ),
                          Fault::caseName< Row > );

}   // namespace
