// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/TypePages.h"

#include <fmt/format.h>

#include <cstdint>
#include <span>
#include <vector>

#include "agent/console/Table.h"
#include "agent/console/Text.h"
#include "agent/console/Types.h"

namespace Agent::Console {
namespace {

std::string
code( std::string_view text ) {
   return text.empty() ? "" : fmt::format( "`{}`", text );
}

// A row of a Markdown table.
std::string
row( std::span< const std::string > cells ) {
   std::string line = "|";
   for ( const std::string& cell : cells ) {
      line += cell.empty() ? " |" : " " + cell + " |";
   }
   return line + "\n";
}

std::string
head( const std::vector< std::string >& cells ) {
   std::string lines = row( cells ) + "|";
   for ( std::size_t column = 0; column < cells.size(); ++column ) {
      lines += "---|";
   }
   return lines + "\n";
}

std::string
codesOf( const std::vector< OperationName >& operations ) {
   std::string codes;
   for ( const OperationName& operation : operations ) {
      codes +=
         fmt::format( "{}{}", codes.empty() ? "" : " ", static_cast< unsigned >( operation.code ) );
   }
   return codes;
}

// `show` makes an argument list what it looks like on the page.
template < class ShowList >
std::string
construction( const Zel::TypeRecord& type, const ShowList& show ) {
   const std::vector< Argument > arguments = constructorArguments( type );
   if ( !isAbstract( type ) && !type.constructor.invoke ) {
      return "made of its string form";
   }
   const std::string madeOf =
      arguments.empty() ? "made without arguments" : "made of " + show( listOf( arguments ) );
   if ( !isAbstract( type ) ) {
      return madeOf;
   }
   return arguments.empty() ? "abstract" : "abstract; derived types are " + madeOf;
}

std::string
argumentsCell( const Zel::AttributeRecord& attribute ) {
   return attribute.argumentTypes.empty() ? "" : code( listOf( argumentsOf( attribute ) ) );
}

std::string
typeMarkdown( const Zel::TypeRecord& type, std::uint32_t index ) {
   std::string text =
      fmt::format( "### `{}`\n\nIndex {}, {}", type.name, index, kindName( type.kind ) );
   if ( *type.base ) {
      text += fmt::format( ", base {}", code( type.base ) );
   }
   text += fmt::format( "; {}.", construction( type, code ) );
   if ( type.hooks ) {
      text += fmt::format( " Whole value: {}.", codesOf( wholeValueOperationsOf( type ) ) );
   }
   text += "\n\n";
   if ( type.attributes.empty() ) {
      return text;
   }
   text += head( { "Id", "Attribute", "Kind", "Value", "Key", "Arguments", "Operations" } );
   for ( const Zel::AttributeRecord& attribute : type.attributes ) {
      text += row( std::vector< std::string >{
         std::to_string( attribute.id ), code( attribute.name ), kindName( attribute.kind ),
         code( attribute.valueType ), code( attribute.keyType ), argumentsCell( attribute ),
         codesOf( operationsOf( attribute ) ) } );
   }
   return text + "\n";
}

constexpr std::string_view kOpening =
   "# Types\n\n"
   "Every registered type, by module. Printed by `vlan-scale-agent types --markdown`,\n"
   "not edited by hand.\n\n";

constexpr std::string_view kReturnCodes =
   "| Returned | Meaning |\n"
   "|---|---|\n"
   "| 0 | done |\n"
   "| 1 | the attribute exists but does not support the operation |\n"
   "| 2 | the attribute id is not one of this type's; the caller tries the base type |\n\n";

}   // namespace

std::string
typesText() {
   std::vector< std::vector< std::string > > rows;
   for ( const Zel::TypeModule* module : modulesByName() ) {
      for ( std::size_t index = 0; index < module->types.size(); ++index ) {
         const Zel::TypeRecord& type = module->types[ index ];
         rows.push_back(
            { module->name, std::to_string( index ), type.name, kindName( type.kind ) } );
      }
   }
   return table( rows );
}

std::string
typeText( Zel::TypeHandle type ) {
   const Zel::TypeRecord& record = *type.record();
   std::string text =
      fmt::format( "{}: {}{}{}, {} {}\n", record.name, kindName( record.kind ),
                   *record.base ? ", base " : "", record.base, type.module->name, type.index );
   text += construction( record, []( const std::string& list ) { return list; } ) + "\n";
   std::vector< std::vector< std::string > > rows;
   for ( const Zel::AttributeRecord* attribute : attributesOf( type ) ) {
      const bool takesArguments = !attribute->argumentTypes.empty();
      rows.push_back( { std::to_string( attribute->id ), attribute->name,
                        kindName( attribute->kind ), attribute->valueType,
                        *attribute->keyType ? fmt::format( "[{}]", attribute->keyType ) : "",
                        takesArguments ? listOf( argumentsOf( *attribute ) ) : "",
                        joined( operationsOf( *attribute ), &OperationName::name ) } );
   }
   return text + table( rows );
}

std::string
typesMarkdown() {
   std::string text( kOpening );
   text += head( { "Code", "Operation", "What it does" } );
   const auto addOperations = [ &text ]( std::span< const OperationName > operations ) {
      for ( const OperationName& operation : operations ) {
         text += row(
            std::vector< std::string >{ std::to_string( static_cast< unsigned >( operation.code ) ),
                                        operation.name, operation.meaning } );
      }
   };
   addOperations( kAttributeOperations );
   addOperations( kWholeValueOperations );
   text += "\nThe last three ask for a whole value: attribute 0.\n\n";
   text += kReturnCodes;
   for ( const Zel::TypeModule* module : modulesByName() ) {
      text += fmt::format( "## {}\n\n", module->name );
      for ( std::uint32_t index = 0; index < module->types.size(); ++index ) {
         text += typeMarkdown( module->types[ index ], index );
      }
   }
   text.pop_back();   // the page ends with one newline
   return text;
}

}   // namespace Agent::Console
