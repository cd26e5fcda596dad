// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// AllocationTracker: how many objects of each counted type live, by type name.
//
// Adds up what the types' slabs count (Zel/Slab.h). Counts outlive the library that a type came with; when
// it is loaded again they go on.
//
// Cost     O(types times threads).
// Threads  Any, at any time. What the calling thread did, and what threads did that have ended or
//          were waited for, counts exactly; of the others it is what they have just come to.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Export.h"

namespace Zel {

struct AllocationCount {
   std::string typeName;
   std::int64_t live = 0;    ///< objects that exist now
   std::int64_t total = 0;   ///< objects ever made
   std::int64_t bytes = 0;   ///< bytes of the objects that exist now
};

/// Counts of one type; all zero for a name that was never allocated.
ZEL_EXPORT AllocationCount allocationCount( std::string_view typeName );

/// Counts of every type that was ever allocated, by name.
ZEL_EXPORT std::vector< AllocationCount > allocationCounts();

}   // namespace Zel
