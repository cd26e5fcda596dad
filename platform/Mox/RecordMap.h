// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RecordMap: hash map of VLAN mapping records by a PortVlanKey.
#pragma once

#include <cstdint>

#include "Mox/PortVlanKey.h"
#include "Zel/HashMap2018.h"
#include "Zel/NewEntity.h"

namespace Mox {

/// `Node` derives from RecordNode and carries the type name that its allocations count under.
template < class Node, std::uint32_t SeedConstant >
class RecordMap : public Zel::HashMap2018< Node, SeedConstant > {
 public:
   using Record = typename Node::Record;

   /// The record under `key`, or null; not to be kept across a change.
   const Record* record( const PortVlanKey& key ) const {
      const Node* node = this->findNode( key );
      return node ? &node->value() : nullptr;
   }

   /// Inserts or overwrites. False when an equal record stands there already.
   bool recordIs( const Record& record ) {
      const auto [ node, isNew ] =
         this->findOrInsert( record.key(), [ & ] { return Zel::newEntity< Node >( record ); } );
      if ( isNew || node->value() == record ) {
         return isNew;
      }
      node->valueIs( record );
      return true;
   }
};

template < class RecordType >
class RecordNode : public Zel::HashNode {
 public:
   using Record = RecordType;

   const PortVlanKey& key() const { return record_.key(); }
   const Record& value() const { return record_; }
   /// Requires: the same key.
   void valueIs( const Record& record ) { record_ = record; }

 protected:
   explicit RecordNode( const Record& record ) : record_( record ) {}

 private:
   Record record_;
};

}   // namespace Mox
