// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Clock: wall time that is cheap enough to stamp every record.
//
// Asking the system for the time costs as much as all the rest of a record. Where the processor
// has a cycle counter that runs at one rate in every power state, the system is asked only once
// per window (TickWindow.h) and the counter fills in between. Elsewhere it is asked each time.
//
// Cost       The counter's read and a multiplication; two system clock reads once per window.
// Accuracy   That of the window. Two readings may stand in the wrong order where windows meet or
//            when the system's clock is set.
// Threads    One thread.
#pragma once

#include <cstdint>

#include "Pelrec/TickWindow.h"
#include "Zel/Export.h"

namespace Pelrec {

class ZEL_EXPORT Clock {
 public:
   // Nanoseconds since 1970-01-01 00:00 UTC.
   std::uint64_t nowNs() {
#if defined( __x86_64__ )
      const std::uint64_t ticks = __builtin_ia32_rdtsc();
      if ( window_.covers( ticks ) ) [[likely]] {
         return window_.wallNs( ticks );
      }
#endif
      return systemNs();
   }

 private:
   // Asks the system, and makes the answer the start of a new window if that is possible.
   std::uint64_t systemNs();

   TickWindow window_;
};

}   // namespace Pelrec
