// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Types.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "agent/console/Error.h"

namespace Agent::Console {
namespace {

const Zel::Operation&
operationOf( const Zel::AttributeRecord& row, Zel::OpCode code ) {
   return Zel::zelOperation( row, static_cast< unsigned >( code ) );
}

std::vector< Argument >
named( const Zel::ArgumentNames& names, std::span< const char* const > types ) {
   std::vector< Argument > arguments;
   for ( std::size_t i = 0; i < types.size(); ++i ) {
      arguments.push_back( { names.names[ i ], types[ i ] } );
   }
   return arguments;
}

}   // namespace

const char*
kindName( Zel::TypeKind kind ) {
   return kind == Zel::TypeKind::Entity ? "entity" : "value";
}

const char*
kindName( Zel::AttributeKind kind ) {
   static constexpr std::array kNames{ "field",
                                       "pointer",
                                       "instantiating pointer",
                                       "settable pointer",
                                       "settable value",
                                       "ordered map",
                                       "ordered set",
                                       "hash map",
                                       "hash set",
                                       "entity map",
                                       "method",
                                       "callable method" };
   return kNames.at( static_cast< std::size_t >( kind ) );
}

std::string
aKind( Zel::AttributeKind kind ) {
   const std::string name = kindName( kind );
   return ( std::string_view( "aeiou" ).find( name[ 0 ] ) == std::string_view::npos ? "a "
                                                                                    : "an " ) +
          name;
}

std::vector< OperationName >
operationsOf( const Zel::AttributeRecord& row ) {
   std::vector< OperationName > supported;
   for ( const OperationName& operation : kAttributeOperations ) {
      if ( operationOf( row, operation.code ).invoke ) {
         supported.push_back( operation );
      }
   }
   return supported;
}

std::vector< OperationName >
wholeValueOperationsOf( const Zel::TypeRecord& type ) {
   std::vector< OperationName > supported;
   for ( const OperationName& operation : kWholeValueOperations ) {
      if ( type.hooks && ( operation.code != Zel::OpCode::Less || type.hooks->less ) ) {
         supported.push_back( operation );
      }
   }
   return supported;
}

std::vector< const Zel::AttributeRecord* >
attributesOf( Zel::TypeHandle type ) {
   std::vector< const Zel::AttributeRecord* > rows;
   const Zel::TypeRecord& record = *type.record();
   if ( *record.base ) {
      rows = attributesOf( Zel::zelTypeOf( record.base ) );
   }
   for ( const Zel::AttributeRecord& row : record.attributes ) {
      rows.push_back( &row );
   }
   return rows;
}

std::vector< Argument >
argumentsOf( const Zel::AttributeRecord& row, Zel::OpCode code ) {
   const bool ofMutator = code == Zel::OpCode::Set || code == Zel::OpCode::Call;
   if ( ofMutator && !row.argumentTypes.empty() ) {
      return argumentsOf( row );
   }
   // A settable attribute or a value that holds its own key is set by the value alone.
   const auto types = operationOf( row, code ).types;
   const bool keyFirst = !ofMutator || types.size() > 1;
   std::vector< Argument > arguments;
   for ( const char* type : types ) {
      arguments.push_back( { keyFirst && arguments.empty() ? "key" : "value", type } );
   }
   return arguments;
}

std::vector< Argument >
argumentsOf( const Zel::AttributeRecord& row ) {
   return named( row.argumentNames, row.argumentTypes );
}

std::vector< Argument >
constructorArguments( const Zel::TypeRecord& type ) {
   return named( type.constructorNames, type.constructor.types );
}

std::string
listOf( std::span< const Argument > arguments ) {
   std::string list;
   for ( const Argument& argument : arguments ) {
      list += fmt::format( "{}{}: {}", list.empty() ? "" : ", ", argument.name, argument.type );
   }
   return list.empty() ? "()" : "( " + list + " )";
}

bool
isAbstract( const Zel::TypeRecord& type ) {
   return type.kind == Zel::TypeKind::Entity && !type.constructor.invoke;
}

Zel::TypeHandle
typeNamed( std::string_view name ) {
   const Zel::TypeHandle type = Zel::zelTypeByName( name );
   if ( !type ) {
      throw Error( fmt::format( "there is no type \"{}\"; `types` lists them", name ) );
   }
   return type;
}

std::vector< const Zel::TypeModule* >
modulesByName() {
   std::vector< const Zel::TypeModule* > modules = Zel::zelModules();
   std::ranges::sort( modules, {}, []( const Zel::TypeModule* module ) {
      return std::string_view( module->name );
   } );
   return modules;
}

}   // namespace Agent::Console
