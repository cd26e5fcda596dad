// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TickWindow: a span of a cycle counter in which counts can be told as wall time.
//
// Arithmetic alone: counter and clocks are read by the caller. The counter's rate is taken from
// steady time, which nobody sets, between two readings; the wall clock is the start of the window.
//
// Cost       A look-up: a subtraction, a comparison, a multiplication.
// Accuracy   As far as the counter keeps its rate: some 100 ns by the end of a window.
// Threads    One thread.
#pragma once

#include <cstdint>

namespace Pelrec {

// Counter and clocks, read in this order.
struct TickReading {
   std::uint64_t ticks;
   std::uint64_t steadyNs;
   std::uint64_t wallNs;
   std::uint64_t ticksAfter;
};

class TickWindow {
 public:
   // How long one reading serves: one or two milliseconds.
   static constexpr std::uint64_t kTicks = 1u << 22;
   // Readings that stand closer together give no rate: the clocks are not that exact.
   static constexpr std::uint64_t kShortestRateSpan = 1u << 18;
   // Above this the thread was interrupted within the reading, and its parts do not belong together.
   static constexpr std::uint64_t kLongestReading = 1u << 13;

   // There is no window until two readings have given a rate.
   bool covers( std::uint64_t ticks ) const { return ticks - anchorTicks_ < ticks_; }

   // Nanoseconds since 1970-01-01 00:00 UTC. Requires: covers( ticks ).
   std::uint64_t wallNs( std::uint64_t ticks ) const {
      return anchorNs_ + ( ( ( ticks - anchorTicks_ ) * nsPerTick_ ) >> 32 );
   }

   // Begins a window with `reading`, if it and an earlier one give a rate; an interrupted one ends
   // the window instead.
   void readingIs( const TickReading& reading );

 private:
   std::uint64_t ticks_ = 0;
   std::uint64_t anchorTicks_ = 0;
   std::uint64_t anchorNs_ = 0;
   std::uint64_t nsPerTick_ = 0;   // fixed point, 32 binary places
   // Start of the span over which the rate is taken.
   std::uint64_t rateTicks_ = 0;
   std::uint64_t rateNs_ = 0;
};

}   // namespace Pelrec
