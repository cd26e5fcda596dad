// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ScaleAgent: the parts of a forwarding agent that VLAN translation at scale needs, built and
// wired in the order in which they depend on each other. No logic of its own.
//
//   config directories -> state machine -> range manager -> range entries
//                              `-> schedule -> task -> size sort -> RangeProgrammer -> data plane
#pragma once

#include <cstddef>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Quen/TaskScheduler.h"
#include "agent/MemoryDataPlane.h"
#include "agent/PortNames.h"
#include "agent/RangeProgrammer.h"

namespace Agent {

class ScaleAgent {
 public:
   static constexpr std::size_t kDefaultRangeEntries = 8;

   explicit ScaleAgent( std::size_t rangeEntriesPerPort );
   ScaleAgent( const ScaleAgent& ) = delete;
   ScaleAgent& operator=( const ScaleAgent& ) = delete;

   PortNames& ports() { return ports_; }
   const PortNames& ports() const { return ports_; }
   const MemoryDataPlane& dataPlane() const { return dataPlane_; }
   Mox::MoxCommonSmData& acsd() const { return *acsd_; }
   const Zel::Ptr< const Zel::Clock >& clock() const { return clock_; }
   Quen::TaskScheduler& scheduler() const { return *scheduler_; }
   MoxVlanMapping::VlanRangeEntryDir& rangeEntryDir() const { return *rangeEntryDir_; }
   MoxVlanMapping::VlanXlateScheduleDir& scheduleDir() const { return *scheduleDir_; }
   MoxVlanMapping::VlanMappingScaleSlaveSm& stateMachine() const { return *stateMachine_; }
   RangeProgrammer& programmer() const { return *programmer_; }

 private:
   PortNames ports_;
   MemoryDataPlane dataPlane_;
   const Zel::Ptr< Mox::MoxCommonSmData > acsd_;
   const Zel::Ptr< const Zel::Clock > clock_;
   const Zel::Ptr< Quen::TaskScheduler > scheduler_;
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeEntryDir_;
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > scheduleDir_;
   const Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > stateMachine_;
   const Zel::Ptr< RangeProgrammer > programmer_;
};

}   // namespace Agent
