// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Counted elements of the ordered collections, which are made for those who hold them.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>

#include "MoxVlanMapping/VlanXlateScaleEntry.h"
#include "Zel/AllocationTracker.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanXlateScaleEntry;
using TestSupport::rangeOf;
using TestSupport::rangeText;

class HeldElementTest : public RangeMgrTest {
 protected:
   static std::int64_t live( const char* element ) {
      return Zel::allocationCount( std::string( "MoxVlanMapping::VlanRangeEntry::" ) + element )
         .live;
   }
   auto range( unsigned low ) { return entry().vlanIdRange().findElement( vlan( low ) ); }
   auto start( unsigned low ) { return entry().revSortedStartVid().findElement( low ); }

   const Zel::Ptr< VlanXlateScaleEntry > scale_ =
      MoxVlanMapping::vlanXlateScaleEntryFactory( kPort );
};

TEST_F( HeldElementTest, WalkingTakesNoMemory ) {
   given( "10-20 M, 30-40 M, 50-60 N" );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   VlanRangeEntry& ranges = entry();
   const auto requests = TestSupport::newRequests();
   unsigned met = 0;
   for ( auto at = ranges.vlanIdRange().first(); at; ++at ) {
      met += at->value().highVid().value();
   }
   for ( auto at = ranges.revSortedStartVid().first(); at; ++at ) {
      met += at->key().value();
   }
   for ( auto at = scale_->vidRangeSorted().first(); at; ++at ) {
      met += at->value();
   }
   EXPECT_EQ( met, 20u + 40 + 60 + 10 + 30 + 50 + 1 );
   EXPECT_EQ( TestSupport::newRequests(), requests );
   EXPECT_EQ( live( "ZelVlanIdRange" ) + live( "ZelRevSortedStartVid" ), 0 );
}

TEST_F( HeldElementTest, IsMadeOnceForAllWhoHoldIt ) {
   given( "10-20 M, 30-40 M" );
   const auto held = range( 10 ).element();
   EXPECT_TRUE( range( 10 ).element() == held );
   EXPECT_TRUE( entry().vlanIdRange().first().element() == held );
   EXPECT_FALSE( range( 30 ).element() == held );
   EXPECT_EQ( held->zelReferences(), 1 );
   EXPECT_EQ( live( "ZelVlanIdRange" ), 1 );
}

TEST_F( HeldElementTest, IsActiveAndLinked ) {
   given( "10-20 M" );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   EXPECT_TRUE( range( 10 ).element()->hasNotificationActive() );
   EXPECT_TRUE( start( 10 ).element()->hasNotificationActive() );
   EXPECT_TRUE( scale_->vidRangeSorted().first().element()->hasNotificationActive() );
   EXPECT_TRUE( range( 10 ).element()->linked() );
}

TEST_F( HeldElementTest, IsForgottenWithItsLastHolder ) {
   given( "10-20 M" );
   range( 10 ).element()->hasNotificationActiveIs( false );
   EXPECT_EQ( live( "ZelVlanIdRange" ), 0 );
   EXPECT_TRUE( range( 10 ).element()->hasNotificationActive() );
}

TEST_F( HeldElementTest, ShowsOverwritesWhileItIsStored ) {
   given( "10-20 M" );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   const auto held = range( 10 ).element();
   const auto heldStart = start( 10 ).element();
   const auto sorted = scale_->vidRangeSorted().first().element();
   entry().vlanIdRangeIs( rangeOf( 10, 12, 'N' ) );
   entry().revSortedStartVidIs( 10, false );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), false );
   EXPECT_EQ( rangeText( held->value() ), "10-12 N" );
   EXPECT_EQ( held->key(), vlan( 10 ) );
   EXPECT_FALSE( heldStart->value() );
   EXPECT_FALSE( sorted->value() );
}

TEST_F( HeldElementTest, KeepsItsLastValueWhenItIsDeleted ) {
   given( "10-20 M, 30-40 M" );
   const auto held = range( 10 ).element();
   const auto heldStart = start( 10 ).element();
   entry().vlanIdRangeDel( vlan( 10 ) );
   entry().revSortedStartVidDel( 10 );
   given( "10-12 N" );
   EXPECT_FALSE( held->linked() );
   EXPECT_FALSE( heldStart->linked() );
   EXPECT_EQ( rangeText( held->value() ), "10-20 M" );
   EXPECT_EQ( heldStart->key().value(), 10 );
   EXPECT_FALSE( range( 10 ).element() == held );
}

TEST_F( HeldElementTest, OfARebuiltRangeStaysAsItWas ) {
   given( "10-12 M, 14-20 M" );
   const auto lower = range( 10 ).element();
   const auto upper = range( 14 ).element();
   const auto lowerStart = start( 10 ).element();
   const auto upperStart = start( 14 ).element();
   add( 13, M );
   EXPECT_EQ( rangeText( lower->value() ), "10-12 M" );
   EXPECT_EQ( rangeText( upper->value() ), "14-20 M" );
   EXPECT_FALSE( lower->linked() || upper->linked() || upperStart->linked() );
   EXPECT_TRUE( lowerStart->linked() ) << "the start stays";
}

TEST_F( HeldElementTest, OfASortedRangeIsAnotherAfterTheNextSort ) {
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   const auto held = scale_->vidRangeSorted().first().element();
   scale_->vidRangeSortedDelAll();
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   EXPECT_FALSE( held->linked() );
   EXPECT_FALSE( scale_->vidRangeSorted().first().element() == held );
}

TEST_F( HeldElementTest, StaysItsOwnWhileOthersComeAndGoBeforeIt ) {
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   const auto held = scale_->vidRangeSorted().first().element();
   scale_->vidRangeSortedIs( rangeOf( 100, 200, 'M' ), true );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), false );
   EXPECT_FALSE( held->value() );
   scale_->vidRangeSortedDel( rangeOf( 100, 200, 'M' ) );
   scale_->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   EXPECT_TRUE( held->value() );
   EXPECT_TRUE( scale_->vidRangeSorted().first().element() == held );
}

TEST_F( HeldElementTest, OfAnIteratorWhoseElementIsGoneIsGone ) {
   given( "10-20 M" );
   const auto at = range( 10 );
   entry().vlanIdRangeDelAll();
   EXPECT_FALSE( at.element()->linked() );
   EXPECT_EQ( rangeText( at.element()->value() ), "10-20 M" );
}

TEST_F( HeldElementTest, OutlivesItsCollection ) {
   auto other = MoxVlanMapping::vlanRangeEntryFactory( Corvel::IntfId( 8 ) );
   TestSupport::store( *other, "10-20 M, 30-40 M" );
   const auto held = other->vlanIdRange().first().element();
   auto at = other->vlanIdRange().first();
   other = nullptr;
   EXPECT_FALSE( held->linked() );
   EXPECT_FALSE( at.linked() );
   EXPECT_EQ( rangeText( held->value() ), "10-20 M" );
   at = {};
}

TEST_F( HeldElementTest, TwoMayStandAtOneId ) {
   given( "10-20 M" );
   const auto first = range( 10 ).element();
   entry().vlanIdRangeDel( vlan( 10 ) );
   given( "10-30 M" );
   const auto second = range( 10 ).element();
   entry().vlanIdRangeIs( rangeOf( 10, 40, 'M' ) );
   EXPECT_EQ( rangeText( first->value() ), "10-20 M" );
   EXPECT_EQ( rangeText( second->value() ), "10-40 M" );
}

}   // namespace
