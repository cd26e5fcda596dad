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
systemNs( clockid_t id ) {
   timespec now{};
   clock_gettime( id, &now );
   return static_cast< std::uint64_t >( now.tv_sec ) * 1'000'000'000u +
          static_cast< std::uint64_t >( now.tv_nsec );
}

#if defined( __x86_64__ )
constexpr std::uint64_t kWindowTicks = 1u << 22;
constexpr std::uint64_t kShortestRateSpan = 1u << 18;
// Above this the thread was interrupted between the reads, and they do not belong together.
constexpr std::uint64_t kLongestReading = 1u << 13;

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
Clock::anchoredNs() {
#if defined( __x86_64__ )
   static const bool steady = counterIsSteady();
   if ( steady ) {
      const std::uint64_t ticks = __builtin_ia32_rdtsc();
      const std::uint64_t steadyNs = systemNs( CLOCK_MONOTONIC );
      const std::uint64_t wallNs = systemNs( CLOCK_REALTIME );
      const std::uint64_t span = ticks - rateTicks_;
      if ( __builtin_ia32_rdtsc() - ticks > kLongestReading ) {
         windowTicks_ = 0;
      } else if ( rateTicks_ == 0 ) {
         rateTicks_ = ticks;
         rateNs_ = steadyNs;
      } else if ( span >= kShortestRateSpan ) {
         const double rate =
            static_cast< double >( steadyNs - rateNs_ ) / static_cast< double >( span );
         nsPerTick_ = static_cast< std::uint64_t >( rate * 4294967296.0 );
         windowTicks_ = kWindowTicks;
         anchorTicks_ = ticks;
         anchorNs_ = wallNs;
         rateTicks_ = ticks;
         rateNs_ = steadyNs;
      }
      return wallNs;
   }
#endif
   return systemNs( CLOCK_REALTIME );
}

}   // namespace Pelrec
