// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyIndex: what two collections of nodes with 16-bit keys share; the inside of SmallKeyMap.
//
// At each place, the number of a key, stands a node of either collection or of both. While every
// place carries both, as those who keep two collections in step see to, one search serves two and
// one step changes both.
//
// Shape      Up to kMostFew places stand in a sorted array (Zel/KeyArray.h), more in a trie
//            (Zel/KeyTrie.h).
// Ownership  Holds one reference to each stored node.
// Memory     18 bytes a place in the array, which doubles and keeps its room until trim(); the
//            trie's pages go back when kMostFew / 2 places are left.
// Cost       One node: O(1), counting the at most kMostFew moves in the array as such, while both
//            collections have the same places. While they do not, a search at or beside a place
//            is O(n) in the places that only the other collection has. All: O(n).
// Throws     std::bad_alloc from reserve() and insertOrFind(), with nothing changed.
// Threads    One thread, no locks; that goes for searches too, which remember what they found.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "Zel/Assert.h"
#include "Zel/Export.h"
#include "Zel/KeyArray.h"
#include "Zel/KeyPlace.h"
#include "Zel/KeyTrie.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

class ZEL_EXPORT SmallKeyNode : public PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Zel::SmallKeyNode";

   /// Whether the node stands in its map.
   bool linked() const { return word_.flag( ReferenceWord::kLinked ); }

 protected:
   SmallKeyNode() = default;
   ~SmallKeyNode() override { ZEL_ASSERT( !linked() ); }

 private:
   static constexpr char zelSourceTag[] = "Zel/KeyIndex";
   friend class KeyIndex;
};

class ZEL_EXPORT KeyIndex {
 public:
   /// Which of the two collections.
   enum Lane : unsigned { kFirst, kSecond };
   /// The nodes at one place, by lane; null where that collection has none.
   using Pair = std::array< SmallKeyNode*, 2 >;
   static constexpr std::uint32_t kMostFew = 272;
   static constexpr KeyPlace kHighest = 0xffff;
   using At = KeyAt< Pair >;
   using Around = KeyAround< Pair >;

   KeyIndex() = default;
   ~KeyIndex();
   KeyIndex( const KeyIndex& ) = delete;
   KeyIndex& operator=( const KeyIndex& ) = delete;

   std::uint32_t size( Lane lane ) const { return size_[ lane ]; }
   /// Nodes ever inserted or unlinked; wraps.
   std::uint32_t changes( Lane lane ) const { return changes_[ lane ]; }

   /// The node at `place`, or null.
   SmallKeyNode* find( Lane lane, KeyPlace place ) const {
      const Pair* const pair = find( place );
      return pair ? ( *pair )[ lane ] : nullptr;
   }
   /// The lane's first node at or above `place`.
   At atOrAbove( Lane lane, KeyPlace place ) const;
   /// The lane's last node at or below `place`.
   At atOrBelow( Lane lane, KeyPlace place ) const;

   /// Makes room for a node at `place`, the last of up to `places` new places beside as many as
   /// stand here now; deletions that lie between do not matter.
   void reserve( KeyPlace place, std::uint32_t places = 1 ) {
      if ( !trie_ && few_.size() + places > kMostFew ) {
         toTrie();
      }
      if ( trie_ ) {
         trie_->reserve( place );
         return;
      }
      while ( few_.size() + places > few_.room() ) {
         few_.grow();
         last_ = {};
      }
   }
   /// Inserts `node` unless another of its lane stands at `place`; returns the one that stands
   /// there then. Requires: `node` stands in no map (asserted).
   SmallKeyNode& insertOrFind( Lane lane, KeyPlace place, SmallKeyNode& node );
   /// Takes out the node at `place`; null when there is none.
   Ptr< SmallKeyNode > take( Lane lane, KeyPlace place );
   void clear( Lane lane );
   /// Gives the memory of an empty index back, and what was reserved in it.
   void trim() {
      if ( !trie_ && few_.size() == 0 ) {
         few_.trim();
      }
   }

   /// Whether every place carries a node of each lane. The functions below require it.
   bool paired() const { return unpaired_ == 0; }

   const Around& around( KeyPlace place ) const {
      if ( place < last_.below.place || place >= last_.above.place ) {
         search( place );
      }
      return last_;
   }
   /// Inserts a pair. Requires: nothing stands at `place`; the nodes stand in no map (asserted).
   /// Throws std::bad_alloc, with nothing changed.
   void insertPair( KeyPlace place, SmallKeyNode& first, SmallKeyNode& second );
   void takePair( At at );
   /// As taking a pair out and inserting it at `to`. Requires: nothing stands at `to` nor between.
   /// Throws std::bad_alloc, with nothing changed.
   void movePair( At from, KeyPlace to ) {
      const bool isBelow = from.value == last_.below.value;
      Pair* const moved = trie_ ? moveInTrie( from, to ) : few_.move( from, to );
      if ( isBelow ) {
         last_.below = { to, moved };
      } else {
         last_ = {};
      }
      replaced( kFirst );
      replaced( kSecond );
   }
   /// A node was taken out and inserted again where it stood.
   void replaced( Lane lane ) { changes_[ lane ] += 2; }

   /// Calls `visit` with each node of a lane in order of places. Requires: `visit` does not change
   /// the index.
   template < class Visit >
   void each( Lane lane, const Visit& visit ) const {
      eachPair( [ & ]( KeyPlace, const Pair& pair ) {
         if ( pair[ lane ] ) {
            visit( pair[ lane ] );
         }
      } );
   }

   /// For tests: asserts the order, the sizes and what is in pairs, and that each node of the lane
   /// has exactly one reference but for the `extraReferences` that iterators hold in total.
   void verify( Lane lane, std::int32_t extraReferences ) const;

 private:
   using Few = KeyArray< Pair >;
   using Trie = KeyTrie< Pair >;

   Pair* find( KeyPlace place ) const { return trie_ ? trie_->find( place ) : few_.find( place ); }
   At atOrAbove( std::uint32_t place ) const {
      return trie_ ? trie_->atOrAbove( place ) : few_.atOrAbove( place );
   }
   At atOrBelow( std::uint32_t place ) const {
      return trie_ ? trie_->atOrBelow( place ) : few_.atOrBelow( place );
   }
   void search( KeyPlace place ) const;
   Pair* moveInTrie( At from, KeyPlace to );
   void erase( At at );
   void link( Lane lane, SmallKeyNode& node );
   Ptr< SmallKeyNode > unlink( Lane lane, SmallKeyNode* node );
   void toTrie();
   void toFew() noexcept;

   template < class Visit >
   void eachPair( const Visit& visit ) const {
      few_.each( visit );
      if ( trie_ ) {
         trie_->each( visit );
      }
   }

   // In front what a change near the last one needs. Changes come in runs of neighbouring places; no
   // place lies in `last_` before the first search.
   mutable Around last_;
   std::uint32_t unpaired_ = 0;   // places that carry one node
   std::array< std::uint32_t, 2 > changes_{};
   std::array< std::uint32_t, 2 > size_{};
   std::uint32_t places_ = 0;
   std::unique_ptr< Trie > trie_;
   Few few_;   // in use while there is no trie
};

}   // namespace Zel
