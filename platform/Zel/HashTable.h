// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// HashTable: buckets and walking order of a hash map or set, without keys.
//
// Order      Elements are threaded in order of insertion; a walk follows the thread. A deleted
//            node leaves its bucket at once but stays in the thread until nobody holds it, so an
//            iterator that stands on it still knows what follows.
// Ownership  The table holds one reference to each stored node.
// Cost       All O(1) on average; the buckets double when there are as many elements.
// Throws     std::bad_alloc from reserveOne() and link(), with nothing changed.
// Threads    One thread, no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

namespace Detail {

/// Place in the thread; alone when prev is null.
struct HashThread {
   HashThread* prev = nullptr;
   HashThread* next = nullptr;
};

}   // namespace Detail

class ZEL_EXPORT HashNode : public PtrInterface, private Detail::HashThread {
 public:
   static constexpr char zelTypeName[] = "Zel::HashNode";

   /// Whether the node stands in its collection.
   bool linked() const { return word_.flag( ReferenceWord::kLinked ); }
   /// The key's hash under the collection's seed.
   std::uint32_t zelStoredHash() const { return hash_; }

 protected:
   HashNode() = default;
   ~HashNode() override;

 private:
   friend class HashTable;
   HashNode* bucketNext_ = nullptr;
   std::uint32_t hash_ = 0;
};

class ZEL_EXPORT HashTable {
 public:
   explicit HashTable( std::uint32_t seed );
   ~HashTable();
   HashTable( const HashTable& ) = delete;
   HashTable& operator=( const HashTable& ) = delete;

   std::uint32_t seed() const { return seed_; }
   std::uint32_t size() const { return size_; }
   /// Elements ever linked or unlinked; wraps.
   std::uint32_t changes() const { return changes_; }

   /// First node of the bucket that `hash` falls into.
   HashNode* bucket( std::uint32_t hash ) const {
      return buckets_ ? buckets_[ hash & mask_ ] : nullptr;
   }
   static HashNode* bucketNext( const HashNode& node ) { return node.bucketNext_; }

   HashNode* first() const { return stored( thread_.next ); }
   HashNode* last() const;
   /// What stands behind a stored node; null when that is the end or is gone.
   HashNode* follower( const HashNode& node ) const {
      if ( node.next == &thread_ ) {
         return nullptr;
      }
      auto* const at = static_cast< HashNode* >( node.next );
      return at->linked() ? at : nullptr;
   }
   /// The stored node that follows `node` in the thread; `node` may be gone.
   HashNode* next( const HashNode& node ) const { return stored( node.next ); }

   /// Makes room for one node more: the next link() does not throw.
   void reserveOne();
   void link( Ptr< HashNode > node, std::uint32_t hash );
   /// Takes a stored node out and hands over the table's reference to it.
   Ptr< HashNode > unlink( HashNode& node );
   /// Takes all nodes out, in order.
   void clear();

   /// For tests: asserts bucket membership, thread, size, and that each node has exactly one
   /// reference but for the `extraReferences` that iterators on stored nodes hold in total.
   void verify( std::int32_t extraReferences ) const;

 private:
   HashNode* stored( Detail::HashThread* at ) const;

   std::unique_ptr< HashNode*[] > buckets_;
   Detail::HashThread thread_;   // its own next and prev: the first and the last
   std::uint32_t mask_ = 0;
   std::uint32_t size_ = 0;
   std::uint32_t changes_ = 0;
   const std::uint32_t seed_;
};

}   // namespace Zel
