// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Zel/AllocationTracker.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using Corvel::IntfId;
using MoxVlanMapping::MoxVlanRangeMgr;
using TestSupport::mappingOf;
using TestSupport::rangeOf;

class RangeMgrLifeTest : public RangeMgrTest {};

TEST_F( RangeMgrLifeTest, FactoryAndCreatorMakeAnActiveManagerOverTheDirectory ) {
   for ( const auto& mgr : { MoxVlanMapping::moxVlanRangeMgrFactory( dir_ ),
                             MoxVlanRangeMgr::MoxVlanRangeMgrIs( dir_ ) } ) {
      EXPECT_TRUE( mgr->vlanRangeEntryDir() == dir_ );
      EXPECT_TRUE( mgr->hasNotificationActive() );
      EXPECT_EQ( mgr->notifieeList(), nullptr );
   }
}

TEST_F( RangeMgrLifeTest, ManagerHoldsOneReferenceToTheDirectory ) {
   const auto before = dir_->zelReferences();
   {
      const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
      EXPECT_EQ( dir_->zelReferences(), before + 1 );
   }
   EXPECT_EQ( dir_->zelReferences(), before );
}

TEST_F( RangeMgrLifeTest, DirectoryAndEntriesOutliveTheManager ) {
   auto dir = MoxVlanMapping::vlanRangeEntryDirFactory();
   auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( dir );
   mgr->addVlanToIdx( kPort, vlan( 10 ), mappingOf( M ) );
   mgr = nullptr;
   EXPECT_EQ( TestSupport::stateText( *dir ), "7: 10-10 M / 10\n" );
}

TEST_F( RangeMgrLifeTest, ManagerKeepsTheDirectoryAlive ) {
   auto dir = MoxVlanMapping::vlanRangeEntryDirFactory();
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( dir );
   dir = nullptr;
   mgr->addVlanToIdx( kPort, vlan( 10 ), mappingOf( M ) );
   EXPECT_EQ( TestSupport::stateText( *mgr->vlanRangeEntryDir() ), "7: 10-10 M / 10\n" );
}

TEST_F( RangeMgrLifeTest, ANullDirectoryIsAccepted ) {
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( nullptr );
   EXPECT_TRUE( mgr->vlanRangeEntryDir() == nullptr );
}

TEST_F( RangeMgrLifeTest, AllocationIsTrackedByTypeName ) {
   const auto count = [] { return Zel::allocationCount( "MoxVlanMapping::MoxVlanRangeMgr" ); };
   const auto before = count();
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
   EXPECT_EQ( count().live, before.live + 1 );
   EXPECT_EQ( count().total, before.total + 1 );
}

class RangeLookupTest : public RangeMgrTest {};

TEST_F( RangeLookupTest, ARangeContainsBothItsBounds ) {
   EXPECT_TRUE( mgr_->isVidInRange( rangeOf( 5, 5, M ), vlan( 5 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 5, 5, M ), vlan( 4 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 5, 5, M ), vlan( 6 ) ) );
   EXPECT_TRUE( mgr_->isVidInRange( rangeOf( 10, 20, M ), vlan( 10 ) ) );
   EXPECT_TRUE( mgr_->isVidInRange( rangeOf( 10, 20, M ), vlan( 20 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 10, 20, M ), vlan( 9 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 10, 20, M ), vlan( 21 ) ) );
}

TEST_F( RangeLookupTest, WhetherAnIdIsInARangeDoesNotTouchTheDirectory ) {
   mgr_->isVidInRange( rangeOf( 5, 5, M ), vlan( 5 ) );
   EXPECT_EQ( state(), "" );
}

enum class Bound { Upper, Lower };

struct LookupRow {
   const char* name;
   Bound bound;
   unsigned vid;
   char mapping;
   bool expected;

   friend void PrintTo( const LookupRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeLookupTable : public RangeMgrTest, public testing::WithParamInterface< LookupRow > {};

TEST_P( RangeLookupTable, AnswersOnTwoRangesWithAGap ) {
   given( "10-12 M, 14-20 M" );
   const LookupRow& row = GetParam();
   EXPECT_EQ( row.bound == Bound::Upper ? inUpper( row.vid, row.mapping )
                                        : inLower( row.vid, row.mapping ),
              row.expected );
   EXPECT_EQ( state(), "7: 10-12 M, 14-20 M / 14, 10\n" );
}

INSTANTIATE_TEST_SUITE_P(
   Examples, RangeLookupTable,
   testing::Values( LookupRow{ "UpperInTheGap", Bound::Upper, 13, 'M', false },
                    LookupRow{ "UpperAtAStart", Bound::Upper, 14, 'M', true },
                    LookupRow{ "UpperUnderAnotherMapping", Bound::Upper, 14, 'N', false },
                    LookupRow{ "UpperUnderAnyMapping", Bound::Upper, 14, '-', true },
                    LookupRow{ "UpperAboveAll", Bound::Upper, 21, 'M', false },
                    LookupRow{ "LowerAtAnEnd", Bound::Lower, 12, 'M', true },
                    LookupRow{ "LowerInTheGap", Bound::Lower, 13, 'M', false },
                    LookupRow{ "LowerBelowAll", Bound::Lower, 9, 'M', false },
                    LookupRow{ "UpperInsideARange", Bound::Upper, 11, 'M', false },
                    LookupRow{ "UpperAtAnEnd", Bound::Upper, 20, 'M', false },
                    LookupRow{ "LowerAtAStart", Bound::Lower, 14, 'M', true },
                    LookupRow{ "LowerInside", Bound::Lower, 17, 'M', true },
                    LookupRow{ "LowerUnderAnotherMapping", Bound::Lower, 12, 'N', false },
                    LookupRow{ "LowerUnderAnyMapping", Bound::Lower, 12, '-', true },
                    LookupRow{ "LowerAboveAll", Bound::Lower, 21, 'M', false },
                    LookupRow{ "UpperAtTheHighestVlan", Bound::Upper, 4094, 'M', false },
                    LookupRow{ "LowerAtTheLowestVlan", Bound::Lower, 1, 'M', false } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

TEST_F( RangeLookupTest, MappingsAreComparedWhole ) {
   const auto plain = Bridging::VlanXlateMapping::fromRaw( 300 );
   const auto withInner = Bridging::VlanXlateMapping::fromRaw( 300, 5 );
   mgr_->addVlanToIdx( kPort, vlan( 10 ), withInner );
   EXPECT_TRUE( mgr_->isVidAndDot1qInUpperBoundRange( kPort, vlan( 10 ), withInner ) );
   EXPECT_FALSE( mgr_->isVidAndDot1qInUpperBoundRange( kPort, vlan( 10 ), plain ) );
   EXPECT_TRUE( mgr_->isVidAndDot1qInLowerBoundRange( kPort, vlan( 10 ), withInner ) );
   EXPECT_FALSE( mgr_->isVidAndDot1qInLowerBoundRange( kPort, vlan( 10 ), plain ) );
}

TEST_F( RangeLookupTest, AnInterfaceNeverSeenHasNoUpperBoundAndGetsAnEmptyEntry ) {
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "*" );
   EXPECT_FALSE( inUpper( 10, M ) );
   EXPECT_EQ( capture.lines().back().text,
              "isVidAndDot1qInUpperBoundRange upper bound iterator empty" );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( RangeLookupTest, AnInterfaceNeverSeenHasNoLowerBoundAndGetsAnEmptyEntry ) {
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "*" );
   EXPECT_FALSE( inLower( 10, M ) );
   EXPECT_EQ( capture.lines().back().text,
              "isVidAndDot1qInLowerBoundRange lower bound iterator empty" );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( RangeLookupTest, AStartWithoutItsRangeStandsForOneToOne ) {
   entry().revSortedStartVidIs( 10, true );
   EXPECT_FALSE( inLower( 12, kEmpty ) );
   EXPECT_FALSE( inLower( 12, M ) );
}

TEST_F( RangeLookupTest, AStoredEmptyMappingMatchesOnlyTheEmptyOne ) {
   given( "10-12 -" );
   EXPECT_TRUE( inLower( 11, kEmpty ) );
   EXPECT_FALSE( inLower( 11, M ) );
   EXPECT_TRUE( inUpper( 10, kEmpty ) );
   EXPECT_FALSE( inUpper( 10, M ) );
}

TEST_F( RangeLookupTest, InterfacesDoNotSeeEachOther ) {
   given( "10-12 M" );
   EXPECT_FALSE( mgr_->isVidAndDot1qInLowerBoundRange( IntfId( 8 ), vlan( 11 ), mappingOf( M ) ) );
   EXPECT_EQ( state(), "7: 10-12 M / 10\n8:  / \n" );
}

}   // namespace
