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

std::size_t
bucketOf( const VlanRangeXlateMapping& range ) {
   return static_cast< std::size_t >( kSizes - std::clamp( range.size(), -1, kSizes ) );
}

}   // namespace

std::span< const VlanRangeXlateMapping >
SizeSort::sorted( const VlanRangeEntry::VlanIdRangeMap& ranges ) {
   byId_.resize( ranges.size() );
   auto behind = byId_.begin();
   if ( ranges.size() < kWorthCounting ) {
      ranges.each( [ & ]( const RangeElement& element ) { *behind++ = element.value(); } );
      if ( byId_.size() > 1 ) {
         std::sort( byId_.begin(), byId_.end() );
      }
      return byId_;
   }
   std::array< std::uint32_t, kBuckets > begins{};
   ranges.each( [ & ]( const RangeElement& element ) {
      *behind++ = element.value();
      ++begins[ bucketOf( element.value() ) ];
   } );
   std::exclusive_scan( begins.begin(), begins.end(), begins.begin(), 0u );
   bySize_.resize( byId_.size() );
   for ( const VlanRangeXlateMapping& range : byId_ ) {
      bySize_[ begins[ bucketOf( range ) ]++ ] = range;
   }
   // By now each begin is its bucket's end. The buckets of many sizes are still in order of ids.
   std::sort( bySize_.begin(), bySize_.begin() + begins.front() );
   std::sort( bySize_.begin() + begins[ kBuckets - 2 ], bySize_.end() );
   return bySize_;
}

}   // namespace MoxVlanMapping
