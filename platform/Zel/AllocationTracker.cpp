// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/AllocationTracker.h"

#include <map>
#include <mutex>

namespace Zel {
namespace {

std::mutex registryLock;
AllocationRecord* firstRecord = nullptr;

void
operator+=( AllocationCount& sum, const AllocationCount& more ) {
   sum.live += more.live;
   sum.total += more.total;
   sum.bytes += more.bytes;
}

}   // namespace

void
AllocationRecord::registerOnce() {
   const std::lock_guard guard( registryLock );
   if ( !registered_.load( std::memory_order_relaxed ) ) {
      next_ = firstRecord;
      firstRecord = this;
      registered_.store( true, std::memory_order_release );
   }
}

AllocationCount
AllocationRecord::count() const {
   const std::int64_t live = live_.value();
   return { typeName_, live, total_.value(), live * objectSize_ };
}

AllocationCount
allocationCount( std::string_view typeName ) {
   const std::lock_guard guard( registryLock );
   AllocationCount sum{ std::string( typeName ) };
   for ( const AllocationRecord* record = firstRecord; record; record = record->next_ ) {
      if ( record->typeName_ == typeName ) {
         sum += record->count();
      }
   }
   return sum;
}

std::vector< AllocationCount >
allocationCounts() {
   const std::lock_guard guard( registryLock );
   std::map< std::string, AllocationCount > byName;
   for ( const AllocationRecord* record = firstRecord; record; record = record->next_ ) {
      AllocationCount& sum = byName[ record->typeName_ ];
      sum.typeName = record->typeName_;
      sum += record->count();
   }
   std::vector< AllocationCount > counts;
   for ( auto& [ name, count ] : byName ) {
      counts.push_back( std::move( count ) );
   }
   return counts;
}

}   // namespace Zel
