// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Arguments.h"

#include <fmt/format.h>

#include <cstddef>

#include "Zel/GenericIf.h"
#include "agent/console/Error.h"
#include "agent/console/Words.h"

namespace Agent::Console {
namespace {

Zel::Value
referred( const Roots& roots, Zel::TypeHandle type, std::string_view path ) {
   Zel::Value value = objectAt( placeAt( roots, path ) );
   if ( !Zel::zelDerives( value.type(), type ) ) {
      throw Error( fmt::format( "{} is a {}, not a {}", path, value.type().name(), type.name() ) );
   }
   return value;
}

Zel::Value
argumentFrom( const Roots& roots, Zel::TypeHandle type, const std::string& word ) {
   if ( type.record()->kind == Zel::TypeKind::Entity ) {
      if ( word == "null" ) {
         throw Error( fmt::format( "null is not accepted; name a {} by its path", type.name() ) );
      }
      return referred( roots, type, word );
   }
   return word.starts_with( '$' ) ? referred( roots, type, std::string_view( word ).substr( 1 ) )
                                  : Zel::zelParse( type, unquoted( word ) );
}

}   // namespace

std::vector< Zel::Value >
argumentsFrom( const Roots& roots, std::string_view what, std::span< const Argument > wanted,
               std::vector< Zel::Value > given, std::span< const std::string > words ) {
   if ( given.size() + words.size() != wanted.size() ) {
      throw Error( fmt::format( "{} takes {}, {} given", what, listOf( wanted ),
                                given.size() + words.size() ) );
   }
   for ( const std::string& word : words ) {
      const Argument& argument = wanted[ given.size() ];
      try {
         given.push_back( withName( argument.name, [ & ] {
            return argumentFrom( roots, Zel::zelTypeOf( argument.type ), word );
         } ) );
      } catch ( const Error& error ) {
         throw Error( fmt::format( "{}: {}; takes {}", what, error.what(), listOf( wanted ) ) );
      }
   }
   return given;
}

Zel::Value
operate( const Roots& roots, const Place& place, Zel::OpCode code,
         std::span< const std::string > words ) {
   requireOperation( place, code );
   const std::vector< Argument > wanted = argumentsOf( *place.row, code );
   if ( !place.key.empty() && wanted.front().type != std::string_view( place.row->keyType ) ) {
      throw Error(
         fmt::format( "{}: the value holds its key; takes {}", place.path, listOf( wanted ) ) );
   }
   const std::vector< Zel::Value > arguments =
      argumentsFrom( roots, place.path, wanted, place.key, words );
   return withName( place.path, [ & ] {
      return Zel::zelAttribute( place.owner, place.row->name, code, arguments );
   } );
}

}   // namespace Agent::Console
