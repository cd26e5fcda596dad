// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SmallKeyMap: ordered map of counted nodes whose keys are 16-bit numbers, such as VLAN ids.
//
// Node       Derives from SmallKeyNode and has key(); whatever else it holds is the value.
// Key        Has zelPlace( key ) beside it: its place in the order, 16 bits; equal keys and no
//            others have the same.
// Ownership  The map holds one reference to each node that stands in it, an iterator one to its
//            own. A node that is taken out lives on while somebody holds it.
// Cost       O(1): find, insert, delete, advance (Zel/KeyIndex.h).
// Iterators  Usable after any change, their own element's deletion included (StdIterator.h).
// Throws     std::bad_alloc from reserve() and insert(), with nothing changed.
// Asserts    insert of a key that is stored.
// Threads    One thread, no locks.
#pragma once

#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Zel/Assert.h"
#include "Zel/KeyIndex.h"
#include "Zel/Ptr.h"
#include "Zel/StdIterator.h"

namespace Zel {

template < class NodeType >
class SmallKeyMap {
 public:
   using Node = NodeType;
   using Key = std::remove_cvref_t< decltype( std::declval< const Node& >().key() ) >;
   using Iterator = StdIterator< SmallKeyMap >;
   static constexpr std::uint32_t kNoPlace = KeyIndex::kNoPlace;

   std::uint32_t size() const { return index_.size(); }
   bool empty() const { return index_.size() == 0; }
   /// Elements ever inserted or deleted; wraps.
   std::uint32_t changes() const { return index_.changes(); }

   Iterator first() const { return { *this, typed( index_.findOrNext( 0 ) ) }; }
   Iterator begin() const { return first(); }
   std::default_sentinel_t end() const { return {}; }

   /// The node of `key`, or null. No reference is taken: not to be kept across a change.
   Node* findNode( const Key& key ) const { return typed( index_.find( zelPlace( key ) ) ); }
   Iterator findElement( const Key& key ) const { return { *this, findNode( key ) }; }
   /// The place of the element that equals `key`, else of the first behind it; kNoPlace when there is
   /// none. Reads no element.
   std::uint32_t placeOrNext( const Key& key ) const {
      return index_.placeOrNext( zelPlace( key ) );
   }
   /// The node that equals `key`, else the first behind it; null when there is none.
   Node* findNodeOrNext( const Key& key ) const {
      return typed( index_.findOrNext( zelPlace( key ) ) );
   }
   Iterator findElementOrNext( const Key& key ) const { return { *this, findNodeOrNext( key ) }; }

   /// Makes room for `key` beside as many elements as there are now: its insertion does not throw
   /// then. Deletions that lie between do not matter.
   void reserve( const Key& key ) { index_.reserve( zelPlace( key ) ); }
   /// Requires: no element equals the node's key (asserted).
   void insert( const Ptr< Node >& node ) {
      [[maybe_unused]] const Node& stored = insertOrFind( node );
      ZEL_ASSERT( &stored == node.get() );
   }
   /// Inserts the node unless an element equals its key; returns the one that stands there then.
   Node& insertOrFind( const Ptr< Node >& node ) {
      return static_cast< Node& >( index_.insertOrFind( zelPlace( node->key() ), *node ) );
   }

   /// Counts as taking a stored element out and inserting it again where it stood.
   void replaced() { index_.replaced(); }
   /// Takes the element that equals `key` out; null when there is none.
   Ptr< Node > del( const Key& key ) {
      return { typed( index_.take( zelPlace( key ) ).release() ), adoptReference };
   }
   /// Takes the iterator's element out; null at the end or when it is gone already. Requires: the
   /// iterator walks this collection (asserted).
   Ptr< Node > del( const Iterator& at ) {
      ZEL_ASSERT( at.walks( *this ) );
      return at && at->linked() ? del( at->key() ) : nullptr;
   }
   void deleteAll() { index_.clear(); }
   /// Gives the memory of an empty map back, and what was reserved in it.
   void trim() { index_.trim(); }

   /// Calls `visit` with each node in order. Requires: `visit` does not change the map.
   template < class Visit >
   void each( const Visit& visit ) const {
      index_.each( [ & ]( SmallKeyNode* node ) { visit( *typed( node ) ); } );
   }

   /// The element behind `node`, which may be gone; null behind the last. For StdIterator.
   Node* next( const Node& node ) const {
      return typed( index_.findOrNext( zelPlace( node.key() ) + 1u ) );
   }

   /// For tests: asserts the inside, and the nodes' reference counts, of which iterators hold
   /// `iterators` in total.
   void verify( std::int32_t iterators = 0 ) const {
      index_.verify( iterators );
      for ( const Node* node = typed( index_.findOrNext( 0 ) ); node; node = next( *node ) ) {
         ZEL_ASSERT( findNode( node->key() ) == node );
      }
   }

 private:
   static constexpr char zelSourceTag[] = "Zel/SmallKeyMap";

   static Node* typed( SmallKeyNode* node ) { return static_cast< Node* >( node ); }

   KeyIndex index_;
};

}   // namespace Zel
