// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SmallTrace: a trace whose image is small enough to be damaged byte by byte, and helpers that
// show records as text.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Pelrec/Image.h"
#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"

// One line "sequence/level text" for each record.
inline std::string
shown( const std::vector< Pelrec::Record >& records ) {
   std::string lines;
   for ( const Pelrec::Record& record : records ) {
      lines += std::to_string( record.sequence ) + '/' + std::to_string( record.level ) + ' ' +
               record.text + '\n';
   }
   return lines;
}

inline std::string
shown( std::span< const std::byte > image ) {
   return shown( Pelrec::Reader( image ).records() );
}

// The message of the ImageError with which the bytes are refused, empty if they are not.
inline std::string
refusal( std::span< const std::byte > image ) {
   try {
      Pelrec::Reader( image ).records();
   } catch ( const Pelrec::ImageError& error ) {
      return error.what();
   }
   return "";
}

inline void
put( Pelrec::Arguments& arguments, std::string_view text ) {
   arguments.put( text, 0 );
}

template < typename Number >
requires std::integral< Number > || std::floating_point< Number >
void
put( Pelrec::Arguments& arguments, Number number ) {
   arguments.put( number );
}

class SmallTrace {
 public:
   static constexpr Pelrec::Geometry kGeometry{ 4, 4 };

   Pelrec::Trace& trace() { return trace_; }

   template < typename... Args >
   void write( unsigned level, std::string_view format, const Args&... args ) {
      Pelrec::Arguments arguments;
      ( put( arguments, args ), ... );
      trace_.write( level, trace_.formatIs( format ), arguments );
   }

   std::string shown() { return ::shown( trace_.image() ); }

   // The image, to be changed at will.
   std::span< std::byte > bytes() {
      trace_.image();
      return std::as_writable_bytes( std::span( memory_ ) );
   }
   Pelrec::ImageHeader& header() {
      return *reinterpret_cast< Pelrec::ImageHeader* >( bytes().data() );
   }
   Pelrec::FormatEntry& format( std::size_t id ) {
      return reinterpret_cast< Pelrec::FormatEntry* >( &header() + 1 )[ id ];
   }
   Pelrec::Slot& slot( unsigned level, std::size_t index ) {
      return reinterpret_cast< Pelrec::Slot* >(
         bytes().data() + kGeometry.ringsOffset() )[ level * kGeometry.slotsPerRing + index ];
   }
   // The four type codes in a slot.
   char* codes( unsigned level, std::size_t index ) {
      return reinterpret_cast< char* >( &slot( level, index ).words[ Pelrec::kFormatAndCodes ] ) +
             sizeof( std::uint32_t );
   }

 private:
   std::vector< std::uint64_t > memory_ =
      std::vector< std::uint64_t >( kGeometry.imageBytes() / sizeof( std::uint64_t ) );
   Pelrec::Trace trace_{ memory_.data(), kGeometry };
};
