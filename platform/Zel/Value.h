// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Value, View: a value or entity whose type is known by its handle.
//
// View   Points to an object of a registered type and owns nothing.
// Value  Owns a copy of a value, or one reference to an entity; may be empty. A copy of it is
//        another copy or reference. Not to outlive the library that registered the type.
// const  Generic access knows none: whoever reaches an entity may change it.
#pragma once

#include <memory>
#include <string_view>
#include <type_traits>

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeName.h"

namespace Zel {

/// The handle of a registered type; throws TypeException for a name that nobody registered.
ZEL_EXPORT TypeHandle zelTypeOf( std::string_view name );

struct View {
   TypeHandle type;
   /// The storage of a value; an entity as PtrInterface, null for a null pointer.
   const void* object = nullptr;
};

class ZEL_EXPORT Value {
 public:
   Value() = default;
   /// A copy of the value that `value` views. Throws TypeException unless there is one, of a value
   /// type.
   explicit Value( View value );
   /// An entity under its own registered type; a null pointer, and an entity without one, under
   /// `declared`.
   Value( TypeHandle declared, Ptr< PtrInterface > entity );
   /// Takes over storage that the type's hooks made.
   static Value adopt( TypeHandle type, void* storage );
   template < class T >
   static Value of( const T& value ) {
      Value result;
      result.valueIs( value );
      return result;
   }
   /// Becomes a copy of the value, or refers to the entity; a class that is not registered goes by
   /// its nearest registered base, with and without an entity.
   template < class T >
   void valueIs( const T& value ) {
      valueIs( typeName< T >, &value );
   }
   template < class T >
   void valueIs( const Ptr< T >& entity ) {
      entityIs( registeredName( &T::fwkType ),
                const_cast< std::remove_const_t< T >* >( entity.get() ) );
   }

   /// Room for what fill() will bring: a default value or a null pointer.
   template < class T >
   static Value room() {
      return of( std::remove_cvref_t< T >() );
   }
   /// Requires: this is room for a T. Copies the value, or refers to the entity.
   template < class T >
   void fill( const T& value ) {
      *static_cast< T* >( storage_.get() ) = value;
   }
   template < class T >
   void fill( const Ptr< T >& entity ) noexcept {
      *this = Value( type_, const_cast< std::remove_const_t< T >* >( entity.get() ) );
   }

   Value( const Value& other );
   Value( Value&& ) noexcept;
   Value& operator=( Value other ) noexcept;
   ~Value();

   explicit operator bool() const { return static_cast< bool >( type_ ); }
   /// Null for an empty one.
   const TypeHandle& type() const { return type_; }
   operator View() const;

   /// The value, which stays in here. Throws TypeException unless it is a T or derives from it.
   template < class T >
   const T& as() const {
      return *static_cast< const T* >( checked( typeName< T > ) );
   }
   /// The entity, or null. Throws TypeException unless its type is T or derives from it.
   template < class T >
   Ptr< T > entity() const {
      checked( typeName< T > );
      return static_cast< T* >( entity_.get() );
   }
   const Ptr< PtrInterface >& entity() const { return entity_; }

 private:
   struct Destroy {
      const ValueHooks* hooks;
      void operator()( void* storage ) const noexcept { hooks->destroy( storage ); }
   };

   // A registered class answers for its own type, and those that derive from it inherit the answer:
   // a pointer to the function tells which class that is.
   template < class Registered >
   static constexpr const char* registeredName( TypeHandle ( Registered::* )() const ) {
      return typeName< Registered >;
   }

   Value( View value, const ValueHooks& hooks );
   // Out of line, since every row of every table gets here.
   void valueIs( const char* type, const void* value );
   void entityIs( const char* type, PtrInterface* entity );
   const void* checked( const char* type ) const;

   TypeHandle type_;
   std::unique_ptr< void, Destroy > storage_{ nullptr, Destroy{ nullptr } };
   Ptr< PtrInterface > entity_;
};

}   // namespace Zel
