// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Words.h"

#include <fmt/format.h>

#include "agent/console/Error.h"
#include "agent/console/Text.h"

namespace Agent::Console {
namespace {

constexpr std::string_view kBlanks = " \t\r";
constexpr std::string_view kQuotes = "'\"";
constexpr std::string_view kOpening = "([{";
constexpr std::string_view kClosing = ")]}";

}   // namespace

std::size_t
pieceEnd( std::string_view text, std::size_t at ) {
   std::string awaited;   // the closing brackets, innermost last
   std::size_t end = at;
   do {
      const char c = text[ end ];
      if ( kQuotes.find( c ) != std::string_view::npos ) {
         end = text.find( c, end + 1 );
         if ( end == std::string_view::npos ) {
            break;
         }
      } else if ( const std::size_t kind = kOpening.find( c ); kind != std::string_view::npos ) {
         awaited += kClosing[ kind ];
      } else if ( kClosing.find( c ) != std::string_view::npos ) {
         if ( awaited.empty() || awaited.back() != c ) {
            throw Error( fmt::format( "{} without its partner: {}", c, clipped( text ) ) );
         }
         awaited.pop_back();
      }
      ++end;
   } while ( !awaited.empty() && end < text.size() );
   if ( !awaited.empty() || end == std::string_view::npos ) {
      throw Error(
         fmt::format( "{} is not closed: {}", text[ at ], clipped( text.substr( at ) ) ) );
   }
   return end;
}

std::vector< Word >
splitWords( std::string_view line ) {
   std::vector< Word > words;
   std::size_t at = 0;
   while ( ( at = line.find_first_not_of( kBlanks, at ) ) != std::string_view::npos ) {
      const std::size_t begin = at;
      while ( at < line.size() && kBlanks.find( line[ at ] ) == std::string_view::npos ) {
         at = pieceEnd( line, at );
      }
      words.push_back( { begin, std::string( line.substr( begin, at - begin ) ) } );
   }
   return words;
}

std::string_view
unquoted( std::string_view word ) {
   const bool whole = !word.empty() && kQuotes.find( word[ 0 ] ) != std::string_view::npos &&
                      pieceEnd( word, 0 ) == word.size();
   return whole ? word.substr( 1, word.size() - 2 ) : word;
}

}   // namespace Agent::Console
