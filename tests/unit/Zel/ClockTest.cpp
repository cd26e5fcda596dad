// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Clock.h"

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"

namespace {

class ClockTest : public TestSupport::NoneLeftTest {};
using ClockDeathTest = ClockTest;

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

TEST_F( ClockDeathTest, TheManualClockDoesNotGoBack ) {
   EXPECT_DEATH( Zel::manualClockFactory()->advance( -1 ),
                 "Zel/Clock:[0-9]+: .*advance.*: Assertion `span >= 0' failed\\." );
}

}   // namespace
