// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyArray: values by 16-bit place, in order; the form of a KeyIndex that holds few.
//
// Shape      Sorted places, and the values beside them in the same block: a search reads places
//            alone.
// Memory     One block that doubles when it is full and does not shrink.
// Cost       Search O(log n); insertion and erasure move what stands behind.
// Throws     std::bad_alloc from roomIs() and grow() alone.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <type_traits>
#include <utility>

#include "Zel/KeyPlace.h"

namespace Zel {

template < class Value >
class KeyArray {
 public:
   using At = KeyAt< Value >;

   std::uint32_t size() const { return size_; }
   /// What stands at an index; none behind the last.
   At at( std::size_t index ) const {
      return index < size_ ? At{ places_[ index ], &values_[ index ] } : At{};
   }
   /// Index of a stored value.
   std::size_t indexOf( const Value& value ) const {
      return static_cast< std::size_t >( &value - values_ );
   }

   /// Index of the first place that is not below `place`; size() for none.
   std::size_t notBelow( std::uint32_t place ) const {
      // Steps by a mask, for no branch predictor knows the way down.
      const KeyPlace* at = places_;
      std::size_t rest = size_;
      while ( rest > 1 ) {
         const std::size_t half = rest / 2;
         at += half & ( std::size_t{ 0 } - std::size_t{ at[ half - 1 ] < place } );
         rest -= half;
      }
      const auto index = static_cast< std::size_t >( at - places_ );
      return rest == 1 && *at < place ? index + 1 : index;
   }
   /// The value at `place`, or null.
   Value* find( KeyPlace place ) const {
      const At found = atOrAbove( place );
      return found.place == place ? found.value : nullptr;
   }

   At atOrAbove( std::uint32_t place ) const { return at( notBelow( place ) ); }
   // The index below the first wraps, and nothing stands there.
   At atOrBelow( std::uint32_t place ) const { return at( notBelow( place + 1 ) - 1 ); }
   void around( KeyPlace place, KeyAround< Value >& found ) const {
      const std::size_t above = notBelow( place + 1u );
      found.below = at( above - 1 );
      found.above = at( above );
   }

   /// Calls `visit` with each place and its value, in order.
   template < class Visit >
   void each( const Visit& visit ) const {
      for ( std::size_t i = 0; i < size_; ++i ) {
         visit( places_[ i ], values_[ i ] );
      }
   }

   /// How many fit in all.
   std::uint32_t room() const { return room_; }
   /// Makes room for one more at least.
   void grow() { roomIs( std::max( 2 * room_, kFirstRoom ) ); }
   /// Requires: `room` is not less than size().
   void roomIs( std::uint32_t room );
   void trim() { *this = {}; }

   /// Requires: `index` is notBelow( place ), `place` is not in use, and there is room.
   Value& insertAt( std::size_t index, KeyPlace place, const Value& value ) {
      if ( index < size_ ) {
         std::copy_backward( places_ + index, places_ + size_, places_ + size_ + 1 );
         std::copy_backward( values_ + index, values_ + size_, values_ + size_ + 1 );
      }
      ++size_;
      places_[ index ] = place;
      return values_[ index ] = value;
   }
   void eraseAt( std::size_t index ) {
      --size_;
      if ( index < size_ ) {
         std::copy( places_ + index + 1, places_ + size_ + 1, places_ + index );
         std::copy( values_ + index + 1, values_ + size_ + 1, values_ + index );
      }
   }
   /// Gives a value another place. Requires: none is in use between.
   Value* move( At from, KeyPlace to ) {
      places_[ indexOf( *from.value ) ] = to;
      return from.value;
   }

 private:
   static_assert( std::is_trivially_copyable_v< Value > );
   static constexpr std::uint32_t kFirstRoom = 4;

   std::unique_ptr< std::byte[] > block_;   // values, places behind them
   Value* values_ = nullptr;
   KeyPlace* places_ = nullptr;
   std::uint32_t size_ = 0;
   std::uint32_t room_ = 0;
};

template < class Value >
void
KeyArray< Value >::roomIs( std::uint32_t room ) {
   auto block = std::make_unique< std::byte[] >( room * ( sizeof( Value ) + sizeof( KeyPlace ) ) );
   auto* const values = reinterpret_cast< Value* >( block.get() );
   auto* const places = reinterpret_cast< KeyPlace* >( values + room );
   std::copy_n( values_, size_, values );
   std::copy_n( places_, size_, places );
   block_ = std::move( block );
   values_ = values;
   places_ = places;
   room_ = room;
}

}   // namespace Zel
