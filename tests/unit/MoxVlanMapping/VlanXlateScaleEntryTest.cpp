// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using MoxVlanMapping::VlanRangeXlateMapping;
using MoxVlanMapping::VlanXlateScaleEntry;
using MoxVlanMapping::VlanXlateScaleEntryDir;
using TestSupport::rangeOf;
using TestSupport::rangeText;

class VlanXlateScaleEntryTest : public TestSupport::NoneLeftTest {
 protected:
   void given( const std::string& ranges ) {
      for ( const auto& range : TestSupport::rangesOf( ranges ) ) {
         entry_->vidRangeSortedIs( range, true );
      }
   }
   std::string sorted() const { return TestSupport::sortedText( *entry_ ); }
   std::string table() const {
      return TestSupport::interfacesText( entry_->vlanInXlateHashTable() );
   }

   const Zel::Ptr< VlanXlateScaleEntry > entry_ =
      MoxVlanMapping::vlanXlateScaleEntryFactory( IntfId( 7 ) );
};

TEST_F( VlanXlateScaleEntryTest, StartsEmptyAndActive ) {
   EXPECT_EQ( entry_->intfId(), IntfId( 7 ) );
   EXPECT_TRUE( entry_->hasNotificationActive() );
   EXPECT_EQ( sorted() + table(), "" );
   EXPECT_EQ( entry_->notifieeList(), nullptr );
   const auto made = VlanXlateScaleEntry::VlanXlateScaleEntryIs( IntfId( 8 ) );
   EXPECT_EQ( made->intfId(), IntfId( 8 ) );
   EXPECT_TRUE( made->hasNotificationActive() );
}

TEST_F( VlanXlateScaleEntryTest, RangesIterateFromTheLargest ) {
   given( "10-19 M, 100-100 M, 200-209 M, 1-50 M" );
   EXPECT_EQ( sorted(), "1-50 M, 10-19 M, 200-209 M, 100-100 M" );
}

TEST_F( VlanXlateScaleEntryTest, InsertingARangeAgainReplacesItsFlag ) {
   entry_->vidRangeSortedIs( rangeOf( 10, 19, 'M' ), true );
   entry_->vidRangeSortedIs( rangeOf( 10, 19, 'M' ), false );
   EXPECT_EQ( sorted(), "10-19 M=false" );
   EXPECT_EQ( entry_->vidRangeSorted().size(), 1u );
}

TEST_F( VlanXlateScaleEntryTest, EqualBoundsUnderTwoMappingsAreTwoElements ) {
   given( "10-19 N, 10-19 M" );
   EXPECT_EQ( sorted(), "10-19 M, 10-19 N" );
}

TEST_F( VlanXlateScaleEntryTest, DeletingARangeReturnsItsFlag ) {
   given( "10-19 M, 1-50 M" );
   entry_->vidRangeSortedIs( rangeOf( 5, 5, 'M' ), false );
   EXPECT_TRUE( entry_->vidRangeSortedDel( rangeOf( 10, 19, 'M' ) ) );
   EXPECT_FALSE( entry_->vidRangeSortedDel( rangeOf( 5, 5, 'M' ) ) );
   EXPECT_EQ( sorted(), "1-50 M" );
}

TEST_F( VlanXlateScaleEntryTest, DeletingAnAbsentRangeReturnsFalse ) {
   given( "10-19 M, 1-50 M" );
   EXPECT_FALSE( entry_->vidRangeSortedDel( rangeOf( 10, 19, 'N' ) ) );
   EXPECT_FALSE( entry_->vidRangeSortedDel( rangeOf( 10, 18, 'M' ) ) );
   EXPECT_EQ( sorted(), "1-50 M, 10-19 M" );
}

TEST_F( VlanXlateScaleEntryTest, DeletingByIteratorReturnsTheFlag ) {
   given( "10-19 M, 1-50 M" );
   EXPECT_TRUE( entry_->vidRangeSortedDel( entry_->vidRangeSorted().first() ) );
   EXPECT_EQ( sorted(), "10-19 M" );
   EXPECT_FALSE( entry_->vidRangeSortedDel( VlanXlateScaleEntry::VidRangeSortedMap::Iterator() ) );
   EXPECT_EQ( sorted(), "10-19 M" );
   entry_->vidRangeSortedIs( rangeOf( 10, 19, 'M' ), false );
   EXPECT_FALSE( entry_->vidRangeSortedDel( entry_->vidRangeSorted().first() ) );
   EXPECT_EQ( sorted(), "" );
}

TEST_F( VlanXlateScaleEntryTest, LookUpYieldsTheFlag ) {
   given( "10-19 M" );
   EXPECT_TRUE( entry_->vidRangeSorted( rangeOf( 10, 19, 'M' ) ) );
   EXPECT_FALSE( entry_->vidRangeSorted( rangeOf( 10, 19, 'N' ) ) );
   entry_->vidRangeSortedIs( rangeOf( 10, 19, 'M' ), false );
   EXPECT_FALSE( entry_->vidRangeSorted( rangeOf( 10, 19, 'M' ) ) );
}

TEST_F( VlanXlateScaleEntryTest, DeletingAllLeavesNone ) {
   given( "10-19 M, 1-50 M" );
   entry_->vidRangeSortedDelAll();
   EXPECT_EQ( sorted(), "" );
}

TEST_F( VlanXlateScaleEntryTest, TheElementOrTheNextIsFoundBySize ) {
   given( "1-50 M, 10-19 M, 100-100 M" );
   const auto found = [ & ]( const VlanRangeXlateMapping& range ) {
      const auto at = entry_->vidRangeSorted().findElementOrNext( range );
      return at ? rangeText( at->key() ) : "end";
   };
   EXPECT_EQ( found( rangeOf( 10, 19, 'M' ) ), "10-19 M" );
   EXPECT_EQ( found( rangeOf( 1, 100, 'M' ) ), "1-50 M" );
   EXPECT_EQ( found( rangeOf( 30, 50, 'M' ) ), "10-19 M" );
   EXPECT_EQ( found( rangeOf( 50, 51, 'M' ) ), "100-100 M" );
   EXPECT_EQ( found( rangeOf( 101, 101, 'M' ) ), "end" );
}

TEST_F( VlanXlateScaleEntryTest, AnIteratorGoesOnBehindItsDeletedElement ) {
   given( "1-50 M, 10-19 M, 100-100 M" );
   auto at = entry_->vidRangeSorted().first();
   entry_->vidRangeSortedDel( rangeOf( 1, 50, 'M' ) );
   entry_->vidRangeSortedDel( rangeOf( 10, 19, 'M' ) );
   ++at;
   EXPECT_EQ( rangeText( at->key() ), "100-100 M" );
}

// Ranges that the order does not tell apart, though they are not equal, in every order of coming
// and going.
TEST_F( VlanXlateScaleEntryTest, TwinsAreFoundExactly ) {
   std::vector< VlanRangeXlateMapping > twins;
   for ( std::uint16_t inner = 1; inner <= 20; ++inner ) {
      twins.emplace_back( VlanId( 10 ), VlanId( 20 ), VlanXlateMapping::fromRaw( 300, inner ) );
   }
   given( "1-50 M, 10-20 A, 10-20 Z, 15-15 M" );
   for ( const auto& twin : twins ) {
      entry_->vidRangeSortedIs( twin, true );
      entry_->vidRangeSorted().verify();
   }
   EXPECT_EQ( entry_->vidRangeSorted().size(), twins.size() + 4 );
   for ( const auto& twin : twins ) {
      EXPECT_TRUE( entry_->vidRangeSorted().findElementOrNext( twin )->key() == twin );
   }
   for ( std::size_t step = 0; step < twins.size(); ++step ) {
      const auto& twin = twins[ step * 7 % twins.size() ];
      EXPECT_TRUE( entry_->vidRangeSortedDel( twin ) );
      EXPECT_FALSE( entry_->vidRangeSortedDel( twin ) );
      entry_->vidRangeSorted().verify();
   }
   EXPECT_EQ( sorted(), "1-50 M, 10-20 A, 10-20 Z, 15-15 M" );
}

TEST_F( VlanXlateScaleEntryTest, VlanSetHoldsAnIdOnce ) {
   entry_->vlanInXlateHashTableIs( VlanId( 300 ) );
   entry_->vlanInXlateHashTableIs( VlanId( 20 ) );
   entry_->vlanInXlateHashTableIs( VlanId( 300 ) );
   EXPECT_EQ( table(), "300, 20" );
}

TEST_F( VlanXlateScaleEntryTest, DeletingFromTheVlanSetTellsWhetherItWasAMember ) {
   entry_->vlanInXlateHashTableIs( VlanId( 300 ) );
   EXPECT_TRUE( entry_->vlanInXlateHashTableDel( VlanId( 300 ) ) );
   EXPECT_FALSE( entry_->vlanInXlateHashTableDel( VlanId( 300 ) ) );
   EXPECT_EQ( table(), "" );
}

TEST_F( VlanXlateScaleEntryTest, DeletingAllOfTheVlanSetLeavesTheRanges ) {
   given( "10-19 M" );
   entry_->vlanInXlateHashTableIs( VlanId( 300 ) );
   entry_->vlanInXlateHashTableIs( VlanId( 301 ) );
   entry_->vlanInXlateHashTableDelAll();
   EXPECT_EQ( table() + " / " + sorted(), " / 10-19 M" );
}

TEST_F( VlanXlateScaleEntryTest, VlanSetHashesUnderItsOwnSeed ) {
   EXPECT_EQ( entry_->vlanInXlateHashTable().seed(), Zel::hashSeed() ^ 0x21981069u );
}

class VlanXlateScaleEntryDirTest : public TestSupport::NoneLeftTest {
 protected:
   std::string entries() const {
      return TestSupport::interfacesText( dir_->vlanXlateScaleEntry() );
   }

   const Zel::Ptr< VlanXlateScaleEntryDir > dir_ = MoxVlanMapping::vlanXlateScaleEntryDirFactory();
};

TEST_F( VlanXlateScaleEntryDirTest, StartsEmptyAndActive ) {
   EXPECT_TRUE( dir_->hasNotificationActive() );
   EXPECT_EQ( dir_->notifieeList(), nullptr );
   EXPECT_EQ( entries(), "" );
   EXPECT_TRUE( VlanXlateScaleEntryDir::VlanXlateScaleEntryDirIs()->hasNotificationActive() );
}

TEST_F( VlanXlateScaleEntryDirTest, AskingTwiceGivesTheSameEntry ) {
   const auto entry = dir_->vlanXlateScaleEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanXlateScaleEntryIs( IntfId( 7 ) ) == entry );
   EXPECT_EQ( entry->intfId(), IntfId( 7 ) );
   EXPECT_EQ( entry->zelReferences(), 2 );
   EXPECT_TRUE( entry->hasNotificationActive() );
   EXPECT_EQ( entries(), "7" );
}

TEST_F( VlanXlateScaleEntryDirTest, LookUpCreatesNothing ) {
   EXPECT_TRUE( dir_->vlanXlateScaleEntry( IntfId( 7 ) ) == nullptr );
   EXPECT_EQ( entries(), "" );
   const auto entry = dir_->vlanXlateScaleEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanXlateScaleEntry( IntfId( 7 ) ) == entry );
}

TEST_F( VlanXlateScaleEntryDirTest, ARemovedEntryStillWorksForItsHolder ) {
   const auto entry = dir_->vlanXlateScaleEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanXlateScaleEntryDel( IntfId( 7 ) ) == entry );
   entry->vidRangeSortedIs( rangeOf( 10, 20, 'M' ), true );
   EXPECT_EQ( TestSupport::sortedText( *entry ), "10-20 M" );
   EXPECT_EQ( entries(), "" );
}

TEST_F( VlanXlateScaleEntryDirTest, RemovingAnAbsentEntryReturnsNull ) {
   dir_->vlanXlateScaleEntryIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanXlateScaleEntryDel( IntfId( 8 ) ) == nullptr );
   EXPECT_EQ( entries(), "7" );
}

TEST_F( VlanXlateScaleEntryDirTest, RemovingAllLeavesNone ) {
   dir_->vlanXlateScaleEntryIs( IntfId( 7 ) );
   dir_->vlanXlateScaleEntryIs( IntfId( 8 ) );
   dir_->vlanXlateScaleEntryDelAll();
   EXPECT_EQ( entries(), "" );
}

TEST_F( VlanXlateScaleEntryDirTest, HashesUnderItsOwnSeed ) {
   EXPECT_EQ( dir_->vlanXlateScaleEntry().seed(), Zel::hashSeed() ^ 0x9ca56a83u );
}

TEST_F( VlanXlateScaleEntryDirTest, AllocationsAreTrackedByTypeName ) {
   const auto live = []( const char* name ) { return Zel::allocationCount( name ).live; };
   const auto entriesBefore = live( "MoxVlanMapping::VlanXlateScaleEntry" );
   const auto dirsBefore = live( "MoxVlanMapping::VlanXlateScaleEntryDir" );
   const auto dir = MoxVlanMapping::vlanXlateScaleEntryDirFactory();
   dir->vlanXlateScaleEntryIs( IntfId( 7 ) );
   EXPECT_EQ( live( "MoxVlanMapping::VlanXlateScaleEntry" ), entriesBefore + 1 );
   EXPECT_EQ( live( "MoxVlanMapping::VlanXlateScaleEntryDir" ), dirsBefore + 1 );
}

}   // namespace
