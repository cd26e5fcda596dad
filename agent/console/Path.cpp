// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Path.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstddef>

#include "agent/console/Error.h"
#include "agent/console/Text.h"
#include "agent/console/Types.h"
#include "agent/console/Words.h"

namespace Agent::Console {
namespace {

constexpr std::string_view kForm = "ROOT{.attribute | .attribute[key]}";

bool
isNameCharacter( char c ) {
   return std::isalnum( static_cast< unsigned char >( c ) ) != 0 || c == '_';
}

// Takes the name that `rest` begins with.
std::string_view
takeName( std::string_view& rest, std::string_view path ) {
   const auto end = std::ranges::find_if_not( rest, isNameCharacter );
   const std::string_view name = rest.substr( 0, static_cast< std::size_t >( end - rest.begin() ) );
   if ( !isName( name ) ) {
      throw Error( fmt::format( "\"{}\" is no path; a path is {}", clipped( path ), kForm ) );
   }
   rest.remove_prefix( name.size() );
   return name;
}

Place
rootAt( const Roots& roots, std::string_view name ) {
   const auto root = roots.find( name );
   if ( root == roots.end() ) {
      throw Error( fmt::format( "there is no \"{}\"; there are: {}", name,
                                joined( roots, &Roots::value_type::first ) ) );
   }
   return { root->first, root->second, nullptr, {} };
}

const Zel::AttributeRecord&
attributeOf( Zel::TypeHandle type, std::string_view name ) {
   if ( const Zel::AttributeRecord* row = Zel::zelAttributeByName( type, name ) ) {
      return *row;
   }
   throw Error( fmt::format( "{} has no attribute \"{}\"; it has: {}", type.name(), name,
                             joined( attributesOf( type ), &Zel::AttributeRecord::name ) ) );
}

Zel::Value
parseKey( const Place& place, std::string_view text ) {
   const Zel::AttributeRecord& row = *place.row;
   if ( !row.iterate ) {
      throw Error( fmt::format( "{} is {} and has no keys", place.path, aKind( row.kind ) ) );
   }
   return withName( fmt::format( "{}[{}]: key is a {}", place.path, text, row.keyType ),
                    [ & ] { return Zel::zelParse( row.keyType, unquoted( text ) ); } );
}

}   // namespace

bool
isName( std::string_view name ) {
   return !name.empty() && std::isdigit( static_cast< unsigned char >( name[ 0 ] ) ) == 0 &&
          std::ranges::all_of( name, isNameCharacter );
}

Place
placeAt( const Roots& roots, std::string_view path ) {
   std::string_view rest = path;
   Place place = rootAt( roots, takeName( rest, path ) );
   while ( !rest.empty() ) {
      if ( rest[ 0 ] == '.' ) {
         rest.remove_prefix( 1 );
         const std::string_view name = takeName( rest, path );
         Zel::Value owner = objectAt( place );
         const Zel::AttributeRecord& row = attributeOf( owner.type(), name );
         place = { fmt::format( "{}.{}", place.path, name ), std::move( owner ), &row, {} };
      } else if ( rest[ 0 ] == '[' && place.row && place.key.empty() ) {
         const std::size_t end = pieceEnd( rest, 0 );
         place.key.push_back( parseKey( place, rest.substr( 1, end - 2 ) ) );
         place.path += rest.substr( 0, end );
         rest.remove_prefix( end );
      } else {
         throw Error( fmt::format( "\"{}\" is no path: unexpected \"{}\"; a path is {}",
                                   clipped( path ), clipped( rest ), kForm ) );
      }
   }
   return place;
}

void
requireOperation( const Place& place, Zel::OpCode code ) {
   if ( !place.row ) {
      throw Error(
         fmt::format( "{0} is no attribute; a path to one is {0}.attribute", place.path ) );
   }
   const std::vector< OperationName > supported = operationsOf( *place.row );
   if ( std::ranges::find( supported, code, &OperationName::code ) != supported.end() ) {
      return;
   }
   if ( place.row->kind == Zel::AttributeKind::Method ) {
      throw Error(
         fmt::format( "{} is described only; generic access does not call it", place.path ) );
   }
   const auto wanted = std::ranges::find( kAttributeOperations, code, &OperationName::code );
   throw Error( fmt::format( "{} is {}: no {}; it supports: {}", place.path,
                             aKind( place.row->kind ), wanted->name,
                             joined( supported, &OperationName::name ) ) );
}

Zel::Value
valueAt( const Place& place ) {
   if ( !place.row ) {
      return place.owner;
   }
   requireOperation( place, Zel::OpCode::Get );
   if ( place.row->iterate && place.key.empty() ) {
      throw Error( fmt::format( "{0} is {1}: name a member, {0}[{2}], or iterate", place.path,
                                aKind( place.row->kind ), place.row->keyType ) );
   }
   return Zel::zelAttribute( place.owner, place.row->name, Zel::OpCode::Get, place.key );
}

Zel::Value
valueAt( const Roots& roots, std::string_view path ) {
   return valueAt( placeAt( roots, path ) );
}

Zel::Value
objectAt( const Place& place ) {
   Zel::Value value = valueAt( place );
   if ( !Zel::View( value ).object ) {
      throw Error( fmt::format( "{} is null", place.path ) );
   }
   return value;
}

}   // namespace Agent::Console
