// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/SizeOrder.h"

#include <algorithm>
#include <array>
#include <functional>
#include <numeric>

#include "Zel/Assert.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/SizeOrder";

using Range = VlanRangeXlateMapping;
using Element = VlanXlateScaleEntry::VidRangeSorted;

constexpr std::int32_t kSizes = 64;
// One for what is larger, one for each size, and one for ranges whose ends are crossed.
constexpr std::size_t kBuckets = kSizes + 2;
// With fewer ranges the buckets cost more than comparing.
constexpr std::size_t kWorthCounting = 8;

// Not std::clamp(): its check of its bounds keeps it from being inlined where it counts.
std::size_t
bucketOf( const Range& range ) {
   return static_cast< std::size_t >( kSizes - std::min( std::max( range.size(), -1 ), kSizes ) );
}

bool
isBefore( const Element& a, const Element& b ) {
   return a.key() < b.key();
}

std::ptrdiff_t
offset( std::size_t index ) {
   return static_cast< std::ptrdiff_t >( index );
}

// Through iterators, for buckets and places are right by construction, and a checked index makes
// sorting 16 ranges a fifth slower.
void
sortByCounting( const RangeStore& ranges, std::vector< Element >& sorted ) {
   std::array< std::uint32_t, kBuckets > buckets{};
   const auto begins = buckets.begin();
   ranges.forEachRange( [ & ]( const Range& range ) { ++begins[ bucketOf( range ) ]; } );
   std::exclusive_scan( buckets.begin(), buckets.end(), begins, 0u );
   const auto first = sorted.begin();
   ranges.forEachRange( [ & ]( const Range& range ) {
      first[ begins[ bucketOf( range ) ]++ ] = Element( range, true );
   } );
   // By now each begin is its bucket's end. The buckets of many sizes are still in order of ids.
   std::sort( first, first + begins[ 0 ], isBefore );
   std::sort( first + begins[ kBuckets - 2 ], sorted.end(), isBefore );
}

void
sortByComparing( const RangeStore& ranges, std::vector< Element >& sorted ) {
   auto behind = sorted.begin();
   ranges.forEachRange( [ & ]( const Range& range ) { *behind++ = Element( range, true ); } );
   if ( sorted.size() > 1 ) {
      std::sort( sorted.begin(), sorted.end(), isBefore );
   }
}

}   // namespace

std::size_t
SizeOrder::lowerBound( const Range& range ) const {
   const auto at = std::ranges::lower_bound( elements_, range, std::less<>(), &Element::key );
   return static_cast< std::size_t >( at - elements_.begin() );
}

std::size_t
SizeOrder::find( const Range& range ) const {
   for ( std::size_t i = lowerBound( range );
         i < elements_.size() && !( range < elements_[ i ].key() ); ++i ) {
      if ( elements_[ i ].key() == range ) {
         return i;
      }
   }
   return elements_.size();
}

std::optional< bool >
SizeOrder::flag( const Range& range ) const {
   const std::size_t at = find( range );
   return at < elements_.size() ? std::optional( elements_[ at ].value() ) : std::nullopt;
}

void
SizeOrder::is( const Range& range, bool flag ) {
   const Element element( range, flag );
   if ( const std::size_t stored = find( range ); stored < elements_.size() ) {
      elements_[ stored ] = element;
      overwritten( static_cast< std::uint32_t >( stored ), element );
      return;
   }
   const auto behindTwins =
      std::ranges::upper_bound( elements_, range, std::less<>(), &Element::key );
   const auto index = static_cast< std::uint32_t >( behindTwins - elements_.begin() );
   elements_.insert( behindTwins, element );
   cursors().reposition( [ & ]( const Position& at ) {
      const std::uint32_t position = at.spot().position;
      const bool isBehind =
         position > index || ( position == index && ( at.linked() || range < ( *at ).key() ) );
      return position + ( isBehind ? 1 : 0 );
   } );
   inserted();
}

std::optional< bool >
SizeOrder::del( const Range& range ) {
   const std::size_t index = find( range );
   if ( index == elements_.size() ) {
      return std::nullopt;
   }
   const bool flag = elements_[ index ].value();
   elements_.erase( elements_.begin() + offset( index ) );
   erased( static_cast< std::uint32_t >( index ) );
   cursors().reposition( [ & ]( const Position& at ) {
      return at.spot().position - ( at.spot().position > index ? 1 : 0 );
   } );
   return flag;
}

void
SizeOrder::deleteAll() {
   elements_ = std::vector< Element >();
   cleared();
   cursors().reposition( []( const Position& ) { return 0u; } );
}

void
SizeOrder::refill( const RangeStore& ranges ) {
   const std::uint32_t count = ranges.vlanIdRange().size();
   if ( elements_.capacity() < count || elements_.capacity() / 4 > count ) {
      std::vector< Element > fitting;
      fitting.reserve( count );
      elements_ = std::move( fitting );
   }
   elements_.resize( count );
   if ( count < kWorthCounting ) {
      sortByComparing( ranges, elements_ );
   } else {
      sortByCounting( ranges, elements_ );
   }
   cleared();
   inserted( count );
   cursors().reposition( [ & ]( const Position& at ) {
      return static_cast< std::uint32_t >( lowerBound( ( *at ).key() ) );
   } );
}

std::optional< SizeOrder::Spot >
SizeOrder::spotAt( std::size_t index ) const {
   return index < elements_.size()
           ? std::optional( Spot{ static_cast< std::uint32_t >( index ), elements_[ index ] } )
           : std::nullopt;
}

std::optional< SizeOrder::Spot >
SizeOrder::spotOf( const Range& key ) const {
   return spotAt( find( key ) );
}

std::optional< SizeOrder::Spot >
SizeOrder::spotOrNext( const Range& key ) const {
   const std::size_t equal = find( key );
   if ( equal < elements_.size() ) {
      return spotAt( equal );
   }
   const auto greater = std::ranges::upper_bound( elements_, key, std::less<>(), &Element::key );
   return spotAt( static_cast< std::size_t >( greater - elements_.begin() ) );
}

bool
SizeOrder::spotBehind( const Position& position, Spot& spot ) const {
   std::size_t following = position.spot().position;
   // What went and came again where the iterator stood is passed.
   const bool isPassed =
      position.linked() ||
      ( following < elements_.size() && elements_[ following ].key() == ( *position ).key() );
   following += isPassed ? 1 : 0;
   if ( following >= elements_.size() ) {
      return false;
   }
   spot.position = static_cast< std::uint32_t >( following );
   spot.element = elements_.data()[ following ];
   return true;
}

void
SizeOrder::verify() const {
   ZEL_ASSERT( elements_.size() == size() );
   for ( std::size_t i = 0; i < elements_.size(); ++i ) {
      ZEL_ASSERT( i == 0 || !isBefore( elements_[ i ], elements_[ i - 1 ] ) );
      ZEL_ASSERT( find( elements_[ i ].key() ) == i );
   }
}

}   // namespace MoxVlanMapping
