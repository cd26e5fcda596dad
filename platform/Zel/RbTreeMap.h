// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RbTreeMap: ordered map of counted nodes, balanced red-black.
//
// Node       Derives from RbTreeNode< Key > and has key(); whatever else it holds is the value.
// Ownership  The map holds one reference to each node that stands in it, an iterator one to its
//            own. A node that is taken out lives on while somebody holds it.
// Order      By the key type's <. A key type may order fewer fields than it compares and says so
//            with a constant kTwins: unequal keys that are neither less nor greater ("twins")
//            stand together in order of insertion, and == alone tells them apart.
// Cost       find, insert, unlink: O(log n) (plus the number of twins). Advance: O(1) amortised,
//            O(log n) from an element that is gone.
// Iterators  Usable after any change, their own element's deletion included (StdIterator.h).
// Asserts    insert of a key that is stored.
// Threads    One thread, no locks.
#pragma once

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <span>
#include <type_traits>
#include <utility>
#include <vector>

#include "Zel/Assert.h"
#include "Zel/Ptr.h"
#include "Zel/RbTree.h"
#include "Zel/StdIterator.h"

namespace Zel {

template < class Key >
concept HasTwins = requires {
   requires Key::kTwins;
};

/// Node whose key may have twins: remembers when it came, which is its place among them.
class RbTwinNode : public RbNode {
 public:
   std::uint64_t zelArrival = 0;
};

template < class Key >
using RbTreeNode = std::conditional_t< HasTwins< Key >, RbTwinNode, RbNode >;

template < class NodeType >
class RbTreeMap {
 public:
   using Node = NodeType;
   using Key = std::remove_cvref_t< decltype( std::declval< const Node& >().key() ) >;
   using Iterator = StdIterator< RbTreeMap >;

   std::uint32_t size() const { return tree_.size(); }
   bool empty() const { return tree_.size() == 0; }
   /// Elements ever inserted or deleted; wraps.
   std::uint32_t changes() const { return tree_.changes(); }

   Iterator first() const { return { *this, typed( tree_.first() ) }; }
   Iterator begin() const { return first(); }
   std::default_sentinel_t end() const { return {}; }

   /// The node of `key`, or null. No reference is taken: not to be kept across a change.
   Node* findNode( const Key& key ) const {
      for ( Node* node = firstNotLess( key ); node && !( key < node->key() );
            node = after( *node ) ) {
         if ( node->key() == key ) {
            return node;
         }
      }
      return nullptr;
   }
   Iterator findElement( const Key& key ) const { return { *this, findNode( key ) }; }

   /// The element that equals `key`, else the first that `key` is less than, else the end.
   Iterator findElementOrNext( const Key& key ) const {
      if constexpr ( HasTwins< Key > ) {
         const Node* equal = findNode( key );
         return { *this, equal ? equal : firstGreater( key ) };
      } else {
         return { *this, firstNotLess( key ) };
      }
   }

   /// Requires: no element equals the node's key (asserted).
   void insert( Ptr< Node > node ) {
      RbNode* parent = nullptr;
      const Node* before = nullptr;
      auto side = RbTree::Side::Left;
      for ( RbNode* at = tree_.root(); at; ) {
         parent = at;
         const Key& stored = typed( at )->key();
         ZEL_ASSERT( !( node->key() == stored ) );
         const bool less = node->key() < stored;
         side = less ? RbTree::Side::Left : RbTree::Side::Right;
         before = less ? before : typed( at );
         at = less ? RbTree::left( *at ) : RbTree::right( *at );
      }
      if constexpr ( HasTwins< Key > ) {
         // An equal element may stand off the way down; then what stands before is its twin.
         ZEL_ASSERT( !before || before->key() < node->key() || !findNode( node->key() ) );
         node->zelArrival = ++arrivals_;
      }
      tree_.linkAt( parent, side, std::move( node ) );
   }

   /// Takes a stored node out.
   Ptr< Node > unlink( const Node& node ) {
      return { typed( tree_.unlink( const_cast< Node& >( node ) ).release() ), adoptReference };
   }

   /// Takes the element that equals `key` out; null when there is none.
   Ptr< Node > del( const Key& key ) {
      const Node* node = findNode( key );
      return node ? unlink( *node ) : nullptr;
   }
   /// Takes the iterator's element out; null at the end or when it is gone already. Requires: the
   /// iterator walks this collection (asserted).
   Ptr< Node > del( const Iterator& at ) {
      ZEL_ASSERT( at.walks( *this ) );
      return at && at->linked() ? unlink( *at ) : nullptr;
   }
   void deleteAll() { tree_.clear(); }

   /// As deleting every element and inserting one for each of `sorted`, but elements that nobody
   /// else holds are used again: `make()` makes those that are missing, before anything is changed,
   /// and `write( node, key )` turns each into the one that it becomes. `nodes` is working memory;
   /// kept from call to call it spares the allocation. Requires: `sorted` is in order, without equal
   /// keys (asserted by verify() alone). O(n).
   template < class Make, class Write >
   void refill( std::span< const Key > sorted, std::vector< Node* >& nodes, const Make& make,
                const Write& write );

   /// The element behind `node`, which may be gone; null behind the last. For StdIterator.
   Node* next( const Node& node ) const {
      if ( node.linked() ) {
         return after( node );
      }
      const auto follows = [ & ]( const Node& stored ) {
         if constexpr ( HasTwins< Key > ) {
            if ( !( node.key() < stored.key() ) && !( stored.key() < node.key() ) ) {
               return stored.zelArrival > node.zelArrival;
            }
         }
         return node.key() < stored.key();
      };
      Node* found = firstThat( follows );
      // The same key again, inserted meanwhile: it stands where the iterator was already.
      return found && found->key() == node.key() ? after( *found ) : found;
   }

   /// For tests: asserts shape, order, size and the nodes' reference counts, of which iterators
   /// hold `iterators` in total.
   void verify( std::int32_t iterators = 0 ) const {
      tree_.verify( iterators );
      for ( const Node* node = typed( tree_.first() ); node; node = after( *node ) ) {
         ZEL_ASSERT( findNode( node->key() ) == node );
         const Node* behind = after( *node );
         ZEL_ASSERT( !behind || !( behind->key() < node->key() ) );
      }
   }

 private:
   static constexpr char zelSourceTag[] = "Zel/RbTreeMap";

   static Node* typed( RbNode* node ) { return static_cast< Node* >( node ); }
   static Node* after( const Node& node ) { return typed( RbTree::next( node ) ); }

   // The first node that `holds` is true of; it must be false of all before and true of all behind.
   template < class Predicate >
   Node* firstThat( Predicate holds ) const {
      Node* candidate = nullptr;
      for ( RbNode* at = tree_.root(); at; ) {
         if ( holds( *typed( at ) ) ) {
            candidate = typed( at );
            at = RbTree::left( *at );
         } else {
            at = RbTree::right( *at );
         }
      }
      return candidate;
   }
   Node* firstNotLess( const Key& key ) const {
      return firstThat( [ & ]( const Node& node ) { return !( node.key() < key ); } );
   }
   Node* firstGreater( const Key& key ) const {
      return firstThat( [ & ]( const Node& node ) { return key < node.key(); } );
   }

   struct NoArrivals {};
   RbTree tree_;
   [[no_unique_address]] std::conditional_t< HasTwins< Key >, std::uint64_t, NoArrivals >
      arrivals_{};
};

template < class NodeType >
template < class Make, class Write >
void
RbTreeMap< NodeType >::refill( std::span< const Key > sorted, std::vector< Node* >& nodes,
                               const Make& make, const Write& write ) {
   const auto size = static_cast< std::uint32_t >( sorted.size() );
   const std::uint32_t changes = tree_.changes() + tree_.size() + size;
   nodes.clear();
   nodes.reserve( std::max( tree_.size(), size ) );
   std::vector< const Node* > held;
   for ( Node* node = typed( tree_.first() ); node; node = after( *node ) ) {
      if ( node->zelReferences() == 1 ) {
         nodes.push_back( node );
      } else {
         held.push_back( node );
      }
   }
   std::vector< Ptr< Node > > missing;
   while ( nodes.size() + missing.size() < size ) {
      missing.push_back( make() );
   }

   // Which node stands where does not matter yet, for every key is written below.
   for ( const Node* node : held ) {
      unlink( *node );
   }
   while ( nodes.size() > size ) {
      unlink( *nodes.back() );
      nodes.pop_back();
   }
   for ( Ptr< Node >& node : missing ) {
      Node* const last = nodes.empty() ? nullptr : nodes.back();
      nodes.push_back( node.get() );
      tree_.linkAt( last, RbTree::Side::Right, std::move( node ) );
   }
   for ( std::uint32_t i = 0; i < size; ++i ) {
      write( *nodes[ i ], sorted[ i ] );
      if constexpr ( HasTwins< Key > ) {
         nodes[ i ]->zelArrival = ++arrivals_;
      }
   }
   tree_.changesInc( changes - tree_.changes() );
}

}   // namespace Zel
