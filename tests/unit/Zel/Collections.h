// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Hashed: a hash map from a number to a number, for tests that run on every kind of collection.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "Zel/HashMap2018.h"
#include "Zel/NewEntity.h"

namespace TestCollections {

/// A node with a key and a value.
class KeyedNode : public Zel::HashNode {
 public:
   static constexpr char zelTypeName[] = "TestCollections::KeyedNode";
   const std::uint32_t& key() const { return key_; }
   int value() const { return value_; }
   void valueIs( int value ) { value_ = value; }

 protected:
   KeyedNode( std::uint32_t key, int value ) : key_( key ), value_( value ) {}

 private:
   const std::uint32_t key_;
   int value_;
};

struct Hashed : Zel::HashMap2018< KeyedNode, 0x1234567 > {
   using HashMap2018::del;

   static std::uint32_t keyOf( std::uint32_t number ) { return number; }
   static std::uint32_t numberOf( std::uint32_t key ) { return key; }
   static int valueOf( int value ) { return value; }
   static int valueIn( int value ) { return value; }

   /// Inserts or overwrites in place.
   void is( std::uint32_t number, int value ) {
      if ( Node* node = findNode( number ) ) {
         node->valueIs( value );
      } else {
         insert( Zel::newEntity< Node >( number, value ) );
      }
   }
   /// The value of what was deleted.
   std::optional< int > erase( std::uint32_t number ) {
      const auto gone = del( number );
      return gone ? std::optional( gone->value() ) : std::nullopt;
   }
   std::optional< int > del( const Iterator& at ) {
      const auto gone = HashMap2018::del( at );
      return gone ? std::optional( gone->value() ) : std::nullopt;
   }

   /// "1=10 2=20"
   std::string show() const {
      std::string text;
      for ( const Node& node : *this ) {
         text += ( text.empty() ? "" : " " ) + std::to_string( node.key() ) + "=" +
                 std::to_string( node.value() );
      }
      return text;
   }
};

}   // namespace TestCollections
