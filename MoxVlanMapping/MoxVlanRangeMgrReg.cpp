// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of MoxVlanRangeMgr, by name.
#include <array>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/TypeModule.h"

namespace MoxVlanMapping {
namespace {

using Zel::TypeKind;

constexpr std::array kTypes{
   Zel::TypeRecord{ "MoxVlanMapping::ReverseStartIdVlanId", TypeKind::Value,
                    sizeof( ReverseStartIdVlanId ) },
   Zel::TypeRecord{ "MoxVlanMapping::VlanRangeXlateMapping", TypeKind::Value,
                    sizeof( VlanRangeXlateMapping ) },
   Zel::TypeRecord{ VlanRangeEntry::zelTypeName, TypeKind::Entity, sizeof( VlanRangeEntry ) },
   Zel::TypeRecord{ VlanRangeEntryDir::zelTypeName, TypeKind::Entity, sizeof( VlanRangeEntryDir ) },
   Zel::TypeRecord{ VlanXlateScheduleDir::zelTypeName, TypeKind::Entity,
                    sizeof( VlanXlateScheduleDir ) },
   Zel::TypeRecord{ MoxVlanRangeMgr::zelTypeName, TypeKind::Entity, sizeof( MoxVlanRangeMgr ) },
};
constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanRangeMgr", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanRangeEntry::fwkType() const {
   return { &kModule, 2 };
}

Zel::TypeHandle
VlanRangeEntryDir::fwkType() const {
   return { &kModule, 3 };
}

Zel::TypeHandle
VlanXlateScheduleDir::fwkType() const {
   return { &kModule, 4 };
}

Zel::TypeHandle
MoxVlanRangeMgr::fwkType() const {
   return { &kModule, 5 };
}

}   // namespace MoxVlanMapping
