// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Clock.h"

#include <ctime>

#if defined( __x86_64__ )
#include <cpuid.h>
#endif

namespace Pelrec {
namespace {

std::uint64_t
readingOf( clockid_t id ) {
   timespec now{};
   clock_gettime( id, &now );
   return static_cast< std::uint64_t >( now.tv_sec ) * 1'000'000'000u +
          static_cast< std::uint64_t >( now.tv_nsec );
}

#if defined( __x86_64__ )
bool
counterIsSteady() {
   unsigned eax = 0;
   unsigned ebx = 0;
   unsigned ecx = 0;
   unsigned edx = 0;
   return __get_cpuid( 0x80000007, &eax, &ebx, &ecx, &edx ) != 0 && ( edx & ( 1u << 8 ) ) != 0;
}
#endif

}   // namespace

std::uint64_t
Clock::systemNs() {
#if defined( __x86_64__ )
   static const bool steady = counterIsSteady();
   if ( steady ) {
      // In braces, so in this order.
      const TickReading reading{ __builtin_ia32_rdtsc(), readingOf( CLOCK_MONOTONIC ),
                                 readingOf( CLOCK_REALTIME ), __builtin_ia32_rdtsc() };
      window_.readingIs( reading );
      return reading.wallNs;
   }
#endif
   return readingOf( CLOCK_REALTIME );
}

}   // namespace Pelrec
