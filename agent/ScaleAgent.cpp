// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/ScaleAgent.h"

#include "Bridging/Config.h"
#include "Bridging/VlanXlateStatusDir.h"
#include "Zel/NewEntity.h"

namespace Agent {

ScaleAgent::ScaleAgent( std::size_t rangeEntriesPerPort )
    : dataPlane_( rangeEntriesPerPort ),
      acsd_( Mox::moxCommonSmDataFactory() ),
      clock_( Zel::steadyClockFactory() ),
      scheduler_( Quen::taskSchedulerFactory( clock_ ) ),
      rangeEntryDir_( MoxVlanMapping::vlanRangeEntryDirFactory() ),
      scheduleDir_( MoxVlanMapping::vlanXlateScheduleDirFactory() ),
      stateMachine_( MoxVlanMapping::vlanMappingScaleSlaveSmFactory(
         acsd_, clock_, Bridging::configFactory(), Bridging::vlanXlateStatusDirFactory(),
         rangeEntryDir_, scheduleDir_ ) ),
      programmer_( Zel::newEntity< RangeProgrammer >( acsd_, scheduler_, rangeEntryDir_,
                                                      scheduleDir_, dataPlane_ ) ) {}

}   // namespace Agent
