// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// InChild: does something in a forked copy of this process, which may end there by any means.
//
//   const ChildEnd end = inChild( [ & ] { mgr.deleteVlanFromIdx( intfId, vid ); } );
//   EXPECT_TRUE( end.aborted() ) << end.said;
//
// Cheaper than a death test by an order of magnitude: nothing is executed anew.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <system_error>

namespace TestSupport {

struct ChildEnd {
   int status = 0;     ///< as of waitpid()
   std::string said;   ///< what it wrote to standard error

   bool returned() const { return WIFEXITED( status ) && WEXITSTATUS( status ) == 0; }
   bool aborted() const { return WIFSIGNALED( status ) && WTERMSIG( status ) == SIGABRT; }
   std::string text() const {
      return said + ( returned() ? ""
                      : WIFSIGNALED( status )
                         ? "ended by signal " + std::to_string( WTERMSIG( status ) )
                         : "ended with exit code " + std::to_string( WEXITSTATUS( status ) ) );
   }
};

/// `act` runs in the child alone; when it returns, the child ends without any clearing up.
template < class Act >
ChildEnd
inChild( const Act& act ) {
   const auto refuse = []( const char* what ) {
      throw std::system_error( errno, std::generic_category(), what );
   };
   std::array< int, 2 > ends{};
   if ( pipe( ends.data() ) != 0 ) {
      refuse( "pipe" );
   }
   const pid_t child = fork();
   if ( child < 0 ) {
      refuse( "fork" );
   }
   if ( child == 0 ) {
      dup2( ends[ 1 ], STDERR_FILENO );
      const rlimit noCore{ 0, 0 };
      setrlimit( RLIMIT_CORE, &noCore );
      act();
      std::fflush( stderr );
      std::_Exit( 0 );
   }
   close( ends[ 1 ] );
   ChildEnd end;
   std::array< char, 4096 > part;
   for ( ;; ) {
      const ssize_t got = read( ends[ 0 ], part.data(), part.size() );
      if ( got > 0 ) {
         end.said.append( part.data(), static_cast< std::size_t >( got ) );
      } else if ( got == 0 || errno != EINTR ) {
         break;
      }
   }
   close( ends[ 0 ] );
   while ( waitpid( child, &end.status, 0 ) < 0 && errno == EINTR ) {}
   // An emulator reports a signal in a line of its own behind what the child wrote.
   end.said.resize( std::min( end.said.size(), end.said.find( "qemu: uncaught target signal " ) ) );
   return end;
}

}   // namespace TestSupport
