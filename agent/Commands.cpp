// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Commands.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <iostream>

#include "Pelrec/Reader.h"
#include "agent/Apply.h"
#include "agent/Complain.h"
#include "agent/JsonWriter.h"
#include "agent/ProgressBar.h"
#include "agent/Replay.h"
#include "agent/config/ConfigurationReader.h"
#include "agent/config/Escaped.h"
#include "agent/config/VlanList.h"
#include "agent/console/Console.h"
#include "agent/console/TypePages.h"

namespace Agent {
namespace {

std::string
findings( std::size_t number ) {
   return counted( number, "finding", "findings" );
}

std::string
fileName( const Options& options ) {
   return options.file == "-" ? "<stdin>" : options.file;
}

// What `work()` returns; memory that runs out meanwhile is told with what was being done.
template < class Work >
auto
whileDoing( const char* doing, const Work& work ) {
   try {
      return work();
   } catch ( const std::bad_alloc& ) {
      throw OutOfMemory( doing );
   }
}

// What the file holds in vain: always what may have been meant to act, all of it when asked for.
void
complainOfUnused( const Options& options, const Configuration& configuration ) {
   std::size_t others = 0;
   std::size_t off = 0;
   for ( const UnusedMember& member : configuration.unused ) {
      others += member.kind == UnusedKind::otherModule ? member.count : 0;
      off += member.kind == UnusedKind::tableOff ? member.count : 0;
      if ( options.verbose ) {
         complain( "not used: {} ({}x): {}", member.path, member.count, member.reason );
      }
   }
   if ( others + off > 0 ) {
      std::string what;
      if ( others > 0 ) {
         what = counted( others, "member", "members" ) + " of other modules";
      }
      if ( off > 0 ) {
         what += ( what.empty() ? "" : ", " ) + counted( off, "entry", "entries" ) +
                 " of tables that are not enabled";
      }
      complain( "{}: not used: {}{}", shownFile( options ), what,
                options.verbose ? "" : "; -v names them" );
   }
}

ReadResult
read( const Options& options ) {
   return whileDoing( "reading", [ & ] {
      ProgressBar bar( "reading", Zel::steadyClockFactory() );
      return readConfiguration(
         options.file, options.maxMappings,
         [ &bar ]( std::size_t bytes, std::size_t ofBytes ) { bar.doneIs( bytes, ofBytes ); } );
   } );
}

// The checked configuration; when there is none, the first finding has been told.
std::optional< Configuration >
readOrComplain( const Options& options ) {
   ReadResult result = read( options );
   if ( !result.configuration ) {
      complain( "{}", result.findings.front().text() );
      if ( result.findings.size() > 1 ) {
         complain( "and {} more; `vlan-scale-agent check {}` shows all",
                   findings( result.findings.size() - 1 ), escaped( options.file ) );
      }
   } else {
      complainOfUnused( options, *result.configuration );
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
   return whileDoing( "applying", [ & ] {
      ScaleAgent agent( options.rangeEntries );
      applyConfiguration( agent, *configuration );
      return makeReport( agent, *configuration );
   } );
}

std::size_t
mappingsOf( const Configuration& configuration ) {
   std::size_t mappings = 0;
   for ( const Port& port : configuration.ports ) {
      mappings += port.ingress.size();
   }
   return mappings;
}

// The text, or none where there is nothing to say.
std::optional< std::string >
unlessEmpty( const std::string& text ) {
   return text.empty() ? std::nullopt : std::optional( text );
}

std::optional< std::size_t >
unlessZero( std::size_t number ) {
   return number != 0 ? std::optional( number ) : std::nullopt;
}

void
printCheckJson( const Options& options, const ReadResult& result ) {
   JsonWriter json( std::cout, JsonWriter::Layout::Indented );
   const auto& configuration = result.configuration;
   json.object( [ & ] {
      json.member( "file", fileName( options ) );
      json.key( "findings" );
      json.array( [ & ] {
         for ( const Finding& finding : result.findings ) {
            json.object( [ & ] {
               json.member( "allowed", unlessEmpty( finding.allowed ) );
               json.member( "column", unlessZero( finding.column ) );
               json.member( "line", unlessZero( finding.line ) );
               json.member( "path", unlessEmpty( finding.path ) );
               json.member( "problem", finding.problem );
               json.member( "value", unlessEmpty( finding.value ) );
            } );
         }
      } );
      json.member( "mappings",
                   configuration ? std::optional( mappingsOf( *configuration ) ) : std::nullopt );
      json.member( "ports",
                   configuration ? std::optional( configuration->ports.size() ) : std::nullopt );
      json.key( "unused" );
      json.array( [ & ] {
         if ( configuration ) {
            for ( const UnusedMember& member : configuration->unused ) {
               json.object( [ & ] {
                  json.member( "count", member.count );
                  json.member( "path", member.path );
                  json.member( "reason", member.reason );
               } );
            }
         }
      } );
   } );
   std::cout << '\n';
}

// Leaves only the ranges asked for; false when the list of VLANs is no list.
bool
filterVlans( const Options& options, std::vector< PortReport >& ports ) {
   if ( !options.vlans ) {
      return true;
   }
   const ParsedVlanList list = parseVlanList( *options.vlans );
   if ( !list.error.empty() ) {
      complain( "--vlans {}: {}", *options.vlans, list.error );
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

// What the console cannot do.
void
complainOf( const std::string& error ) {
   complain( "{}", error );
}

}   // namespace

std::string
shownFile( const Options& options ) {
   return escaped( fileName( options ) );
}

int
runCommand( const Options& options ) {
   const std::optional< Report > report = reportOn( options );
   if ( !report ) {
      return kExitUnusable;
   }
   whileDoing( "reporting on", [ & ] {
      ( options.json ? printSummaryJson : printSummary )( std::cout, *report );
   } );
   return kExitClean;
}

int
checkCommand( const Options& options ) {
   const ReadResult result = read( options );
   if ( options.json ) {
      whileDoing( "reporting on", [ & ] { printCheckJson( options, result ); } );
   }
   if ( result.unusable ) {
      complain( "{}", result.findings.front().text() );
      return kExitUnusable;
   }
   if ( !options.json ) {
      for ( const Finding& finding : result.findings ) {
         std::cout << finding.text() << '\n';
      }
   }
   if ( !result.configuration ) {
      complain( "{}: {}", shownFile( options ), findings( result.findings.size() ) );
      return kExitFindings;
   }
   complainOfUnused( options, *result.configuration );
   complain( "{}: clean, {}, {}", shownFile( options ),
             counted( result.configuration->ports.size(), "port", "ports" ),
             counted( mappingsOf( *result.configuration ), "mapping", "mappings" ) );
   return kExitClean;
}

int
showRangesCommand( const Options& options ) {
   std::optional< Report > report = reportOn( options );
   if ( !report || !filterVlans( options, report->ports ) ) {
      return kExitUnusable;
   }
   whileDoing( "reporting on", [ & ] {
      if ( options.json ) {
         printRangesJson( std::cout, report->ports, options.order );
         return;
      }
      for ( const PortReport& port : report->ports ) {
         printRanges( std::cout, port, options.order );
      }
   } );
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
      complain( "{}: there is no port \"{}\"", shownFile( options ), escaped( options.port ) );
      return kExitUnusable;
   }
   if ( !filterVlans( options, report->ports ) ) {
      return kExitUnusable;
   }
   whileDoing( "reporting on", [ & ] {
      ( options.json ? printPortJson : printPort )( std::cout, report->ports.front(),
                                                    options.order );
   } );
   return kExitClean;
}

int
replayCommand( const Options& options ) {
   const bool standardInput = options.file == "-";
   std::ifstream file;
   if ( !standardInput ) {
      file.open( options.file );
      if ( !file ) {
         complain( "{}: {}", shownFile( options ), std::strerror( errno ) );
         return kExitUnusable;
      }
   }
   whileDoing( "replaying", [ & ] {
      replay( shownFile( options ), standardInput ? std::cin : file, std::cout,
              options.rangeEntries );
   } );
   if ( standardInput && std::ferror( stdin ) != 0 ) {   // to std::cin that is a plain end
      complain( "{}: cannot be read to its end", shownFile( options ) );
      return kExitUnusable;
   }
   return kExitClean;
}

int
ringsCommand( const Options& options ) {
   whileDoing( "reading", [ & ] {
      const Pelrec::ImageFile file( options.file );
      for ( const Pelrec::Record& record : Pelrec::Reader( file.bytes() ).records() ) {
         fmt::print( std::cout, "{} {} {}\n", Pelrec::wallTime( record.timeNs ), record.level,
                     record.text );
      }
   } );
   return kExitClean;
}

int
consoleCommand( const Options& options ) {
   if ( options.file == "-" ) {
      complain( "console: FILE cannot be -: standard input carries the commands" );
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
   whileDoing( "applying", [ & ] { applyConfiguration( agent, configuration ); } );
   return Console::runConsole( rootsOf( agent ), complainOf ) == 0 ? kExitClean : kExitUnusable;
}

int
typesCommand( const Options& options ) {
   std::cout << ( options.markdown ? Console::typesMarkdown() : Console::typesText() );
   return kExitClean;
}

}   // namespace Agent
