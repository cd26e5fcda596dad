// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The main of every test program: runs the tests as if nobody had set a variable that the code
// under test, the terminal library or the C library obeys, and with the three standard files open.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace {

bool
isRemoved( std::string_view name ) {
   static constexpr std::string_view kPrefixes[] = { "ZEL_", "LC_", "XDG_" };
   static constexpr std::string_view kNames[] = { "COLUMNS",  "EDITRC", "HOME", "LANG",
                                                  "LANGUAGE", "LINES",  "TERM", "TZ" };
   return std::ranges::any_of( kPrefixes,
                               [ & ]( auto prefix ) { return name.starts_with( prefix ); } ) ||
          std::ranges::find( kNames, name ) != std::end( kNames );
}

// Whether there was one that is read before main().
bool
removeVariables() {
   std::vector< std::string > names;
   for ( char** variable = environ; *variable; ++variable ) {
      const std::string_view text( *variable );
      const std::string_view name = text.substr( 0, text.find( '=' ) );
      if ( isRemoved( name ) ) {
         names.emplace_back( name );
      }
   }
   for ( const std::string& name : names ) {
      unsetenv( name.c_str() );
   }
   return std::ranges::any_of( names,
                               []( const auto& name ) { return name.starts_with( "ZEL_" ); } );
}

// The child of a death test that starts the program anew; its variables are those of the test.
bool
isDeathTest( std::span< char* > arguments ) {
   return std::ranges::any_of( arguments, []( std::string_view argument ) {
      return argument.starts_with( "--gtest_internal_run_death_test" );
   } );
}

// Else a file that a test opens would become one of them.
void
openStandardFiles() {
   int file = 0;
   do {
      file = open( "/dev/null", O_RDWR );
   } while ( file >= 0 && file <= STDERR_FILENO );
   close( file );
}

}   // namespace

int
main( int argc, char** argv ) {
   if ( !isDeathTest( { argv, static_cast< std::size_t >( argc ) } ) && removeVariables() ) {
      execvp( argv[ 0 ], argv );
      std::perror( argv[ 0 ] );
      return EXIT_FAILURE;
   }
   openStandardFiles();
   testing::InitGoogleMock( &argc, argv );
   return RUN_ALL_TESTS();
}
