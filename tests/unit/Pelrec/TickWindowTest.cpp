// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/TickWindow.h"

#include <cstdint>
#include <string>

#include <gtest/gtest.h>

namespace {

using Pelrec::TickReading;
using Pelrec::TickWindow;

// A processor that counts four ticks in three nanoseconds; its wall clock is set now and then.
class TickWindowTest : public testing::Test {
 protected:
   static constexpr std::uint64_t kFirst = 5'000'000'000;   // ticks, and far from 0 as always
   static constexpr std::uint64_t kWall = 1'700'000'000'000'000'000;
   static constexpr std::uint64_t kShort = TickWindow::kShortestRateSpan;

   void read( std::uint64_t ticks, std::uint64_t wallNs, std::uint64_t took = 100 ) {
      window_.readingIs( { ticks, ticks / 4 * 3, wallNs, ticks + took } );
   }

   // Wall time as a distance to kWall.
   std::string shown( std::uint64_t ticks ) const {
      return window_.covers( ticks ) ? std::to_string( window_.wallNs( ticks ) - kWall ) : "-";
   }

   TickWindow window_;
};

TEST_F( TickWindowTest, CoversNothingBeforeThereIsARate ) {
   EXPECT_EQ( shown( kFirst ), "-" );
   read( kFirst, kWall );
   EXPECT_EQ( shown( kFirst ), "-" );
   EXPECT_EQ( shown( kFirst + 1 ), "-" );
}

TEST_F( TickWindowTest, TellsTimeAtTheCountersRateFromTheSecondReadingOn ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   EXPECT_EQ( shown( kFirst + kShort ), "0" );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "3" );
   EXPECT_EQ( shown( kFirst + kShort + 4'000'000 ), "3000000" );
}

TEST_F( TickWindowTest, EndsAfterFourMillionTicks ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   EXPECT_EQ( shown( kFirst + kShort + ( 1u << 22 ) - 1 ), "3145727" );
   EXPECT_EQ( shown( kFirst + kShort + ( 1u << 22 ) ), "-" );
}

// Another processor's counter may be a little behind.
TEST_F( TickWindowTest, DoesNotCoverWhatLiesBeforeIt ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   EXPECT_EQ( shown( kFirst + kShort - 1 ), "-" );
}

TEST_F( TickWindowTest, AReadingBehindTheLastOneGivesNoRateButBeginsAnother ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   read( kFirst + kShort - 8, kWall + 1000 );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "3" ) << "the window from before";
   read( kFirst + 2 * kShort, kWall );
   EXPECT_EQ( shown( kFirst + 2 * kShort + 4 ), "3" );
}

TEST_F( TickWindowTest, ReadingsTooCloseTogetherGiveNoRate ) {
   read( kFirst, kWall );
   read( kFirst + kShort - 1, kWall + 5 );
   EXPECT_EQ( shown( kFirst + kShort ), "-" );
   read( kFirst + kShort, kWall );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "3" );
}

TEST_F( TickWindowTest, TheNextReadingBeginsTheNextWindow ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   read( kFirst + 2 * kShort, kWall + 1'000 );
   EXPECT_EQ( shown( kFirst + 2 * kShort + 8 ), "1006" );
   EXPECT_EQ( shown( kFirst + kShort ), "-" );
}

TEST_F( TickWindowTest, TheRateIsThatOfTheLastTwoReadings ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   window_.readingIs( { kFirst + 2 * kShort, ( kFirst + kShort ) / 4 * 3 + kShort / 2, kWall,
                        kFirst + 2 * kShort } );
   EXPECT_EQ( shown( kFirst + 2 * kShort + 4 ), "2" );
}

TEST_F( TickWindowTest, SettingTheWallClockMovesTheTimeAndNotTheRate ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall + 3'600'000'000'000 );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "3600000000003" );
   read( kFirst + 2 * kShort, kWall + 1 );
   EXPECT_EQ( shown( kFirst + 2 * kShort + 4 ), "4" );
}

TEST_F( TickWindowTest, AnInterruptedReadingEndsTheWindowAndBeginsNone ) {
   read( kFirst, kWall );
   read( kFirst + kShort, kWall );
   read( kFirst + 2 * kShort, kWall, TickWindow::kLongestReading + 1 );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "-" );
   EXPECT_EQ( shown( kFirst + 2 * kShort + 4 ), "-" );
}

TEST_F( TickWindowTest, AReadingMayTakeAsLongAsIsAllowed ) {
   read( kFirst, kWall, TickWindow::kLongestReading );
   read( kFirst + kShort, kWall, TickWindow::kLongestReading );
   EXPECT_EQ( shown( kFirst + kShort + 4 ), "3" );
}

TEST_F( TickWindowTest, ReachesOverAnInterruptedReadingForTheRate ) {
   read( kFirst, kWall );
   window_.readingIs( { kFirst + kShort, 0, kWall, kFirst + 2 * kShort } );
   read( kFirst + 3 * kShort, kWall );
   EXPECT_EQ( shown( kFirst + 3 * kShort + 4 ), "3" );
}

}   // namespace
