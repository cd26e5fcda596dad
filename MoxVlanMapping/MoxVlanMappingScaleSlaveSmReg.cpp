// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The type of MoxVlanMappingScaleSlaveSm, by name.
#include <array>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "Zel/TypeModule.h"

namespace MoxVlanMapping {
namespace {

constexpr std::array kTypes{
   Zel::TypeRecord{ VlanMappingScaleSlaveSm::zelTypeName, Zel::TypeKind::Entity,
                    sizeof( VlanMappingScaleSlaveSm ) },
};
constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanMappingScaleSlaveSm", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanMappingScaleSlaveSm::fwkType() const {
   return { &kModule, 0 };
}

}   // namespace MoxVlanMapping
