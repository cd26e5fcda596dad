// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Reader.h"

#include <algorithm>
#include <bit>
#include <cerrno>
#include <charconv>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Pelrec {
namespace {

void
require( bool holds, const std::string& what ) {
   if ( !holds ) {
      throw ImageError( "Pelrec image: " + what );
   }
}

std::string
within( const char* name, std::uint64_t value, const char* allowed ) {
   return std::string( name ) + " is " + std::to_string( value ) + ", not " + allowed;
}

constexpr std::uint64_t
reversed( std::uint64_t value ) {
   std::uint64_t result = 0;
   for ( int byte = 0; byte < 8; ++byte ) {
      result = ( result << 8 ) | ( ( value >> ( 8 * byte ) ) & 0xff );
   }
   return result;
}

ImageHeader
checkedHeader( std::span< const std::byte > image ) {
   require( reinterpret_cast< std::uintptr_t >( image.data() ) % alignof( Slot ) == 0,
            "does not start at a multiple of 8 bytes" );
   require( image.size() >= sizeof( ImageHeader ),
            within( "size", image.size(), "at least 64 bytes" ) );
   const std::uint64_t magic =
      loadAcquire( *reinterpret_cast< const std::uint64_t* >( image.data() ) );
   require( magic != reversed( kMagic ), "written in the other byte order" );
   require( magic == kMagic, "does not start with the magic number" );
   ImageHeader header;
   std::memcpy( &header, image.data(), sizeof header );
   require( header.version == kVersion, within( "version", header.version, "1" ) );
   require( header.levels == kLevels, within( "number of levels", header.levels, "10" ) );
   require( std::has_single_bit( header.slotsPerRing ) && header.slotsPerRing <= kMaxSlotsPerRing,
            within( "ring size", header.slotsPerRing, "a power of two up to 1048576" ) );
   require( header.formats >= 1 && header.formats <= kMaxFormats,
            within( "number of formats", header.formats, "1 to 65536" ) );
   require( header.bytes == Geometry{ header.slotsPerRing, header.formats }.imageBytes(),
            within( "stated size", header.bytes, "what its parts add up to" ) );
   require( header.bytes <= image.size(),
            within( "size", image.size(), "at least the stated size" ) );
   return header;
}

void
appendPrintable( std::string& text, std::string_view bytes ) {
   for ( const char c : bytes ) {
      const unsigned value = static_cast< unsigned char >( c );
      if ( value < 0x20 || value == 0x7f ) {
         constexpr char digits[] = "0123456789abcdef";
         text.append( { '\\', 'x', digits[ value >> 4 ], digits[ value & 15 ] } );
      } else {
         text.push_back( c );
      }
   }
}

// Takes the arguments of one record off its payload, each as text.
class ArgumentCursor {
 public:
   // `codes` are the type codes as they stand in the slot, `words` the payload.
   ArgumentCursor( const char* codes, const std::uint64_t* words ) {
      std::memcpy( codes_, codes, kMaxArguments );
      std::memcpy( payload_, words, kPayloadBytes );
   }

   bool atEnd() const { return next_ == kMaxArguments || codes_[ next_ ] == 0; }

   // False if the code is unknown or the argument does not lie within the payload.
   // Requires: !atEnd().
   bool appendTo( std::string& text ) {
      switch ( codes_[ next_++ ] ) {
      case 'i':
         return appendNumber< std::int64_t >( text );
      case 'u':
         return appendNumber< std::uint64_t >( text );
      case 'd':
         return appendNumber< double >( text );
      case 's':
         return appendText( text );
      default:
         return false;
      }
   }

 private:
   std::size_t room() const { return kPayloadBytes - used_; }

   template < typename Number >
   bool appendNumber( std::string& text ) {
      Number value;
      if ( room() < sizeof value ) {
         return false;
      }
      std::memcpy( &value, payload_ + used_, sizeof value );
      used_ += sizeof value;
      char digits[ 32 ];
      const auto end = std::to_chars( digits, digits + sizeof digits, value );
      text.append( digits, end.ptr );
      return true;
   }

   bool appendText( std::string& text ) {
      if ( room() < 1 ) {
         return false;
      }
      const unsigned mark = static_cast< unsigned char >( payload_[ used_++ ] );
      const std::size_t length = mark & ( kTextCut - 1 );
      if ( room() < length ) {
         return false;
      }
      appendPrintable( text, std::string_view( payload_ + used_, length ) );
      text.append( ( mark & kTextCut ) != 0 ? "..." : "" );
      used_ += length;
      return true;
   }

   char codes_[ kMaxArguments ];
   char payload_[ kPayloadBytes ];
   std::size_t next_ = 0;
   std::size_t used_ = 0;
};

}   // namespace

Reader::Reader( std::span< const std::byte > image ) {
   const ImageHeader header = checkedHeader( image );
   geometry_ = Geometry{ header.slotsPerRing, header.formats };
   formats_ = reinterpret_cast< const FormatEntry* >( image.data() + sizeof header );
   slots_ = reinterpret_cast< const Slot* >( image.data() + geometry_.ringsOffset() );
}

std::vector< Record >
Reader::records( unsigned level ) const {
   if ( level >= kLevels ) {
      throw std::out_of_range( within( "Pelrec level", level, "0 to 9" ) );
   }
   std::vector< Record > found;
   append( level, found );
   std::ranges::stable_sort( found, {}, &Record::sequence );
   return found;
}

std::vector< Record >
Reader::records() const {
   std::vector< Record > found;
   for ( unsigned level = 0; level < kLevels; ++level ) {
      append( level, found );
   }
   std::ranges::stable_sort( found, {}, &Record::sequence );
   return found;
}

void
Reader::append( unsigned level, std::vector< Record >& records ) const {
   const Slot* ring = slots_ + std::size_t{ level } * geometry_.slotsPerRing;
   for ( const Slot& slot : std::span( ring, geometry_.slotsPerRing ) ) {
      if ( std::optional< Record > found = record( level, slot ) ) {
         records.push_back( std::move( *found ) );
      }
   }
}

std::optional< Record >
Reader::record( unsigned level, const Slot& slot ) const {
   Slot copy;
   for ( std::size_t word = 0; word < kSlotWords; ++word ) {
      copy.words[ word ] = loadAcquire( slot.words[ word ] );
   }
   const std::uint64_t sequence = copy.words[ kSequence ];
   if ( sequence == 0 || loadAcquire( slot.words[ kSequence ] ) != sequence ) {
      return std::nullopt;
   }
   std::optional< std::string > rendered = text( copy );
   if ( !rendered ) {
      return std::nullopt;
   }
   return Record{ sequence, copy.words[ kTime ], level, std::move( *rendered ) };
}

std::optional< std::string >
Reader::text( const Slot& slot ) const {
   std::uint32_t id;
   char codes[ kMaxArguments ];
   const char* idAndCodes = reinterpret_cast< const char* >( &slot.words[ kFormatAndCodes ] );
   std::memcpy( &id, idAndCodes, sizeof id );
   std::memcpy( codes, idAndCodes + sizeof id, sizeof codes );
   if ( id >= geometry_.formats ) {
      return std::nullopt;
   }
   const std::uint64_t length = loadAcquire( formats_[ id ].length );
   if ( length == 0 || length > kMaxFormatBytes ) {
      return std::nullopt;
   }
   std::string_view format( formats_[ id ].text, static_cast< std::size_t >( length ) );
   ArgumentCursor arguments( codes, slot.words + kPayload );
   std::string rendered;
   while ( !arguments.atEnd() ) {
      const std::size_t place = format.find( "%s" );
      appendPrintable( rendered, format.substr( 0, place ) );
      if ( place == std::string_view::npos ) {
         rendered.push_back( ' ' );
         format = {};
      } else {
         format.remove_prefix( place + 2 );
      }
      if ( !arguments.appendTo( rendered ) ) {
         return std::nullopt;
      }
   }
   appendPrintable( rendered, format );
   return rendered;
}

ImageFile::ImageFile( const std::string& path ) {
   // Non-blocking, or a named pipe would hold us here before it is refused.
   const int descriptor = open( path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC );
   if ( descriptor < 0 ) {
      throw ImageError( "Pelrec image: cannot open " + path + ": " +
                        std::generic_category().message( errno ) );
   }
   struct stat status {};
   const bool plain = fstat( descriptor, &status ) == 0 && S_ISREG( status.st_mode );
   const std::size_t size = plain ? static_cast< std::size_t >( status.st_size ) : 0;
   // Mapped, not copied: only in the writer's own memory is an overwritten slot noticed.
   void* memory = mmap( nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0 );
   const int failure = memory == MAP_FAILED ? errno : 0;
   close( descriptor );
   // A text is made only when it is thrown: no memory for it may lose the mapping.
   if ( failure != 0 ) {
      require( size != 0, path + " is empty or no plain file" );
      throw ImageError( "Pelrec image: cannot map " + path + ": " +
                        std::generic_category().message( failure ) );
   }
   bytes_ = { static_cast< const std::byte* >( memory ), size };
}

ImageFile::~ImageFile() {
   munmap( const_cast< std::byte* >( bytes_.data() ), bytes_.size() );
}

std::string
wallTime( std::uint64_t timeNs ) {
   const std::time_t seconds = static_cast< std::time_t >( timeNs / 1'000'000'000u );
   std::tm utc{};
   gmtime_r( &seconds, &utc );
   char day[ 32 ];
   std::strftime( day, sizeof day, "%Y-%m-%dT%H:%M:%S", &utc );
   char fraction[ 16 ];
   std::snprintf( fraction, sizeof fraction, ".%09uZ",
                  static_cast< unsigned >( timeNs % 1'000'000'000u ) );
   return std::string( day ) + fraction;
}

}   // namespace Pelrec
