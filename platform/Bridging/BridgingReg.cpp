// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of this folder, by name.
#include <array>

#include "Bridging/Config.h"
#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Bridging/VlanXlateStatusDir.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Bridging {
namespace {

constexpr std::array kVlanId{
   Zel::field< &VlanId::value >( 2, "value" ),
};

constexpr std::array kVlanIdOrNone{
   Zel::field< &VlanIdOrNone::value >( 2, "value" ),
};

constexpr std::array kVlanXlateMapping{
   Zel::field< &VlanXlateMapping::rawVlanId >( 2, "vlanId" ),
   Zel::field< &VlanXlateMapping::rawInnerVlanId >( 3, "innerVlanId" ),
   Zel::field< &VlanXlateMapping::tpid >( 4, "tpid" ),
   Zel::field< &VlanXlateMapping::priority >( 5, "priority" ),
   Zel::field< &VlanXlateMapping::dropEligible >( 6, "dropEligible" ),
};

constexpr std::array kConfig{
   Zel::settableValue< &Config::bridgeName, &Config::bridgeNameIs >( 130, "bridgeName" ),
};

constexpr std::array kVlanXlateStatusDir{
   Zel::hashSet< VlanXlateStatusDir, VlanXlateStatusDir::VlanXlateStatusSet,
                 &VlanXlateStatusDir::vlanXlateStatus, &VlanXlateStatusDir::vlanXlateStatusIs,
                 &VlanXlateStatusDir::vlanXlateStatusDel >( 130, "vlanXlateStatus" ),
};

constexpr std::array kTypes{
   Zel::valueType< VlanId >( Zel::valueConstructor< VlanId, std::uint16_t >( { "value" } ),
                             kVlanId ),
   Zel::valueType< VlanIdOrNone >(
      Zel::valueConstructor< VlanIdOrNone, std::uint16_t >( { "value" } ), kVlanIdOrNone ),
   Zel::valueType< VlanXlateMapping >(
      Zel::constructor< &VlanXlateMapping::fromRaw >(
         { "vlanId", "innerVlanId", "tpid", "priority", "dropEligible" } ),
      kVlanXlateMapping ),
   Zel::entityType< Config >( Zel::constructor< &Config::ConfigIs >(), kConfig ),
   Zel::entityType< VlanXlateStatusDir >(
      Zel::constructor< &VlanXlateStatusDir::VlanXlateStatusDirIs >(), kVlanXlateStatusDir ),
};

constexpr Zel::TypeModule kModule{ "Bridging/Bridging", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
Config::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
VlanXlateStatusDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace Bridging
