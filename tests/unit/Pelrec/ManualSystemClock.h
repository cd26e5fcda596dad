// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ManualSystemClock: the system's clocks as the sources of this program see them, turned by hand.
//
// The linker sends their calls of clock_gettime here (CMakeLists.txt).
#pragma once

#include <cstdint>

class ManualSystemClock {
 public:
   static inline std::uint64_t wallNs = 0;
   static inline std::uint64_t steadyNs = 0;
   // What the wall clock moves at each look at it.
   static inline std::uint64_t wallStepNs = 0;

   ManualSystemClock() { reset(); }
   ~ManualSystemClock() { reset(); }
   ManualSystemClock( const ManualSystemClock& ) = delete;
   ManualSystemClock& operator=( const ManualSystemClock& ) = delete;

 private:
   static void reset() { wallNs = steadyNs = wallStepNs = 0; }
};
