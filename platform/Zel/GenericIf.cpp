// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/GenericIf.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <utility>

#include "Zel/Exception.h"
#include "Zel/Parse.h"

namespace Zel {
namespace {

// The one place where an operation code meets what a row says of it: by code, null for the others.
constexpr auto kOperations = [] {
   std::array< Operation AttributeRecord::*, static_cast< std::size_t >( OpCode::Call ) + 1 >
      byCode{};
   const auto is = [ &byCode ]( OpCode code, Operation AttributeRecord::*operation ) {
      byCode[ static_cast< std::size_t >( code ) ] = operation;
   };
   is( OpCode::Get, &AttributeRecord::get );
   is( OpCode::Set, &AttributeRecord::set );
   is( OpCode::Delete, &AttributeRecord::del );
   is( OpCode::Size, &AttributeRecord::size );
   is( OpCode::Changes, &AttributeRecord::changes );
   is( OpCode::Has, &AttributeRecord::has );
   is( OpCode::Call, &AttributeRecord::call );
   return byCode;
}();

constexpr Operation kNone{};

TypeHandle
baseOf( TypeHandle type ) {
   return type && *type.record()->base ? zelTypeOf( type.record()->base ) : TypeHandle{};
}

std::string
nameOf( TypeHandle type ) {
   return type ? type.name() : "nothing";
}

std::string
listOf( std::span< const char* const > types ) {
   std::string list;
   for ( const char* type : types ) {
      list += ( list.empty() ? "" : ", " ) + std::string( type );
   }
   return list.empty() ? "no arguments" : "( " + list + " )";
}

// Whether an object of one type can be read in place as the other: where only the derived type has
// a vtable pointer, its base stands behind that.
bool
readableAs( TypeHandle type, TypeHandle wanted ) {
   return zelDerives( type, wanted ) && type.record()->polymorphic == wanted.record()->polymorphic;
}

// Equal names settle it without a look-up; most arguments are of exactly the type asked for, and
// a process has the name of an exported type once.
bool
isOf( TypeHandle type, const char* wanted ) {
   return type && ( type.name() == wanted || std::strcmp( type.name(), wanted ) == 0 ||
                    readableAs( type, zelTypeOf( wanted ) ) );
}

template < class Name >
[[noreturn]] void
throwArguments( const Name& name, std::span< const char* const > types,
                std::span< const Value > arguments ) {
   if ( arguments.size() != types.size() ) {
      throw TypeException( name() + " takes " + listOf( types ) + ", " +
                           std::to_string( arguments.size() ) + " given" );
   }
   std::size_t i = 0;
   while ( isOf( arguments[ i ].type(), types[ i ] ) ) {
      ++i;
   }
   throw TypeException( name() + " takes a " + types[ i ] + " as argument " +
                        std::to_string( i + 1 ) + ", " + nameOf( arguments[ i ].type() ) +
                        " given" );
}

/// `name` is called for the name of the operation when an error has to tell it.
template < class Name >
void
requireArguments( const Name& name, std::span< const char* const > types,
                  std::span< const Value > arguments ) {
   const bool areOfThem =
      std::ranges::equal( arguments, types, []( const Value& argument, const char* type ) {
         return isOf( argument.type(), type );
      } );
   if ( !areOfThem ) [[unlikely]] {
      throwArguments( name, types, arguments );
   }
}

void
requireObject( View object ) {
   if ( !object.type || !object.object ) {
      throw TypeException( "there is no object: null " + nameOf( object.type ) );
   }
}

// A view may lead down to a type that the entity is not.
void
requireEntityOfItsType( View object ) {
   const TypeHandle actual = static_cast< const PtrInterface* >( object.object )->fwkType();
   if ( actual && !zelDerives( actual, object.type ) ) {
      throw TypeException( "a " + nameOf( actual ) + " is no " + nameOf( object.type ) );
   }
}

const TypeRecord&
requireRecord( TypeHandle type ) {
   if ( !type ) {
      throw TypeException( "there is no type" );
   }
   return *type.record();
}

int
wholeValueOp( Value& result, View object, unsigned operation, std::span< const Value > arguments ) {
   const TypeRecord& type = *object.type.record();
   const ValueHooks& hooks = *type.hooks;
   const auto name = [ &type ] { return std::string( type.name ); };
   if ( operation == static_cast< unsigned >( OpCode::IsSet ) ) {
      requireArguments( name, {}, arguments );
      result.valueIs( !hooks.isDefault( object.object ) );
      return kDone;
   }
   const auto compare = operation == static_cast< unsigned >( OpCode::Equal ) ? hooks.equal
                      : operation == static_cast< unsigned >( OpCode::Less )  ? hooks.less
                                                                              : nullptr;
   if ( !compare ) {
      return kUnsupported;
   }
   requireArguments( name, { &type.name, 1 }, arguments );
   result.valueIs( compare( object.object, View( arguments[ 0 ] ).object ) );
   return kDone;
}

const AttributeRecord*
rowOf( std::span< const AttributeRecord > rows, AttributeId id ) {
   // Ids are numbered in the order of the rows, mostly without a gap.
   const std::size_t guess = rows.empty() ? 0 : std::size_t{ id } - rows.front().id;
   if ( guess < rows.size() && rows[ guess ].id == id ) {
      return &rows[ guess ];
   }
   const auto row = std::ranges::find( rows, id, &AttributeRecord::id );
   return row != rows.end() ? &*row : nullptr;
}

struct FoundAttribute {
   TypeHandle type;
   const AttributeRecord* row = nullptr;
   /// The object under that type.
   View object{};
};

template < class Member, class Wanted >
FoundAttribute
find( TypeHandle type, Member member, const Wanted& wanted ) {
   for ( ; type; type = baseOf( type ) ) {
      const auto rows = type.record()->attributes;
      const auto row = std::ranges::find( rows, wanted, member );
      if ( row != rows.end() ) {
         return { type, &*row };
      }
   }
   return {};
}

FoundAttribute
requireAttribute( View object, std::string_view name ) {
   requireObject( object );
   FoundAttribute found = find( object.type, &AttributeRecord::name, name );
   if ( !found.row ) {
      throw TypeException( nameOf( object.type ) + " has no attribute \"" + std::string( name ) +
                           "\"" );
   }
   found.object = zelViewAs( object, found.type );
   return found;
}

}   // namespace

GenericIterator::~GenericIterator() = default;

int
genericIfAttributeOp( Value& result, View object, AttributeId attribute, unsigned operation,
                      std::span< const Value > arguments ) {
   requireObject( object );
   const TypeRecord& type = *object.type.record();
   if ( attribute == 0 && type.kind == TypeKind::Value ) {
      return wholeValueOp( result, object, operation, arguments );
   }
   const AttributeRecord* const row = rowOf( type.attributes, attribute );
   if ( !row ) {
      return kNoAttribute;
   }
   if ( type.kind == TypeKind::Entity ) {
      requireEntityOfItsType( object );
   }
   const Operation& found = zelOperation( *row, operation );
   if ( !found.invoke ) {
      return kUnsupported;
   }
   requireArguments( [ & ] { return std::string( type.name ) + "::" + row->name; }, found.types,
                     arguments );
   found.invoke( object.object, arguments.data(), result );
   return kDone;
}

Value
zelAttribute( View object, std::string_view attribute, OpCode operation,
              std::span< const Value > arguments ) {
   const FoundAttribute found = requireAttribute( object, attribute );
   Value result;
   if ( genericIfAttributeOp( result, found.object, found.row->id,
                              static_cast< unsigned >( operation ), arguments ) != kDone ) {
      throw TypeException( nameOf( found.type ) + "::" + found.row->name +
                           " does not support operation " +
                           std::to_string( static_cast< unsigned >( operation ) ) );
   }
   return result;
}

Value
zelAttribute( View object, std::string_view attribute, OpCode operation,
              std::initializer_list< Value > arguments ) {
   return zelAttribute( object, attribute, operation,
                        std::span< const Value >( arguments.begin(), arguments.size() ) );
}

std::unique_ptr< GenericIterator >
zelIterate( View object, std::string_view attribute ) {
   const FoundAttribute found = requireAttribute( object, attribute );
   if ( !found.row->iterate ) {
      throw TypeException( nameOf( found.type ) + "::" + found.row->name + " is no collection" );
   }
   return found.row->iterate( found.object.object );
}

const AttributeRecord*
zelAttributeByName( TypeHandle type, std::string_view name ) {
   return find( type, &AttributeRecord::name, name ).row;
}

const AttributeRecord*
zelAttributeById( TypeHandle type, AttributeId id ) {
   return find( type, &AttributeRecord::id, id ).row;
}

Value
zelConstruct( TypeHandle type, std::span< const Value > arguments ) {
   const TypeRecord& record = requireRecord( type );
   if ( !record.constructor.invoke ) {
      throw TypeException( std::string( record.name ) + " cannot be constructed: it is abstract" );
   }
   requireArguments( [ &record ] { return std::string( record.name ); }, record.constructor.types,
                     arguments );
   Value result;
   record.constructor.invoke( nullptr, arguments.data(), result );
   return result;
}

Value
zelConstruct( TypeHandle type, std::initializer_list< Value > arguments ) {
   return zelConstruct( type, std::span< const Value >( arguments.begin(), arguments.size() ) );
}

const Operation&
zelOperation( const AttributeRecord& row, unsigned operation ) {
   const auto found = operation < kOperations.size() ? kOperations[ operation ] : nullptr;
   return found ? row.*found : kNone;
}

bool
zelDerives( TypeHandle type, TypeHandle base ) {
   while ( type && !( type == base ) ) {
      type = baseOf( type );
   }
   return static_cast< bool >( type );
}

View
zelViewAs( View object, TypeHandle type ) {
   if ( !readableAs( object.type, type ) && !readableAs( type, object.type ) ) {
      throw TypeException( "a " + nameOf( object.type ) + " is no " + nameOf( type ) );
   }
   return { type, object.object };
}

void
zelRequireType( View object, const char* type ) {
   if ( !isOf( object.type, type ) ) {
      throw TypeException( "a " + nameOf( object.type ) + " is no " + type );
   }
}

const ValueHooks&
zelRequireValue( View value ) {
   const ValueHooks* hooks = requireRecord( value.type ).hooks;
   if ( !hooks || !value.object ) {
      throw TypeException( "there is no value: " + nameOf( value.type ) );
   }
   return *hooks;
}

String
zelStrep( View value ) {
   return zelRequireValue( value ).strep( value.object );
}

Value
zelParse( TypeHandle type, std::string_view text ) {
   const ValueHooks* hooks = requireRecord( type ).hooks;
   if ( !hooks ) {
      throw TypeException( nameOf( type ) + " has no string form" );
   }
   const String whole( text );
   StringIterator current = whole.begin();
   Value value = Value::adopt( type, hooks->parse( current, whole.end() ) );
   parseEnd( current, whole.end() );
   return value;
}

Value
zelParse( std::string_view type, std::string_view text ) {
   return zelParse( zelTypeOf( type ), text );
}

void
zelRequireTrue( bool value ) {
   if ( !value ) {
      throw SetFalseValueException( "a hash set only holds true; delete the key instead" );
   }
}

}   // namespace Zel
