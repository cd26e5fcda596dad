// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/LineEditor.h"

#include <editline/readline.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <memory>
#include <system_error>
#include <utility>

namespace Agent::Console {
namespace {

constexpr int kHistoryLines = 1000;

// The library calls plain functions, so what they need stands here.
LineEditor::Complete completeLine;
std::vector< std::string > candidates;

struct Free {
   void operator()( char* text ) const { std::free( text ); }
};

// `state` counts the calls for one word; the library frees what it gets.
char*
nextCandidate( const char*, int state ) {
   const auto number = static_cast< std::size_t >( state );
   return number < candidates.size() ? strdup( candidates[ number ].c_str() ) : nullptr;
}

// The library's word begins at the last blank, ours may begin earlier.
char**
candidatesOf( const char* text, int start, int ) {
   rl_attempted_completion_over = 1;   // no file names
   const std::string_view line( rl_line_buffer );
   Completions completions =
      completeLine( line.substr( 0, static_cast< std::size_t >( rl_point ) ) );
   rl_completion_append_character = completions.mayGoOn ? '\0' : ' ';
   candidates = std::move( completions.words );
   for ( std::string& word : candidates ) {
      word.erase( 0, static_cast< std::size_t >( start ) - completions.at );
   }
   return candidates.empty() ? nullptr : rl_completion_matches( text, nextCandidate );
}

std::string
historyFile() {
   namespace fs = std::filesystem;
   const auto variable = []( const char* name ) {
      const char* value = std::getenv( name );
      return fs::path( value ? value : "" );
   };
   fs::path folder = variable( "XDG_STATE_HOME" );
   if ( folder.empty() ) {
      const fs::path home = variable( "HOME" );
      if ( home.empty() ) {
         return "";
      }
      folder = home / ".local" / "state";
   }
   folder /= "vlan-scale-agent";
   std::error_code ignored;
   fs::create_directories( folder, ignored );
   return folder / "history";
}

enum class Breaks { Nothing, Reading };

// SIGINT does not end the process. It may break off reading, but never the writing of a result.
void
interruptBreaksOff( Breaks what ) {
   struct sigaction action {};
   action.sa_handler = []( int ) {};
   action.sa_flags = what == Breaks::Reading ? 0 : SA_RESTART;
   sigaction( SIGINT, &action, nullptr );
}

}   // namespace

LineEditor::LineEditor( Complete complete ) : historyFile_( historyFile() ) {
   interruptBreaksOff( Breaks::Nothing );
   completeLine = std::move( complete );
   rl_readline_name = "vlan-scale-agent";
   rl_attempted_completion_function = candidatesOf;
   rl_basic_word_break_characters = " \t";
   using_history();
   stifle_history( kHistoryLines );
   if ( !historyFile_.empty() ) {
      read_history( historyFile_.c_str() );
   }
}

LineEditor::~LineEditor() {
   if ( !historyFile_.empty() ) {
      write_history( historyFile_.c_str() );
   }
   completeLine = nullptr;
   std::signal( SIGINT, SIG_DFL );
}

std::optional< std::string >
LineEditor::next( const char* prompt ) {
   interruptBreaksOff( Breaks::Reading );
   errno = 0;
   std::unique_ptr< char, Free > line( readline( prompt ) );
   while ( !line && errno == EINTR ) {
      std::fputc( '\n', stdout );   // the line given up stays to be seen
      errno = 0;
      line.reset( readline( prompt ) );
   }
   interruptBreaksOff( Breaks::Nothing );
   if ( !line ) {
      return std::nullopt;
   }
   if ( *line.get() != '\0' ) {
      add_history( line.get() );
   }
   return line.get();
}

}   // namespace Agent::Console
