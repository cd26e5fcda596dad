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
#include <sys/stat.h>
#include <unistd.h>

namespace Pelrec {
namespace {

// `name`: the image's file and ": ", or nothing.
void
require( bool holds, const std::string& name, const std::string& what ) {
   if ( !holds ) {
      throw ImageError( "Pelrec image: " + name + what );
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

// The geometry of an image of `size` bytes.
Geometry
checkedGeometry( const ImageHeader& header, std::uint64_t size, const std::string& name ) {
   require( header.magic != reversed( kMagic ), name, "written in the other byte order" );
   require( header.magic == kMagic, name, "does not start with the magic number" );
   require( header.version == kVersion, name, within( "version", header.version, "1" ) );
   require( header.levels == kLevels, name, within( "number of levels", header.levels, "10" ) );
   require( std::has_single_bit( header.slotsPerRing ) && header.slotsPerRing <= kMaxSlotsPerRing,
            name, within( "ring size", header.slotsPerRing, "a power of two up to 1048576" ) );
   require( header.formats >= 1 && header.formats <= kMaxFormats, name,
            within( "number of formats", header.formats, "1 to 65536" ) );
   const Geometry geometry{ header.slotsPerRing, header.formats };
   require( header.bytes == geometry.imageBytes(), name,
            within( "stated size", header.bytes, "what its parts add up to" ) );
   require( header.bytes <= size, name, within( "size", size, "at least the stated size" ) );
   return geometry;
}

void
requireRoomForHeader( std::uint64_t size, const std::string& name ) {
   require( size >= sizeof( ImageHeader ), name, within( "size", size, "at least 64 bytes" ) );
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

// A file that is open for reading.
class PlainFile {
 public:
   explicit PlainFile( const std::string& path )
       : path_( path ),
         // Non-blocking, or a named pipe would hold us here before it is refused.
         descriptor_( open( path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC ) ) {
      if ( descriptor_ < 0 ) {
         fail( "open" );
      }
   }
   ~PlainFile() { close( descriptor_ ); }
   PlainFile( const PlainFile& ) = delete;
   PlainFile& operator=( const PlainFile& ) = delete;

   std::uint64_t size() const {
      struct stat status {};
      if ( fstat( descriptor_, &status ) != 0 ) {
         fail( "look at" );
      }
      require( S_ISREG( status.st_mode ), path_, " is no plain file" );
      return static_cast< std::uint64_t >( status.st_size );
   }

   template < class Part >
   void read( std::size_t offset, std::span< Part > parts ) const {
      for ( auto bytes = std::as_writable_bytes( parts ); !bytes.empty(); ) {
         const ssize_t got =
            pread( descriptor_, bytes.data(), bytes.size(), static_cast< off_t >( offset ) );
         if ( got > 0 ) {
            offset += static_cast< std::size_t >( got );
            bytes = bytes.subspan( static_cast< std::size_t >( got ) );
         } else if ( got == 0 ) {
            require( false, path_, " ended while it was read" );
         } else if ( errno != EINTR ) {
            fail( "read" );
         }
      }
   }

 private:
   [[noreturn]] void fail( const char* step ) const {
      const std::string cause = std::generic_category().message( errno );
      throw ImageError( std::string( "Pelrec image: cannot " ) + step + " " + path_ + ": " +
                        cause );
   }

   const std::string path_;
   const int descriptor_;
};

}   // namespace

Reader::Reader( std::span< const std::byte > image ) {
   require( reinterpret_cast< std::uintptr_t >( image.data() ) % alignof( Slot ) == 0, "",
            "does not start at a multiple of 8 bytes" );
   requireRoomForHeader( image.size(), "" );
   ImageHeader header;
   // First, for the rest of the header stands before the magic number does.
   const std::uint64_t magic =
      loadAcquire( *reinterpret_cast< const std::uint64_t* >( image.data() ) );
   std::memcpy( &header, image.data(), sizeof header );
   header.magic = magic;
   geometry_ = checkedGeometry( header, image.size(), "" );
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
   const PlainFile file( path );
   const std::string name = path + ": ";
   const std::uint64_t size = file.size();
   requireRoomForHeader( size, name );
   ImageHeader header;
   file.read( 0, std::span( &header, 1 ) );
   const Geometry geometry = checkedGeometry( header, size, name );

   image_.resize( geometry.imageBytes() / sizeof( Slot ) );
   const auto slots = std::span( image_ ).subspan( geometry.ringsOffset() / sizeof( Slot ) );
   file.read( geometry.ringsOffset(), slots );
   // After the slots, for then the formats that they name are complete.
   file.read( 0, std::span( image_ ).first( image_.size() - slots.size() ) );
   // A slot that was written to meanwhile may be half old and half new. It is not the same any more
   // then, and left out.
   std::vector< Slot > ring( geometry.slotsPerRing );
   for ( std::size_t at = 0; at < slots.size(); at += ring.size() ) {
      file.read( geometry.ringsOffset() + at * sizeof( Slot ), std::span( ring ) );
      for ( std::size_t i = 0; i < ring.size(); ++i ) {
         if ( std::memcmp( &slots[ at + i ], &ring[ i ], sizeof( Slot ) ) != 0 ) {
            slots[ at + i ] = {};
         }
      }
   }
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
