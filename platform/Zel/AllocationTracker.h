// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// AllocationTracker: how many objects of each counted type live, by type name.
//
// Each type's allocations are counted in a record of its own, found by nobody but newEntity();
// the tracker answers for a name by adding up the records that carry it (two libraries may each
// have one for the same type).
//
// Cost     Two additions per allocation, one subtraction per release.
// Threads  Counts are atomic under the thread-safe switch; records register under a lock.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Export.h"
#include "Zel/SharedCount.h"

namespace Zel {

struct AllocationCount {
   std::string typeName;
   std::int64_t live = 0;    ///< objects that exist now
   std::int64_t total = 0;   ///< objects ever made
   std::int64_t bytes = 0;   ///< bytes of the objects that exist now
};

class ZEL_EXPORT AllocationRecord {
 public:
   constexpr AllocationRecord( const char* typeName, std::size_t objectSize )
       : typeName_( typeName ), objectSize_( static_cast< std::int64_t >( objectSize ) ) {}

   /// Memory for one object was taken.
   void allocated() {
      if ( !registered_.load( std::memory_order_acquire ) ) [[unlikely]] {
         registerOnce();
      }
      live_.add( 1 );
   }
   /// Its constructor came to its end.
   void constructed() { total_.add( 1 ); }
   /// The memory was given back, after destruction or because the constructor threw.
   void released() { live_.subtract( 1 ); }

   AllocationCount count() const;

 private:
   friend AllocationCount allocationCount( std::string_view );
   friend std::vector< AllocationCount > allocationCounts();
   void registerOnce();

   const char* const typeName_;
   const std::int64_t objectSize_;
   SharedCount< std::int64_t > live_{ 0 };
   SharedCount< std::int64_t > total_{ 0 };
   std::atomic< bool > registered_{ false };
   AllocationRecord* next_ = nullptr;
};

/// Counts of one type; all zero for a name that was never allocated.
ZEL_EXPORT AllocationCount allocationCount( std::string_view typeName );

/// Counts of every type that was ever allocated, by name.
ZEL_EXPORT std::vector< AllocationCount > allocationCounts();

}   // namespace Zel
