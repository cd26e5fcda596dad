// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Clock.h"

#include <chrono>

#include "Zel/Exception.h"
#include "Zel/NewEntity.h"

namespace Zel {
Clock::~Clock() {
   zelDoZombieReactors( true );
}
SteadyClock::~SteadyClock() = default;
ManualClock::~ManualClock() = default;

Ptr< SteadyClock >
SteadyClock::SteadyClockIs() {
   return newEntity< SteadyClock >();
}

Seconds
SteadyClock::now() const {
   return std::chrono::duration< Seconds >( std::chrono::steady_clock::now().time_since_epoch() )
      .count();
}

Ptr< ManualClock >
ManualClock::ManualClockIs() {
   return newEntity< ManualClock >();
}

void
ManualClock::advance( Seconds span ) {
   if ( !( span >= 0 ) ) {
      throwRangeException( "Zel::ManualClock::advance: span < 0 not allowed" );
   }
   now_ += span;
}

Ptr< SteadyClock >
steadyClockFactory() {
   return SteadyClock::SteadyClockIs();
}

Ptr< ManualClock >
manualClockFactory() {
   return ManualClock::ManualClockIs();
}

}   // namespace Zel
