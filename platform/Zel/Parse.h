// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Parse: reading string forms back.
//
// Every step takes (current, end), advances current past what it consumed, and throws a
// ParseException that says what was expected, what stood there and at which offset.
#pragma once

#include <concepts>
#include <cstdint>
#include <limits>
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

/// Requires that the whole text was consumed.
ZEL_EXPORT void parseEnd( StringIterator current, StringIterator end );

template < std::unsigned_integral T >
T
parseNumber( StringIterator& current, StringIterator end ) {
   return static_cast< T >( parseUnsigned( current, end, std::numeric_limits< T >::max() ) );
}

/// Parses one attribute of a value; its range exception carries the attribute's name.
template < class T >
T
parseAttribute( StringIterator& current, StringIterator end, std::string_view name ) {
   return rethrowWithAttribute( name, [ & ] {
      if constexpr ( std::unsigned_integral< T > ) {
         return parseNumber< T >( current, end );
      } else {
         return T( current, end );
      }
   } );
}

/// The value that a whole text stands for; text left over is a parse error.
template < class T >
T
strepToValue( const String& text ) {
   StringIterator current = text.begin();
   T value( current, text.end() );
   parseEnd( current, text.end() );
   return value;
}

}   // namespace Zel
