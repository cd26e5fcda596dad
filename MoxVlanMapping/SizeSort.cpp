// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/SizeSort.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

namespace MoxVlanMapping {
namespace {

constexpr std::int32_t kSizes = 64;
// One for what is larger, one for each size, and one for ranges whose ends are crossed.
constexpr std::size_t kBuckets = kSizes + 2;
// With fewer ranges the buckets cost more than comparing.
constexpr std::size_t kWorthCounting = 8;

std::size_t
bucketOf( const VlanRangeXlateMapping& range ) {
   return static_cast< std::size_t >( kSizes - std::clamp( range.size(), -1, kSizes ) );
}

}   // namespace

std::span< const VlanRangeXlateMapping >
SizeSort::sorted( const VlanRangeEntry::VlanIdRangeMap& ranges ) {
   byId_.clear();
   byId_.reserve( ranges.size() );
   ranges.each( [ this ]( const VlanRangeEntry::ZelVlanIdRange& element ) {
      byId_.push_back( element.value() );
   } );
   if ( byId_.size() < kWorthCounting ) {
      std::sort( byId_.begin(), byId_.end() );
      return byId_;
   }
   std::array< std::uint32_t, kBuckets > begins{};
   for ( const VlanRangeXlateMapping& range : byId_ ) {
      ++begins[ bucketOf( range ) ];
   }
   std::uint32_t behind = 0;
   for ( std::uint32_t& begin : begins ) {
      const std::uint32_t count = begin;
      begin = behind;
      behind += count;
   }
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
