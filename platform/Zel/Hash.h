// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Hash: seeded hashing of attributes.
//
// The process-wide seed is drawn at random when it is first asked for, unless the environment
// variable ZEL_HASH_SEED (a decimal number, 0 to 4294967295) or hashSeedIs() fixes it. Each hash
// container keeps the seed that was in force when it was made, XORed with a constant of its own.
// Keys are multiplied by factors drawn from the seed, so whoever knows this code but not the
// seed cannot choose keys that collide.
#pragma once

#include <bit>
#include <concepts>
#include <cstdint>
#include <string_view>

#include "Zel/Export.h"

namespace Zel {

ZEL_EXPORT std::uint32_t hashSeed();
/// Containers made from now on use `seed`; those that exist keep theirs.
ZEL_EXPORT void hashSeedIs( std::uint32_t seed );

/// Spreads a number's bits over 64 bits; a bijection.
constexpr std::uint64_t
hashSpread( std::uint64_t x ) {
   x += 0x9e3779b97f4a7c15u;
   x = ( x ^ ( x >> 30 ) ) * 0xbf58476d1ce4e5b9u;
   x = ( x ^ ( x >> 27 ) ) * 0x94d049bb133111ebu;
   return x ^ ( x >> 31 );
}

/// Hash of one attribute's value.
constexpr std::uint32_t
singleAttrHash( std::uint64_t value, std::uint32_t seed ) {
   // Multiply-shift with odd factors from the seed, twice: the first product makes the choice of
   // colliding keys depend on the seed, the second carries it into all result bits.
   const std::uint64_t factor = ( std::uint64_t{ seed } + 1 ) * 0x9e3779b97f4a7c15u;
   std::uint64_t product = ( value + factor ) * ( factor | 1 );
   product ^= product >> 32;
   product *= ( factor >> 17 ) | 1;
   return static_cast< std::uint32_t >( product >> 32 ) ^ static_cast< std::uint32_t >( product );
}

/// Collects the words of a value in order; the result depends on the seed, every word and
/// their order.
class HashAccumulator {
 public:
   explicit constexpr HashAccumulator( std::uint32_t seed ) : state_( hashSpread( seed ) ) {}
   constexpr void mix( std::uint32_t word ) { state_ = hashSpread( state_ ^ word ); }
   constexpr std::uint32_t result() const {
      return static_cast< std::uint32_t >( state_ ^ ( state_ >> 32 ) );
   }

 private:
   std::uint64_t state_;
};

/// Hash of a plain number used as a key.
template < std::unsigned_integral T >
constexpr std::uint32_t
zelHash( T value, std::uint32_t seed ) {
   return singleAttrHash( value, seed );
}
constexpr std::uint32_t
zelHash( double value, std::uint32_t seed ) {
   return singleAttrHash( std::bit_cast< std::uint64_t >( value + 0.0 ), seed );   // -0 equals 0
}
constexpr std::uint32_t
zelHash( std::string_view text, std::uint32_t seed ) {
   HashAccumulator accumulator( seed );
   for ( const char c : text ) {
      accumulator.mix( static_cast< unsigned char >( c ) );
   }
   return accumulator.result();
}

}   // namespace Zel
