// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Clock: wall time that is cheap enough to stamp every record.
//
// Asking the system for the time costs as much as all the rest of a record. Where the processor
// has a cycle counter that runs at one rate in every power state, the system is asked only once
// per window (some 4 million cycles, one or two milliseconds) and the counter fills in between.
// Elsewhere the system is asked each time.
//
// Cost       The counter's read and a multiplication; two system clock reads once per window.
// Accuracy   Within a window some 100 ns off the system's wall clock. Two readings may stand
//            in the wrong order where windows meet or when the system's clock is set.
// Threads    One thread.
#pragma once

#include <cstdint>

#include "Zel/Export.h"

namespace Pelrec {

class ZEL_EXPORT Clock {
 public:
   // Nanoseconds since 1970-01-01 00:00 UTC.
   std::uint64_t nowNs() {
#if defined( __x86_64__ )
      const std::uint64_t elapsed = __builtin_ia32_rdtsc() - anchorTicks_;
      if ( elapsed < windowTicks_ ) [[likely]] {
         return anchorNs_ + ( ( elapsed * nsPerTick_ ) >> 32 );
      }
#endif
      return anchoredNs();
   }

 private:
   // Asks the system, and makes the answer the start of a new window if that is possible.
   std::uint64_t anchoredNs();

   std::uint64_t anchorTicks_ = 0;
   std::uint64_t anchorNs_ = 0;
   std::uint64_t nsPerTick_ = 0;     // fixed point, 32 binary places
   std::uint64_t windowTicks_ = 0;   // 0: the rate is not known
   // Start of the span over which the rate is taken; steady time, which nobody sets.
   std::uint64_t rateTicks_ = 0;
   std::uint64_t rateNs_ = 0;
};

}   // namespace Pelrec
