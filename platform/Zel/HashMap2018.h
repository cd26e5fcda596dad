// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// HashMap2018: hash map or hash set of counted nodes.
//
// Node       Derives from HashNode and has key(); what else it holds is the value, nothing in a
//            set. zelHash( key, seed ), found beside the key type, hashes it.
// Seed       The process-wide seed when the container is made, XORed with the constant that its
//            declaration names.
// Order      A walk follows the order of insertion, whatever is inserted, deleted or rehashed
//            meanwhile; a key that was deleted and comes again comes last (first in, first out).
// Cost       find, insert, delete, advance: O(1) on average; each hashes its key once at most.
// Iterators  Usable after any change, their own element's deletion included (StdIterator.h).
// Threads    One thread, no locks; that goes for look-ups too, which remember what they found.
#pragma once

#include <cstdint>
#include <iterator>
#include <type_traits>
#include <utility>

#include "Zel/Assert.h"
#include "Zel/Hash.h"
#include "Zel/HashTable.h"
#include "Zel/Ptr.h"
#include "Zel/StdIterator.h"

namespace Zel {

/// Node of a set: the key alone.
template < class KeyType >
class HashSetNode : public HashNode {
 public:
   const KeyType& key() const { return key_; }

 protected:
   explicit HashSetNode( const KeyType& key ) : key_( key ) {}

 private:
   const KeyType key_;
};

/// Node of a map from a key to a counted entity, whose key stands in the entity itself.
template < class Entity, class KeyFunktor >
class HashEntityNode : public HashNode {
 public:
   auto key() const { return KeyFunktor()( *entity_ ); }
   const Ptr< Entity >& entity() const { return entity_; }

 protected:
   explicit HashEntityNode( const Ptr< Entity >& entity ) : entity_( entity ) {}

 private:
   const Ptr< Entity > entity_;
};

template < class NodeType, std::uint32_t SeedConstant >
class HashMap2018 {
 public:
   using Node = NodeType;
   using Key = std::remove_cvref_t< decltype( std::declval< const Node& >().key() ) >;
   using Position = Ptr< const Node >;
   using Iterator = StdIterator< HashMap2018 >;

   HashMap2018() : table_( hashSeed() ^ SeedConstant ) {}
   ~HashMap2018() { deleteAll(); }

   std::uint32_t size() const { return table_.size(); }
   bool empty() const { return table_.size() == 0; }
   /// Elements ever inserted or deleted; wraps.
   std::uint32_t changes() const { return table_.changes(); }
   std::uint32_t seed() const { return table_.seed(); }

   Iterator first() const { return { *this, typed( table_.first() ) }; }
   /// The element that came last; at the end in an empty collection.
   Iterator last() const { return { *this, typed( table_.last() ) }; }
   Iterator begin() const { return first(); }
   std::default_sentinel_t end() const { return {}; }

   /// The node of `key`, or null. No reference is taken: not to be kept across a change.
   Node* findNode( const Key& key ) const {
      Node* const guess = guessed( key );
      return guess ? guess : search( key, zelHash( key, table_.seed() ) );
   }
   bool contains( const Key& key ) const { return findNode( key ) != nullptr; }
   Iterator findElement( const Key& key ) const { return { *this, findNode( key ) }; }

   /// Makes room for one element more: the next insert() does not throw.
   void reserveOne() { table_.reserveOne(); }
   /// The node of `key`, and whether it is new: what `make` returned (a Ptr to a node of that key),
   /// called only when there was none. One look-up in all. Throws what `make` throws and
   /// std::bad_alloc, with nothing changed. Requires: `make` leaves the collection alone.
   template < class Make >
   std::pair< Node*, bool > findOrInsert( const Key& key, Make make ) {
      if ( Node* const guess = guessed( key ) ) {
         return { guess, false };
      }
      const std::uint32_t hash = zelHash( key, table_.seed() );
      if ( Node* const found = search( key, hash ) ) {
         return { found, false };
      }
      Ptr< Node > made = make();
      Node* const node = made.get();
      table_.link( std::move( made ), hash );
      lastFound_ = node;
      return { node, true };
   }
   /// Requires: no element equals the node's key (asserted). May throw std::bad_alloc, with
   /// nothing changed.
   void insert( Ptr< Node > node ) {
      const Node& asked = *node;
      const bool isNew = findOrInsert( asked.key(), [ & ] { return std::move( node ); } ).second;
      ZEL_ASSERT( isNew );
   }

   /// Takes a stored node out.
   Ptr< Node > unlink( const Node& node ) {
      lastFound_ = nullptr;
      return { typed( table_.unlink( const_cast< Node& >( node ) ).release() ), adoptReference };
   }
   /// Takes the node of `key` out; null when there is none.
   Ptr< Node > del( const Key& key ) {
      const Node* node = findNode( key );
      return node ? unlink( *node ) : nullptr;
   }
   /// Takes the iterator's element out; null at the end or when it is gone already. Requires: the
   /// iterator walks this collection (asserted).
   Ptr< Node > del( const Iterator& at ) {
      ZEL_ASSERT( at.walks( *this ) );
      return at.linked() ? unlink( *at ) : nullptr;
   }
   /// Takes out what is stored now; what is inserted when a node goes stays.
   void deleteAll() {
      // One by one: what runs when a node goes may look others up.
      for ( std::uint32_t known = size(); known > 0 && !empty(); --known ) {
         unlink( *typed( table_.first() ) );
      }
   }

   // For StdIterator: a position is the node, which may be gone; null behind the last.
   void advance( Position& position ) const { position = typed( table_.next( *position ) ); }
   static bool linked( const Position& position ) { return position->linked(); }
   static const Position& element( const Position& position ) { return position; }

   /// For tests: asserts buckets, thread, size, hashes and the nodes' reference counts, of which
   /// iterators on stored elements hold `iterators` in total.
   void verify( std::int32_t iterators = 0 ) const {
      table_.verify( iterators );
      for ( const HashNode* node = table_.first(); node; node = table_.next( *node ) ) {
         ZEL_ASSERT( findNode( typed( node )->key() ) == node );
      }
   }

 private:
   static constexpr char zelSourceTag[] = "Zel/HashMap2018";

   // The node of `key` where it is likely: look-ups come in runs of one key, or go through the keys
   // as they were inserted.
   Node* guessed( const Key& key ) const {
      if ( !lastFound_ || lastFound_->key() == key ) {
         return lastFound_;
      }
      Node* const follower = typed( table_.follower( *lastFound_ ) );
      return follower && follower->key() == key ? lastFound_ = follower : nullptr;
   }
   Node* search( const Key& key, std::uint32_t hash ) const {
      for ( HashNode* node = table_.bucket( hash ); node; node = HashTable::bucketNext( *node ) ) {
         if ( node->zelStoredHash() == hash && typed( node )->key() == key ) {
            return lastFound_ = typed( node );
         }
      }
      return nullptr;
   }

   static Node* typed( HashNode* node ) { return static_cast< Node* >( node ); }
   static const Node* typed( const HashNode* node ) { return static_cast< const Node* >( node ); }

   HashTable table_;
   mutable Node* lastFound_ = nullptr;
};

}   // namespace Zel
