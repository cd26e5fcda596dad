// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/RangeProgrammer.h"

#include <utility>

namespace Agent {

RangeProgrammer::RangeProgrammer(
   const Zel::Ptr< Mox::MoxCommonSmData >& acsd, const Zel::Ptr< Quen::TaskScheduler >& scheduler,
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& vlanRangeEntryDir,
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir >& vlanXlateScheduleDir,
   DataPlane& dataPlane )
    : MoxVlanRangeMappingCodef( acsd, scheduler, vlanRangeEntryDir, vlanXlateScheduleDir ),
      dataPlane_( dataPlane ) {}

RangeProgrammer::~RangeProgrammer() {
   zelDoZombieReactors( true );
}

void
RangeProgrammer::vlanXlateCodefComplete() {
   ++progress_.completed;
}

void
RangeProgrammer::processSortedVlanRange( Corvel::IntfId intfId ) {
   progress_.handed.push_back( intfId );
   const auto scaleEntry = vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intfId );
   scaleEntry->vlanInXlateHashTableDelAll();
   PortProgram program;
   for ( const auto& element : scaleEntry->vidRangeSorted() ) {
      const MoxVlanMapping::VlanRangeXlateMapping& range = element.key();
      const std::uint16_t low = range.lowVid().value();
      const std::uint16_t high = range.highVid().value();
      const std::uint16_t relay = range.mapping().rawVlanId();
      if ( program.ranges.size() < dataPlane_.rangeEntriesPerPort() ) {
         program.ranges.push_back( { low, high, relay } );
         continue;
      }
      for ( std::uint32_t vlan = low; vlan <= high; ++vlan ) {
         scaleEntry->vlanInXlateHashTableIs( Bridging::VlanId( vlan ) );
         program.exact.push_back( { static_cast< std::uint16_t >( vlan ), relay } );
      }
   }
   dataPlane_.portProgramIs( intfId, std::move( program ) );
}

RangeProgrammer::Progress
RangeProgrammer::takeProgress() {
   return std::exchange( progress_, {} );
}

}   // namespace Agent
