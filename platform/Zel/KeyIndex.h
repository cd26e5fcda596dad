// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyIndex: nodes in order of 16-bit places; the inside of a SmallKeyMap.
//
// Shape      Up to kMostFew nodes stand in a sorted array, found by halving it. More stand in a trie
//            of three levels; a page has 64 slots and a bit for each, so that the next node is found
//            by counting zeros.
// Ownership  Holds one reference to each stored node.
// Memory     10 bytes a node in the array, which doubles. A page of 520 bytes for each 64 places
//            of which one was used; pages go back when kMostFew / 2 nodes are left.
// Cost       All O(1), counting the at most kMostFew moves in the array as such.
// Throws     std::bad_alloc from reserve() and insert(), with nothing changed.
// Threads    One thread, no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Zel/Export.h"
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
   static constexpr std::uint32_t kMostFew = 64;
   static constexpr Place kGreatest = 0xffff;

   KeyIndex();
   ~KeyIndex();
   KeyIndex( const KeyIndex& ) = delete;
   KeyIndex& operator=( const KeyIndex& ) = delete;

   std::uint32_t size() const { return size_; }
   /// Nodes ever inserted or unlinked; wraps.
   std::uint32_t changes() const { return changes_; }

   /// The node at `place`, or null.
   SmallKeyNode* find( Place place ) const;
   /// The first node at or behind `place`; null when there is none. `place` may be one past the
   /// greatest.
   SmallKeyNode* findOrNext( std::uint32_t place ) const;

   /// Makes room for a node at `place`: its insertion does not throw if nothing but the unlinking
   /// of others lies between.
   void reserve( Place place );
   /// Requires: no node at `place` (asserted).
   void insert( Place place, Ptr< SmallKeyNode > node );
   /// Requires: a node at `place` (asserted).
   Ptr< SmallKeyNode > unlink( Place place );
   void clear();

   /// For tests: asserts the order of the array, the bits of the pages, the size, and that each
   /// node has exactly one reference but for the `extraReferences` that iterators hold in total.
   void verify( std::int32_t extraReferences ) const;

 private:
   // The array: places and nodes side by side, so that a search reads the places alone.
   struct Few {
      std::vector< Place > places;
      std::vector< SmallKeyNode* > nodes;

      /// Index of the first place that is not below `place`.
      std::size_t notBelow( std::uint32_t place ) const;
      SmallKeyNode* find( Place place ) const;
      void reserve( std::size_t nodesInAll );
      void insert( Place place, SmallKeyNode* node );
      SmallKeyNode* remove( Place place );
   };
   // The trie's root; every page below belongs to the one above it.
   struct Trie;

   void toTrie();
   void toFew() noexcept;

   Few few_;
   std::unique_ptr< Trie > trie_;   // set while few_ is not in use
   std::uint32_t size_ = 0;
   std::uint32_t changes_ = 0;
};

}   // namespace Zel
