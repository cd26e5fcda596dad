// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Twins: an ordered map whose key type orders by one field and compares two.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "Zel/NewEntity.h"
#include "Zel/RbTreeMap.h"

namespace TestCollections {

struct Twin {
   static constexpr bool kTwins = true;
   std::uint32_t number = 0;
   char tag = 'a';
   friend bool operator==( Twin, Twin ) = default;
   friend bool operator<( Twin a, Twin b ) { return a.number < b.number; }
};

class TwinNode : public Zel::RbTreeNode< Twin > {
 public:
   static constexpr char zelTypeName[] = "TestCollections::TwinNode";
   const Twin& key() const { return key_; }
   void keyIs( const Twin& key ) { key_ = key; }

 protected:
   explicit TwinNode( Twin key ) : key_( key ) {}

 private:
   Twin key_;
};

struct TwinMap : Zel::RbTreeMap< TwinNode > {
   void add( Twin key ) { insert( Zel::newEntity< TwinNode >( key ) ); }
   void fill( const std::vector< Twin >& keys ) {
      std::vector< TwinNode* > nodes;
      refill(
         keys, nodes, [] { return Zel::newEntity< TwinNode >( Twin() ); },
         []( TwinNode& node, const Twin& key ) { node.keyIs( key ); } );
   }

   static std::string name( Twin key ) { return std::to_string( key.number ) + key.tag; }
   /// "3z 5b 5a"
   std::string show() const {
      std::string text;
      for ( const TwinNode& node : *this ) {
         text += ( text.empty() ? "" : " " ) + name( node.key() );
      }
      return text;
   }
};

}   // namespace TestCollections
