// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// vlan-scale-agent: command line of the reference agent.
#include <fcntl.h>
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <csignal>
#include <exception>
#include <functional>
#include <iostream>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bridging/VlanId.h"
#include "Pelrec/Trace.h"
#include "Zel/Exception.h"
#include "Zel/Trace.h"
#include "agent/Commands.h"
#include "agent/Complain.h"
#include "agent/NearMiss.h"
#include "agent/console/TraceList.h"

namespace {

using Agent::Options;

// All that a command can use. A handle joins Zel's list when it is first used, which is too late to
// tell a misspelt name.
const std::vector< std::string > kTraceHandles{ "MoxVlanMappingScaleSm", "MoxVlanRangeMappingCodef",
                                                "MoxVlanRangeMgr" };

// Options that hold for the process rather than for one command's work.
struct ProcessOptions {
   std::vector< std::string > trace;
   std::string ring;

   void apply() const {
      for ( const std::string& list : trace ) {
         try {
            Zel::traceLevelsIs( list );
         } catch ( const Zel::ParseException& error ) {
            throw std::runtime_error( fmt::format( "--trace {}: {}", list, error.what() ) );
         }
         const auto unknown = Agent::Console::handlesBeside( kTraceHandles, list );
         if ( !unknown.empty() ) {
            throw std::runtime_error( fmt::format( "--trace {}: there is no handle \"{}\"; there "
                                                   "are: {}",
                                                   list, unknown.front(),
                                                   fmt::join( kTraceHandles, ", " ) ) );
         }
      }
      if ( !ring.empty() ) {
         Pelrec::trace().fileIs( ring );
      }
   }
};

// 010 would be taken for octal, 0x10 for hexadecimal. Empty for a number that is neither.
std::string
plainDecimal( const std::string& text ) {
   const bool digits = !text.empty() && text.find_first_not_of( "0123456789" ) == std::string::npos;
   return digits && ( text == "0" || text.front() != '0' )
           ? ""
           : fmt::format( "\"{}\" is no decimal number without leading zeros", text );
}

class CommandLine {
 public:
   CommandLine() {
      app_.require_subcommand( 1 );
      app_.set_version_flag( "--version", "vlan-scale-agent " MOX_VERSION );
      app_.footer( "Exit codes: 0 done, 1 check has findings, 2 input or command line unusable." );

      CLI::App* run =
         command( app_, "run", "apply a configuration and show what it took", Agent::runCommand );
      configurationFile( run );
      ranking( run );
      json( run );

      CLI::App* check =
         command( app_, "check", "validate a configuration, apply nothing", Agent::checkCommand );
      configurationFile( check );
      json( check );

      CLI::App* show = app_.add_subcommand( "show", "show what a configuration becomes" );
      show->require_subcommand( 1 );
      CLI::App* ranges = command( *show, "ranges", "one line per range", Agent::showRangesCommand );
      configurationFile( ranges );
      ranking( ranges );
      rangeList( ranges );
      CLI::App* summary =
         command( *show, "summary", "one line per port", Agent::showSummaryCommand );
      configurationFile( summary );
      ranking( summary );
      json( summary );
      sorting( summary );   // taken as by the other views; a summary lists no ranges
      CLI::App* port = command( *show, "port", "one port in full", Agent::showPortCommand );
      port->add_option( "PORT", options_.port, "name of the port" )->required();
      configurationFile( port );
      ranking( port );
      rangeList( port );

      CLI::App* replay = command( app_, "replay",
                                  "carry out a script of events, one JSON object "
                                  "a line",
                                  Agent::replayCommand );
      replay->add_option( "FILE", options_.file, "script; - reads standard input" )->required();
      ranking( replay );

      CLI::App* rings = command( app_, "rings", "print the messages of a file made by --ring",
                                 Agent::ringsCommand );
      rings->add_option( "FILE", options_.file, "ring file" )->required();

      CLI::App* console =
         command( app_, "console", "an agent of its own whose objects can be looked at and changed",
                  Agent::consoleCommand );
      configurationFile( console )->required( false )->description(
         "configuration to apply first; standard input carries the commands" );
      ranking( console );

      CLI::App* types = command( app_, "types", "list the registered types", Agent::typesCommand );
      types->add_flag( "--markdown", options_.markdown, "print the reference page of all types" );
   }

   int execute( int argc, char** argv ) {
      try {
         app_.parse( argc, argv );
      } catch ( const CLI::Success& wish ) {
         return app_.exit( wish );   // help or version
      } catch ( const CLI::ParseError& error ) {
         Agent::complain( "{}\nRun with --help for more information.", refusal( error ) );
         return Agent::kExitUnusable;
      }
      process_.apply();
      try {
         return chosen_( options_ );
      } catch ( const Agent::OutOfMemory& error ) {
         Agent::complain( "{}: out of memory while {} it", Agent::shownFile( options_ ),
                          error.what() );
         return Agent::kExitUnusable;
      }
   }

 private:
   // What is wrong with the command line; of a word that is no name, what may have been meant.
   std::string refusal( const CLI::ParseError& error ) const {
      const CLI::App* chosen = &app_;
      std::vector< std::string > options;
      for ( ;; ) {
         for ( const CLI::Option* option : chosen->get_options() ) {
            for ( const std::string& name : option->get_lnames() ) {
               options.push_back( "--" + name );
            }
         }
         if ( chosen->get_subcommands().empty() ) {
            break;
         }
         chosen = chosen->get_subcommands().front();
      }
      std::vector< std::string > commands;
      for ( const CLI::App* one : chosen->get_subcommands( {} ) ) {
         commands.push_back( one->get_name() );
      }
      for ( const std::string& word : app_.remaining( true ) ) {
         if ( word.starts_with( '-' ) ) {
            const std::string name = word.substr( 0, word.find( '=' ) );
            if ( const std::string meant = Agent::nearMiss( name, options ); !meant.empty() ) {
               return fmt::format( "{}: did you mean {}?", name, meant );
            }
         } else if ( !commands.empty() ) {
            const std::string meant = Agent::nearMiss( word, commands );
            return meant.empty() ? fmt::format( "{}: there is no such command; there are: {}", word,
                                                fmt::join( commands, ", " ) )
                                 : fmt::format( "{}: did you mean {}?", word, meant );
         }
      }
      return error.what();
   }

   CLI::App* command( CLI::App& parent, const std::string& name, const std::string& description,
                      int ( *carryOut )( const Options& ) ) {
      CLI::App* sub = parent.add_subcommand( name, description );
      sub->callback( [ this, carryOut ] { chosen_ = carryOut; } );
      sub->add_option( "--trace", process_.trace,
                       "HANDLE/LEVELS, such as MoxVlanRangeMgr/1,9; may be repeated" )
         ->allow_extra_args( false );
      sub->add_option( "--ring", process_.ring, "keep the ring-buffer trace in this file" );
      return sub;
   }
   CLI::Option* configurationFile( CLI::App* sub ) {
      sub->add_flag( "--verbose,-v", options_.verbose, "name the members that are not used" );
      sub->add_option( "--max-mappings", options_.maxMappings,
                       "refuse a configuration that asks for more ingress mappings" )
         ->capture_default_str()
         ->check( CLI::Validator( plainDecimal, "" ) )
         ->check( CLI::Range( std::uint64_t( 1 ), Agent::kHighestMaxMappings ) );
      return sub
         ->add_option( "FILE", options_.file,
                       "IEEE 802.1Q or OpenConfig VLAN configuration, RFC 7951 JSON; - reads "
                       "standard input" )
         ->required();
   }
   void ranking( CLI::App* sub ) {
      sub->add_option( "--range-entries", options_.rangeEntries,
                       "range entries of the hardware per port" )
         ->capture_default_str()
         ->check( CLI::Validator( plainDecimal, "" ) )
         ->check( CLI::Range( 0u, unsigned{ Bridging::VlanId::kHighest } ) );
   }
   void json( CLI::App* sub ) { sub->add_flag( "--json", options_.json, "print JSON" ); }
   void sorting( CLI::App* sub ) {
      sub->add_option_function< std::string >(
            "--sort",
            [ this ]( const std::string& order ) {
               options_.order = order == "vid" ? Agent::RangeOrder::Vid : Agent::RangeOrder::Size;
            },
            "ranges by size (largest first) or vid" )
         ->check( CLI::IsMember( { "size", "vid" } ) );
   }
   void rangeList( CLI::App* sub ) {
      json( sub );
      sorting( sub );
      sub->add_option( "--vlans", options_.vlans,
                       "only ranges that hold one of these VLAN ids, such as 1,10-100" );
   }

   CLI::App app_{ "Reference agent for VLAN translation at scale", "vlan-scale-agent" };
   Options options_;
   ProcessOptions process_;
   std::function< int( const Options& ) > chosen_;
};

// Whatever the agent was started with, it works to its end, and what it opens is no standard
// stream.
void
takeStandardStreams() {
   // Reading and writing this fails, as with the closed descriptor that it stands for.
   int unusable = -1;
   do {
      unusable = open( "/", O_PATH | O_CLOEXEC );
   } while ( 0 <= unusable && unusable <= STDERR_FILENO );
   if ( unusable >= 0 ) {
      close( unusable );
   }
   std::signal( SIGPIPE, SIG_IGN );   // a write that fails is an error like another
}

}   // namespace

int
main( int argc, char** argv ) {
   takeStandardStreams();
   int exitCode = Agent::kExitUnusable;
   try {
      exitCode = CommandLine().execute( argc, argv );
   } catch ( const std::bad_alloc& ) {
      Agent::complain( "out of memory" );
   } catch ( const std::exception& error ) {
      Agent::complain( "{}", error.what() );
   }
   // Also flushes stdout; what it still holds would be lost without a word.
   if ( !std::cout.flush() ) {
      Agent::complain( "standard output cannot be written" );
      return Agent::kExitUnusable;
   }
   return exitCode;
}
