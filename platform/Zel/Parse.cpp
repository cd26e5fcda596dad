// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Parse.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <string>
#include <system_error>

namespace Zel {
namespace {

constexpr std::size_t kShownCharacters = 24;

std::string_view
restOf( StringIterator current, StringIterator end ) {
   return { current.base(), static_cast< std::size_t >( end.base() - current.base() ) };
}

[[noreturn]] void
fail( StringIterator at, StringIterator end, const std::string& expected ) {
   const std::string_view rest = restOf( at, end );
   std::string found = "the end of the text";
   if ( !rest.empty() ) {
      found = "\"" + std::string( rest.substr( 0, kShownCharacters ) ) +
              ( rest.size() > kShownCharacters ? "...\"" : "\"" );
   }
   throw ParseException( "expected " + expected + ", found " + found + " at offset " +
                            std::to_string( at.offset() ),
                         at.offset() );
}

bool
isDigit( char c ) {
   return c >= '0' && c <= '9';
}

}   // namespace

void
parseLiteral( StringIterator& current, StringIterator end, std::string_view literal ) {
   if ( !restOf( current, end ).starts_with( literal ) ) {
      fail( current, end, "\"" + std::string( literal ) + "\"" );
   }
   current += literal.size();
}

std::uint64_t
parseUnsigned( StringIterator& current, StringIterator end, std::uint64_t greatest ) {
   const StringIterator start = current;
   std::uint64_t number = 0;
   bool fits = true;
   while ( !( current == end ) && isDigit( *current ) ) {
      const auto digit = static_cast< std::uint64_t >( *current - '0' );
      fits = fits && digit <= greatest && number <= ( greatest - digit ) / 10;
      number = number * 10 + digit;
      ++current;
   }
   if ( current == start || !fits ) {
      current = start;
      fail( start, end, "a number from 0 to " + std::to_string( greatest ) );
   }
   return number;
}

std::size_t
parseChoice( StringIterator& current, StringIterator end, std::span< const char* const > choices ) {
   std::string expected;
   for ( std::size_t i = 0; i < choices.size(); ++i ) {
      const std::string_view choice = choices[ i ];
      if ( restOf( current, end ).starts_with( choice ) ) {
         current += choice.size();
         return i;
      }
      expected += ( i == 0 ? "" : " or " ) + std::string( choice );
   }
   fail( current, end, expected );
}

bool
parseBool( StringIterator& current, StringIterator end ) {
   constexpr const char* choices[] = { "false", "true" };
   return parseChoice( current, end, choices ) == 1;
}

double
parseDouble( StringIterator& current, StringIterator end ) {
   double number = 0;
   const auto [ behind, error ] = std::from_chars( current.base(), end.base(), number );
   if ( error != std::errc() || !std::isfinite( number ) ) {
      fail( current, end, "a decimal number" );
   }
   current += static_cast< std::size_t >( behind - current.base() );
   return number;
}

void
parseEnd( StringIterator current, StringIterator end ) {
   if ( !( current == end ) ) {
      fail( current, end, "the end of the text" );
   }
}

}   // namespace Zel
