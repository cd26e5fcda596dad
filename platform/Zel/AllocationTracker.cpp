// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/AllocationTracker.h"

#include <map>
#include <utility>

#include "Zel/Slab.h"

namespace Zel {
namespace {

// Slabs of one type may be several: libraries of different versions make objects of different size.
void
operator+=( AllocationCount& sum, const Slab::Count& slab ) {
   const std::int64_t live = slab.made - slab.released;
   sum.live += live;
   sum.total += slab.made;
   sum.bytes += live * static_cast< std::int64_t >( slab.cellSize );
}

}   // namespace

AllocationCount
allocationCount( std::string_view typeName ) {
   AllocationCount sum{ std::string( typeName ) };
   for ( const Slab::Count& slab : Slab::counts() ) {
      if ( slab.typeName == typeName ) {
         sum += slab;
      }
   }
   return sum;
}

std::vector< AllocationCount >
allocationCounts() {
   std::map< std::string, AllocationCount > byName;
   for ( const Slab::Count& slab : Slab::counts() ) {
      AllocationCount& sum = byName[ slab.typeName ];
      sum.typeName = slab.typeName;
      sum += slab;
   }
   std::vector< AllocationCount > counts;
   for ( auto& [ name, count ] : byName ) {
      counts.push_back( std::move( count ) );
   }
   return counts;
}

}   // namespace Zel
