// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SizeOrders: what the owner of a peer keeps beside the index of each interface to have its ranges
// in order of size: a set that is cleared and refilled, or a vector that is refilled and sorted.
//
// Threads  One.
#pragma once

#include <absl/container/btree_set.h>

#include <algorithm>
#include <functional>
#include <set>
#include <vector>

#include "MoxVlanMapping/VlanRange.h"
#include "bench/Peers.h"

namespace Bench {

using MoxVlanMapping::VlanRangeXlateMapping;

struct StdSetOrder : std::set< VlanRangeXlateMapping > {
   static constexpr const char* kName = "std::set";
   void finish() {}
};

struct BtreeSetOrder : absl::btree_set< VlanRangeXlateMapping > {
   static constexpr const char* kName = "btree_set";
   void finish() {}
};

struct SortedVectorOrder : std::vector< VlanRangeXlateMapping > {
   static constexpr const char* kName = "sorted vector";
   void insert( const VlanRangeXlateMapping& range ) { push_back( range ); }
   void finish() { std::ranges::sort( *this, std::less<>() ); }
};

/// The order that goes with an index, made of the same container where it can be.
template < class Index >
struct SizeOrderOf {
   using Type = StdSetOrder;
};
template <>
struct SizeOrderOf< TreeIndex< AbslTree > > {
   using Type = BtreeSetOrder;
};
template <>
struct SizeOrderOf< SortedVectorIndex > {
   using Type = SortedVectorOrder;
};
template <>
struct SizeOrderOf< FlatIndex > {
   using Type = SortedVectorOrder;
};

template < class Index >
struct WithSizeOrder : Index {
   typename SizeOrderOf< Index >::Type order;
};

/// A peer whose interfaces are sorted and walked.
template < class Index >
class SortedPeer : public ByInterface< WithSizeOrder< Index > > {
 public:
   static constexpr const char* kName = SizeOrderOf< Index >::Type::kName;

   void sort( Corvel::IntfId intf ) {
      auto& own = this->of( intf );
      own.order.clear();
      own.forEach( [ & ]( Vid low, Vid high, Mapping mapping ) {
         own.order.insert( VlanRangeXlateMapping( Bridging::VlanId::fromRaw( low ),
                                                  Bridging::VlanId::fromRaw( high ), mapping ) );
      } );
      own.order.finish();
   }
   void forget( Corvel::IntfId intf ) { this->of( intf ).order = {}; }
   template < class Visit >
   void walk( Corvel::IntfId intf, const Visit& visit ) {
      for ( const VlanRangeXlateMapping& range : this->of( intf ).order ) {
         visit( range );
      }
   }
};

}   // namespace Bench
