// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Slab.h"

#include <algorithm>
#include <memory>
#include <new>

#include "Zel/SharedCount.h"

#if defined( __SANITIZE_ADDRESS__ ) || defined( __SANITIZE_THREAD__ )
#define ZEL_SLAB_BYPASSED 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer ) || __has_feature( thread_sanitizer )
#define ZEL_SLAB_BYPASSED 1
#endif
#endif

namespace Zel {
namespace {

constexpr std::size_t kFirstChunkBytes = 512;
constexpr std::size_t kLargestChunkBytes = 64 * 1024;
constexpr std::size_t kCacheLine = 64;

#ifdef ZEL_SLAB_BYPASSED
constexpr bool kBypassed = true;
#else
constexpr bool kBypassed = false;
#endif

}   // namespace

class Slab::Guard {
 public:
   explicit Guard( std::atomic_flag& busy ) : busy_( threadSafePtr() ? &busy : nullptr ) {
      while ( busy_ && busy_->test_and_set( std::memory_order_acquire ) ) {}
   }
   ~Guard() {
      if ( busy_ ) {
         busy_->clear( std::memory_order_release );
      }
   }
   Guard( const Guard& ) = delete;
   Guard& operator=( const Guard& ) = delete;

 private:
   std::atomic_flag* const busy_;
};

void
Slab::addChunk() {
   const std::size_t least = std::max< std::size_t >( 1, kFirstChunkBytes / cellSize_ );
   const std::size_t most = std::max< std::size_t >( 1, kLargestChunkBytes / cellSize_ );
   const std::size_t cells = std::clamp( chunkCells_ * 2, least, most );
   // From the start of a cache line: no cell of 32 or 64 bytes stands on two of them.
   const std::size_t bytes = cells * cellSize_;
   std::size_t room = bytes + kCacheLine;
   void* start = ::operator new( room );
   auto* const chunk = static_cast< std::byte* >( std::align( kCacheLine, bytes, start, room ) );
   chunkCells_ = cells;
   // Threaded from the back, so that cells are handed out in the order of their addresses.
   for ( std::size_t i = cells; i-- > 0; ) {
      free_ = new ( chunk + i * cellSize_ ) FreeCell{ free_ };
   }
}

void*
Slab::allocate() {
   if ( kBypassed ) {
      return ::operator new( cellSize_ );
   }
   const Guard guard( busy_ );
   if ( !free_ ) {
      addChunk();
   }
   FreeCell* cell = free_;
   free_ = cell->next;
   return cell;
}

void
Slab::release( void* cell ) noexcept {
   if ( kBypassed ) {
      ::operator delete( cell );
      return;
   }
   const Guard guard( busy_ );
   free_ = new ( cell ) FreeCell{ free_ };
}

}   // namespace Zel
