// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/TickWindow.h"

namespace Pelrec {

void
TickWindow::readingIs( const TickReading& reading ) {
   if ( reading.ticksAfter - reading.ticks > kLongestReading ) {
      ticks_ = 0;
      return;
   }
   // A counter that is behind, another processor's, gives no rate: one is taken from there on.
   if ( rateTicks_ != 0 && reading.ticks >= rateTicks_ ) {
      const std::uint64_t span = reading.ticks - rateTicks_;
      if ( span < kShortestRateSpan ) {
         return;
      }
      const double rate =
         static_cast< double >( reading.steadyNs - rateNs_ ) / static_cast< double >( span );
      nsPerTick_ = static_cast< std::uint64_t >( rate * 4294967296.0 );
      ticks_ = kTicks;
      anchorTicks_ = reading.ticks;
      anchorNs_ = reading.wallNs;
   }
   rateTicks_ = reading.ticks;
   rateNs_ = reading.steadyNs;
}

}   // namespace Pelrec
