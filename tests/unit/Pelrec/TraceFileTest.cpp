// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Trace.h"

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <set>
#include <string>
#include <system_error>

#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Pelrec/Reader.h"
#include "tests/unit/Pelrec/SmallTrace.h"

namespace {

using testing::HasSubstr;
using testing::Not;

class TraceFileTest : public testing::Test {
 protected:
   TraceFileTest() {
      std::string folder = testing::TempDir() + "TraceFileTest.XXXXXX";
      folder_ = mkdtemp( folder.data() );
   }
   ~TraceFileTest() override { std::filesystem::remove_all( folder_ ); }

   std::string path( const std::string& name ) const { return folder_ / name; }

   std::string files() const {
      std::set< std::string > names;
      for ( const auto& entry : std::filesystem::directory_iterator( folder_ ) ) {
         names.insert( entry.path().filename() );
      }
      std::string list;
      for ( const std::string& name : names ) {
         list += name + '\n';
      }
      return list;
   }

   // What this process has mapped into its memory.
   static std::string mappings() {
      std::ifstream maps( "/proc/self/maps" );
      return { std::istreambuf_iterator( maps ), {} };
   }

   static std::size_t descriptors() {
      return static_cast< std::size_t >(
         std::distance( std::filesystem::directory_iterator( "/proc/self/fd" ), {} ) );
   }

   // What another process would print of the file.
   std::string inFile( const std::string& name ) const {
      return shown( Pelrec::ImageFile( path( name ) ).bytes() );
   }

   std::string textOf( const std::string& name ) const {
      std::ifstream file( path( name ) );
      return std::string( std::istreambuf_iterator< char >( file ), {} );
   }

   // The message with which fileIs() refuses `name`, without the path of the test's folder.
   std::string fileRefusal( const std::string& name ) {
      try {
         small_.trace().fileIs( path( name ) );
      } catch ( const std::system_error& error ) {
         std::string what = error.what();
         for ( std::size_t at; ( at = what.find( folder_.string() ) ) != std::string::npos; ) {
            what.erase( at, folder_.string().size() + 1 );
         }
         return what;
      }
      return "";
   }

   std::filesystem::path folder_;
   SmallTrace small_;
};

TEST_F( TraceFileTest, TakesOverRecordsAndFormats ) {
   small_.write( 5, "before %s", std::int64_t{ 1 } );
   small_.write( 6, "before, too" );
   small_.trace().fileIs( path( "trace" ) );
   EXPECT_EQ( inFile( "trace" ), "1/5 before 1\n2/6 before, too\n" );
}

TEST_F( TraceFileTest, GetsWhatIsWrittenLaterUnderOldAndNewFormats ) {
   small_.write( 5, "old %s", std::int64_t{ 1 } );
   small_.trace().fileIs( path( "trace" ) );
   small_.write( 5, "old %s", std::int64_t{ 2 } );
   small_.write( 5, "new %s", std::int64_t{ 3 } );
   EXPECT_EQ( inFile( "trace" ), "1/5 old 1\n2/5 old 2\n3/5 new 3\n" );
}

TEST_F( TraceFileTest, LeavesOneFile ) {
   small_.trace().fileIs( path( "trace" ) );
   EXPECT_EQ( files(), "trace\n" );
}

TEST_F( TraceFileTest, KeepsTheFileOfTheRunBefore ) {
   SmallTrace crashed;
   crashed.write( 5, "last words" );
   crashed.trace().fileIs( path( "trace" ) );
   small_.trace().fileIs( path( "trace" ) );
   small_.write( 5, "hello again" );
   EXPECT_EQ( inFile( "trace.previous" ), "1/5 last words\n" );
   EXPECT_EQ( inFile( "trace" ), "1/5 hello again\n" );
}

TEST_F( TraceFileTest, CanMoveToAnotherFile ) {
   small_.trace().fileIs( path( "first" ) );
   small_.write( 5, "in both" );
   small_.trace().fileIs( path( "second" ) );
   small_.write( 5, "in the second" );
   EXPECT_EQ( inFile( "first" ), "1/5 in both\n" );
   EXPECT_EQ( inFile( "second" ), "1/5 in both\n2/5 in the second\n" );
}

TEST_F( TraceFileTest, LetsGoOfTheFileItLeaves ) {
   small_.trace().fileIs( path( "first" ) );
   EXPECT_THAT( mappings(), HasSubstr( path( "first" ) ) );
   small_.trace().fileIs( path( "second" ) );
   EXPECT_THAT( mappings(), Not( HasSubstr( path( "first" ) ) ) );
   EXPECT_THAT( mappings(), HasSubstr( path( "second" ) ) );
}

TEST_F( TraceFileTest, HoldsNoDescriptor ) {
   const std::size_t before = descriptors();
   small_.trace().fileIs( path( "trace" ) );
   EXPECT_NE( fileRefusal( "nowhere/trace" ), "" );
   std::filesystem::create_directory( path( "folder" ) );
   EXPECT_NE( fileRefusal( "folder" ), "" );
   EXPECT_EQ( descriptors(), before );
}

// Then the file that is opened next gets the number 0.
TEST_F( TraceFileTest, AProcessWithoutStandardInputWritesAndReads ) {
   const int standardInput = dup( STDIN_FILENO );
   close( STDIN_FILENO );
   small_.write( 5, "alone" );
   EXPECT_EQ( fileRefusal( "trace" ), "" );
   EXPECT_EQ( inFile( "trace" ), "1/5 alone\n" );
   dup2( standardInput, STDIN_FILENO );
   close( standardInput );
}

TEST_F( TraceFileTest, ARefusedFileIsNotMapped ) {
   std::filesystem::create_directory( path( "folder" ) );
   EXPECT_NE( fileRefusal( "folder" ), "" );
   EXPECT_THAT( mappings(), Not( HasSubstr( path( "folder" ) ) ) );
}

TEST_F( TraceFileTest, HasTheLastRecordsOfAProcessThatAborts ) {
   const pid_t child = fork();
   ASSERT_NE( child, -1 );
   if ( child == 0 ) {
      const rlimit noCore{ 0, 0 };
      setrlimit( RLIMIT_CORE, &noCore );
      std::signal( SIGABRT, SIG_DFL );
      small_.trace().fileIs( path( "trace" ) );
      for ( std::int64_t i = 1; i <= 6; ++i ) {
         small_.write( 5, "step %s", i );
      }
      std::abort();
   }
   int status = 0;
   ASSERT_EQ( waitpid( child, &status, 0 ), child );
   ASSERT_TRUE( WIFSIGNALED( status ) );
   ASSERT_EQ( WTERMSIG( status ), SIGABRT );
   EXPECT_EQ( inFile( "trace" ), "3/5 step 3\n4/5 step 4\n5/5 step 5\n6/5 step 6\n" );
}

TEST_F( TraceFileTest, AMissingFolderIsRefusedByName ) {
   EXPECT_EQ( fileRefusal( "nowhere/trace" ),
              "Pelrec trace: cannot create nowhere/trace: No such file or directory" );
}

// What is no ring file was given by mistake; it stays under its name, with what is in it.
TEST_F( TraceFileTest, OnlyARingFileIsReplaced ) {
   SmallTrace other;
   other.trace().fileIs( path( "ring" ) );
   std::ofstream( path( "text" ) ) << "vlan 5 -> 10\n";
   std::ofstream( path( "short" ) ) << "\1\nC";   // as the magic number begins
   std::ofstream( path( "empty" ) );
   std::filesystem::create_directory( path( "folder" ) );
   std::filesystem::create_symlink( "ring", path( "link" ) );
   std::filesystem::create_symlink( "nothing", path( "dangling" ) );
   ASSERT_EQ( mkfifo( path( "pipe" ).c_str(), 0600 ), 0 );
   const std::string before = files();
   for ( const std::string name :
         { "text", "short", "empty", "folder", "link", "dangling", "pipe" } ) {
      EXPECT_EQ( fileRefusal( name ),
                 "Pelrec trace: cannot replace what is no ring file: " + name + ": File exists" );
   }
   EXPECT_EQ( files(), before );
   EXPECT_EQ( textOf( "text" ), "vlan 5 -> 10\n" );
   EXPECT_TRUE( std::filesystem::is_symlink( path( "link" ) ) );
}

TEST_F( TraceFileTest, ADeviceIsRefused ) {
   EXPECT_THROW( small_.trace().fileIs( "/dev/null" ), std::system_error );
   EXPECT_TRUE( std::filesystem::is_character_file( "/dev/null" ) );
}

TEST_F( TraceFileTest, APreviousFileIsReplacedOnlyIfItIsARingFile ) {
   SmallTrace crashed;
   crashed.write( 5, "last words" );
   crashed.trace().fileIs( path( "trace" ) );
   std::ofstream( path( "trace.previous" ) ) << "notes";
   EXPECT_EQ( fileRefusal( "trace" ),
              "Pelrec trace: cannot replace what is no ring file: trace.previous: File exists" );
   EXPECT_EQ( files(), "trace\ntrace.previous\n" );
   EXPECT_EQ( textOf( "trace.previous" ), "notes" );
   EXPECT_EQ( inFile( "trace" ), "1/5 last words\n" );
}

// A name that others can foresee is a name that they can take first: here it is a second one of a
// file that must not be written to.
TEST_F( TraceFileTest, AFileOfAForeseenNameIsNeitherWrittenToNorAdopted ) {
   std::ofstream( path( "victim" ) ) << "keep";
   std::filesystem::create_hard_link( path( "victim" ),
                                      path( "trace.new." + std::to_string( getpid() ) ) );
   small_.trace().fileIs( path( "trace" ) );
   small_.write( 5, "hello" );
   EXPECT_EQ( textOf( "victim" ), "keep" );
   EXPECT_FALSE( std::filesystem::equivalent( path( "victim" ), path( "trace" ) ) );
   EXPECT_EQ( inFile( "trace" ), "1/5 hello\n" );
}

TEST_F( TraceFileTest, IsItsOwnersAlone ) {
   const mode_t mask = umask( 0 );
   small_.trace().fileIs( path( "trace" ) );
   umask( mask );
   EXPECT_EQ( std::filesystem::status( path( "trace" ) ).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write );
}

TEST_F( TraceFileTest, TakesItsSpaceAtOnce ) {
   small_.trace().fileIs( path( "trace" ) );
   struct stat status {};
   ASSERT_EQ( stat( path( "trace" ).c_str(), &status ), 0 );
   EXPECT_GE( status.st_blocks * 512, status.st_size );
}

TEST_F( TraceFileTest, ATooSmallDiskIsRefused ) {
   rlimit limit{};
   getrlimit( RLIMIT_FSIZE, &limit );
   const rlimit small{ 1000, limit.rlim_max };
   const auto handler = std::signal( SIGXFSZ, SIG_IGN );
   setrlimit( RLIMIT_FSIZE, &small );
   const std::string refusal = fileRefusal( "trace" );
   setrlimit( RLIMIT_FSIZE, &limit );
   std::signal( SIGXFSZ, handler );
   EXPECT_EQ( refusal, "Pelrec trace: cannot reserve space for trace: File too large" );
   EXPECT_EQ( files(), "" );
}

TEST_F( TraceFileTest, ARefusedFileLeavesTheTraceWhereItWas ) {
   small_.trace().fileIs( path( "trace" ) );
   small_.write( 5, "before" );
   EXPECT_NE( fileRefusal( "nowhere/trace" ), "" );
   small_.write( 5, "after" );
   EXPECT_EQ( inFile( "trace" ), "1/5 before\n2/5 after\n" );
}

class ImageFileTest : public TraceFileTest {
 protected:
   std::string refusal( const std::string& name ) const {
      try {
         Pelrec::ImageFile file( path( name ) );
      } catch ( const Pelrec::ImageError& error ) {
         std::string what = error.what();
         const std::size_t at = what.find( folder_.string() );
         return at == std::string::npos ? what : what.erase( at, folder_.string().size() + 1 );
      }
      return "";
   }
};

TEST_F( ImageFileTest, LeavesNeitherDescriptorNorMapping ) {
   small_.trace().fileIs( path( "trace" ) );
   std::filesystem::copy_file( path( "trace" ), path( "copy" ) );
   const std::size_t before = descriptors();
   inFile( "copy" );
   std::ofstream( path( "empty" ) ).close();
   EXPECT_NE( refusal( "empty" ), "" );
   EXPECT_EQ( descriptors(), before );
   EXPECT_THAT( mappings(), Not( HasSubstr( path( "copy" ) ) ) );
}

TEST_F( ImageFileTest, RefusesAMissingFile ) {
   EXPECT_EQ( refusal( "trace" ), "Pelrec image: cannot open trace: No such file or directory" );
}

TEST_F( ImageFileTest, RefusesAFolder ) {
   std::filesystem::create_directory( path( "trace" ) );
   EXPECT_EQ( refusal( "trace" ), "Pelrec image: trace is no plain file" );
}

TEST_F( ImageFileTest, RefusesANamedPipeWithoutWaitingForItsWriter ) {
   ASSERT_EQ( mkfifo( path( "trace" ).c_str(), 0600 ), 0 );
   EXPECT_EQ( refusal( "trace" ), "Pelrec image: trace is no plain file" );
}

TEST_F( ImageFileTest, RefusesWhatIsNoImageByItsName ) {
   std::ofstream( path( "trace" ) ).close();
   EXPECT_EQ( refusal( "trace" ), "Pelrec image: trace: size is 0, not at least 64 bytes" );
   std::ofstream( path( "trace" ) ) << std::string( 64, 'x' );
   EXPECT_EQ( refusal( "trace" ), "Pelrec image: trace: does not start with the magic number" );
   small_.trace().fileIs( path( "ring" ) );
   std::filesystem::resize_file( path( "ring" ), 100 );
   EXPECT_EQ( refusal( "ring" ), "Pelrec image: ring: size is 100, not at least the stated size" );
}

TEST_F( ImageFileTest, OutlivesWhatItWasReadFrom ) {
   small_.write( 5, "hello" );
   small_.trace().fileIs( path( "trace" ) );
   const Pelrec::ImageFile image( path( "trace" ) );
   std::filesystem::resize_file( path( "trace" ), 0 );
   EXPECT_EQ( shown( image.bytes() ), "1/5 hello\n" );
}

TEST_F( ImageFileTest, LeavesOutWhatStandsBehindTheImage ) {
   small_.write( 5, "hello" );
   small_.trace().fileIs( path( "trace" ) );
   std::filesystem::resize_file( path( "trace" ), std::uintmax_t{ 1 } << 40 );
   EXPECT_EQ( Pelrec::ImageFile( path( "trace" ) ).bytes().size(),
              SmallTrace::kGeometry.imageBytes() );
}

// Runs before each read of a part, with the number of it.
std::function< void( int ) > beforeRead;
int reads = 0;

void
readComes() {
   ++reads;
   if ( beforeRead ) {
      beforeRead( reads );
   }
}

// Whatever happens to the file between two reads.
class ImageFileChangeTest : public ImageFileTest {
 protected:
   ImageFileChangeTest() {
      for ( std::int64_t i = 1; i <= 4; ++i ) {
         small_.write( 5, "step %s", i );
      }
      small_.trace().fileIs( path( "trace" ) );
      reads = 0;
      Pelrec::ImageFile{ path( "trace" ) };
      readsInAll_ = reads;
   }
   ~ImageFileChangeTest() override { beforeRead = nullptr; }

   template < class Change >
   void atRead( int number, const Change& change ) {
      reads = 0;
      beforeRead = [ number, &change ]( int now ) {
         if ( now == number ) {
            change();
         }
      };
   }

   int readsInAll_ = 0;
};

TEST_F( ImageFileChangeTest, AFileThatShrinksIsRefused ) {
   ASSERT_GT( readsInAll_, 3 );
   for ( int number = 1; number <= readsInAll_; ++number ) {
      const std::string name = "short" + std::to_string( number );
      std::filesystem::copy_file( path( "trace" ), path( name ) );
      const auto shrink = [ & ] { std::filesystem::resize_file( path( name ), 60 ); };
      atRead( number, shrink );
      EXPECT_EQ( refusal( name ), "Pelrec image: " + name + " ended while it was read" ) << number;
   }
}

// Overwritten records are missing, and none shows another's arguments.
TEST_F( ImageFileChangeTest, ARecordThatIsOverwrittenIsLeftOut ) {
   ASSERT_GT( readsInAll_, 3 );
   for ( int number = 3; number <= readsInAll_; ++number ) {
      SmallTrace other;
      for ( std::int64_t i = 1; i <= 4; ++i ) {
         other.write( 9, "step %s", i );
      }
      other.trace().fileIs( path( "other" ) );
      const auto overwrite = [ & ] { other.write( 9, "step %s", std::int64_t{ 5 } ); };
      atRead( number, overwrite );
      EXPECT_EQ( inFile( "other" ), "2/9 step 2\n3/9 step 3\n4/9 step 4\n" ) << number;
   }
}

TEST_F( ImageFileChangeTest, ARecordOfANewFormatHasIt ) {
   const auto write = [ & ] { small_.write( 6, "fresh %s", std::int64_t{ 7 } ); };
   atRead( 2, write );
   EXPECT_EQ( inFile( "trace" ), "1/5 step 1\n2/5 step 2\n3/5 step 3\n4/5 step 4\n5/6 fresh 7\n" );
}

}   // namespace

// The linker leads every pread() of this program here; it has the second name where a file's size
// does not fit into a word.
extern "C" {

ssize_t __real_pread( int file, void* to, std::size_t bytes, off_t offset );
ssize_t __real_pread64( int file, void* to, std::size_t bytes, off_t offset );

ssize_t
__wrap_pread( int file, void* to, std::size_t bytes, off_t offset ) {
   readComes();
   return __real_pread( file, to, bytes, offset );
}

ssize_t
__wrap_pread64( int file, void* to, std::size_t bytes, off_t offset ) {
   readComes();
   return __real_pread64( file, to, bytes, offset );
}

}   // extern "C"
