// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// World: everything between the VLAN configuration and the sorted ranges, as an agent wires it.
//
// Threads  One.
#pragma once

#include <cstdint>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"

namespace Bench {

/// Programs nothing.
class CountingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Bench::CountingCodef";
   void processSortedVlanRange( Corvel::IntfId ) override { ++handed; }
   std::uint64_t handed = 0;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~CountingCodef() override { zelDoZombieReactors( true ); }
};

struct World {
   Zel::Ptr< Mox::MoxCommonSmData > acsd = Mox::moxCommonSmDataFactory();
   Zel::Ptr< Zel::SteadyClock > clock = Zel::steadyClockFactory();
   Zel::Ptr< Quen::TaskScheduler > scheduler = Quen::taskSchedulerFactory( clock );
   Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > ranges =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > schedule =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   Zel::Ptr< CountingCodef > codef =
      Zel::newEntity< CountingCodef >( acsd, scheduler, ranges, schedule );
   Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr =
      MoxVlanMapping::moxVlanRangeMgrFactory( ranges );
   /// Not initialised yet: it delivers nothing.
   Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > stateMachine =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd, clock, nullptr, nullptr, ranges,
                                                      schedule );
};

}   // namespace Bench
