// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of MoxVlanRangeMgr, by name.
#include <array>
#include <ios>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace MoxVlanMapping {
namespace {

constexpr std::array kReverseStartIdVlanId{
   Zel::field< &ReverseStartIdVlanId::value >( 2, "value" ),
};

constexpr std::array kVlanRangeXlateMapping{
   Zel::field< &VlanRangeXlateMapping::lowVid >( 2, "lowVid" ),
   Zel::field< &VlanRangeXlateMapping::highVid >( 3, "highVid" ),
   Zel::field< &VlanRangeXlateMapping::mapping >( 4, "mapping" ),
};

constexpr std::array kVlanRangeEntry{
   Zel::field< &VlanRangeEntry::intfId >( 130, "intfId" ),
   Zel::orderedMap< VlanRangeEntry, VlanRangeEntry::VlanIdRangeMap, &VlanRangeEntry::vlanIdRange,
                    &VlanRangeEntry::vlanIdRangeIs, &VlanRangeEntry::vlanIdRangeDel >(
      131, "vlanIdRange" ),
   Zel::orderedSet< VlanRangeEntry, VlanRangeEntry::RevSortedStartVidMap,
                    &VlanRangeEntry::revSortedStartVid, &VlanRangeEntry::revSortedStartVidIs,
                    &VlanRangeEntry::revSortedStartVidDel >( 132, "revSortedStartVid" ),
};

constexpr std::array kVlanRangeEntryDir{
   Zel::entityMap< VlanRangeEntryDir, VlanRangeEntryDir::VlanRangeEntryMap,
                   &VlanRangeEntryDir::vlanRangeEntry, &VlanRangeEntryDir::vlanRangeEntryIs,
                   &VlanRangeEntryDir::vlanRangeEntryDel >( 130, "vlanRangeEntry", { "intfId" } ),
};

constexpr std::array kVlanXlateScheduleDir{
   Zel::hashSet< VlanXlateScheduleDir, VlanXlateScheduleDir::VlanXlateScheduleSet,
                 &VlanXlateScheduleDir::vlanXlateSchedule,
                 &VlanXlateScheduleDir::vlanXlateScheduleIs,
                 &VlanXlateScheduleDir::vlanXlateScheduleDel >(
      VlanXlateScheduleDir::kAttrVlanXlateSchedule, "vlanXlateSchedule" ),
};

constexpr std::array kMoxVlanRangeMgr{
   Zel::pointer< &MoxVlanRangeMgr::vlanRangeEntryDir >( 130, "vlanRangeEntryDir" ),
   Zel::method< &MoxVlanRangeMgr::isVidInRange >( 131, "isVidInRange", { "vidRange", "inVlanId" } ),
   Zel::method< &MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange >(
      132, "isVidAndDot1qInLowerBoundRange", { "intfId", "inVlanId", "mapping" } ),
   Zel::method< &MoxVlanRangeMgr::isVidAndDot1qInUpperBoundRange >(
      133, "isVidAndDot1qInUpperBoundRange", { "intfId", "inVlanId", "mapping" } ),
   Zel::callableMethod< &MoxVlanRangeMgr::addVlanToIdx >( 134, "addVlanToIdx",
                                                          { "intfId", "vlanId", "mapping" } ),
   Zel::callableMethod< &MoxVlanRangeMgr::deleteVlanFromIdx >( 135, "deleteVlanFromIdx",
                                                               { "intfId", "vlanId" } ),
   Zel::method< &MoxVlanRangeMgr::deleteVlanFromRange >( 136, "deleteVlanFromRange",
                                                         { "intfId", "vlanId", "vidRange" } ),
};

constexpr std::array kTypes{
   Zel::valueType< ReverseStartIdVlanId >(
      Zel::valueConstructor< ReverseStartIdVlanId, std::uint16_t >( { "value" } ),
      kReverseStartIdVlanId ),
   Zel::valueType< VlanRangeXlateMapping >(
      Zel::valueConstructor< VlanRangeXlateMapping, Bridging::VlanId, Bridging::VlanId,
                             Bridging::VlanXlateMapping >( { "lowVid", "highVid", "mapping" } ),
      kVlanRangeXlateMapping ),
   Zel::entityType< VlanRangeEntry >(
      Zel::constructor< &VlanRangeEntry::VlanRangeEntryIs >( { "intfId" } ), kVlanRangeEntry ),
   Zel::entityType< VlanRangeEntryDir >(
      Zel::constructor< &VlanRangeEntryDir::VlanRangeEntryDirIs >(), kVlanRangeEntryDir ),
   Zel::entityType< VlanXlateScheduleDir >(
      Zel::constructor< &VlanXlateScheduleDir::VlanXlateScheduleDirIs >(), kVlanXlateScheduleDir ),
   Zel::entityType< MoxVlanRangeMgr >(
      Zel::constructor< &MoxVlanRangeMgr::MoxVlanRangeMgrIs >( { "vlanRangeEntryDir" } ),
      kMoxVlanRangeMgr ),
};

constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanRangeMgr", kTypes };

// What happens when the library is loaded, in this order.
const std::ios_base::Init streams;
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanRangeEntry::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
VlanRangeEntryDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
VlanXlateScheduleDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
MoxVlanRangeMgr::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace MoxVlanMapping
