// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Clock.h"

#include <cstdint>

#include <gtest/gtest.h>

#include "tests/unit/Pelrec/ManualSystemClock.h"

namespace {

TEST( ClockTest, AsksTheSystemsWallClockAtFirst ) {
   const ManualSystemClock manual;
   ManualSystemClock::steadyNs = 77;
   ManualSystemClock::wallNs = 1'700'000'000'123'456'789;
   EXPECT_EQ( Pelrec::Clock().nowNs(), 1'700'000'000'123'456'789u );
}

// Steady time stands still, so the counter fills in nothing, however fast it runs; the wall clock
// is set at every look.
TEST( ClockTest, ShowsWhatTheWallClockShowedAtTheLastLook ) {
   const ManualSystemClock manual;
   ManualSystemClock::wallNs = 1'700'000'000'000'000'000;
   ManualSystemClock::wallStepNs = 1'000'000;
   Pelrec::Clock clock;
   for ( int i = 0; i < 100'000; ++i ) {
      const std::uint64_t now = clock.nowNs();
      ASSERT_EQ( now, ManualSystemClock::wallNs - ManualSystemClock::wallStepNs );
   }
}

}   // namespace
