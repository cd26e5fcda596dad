// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The framework's own types, and those of the language, by name.
#include <array>

#include "Zel/Clock.h"
#include "Zel/PtrInterface.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Zel {
namespace {

constexpr std::array kClock{
   field< &Clock::now >( 130, "now" ),
};

constexpr std::array kManualClock{
   callableMethod< &ManualClock::advance >( 386, "advance", { "span" } ),
};

constexpr std::array kTypes{
   valueType< bool >(),
   valueType< std::uint8_t >(),
   valueType< std::uint16_t >(),
   valueType< std::uint32_t >(),
   valueType< std::uint64_t >(),
   valueType< double >(),
   valueType< String >(),
   entityType< PtrInterface, void >(),
   entityType< Clock >( {}, kClock ),
   entityType< SteadyClock, Clock >( constructor< &SteadyClock::SteadyClockIs >() ),
   entityType< ManualClock, Clock >( constructor< &ManualClock::ManualClockIs >(), kManualClock ),
};

constexpr TypeModule kModule{ "Zel/Zel", kTypes };
const ModuleRegistration registration( kModule );

}   // namespace

TypeHandle
Clock::fwkType() const {
   return typeIn( kModule, zelTypeName );
}

TypeHandle
SteadyClock::fwkType() const {
   return typeIn( kModule, zelTypeName );
}

TypeHandle
ManualClock::fwkType() const {
   return typeIn( kModule, zelTypeName );
}

}   // namespace Zel
