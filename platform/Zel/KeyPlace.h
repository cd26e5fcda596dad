// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Places: the numbers by which a KeyIndex orders what it holds.
#pragma once

#include <cstdint>

namespace Zel {

using KeyPlace = std::uint16_t;

/// Stands for no place; above all of them.
inline constexpr std::uint32_t kNoKeyPlace = 0x10000;

/// A place in use and the value that stands there, until the next insertion or erasure. Null at
/// kNoKeyPlace.
template < class Value >
struct KeyAt {
   std::uint32_t place = kNoKeyPlace;
   Value* value = nullptr;
};

/// The last place in use at or below a place, and the first one above it.
template < class Value >
struct KeyAround {
   KeyAt< Value > below;
   KeyAt< Value > above;
};

}   // namespace Zel
