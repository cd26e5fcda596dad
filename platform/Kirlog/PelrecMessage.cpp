// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Kirlog/PelrecMessage.h"

namespace Kirlog {

// Threads that come here at once are given the same id.
std::uint32_t
PelrecFormat::enter() {
   const std::uint32_t id = Pelrec::trace().formatIs( text_ );
   id_.store( id, std::memory_order_relaxed );
   return id;
}

}   // namespace Kirlog
