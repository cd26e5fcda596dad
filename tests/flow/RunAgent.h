// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RunAgent: runs the built agent as a child process and keeps what came of it.
//
// Standard input, output and error are files, so a child that writes much and reads little cannot
// block. Throws std::system_error when a child cannot be started.
#pragma once

#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>
#include <vector>

namespace FlowTest {

struct Outcome {
   int exitCode = -1;   ///< -1 when a signal ended the child
   int signal = 0;      ///< 0 when the child exited
   std::string out;
   std::string err;

   /// All of it, for one comparison.
   std::string text() const {
      return ( signal != 0 ? "signal " + std::to_string( signal )
                           : "exit " + std::to_string( exitCode ) ) +
             "\n--- out\n" + out + "--- err\n" + err;
   }
};

/// What text() gives for a child that exited.
inline std::string
exited( int code, const std::string& out, const std::string& err ) {
   return Outcome{ code, 0, out, err }.text();
}

struct CloseFile {
   void operator()( std::FILE* file ) const { std::fclose( file ); }
};
using File = std::unique_ptr< std::FILE, CloseFile >;

/// A file without a name, gone when closed.
inline File
temporaryFile( std::string_view content = "" ) {
   File file( std::tmpfile() );
   if ( !file || std::fwrite( content.data(), 1, content.size(), file.get() ) != content.size() ||
        std::fflush( file.get() ) != 0 ) {
      throw std::system_error( errno, std::generic_category(), "temporary file" );
   }
   std::rewind( file.get() );
   return file;
}

inline std::string
contentOf( std::FILE* file ) {
   std::string content;
   std::rewind( file );
   char part[ 65536 ];
   while ( const std::size_t got = std::fread( part, 1, sizeof part, file ) ) {
      content.append( part, got );
   }
   return content;
}

/// Where the child's output or errors go: to the outcome, or to where writing fails.
enum class Stream { Kept, Closed, FullDevice, DeadPipe };

/// The end of a pipe that nobody reads.
inline int
deadPipe() {
   int ends[ 2 ];
   if ( pipe( ends ) != 0 ) {
      throw std::system_error( errno, std::generic_category(), "pipe" );
   }
   close( ends[ 0 ] );
   return ends[ 1 ];
}

inline void
addStream( posix_spawn_file_actions_t& actions, Stream stream, int kept, int dead, int as ) {
   switch ( stream ) {
   case Stream::Kept:
      posix_spawn_file_actions_adddup2( &actions, kept, as );
      break;
   case Stream::Closed:
      posix_spawn_file_actions_addclose( &actions, as );
      break;
   case Stream::FullDevice:
      posix_spawn_file_actions_addopen( &actions, as, "/dev/full", O_WRONLY, 0 );
      break;
   case Stream::DeadPipe:
      posix_spawn_file_actions_adddup2( &actions, dead, as );
      break;
   }
}

/// `words` is the path of the program and its arguments.
inline Outcome
runProgram( std::vector< std::string > words, std::string_view input = "",
            Stream output = Stream::Kept, Stream errors = Stream::Kept ) {
   // A child that aborts on purpose leaves no core file.
   const rlimit noCore{ 0, 0 };
   setrlimit( RLIMIT_CORE, &noCore );

   const File in = temporaryFile( input );
   const File out = temporaryFile();
   const File err = temporaryFile();
   std::vector< char* > argv;
   for ( std::string& word : words ) {
      argv.push_back( word.data() );
   }
   argv.push_back( nullptr );

   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   posix_spawn_file_actions_adddup2( &actions, fileno( in.get() ), STDIN_FILENO );
   const int dead = deadPipe();
   addStream( actions, output, fileno( out.get() ), dead, STDOUT_FILENO );
   addStream( actions, errors, fileno( err.get() ), dead, STDERR_FILENO );
   pid_t child = 0;
   const int error = posix_spawn( &child, argv[ 0 ], &actions, nullptr, argv.data(), environ );
   posix_spawn_file_actions_destroy( &actions );
   close( dead );
   if ( error != 0 ) {
      throw std::system_error( error, std::generic_category(), words[ 0 ] );
   }
   int status = 0;
   while ( waitpid( child, &status, 0 ) < 0 ) {
      if ( errno != EINTR ) {
         throw std::system_error( errno, std::generic_category(), "waitpid" );
      }
   }
   return { WIFEXITED( status ) ? WEXITSTATUS( status ) : -1,
            WIFSIGNALED( status ) ? WTERMSIG( status ) : 0, contentOf( out.get() ),
            contentOf( err.get() ) };
}

/// The agent with these arguments.
inline Outcome
runAgent( std::vector< std::string > arguments, std::string_view input = "",
          Stream output = Stream::Kept, Stream errors = Stream::Kept ) {
   arguments.insert( arguments.begin(), MOX_AGENT );
   return runProgram( std::move( arguments ), input, output, errors );
}

inline std::string
sample( const std::string& name ) {
   return std::string( MOX_SAMPLES_DIR ) + "/" + name;
}

/// What every command that reads small-ieee.json says of the table that is switched off there.
inline std::string
tableOffNote( const std::string& file = sample( "small-ieee.json" ) ) {
   return file + ": not used: 2 entries of tables that are not enabled; -v names them\n";
}

/// Throws std::runtime_error when there is no such file.
inline std::string
textOfFile( const std::string& path ) {
   const File file( std::fopen( path.c_str(), "rb" ) );
   if ( !file ) {
      throw std::runtime_error( "cannot open " + path );
   }
   return contentOf( file.get() );
}

inline std::vector< std::string >
linesOf( const std::string& text ) {
   std::vector< std::string > lines;
   for ( std::size_t at = 0; at < text.size(); ) {
      const std::size_t end = std::min( text.find( '\n', at ), text.size() );
      lines.push_back( text.substr( at, end - at ) );
      at = end + 1;
   }
   return lines;
}

/// A folder of its own for one test, removed with all that is in it.
class ScratchFolder {
 public:
   ScratchFolder() {
      std::string pattern =
         ( std::filesystem::temp_directory_path() / "vlan-scale-agent-XXXXXX" ).string();
      if ( !mkdtemp( pattern.data() ) ) {
         throw std::system_error( errno, std::generic_category(), pattern );
      }
      path_ = pattern;
   }
   ~ScratchFolder() {
      std::error_code ignored;
      std::filesystem::remove_all( path_, ignored );
   }
   ScratchFolder( const ScratchFolder& ) = delete;
   ScratchFolder& operator=( const ScratchFolder& ) = delete;

   std::string path( const std::string& name = "" ) const { return path_ + "/" + name; }
   /// The path of a new file.
   std::string file( const std::string& name, std::string_view content ) const {
      std::ofstream( path( name ), std::ios::binary ) << content;
      return path( name );
   }

 private:
   std::string path_;
};

}   // namespace FlowTest
