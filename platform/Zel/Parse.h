// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Parse: reading string forms back.
//
// Every step takes (current, end), advances current past what it consumed, and throws a
// ParseException that says what was expected, what stood there and at which offset.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string_view>

#include "Zel/Exception.h"
#include "Zel/Export.h"
#include "Zel/String.h"

namespace Zel {

/// Requires exactly `literal` here.
ZEL_EXPORT void parseLiteral( StringIterator& current, StringIterator end,
                              std::string_view literal );

/// A decimal number, digits only, 0 to `greatest`.
ZEL_EXPORT std::uint64_t parseUnsigned( StringIterator& current, StringIterator end,
                                        std::uint64_t greatest );

/// "true" or "false".
ZEL_EXPORT bool parseBool( StringIterator& current, StringIterator end );

/// One of `choices`, none of which begins with an earlier one; returns its place.
ZEL_EXPORT std::size_t parseChoice( StringIterator& current, StringIterator end,
                                    std::span< const char* const > choices );

/// A decimal number as valueToStrep( double ) writes it; finite.
ZEL_EXPORT double parseDouble( StringIterator& current, StringIterator end );

/// Requires that the whole text was consumed.
ZEL_EXPORT void parseEnd( StringIterator current, StringIterator end );

template < std::unsigned_integral T >
requires( !std::same_as< T, bool > ) T parseNumber( StringIterator& current, StringIterator end ) {
   return static_cast< T >( parseUnsigned( current, end, std::numeric_limits< T >::max() ) );
}

/// One value. A class parses in a constructor from (current, end); a type that cannot have one has
/// a function zelParseValue( current, end, T& ) beside it. A String takes all that is left.
template < class T >
T
parseValue( StringIterator& current, StringIterator end ) {
   if constexpr ( std::same_as< T, bool > ) {
      return parseBool( current, end );
   } else if constexpr ( std::unsigned_integral< T > ) {
      return parseNumber< T >( current, end );
   } else if constexpr ( std::same_as< T, double > ) {
      return parseDouble( current, end );
   } else if constexpr ( std::same_as< T, String > ) {
      const std::string_view rest( current.base(),
                                   static_cast< std::size_t >( end.base() - current.base() ) );
      current = end;
      return rest;
   } else if constexpr ( std::constructible_from< T, StringIterator&, StringIterator > ) {
      return T( current, end );
   } else {
      T value;
      zelParseValue( current, end, value );
      return value;
   }
}

/// Parses one attribute of a value; its range exception carries the attribute's name.
template < class T >
T
parseAttribute( StringIterator& current, StringIterator end, std::string_view name ) {
   return rethrowWithAttribute( name, [ & ] { return parseValue< T >( current, end ); } );
}

/// The value that a whole text stands for; text left over is a parse error.
template < class T >
T
strepToValue( const String& text ) {
   StringIterator current = text.begin();
   T value = parseValue< T >( current, text.end() );
   parseEnd( current, text.end() );
   return value;
}

}   // namespace Zel
