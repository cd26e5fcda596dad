// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Completion.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "agent/console/Commands.h"
#include "agent/console/Types.h"
#include "agent/console/Words.h"

namespace Agent::Console {
namespace {

Names
namesAt( const std::vector< Word >& words ) {
   if ( words.size() == 1 ) {
      return Names::Command;
   }
   const Command* command = commandNamed( words[ 0 ].text );
   if ( !command || words.size() - 1 > command->most ) {
      return Names::Nothing;
   }
   return command->names[ std::min( words.size() - 2, command->names.size() - 1 ) ];
}

// What names the object whose attribute `path` ends with, the dot included; empty for a root.
std::string_view
ownerOf( std::string_view path ) {
   std::size_t end = 0;
   for ( std::size_t at = 0; at < path.size(); at = pieceEnd( path, at ) ) {
      if ( path[ at ] == '.' ) {
         end = at + 1;
      }
   }
   return path.substr( 0, end );
}

std::vector< std::string >
pathsLike( const Roots& roots, std::string_view path ) {
   const std::string_view owner = ownerOf( path );
   std::vector< std::string > paths;
   if ( owner.empty() ) {
      for ( const auto& [ name, value ] : roots ) {
         paths.push_back( name );
      }
      return paths;
   }
   const Zel::Value object = valueAt( roots, owner.substr( 0, owner.size() - 1 ) );
   for ( const Zel::AttributeRecord* row : attributesOf( object.type() ) ) {
      paths.push_back( std::string( owner ) + row->name );
   }
   return paths;
}

std::vector< std::string >
candidates( const Session& session, Names names, std::string_view word ) {
   std::vector< std::string > all;
   switch ( names ) {
   case Names::Nothing:
      break;
   case Names::Command:
      for ( const Command& command : commands() ) {
         all.emplace_back( command.name );
      }
      break;
   case Names::Type:
      for ( const Zel::TypeModule* module : modulesByName() ) {
         for ( const Zel::TypeRecord& type : module->types ) {
            all.emplace_back( type.name );
         }
      }
      break;
   case Names::Path:
      const std::string_view sign = word.substr( 0, word.starts_with( '$' ) ? 1 : 0 );
      for ( const std::string& path : pathsLike( session.roots, word.substr( sign.size() ) ) ) {
         all.push_back( std::string( sign ) + path );
      }
      break;
   }
   std::erase_if( all, [ word ]( const std::string& each ) { return !each.starts_with( word ); } );
   std::ranges::sort( all );
   return all;
}

}   // namespace

Completions
complete( const Session& session, std::string_view line ) {
   try {
      std::vector< Word > words = splitWords( line );
      if ( words.empty() || words.back().at + words.back().text.size() < line.size() ) {
         words.push_back( { line.size(), "" } );
      }
      const Names names = namesAt( words );
      return { words.back().at, candidates( session, names, words.back().text ),
               names == Names::Path };
   } catch ( const std::exception& ) {
      return {};   // a word that is not finished, or a path that leads nowhere
   }
}

}   // namespace Agent::Console
