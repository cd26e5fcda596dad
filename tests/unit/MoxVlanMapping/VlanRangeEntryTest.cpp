// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanRangeEntry.h"

#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

namespace {

using Bridging::VlanId;
using Corvel::IntfId;
using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanRangeEntryDir;
using MoxVlanMapping::VlanRangeXlateMapping;
using TestSupport::rangeOf;
using TestSupport::rangesText;
using TestSupport::rangeText;
using TestSupport::startsText;

class VlanRangeEntryTest : public TestSupport::NoneLeftTest {
 protected:
   void ranges( const std::string& text ) {
      for ( const auto& range : TestSupport::rangesOf( text ) ) {
         entry_->vlanIdRangeIs( range );
      }
   }
   void starts( std::initializer_list< std::uint16_t > starts ) {
      for ( const std::uint16_t start : starts ) {
         entry_->revSortedStartVidIs( start, true );
      }
   }
   std::string ranges() const { return rangesText( *entry_ ); }
   std::string starts() const { return startsText( *entry_ ); }

   const Zel::Ptr< VlanRangeEntry > entry_ = MoxVlanMapping::vlanRangeEntryFactory( IntfId( 7 ) );
};

TEST_F( VlanRangeEntryTest, StartsEmptyAndActive ) {
   EXPECT_EQ( entry_->intfId(), IntfId( 7 ) );
   EXPECT_TRUE( entry_->hasNotificationActive() );
   EXPECT_EQ( ranges(), "" );
   EXPECT_EQ( starts(), "" );
   EXPECT_EQ( entry_->zelReferences(), 1 );
}

TEST_F( VlanRangeEntryTest, CreatorDoesWhatTheFactoryDoes ) {
   const auto made = VlanRangeEntry::VlanRangeEntryIs( IntfId( 8 ) );
   EXPECT_EQ( made->intfId(), IntfId( 8 ) );
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_EQ( rangesText( *made ) + startsText( *made ), "" );
}

TEST_F( VlanRangeEntryTest, TellsNobody ) {
   EXPECT_EQ( entry_->notifieeList(), nullptr );
}

TEST_F( VlanRangeEntryTest, AllocationsAreTrackedByTypeName ) {
   const auto live = [] { return Zel::allocationCount( "MoxVlanMapping::VlanRangeEntry" ).live; };
   const auto before = live();
   {
      const auto another = MoxVlanMapping::vlanRangeEntryFactory( IntfId( 8 ) );
      EXPECT_EQ( live(), before + 1 );
   }
   EXPECT_EQ( live(), before );
}

TEST_F( VlanRangeEntryTest, RangesIterateByAscendingStart ) {
   ranges( "4000-4094 M, 5-9 N, 100-100 M" );
   EXPECT_EQ( ranges(), "5-9 N, 100-100 M, 4000-4094 M" );
}

TEST_F( VlanRangeEntryTest, StartsIterateFromTheHighest ) {
   starts( { 100, 5, 4000 } );
   EXPECT_EQ( starts(), "4000, 100, 5" );
}

TEST_F( VlanRangeEntryTest, InsertingAtAStoredStartReplacesTheRange ) {
   ranges( "10-20 M, 30-40 M" );
   ranges( "10-12 N" );
   EXPECT_EQ( ranges(), "10-12 N, 30-40 M" );
   EXPECT_EQ( entry_->vlanIdRange().size(), 2u );
}

TEST_F( VlanRangeEntryTest, ReplacingARangeKeepsItsElement ) {
   ranges( "10-20 M" );
   const auto at = entry_->vlanIdRange().first();
   const auto changes = entry_->vlanIdRange().changes();
   ranges( "10-12 N" );
   EXPECT_EQ( rangeText( at->value() ), "10-12 N" );
   EXPECT_TRUE( at.linked() );
   EXPECT_EQ( entry_->vlanIdRange().changes(), changes );
}

TEST_F( VlanRangeEntryTest, InsertingAStoredStartReplacesItsFlag ) {
   starts( { 10, 20 } );
   entry_->revSortedStartVidIs( 10, false );
   EXPECT_EQ( starts(), "20, 10=false" );
   entry_->revSortedStartVidIs( 10, true );
   EXPECT_EQ( starts(), "20, 10" );
}

TEST_F( VlanRangeEntryTest, DeletingARangeReturnsItExactly ) {
   ranges( "10-20 M, 30-40 N" );
   EXPECT_EQ( rangeText( entry_->vlanIdRangeDel( VlanId( 30 ) ) ), "30-40 N" );
   EXPECT_EQ( ranges(), "10-20 M" );
}

TEST_F( VlanRangeEntryTest, DeletingAnAbsentRangeReturnsTheDefault ) {
   ranges( "10-20 M" );
   EXPECT_EQ( rangeText( entry_->vlanIdRangeDel( VlanId( 11 ) ) ), "1-1 -" );
   EXPECT_FALSE( entry_->vlanIdRangeDel( VlanId( 1 ) ) );
   EXPECT_EQ( ranges(), "10-20 M" );
}

TEST_F( VlanRangeEntryTest, DeletingAStartReturnsItsFlag ) {
   starts( { 10, 20 } );
   entry_->revSortedStartVidIs( 30, false );
   EXPECT_TRUE( entry_->revSortedStartVidDel( 10 ) );
   EXPECT_FALSE( entry_->revSortedStartVidDel( 30 ) );
   EXPECT_EQ( starts(), "20" );
}

TEST_F( VlanRangeEntryTest, DeletingAnAbsentStartReturnsFalse ) {
   starts( { 10 } );
   EXPECT_FALSE( entry_->revSortedStartVidDel( 11 ) );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( VlanRangeEntryTest, DeletingByIteratorReturnsTheRange ) {
   ranges( "10-20 M, 30-40 N" );
   EXPECT_EQ( rangeText( entry_->vlanIdRangeDel( entry_->vlanIdRange().first() ) ), "10-20 M" );
   EXPECT_EQ( ranges(), "30-40 N" );
}

TEST_F( VlanRangeEntryTest, DeletingAtTheEndReturnsTheDefault ) {
   ranges( "10-20 M" );
   starts( { 10 } );
   EXPECT_FALSE( entry_->vlanIdRangeDel( VlanRangeEntry::VlanIdRangeMap::Iterator() ) );
   EXPECT_FALSE( entry_->revSortedStartVidDel( VlanRangeEntry::RevSortedStartVidMap::Iterator() ) );
   EXPECT_EQ( ranges() + " / " + starts(), "10-20 M / 10" );
}

TEST_F( VlanRangeEntryTest, DeletingByIteratorReturnsTheFlag ) {
   starts( { 10, 20 } );
   entry_->revSortedStartVidIs( 5, false );
   EXPECT_TRUE( entry_->revSortedStartVidDel( entry_->revSortedStartVid().first() ) );
   EXPECT_FALSE( entry_->revSortedStartVidDel( entry_->revSortedStartVid().findElement( 5 ) ) );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( VlanRangeEntryTest, DeletingAnElementThatIsGoneReturnsTheDefault ) {
   ranges( "10-20 M" );
   const auto at = entry_->vlanIdRange().first();
   entry_->vlanIdRangeDel( VlanId( 10 ) );
   EXPECT_FALSE( entry_->vlanIdRangeDel( at ) );
}

TEST_F( VlanRangeEntryTest, DeletingAllEmptiesOneCollectionOnly ) {
   ranges( "10-20 M, 30-40 N" );
   starts( { 10, 30 } );
   entry_->vlanIdRangeDelAll();
   EXPECT_EQ( ranges() + " / " + starts(), " / 30, 10" );
   ranges( "50-60 M" );
   entry_->revSortedStartVidDelAll();
   EXPECT_EQ( ranges() + " / " + starts(), "50-60 M / " );
}

TEST_F( VlanRangeEntryTest, LookUpYieldsTheRangeOrTheDefault ) {
   ranges( "10-20 M" );
   starts( { 10 } );
   EXPECT_EQ( rangeText( entry_->vlanIdRange( VlanId( 10 ) ) ), "10-20 M" );
   EXPECT_EQ( rangeText( entry_->vlanIdRange( VlanId( 11 ) ) ), "1-1 -" );
   EXPECT_TRUE( entry_->revSortedStartVid( 10 ) );
   EXPECT_FALSE( entry_->revSortedStartVid( 11 ) );
   entry_->revSortedStartVidIs( 10, false );
   EXPECT_FALSE( entry_->revSortedStartVid( 10 ) );
}

TEST_F( VlanRangeEntryTest, TheElementOrTheNextIsFoundInTheCollectionsOwnOrder ) {
   ranges( "10-12 M, 14-20 M" );
   starts( { 10, 14 } );
   EXPECT_EQ( entry_->vlanIdRange().findElementOrNext( VlanId( 14 ) )->key(), VlanId( 14 ) );
   EXPECT_EQ( entry_->vlanIdRange().findElementOrNext( VlanId( 11 ) )->key(), VlanId( 14 ) );
   EXPECT_FALSE( entry_->vlanIdRange().findElementOrNext( VlanId( 15 ) ) );
   EXPECT_EQ( entry_->revSortedStartVid().findElementOrNext( 14 )->key().value(), 14 );
   EXPECT_EQ( entry_->revSortedStartVid().findElementOrNext( 13 )->key().value(), 10 );
   EXPECT_FALSE( entry_->revSortedStartVid().findElementOrNext( 9 ) );
}

TEST_F( VlanRangeEntryTest, AnIteratorGoesOnBehindItsDeletedElement ) {
   ranges( "10-20 M, 30-40 M, 50-60 M" );
   auto at = entry_->vlanIdRange().findElement( VlanId( 30 ) );
   entry_->vlanIdRangeDel( VlanId( 30 ) );
   EXPECT_EQ( rangeText( at->value() ), "30-40 M" );
   ++at;
   EXPECT_EQ( rangeText( at->value() ), "50-60 M" );
}

TEST_F( VlanRangeEntryTest, AnIteratorOfTheStartsGoesOnBehindItsDeletedElement ) {
   starts( { 10, 30, 50 } );
   auto at = entry_->revSortedStartVid().findElement( 30 );
   entry_->revSortedStartVidDel( 30 );
   ++at;
   EXPECT_EQ( at->key().value(), 10 );
}

TEST_F( VlanRangeEntryTest, AnIteratorMeetsWhatIsInsertedBehindIt ) {
   ranges( "10-20 M, 50-60 M" );
   auto at = entry_->vlanIdRange().first();
   ranges( "5-6 M, 30-40 M" );
   ++at;
   EXPECT_EQ( rangeText( at->value() ), "30-40 M" );
}

class VlanRangeEntryDirTest : public TestSupport::NoneLeftTest {
 protected:
   std::string entries() const { return TestSupport::interfacesText( dir_->vlanRangeEntry() ); }

   const Zel::Ptr< VlanRangeEntryDir > dir_ = MoxVlanMapping::vlanRangeEntryDirFactory();
};

TEST_F( VlanRangeEntryDirTest, StartsEmptyAndActive ) {
   EXPECT_TRUE( dir_->hasNotificationActive() );
   EXPECT_EQ( entries(), "" );
   EXPECT_EQ( dir_->notifieeList(), nullptr );
   EXPECT_EQ( VlanRangeEntryDir::VlanRangeEntryDirIs()->vlanRangeEntry().size(), 0u );
   EXPECT_TRUE( VlanRangeEntryDir::VlanRangeEntryDirIs()->hasNotificationActive() );
}

TEST_F( VlanRangeEntryDirTest, AskingTwiceGivesTheSameEntry ) {
   const auto entry = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanRangeEntryIs( IntfId( 7 ) ) == entry );
   EXPECT_EQ( entry->intfId(), IntfId( 7 ) );
   EXPECT_TRUE( entry->hasNotificationActive() );
   EXPECT_EQ( entries(), "7" );
}

TEST_F( VlanRangeEntryDirTest, HoldsOneReferenceToEachEntry ) {
   const auto entry = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   EXPECT_EQ( entry->zelReferences(), 2 );
}

TEST_F( VlanRangeEntryDirTest, LookUpCreatesNothing ) {
   EXPECT_TRUE( dir_->vlanRangeEntry( IntfId( 7 ) ) == nullptr );
   EXPECT_EQ( entries(), "" );
   const auto entry = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanRangeEntry( IntfId( 7 ) ) == entry );
}

TEST_F( VlanRangeEntryDirTest, ARemovedEntryStillWorksForItsHolder ) {
   const auto entry = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   TestSupport::store( *entry, "10-20 M" );
   EXPECT_TRUE( dir_->vlanRangeEntryDel( IntfId( 7 ) ) == entry );
   TestSupport::store( *entry, "30-40 M" );
   EXPECT_EQ( rangesText( *entry ), "10-20 M, 30-40 M" );
}

TEST_F( VlanRangeEntryDirTest, ARemovedEntryIsFollowedByAFreshOne ) {
   const auto entry = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   TestSupport::store( *entry, "10-20 M" );
   dir_->vlanRangeEntryDel( IntfId( 7 ) );
   const auto fresh = dir_->vlanRangeEntryIs( IntfId( 7 ) );
   EXPECT_FALSE( fresh == entry );
   EXPECT_EQ( rangesText( *fresh ) + startsText( *fresh ), "" );
}

TEST_F( VlanRangeEntryDirTest, RemovingAnAbsentEntryReturnsNull ) {
   dir_->vlanRangeEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanRangeEntryDel( IntfId( 8 ) ) == nullptr );
   EXPECT_EQ( entries(), "7" );
}

TEST_F( VlanRangeEntryDirTest, RemovingAllLeavesNone ) {
   for ( const unsigned intf : { 1u, 2u, 3u } ) {
      TestSupport::store( *dir_->vlanRangeEntryIs( IntfId( intf ) ), "10-20 M" );
   }
   EXPECT_EQ( entries(), "1, 2, 3" );
   dir_->vlanRangeEntryDelAll();
   EXPECT_EQ( entries(), "" );
}

TEST_F( VlanRangeEntryDirTest, HashesUnderItsOwnSeed ) {
   EXPECT_EQ( dir_->vlanRangeEntry().seed(), Zel::hashSeed() ^ 0xa570bf69u );
}

TEST_F( VlanRangeEntryDirTest, AnEntryOutlivesItsDirectory ) {
   auto dir = MoxVlanMapping::vlanRangeEntryDirFactory();
   const auto entry = dir->vlanRangeEntryIs( IntfId( 7 ) );
   TestSupport::store( *entry, "10-20 M" );
   dir = nullptr;
   EXPECT_EQ( rangesText( *entry ), "10-20 M" );
   EXPECT_EQ( entry->zelReferences(), 1 );
}

}   // namespace
