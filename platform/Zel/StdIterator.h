// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// StdIterator: forward iterator of a collection of counted nodes; survives any change to it.
//
// It holds a reference to the node it stands on and asks the collection for the next one only
// when it is advanced. "Gone" means deleted from the collection, by anybody, by any means.
//
//   stands on              | * and ->          | ++ goes to                        | bool
//   -----------------------+-------------------+-----------------------------------+------
//   a stored element       | the element       | the element that now follows it   | true
//   an element that is gone| the element as it | the first stored element that     | true
//                          | was (stale)       | follows where it stood            |
//   no element (the end)   | asserts "iter_"   | asserts "iter_"                   | false
//
// What follows where: RbTreeMap and SmallKeyMap by the map's order, HashMap2018 by the order of
// insertion. An element that is stored during the whole walk is met exactly once, one that goes before it is
// reached is not met, one that comes during the walk is met if it stands behind the iterator.
//
// Ownership  Holds its node; the collection must outlive the iterator (hold its entity by Ptr).
// Cost       ++ on a stored element O(1) amortised; on one that is gone O(log n) in RbTreeMap,
//            O(1) amortised in HashMap2018. In SmallKeyMap that of its index: O(1) while both
//            collections in it have the same keys, else O(n) in those of the other alone.
#pragma once

#include <iterator>

#include "Zel/Assert.h"
#include "Zel/Ptr.h"

namespace Zel {

template < class Collection >
class StdIterator {
 public:
   using Node = typename Collection::Node;

   StdIterator() = default;
   StdIterator( const Collection& collection, const Node* node )
       : collection_( &collection ), iter_( node ) {}

   explicit operator bool() const { return static_cast< bool >( iter_ ); }

   const Node& operator*() const {
      ZEL_ASSERT( iter_ );
      return *iter_;
   }
   const Node* operator->() const { return &**this; }

   StdIterator& operator++() {
      ZEL_ASSERT( iter_ );
      iter_ = collection_->next( *iter_ );
      return *this;
   }

   /// Whether the iterator walks this collection; true at the end.
   bool walks( const Collection& collection ) const { return !iter_ || collection_ == &collection; }

   /// Same element, or both at the end.
   friend bool operator==( const StdIterator& a, const StdIterator& b ) {
      return a.iter_ == b.iter_;
   }
   friend bool operator==( const StdIterator& a, std::default_sentinel_t ) { return !a; }

 private:
   static constexpr char zelSourceTag[] = "Zel/StdIterator";

   const Collection* collection_ = nullptr;
   Ptr< const Node > iter_;
};

}   // namespace Zel
