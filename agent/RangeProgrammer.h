// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeProgrammer: gives each port's largest ranges to the range entries of the data plane and
// the VLAN ids of all others to its exact entries.
#pragma once

#include <cstdint>
#include <vector>

#include "Corvel/IntfId.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "agent/DataPlane.h"

namespace Agent {

class RangeProgrammer : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Agent::RangeProgrammer";

   void vlanXlateCodefComplete() override;
   /// The VLAN ids that got exact entries also stand in the scale entry's vlanInXlateHashTable.
   void processSortedVlanRange( Corvel::IntfId intfId ) override;

   /// What happened since the last call.
   struct Progress {
      std::uint64_t completed = 0;            ///< calls of vlanXlateCodefComplete()
      std::vector< Corvel::IntfId > handed;   ///< arguments of processSortedVlanRange()
   };
   Progress takeProgress();

 protected:
   /// `dataPlane` outlives this object.
   RangeProgrammer( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                    const Zel::Ptr< Quen::TaskScheduler >& scheduler,
                    const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& vlanRangeEntryDir,
                    const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir >& vlanXlateScheduleDir,
                    DataPlane& dataPlane );
   ~RangeProgrammer() override;

 private:
   DataPlane& dataPlane_;
   Progress progress_;
};

}   // namespace Agent
