// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Commands.h"

#include <fmt/format.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <fstream>
#include <iostream>

#include "Pelrec/Reader.h"
#include "agent/Apply.h"
#include "agent/Replay.h"
#include "agent/config/ConfigurationReader.h"
#include "agent/config/VlanList.h"
#include "agent/console/Console.h"
#include "agent/console/TypePages.h"

namespace Agent {
namespace {

std::string
findings( std::size_t number ) {
   return counted( number, "finding", "findings" );
}

// The file as messages name it.
std::string
shownFile( const Options& options ) {
   return options.file == "-" ? "<stdin>" : options.file;
}

void
printUnused( const Configuration& configuration ) {
   for ( const UnusedMember& member : configuration.unused ) {
      fmt::print( stderr, "not used: {} ({}x): {}\n", member.path, member.count, member.reason );
   }
}

// The checked configuration; when there is none, the first finding has been printed.
std::optional< Configuration >
readOrComplain( const Options& options ) {
   ReadResult result = readConfiguration( options.file );
   if ( !result.configuration ) {
      fmt::print( stderr, "{}\n", result.findings.front().text() );
      if ( result.findings.size() > 1 ) {
         fmt::print( stderr, "and {} more; `vlan-scale-agent check {}` shows all\n",
                     findings( result.findings.size() - 1 ), options.file );
      }
   } else if ( options.verbose ) {
      printUnused( *result.configuration );
   }
   return std::move( result.configuration );
}

// What the whole road makes of the file; none when the file is unusable.
std::optional< Report >
reportOn( const Options& options ) {
   const std::optional< Configuration > configuration = readOrComplain( options );
   if ( !configuration ) {
      return std::nullopt;
   }
   ScaleAgent agent( options.rangeEntries );
   applyConfiguration( agent, *configuration );
   return makeReport( agent, *configuration );
}

// Leaves only the ranges asked for; false when the list of VLANs is no list.
bool
filterVlans( const Options& options, std::vector< PortReport >& ports ) {
   if ( !options.vlans ) {
      return true;
   }
   const ParsedVlanList list = parseVlanList( *options.vlans );
   if ( !list.error.empty() ) {
      fmt::print( stderr, "--vlans {}: {}\n", *options.vlans, list.error );
      return false;
   }
   for ( PortReport& port : ports ) {
      port = onlyVlans( std::move( port ), list.ids );
   }
   return true;
}

// The agent's objects as the console names them.
Console::Roots
rootsOf( const ScaleAgent& agent ) {
   Console::Roots roots;
   const auto add = [ &roots ]( const char* name, Zel::PtrInterface& entity ) {
      roots.emplace( name, Zel::Value( {}, Zel::Ptr< Zel::PtrInterface >( &entity ) ) );
   };
   add( "acsd", agent.acsd() );
   add( "codef", agent.programmer() );
   add( "ranges", agent.rangeEntryDir() );
   add( "schedule", agent.scheduleDir() );
   add( "scheduler", agent.scheduler() );
   add( "sm", agent.stateMachine() );
   return roots;
}

}   // namespace

int
runCommand( const Options& options ) {
   const std::optional< Report > report = reportOn( options );
   if ( !report ) {
      return kExitUnusable;
   }
   fmt::print( "{}", options.json ? summaryJson( *report ) : summaryText( *report ) );
   return kExitClean;
}

int
checkCommand( const Options& options ) {
   const ReadResult result = readConfiguration( options.file );
   if ( result.unusable ) {
      fmt::print( stderr, "{}\n", result.findings.front().text() );
      return kExitUnusable;
   }
   for ( const Finding& finding : result.findings ) {
      fmt::print( "{}\n", finding.text() );
   }
   if ( !result.configuration ) {
      fmt::print( stderr, "{}: {}\n", shownFile( options ), findings( result.findings.size() ) );
      return kExitFindings;
   }
   if ( options.verbose ) {
      printUnused( *result.configuration );
   }
   std::size_t mappings = 0;
   for ( const Port& port : result.configuration->ports ) {
      mappings += port.ingress.size();
   }
   fmt::print( stderr, "{}: clean, {}, {}\n", shownFile( options ),
               counted( result.configuration->ports.size(), "port", "ports" ),
               counted( mappings, "mapping", "mappings" ) );
   return kExitClean;
}

int
showRangesCommand( const Options& options ) {
   std::optional< Report > report = reportOn( options );
   if ( !report || !filterVlans( options, report->ports ) ) {
      return kExitUnusable;
   }
   if ( options.json ) {
      fmt::print( "{}", rangesJson( report->ports, options.order ) );
      return kExitClean;
   }
   for ( const PortReport& port : report->ports ) {
      fmt::print( "{}", rangesText( port, options.order ) );
   }
   return kExitClean;
}

int
showSummaryCommand( const Options& options ) {
   return runCommand( options );
}

int
showPortCommand( const Options& options ) {
   std::optional< Report > report = reportOn( options );
   if ( !report ) {
      return kExitUnusable;
   }
   std::erase_if( report->ports,
                  [ & ]( const PortReport& port ) { return port.name != options.port; } );
   if ( report->ports.empty() ) {
      fmt::print( stderr, "{}: there is no port \"{}\"\n", shownFile( options ), options.port );
      return kExitUnusable;
   }
   if ( !filterVlans( options, report->ports ) ) {
      return kExitUnusable;
   }
   const PortReport& port = report->ports.front();
   fmt::print( "{}",
               options.json ? portJson( port, options.order ) : portText( port, options.order ) );
   return kExitClean;
}

int
replayCommand( const Options& options ) {
   if ( options.file == "-" ) {
      replay( shownFile( options ), std::cin, std::cout, options.rangeEntries );
      return kExitClean;
   }
   std::ifstream script( options.file );
   if ( !script ) {
      fmt::print( stderr, "{}: {}\n", options.file, std::strerror( errno ) );
      return kExitUnusable;
   }
   replay( options.file, script, std::cout, options.rangeEntries );
   return kExitClean;
}

int
ringsCommand( const Options& options ) {
   const Pelrec::ImageFile file( options.file );
   for ( const Pelrec::Record& record : Pelrec::Reader( file.bytes() ).records() ) {
      fmt::print( "{} {} {}\n", Pelrec::wallTime( record.timeNs ), record.level, record.text );
   }
   return kExitClean;
}

int
consoleCommand( const Options& options ) {
   if ( options.file == "-" ) {
      fmt::print( stderr, "console: FILE cannot be -: standard input carries the commands\n" );
      return kExitUnusable;
   }
   Configuration configuration{};
   if ( !options.file.empty() ) {
      std::optional< Configuration > read = readOrComplain( options );
      if ( !read ) {
         return kExitUnusable;
      }
      configuration = std::move( *read );
   }
   ScaleAgent agent( options.rangeEntries );
   applyConfiguration( agent, configuration );
   return Console::runConsole( rootsOf( agent ) ) == 0 ? kExitClean : kExitUnusable;
}

int
typesCommand( const Options& options ) {
   std::cout << ( options.markdown ? Console::typesMarkdown() : Console::typesText() );
   return kExitClean;
}

}   // namespace Agent
