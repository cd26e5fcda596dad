// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of MoxVlanRangeMappingCodef, by name.
#include <array>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"
#include "Zel/TypeModule.h"

namespace MoxVlanMapping {
namespace {

using Zel::TypeKind;

constexpr std::array kTypes{
   Zel::TypeRecord{ VlanXlateScaleEntry::zelTypeName, TypeKind::Entity,
                    sizeof( VlanXlateScaleEntry ) },
   Zel::TypeRecord{ VlanXlateScaleEntryDir::zelTypeName, TypeKind::Entity,
                    sizeof( VlanXlateScaleEntryDir ) },
   Zel::TypeRecord{ MoxVlanRangeMappingCodef::zelTypeName, TypeKind::Entity,
                    sizeof( MoxVlanRangeMappingCodef ) },
};
constexpr Zel::TypeModule kModule{ "MoxVlanMapping/MoxVlanRangeMappingCodef", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
VlanXlateScaleEntry::fwkType() const {
   return { &kModule, 0 };
}

Zel::TypeHandle
VlanXlateScaleEntryDir::fwkType() const {
   return { &kModule, 1 };
}

Zel::TypeHandle
MoxVlanRangeMappingCodef::fwkType() const {
   return { &kModule, 2 };
}

}   // namespace MoxVlanMapping
