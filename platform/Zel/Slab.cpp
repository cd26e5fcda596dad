// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Slab.h"

#include <algorithm>
#include <list>
#include <memory>
#include <mutex>
#include <new>
#include <span>
#include <utility>

#if defined( __SANITIZE_ADDRESS__ )
#define ZEL_SLAB_BYPASSED 1
#elif defined( __has_feature )
#if __has_feature( address_sanitizer )
#define ZEL_SLAB_BYPASSED 1
#endif
#endif

namespace Zel {
namespace {

constexpr std::size_t kFirstChunkBytes = 512;
constexpr std::size_t kLargestChunkBytes = 64 * 1024;
constexpr std::size_t kCacheLine = 64;
constexpr std::int64_t kPassedOnAtOnce = 256;

#ifdef ZEL_SLAB_BYPASSED
constexpr bool kBypassed = true;
#else
constexpr bool kBypassed = false;
#endif

struct FreeCell {
   FreeCell* next;
};

// A count that one thread changes and any may read: no read-modify-write.
class Counter {
 public:
   Counter() = default;
   Counter( const Counter& other ) : count_( other.value() ) {}

   std::int64_t value() const { return count_.load( std::memory_order_acquire ); }
   std::int64_t add( std::int64_t n ) {
      const std::int64_t sum = count_.load( std::memory_order_relaxed ) + n;
      count_.store( sum, std::memory_order_release );
      return sum;
   }
   void handTo( Counter& other ) {
      other.add( value() );
      add( -value() );
   }

 private:
   std::atomic< std::int64_t > count_{ 0 };
};

// What one thread has of a record, or what is nobody's.
struct Share {
   FreeCell* free = nullptr;
   Counter made;
   Counter released;
   std::uint32_t chunkCells = 0;   // of the latest chunk
   std::uint32_t timesPassedOn = 0;

   // Requires: there is a free cell.
   void* take() {
      made.add( 1 );
      return std::exchange( free, free->next );
   }
   void put( void* cell ) {
      if ( kBypassed ) {
         ::operator delete( cell );
      } else {
         free = new ( cell ) FreeCell{ free };
      }
   }
   // Puts the cells from `first` to `last` in front.
   void put( FreeCell* first, FreeCell* last ) { last->next = std::exchange( free, first ); }
   // Some of another's free cells, not all: other threads find the rest. Requires: none are free here.
   void takeSome( Share& other );
   // Makes sure of a free cell.
   void addChunk( std::size_t cellSize );
};

void
Share::takeSome( Share& other ) {
   FreeCell* last = other.free;
   for ( std::int64_t i = 1; i < kPassedOnAtOnce && last && last->next; ++i ) {
      last = last->next;
   }
   if ( last ) {
      free = std::exchange( other.free, last->next );
      last->next = nullptr;
   }
}

void
Share::addChunk( std::size_t cellSize ) {
   if ( kBypassed ) {
      free = new ( ::operator new( cellSize ) ) FreeCell{ nullptr };
      return;
   }
   const std::size_t least = std::max< std::size_t >( 1, kFirstChunkBytes / cellSize );
   const std::size_t most = std::max< std::size_t >( 1, kLargestChunkBytes / cellSize );
   const std::size_t cells = std::clamp( std::size_t{ chunkCells } * 2, least, most );
   // From the start of a cache line: no cell of 32 or 64 bytes stands on two of them.
   const std::size_t bytes = cells * cellSize;
   std::size_t room = bytes + kCacheLine;
   void* start = ::operator new( room );
   auto* const chunk = static_cast< std::byte* >( std::align( kCacheLine, bytes, start, room ) );
   chunkCells = static_cast< std::uint32_t >( cells );
   // Threaded from the back, so that cells are handed out in the order of their addresses.
   for ( std::size_t i = cells; i-- > 0; ) {
      put( chunk + i * cellSize );
   }
}

struct Record {
   std::string typeName;
   std::size_t cellSize;
   Share nobodys;   // left by threads that ended, passed on by those that have too many
};

using Table = std::vector< Share >;   // by record

// Never destroyed, for objects are released by destructors that run while the process ends.
struct Process {
   std::mutex lock;   // of all that stands here, but not of what a thread does in its own table
   std::vector< Record > records;
   std::list< Table >
      tables;   // of the threads; not in their own memory, which a fork may give away
};

Process&
process() {
   static auto* all = new Process;
   return *all;
}

// The thread's table; none before its first allocation and behind its end. Trivial and at a fixed place
// in the thread's memory, so that it costs a load and no call.
[[gnu::tls_model( "initial-exec" )]] constinit thread_local std::span< Share > shares;
constinit thread_local bool threadEnded = false;

// Keeps the table of its thread among the others while the thread runs.
class TableOfThread {
 public:
   TableOfThread() {
      const std::lock_guard guard( process().lock );
      table_ = process().tables.emplace( process().tables.end() );
   }
   ~TableOfThread();
   TableOfThread( const TableOfThread& ) = delete;
   TableOfThread& operator=( const TableOfThread& ) = delete;

   // Under the lock.
   void coverAllRecords() {
      table_->resize( process().records.size() );
      shares = *table_;
   }

 private:
   std::list< Table >::iterator table_;
};

TableOfThread::~TableOfThread() {
   threadEnded = true;
   shares = {};
   for ( std::size_t record = 0; record < table_->size(); ++record ) {
      Share& mine = ( *table_ )[ record ];
      FreeCell* last = mine.free;
      while ( last && last->next ) {   // without the lock, for there may be many
         last = last->next;
      }
      const std::lock_guard guard( process().lock );
      Share& nobodys = process().records[ record ].nobodys;
      if ( last ) {
         nobodys.put( mine.free, last );
      }
      mine.made.handTo( nobodys.made );
      mine.released.handTo( nobodys.released );
   }
   const std::lock_guard guard( process().lock );
   process().tables.erase( table_ );
}

// Made at the thread's first call, which must not come under the lock: the loader takes a lock of its own
// then, under which a library that is loaded or unloaded may allocate.
TableOfThread&
tableOfThread() {
   thread_local TableOfThread table;
   return table;
}

bool
sharesNothing() {
   return kBypassed || threadEnded;
}

// The calling thread's share of a record, or nobody's when it has none any more. Under the lock.
Share&
shareOf( std::uint32_t record ) {
   if ( sharesNothing() ) {
      return process().records[ record ].nobodys;
   }
   if ( record >= shares.size() ) {
      tableOfThread().coverAllRecords();
   }
   return shares[ record ];
}

}   // namespace

// The slab's record, made for its first allocation. Under the lock.
std::uint32_t
Slab::recordIndex() {
   std::uint32_t index = record_.load( std::memory_order_relaxed );
   if ( index == kNoRecord ) {
      auto& records = process().records;
      const auto known = std::ranges::find_if( records, [ this ]( const Record& record ) {
         return record.cellSize == cellSize_ && record.typeName == typeName_;
      } );
      index = static_cast< std::uint32_t >( known - records.begin() );
      if ( known == records.end() ) {
         records.push_back( { typeName_, cellSize_, {} } );
      }
      record_.store( index, std::memory_order_relaxed );
   }
   return index;
}

void*
Slab::allocate() {
   const std::uint32_t record = record_.load( std::memory_order_relaxed );
   if ( record < shares.size() && shares[ record ].free ) [[likely]] {
      return shares[ record ].take();
   }
   return allocateLocked();
}

void*
Slab::allocateLocked() {
   if ( !sharesNothing() ) {
      tableOfThread();
   }
   const std::lock_guard guard( process().lock );
   const std::uint32_t record = recordIndex();
   Share& mine = shareOf( record );
   if ( !mine.free ) {
      mine.takeSome( process().records[ record ].nobodys );
   }
   if ( !mine.free ) {
      mine.addChunk( cellSize_ );
   }
   return mine.take();
}

void
Slab::release( void* cell ) noexcept {
   const std::uint32_t record = record_.load( std::memory_order_relaxed );
   if ( record < shares.size() ) [[likely]] {
      Share& mine = shares[ record ];
      mine.put( cell );
      if ( mine.released.add( 1 ) % kPassedOnAtOnce == 0 ) [[unlikely]] {
         passOn();
      }
      return;
   }
   releaseLocked( cell );
}

// A thread that releases more than it allocates would keep cells that others fetch anew, for ever.
// Out of line: release() saves no registers for it.
[[gnu::noinline]] void
Slab::passOn() noexcept {
   const std::uint32_t record = record_.load( std::memory_order_relaxed );
   Share& mine = shares[ record ];
   const std::int64_t surplus =
      mine.released.value() - mine.made.value() - mine.timesPassedOn * kPassedOnAtOnce;
   if ( surplus < kPassedOnAtOnce ) {
      return;
   }
   FreeCell* const first = mine.free;
   FreeCell* last = first;
   for ( std::int64_t i = 1; i < kPassedOnAtOnce; ++i ) {
      last = last->next;
   }
   mine.free = last->next;
   ++mine.timesPassedOn;
   const std::lock_guard guard( process().lock );
   process().records[ record ].nobodys.put( first, last );
}

// By a thread that has no share, and is given none, for that may take memory.
void
Slab::releaseLocked( void* cell ) noexcept {
   const std::lock_guard guard( process().lock );
   Share& nobodys = process().records[ recordIndex() ].nobodys;
   nobodys.put( cell );
   nobodys.released.add( 1 );
}

void
Slab::abandon( void* cell ) noexcept {
   const std::lock_guard guard( process().lock );
   Share& mine = shareOf( recordIndex() );
   mine.put( cell );
   mine.made.add( -1 );
}

std::vector< Slab::Count >
Slab::counts() {
   const std::lock_guard guard( process().lock );
   std::vector< Count > all;
   for ( const Record& record : process().records ) {
      all.push_back( { record.typeName, record.cellSize, 0, 0 } );
   }
   // Releases first: who sees one then sees its allocation too.
   for ( const auto& [ sum, counter ] : { std::pair( &Count::released, &Share::released ),
                                          std::pair( &Count::made, &Share::made ) } ) {
      for ( std::size_t i = 0; i < all.size(); ++i ) {
         all[ i ].*sum += ( process().records[ i ].nobodys.*counter ).value();
         for ( const Table& table : process().tables ) {
            all[ i ].*sum += i < table.size() ? ( table[ i ].*counter ).value() : 0;
         }
      }
   }
   return all;
}

}   // namespace Zel
