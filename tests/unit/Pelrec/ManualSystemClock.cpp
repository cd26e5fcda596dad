// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "tests/unit/Pelrec/ManualSystemClock.h"

#include <ctime>

// The names that the linker gives what it redirects; the second is that of 64-bit time on 32 bits.
extern "C" int __wrap_clock_gettime( clockid_t id, timespec* now );
extern "C" int __wrap___clock_gettime64( clockid_t id, timespec* now );

int
__wrap_clock_gettime( clockid_t id, timespec* now ) {
   std::uint64_t ns = ManualSystemClock::steadyNs;
   if ( id == CLOCK_REALTIME ) {
      ns = ManualSystemClock::wallNs;
      ManualSystemClock::wallNs += ManualSystemClock::wallStepNs;
   }
   now->tv_sec = static_cast< std::time_t >( ns / 1'000'000'000 );
   now->tv_nsec = static_cast< long >( ns % 1'000'000'000 );
   return 0;
}

int
__wrap___clock_gettime64( clockid_t id, timespec* now ) {
   return __wrap_clock_gettime( id, now );
}
