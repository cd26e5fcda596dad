// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/SizeSort.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <numeric>

namespace MoxVlanMapping {
namespace {

constexpr std::int32_t kSizes = 64;
// One for what is larger, one for each size, and one for ranges whose ends are crossed.
constexpr std::size_t kBuckets = kSizes + 2;
// With fewer ranges the buckets cost more than comparing.
constexpr std::size_t kWorthCounting = 8;

using RangeElement = VlanRangeEntry::ZelVlanIdRange;

// Not std::clamp(): its check of its bounds keeps it from being inlined where it counts.
std::size_t
bucketOf( const VlanRangeXlateMapping& range ) {
   return static_cast< std::size_t >( kSizes - std::min( std::max( range.size(), -1 ), kSizes ) );
}

}   // namespace

std::span< const VlanRangeXlateMapping >
SizeSort::sorted( const VlanRangeEntry::VlanIdRangeMap& ranges ) {
   byId_.resize( ranges.size() );
   return ranges.size() < kWorthCounting ? compared( ranges ) : counted( ranges );
}

std::span< const VlanRangeXlateMapping >
SizeSort::compared( const VlanRangeEntry::VlanIdRangeMap& ranges ) {
   auto behind = byId_.begin();
   ranges.each( [ & ]( const RangeElement& element ) { *behind++ = element.value(); } );
   if ( byId_.size() > 1 ) {
      std::sort( byId_.begin(), byId_.end() );
   }
   return byId_;
}

// Through iterators, for buckets and places are right by construction, and a checked index makes
// sorting 16 ranges a fifth slower.
std::span< const VlanRangeXlateMapping >
SizeSort::counted( const VlanRangeEntry::VlanIdRangeMap& ranges ) {
   auto behind = byId_.begin();
   std::array< std::uint32_t, kBuckets > buckets{};
   const auto begins = buckets.begin();
   ranges.each( [ & ]( const RangeElement& element ) {
      *behind++ = element.value();
      ++begins[ bucketOf( element.value() ) ];
   } );
   std::exclusive_scan( buckets.begin(), buckets.end(), begins, 0u );
   bySize_.resize( byId_.size() );
   const auto bySize = bySize_.begin();
   for ( const VlanRangeXlateMapping& range : byId_ ) {
      bySize[ begins[ bucketOf( range ) ]++ ] = range;
   }
   // By now each begin is its bucket's end. The buckets of many sizes are still in order of ids.
   std::sort( bySize, bySize + begins[ 0 ] );
   std::sort( bySize + begins[ kBuckets - 2 ], bySize_.end() );
   return bySize_;
}

}   // namespace MoxVlanMapping
