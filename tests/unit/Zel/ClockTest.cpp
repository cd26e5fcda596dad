// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Clock.h"

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "tests/support/NoneLeftTest.h"

namespace {

class ClockTest : public TestSupport::NoneLeftTest {};

TEST_F( ClockTest, TheManualClockStartsAtZeroAndStandsStill ) {
   const auto clock = Zel::manualClockFactory();
   EXPECT_EQ( clock->now(), 0 );
   EXPECT_EQ( clock->now(), 0 );
}

TEST_F( ClockTest, TheManualClockMovesAsFarAsItIsTold ) {
   const auto clock = Zel::ManualClock::ManualClockIs();
   clock->advance( 1.5 );
   clock->advance( 0 );
   clock->advance( 0.25 );
   EXPECT_EQ( clock->now(), 1.75 );
}

TEST_F( ClockTest, TheSteadyClockNeverGoesBack ) {
   const Zel::Ptr< const Zel::Clock > clock = Zel::steadyClockFactory();
   Zel::Seconds previous = clock->now();
   for ( int i = 0; i < 1000; ++i ) {
      const Zel::Seconds now = clock->now();
      ASSERT_GE( now, previous );
      previous = now;
   }
}

TEST_F( ClockTest, SteadyClocksShowTheSameTime ) {
   const auto one = Zel::SteadyClock::SteadyClockIs();
   const auto other = Zel::steadyClockFactory();
   const Zel::Seconds first = one->now();
   const Zel::Seconds second = other->now();
   EXPECT_LE( first, second );
   EXPECT_LE( second, one->now() );
}

TEST_F( ClockTest, TheManualClockDoesNotGoBack ) {
   const auto clock = Zel::manualClockFactory();
   clock->advance( 5 );
   try {
      clock->advance( -1 );
      FAIL() << "nothing was thrown";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(), "Zel::ManualClock::advance: span < 0 not allowed" );
   }
   EXPECT_EQ( clock->now(), 5 );
}

}   // namespace
