// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of this folder, by name.
#include <array>

#include "Mox/MoxCommonSmData.h"
#include "Mox/MoxVlanMapping.h"
#include "Mox/PortVlanKey.h"
#include "Mox/VlanMappingSlaveSm.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Mox {
namespace {

constexpr std::array kPortVlanKey{
   Zel::field< &PortVlanKey::intfId >( 2, "intfId" ),
   Zel::field< &PortVlanKey::vlanId >( 3, "vlanId" ),
   Zel::field< &PortVlanKey::innerVlanId >( 4, "innerVlanId" ),
};

constexpr std::array kMoxVlanMappingRecord{
   Zel::field< &MoxVlanMappingRecord::key >( 2, "key" ),
   Zel::field< &MoxVlanMappingRecord::mapping >( 3, "mapping" ),
   Zel::field< &MoxVlanMappingRecord::inLag >( 4, "inLag" ),
   Zel::field< &MoxVlanMappingRecord::xlateUntagged >( 5, "xlateUntagged" ),
   Zel::field< &MoxVlanMappingRecord::origin >( 6, "origin" ),
};

constexpr std::array kMoxVlanMappingConfigDir{
   Zel::hashMap< MoxVlanMappingConfigDir, MoxVlanMappingConfigDir::ConfigMap,
                 &MoxVlanMappingConfigDir::config, &MoxVlanMappingConfigDir::configIs,
                 &MoxVlanMappingConfigDir::configDel >( MoxVlanMappingConfigDir::kAttrConfig,
                                                        "config" ),
};

constexpr std::array kMoxVlanMappingStatusDir{
   Zel::hashMap< MoxVlanMappingStatusDir, MoxVlanMappingStatusDir::StatusMap,
                 &MoxVlanMappingStatusDir::status, &MoxVlanMappingStatusDir::statusIs,
                 &MoxVlanMappingStatusDir::statusDel >( MoxVlanMappingStatusDir::kAttrStatus,
                                                        "status" ),
};

constexpr std::array kMoxCommonSmData{
   Zel::pointer< &MoxCommonSmData::ingressConfigDir >( 130, "ingressConfigDir" ),
   Zel::pointer< &MoxCommonSmData::egressConfigDir >( 131, "egressConfigDir" ),
   Zel::pointer< &MoxCommonSmData::statusDir >( 132, "statusDir" ),
   Zel::hashMap< MoxCommonSmData, MoxCommonSmData::PortToLagMap, &MoxCommonSmData::portToLag,
                 &MoxCommonSmData::portToLagIs, &MoxCommonSmData::portToLagDel >(
      MoxCommonSmData::kAttrPortToLag, "portToLag" ),
};

constexpr std::array kVlanMappingSlaveSm{
   Zel::pointer< &VlanMappingSlaveSm::acsd >( 130, "acsd" ),
   Zel::pointer< &VlanMappingSlaveSm::clock >( 131, "clock" ),
   Zel::pointer< &VlanMappingSlaveSm::bridgingConfig >( 132, "bridgingConfig" ),
   Zel::pointer< &VlanMappingSlaveSm::vlanXlateStatusDir >( 133, "vlanXlateStatusDir" ),
   Zel::pointer< &VlanMappingSlaveSm::ingressConfigDir >( 134, "ingressConfigDir" ),
   Zel::pointer< &VlanMappingSlaveSm::egressConfigDir >( 135, "egressConfigDir" ),
   Zel::pointer< &VlanMappingSlaveSm::statusDir >( 136, "statusDir" ),
   Zel::callableMethod< &VlanMappingSlaveSm::handleInitialized >( 137, "handleInitialized" ),
   Zel::method< &VlanMappingSlaveSm::doAddIngressVlanMapping >( 138, "doAddIngressVlanMapping",
                                                                { "pvKey" } ),
   Zel::method< &VlanMappingSlaveSm::doDelIngressVlanMapping >( 139, "doDelIngressVlanMapping",
                                                                { "pvKey" } ),
   Zel::method< &VlanMappingSlaveSm::doAddEgressVlanMapping >( 140, "doAddEgressVlanMapping",
                                                               { "pvKey" } ),
   Zel::method< &VlanMappingSlaveSm::doDelEgressVlanMapping >( 141, "doDelEgressVlanMapping",
                                                               { "pvKey" } ),
   Zel::field< &VlanMappingSlaveSm::undelivered >( 142, "undelivered" ),
};

template < class Record >
constexpr Zel::ConstructorRecord
recordConstructor() {
   return Zel::valueConstructor< Record, PortVlanKey, Bridging::VlanXlateMapping, bool, bool,
                                 std::uint8_t >(
      { "key", "mapping", "inLag", "xlateUntagged", "origin" } );
}

constexpr std::array kTypes{
   Zel::valueType< PortVlanKey >(
      Zel::valueConstructor< PortVlanKey, Corvel::IntfId, Bridging::VlanId, std::uint16_t >(
         { "intfId", "vlanId", "innerVlanId" } ),
      kPortVlanKey ),
   Zel::valueType< MoxVlanMappingRecord >( recordConstructor< MoxVlanMappingRecord >(),
                                           kMoxVlanMappingRecord ),
   Zel::valueType< MoxVlanMappingConfig, MoxVlanMappingRecord >(
      recordConstructor< MoxVlanMappingConfig >() ),
   Zel::valueType< MoxVlanMappingStatus, MoxVlanMappingRecord >(
      recordConstructor< MoxVlanMappingStatus >() ),
   Zel::entityType< MoxVlanMappingConfigDir >(
      Zel::constructor< &MoxVlanMappingConfigDir::MoxVlanMappingConfigDirIs >(),
      kMoxVlanMappingConfigDir ),
   Zel::entityType< MoxVlanMappingStatusDir >(
      Zel::constructor< &MoxVlanMappingStatusDir::MoxVlanMappingStatusDirIs >(),
      kMoxVlanMappingStatusDir ),
   Zel::entityType< MoxCommonSmData >( Zel::constructor< &MoxCommonSmData::MoxCommonSmDataIs >(),
                                       kMoxCommonSmData ),
   Zel::entityType< VlanMappingSlaveSm >(
      Zel::abstractConstructor< Zel::Ptr< MoxCommonSmData >, Zel::Ptr< const Zel::Clock >,
                                Zel::Ptr< const Bridging::Config >,
                                Zel::Ptr< Bridging::VlanXlateStatusDir > >(
         { "acsd", "clock", "bridgingConfig", "vlanXlateStatusDir" } ),
      kVlanMappingSlaveSm ),
};

constexpr Zel::TypeModule kModule{ "Mox/Mox", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
MoxVlanMappingConfigDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
MoxVlanMappingStatusDir::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
MoxCommonSmData::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
VlanMappingSlaveSm::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace Mox
