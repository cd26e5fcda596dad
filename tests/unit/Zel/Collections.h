// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Collections: the kinds of collection that the container tests run on.
//
// Each maps a number to a number and offers is() (insert or overwrite) and show() ("1=10 2=20").
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>

#include "Zel/HashMap2018.h"
#include "Zel/KeyIndex.h"
#include "Zel/NewEntity.h"
#include "Zel/RbTreeMap.h"
#include "Zel/SmallKeyMap.h"

namespace TestCollections {

/// A number whose greater values come first.
struct Backward {
   std::uint32_t number = 0;
   friend bool operator==( Backward, Backward ) = default;
   friend bool operator<( Backward a, Backward b ) { return a.number > b.number; }
};

inline std::uint32_t
numberOf( std::uint32_t key ) {
   return key;
}
template < class Key >
std::uint32_t
numberOf( Key key ) {
   return key.number;
}

/// Numbers up to 65535 in a map of small keys.
struct Small {
   std::uint32_t number = 0;
   friend bool operator==( Small, Small ) = default;
};
inline std::uint16_t
zelPlace( Small key ) {
   return static_cast< std::uint16_t >( key.number );
}

/// A node with a key and a value.
template < class Base, class Key >
class KeyedNode : public Base {
 public:
   static constexpr char zelTypeName[] = "TestCollections::KeyedNode";
   const Key& key() const { return key_; }
   int value() const { return value_; }
   void valueIs( int value ) { value_ = value; }

 protected:
   KeyedNode( Key key, int value ) : key_( key ), value_( value ) {}

 private:
   const Key key_;
   int value_;
};

/// A node whose key may be written, as refilling does.
class RefillNode : public Zel::RbTreeNode< std::uint32_t > {
 public:
   static constexpr char zelTypeName[] = "TestCollections::RefillNode";
   std::uint32_t key() const { return key_; }
   void keyIs( std::uint32_t key ) { key_ = key; }

 protected:
   explicit RefillNode( std::uint32_t key ) : key_( key ) {}

 private:
   std::uint32_t key_;
};

struct OwnIndex {
   Zel::KeyIndex index;
};

/// A map of small keys that shares its index with no other.
template < class MapType >
class LoneSmallKeyMap : private OwnIndex, public MapType {
 public:
   LoneSmallKeyMap() : MapType( OwnIndex::index ) {}
   void trim() { OwnIndex::index.trim(); }
};

/// The collection's map with a mutator and a rendering.
template < class MapType >
struct Collection : MapType {
   using Key = typename MapType::Key;
   using Node = typename MapType::Node;

   /// Inserts or overwrites in place.
   void is( std::uint32_t number, int value ) {
      const Key key{ number };
      if ( Node* node = this->findNode( key ) ) {
         node->valueIs( value );
      } else {
         this->insert( Zel::newEntity< Node >( key, value ) );
      }
   }
   bool erase( std::uint32_t number ) { return this->del( Key{ number } ) != nullptr; }

   std::string show() const {
      std::string text;
      for ( const Node& node : *this ) {
         text += ( text.empty() ? "" : " " ) + std::to_string( numberOf( node.key() ) ) + "=" +
                 std::to_string( node.value() );
      }
      return text;
   }
};

using Ascending =
   Collection< Zel::RbTreeMap< KeyedNode< Zel::RbTreeNode< std::uint32_t >, std::uint32_t > > >;
using Descending =
   Collection< Zel::RbTreeMap< KeyedNode< Zel::RbTreeNode< Backward >, Backward > > >;
using SmallNode = KeyedNode< Zel::SmallKeyNode, Small >;
using SmallAscending =
   Collection< LoneSmallKeyMap< Zel::SmallKeyMap< SmallNode, Zel::KeyIndex::kFirst > > >;
using SmallDescending = Collection< LoneSmallKeyMap<
   Zel::SmallKeyMap< SmallNode, Zel::KeyIndex::kSecond, Zel::KeyOrder::Descending > > >;
using Hashed =
   Collection< Zel::HashMap2018< KeyedNode< Zel::HashNode, std::uint32_t >, 0x1234567 > >;

template < class CollectionType >
constexpr bool kDescending = std::is_same_v< CollectionType, Descending > ||
                             std::is_same_v< CollectionType, SmallDescending >;

}   // namespace TestCollections
