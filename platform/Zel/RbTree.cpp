// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/RbTree.h"

#include <utility>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/RbTree";

}   // namespace

RbNode::~RbNode() {
   ZEL_ASSERT( !linked() );
}

RbNode*
RbTree::first() const {
   RbNode* node = root_;
   while ( node && node->left_ ) {
      node = node->left_;
   }
   return node;
}

RbNode*
RbTree::next( const RbNode& node ) {
   if ( RbNode* successor = node.right_ ) {
      while ( successor->left_ ) {
         successor = successor->left_;
      }
      return successor;
   }
   const RbNode* child = &node;
   RbNode* parent = node.parent_;
   while ( parent && parent->right_ == child ) {
      child = parent;
      parent = parent->parent_;
   }
   return parent;
}

// The place that points to a linked node: its parent's link, or the root.
RbNode*&
RbTree::linkTo( const RbNode& node ) {
   RbNode* parent = node.parent_;
   if ( !parent ) {
      return root_;
   }
   return parent->left_ == &node ? parent->left_ : parent->right_;
}

// Turns the edge between a node and its parent, so that the node comes above the parent.
void
RbTree::rotateUp( RbNode& child ) {
   RbNode& parent = *child.parent_;
   RbNode*& top = linkTo( parent );
   const bool fromLeft = parent.left_ == &child;
   RbNode*& inner = fromLeft ? child.right_ : child.left_;
   ( fromLeft ? parent.left_ : parent.right_ ) = inner;
   if ( inner ) {
      inner->parent_ = &parent;
   }
   child.parent_ = parent.parent_;
   top = &child;
   inner = &parent;
   parent.parent_ = &child;
}

void
RbTree::linkAt( RbNode* parent, Side side, Ptr< RbNode > node ) {
   ZEL_ASSERT( !node->linked() );
   RbNode* const linked = node.release();
   RbNode*& place = !parent ? root_ : side == Side::Left ? parent->left_ : parent->right_;
   ZEL_ASSERT( !place );
   place = linked;
   linked->parent_ = parent;
   linked->word_.flagIs( ReferenceWord::kLinked, true );
   linked->redIs( true );
   ++size_;
   ++changes_;
   balanceAfterLink( linked );
}

// The new node is red; the only rule it may break is that its parent is red too.
void
RbTree::balanceAfterLink( RbNode* node ) {
   while ( node->parent_ && node->parent_->red() ) {
      RbNode* parent = node->parent_;
      RbNode* grandparent = parent->parent_;
      const bool parentIsLeft = grandparent->left_ == parent;
      RbNode* uncle = parentIsLeft ? grandparent->right_ : grandparent->left_;
      if ( uncle && uncle->red() ) {
         parent->redIs( false );
         uncle->redIs( false );
         grandparent->redIs( true );
         node = grandparent;
         continue;
      }
      if ( node == ( parentIsLeft ? parent->right_ : parent->left_ ) ) {
         rotateUp( *node );
         parent = node;
      }
      parent->redIs( false );
      grandparent->redIs( true );
      rotateUp( *parent );
      break;
   }
   root_->redIs( false );
}

Ptr< RbNode >
RbTree::unlink( RbNode& node ) {
   ZEL_ASSERT( node.linked() );
   if ( node.left_ && node.right_ ) {
      // The successor takes over this node's place and colour, this node takes the successor's.
      RbNode& successor = *next( node );
      RbNode*& nodeLink = linkTo( node );
      const bool successorIsChild = node.right_ == &successor;
      RbNode* const successorParent = successor.parent_;
      RbNode* const successorRight = successor.right_;
      const bool successorRed = successor.red();

      nodeLink = &successor;
      successor.parent_ = node.parent_;
      successor.left_ = node.left_;
      successor.left_->parent_ = &successor;
      successor.redIs( node.red() );
      if ( successorIsChild ) {
         successor.right_ = &node;
         node.parent_ = &successor;
      } else {
         successor.right_ = node.right_;
         successor.right_->parent_ = &successor;
         successorParent->left_ = &node;
         node.parent_ = successorParent;
      }
      node.left_ = nullptr;
      node.right_ = successorRight;
      if ( successorRight ) {
         successorRight->parent_ = &node;
      }
      node.redIs( successorRed );
   }
   RbNode* const child = node.left_ ? node.left_ : node.right_;
   RbNode* const parent = node.parent_;
   linkTo( node ) = child;
   if ( child ) {
      child->parent_ = parent;
   }
   if ( !node.red() ) {
      balanceAfterUnlink( child, parent );
   }
   node.left_ = node.right_ = node.parent_ = nullptr;
   node.word_.flagIs( ReferenceWord::kLinked, false );
   node.redIs( false );
   --size_;
   ++changes_;
   return { &node, adoptReference };
}

// Every way down through `node` (a child of `parent`, or null) is one black node short.
void
RbTree::balanceAfterUnlink( RbNode* node, RbNode* parent ) {
   while ( parent && !( node && node->red() ) ) {
      const bool nodeIsLeft = parent->left_ == node;
      RbNode* sibling = nodeIsLeft ? parent->right_ : parent->left_;
      if ( sibling->red() ) {
         sibling->redIs( false );
         parent->redIs( true );
         rotateUp( *sibling );
         sibling = nodeIsLeft ? parent->right_ : parent->left_;
      }
      RbNode* near = nodeIsLeft ? sibling->left_ : sibling->right_;
      RbNode* far = nodeIsLeft ? sibling->right_ : sibling->left_;
      const bool nearRed = near && near->red();
      const bool farRed = far && far->red();
      if ( !nearRed && !farRed ) {
         sibling->redIs( true );
         node = parent;
         parent = node->parent_;
         continue;
      }
      if ( !farRed ) {
         near->redIs( false );
         sibling->redIs( true );
         rotateUp( *near );
         far = sibling;
         sibling = near;
      }
      sibling->redIs( parent->red() );
      parent->redIs( false );
      far->redIs( false );
      rotateUp( *sibling );
      return;
   }
   if ( node ) {
      node->redIs( false );
   }
}

void
RbTree::clear() {
   // Detached as a whole first: what runs when a node goes finds an empty tree.
   RbNode* node = std::exchange( root_, nullptr );
   changes_ += size_;
   size_ = 0;
   while ( node ) {
      if ( node->left_ ) {
         node = node->left_;
      } else if ( node->right_ ) {
         node = node->right_;
      } else {
         RbNode* const parent = std::exchange( node->parent_, nullptr );
         if ( parent ) {
            ( parent->left_ == node ? parent->left_ : parent->right_ ) = nullptr;
         }
         node->word_.flagIs( ReferenceWord::kLinked, false );
         node->redIs( false );
         const Ptr< RbNode > gone( node, adoptReference );
         node = parent;
      }
   }
}

void
RbTree::verify( std::int32_t extraReferences ) const {
   struct Walk {
      std::uint32_t nodes = 0;
      std::int32_t references = 0;

      // Returns the number of black nodes on every way down.
      int blackHeight( const RbNode* node, const RbNode* parent ) {
         if ( !node ) {
            return 0;
         }
         ZEL_ASSERT( node->linked() );
         ZEL_ASSERT( node->parent_ == parent );
         ZEL_ASSERT( !( node->red() && parent && parent->red() ) );
         ++nodes;
         references += node->zelReferences();
         const int leftHeight = blackHeight( node->left_, node );
         const int rightHeight = blackHeight( node->right_, node );
         ZEL_ASSERT( leftHeight == rightHeight );
         return leftHeight + ( node->red() ? 0 : 1 );
      }
   } walk;
   walk.blackHeight( root_, nullptr );
   ZEL_ASSERT( !root_ || !root_->red() );
   ZEL_ASSERT( walk.nodes == size_ );
   ZEL_ASSERT( walk.references == static_cast< std::int32_t >( size_ ) + extraReferences );
}

}   // namespace Zel
