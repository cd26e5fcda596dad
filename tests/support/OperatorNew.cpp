// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "tests/support/OperatorNew.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>
#include <utility>

namespace TestSupport {
namespace {

// Counted in every thread. The hook is not guarded: while one is set, no other thread may run.
std::atomic< std::uint64_t > requests = 0;
std::atomic< std::int64_t > blocks = 0;
std::function< void() > hook;
bool inHook = false;

class InHook {
 public:
   InHook() { inHook = true; }
   ~InHook() { inHook = false; }
};

void*
requested( std::size_t size ) {
   requests.fetch_add( 1, std::memory_order_relaxed );
   if ( hook && !inHook ) {
      const InHook guard;
      hook();
   }
   if ( void* memory = std::malloc( size == 0 ? 1 : size ) ) {
      blocks.fetch_add( 1, std::memory_order_relaxed );
      return memory;
   }
   throw std::bad_alloc();
}

void
released( void* memory ) noexcept {
   if ( memory ) {
      blocks.fetch_sub( 1, std::memory_order_relaxed );
   }
   std::free( memory );
}

}   // namespace

std::uint64_t
newRequests() {
   return requests;
}

std::int64_t
newBlocks() {
   return blocks;
}

OperatorNewHook::OperatorNewHook( std::function< void() > request ) {
   hook = std::move( request );
}

OperatorNewHook::~OperatorNewHook() {
   hook = nullptr;
}

}   // namespace TestSupport

void*
operator new( std::size_t size ) {
   return TestSupport::requested( size );
}

void*
operator new[]( std::size_t size ) {
   return TestSupport::requested( size );
}

// Where a sanitizer brings its own of these, they do not end in the ones above.
void*
operator new( std::size_t size, const std::nothrow_t& ) noexcept {
   try {
      return TestSupport::requested( size );
   } catch ( const std::bad_alloc& ) {
      return nullptr;
   }
}

void*
operator new[]( std::size_t size, const std::nothrow_t& ) noexcept {
   return operator new( size, std::nothrow );
}

void
operator delete( void* memory ) noexcept {
   TestSupport::released( memory );
}

void
operator delete[]( void* memory ) noexcept {
   TestSupport::released( memory );
}

void
operator delete( void* memory, std::size_t ) noexcept {
   TestSupport::released( memory );
}

void
operator delete[]( void* memory, std::size_t ) noexcept {
   TestSupport::released( memory );
}
