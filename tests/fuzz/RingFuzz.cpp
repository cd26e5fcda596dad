// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The ring decoder: whatever the bytes of an image are, the reader refuses it or gives printable
// records in order, and reads nothing outside of it.
//
// An input that does not begin with the magic number stands behind a good header, of a ring size
// and number of formats that its first byte chooses; else hardly one would come behind the checks.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <sys/mman.h>
#include <unistd.h>

#include "Pelrec/Image.h"
#include "Pelrec/Reader.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using Fuzz::require;
using Pelrec::Record;
// By words, for an image is aligned.
using Bytes = std::vector< std::uint64_t >;

std::vector< std::uint64_t >
imageOf( const std::uint8_t* data, std::size_t size ) {
   if ( size == 0 ) {
      return {};
   }
   std::uint64_t magic = 0;
   std::memcpy( &magic, data, std::min( size, sizeof magic ) );
   if ( magic == Pelrec::kMagic ) {
      // Without the bytes that fill no word, for a read behind the end must show.
      Bytes image( size / sizeof( std::uint64_t ) );
      std::memcpy( image.data(), data, image.size() * sizeof( std::uint64_t ) );
      return image;
   }
   const Pelrec::Geometry geometry{ 1u << ( data[ 0 ] & 3 ), 1u + ( data[ 0 ] >> 2 & 3 ) };
   const Pelrec::ImageHeader header{ .magic = Pelrec::kMagic,
                                     .version = Pelrec::kVersion,
                                     .levels = Pelrec::kLevels,
                                     .slotsPerRing = geometry.slotsPerRing,
                                     .formats = geometry.formats,
                                     .bytes = geometry.imageBytes(),
                                     .unused = {} };
   Bytes image( geometry.imageBytes() / sizeof( std::uint64_t ) );
   std::memcpy( image.data(), &header, sizeof header );
   std::memcpy( image.data() + sizeof header / sizeof( std::uint64_t ), data + 1,
                std::min( size - 1, geometry.imageBytes() - sizeof header ) );
   return image;
}

bool
printable( std::string_view text ) {
   return std::ranges::none_of(
      text, []( char c ) { return static_cast< unsigned char >( c ) < 0x20 || c == 0x7f; } );
}

void
checkRecords( const std::vector< Record >& records ) {
   for ( const Record& record : records ) {
      require( record.sequence != 0, "a record without a number" );
      require( record.level < Pelrec::kLevels, "a record of no level" );
      require( printable( record.text ), "a record that is not printable" );
      const std::string time = Pelrec::wallTime( record.timeNs );
      require( time.size() == 30 && printable( time ), "a time that is none" );
   }
   require( std::ranges::is_sorted( records, {}, &Record::sequence ), "records out of order" );
}

std::string
textOf( const std::vector< Record >& records ) {
   std::string text;
   for ( const Record& record : records ) {
      text += std::to_string( record.sequence ) + '/' + std::to_string( record.level ) + '/' +
              std::to_string( record.timeNs ) + ' ' + record.text + '\n';
   }
   return text;
}

// The records, or nothing when the image is refused.
std::optional< std::vector< Record > >
decoded( std::span< const std::byte > image ) {
   try {
      std::vector< Record > records = Pelrec::Reader( image ).records();
      if ( Fuzz::planted() && !records.empty() && records.front().text.ends_with( "..." ) ) {
         records.front().text.push_back( '\n' );
      }
      return records;
   } catch ( const Pelrec::ImageError& error ) {
      require( printable( error.what() ), "an error that is not printable" );
      return std::nullopt;
   }
}

// Through a file, as the agent reads it.
std::optional< std::vector< Record > >
decodedFile( std::span< const std::byte > image ) {
   static const int file = memfd_create( "ring", MFD_CLOEXEC );
   static const std::string path = "/proc/self/fd/" + std::to_string( file );
   require( ftruncate( file, 0 ) == 0 && pwrite( file, image.data(), image.size(), 0 ) ==
                                            static_cast< ssize_t >( image.size() ),
            "the ring file cannot be written" );
   try {
      return decoded( Pelrec::ImageFile( path ).bytes() );
   } catch ( const Pelrec::ImageError& error ) {
      require( printable( error.what() ), "an error that is not printable" );
      return std::nullopt;
   }
}

}   // namespace

extern "C" int
LLVMFuzzerTestOneInput( const std::uint8_t* data, std::size_t size ) {
   const Bytes words = imageOf( data, size );
   const auto image = std::as_bytes( std::span( words ) );
   const auto records = decoded( image );
   const auto fromFile = decodedFile( image );
   require( records.has_value() == fromFile.has_value(), "memory and file are not both read" );
   if ( !records ) {
      return 0;
   }
   checkRecords( *records );
   require( textOf( *records ) == textOf( *fromFile ), "memory and file are read differently" );
   std::size_t ofLevels = 0;
   for ( unsigned level = 0; level < Pelrec::kLevels; ++level ) {
      const std::vector< Record > some = Pelrec::Reader( image ).records( level );
      require( std::ranges::all_of( some, [ & ]( const Record& r ) { return r.level == level; } ),
               "a record among those of another level" );
      checkRecords( some );
      ofLevels += some.size();
   }
   require( ofLevels == records->size(), "the levels do not add up to the whole" );
   return 0;
}
