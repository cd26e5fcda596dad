// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Console.h"

#include <fmt/format.h>
#include <unistd.h>

#include <exception>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "Zel/Exception.h"
#include "agent/console/Commands.h"
#include "agent/console/Completion.h"
#include "agent/console/LineEditor.h"

namespace Agent::Console {
namespace {

// False when the line failed, which has been told then.
bool
carriedOut( Session& session, const std::string& line, const std::string& where ) {
   std::optional< std::string > complaint;
   try {
      carryOut( session, line );
   } catch ( const Zel::Exception& error ) {
      complaint = error.message();
   } catch ( const std::exception& error ) {
      complaint = error.what();
   }
   session.out.flush();   // before the error: both may go to one place
   if ( !complaint ) {
      return true;
   }
   std::cerr << where << *complaint << std::endl;
   return false;
}

// Without output there is no point in going on; main() tells why.
bool
goesOn( const Session& session ) {
   return !session.ended && session.out.good();
}

void
readTerminal( Session& session ) {
   LineEditor editor( [ &session ]( std::string_view line ) { return complete( session, line ); } );
   while ( goesOn( session ) ) {
      const std::optional< std::string > line = editor.next( "> " );
      if ( !line ) {
         session.out << '\n';   // behind the prompt
         break;
      }
      carriedOut( session, *line, "" );
   }
}

std::size_t
readLines( Session& session ) {
   std::size_t failed = 0;
   std::string line;
   for ( std::size_t number = 1; goesOn( session ) && std::getline( std::cin, line ); ++number ) {
      failed += carriedOut( session, line, fmt::format( "line {}: ", number ) ) ? 0 : 1;
   }
   return failed;
}

}   // namespace

std::size_t
runConsole( Roots roots ) {
   Session session{ std::move( roots ), std::cout };
   if ( isatty( STDIN_FILENO ) == 0 ) {
      return readLines( session );
   }
   readTerminal( session );
   return 0;
}

}   // namespace Agent::Console
