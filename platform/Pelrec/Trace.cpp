// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Trace.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Pelrec {
namespace {

constexpr Geometry kProcessGeometry{ 1024, 512 };

// Zero, and so no part of the library's file.
alignas( sizeof( Slot ) ) constinit std::uint64_t
   processMemory[ kProcessGeometry.imageBytes() / sizeof( std::uint64_t ) ] = {};

[[noreturn]] void
fileError( int error, const char* step, const std::string& path ) {
   throw std::system_error( error, std::generic_category(),
                            std::string( "Pelrec trace: cannot " ) + step + " " + path );
}

// A new file, removed again unless it is kept.
class NewFile {
 public:
   explicit NewFile( std::string path )
       : path_( std::move( path ) ),
         descriptor_(
            open( path_.c_str(), O_RDWR | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0640 ) ) {
      if ( descriptor_ < 0 ) {
         fileError( errno, "create", path_ );
      }
   }
   ~NewFile() {
      close( descriptor_ );
      if ( !path_.empty() ) {
         unlink( path_.c_str() );
      }
   }
   NewFile( const NewFile& ) = delete;
   NewFile& operator=( const NewFile& ) = delete;

   void* map( std::size_t bytes ) {
      // Takes the disk space now: a page without any would kill the process when written to.
      const int error = posix_fallocate( descriptor_, 0, static_cast< off_t >( bytes ) );
      if ( error != 0 ) {
         fileError( error, "reserve space for", path_ );
      }
      void* memory = mmap( nullptr, bytes, PROT_READ | PROT_WRITE, MAP_SHARED, descriptor_, 0 );
      if ( memory == MAP_FAILED ) {
         fileError( errno, "map", path_ );
      }
      return memory;
   }

   // Gives the file its name at last; a file of that name becomes the previous one.
   void keepAs( const std::string& path ) {
      struct stat status {};
      if ( lstat( path.c_str(), &status ) == 0 ) {
         if ( !S_ISREG( status.st_mode ) ) {
            fileError( EEXIST, "replace what is not a plain file:", path );
         }
         if ( std::rename( path.c_str(), ( path + ".previous" ).c_str() ) != 0 ) {
            fileError( errno, "rename to .previous:", path );
         }
      }
      if ( std::rename( path_.c_str(), path.c_str() ) != 0 ) {
         fileError( errno, "name the new file", path );
      }
      path_.clear();
   }

 private:
   std::string path_;
   int descriptor_;
};

}   // namespace

constinit Trace Trace::process_( processMemory, kProcessGeometry );

void
Trace::start() {
   if ( formatsUsed_ != 0 ) {
      return;
   }
   addFormat( "(format table is full)" );
   ImageHeader& head = *part< ImageHeader >( 0 );
   head.version = kVersion;
   head.levels = kLevels;
   head.slotsPerRing = geometry_.slotsPerRing;
   head.formats = geometry_.formats;
   head.bytes = geometry_.imageBytes();
   storeRelease( head.magic, kMagic );
}

std::uint32_t
Trace::addFormat( std::string_view format ) {
   FormatEntry& entry = formatEntry( formatsUsed_ );
   std::memcpy( entry.text, format.data(), format.size() );
   storeRelease( entry.length, format.size() );
   return formatsUsed_++;
}

std::uint32_t
Trace::formatIs( std::string_view format ) {
   start();
   for ( std::uint32_t id = kNoRoomFormat + 1; id < formatsUsed_; ++id ) {
      const FormatEntry& known = formatEntry( id );
      if ( format == std::string_view( known.text, static_cast< std::size_t >( known.length ) ) ) {
         return id;
      }
   }
   return formatsUsed_ < geometry_.formats ? addFormat( format ) : kNoRoomFormat;
}

void
Trace::write( unsigned level, std::uint32_t format, const Arguments& arguments ) {
   std::uint64_t formatAndCodes = 0;
   char* bytes = reinterpret_cast< char* >( &formatAndCodes );
   std::memcpy( bytes, &format, sizeof format );
   std::memcpy( bytes + sizeof format, arguments.codes_, sizeof arguments.codes_ );

   const std::size_t slots = geometry_.slotsPerRing;
   const auto place = static_cast< std::size_t >( written_[ level ]++ & ( slots - 1 ) );
   Slot& target = part< Slot >( geometry_.ringsOffset() )[ level * slots + place ];
   storeRelease( target.words[ kSequence ], 0 );
   storeRelease( target.words[ kTime ], clock_.nowNs() );
   storeRelease( target.words[ kFormatAndCodes ], formatAndCodes );
   for ( std::size_t at = 0; at < arguments.used_; at += sizeof( std::uint64_t ) ) {
      std::uint64_t word;
      std::memcpy( &word, arguments.payload_ + at, sizeof word );
      storeRelease( target.words[ kPayload + at / sizeof word ], word );
   }
   storeRelease( target.words[ kSequence ], ++sequence_ );
}

void
Trace::fileIs( const std::string& path ) {
   start();
   const std::size_t bytes = geometry_.imageBytes();
   NewFile file( path + ".new." + std::to_string( getpid() ) );
   void* memory = file.map( bytes );
   std::memcpy( memory, memory_, bytes );
   try {
      file.keepAs( path );
   } catch ( ... ) {
      munmap( memory, bytes );
      throw;
   }
   if ( mapped_ ) {
      munmap( memory_, bytes );
   }
   memory_ = static_cast< std::uint64_t* >( memory );
   mapped_ = true;
}

std::span< const std::byte >
Trace::image() {
   start();
   return std::as_bytes( std::span( memory_, geometry_.imageBytes() / sizeof( *memory_ ) ) );
}

}   // namespace Pelrec
