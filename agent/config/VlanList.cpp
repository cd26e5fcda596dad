// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/VlanList.h"

#include <stdexcept>

#include <fmt/format.h>

#include "agent/config/LocatedJson.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

namespace {

bool
isDigit( char c ) {
   return c >= '0' && c <= '9';
}

class Parser {
 public:
   explicit Parser( std::string_view text ) : text_( text ) {}

   ParsedVlanList parse() {
      while ( element() ) {
         if ( at_ == text_.size() ) {
            return std::move( parsed_ );
         }
         if ( text_[ at_ ] != ',' ) {
            fail( at_, "expected \",\" or the end" );
            break;
         }
         ++at_;
      }
      parsed_.ids.clear();
      return std::move( parsed_ );
   }

 private:
   // One id or one range.
   bool element() {
      const std::size_t lowAt = at_;
      std::uint16_t low = 0;
      if ( !id( low ) ) {
         return false;
      }
      if ( !parsed_.ids.empty() && low <= parsed_.ids.back() ) {
         return fail( lowAt, fmt::format( "expected a VLAN id above {}", parsed_.ids.back() ) );
      }
      std::uint16_t high = low;
      if ( at_ < text_.size() && text_[ at_ ] == '-' ) {
         const std::size_t highAt = ++at_;
         if ( !id( high ) ) {
            return false;
         }
         if ( high < low ) {
            return fail( highAt, fmt::format( "expected a VLAN id of at least {}", low ) );
         }
      }
      for ( std::uint16_t vlan = low; vlan <= high; ++vlan ) {
         parsed_.ids.push_back( vlan );
      }
      return true;
   }

   bool id( std::uint16_t& out ) {
      const std::size_t from = at_;
      unsigned value = 0;
      while ( at_ < text_.size() && isDigit( text_[ at_ ] ) && value <= kMaxVlanId ) {
         value = value * 10 + static_cast< unsigned >( text_[ at_ ] - '0' );
         ++at_;
      }
      const bool leadingZero = at_ > from && text_[ from ] == '0';
      if ( at_ == from || leadingZero || value > kMaxVlanId ) {
         return fail( from, "expected a VLAN id 1..4094" );
      }
      out = static_cast< std::uint16_t >( value );
      return true;
   }

   bool fail( std::size_t offset, std::string_view expected ) {
      std::size_t end = offset;
      while ( end < text_.size() && isDigit( text_[ end ] ) ) {
         ++end;
      }
      const std::string_view found =
         text_.substr( offset, end == offset ? text_.size() : end - offset );
      parsed_.errorOffset = offset;
      parsed_.error =
         fmt::format( "offset {}: {}, found {}", offset, expected,
                      found.empty() ? "the end" : fmt::format( "\"{}\"", shownText( found ) ) );
      return false;
   }

   std::string_view text_;
   std::size_t at_ = 0;
   ParsedVlanList parsed_;
};

}   // namespace

std::string
formatVlanList( std::span< const std::uint16_t > ids ) {
   std::string out;
   for ( std::size_t i = 0; i < ids.size(); ) {
      std::size_t last = i;
      while ( last + 1 < ids.size() && ids[ last + 1 ] == ids[ last ] + 1 ) {
         ++last;
      }
      if ( ids[ i ] < kMinVlanId || ids[ last ] > kMaxVlanId ||
           ( i > 0 && ids[ i ] <= ids[ i - 1 ] ) ) {
         throw std::invalid_argument( "VLAN ids must ascend within 1..4094" );
      }
      if ( i > 0 ) {
         out += ',';
      }
      out += fmt::to_string( ids[ i ] );
      if ( last != i ) {
         out += fmt::format( "-{}", ids[ last ] );
      }
      i = last + 1;
   }
   return out;
}

ParsedVlanList
parseVlanList( std::string_view text ) {
   return Parser( text ).parse();
}

}   // namespace Agent
