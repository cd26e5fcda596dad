// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Clock: where time comes from.
//
// Time is given from outside, so that tests turn the hands themselves.
#pragma once

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

/// A span or point of time in seconds.
using Seconds = double;

class ZEL_EXPORT Clock : public PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Zel::Clock";

   /// Seconds since a fixed but unspecified moment; never goes back.
   virtual Seconds now() const = 0;
   TypeHandle fwkType() const override;

 protected:
   Clock() = default;
   ~Clock() override;
};

/// The machine's monotonic time.
class ZEL_EXPORT SteadyClock : public Clock {
 public:
   static constexpr char zelTypeName[] = "Zel::SteadyClock";
   static Ptr< SteadyClock > SteadyClockIs();
   Seconds now() const override;
   TypeHandle fwkType() const override;

 protected:
   SteadyClock() = default;
   ~SteadyClock() override;
};

/// Stands still until it is told to move. Starts at 0.
class ZEL_EXPORT ManualClock : public Clock {
 public:
   static constexpr char zelTypeName[] = "Zel::ManualClock";
   static Ptr< ManualClock > ManualClockIs();
   Seconds now() const override { return now_; }
   /// Throws RangeException "Zel::ManualClock::advance: span < 0 not allowed".
   void advance( Seconds span );
   TypeHandle fwkType() const override;

 protected:
   ManualClock() = default;
   ~ManualClock() override;

 private:
   Seconds now_ = 0;
};

ZEL_EXPORT Ptr< SteadyClock > steadyClockFactory();
ZEL_EXPORT Ptr< ManualClock > manualClockFactory();

}   // namespace Zel
