// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <cstdio>
#include <exception>
#include <iostream>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "Zel/Exception.h"
#include "agent/console/Commands.h"
#include "agent/console/Completion.h"
#include "agent/console/LineEditor.h"

namespace Agent::Console {
namespace {

// Why the line failed, if it did.
std::optional< std::string >
carriedOut( Session& session, const std::string& line ) {
   std::optional< std::string > error;
   try {
      carryOut( session, line );
   } catch ( const Zel::Exception& refusal ) {
      error = refusal.message();
   } catch ( const std::bad_alloc& ) {
      error = "out of memory";
   } catch ( const std::exception& refusal ) {
      error = refusal.what();
   }
   session.out.flush();   // before the error: both may go to one place
   return error;
}

// Without output there is no point in going on; main() tells why.
bool
goesOn( const Session& session ) {
   return !session.ended && session.out.good();
}

void
readTerminal( Session& session, Complain complain ) {
   LineEditor editor( [ &session ]( std::string_view line ) { return complete( session, line ); } );
   while ( goesOn( session ) ) {
      const std::optional< std::string > line = editor.next( "> " );
      if ( !line ) {
         session.out << '\n';   // behind the prompt
         break;
      }
      if ( const auto error = carriedOut( session, *line ) ) {
         complain( *error );
      }
   }
}

std::size_t
readLines( Session& session, Complain complain ) {
   std::size_t failed = 0;
   std::string line;
   for ( std::size_t number = 1; goesOn( session ) && std::getline( std::cin, line ); ++number ) {
      if ( const auto error = carriedOut( session, line ) ) {
         complain( fmt::format( "line {}: {}", number, *error ) );
         ++failed;
      }
   }
   // A folder or a closed descriptor ends like an empty script, but for the error.
   if ( std::ferror( stdin ) != 0 ) {
      complain( "<stdin>: cannot be read to its end" );
      ++failed;
   }
   return failed;
}

}   // namespace

std::size_t
runConsole( Roots roots, Complain complain ) {
   Session session{ std::move( roots ), std::cout };
   if ( isatty( STDIN_FILENO ) == 0 ) {
      return readLines( session, complain );
   }
   readTerminal( session, complain );
   return 0;
}

}   // namespace Agent::Console
