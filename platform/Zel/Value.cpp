// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Value.h"

#include <string>
#include <utility>

#include "Zel/Exception.h"
#include "Zel/GenericIf.h"

namespace Zel {

TypeHandle
zelTypeOf( std::string_view name ) {
   if ( const TypeHandle type = zelTypeByName( name ) ) {
      return type;
   }
   throw TypeException( "no type is registered as \"" + std::string( name ) + "\"" );
}

Value::Value( View value ) : Value( value, zelRequireValue( value ) ) {}

Value::Value( View value, const ValueHooks& hooks )
    : type_( value.type ), storage_( hooks.copy( value.object ), Destroy{ &hooks } ) {}

Value::Value( TypeHandle declared, Ptr< PtrInterface > entity )
    : type_( entity && entity->fwkType() ? entity->fwkType() : declared ),
      entity_( std::move( entity ) ) {}

Value
Value::adopt( TypeHandle type, void* storage ) {
   Value value;
   value.type_ = type;
   value.storage_ = { storage, Destroy{ type.record()->hooks } };
   return value;
}

Value::Value( const Value& other )
    : type_( other.type_ ),
      storage_( other.storage_ ? other.storage_.get_deleter().hooks->copy( other.storage_.get() )
                               : nullptr,
                other.storage_.get_deleter() ),
      entity_( other.entity_ ) {}

Value::Value( Value&& ) noexcept = default;

Value&
Value::operator=( Value other ) noexcept {
   std::swap( type_, other.type_ );
   std::swap( storage_, other.storage_ );
   std::swap( entity_, other.entity_ );
   return *this;
}

Value::~Value() = default;

Value::operator View() const {
   return { type_, storage_ ? storage_.get() : entity_.get() };
}

void
Value::valueIs( const char* type, const void* value ) {
   *this = Value( View{ zelTypeOf( type ), value } );
}

void
Value::entityIs( const char* type, PtrInterface* entity ) {
   *this = Value( zelTypeOf( type ), entity );
}

const void*
Value::checked( const char* type ) const {
   zelRequireType( *this, type );
   return View( *this ).object;
}

}   // namespace Zel
