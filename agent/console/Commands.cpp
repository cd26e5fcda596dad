// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Commands.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <vector>

#include "Zel/AllocationTracker.h"
#include "Zel/GenericIf.h"
#include "Zel/Trace.h"
#include "agent/console/Arguments.h"
#include "agent/console/Error.h"
#include "agent/console/Show.h"
#include "agent/console/Table.h"
#include "agent/console/TraceList.h"
#include "agent/console/TypePages.h"
#include "agent/console/Types.h"
#include "agent/console/Words.h"

namespace Agent::Console {
namespace {

using Words = std::span< const std::string >;

constexpr std::size_t kAny = std::numeric_limits< std::size_t >::max();

void
print( Session& session, const Zel::Value& result ) {
   if ( result ) {
      session.out << shortForm( result ) << '\n';
   }
}

// Carries out an operation of the attribute that the first word names.
template < Zel::OpCode code >
void
operateCommand( Session& session, Words words ) {
   const Place place = placeAt( session.roots, words[ 0 ] );
   print( session, operate( session.roots, place, code, words.subspan( 1 ) ) );
}

void
listTypes( Session& session, Words ) {
   session.out << typesText();
}

void
showType( Session& session, Words words ) {
   session.out << typeText( typeNamed( words[ 0 ] ) );
}

void
list( Session& session, Words words ) {
   if ( !words.empty() ) {
      session.out << listing( objectAt( placeAt( session.roots, words[ 0 ] ) ) );
      return;
   }
   std::vector< std::vector< std::string > > rows;
   for ( const auto& [ name, value ] : session.roots ) {
      rows.push_back( { name, shortForm( value ) } );
   }
   session.out << table( rows );
}

void
get( Session& session, Words words ) {
   print( session, valueAt( session.roots, words[ 0 ] ) );
}

void
del( Session& session, Words words ) {
   const Place place = placeAt( session.roots, words[ 0 ] );
   if ( place.row ) {
      print( session, operate( session.roots, place, Zel::OpCode::Delete, {} ) );
   } else if ( session.made.erase( place.path ) != 0 ) {
      session.roots.erase( place.path );
   } else {
      throw Error( fmt::format( "{} belongs to the agent; only what `new` made can be deleted",
                                place.path ) );
   }
}

Zel::Value
makeObject( const Roots& roots, Zel::TypeHandle type, Words words ) {
   const Zel::TypeRecord& record = *type.record();
   if ( isAbstract( record ) ) {
      throw Error( fmt::format( "{} is abstract; nothing can be made of it", record.name ) );
   }
   // A value may also be made of its string form; a type without a constructor must be.
   const Argument form{ "value", record.name };
   if ( record.kind == Zel::TypeKind::Value &&
        ( words.size() == 1 || !record.constructor.invoke ) ) {
      return argumentsFrom( roots, record.name, { &form, 1 }, {}, words ).front();
   }
   const std::vector< Argument > wanted = constructorArguments( record );
   const std::vector< Zel::Value > arguments =
      argumentsFrom( roots, record.name, wanted, {}, words );
   return withName( record.name, [ & ] { return Zel::zelConstruct( type, arguments ); } );
}

void
make( Session& session, Words words ) {
   const std::string& name = words[ 0 ];
   if ( !isName( name ) || name == "null" ) {
      throw Error(
         fmt::format( "\"{}\" is no name; letters, digits and _ make one, no digit first", name ) );
   }
   if ( session.roots.contains( name ) ) {
      throw Error( fmt::format( "there is already a \"{}\"", name ) );
   }
   const Zel::Value made = makeObject( session.roots, typeNamed( words[ 1 ] ), words.subspan( 2 ) );
   session.roots.emplace( name, made );
   session.made.insert( name );
   print( session, made );
}

void
iterate( Session& session, Words words ) {
   const Place place = placeAt( session.roots, words[ 0 ] );
   if ( !place.row || !place.row->iterate || !place.key.empty() ) {
      throw Error( fmt::format( "{} is no collection", place.path ) );
   }
   for ( const auto at = Zel::zelIterate( place.owner, place.row->name ); *at; at->advance() ) {
      fmt::print( session.out, "[{}] {}\n", shortForm( at->key() ), shortForm( at->object() ) );
   }
}

void
watch( Session& session, Words words ) {
   if ( words.empty() ) {
      for ( const auto& [ path, watched ] : session.watches ) {
         session.out << path << '\n';
      }
      return;
   }
   const std::string& path = words[ 0 ];
   const Zel::Value object = objectAt( placeAt( session.roots, path ) );
   if ( !object.entity() || !object.entity()->notifieeList() ) {
      throw Error( fmt::format( "{} is a {}, which tells nobody of its changes", path,
                                object.type().name() ) );
   }
   session.watches[ path ] = watchOn( object.entity(), path, session.out );
}

void
unwatch( Session& session, Words words ) {
   if ( session.watches.erase( words[ 0 ] ) == 0 ) {
      throw Error( fmt::format( "{} is not watched; `watch` lists what is", words[ 0 ] ) );
   }
}

void
printRuns( Session& session, std::uint64_t runs ) {
   fmt::print( session.out, "{} {}\n", runs, runs == 1 ? "run" : "runs" );
}

Zel::Value
callScheduler( const Session& session, const char* method ) {
   return Zel::zelAttribute( valueAt( session.roots, "scheduler" ), method, Zel::OpCode::Call );
}

void
step( Session& session, Words ) {
   printRuns( session, callScheduler( session, "runOnce" ).as< bool >() ? 1 : 0 );
}

void
run( Session& session, Words ) {
   printRuns( session, callScheduler( session, "runUntilIdle" ).as< std::uint64_t >() );
}

void
trace( Session& session, Words words ) {
   const std::vector< std::string > handles = Zel::traceHandles();
   if ( words.empty() ) {
      for ( const std::string& handle : handles ) {
         session.out << handle << '\n';
      }
      return;
   }
   const std::string_view list = unquoted( words[ 0 ] );
   withName( words[ 0 ], [ & ] { Zel::traceLevelsIs( list ); } );
   // It may be the name of one that is yet to come.
   for ( const std::string& handle : handlesBeside( handles, list ) ) {
      fmt::print( session.out, "no handle \"{}\" was used so far; `trace` lists those that were\n",
                  handle );
   }
}

void
tracker( Session& session, Words ) {
   std::vector< std::vector< std::string > > rows{ { "type", "live", "total", "bytes" } };
   for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
      rows.push_back( { count.typeName, std::to_string( count.live ), std::to_string( count.total ),
                        std::to_string( count.bytes ) } );
   }
   session.out << table( rows );
}

std::string
usage( const Command& command ) {
   return *command.arguments ? fmt::format( "{} {}", command.name, command.arguments )
                             : command.name;
}

const Command&
requireCommand( std::string_view name ) {
   if ( const Command* command = commandNamed( name ) ) {
      return *command;
   }
   throw Error( fmt::format( "there is no command \"{}\"; `help` lists them", name ) );
}

void
help( Session& session, Words words ) {
   if ( !words.empty() ) {
      const Command& command = requireCommand( words[ 0 ] );
      session.out << table( { { usage( command ), command.help } } );
      return;
   }
   std::vector< std::vector< std::string > > rows;
   for ( const Command& command : commands() ) {
      rows.push_back( { usage( command ), command.help } );
   }
   session.out << table( rows );
}

void
quit( Session& session, Words ) {
   session.ended = true;
}

constexpr std::array< Names, 3 > kNothing{};
constexpr std::array kCommands{ Names::Command, Names::Nothing, Names::Nothing };
constexpr std::array kType{ Names::Type, Names::Nothing, Names::Nothing };
constexpr std::array kPaths{ Names::Path, Names::Path, Names::Path };
constexpr std::array kNew{ Names::Nothing, Names::Type, Names::Path };

constexpr std::array kTable{
   Command{ "types", "", "list the registered types", 0, 0, kNothing, listTypes },
   Command{ "type", "NAME", "show a type and its attributes", 1, 1, kType, showType },
   Command{ "ls", "[PATH]", "list the roots, or the attributes of an object", 0, 1, kPaths, list },
   Command{ "get", "PATH", "print a value or an entity", 1, 1, kPaths, get },
   Command{ "set", "PATH [ARGUMENT...]", "write a value or a member, make an entity", 1, kAny,
            kPaths, operateCommand< Zel::OpCode::Set > },
   Command{ "del", "PATH", "delete a member, an entity, or what `new` made", 1, 1, kPaths, del },
   Command{ "call", "PATH [ARGUMENT...]", "call a method", 1, kAny, kPaths,
            operateCommand< Zel::OpCode::Call > },
   Command{ "new", "NAME TYPE [ARGUMENT...]", "make an object or a value, a root from then on", 2,
            kAny, kNew, make },
   Command{ "iterate", "PATH", "print the members of a collection", 1, 1, kPaths, iterate },
   Command{ "watch", "[PATH]", "print the changes of an entity as they happen; list the watched", 0,
            1, kPaths, watch },
   Command{ "unwatch", "PATH", "stop that", 1, 1, kPaths, unwatch },
   Command{ "step", "", "run the first task that is scheduled", 0, 0, kNothing, step },
   Command{ "run", "", "run tasks until none is scheduled", 0, 0, kNothing, run },
   Command{ "trace", "[HANDLE/LEVELS]", "set trace levels; list the handles", 0, 1, kNothing,
            trace },
   Command{ "tracker", "", "count the objects of each type", 0, 0, kNothing, tracker },
   Command{ "help", "[COMMAND]", "show this", 0, 1, kCommands, help },
   Command{ "quit", "", "leave", 0, 0, kNothing, quit },
   Command{ "exit", "", "leave", 0, 0, kNothing, quit },
};

}   // namespace

std::span< const Command >
commands() {
   return kTable;
}

const Command*
commandNamed( std::string_view name ) {
   const auto found = std::ranges::find( kTable, name, &Command::name );
   return found == kTable.end() ? nullptr : &*found;
}

void
carryOut( Session& session, std::string_view line ) {
   const std::size_t begin = line.find_first_not_of( " \t\r" );
   if ( begin == std::string_view::npos || line[ begin ] == '#' ) {
      return;
   }
   std::vector< std::string > words;
   for ( Word& word : splitWords( line ) ) {
      words.push_back( std::move( word.text ) );
   }
   const Command& command = requireCommand( words[ 0 ] );
   const Words arguments = Words( words ).subspan( 1 );
   if ( arguments.size() < command.fewest || arguments.size() > command.most ) {
      throw Error( fmt::format( "usage: {}", usage( command ) ) );
   }
   command.carryOut( session, arguments );
}

}   // namespace Agent::Console
