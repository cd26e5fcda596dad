// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What PairedRanges does by itself and what it declines. The range manager takes the long way for
// what is declined and arrives at the same, so its own tests cannot tell.
#include "MoxVlanMapping/PairedRanges.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>
#include <vector>

#include "MoxVlanMapping/VlanRangeEntry.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

namespace {

using Bridging::VlanId;
using Corvel::IntfId;
using MoxVlanMapping::PairedRanges;
using MoxVlanMapping::VlanRangeEntry;

VlanId
idOf( unsigned vid ) {
   return VlanId::fromRaw( static_cast< std::uint16_t >( vid ) );
}

std::string
stateText( const VlanRangeEntry& entry ) {
   return TestSupport::rangesText( entry ) + " / " + TestSupport::startsText( entry );
}

struct Change {
   const char* given;
   unsigned vid;
   char mapping;         // of an addition; unused for a deletion
   const char* result;   // ranges / starts, or "declined"
};

std::ostream&
operator<<( std::ostream& out, const Change& change ) {
   return out << change.given << ", " << change.vid << " " << change.mapping;
}

class PairedRangesTest : public TestSupport::NoneLeftTest {
 protected:
   void given( const std::string& ranges ) { TestSupport::store( *entry_, ranges ); }

   // The state behind the change; a change that is declined must leave it as it was.
   std::string outcome( bool done, const std::string& before ) const {
      if ( done ) {
         return stateText( *entry_ );
      }
      return stateText( *entry_ ) == before ? "declined" : "declined, but changed";
   }
   std::string add( unsigned vid, char mapping ) {
      const std::string before = stateText( *entry_ );
      return outcome( PairedRanges( *entry_ ).add( idOf( vid ), TestSupport::mappingOf( mapping ) ),
                      before );
   }
   std::string del( unsigned vid ) {
      const std::string before = stateText( *entry_ );
      return outcome( PairedRanges( *entry_ ).del( idOf( vid ) ), before );
   }

   const Zel::Ptr< VlanRangeEntry > entry_ = VlanRangeEntry::VlanRangeEntryIs( IntfId( 7 ) );
};

class PairedRangesAddTest :
    public PairedRangesTest,
    public testing::WithParamInterface< Change > {};
class PairedRangesDeleteTest :
    public PairedRangesTest,
    public testing::WithParamInterface< Change > {};

TEST_P( PairedRangesAddTest, AddsOrDeclines ) {
   given( GetParam().given );
   EXPECT_EQ( add( GetParam().vid, GetParam().mapping ), GetParam().result );
}

TEST_P( PairedRangesDeleteTest, DeletesOrDeclines ) {
   given( GetParam().given );
   EXPECT_EQ( del( GetParam().vid ), GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Alone, PairedRangesAddTest,
   testing::Values( Change{ "", 10, 'A', "10-10 A / 10" }, Change{ "", 1, 'A', "1-1 A / 1" },
                    Change{ "", 4094, 'A', "4094-4094 A / 4094" },
                    Change{ "10-12 A", 14, 'A', "10-12 A, 14-14 A / 14, 10" },
                    Change{ "10-12 A", 8, 'A', "8-8 A, 10-12 A / 10, 8" } ) );
INSTANTIATE_TEST_SUITE_P( Present, PairedRangesAddTest,
                          testing::Values( Change{ "10-12 A", 10, 'A', "10-12 A / 10" },
                                           Change{ "10-12 A", 11, 'A', "10-12 A / 10" },
                                           Change{ "10-12 A", 12, 'A', "10-12 A / 10" },
                                           Change{ "10-12 A", 11, '-', "10-12 A / 10" } ) );
INSTANTIATE_TEST_SUITE_P(
   Joining, PairedRangesAddTest,
   testing::Values( Change{ "10-12 A", 13, 'A', "10-13 A / 10" },
                    Change{ "10-12 A", 9, 'A', "9-12 A / 9" },
                    Change{ "10-12 A, 14-20 A", 13, 'A', "10-20 A / 10" },
                    Change{ "10-12 A, 14-20 A", 13, '-', "10-20 - / 10" },
                    Change{ "1-1 A", 2, 'A', "1-2 A / 1" }, Change{ "2-2 A", 1, 'A', "1-2 A / 1" },
                    Change{ "4093-4093 A", 4094, 'A', "4093-4094 A / 4093" },
                    Change{ "4094-4094 A", 4093, 'A', "4093-4094 A / 4093" } ) );
INSTANTIATE_TEST_SUITE_P(
   OtherMapping, PairedRangesAddTest,
   testing::Values( Change{ "10-12 A", 13, 'B', "10-12 A, 13-13 B / 13, 10" },
                    Change{ "10-12 A", 9, 'B', "9-9 B, 10-12 A / 10, 9" },
                    Change{ "10-12 A, 14-20 B", 13, 'A', "10-13 A, 14-20 B / 14, 10" },
                    Change{ "10-12 A, 14-20 B", 13, 'B', "10-12 A, 13-20 B / 13, 10" },
                    Change{ "10-12 A", 11, 'B', "10-12 A, 11-11 B / 11, 10" },
                    Change{ "10-12 A", 10, 'B', "declined" } ) );
INSTANTIATE_TEST_SUITE_P(
   Odd, PairedRangesAddTest,
   testing::Values( Change{ "", 0, 'A', "declined" }, Change{ "", 4095, 'A', "declined" },
                    Change{ "0-0 A", 5, 'A', "declined" }, Change{ "0-9 A", 5, 'A', "declined" },
                    Change{ "1-1 -", 2, '-', "declined" },
                    Change{ "14-12 A", 13, 'A', "13-13 A, 14-12 A / 14, 13" } ) );

INSTANTIATE_TEST_SUITE_P( Absent, PairedRangesDeleteTest,
                          testing::Values( Change{ "", 10, '-', " / " },
                                           Change{ "10-12 A", 9, '-', "10-12 A / 10" },
                                           Change{ "10-12 A", 13, '-', "10-12 A / 10" } ) );
INSTANTIATE_TEST_SUITE_P(
   Present, PairedRangesDeleteTest,
   testing::Values( Change{ "10-10 A", 10, '-', " / " }, Change{ "1-1 A", 1, '-', " / " },
                    Change{ "4094-4094 A", 4094, '-', " / " },
                    Change{ "10-12 A", 10, '-', "11-12 A / 11" },
                    Change{ "10-12 A", 12, '-', "10-11 A / 10" },
                    Change{ "10-12 A", 11, '-', "10-10 A, 12-12 A / 12, 10" },
                    Change{ "1-2 A", 1, '-', "2-2 A / 2" },
                    Change{ "4093-4094 A", 4094, '-', "4093-4093 A / 4093" },
                    Change{ "4092-4094 A", 4093, '-', "4092-4092 A, 4094-4094 A / 4094, 4092" } ) );
INSTANTIATE_TEST_SUITE_P(
   Odd, PairedRangesDeleteTest,
   testing::Values( Change{ "", 0, '-', "declined" }, Change{ "", 4095, '-', "declined" },
                    Change{ "0-9 A", 5, '-', "declined" }, Change{ "1-1 -", 1, '-', "declined" },
                    Change{ "4094-4095 A", 4094, '-', "declined" },
                    Change{ "4093-4095 A", 4094, '-', "declined" },
                    Change{ "10-13 A, 11-11 B", 10, '-', "declined" },
                    Change{ "10-13 A, 12-12 B", 11, '-', "declined" },
                    Change{ "10-13 A, 12-12 B", 12, '-', "10-13 A / 10" } ) );

TEST_F( PairedRangesTest, NothingIsDoneWhileTheCollectionsDisagree ) {
   given( "10-12 A" );
   entry_->revSortedStartVidIs( 20, true );
   EXPECT_EQ( add( 30, 'A' ), "declined" );
   EXPECT_EQ( del( 10 ), "declined" );
}

TEST_F( PairedRangesTest, ARangeThatSomebodyHoldsIsNotChangedInPlace ) {
   given( "10-12 A" );
   const Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > held(
      entry_->vlanIdRange().findNode( VlanId( 10 ) ) );
   EXPECT_EQ( add( 9, 'A' ), "declined" );
   EXPECT_EQ( add( 13, 'A' ), "declined" );
   EXPECT_EQ( del( 10 ), "declined" );
   EXPECT_EQ( del( 11 ), "declined" );
   EXPECT_EQ( del( 12 ), "declined" );
}

TEST_F( PairedRangesTest, AStartThatSomebodyHoldsDoesNotMove ) {
   given( "10-12 A" );
   const Zel::Ptr< VlanRangeEntry::ZelRevSortedStartVid > held(
      entry_->revSortedStartVid().findNode( 10 ) );
   EXPECT_EQ( add( 9, 'A' ), "declined" );
   EXPECT_EQ( del( 10 ), "declined" );
   EXPECT_EQ( add( 13, 'A' ), "10-13 A / 10" );
   EXPECT_EQ( del( 13 ), "10-12 A / 10" );
}

TEST_F( PairedRangesTest, AMergeTakesTheUpperRangeFromThoseWhoHoldIt ) {
   given( "10-12 A, 14-20 A" );
   const Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > held(
      entry_->vlanIdRange().findNode( VlanId( 14 ) ) );
   EXPECT_EQ( add( 13, 'A' ), "10-20 A / 10" );
   EXPECT_EQ( TestSupport::rangeText( held->value() ), "14-20 A" );
   EXPECT_FALSE( held->linked() );
}

TEST_F( PairedRangesTest, ARangeThatSomebodyHoldsCanGo ) {
   given( "10-10 A" );
   const Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > held(
      entry_->vlanIdRange().findNode( VlanId( 10 ) ) );
   EXPECT_EQ( del( 10 ), " / " );
   EXPECT_EQ( TestSupport::rangeText( held->value() ), "10-10 A" );
}

TEST_F( PairedRangesTest, AStartWhoseFlagIsFalseIsLeftToTheLongWay ) {
   given( "10-10 A, 12-14 A" );
   entry_->revSortedStartVidIs( 10, false );
   entry_->revSortedStartVidIs( 12, false );
   EXPECT_EQ( add( 11, 'A' ), "declined" );
   EXPECT_EQ( add( 11, 'B' ), "10-10 A, 11-11 B, 12-14 A / 12=false, 11, 10=false" );
   EXPECT_EQ( del( 10 ), "declined" );
   EXPECT_EQ( del( 12 ), "declined" );
   EXPECT_EQ( add( 9, 'A' ), "declined" );
}

TEST_F( PairedRangesTest, AMergeAsksForTheFlagOfTheUpperStartAlone ) {
   given( "10-10 A, 12-14 A" );
   entry_->revSortedStartVidIs( 12, false );
   EXPECT_EQ( add( 11, 'A' ), "declined" );
   entry_->revSortedStartVidIs( 12, true );
   entry_->revSortedStartVidIs( 10, false );
   EXPECT_EQ( add( 11, 'A' ), "10-14 A / 10=false" );
}

TEST_F( PairedRangesTest, EachElementThatIsReplacedCountsAsTwoChanges ) {
   given( "10-12 A" );
   const auto ranges = entry_->vlanIdRange().changes();
   const auto starts = entry_->revSortedStartVid().changes();
   add( 13, 'A' );
   EXPECT_EQ( entry_->vlanIdRange().changes() - ranges, 2u );
   EXPECT_EQ( entry_->revSortedStartVid().changes() - starts, 0u );
   add( 9, 'A' );
   EXPECT_EQ( entry_->vlanIdRange().changes() - ranges, 4u );
   EXPECT_EQ( entry_->revSortedStartVid().changes() - starts, 2u );
}

}   // namespace
