// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Slab: memory for the objects of one type, and the count of them.
//
// A Slab is no more than a key: cells and counts stand in a record of the platform's that goes by
// the type's name and size. Slabs of two libraries with the same key share it, and a library that
// was unloaded finds its own again.
//
// Cells      Cut from growing chunks, which stay with the process; a released cell is the next one
//            that its thread is handed, unless it is passed on (below). Under the address sanitizer
//            every cell comes from operator new, so that a use after release is still seen.
// Cost       O(1) without a lock; a lock when a thread's free list is empty, and then a chunk when
//            no thread has left cells behind.
// Threads    Any. Each has a free list and counts of its own. A cell goes to the list of the thread
//            that releases it; a thread that goes on releasing what others allocate passes cells
//            on, and one that ends leaves all of them to the others.
// Throws     std::bad_alloc from allocate() alone; nothing is changed then.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "Zel/Export.h"

namespace Zel {

class ZEL_EXPORT Slab {
 public:
   /// `cellSize` is at least a pointer's size and a multiple of the type's alignment, which is at
   /// most that of operator new.
   constexpr Slab( const char* typeName, std::size_t cellSize )
       : typeName_( typeName ), cellSize_( cellSize ) {}
   Slab( const Slab& ) = delete;
   Slab& operator=( const Slab& ) = delete;

   void* allocate();
   void release( void* cell ) noexcept;
   /// Releases a cell whose object's constructor threw: it counts as never made.
   void abandon( void* cell ) noexcept;

   struct Count {
      std::string typeName;
      std::size_t cellSize;
      std::int64_t made;
      std::int64_t released;   ///< at most `made`, also while threads go on
   };
   /// What all slabs have counted, by name and size. O(slabs times threads), under the lock.
   static std::vector< Count > counts();

 private:
   static constexpr std::uint32_t kNoRecord = std::numeric_limits< std::uint32_t >::max();

   std::uint32_t recordIndex();
   void* allocateLocked();
   void releaseLocked( void* cell ) noexcept;
   void passOn() noexcept;

   const char* const typeName_;
   const std::size_t cellSize_;
   std::atomic< std::uint32_t > record_{ kNoRecord };
};

}   // namespace Zel
