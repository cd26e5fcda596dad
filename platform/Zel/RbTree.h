// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RbTree: the shape of an ordered map: links, colours and balance, without keys.
//
// Ownership  The tree holds one reference to each node that stands in it. An unlinked node has no
//            links left, so releasing nodes never runs deep.
// Shape      Red-black: the root is black, a red node has black children, every way down from a
//            node passes the same number of black nodes. Height at most 2 log2( n + 1 ).
// Cost       linkAt and unlink O(1) amortised changes; next O(1) amortised; clear O(n).
// Threads    One thread, no locks.
#pragma once

#include <cstdint>

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

class ZEL_EXPORT RbNode : public PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Zel::RbNode";

   /// Whether the node stands in its map.
   bool linked() const { return word_.flag( ReferenceWord::kLinked ); }

 protected:
   RbNode() = default;
   ~RbNode() override;

 private:
   friend class RbTree;
   bool red() const { return word_.flag( ReferenceWord::kRed ); }
   void redIs( bool red ) { word_.flagIs( ReferenceWord::kRed, red ); }

   RbNode* left_ = nullptr;
   RbNode* right_ = nullptr;
   RbNode* parent_ = nullptr;
};

class ZEL_EXPORT RbTree {
 public:
   RbTree() = default;
   ~RbTree() { clear(); }
   RbTree( const RbTree& ) = delete;
   RbTree& operator=( const RbTree& ) = delete;

   RbNode* root() const { return root_; }
   static RbNode* left( const RbNode& node ) { return node.left_; }
   static RbNode* right( const RbNode& node ) { return node.right_; }
   RbNode* first() const;
   /// The node after a linked one; null behind the last.
   static RbNode* next( const RbNode& node );

   std::uint32_t size() const { return size_; }
   /// Elements ever linked or unlinked; wraps.
   std::uint32_t changes() const { return changes_; }

   enum class Side : bool { Left, Right };
   /// Links `node` as child of `parent` (null: as the root of an empty tree) on a free side.
   void linkAt( RbNode* parent, Side side, Ptr< RbNode > node );
   /// Takes a linked node out and hands over the tree's reference to it.
   Ptr< RbNode > unlink( RbNode& node );
   /// Takes all nodes out.
   void clear();
   /// Adds to the count of changes what linking and unlinking did not show.
   void changesInc( std::uint32_t more ) { changes_ += more; }

   /// For tests: asserts every rule of the shape, the links, the size, and that each node has
   /// exactly one reference but for the `extraReferences` that iterators hold in total.
   void verify( std::int32_t extraReferences ) const;

 private:
   RbNode*& linkTo( const RbNode& node );
   void rotateUp( RbNode& child );
   void balanceAfterLink( RbNode* node );
   void balanceAfterUnlink( RbNode* node, RbNode* parent );

   RbNode* root_ = nullptr;
   std::uint32_t size_ = 0;
   std::uint32_t changes_ = 0;
};

}   // namespace Zel
