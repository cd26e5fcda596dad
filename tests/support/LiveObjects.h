// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// LiveObjects: what is alive of the counted types, to be compared before and after.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "Zel/AllocationTracker.h"

namespace TestSupport {

/// Live objects by type name; types without any are left out.
inline std::map< std::string, std::int64_t >
liveObjects() {
   std::map< std::string, std::int64_t > live;
   for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
      if ( count.live != 0 ) {
         live[ count.typeName ] = count.live;
      }
   }
   return live;
}

}   // namespace TestSupport
