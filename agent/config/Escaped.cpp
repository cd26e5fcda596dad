// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Escaped.h"

#include <algorithm>
#include <bit>
#include <iterator>

#include <fmt/format.h>

namespace Agent {

namespace {

struct CodePoints {
   char32_t first;
   char32_t last;
};

constexpr CodePoints kControls[] = { { 0x00, 0x1f }, { 0x7f, 0x9f } };

// Line ends and direction marks, and what Unicode calls ignorable by default. Combining accents
// are part of ordinary words.
constexpr CodePoints kUnseen[] = {
   { 0xad, 0xad },       { 0x34f, 0x34f },   { 0x61c, 0x61c },     { 0x115f, 0x1160 },
   { 0x17b4, 0x17b5 },   { 0x180b, 0x180f }, { 0x200b, 0x200f },   { 0x2028, 0x202e },
   { 0x2060, 0x206f },   { 0x3164, 0x3164 }, { 0xfe00, 0xfe0f },   { 0xfeff, 0xfeff },
   { 0xffa0, 0xffa0 },   { 0xfff0, 0xfffb }, { 0x1bca0, 0x1bca3 }, { 0x1d173, 0x1d17a },
   { 0xe0000, 0xe0fff },
};

template < std::size_t n >
bool
isIn( const CodePoints ( &spans )[ n ], char32_t point ) {
   return std::any_of( std::begin( spans ), std::end( spans ), [ point ]( CodePoints span ) {
      return span.first <= point && point <= span.last;
   } );
}

struct Character {
   char32_t point;
   std::size_t size;   // in bytes
};

// The character that `text` begins with. A byte that begins none counts as U+FFFD.
Character
firstOf( std::string_view text ) {
   constexpr char32_t kNone = 0xfffd;
   const auto lead = static_cast< unsigned char >( text.front() );
   if ( lead < 0x80 ) {
      return { lead, 1 };
   }
   const auto size = static_cast< std::size_t >( std::countl_one( lead ) );
   if ( size < 2 || size > 4 || size > text.size() ) {
      return { kNone, 1 };
   }
   char32_t point = lead & ( 0x7fu >> size );
   for ( const char c : text.substr( 1, size - 1 ) ) {
      const auto byte = static_cast< unsigned char >( c );
      if ( byte >> 6 != 0b10 ) {
         return { kNone, 1 };
      }
      point = point << 6 | ( byte & 0x3fu );
   }
   return { point, size };
}

// Calls `each( character, its bytes )`.
template < typename Each >
void
forEachCharacter( std::string_view text, const Each& each ) {
   while ( !text.empty() ) {
      const Character character = firstOf( text );
      each( character.point, text.substr( 0, character.size ) );
      text.remove_prefix( character.size );
   }
}

void
appendEscape( std::string& out, char32_t point ) {
   if ( point <= 0xffff ) {
      fmt::format_to( std::back_inserter( out ), "\\u{:04x}", static_cast< unsigned >( point ) );
      return;
   }
   const char32_t above = point - 0x10000;
   appendEscape( out, 0xd800 + ( above >> 10 ) );
   appendEscape( out, 0xdc00 + ( above & 0x3ff ) );
}

}   // namespace

bool
hasControls( std::string_view text ) {
   bool found = false;
   forEachCharacter( text, [ & ]( char32_t point, std::string_view ) {
      found = found || isIn( kControls, point );
   } );
   return found;
}

std::string
escaped( std::string_view text ) {
   std::string out;
   forEachCharacter( text, [ & ]( char32_t point, std::string_view bytes ) {
      if ( isIn( kControls, point ) || isIn( kUnseen, point ) ) {
         appendEscape( out, point );
      } else {
         out += bytes;
      }
   } );
   return out;
}

}   // namespace Agent
