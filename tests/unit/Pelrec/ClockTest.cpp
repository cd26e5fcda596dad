// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Clock.h"

#include <cstdint>
#include <ctime>

#include <gtest/gtest.h>

namespace {

std::uint64_t
systemNs() {
   timespec now{};
   clock_gettime( CLOCK_REALTIME, &now );
   return static_cast< std::uint64_t >( now.tv_sec ) * 1'000'000'000u +
          static_cast< std::uint64_t >( now.tv_nsec );
}

TEST( ClockTest, ReadsBetweenTheSystemsReadingsBeforeAndAfter ) {
   // Long enough for many windows. However busy the machine is, a reading lies between the two
   // around it; the millisecond is for what a window may be off.
   constexpr std::uint64_t slack = 1'000'000;
   Pelrec::Clock clock;
   int outside = 0;
   for ( int i = 0; i < 400'000; ++i ) {
      const std::uint64_t before = systemNs();
      const std::uint64_t now = clock.nowNs();
      const std::uint64_t after = systemNs();
      outside += now + slack < before || now > after + slack ? 1 : 0;
   }
   EXPECT_EQ( outside, 0 );
}

}   // namespace
