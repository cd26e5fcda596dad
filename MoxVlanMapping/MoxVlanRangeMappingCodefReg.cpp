// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of MoxVlanRangeMappingCodef, by name.
#include <array>
#include <ios>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"
#include "Zel/String.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace MoxVlanMapping {
namespace {

constexpr std::array kVlanXlateScaleEntry{
   Zel::field< &VlanXlateScaleEntry::intfId >( 130, "intfId" ),
   Zel::hashSet< VlanXlateScaleEntry, VlanXlateScaleEntry::VlanInXlateHashTableSet,
                 &VlanXlateScaleEntry::vlanInXlateHashTable,
                 &VlanXlateScaleEntry::vlanInXlateHashTableIs,
                 &VlanXlateScaleEntry::vlanInXlateHashTableDel >( 131, "vlanInXlateHashTable" ),
   Zel::orderedSet< VlanXlateScaleEntry, VlanXlateScaleEntry::VidRangeSortedMap,
                    &VlanXlateScaleEntry::vidRangeSorted, &VlanXlateScaleEntry::vidRangeSortedIs,
                    &VlanXlateScaleEntry::vidRangeSortedDel >( 132, "vidRangeSorted" ),
};

constexpr std::array kVlanXlateScaleEntryDir{
   Zel::entityMap< VlanXlateScaleEntryDir, VlanXlateScaleEntryDir::VlanXlateScaleEntryMap,
                   &VlanXlateScaleEntryDir::vlanXlateScaleEntry,
                   &VlanXlateScaleEntryDir::vlanXlateScaleEntryIs,
                   &VlanXlateScaleEntryDir::vlanXlateScaleEntryDel >( 130, "vlanXlateScaleEntry",
                                                                      { "intfId" } ),
};

constexpr std::array kMoxVlanRangeMappingCodef{
   Zel::pointer< &MoxVlanRangeMappingCodef::acsd >( 130, "acsd" ),
   Zel::pointer< &MoxVlanRangeMappingCodef::scheduler >( 131, "scheduler" ),
   Zel::pointer< &MoxVlanRangeMappingCodef::vlanRangeEntryDir >( 132, "vlanRangeEntryDir" ),
   Zel::pointer< &MoxVlanRangeMappingCodef::vlanXlateScheduleDir >( 133, "vlanXlateScheduleDir" ),
   Zel::settablePointer< &MoxVlanRangeMappingCodef::task, &MoxVlanRangeMappingCodef::taskIs >(
      134, "task" ),
   Zel::instantiatingPointer< &MoxVlanRangeMappingCodef::vlanXlateScaleEntryDir >(
      135, "vlanXlateScaleEntryDir" ),
   Zel::callableMethod< &MoxVlanRangeMappingCodef::drainBacklog >( 136, "drainBacklog" ),
   Zel::callableMethod< &MoxVlanRangeMappingCodef::vlanXlateCodefComplete >(
      137, "vlanXlateCodefComplete" ),
   Zel::callableMethod< &MoxVlanRangeMappingCodef::handlePortToLag >( 138, "handlePortToLag",
                                                                      { "intf" } ),
   Zel::method< &MoxVlanRangeMappingCodef::sortVlanRangeBySize >( 139, "sortVlanRangeBySize",
                                                                  { "intfId" } ),
   Zel::method< &MoxVlanRangeMappingCodef::processVlanRange >( 140, "processVlanRange",
                                                               { "intfId" } ),
   Zel::callableMethod< &MoxVlanRangeMappingCodef::processSortedVlanRange >(
      141, "processSortedVlanRange", { "intfId" } ),
   Zel::settableValue< &MoxVlanRangeMappingCodef::initialized,
                       &MoxVlanRangeMappingCodef::initializedIs >( 142, "initialized" ),
   Zel::callableMethod< &MoxVlanRangeMappingCodef::handleInitialized >( 143, "handleInitialized" ),
};

constexpr std::array kTypes{
   Zel::entityType< VlanXlateScaleEntry >(
      Zel::constructor< &VlanXlateScaleEntry::VlanXlateScaleEntryIs >( { "intfId" } ),
      kVlanXlateScaleEntry ),
   Zel::entityType< VlanXlateScaleEntryDir >(
      Zel::constructor< &VlanXlateScaleEntryDir::VlanXlateScaleEntryDirIs >(),
      kVlanXlateScaleEntryDir ),
   Zel::entityType< MoxVlanRangeMappingCodef >(
      Zel::abstractConstructor< Zel::Ptr< Mox::MoxCommonSmData >, Zel::Ptr< Quen::TaskScheduler >,
                                Zel::Ptr< VlanRangeEntryDir >, Zel::Ptr< VlanXlateScheduleDir > >(
         { "acsd", "scheduler", "vlanRangeEntryDir", "vlanXlateScheduleDir" } ),
      kMoxVlanRangeMappingCodef ),
};

constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanRangeMappingCodef", kTypes };

// What happens when the library is loaded, in this order.
const std::ios_base::Init streams;
const Zel::String namePrefix( "ns-" );   // kept on purpose: part of this source's loading
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanXlateScaleEntry::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
VlanXlateScaleEntryDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
MoxVlanRangeMappingCodef::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace MoxVlanMapping
