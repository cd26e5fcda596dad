// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SmallKeyMap: ordered map of counted nodes whose keys are 16-bit numbers, such as VLAN ids.
//
// Index      One of the two collections of a KeyIndex, which outlives the map.
// Node       Derives from SmallKeyNode and has key(); whatever else it holds is the value.
// Key        Has zelPlace( key ) beside it, 16 bits; equal keys and no others have the same.
// Order      By place, ascending or descending.
// Ownership  The map holds one reference to each node that stands in it, an iterator one to its
//            own. A node that is taken out lives on while somebody holds it.
// Cost       Find, insert, delete, advance: that of the index.
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
#include "Zel/KeyPlace.h"
#include "Zel/Ptr.h"
#include "Zel/StdIterator.h"

namespace Zel {

enum class KeyOrder { Ascending, Descending };

template < class NodeType, KeyIndex::Lane lane, KeyOrder order = KeyOrder::Ascending >
class SmallKeyMap {
 public:
   using Node = NodeType;
   using Key = std::remove_cvref_t< decltype( std::declval< const Node& >().key() ) >;
   using Iterator = StdIterator< SmallKeyMap >;

   explicit SmallKeyMap( KeyIndex& index ) : index_( index ) {}
   ~SmallKeyMap() { deleteAll(); }
   SmallKeyMap( const SmallKeyMap& ) = delete;
   SmallKeyMap& operator=( const SmallKeyMap& ) = delete;

   std::uint32_t size() const { return index_.size( lane ); }
   bool empty() const { return size() == 0; }
   /// Elements ever inserted or deleted; wraps.
   std::uint32_t changes() const { return index_.changes( lane ); }

   Iterator first() const { return { *this, from( kAscends ? 0 : KeyIndex::kHighest ) }; }
   Iterator begin() const { return first(); }
   std::default_sentinel_t end() const { return {}; }

   /// The node of `key`, or null. No reference is taken: not to be kept across a change.
   Node* findNode( const Key& key ) const { return typed( index_.find( lane, zelPlace( key ) ) ); }
   Iterator findElement( const Key& key ) const { return { *this, findNode( key ) }; }
   /// The node that equals `key`, else the first behind it; null when there is none.
   Node* findNodeOrNext( const Key& key ) const { return from( zelPlace( key ) ); }
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
      return static_cast< Node& >( index_.insertOrFind( lane, zelPlace( node->key() ), *node ) );
   }

   /// Takes the element that equals `key` out; null when there is none.
   Ptr< Node > del( const Key& key ) {
      return { typed( index_.take( lane, zelPlace( key ) ).release() ), adoptReference };
   }
   /// Takes the iterator's element out; null at the end or when it is gone already. Requires: the
   /// iterator walks this collection (asserted).
   Ptr< Node > del( const Iterator& at ) {
      ZEL_ASSERT( at.walks( *this ) );
      return at && at->linked() ? del( at->key() ) : nullptr;
   }
   void deleteAll() { index_.clear( lane ); }

   /// Calls `visit` with each node in ascending order of places. Requires: `visit` does not change
   /// the index.
   template < class Visit >
   void each( const Visit& visit ) const {
      index_.each( lane, [ & ]( SmallKeyNode* node ) { visit( *typed( node ) ); } );
   }

   /// The element behind `node`, which may be gone; null behind the last. For StdIterator.
   Node* next( const Node& node ) const {
      const KeyPlace place = zelPlace( node.key() );
      const bool isLast = place == ( kAscends ? KeyIndex::kHighest : 0 );
      return isLast ? nullptr : from( static_cast< KeyPlace >( kAscends ? place + 1 : place - 1 ) );
   }

   /// For tests: asserts the inside, and the nodes' reference counts, of which iterators hold
   /// `iterators` in total.
   void verify( std::int32_t iterators = 0 ) const {
      index_.verify( lane, iterators );
      for ( const Node* node = from( kAscends ? 0 : KeyIndex::kHighest ); node;
            node = next( *node ) ) {
         ZEL_ASSERT( findNode( node->key() ) == node );
      }
   }

 private:
   static constexpr char zelSourceTag[] = "Zel/SmallKeyMap";
   static constexpr bool kAscends = order == KeyOrder::Ascending;

   static Node* typed( SmallKeyNode* node ) { return static_cast< Node* >( node ); }
   // The first node in the map's order that stands at `place` or behind it.
   Node* from( KeyPlace place ) const {
      const KeyIndex::At found =
         kAscends ? index_.atOrAbove( lane, place ) : index_.atOrBelow( lane, place );
      return found.value ? typed( ( *found.value )[ lane ] ) : nullptr;
   }

   KeyIndex& index_;
};

}   // namespace Zel
