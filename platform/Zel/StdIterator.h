// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// StdIterator: forward iterator of a collection; survives any change to it.
//
// It asks the collection for the next element only when it is advanced. "Gone" means deleted from
// the collection, by anybody, by any means.
//
//   stands on              | * and ->          | ++ goes to                        | bool
//   -----------------------+-------------------+-----------------------------------+------
//   a stored element       | the element       | the element that now follows it   | true
//   an element that is gone| the element as it | the first stored element that     | true
//                          | was (stale)       | follows where it stood            |
//   no element (the end)   | asserts "iter_"   | asserts "iter_"                   | false
//
// What follows where: RbTreeMap by the map's order, HashMap2018 by the order of insertion. An
// element that is stored during the whole walk is met exactly once, one that goes before it is
// reached is not met, one that comes during the walk is met if it stands behind the iterator.
//
// Ownership  Holds its place in the collection; the collection must outlive the iterator's use
//            (hold its entity by Ptr).
// Cost       ++ is O(1) amortised in HashMap2018; in RbTreeMap it is the derived class's.
#pragma once

#include <iterator>
#include <utility>

#include "Zel/Assert.h"

namespace Zel {

template < class Collection >
class StdIterator {
 public:
   using Position = typename Collection::Position;

   StdIterator() = default;
   StdIterator( const Collection& collection, Position position )
       : collection_( &collection ), iter_( std::move( position ) ) {}

   explicit operator bool() const { return static_cast< bool >( iter_ ); }

   decltype( auto ) operator*() const {
      ZEL_ASSERT( iter_ );
      return *iter_;
   }
   auto operator->() const { return &**this; }

   StdIterator& operator++() {
      ZEL_ASSERT( iter_ );
      collection_->advance( iter_ );
      return *this;
   }

   /// Whether the element is still stored. False at the end.
   bool linked() const { return iter_ && Collection::linked( iter_ ); }
   /// The counted element, to be kept; made if need be.
   auto element() const {
      ZEL_ASSERT( iter_ );
      return collection_->element( iter_ );
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
   Position iter_;
};

}   // namespace Zel
