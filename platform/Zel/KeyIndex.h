// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyIndex: nodes in order of 16-bit places; the inside of a SmallKeyMap.
//
// Shape      Up to kMostFew nodes stand in a sorted array, found by halving it. More stand in a trie
//            (Zel/KeyTrie.h).
// Ownership  Holds one reference to each stored node.
// Memory     10 bytes a node in the array, which doubles and keeps its room until trim(); the trie's
//            pages go back when kMostFew / 2 nodes are left.
// Cost       One node: O(1), counting the at most kMostFew moves in the array as such. All: O(n).
// Throws     std::bad_alloc from reserve() and insertOrFind(), with nothing changed.
// Threads    One thread, no locks.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Zel/Export.h"
#include "Zel/KeyTrie.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

class ZEL_EXPORT SmallKeyNode : public PtrInterface {
 public:
   static constexpr const char* zelTypeName = "Zel::SmallKeyNode";

   /// Whether the node stands in its map.
   bool linked() const { return word_.flag( ReferenceWord::kLinked ); }

 protected:
   SmallKeyNode() = default;
   ~SmallKeyNode() override;

 private:
   friend class KeyIndex;
};

class ZEL_EXPORT KeyIndex {
 public:
   using Place = std::uint16_t;
   static constexpr std::uint32_t kMostFew = 128;
   static constexpr std::uint32_t kNoPlace = 0x10000;

   KeyIndex() = default;
   ~KeyIndex() { clear(); }
   KeyIndex( const KeyIndex& ) = delete;
   KeyIndex& operator=( const KeyIndex& ) = delete;

   std::uint32_t size() const { return size_; }
   /// Nodes ever inserted or unlinked; wraps.
   std::uint32_t changes() const { return changes_; }

   /// The node at `place`, or null.
   SmallKeyNode* find( Place place ) const {
      return trie_ ? trie_->find( place ) : few_.find( place );
   }
   /// The first place of a node at or behind `place`; kNoPlace when there is none. Reads no node.
   std::uint32_t placeOrNext( Place place ) const {
      if ( trie_ ) {
         return trie_->placeOrNext( place );
      }
      const std::size_t index = few_.notBelow( place );
      return index < few_.size ? few_.places[ index ] : kNoPlace;
   }
   /// The node there. `place` may be kNoPlace.
   SmallKeyNode* findOrNext( std::uint32_t place ) const {
      const std::uint32_t found =
         place < kNoPlace ? placeOrNext( static_cast< Place >( place ) ) : kNoPlace;
      return found < kNoPlace ? find( static_cast< Place >( found ) ) : nullptr;
   }

   /// Makes room for a node at `place` beside as many as stand here now; deletions that lie
   /// between do not matter.
   void reserve( Place place ) {
      if ( !trie_ && size_ == kMostFew ) {
         toTrie();
      }
      if ( trie_ ) {
         trie_->reserve( place );
      } else if ( few_.size == few_.room ) {
         few_.grow();
      }
   }
   /// Inserts `node` unless another stands at `place`; returns the one that stands there then.
   /// Requires: `node` stands in no map (asserted).
   SmallKeyNode& insertOrFind( Place place, SmallKeyNode& node );
   /// Takes out the node at `place`; null when there is none.
   Ptr< SmallKeyNode > take( Place place );
   void clear();
   /// Gives the memory of an empty index back, and what was reserved in it.
   void trim() {
      if ( size_ == 0 ) {
         few_ = {};
      }
   }
   /// A node was taken out and inserted again where it stood.
   void replaced() { changes_ += 2; }

   /// Calls `visit` with each node in order. Requires: `visit` does not change the index.
   template < class Visit >
   void each( const Visit& visit ) const {
      std::for_each_n( few_.nodes.get(), few_.size, visit );
      if ( trie_ ) {
         trie_->each( [ & ]( Place, SmallKeyNode* node ) { visit( node ); } );
      }
   }

   /// For tests: asserts the order of the array, the bits of the pages, the size, and that each
   /// node has exactly one reference but for the `extraReferences` that iterators hold in total.
   void verify( std::int32_t extraReferences ) const;

 private:
   // The array: places and nodes side by side, so that a search reads the places alone.
   struct Few {
      std::unique_ptr< Place[] > places;
      std::unique_ptr< SmallKeyNode*[] > nodes;
      std::uint32_t size = 0;
      std::uint32_t room = 0;

      /// Index of the first place that is not below `place`.
      std::size_t notBelow( Place place ) const {
         // Steps by a mask, for no branch predictor knows the way down.
         const Place* at = places.get();
         std::size_t rest = size;
         while ( rest > 1 ) {
            const std::size_t half = rest / 2;
            at += half & ( std::size_t{ 0 } - std::size_t{ at[ half - 1 ] < place } );
            rest -= half;
         }
         const auto index = static_cast< std::size_t >( at - places.get() );
         return rest == 1 && *at < place ? index + 1 : index;
      }
      SmallKeyNode* find( Place place ) const {
         const std::size_t index = notBelow( place );
         return index < size && places[ index ] == place ? nodes[ index ] : nullptr;
      }
      void grow();
      /// Requires: `nodesInAll` is not less than `size`.
      void roomIs( std::uint32_t nodesInAll );
      /// Requires: room for one more.
      void insertAt( std::size_t index, Place place, SmallKeyNode* node );
      SmallKeyNode* takeAt( std::size_t index );
   };
   using Trie = KeyTrie< SmallKeyNode >;

   void toTrie();
   void toFew() noexcept;

   Few few_;
   std::unique_ptr< Trie > trie_;   // set while few_ is not in use
   std::uint32_t size_ = 0;
   std::uint32_t changes_ = 0;
};

}   // namespace Zel
