// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "MoxVlanMapping/SizeOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <vector>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanRangeXlateMapping;

class SizeSortTest : public TestSupport::NoneLeftTest {
 protected:
   void is( std::uint16_t low, std::uint16_t high, std::uint16_t mapping = 100 ) {
      entry_->vlanIdRangeIs( { VlanId::fromRaw( low ), VlanId::fromRaw( high ),
                               Bridging::VlanXlateMapping::fromRaw( mapping ) } );
   }
   /// Single ids, so many that counting is worth it.
   void manyMore() {
      for ( std::uint16_t id = 4001; id <= 4010; ++id ) {
         is( id, id );
      }
   }
   static constexpr char kManyMore[] = "4001-4001 4002-4002 4003-4003 4004-4004 4005-4005 "
                                       "4006-4006 4007-4007 4008-4008 4009-4009 4010-4010";
   static std::string text( const auto& ranges ) {
      std::string all;
      for ( const VlanRangeXlateMapping& range : ranges ) {
         all += ( all.empty() ? "" : " " ) + std::to_string( range.lowVid().value() ) + "-" +
                std::to_string( range.highVid().value() );
      }
      return all;
   }
   std::string sorted() {
      sort_.refill( entry_->store() );
      sort_.verify();
      std::vector< VlanRangeXlateMapping > ranges;
      for ( const auto& element : sort_ ) {
         EXPECT_TRUE( element.value() );
         ranges.push_back( element.key() );
      }
      return text( ranges );
   }
   /// What comparing gives.
   std::string expected() const {
      std::vector< VlanRangeXlateMapping > ranges;
      for ( const auto& element : entry_->vlanIdRange() ) {
         ranges.push_back( element.value() );
      }
      std::stable_sort( ranges.begin(), ranges.end() );
      return text( ranges );
   }

   const Zel::Ptr< VlanRangeEntry > entry_ =
      MoxVlanMapping::vlanRangeEntryFactory( Corvel::IntfId( 1 ) );
   MoxVlanMapping::SizeOrder sort_;
};

TEST_F( SizeSortTest, NoRangesGiveNone ) {
   EXPECT_EQ( sorted(), "" );
}

TEST_F( SizeSortTest, LargerRangesComeFirstThenLowerIds ) {
   is( 7, 7 );
   is( 10, 20 );
   is( 30, 40, 200 );
   is( 100, 300 );
   is( 5, 5 );
   EXPECT_EQ( sorted(), "100-300 10-20 30-40 5-5 7-7" );
}

// 63 ids, 64 and 65: the last in a bucket of its own, in one, and among the large ones.
TEST_F( SizeSortTest, TheSizesAroundTheLargestBucketKeepTheirOrder ) {
   is( 1000, 1062 );
   is( 100, 163 );
   is( 300, 364 );
   is( 2000, 2064 );
   is( 3000, 3063 );
   EXPECT_EQ( sorted(), "300-364 2000-2064 100-163 3000-3063 1000-1062" );
   manyMore();
   EXPECT_EQ( sorted(),
              std::string( "300-364 2000-2064 100-163 3000-3063 1000-1062 " ) + kManyMore );
}

TEST_F( SizeSortTest, CrossedRangesComeLastTheLeastCrossedFirst ) {
   is( 50, 40 );
   is( 60, 59 );
   is( 70, 70 );
   is( 80, 79 );
   EXPECT_EQ( sorted(), "70-70 60-59 80-79 50-40" );
   manyMore();
   EXPECT_EQ( sorted(), std::string( "70-70 " ) + kManyMore + " 60-59 80-79 50-40" );
   EXPECT_EQ( sorted(), expected() );
}

TEST_F( SizeSortTest, AgreesWithComparing ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   for ( int round = 0; round < 200; ++round ) {
      entry_->vlanIdRangeDelAll();
      const auto count = random() % 300;
      const auto longest = 1 + random() % ( round % 2 == 0 ? 5 : 200 );
      for ( std::uint64_t i = 0; i < count; ++i ) {
         const auto low = 1 + random() % 4000;
         is( static_cast< std::uint16_t >( low ),
             static_cast< std::uint16_t >( low + random() % longest ) );
      }
      ASSERT_EQ( sorted(), expected() ) << "round " << round;
   }
}

}   // namespace
