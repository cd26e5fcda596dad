// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Show.h"

#include <fmt/format.h>

#include <vector>

#include "Zel/GenericIf.h"
#include "agent/console/Table.h"
#include "agent/console/Types.h"

namespace Agent::Console {
namespace {

// Whether it can be read without a key.
bool
isReadable( const Zel::AttributeRecord& row ) {
   return row.get.invoke && row.get.types.empty();
}

std::string
contentOf( const Zel::Value& object, const Zel::AttributeRecord& row ) {
   if ( isReadable( row ) ) {
      return shortForm( Zel::zelAttribute( object, row.name, Zel::OpCode::Get ) );
   }
   if ( row.size.invoke ) {
      const std::string size =
         shortForm( Zel::zelAttribute( object, row.name, Zel::OpCode::Size ) );
      return size + ( size == "1" ? " element" : " elements" );
   }
   const std::string arguments = listOf( argumentsOf( row ) );
   return *row.valueType ? arguments + " -> " + row.valueType : arguments;
}

}   // namespace

std::string
shortForm( const Zel::Value& value ) {
   if ( value.type().record()->kind == Zel::TypeKind::Value ) {
      return Zel::zelStrep( value ).str();
   }
   if ( !value.entity() ) {
      return "null";
   }
   std::string fields;
   for ( const Zel::AttributeRecord* row : attributesOf( value.type() ) ) {
      if ( isReadable( *row ) &&
           Zel::zelTypeOf( row->valueType ).record()->kind == Zel::TypeKind::Value ) {
         fields += fmt::format( "{}{}: {}", fields.empty() ? "" : ", ", row->name,
                                contentOf( value, *row ) );
      }
   }
   const char* name = value.type().name();
   return fields.empty() ? name : fmt::format( "{}( {} )", name, fields );
}

std::string
listing( const Zel::Value& object ) {
   std::vector< std::vector< std::string > > rows;
   for ( const Zel::AttributeRecord* row : attributesOf( object.type() ) ) {
      rows.push_back( { row->name, kindName( row->kind ), contentOf( object, *row ) } );
   }
   return table( rows );
}

}   // namespace Agent::Console
