// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of this folder, by name.
#include <array>

#include "Corvel/IntfId.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Corvel {
namespace {

constexpr std::array kIntfId{
   Zel::field< &IntfId::value >( 2, "value" ),
};

constexpr std::array kTypes{
   Zel::valueType< IntfId >( Zel::valueConstructor< IntfId, std::uint64_t >( { "value" } ),
                             kIntfId ),
};

constexpr Zel::TypeModule kModule{ "Corvel/Corvel", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

}   // namespace Corvel
