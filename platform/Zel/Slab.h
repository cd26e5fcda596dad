// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Slab: memory for objects of one size, cut from growing chunks and kept in a free list.
//
// Ownership  Chunks stay with the slab for the life of the process; a released cell is the next
//            one handed out. Under a sanitizer every cell comes from operator new, so that a use
//            after release is still seen.
// Cost       O(1); a chunk is fetched when the free list is empty.
// Threads    Takes a spin lock only while the thread-safe switch is on.
// Throws     std::bad_alloc when a chunk cannot be had; nothing is changed then.
#pragma once

#include <atomic>
#include <cstddef>

#include "Zel/Export.h"

namespace Zel {

class ZEL_EXPORT Slab {
 public:
   /// `cellSize` is at least a pointer's size; `alignment` at most that of operator new.
   constexpr Slab( std::size_t cellSize, std::size_t alignment )
       : cellSize_( ( cellSize + alignment - 1 ) / alignment * alignment ) {}

   void* allocate();
   void release( void* cell ) noexcept;

 private:
   struct FreeCell {
      FreeCell* next;
   };
   class Guard;
   void addChunk();

   const std::size_t cellSize_;
   std::size_t chunkCells_ = 0;
   FreeCell* free_ = nullptr;
   std::atomic_flag busy_;
};

}   // namespace Zel
