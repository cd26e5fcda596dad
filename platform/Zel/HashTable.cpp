// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/HashTable.h"

#include <utility>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/HashTable";
constexpr std::uint32_t kFirstBuckets = 4;

}   // namespace

HashNode::~HashNode() {
   ZEL_ASSERT( !linked() );
   if ( prev ) {
      prev->next = next;
      next->prev = prev;
   }
}

HashTable::HashTable( std::uint32_t seed ) : seed_( seed ) {
   thread_.prev = thread_.next = &thread_;
}

HashTable::~HashTable() {
   clear();
   // What is still threaded is held by an iterator that outlives the table: cut it loose.
   for ( Detail::HashThread* at = thread_.next; at != &thread_; ) {
      at->prev = nullptr;
      at = std::exchange( at->next, nullptr );
   }
}

HashNode*
HashTable::stored( Detail::HashThread* at ) const {
   while ( at != &thread_ && !static_cast< HashNode* >( at )->linked() ) {
      at = at->next;
   }
   return at == &thread_ ? nullptr : static_cast< HashNode* >( at );
}

HashNode*
HashTable::last() const {
   Detail::HashThread* at = thread_.prev;
   while ( at != &thread_ && !static_cast< HashNode* >( at )->linked() ) {
      at = at->prev;
   }
   return at == &thread_ ? nullptr : static_cast< HashNode* >( at );
}

void
HashTable::reserveOne() {
   const std::uint32_t buckets = buckets_ ? mask_ + 1 : 0;
   if ( size_ < buckets ) {
      return;
   }
   const std::uint32_t more = buckets == 0 ? kFirstBuckets : buckets * 2;
   auto wider = std::make_unique< HashNode*[] >( more );
   for ( HashNode* node = first(); node; node = next( *node ) ) {
      HashNode*& head = wider[ node->hash_ & ( more - 1 ) ];
      node->bucketNext_ = std::exchange( head, node );
   }
   buckets_ = std::move( wider );
   mask_ = more - 1;
}

void
HashTable::link( Ptr< HashNode > node, std::uint32_t hash ) {
   ZEL_ASSERT( !node->linked() && !node->prev );
   reserveOne();
   HashNode* const linked = node.release();
   linked->hash_ = hash;
   linked->bucketNext_ = std::exchange( buckets_[ hash & mask_ ], linked );
   linked->prev = thread_.prev;
   linked->next = &thread_;
   thread_.prev->next = linked;
   thread_.prev = linked;
   linked->word_.flagIs( ReferenceWord::kLinked, true );
   ++size_;
   ++changes_;
}

Ptr< HashNode >
HashTable::unlink( HashNode& node ) {
   ZEL_ASSERT( node.linked() );
   HashNode** place = &buckets_[ node.hash_ & mask_ ];
   while ( *place != &node ) {
      place = &( *place )->bucketNext_;
   }
   *place = std::exchange( node.bucketNext_, nullptr );
   node.word_.flagIs( ReferenceWord::kLinked, false );
   --size_;
   ++changes_;
   return { &node, adoptReference };
}

void
HashTable::clear() {
   while ( HashNode* node = first() ) {
      unlink( *node );
   }
}

void
HashTable::verify( std::int32_t extraReferences ) const {
   std::uint32_t threaded = 0;
   std::int32_t references = 0;
   for ( const HashNode* node = first(); node; node = next( *node ) ) {
      ++threaded;
      references += node->zelReferences();
      const HashNode* inBucket = bucket( node->hash_ );
      while ( inBucket && inBucket != node ) {
         inBucket = inBucket->bucketNext_;
      }
      ZEL_ASSERT( inBucket == node );
      ZEL_ASSERT( node->prev->next == node && node->next->prev == node );
   }
   std::uint32_t inBuckets = 0;
   for ( std::uint32_t i = 0; buckets_ && i <= mask_; ++i ) {
      for ( const HashNode* node = buckets_[ i ]; node; node = node->bucketNext_ ) {
         ZEL_ASSERT( node->linked() && ( node->hash_ & mask_ ) == i );
         ++inBuckets;
      }
   }
   ZEL_ASSERT( threaded == size_ && inBuckets == size_ );
   ZEL_ASSERT( references == static_cast< std::int32_t >( size_ ) + extraReferences );
}

}   // namespace Zel
