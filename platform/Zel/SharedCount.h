// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SharedCount: a counter that is atomic only while the process-wide thread-safe switch is on.
//
// The switch is read once per operation. Off, an operation is a load, an add and a store; on, it
// is one atomic read-modify-write, so pointers may be copied and dropped by several threads.
#pragma once

#include <atomic>
#include <cstdint>

#include "Zel/Export.h"

namespace Zel {

namespace Detail {
ZEL_EXPORT extern std::atomic< bool > threadSafePtrSwitch;
}

/// Whether counts change atomically. Off unless the environment variable ZEL_THREAD_SAFE_PTR is
/// "1" or threadSafePtrIs( true ) was called.
inline bool
threadSafePtr() {
   return Detail::threadSafePtrSwitch.load( std::memory_order_relaxed );
}

/// To be called while one thread runs: a count that changes both ways at once may be torn.
inline void
threadSafePtrIs( bool on ) {
   Detail::threadSafePtrSwitch.store( on, std::memory_order_relaxed );
}

class SharedCount {
 public:
   explicit constexpr SharedCount( std::int32_t initial ) : count_( initial ) {}

   std::int32_t value() const { return count_.load( std::memory_order_relaxed ); }

   void add( std::int32_t n ) {
      if ( threadSafePtr() ) [[unlikely]] {
         count_.fetch_add( n, std::memory_order_relaxed );
      } else {
         count_.store( value() + n, std::memory_order_relaxed );
      }
   }

   /// Returns what is left. The thread that takes the last one sees all that others did before.
   std::int32_t subtract( std::int32_t n ) {
      if ( threadSafePtr() ) [[unlikely]] {
         return count_.fetch_sub( n, std::memory_order_acq_rel ) - n;
      }
      const std::int32_t left = value() - n;
      count_.store( left, std::memory_order_relaxed );
      return left;
   }

 private:
   std::atomic< std::int32_t > count_;
};

}   // namespace Zel
