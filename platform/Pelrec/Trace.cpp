// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Trace.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#if __has_include( <sys/single_threaded.h> )
#include <sys/single_threaded.h>
#endif

namespace Pelrec {
namespace {

bool
processHasThreads() {
#if __has_include( <sys/single_threaded.h> )
   return !__libc_single_threaded;
#else
   return true;
#endif
}

// The lock is left alone where nobody else can want it: it would be a sixth of a record's cost.
std::unique_lock< std::mutex >
turnAt( std::mutex& lock ) {
   return processHasThreads() ? std::unique_lock( lock ) : std::unique_lock< std::mutex >();
}

constexpr Geometry kProcessGeometry{ 1024, 512 };

// Zero, and so no part of the library's file.
alignas( sizeof( Slot ) ) constinit std::uint64_t
   processMemory[ kProcessGeometry.imageBytes() / sizeof( std::uint64_t ) ] = {};

[[noreturn]] void
fileError( int error, const char* step, const std::string& path ) {
   throw std::system_error( error, std::generic_category(),
                            std::string( "Pelrec trace: cannot " ) + step + " " + path );
}

// Whether a file of ours stands at `path`. Throws when something else does: it is not ours to
// replace.
bool
ringStandsAt( const std::string& path ) {
   struct stat status {};
   if ( lstat( path.c_str(), &status ) != 0 ) {
      return false;   // what is wrong there, creating a file will tell
   }
   std::uint64_t start = 0;
   if ( S_ISREG( status.st_mode ) ) {
      // It may be something else by now.
      const int file = open( path.c_str(), O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC );
      if ( file < 0 ) {
         fileError( errno, "look into", path );
      }
      if ( read( file, &start, sizeof start ) != sizeof start ) {
         start = 0;
      }
      close( file );
   }
   if ( start != kMagic ) {
      fileError( EEXIST, "replace what is no ring file:", path );
   }
   return true;
}

// A new file of a random name beside `path`, removed again unless it is kept. Nobody else has it
// open or can open it but its owner, so nobody shortens it under the mapping.
class NewFile {
 public:
   explicit NewFile( const std::string& path )
       : path_( path ),
         ownName_( path + ".new.XXXXXX" ),
         descriptor_( mkostemp( ownName_.data(), O_NOFOLLOW | O_CLOEXEC ) ) {
      if ( descriptor_ < 0 ) {
         fileError( errno, "create", path_ );
      }
   }
   ~NewFile() {
      close( descriptor_ );
      if ( !ownName_.empty() ) {
         unlink( ownName_.c_str() );
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

   // Gives the file its name at last; one of that name, if `replaces`, becomes the previous one.
   void keep( bool replaces ) {
      if ( replaces && std::rename( path_.c_str(), ( path_ + ".previous" ).c_str() ) != 0 ) {
         fileError( errno, "rename to .previous:", path_ );
      }
      if ( std::rename( ownName_.c_str(), path_.c_str() ) != 0 ) {
         fileError( errno, "name the new file", path_ );
      }
      ownName_.clear();
   }

 private:
   const std::string& path_;
   std::string ownName_;
   const int descriptor_;
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
   const auto turn = turnAt( lock_ );
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

   const auto turn = turnAt( lock_ );
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
   const auto turn = turnAt( lock_ );
   start();
   const bool replaces = ringStandsAt( path );
   if ( replaces ) {
      ringStandsAt( path + ".previous" );
   }
   const std::size_t bytes = geometry_.imageBytes();
   NewFile file( path );
   void* memory = file.map( bytes );
   std::memcpy( memory, memory_, bytes );
   try {
      file.keep( replaces );
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
   const auto turn = turnAt( lock_ );
   start();
   return std::as_bytes( std::span( memory_, geometry_.imageBytes() / sizeof( *memory_ ) ) );
}

}   // namespace Pelrec
