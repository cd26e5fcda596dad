// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PelrecConverter: how a C++ value becomes the raw argument of a binary trace record.
//
//    letter in a type string   values                                   in the record
//    i                         integers and bool (as 0 and 1)           64 bits, signed or not
//    d                         floating point                           double
//    s                         what converts to std::string_view        its first bytes, inline
//
// A value type joins by a specialisation that gives it one of these forms:
//
//    template<>
//    struct Kirlog::PelrecConverter< VlanId > {
//       static std::uint64_t convert( VlanId id ) { return id.value(); }
//    };
//
// Cost       Nothing is allocated here; text is copied, a null `const char*` as "(null)".
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <type_traits>
#include <utility>

namespace Kirlog {

// convert() returns std::int64_t, std::uint64_t, double, or anything that converts to
// std::string_view and whose text lives as long as it and the value both do.
template < typename T >
struct PelrecConverter;

template < std::signed_integral T >
struct PelrecConverter< T > {
   static std::int64_t convert( T value ) { return value; }
};

template < std::unsigned_integral T >
struct PelrecConverter< T > {
   static std::uint64_t convert( T value ) { return value; }
};

template < std::floating_point T >
struct PelrecConverter< T > {
   static double convert( T value ) { return static_cast< double >( value ); }
};

template < std::convertible_to< std::string_view > T >
struct PelrecConverter< T > {
   static std::string_view convert( const T& value ) {
      if constexpr ( std::is_pointer_v< T > ) {
         return value == nullptr ? std::string_view( "(null)" ) : value;
      } else {
         return value;
      }
   }
};

// The converter for an argument of type T; an array of characters is taken as its pointer.
template < typename T >
using PelrecConverterOf = PelrecConverter< std::decay_t< const T& > >;

// Whether a value of type T may stand where the type string says `letter`.
template < typename T >
constexpr bool
pelrecLetterFits( char letter ) {
   using Converter = PelrecConverterOf< T >;
   if constexpr ( requires( const T& value ) { Converter::convert( value ); } ) {
      using Raw = decltype( Converter::convert( std::declval< const T& >() ) );
      if constexpr ( std::same_as< Raw, std::int64_t > || std::same_as< Raw, std::uint64_t > ) {
         return letter == 'i';
      } else if constexpr ( std::same_as< Raw, double > ) {
         return letter == 'd';
      } else {
         return letter == 's' && std::convertible_to< Raw, std::string_view >;
      }
   }
   return false;
}

}   // namespace Kirlog
