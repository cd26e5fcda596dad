// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Chain: base of a fixture that needs what state machine and codef work on, from configuration to
// schedule, with a task scheduler whose clock is turned by hand. Stands behind NoneLeftTest among
// the bases: what it holds is gone when that looks.
#pragma once

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/Ptr.h"

namespace TestSupport {

class Chain {
 protected:
   Chain() = default;

   const Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   const Zel::Ptr< Quen::TaskScheduler > scheduler_ = Quen::taskSchedulerFactory( clock_ );
   const Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > scheduleDir_ =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
};

}   // namespace TestSupport
