// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of MoxVlanMappingScaleSlaveSm, by name.
#include <array>
#include <ios>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "Zel/String.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace MoxVlanMapping {
namespace {

constexpr std::array kVlanMappingScaleSlaveSm{
   Zel::pointer< &VlanMappingScaleSlaveSm::vlanRangeEntryDir >( 386, "vlanRangeEntryDir" ),
   Zel::pointer< &VlanMappingScaleSlaveSm::vlanXlateScheduleDir >( 387, "vlanXlateScheduleDir" ),
   Zel::instantiatingPointer< &VlanMappingScaleSlaveSm::vlanRangeMgr,
                              &VlanMappingScaleSlaveSm::vlanRangeMgrIs,
                              &VlanMappingScaleSlaveSm::vlanRangeMgrDel >(
      388, "vlanRangeMgr", { "vlanRangeEntryDir" } ),
};

constexpr std::array kTypes{
   Zel::entityType< VlanMappingScaleSlaveSm, Mox::VlanMappingSlaveSm >(
      Zel::constructor< &VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSmIs >(
         { "acsd", "clock", "bridgingConfig", "vlanXlateStatusDir", "vlanRangeEntryDir",
           "vlanXlateScheduleDir" } ),
      kVlanMappingScaleSlaveSm ),
};

constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanMappingScaleSlaveSm", kTypes };

// What happens when the library is loaded, in this order.
const std::ios_base::Init streams;
const Zel::String namePrefix( "ns-" );   // kept on purpose: part of this source's loading
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanMappingScaleSlaveSm::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace MoxVlanMapping
