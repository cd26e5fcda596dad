// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Bytes: an input as a stream of small decisions. Behind its end everything is 0.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string>

namespace Fuzz {

class Bytes {
 public:
   explicit Bytes( std::span< const std::uint8_t > bytes ) : rest_( bytes ) {}

   bool atEnd() const { return rest_.empty(); }

   std::uint8_t byte() {
      if ( rest_.empty() ) {
         return 0;
      }
      const std::uint8_t first = rest_.front();
      rest_ = rest_.subspan( 1 );
      return first;
   }
   /// 0 to limit - 1; takes nothing where there is no choice. Requires: limit is 1 to 256.
   std::size_t below( std::size_t limit ) { return limit == 1 ? 0 : byte() % limit; }
   bool oneIn( std::size_t n ) { return below( n ) == n - 1; }

   template < class Number >
   Number raw() {
      std::uint8_t bytes[ sizeof( Number ) ];
      for ( std::uint8_t& b : bytes ) {
         b = byte();
      }
      Number number;
      std::memcpy( &number, bytes, sizeof number );
      return number;
   }
   /// Up to 7 characters.
   std::string text() {
      std::string all( below( 8 ), ' ' );
      for ( char& c : all ) {
         c = static_cast< char >( byte() );
      }
      return all;
   }

 private:
   std::span< const std::uint8_t > rest_;
};

}   // namespace Fuzz
