// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TypeTable: makes the rows of a type's table; for registration files alone.
//
//   constexpr std::array kVlanRangeEntryAttributes{
//      Zel::field< &VlanRangeEntry::intfId >( 130, "intfId" ),
//      Zel::orderedMap< VlanRangeEntry, VlanRangeEntry::VlanIdRangeMap, &VlanRangeEntry::vlanIdRange,
//                       &VlanRangeEntry::vlanIdRangeIs, &VlanRangeEntry::vlanIdRangeDel >(
//         131, "vlanIdRange" ),
//   };
//
// A row names the members that carry it out; value, key and argument types follow from their
// signatures, so a table cannot disagree with its class. What a kind supports is what its builder
// fills in. The code behind a row only unpacks arguments and calls the member: all checks are made
// before, in one place (Zel/GenericIf.cpp).
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <type_traits>
#include <utility>

#include "Zel/GenericIf.h"
#include "Zel/GenericIterator.h"
#include "Zel/Hash.h"
#include "Zel/Parse.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/String.h"
#include "Zel/TypeName.h"
#include "Zel/TypeRecord.h"
#include "Zel/Value.h"

namespace Zel {

namespace Detail {

template < class T >
struct IsPtr : std::false_type {};
template < class T >
struct IsPtr< Ptr< T > > : std::true_type {};

/// How mutators take a T.
template < class T >
using Passed = std::conditional_t< sizeof( T ) <= 8, T, const T& >;

template < class T >
T&
objectAs( const void* object ) {
   if constexpr ( std::derived_from< T, PtrInterface > ) {
      const auto* entity = static_cast< const PtrInterface* >( object );
      return const_cast< T& >( static_cast< const T& >( *entity ) );
   } else {
      return const_cast< T& >( *static_cast< const T* >( object ) );
   }
}

template < class Parameter >
auto
unpack( const Value& argument ) {
   using T = std::remove_cvref_t< Parameter >;
   if constexpr ( IsPtr< T >::value ) {
      using Element = std::remove_const_t< typename T::Element >;
      return Ptr< Element >( static_cast< Element* >( argument.entity().get() ) );
   } else {
      return *static_cast< const T* >( View( argument ).object );
   }
}

/// A function as an operation: unpacks, calls, packs what comes back. What the result needs is made
/// before the call, so that an answer is not lost when memory runs out.
template < class Result, class... Parameters, class Function >
void
call( const Function& function, const Value* arguments, Value& result ) {
   [ & ]< std::size_t... I >( std::index_sequence< I... > ) {
      if constexpr ( std::is_void_v< Result > ) {
         function( unpack< Parameters >( arguments[ I ] )... );
      } else {
         Value answer = Value::room< Result >();
         answer.fill( function( unpack< Parameters >( arguments[ I ] )... ) );
         result = std::move( answer );
      }
   }
   ( std::index_sequence_for< Parameters... >() );
}

template < class... Parameters >
constexpr std::span< const char* const >
namesOf() {
   if constexpr ( sizeof...( Parameters ) == 0 ) {
      return {};
   } else {
      return typeNames< Parameters... >;
   }
}

template < auto Member, class Type = decltype( Member ) >
struct Callable;

// `Self` is const where the member is.
template < auto Member, class Self, class R, class... A >
struct Method {
   using Result = R;
   static constexpr std::size_t kArguments = sizeof...( A );
   static constexpr auto types = namesOf< A... >();
   static void invoke( const void* object, const Value* arguments, Value& result ) {
      Self& self = objectAs< std::remove_const_t< Self > >( object );
      call< R, A... >(
         [ &self ]( auto&&... unpacked ) -> R { return ( self.*Member )( unpacked... ); },
         arguments, result );
   }
   static constexpr Operation operation{ invoke, types };
};
template < auto Member, class R, class C, class... A >
struct Callable< Member, R ( C::* )( A... ) > : Method< Member, C, R, A... > {};
template < auto Member, class R, class C, class... A >
struct Callable< Member, R ( C::* )( A... ) const > : Method< Member, const C, R, A... > {};
template < auto Function, class R, class... A >
struct Callable< Function, R ( * )( A... ) > {
   static constexpr std::size_t kArguments = sizeof...( A );
   static constexpr auto types = namesOf< A... >();
   static void invoke( const void*, const Value* arguments, Value& result ) {
      call< R, A... >( Function, arguments, result );
   }
   static constexpr Operation operation{ invoke, types };
};

/// As many names as there are arguments; anything else does not compile.
template < std::size_t Arguments, std::size_t Names >
constexpr ArgumentNames
argumentNames( const char* const ( &names )[ Names ] ) {
   static_assert( Arguments == Names );
   ArgumentNames all;
   for ( std::size_t i = 0; i < Names; ++i ) {
      all.names[ i ] = names[ i ];
   }
   return all;
}

/// What a collection's element holds beside its key.
template < class Stored >
auto
elementValue( const Stored& element ) {
   if constexpr ( requires { element.entity(); } ) {
      return element.entity();
   } else if constexpr ( requires { element.value(); } ) {
      return element.value();
   } else {
      return true;   // of a hash set
   }
}
template < class Map >
using Element = decltype( elementValue( *std::declval< const typename Map::Iterator& >() ) );

/// What generic access does with one collection of one entity type.
template < class Entity, class Map, const Map& ( Entity::*Get )() const, auto Del >
class Collection {
 public:
   using Key = typename Map::Key;

   static void get( const void* object, const Value* arguments, Value& result ) {
      const auto at = in( object ).findElement( unpack< Key >( arguments[ 0 ] ) );
      result.valueIs( at ? elementValue( *at ) : Element< Map >() );
   }
   static void del( const void* object, const Value* arguments, Value& result ) {
      const Key key = unpack< Key >( arguments[ 0 ] );
      Value present = Value::of( in( object ).contains( key ) );
      ( objectAs< Entity >( object ).*Del )( key );
      result = std::move( present );
   }
   static void size( const void* object, const Value*, Value& result ) {
      result.valueIs( in( object ).size() );
   }
   static void changes( const void* object, const Value*, Value& result ) {
      result.valueIs( in( object ).changes() );
   }
   static void has( const void* object, const Value* arguments, Value& result ) {
      result.valueIs( in( object ).contains( unpack< Key >( arguments[ 0 ] ) ) );
   }
   static std::unique_ptr< GenericIterator > iterate( const void* object ) {
      return std::make_unique< Iterator >( objectAs< Entity >( object ) );
   }

   static constexpr AttributeRecord record( AttributeId id, const char* name, AttributeKind kind ) {
      constexpr auto key = namesOf< Key >();
      AttributeRecord row{ id, name, kind, typeName< Element< Map > >, typeName< Key > };
      row.get = { get, key };
      row.del = { del, key };
      row.size = { size, {} };
      row.changes = { changes, {} };
      row.has = { has, key };
      row.iterate = iterate;
      return row;
   }

 private:
   class Iterator final : public GenericIterator {
    public:
      explicit Iterator( Entity& entity ) : entity_( &entity ), at_( ( entity.*Get )().first() ) {}
      explicit operator bool() const override { return static_cast< bool >( at_ ); }
      Value key() const override { return Value::of( Key( at_->key() ) ); }
      Value object() const override { return Value::of( elementValue( *at_ ) ); }
      void advance() override { ++at_; }
      bool del() override {
         if ( !at_.linked() ) {
            return false;
         }
         ( ( *entity_ ).*Del )( Key( at_->key() ) );
         return true;
      }

    private:
      const Ptr< Entity > entity_;
      typename Map::Iterator at_;
   };

   static const Map& in( const void* object ) { return ( objectAs< Entity >( object ).*Get )(); }
};

template < class Entity, class Map, const Map& ( Entity::*Get )() const, auto Is, auto Del >
constexpr AttributeRecord
collection( AttributeId id, const char* name, AttributeKind kind ) {
   AttributeRecord row = Collection< Entity, Map, Get, Del >::record( id, name, kind );
   row.set = Callable< Is >::operation;
   return row;
}

/// The Is mutator of a hash set takes the key alone; generic access gives it a bool as well.
template < class Entity, class Key, void ( Entity::*Is )( Passed< Key > ) >
void
hashSetIs( const void* object, const Value* arguments, Value& ) {
   zelRequireTrue( unpack< bool >( arguments[ 1 ] ) );
   ( objectAs< Entity >( object ).*Is )( unpack< Key >( arguments[ 0 ] ) );
}

template < class T, class... Parts >
T
makeValue( Parts... parts ) {
   return T( parts... );
}

/// By the type's own hash, be it a member or beside the type.
template < class T >
std::uint32_t
hashOf( const T& value, std::uint32_t seed ) {
   if constexpr ( requires { value.hash( seed ); } ) {
      return value.hash( seed );
   } else if constexpr ( requires { value.hash(); } ) {
      return value.hash();
   } else {
      return zelHash( value, seed );
   }
}

template < class T >
constexpr ValueHooks
makeValueHooks() {
   ValueHooks hooks{};
   hooks.copy = []( const void* value ) -> void* {
      return new T( *static_cast< const T* >( value ) );
   };
   hooks.destroy = []( void* value ) noexcept { delete static_cast< T* >( value ); };
   hooks.isDefault = []( const void* value ) { return *static_cast< const T* >( value ) == T(); };
   hooks.equal = []( const void* a, const void* b ) {
      return *static_cast< const T* >( a ) == *static_cast< const T* >( b );
   };
   if constexpr ( requires( const T& t ) {
                     { t < t } -> std::same_as< bool >;
                  } ) {
      hooks.less = []( const void* a, const void* b ) {
         return *static_cast< const T* >( a ) < *static_cast< const T* >( b );
      };
   }
   hooks.hash = []( const void* value, std::uint32_t seed ) {
      return hashOf( *static_cast< const T* >( value ), seed );
   };
   hooks.strep = []( const void* value ) -> String {
      return valueToStrep( *static_cast< const T* >( value ) );
   };
   hooks.parse = []( StringIterator& current, StringIterator end ) -> void* {
      return new T( parseValue< T >( current, end ) );
   };
   return hooks;
}
template < class T >
inline constexpr ValueHooks valueHooks = makeValueHooks< T >();

}   // namespace Detail

/// A value that is only read.
template < auto Get >
constexpr AttributeRecord
field( AttributeId id, const char* name ) {
   using Reader = Detail::Callable< Get >;
   AttributeRecord row{ id, name, AttributeKind::Field, typeName< typename Reader::Result > };
   row.get = Reader::operation;
   return row;
}

/// An entity that the constructor set.
template < auto Get >
constexpr AttributeRecord
pointer( AttributeId id, const char* name ) {
   AttributeRecord row = field< Get >( id, name );
   row.kind = AttributeKind::Pointer;
   return row;
}

/// An entity that the object makes by itself.
template < auto Get >
constexpr AttributeRecord
instantiatingPointer( AttributeId id, const char* name ) {
   AttributeRecord row = field< Get >( id, name );
   row.kind = AttributeKind::InstantiatingPointer;
   return row;
}

/// An entity that the attribute makes of the named arguments, and removes.
template < auto Get, auto Is, auto Del, std::size_t Names >
constexpr AttributeRecord
instantiatingPointer( AttributeId id, const char* name, const char* const ( &names )[ Names ] ) {
   using Creator = Detail::Callable< Is >;
   AttributeRecord row = instantiatingPointer< Get >( id, name );
   row.argumentNames = Detail::argumentNames< Creator::kArguments >( names );
   row.argumentTypes = Creator::types;
   row.set = Creator::operation;
   row.del = Detail::Callable< Del >::operation;
   return row;
}

template < auto Get, auto Is >
constexpr AttributeRecord
settableValue( AttributeId id, const char* name ) {
   AttributeRecord row = field< Get >( id, name );
   row.kind = AttributeKind::SettableValue;
   row.set = Detail::Callable< Is >::operation;
   return row;
}

template < auto Get, auto Is >
constexpr AttributeRecord
settablePointer( AttributeId id, const char* name ) {
   AttributeRecord row = settableValue< Get, Is >( id, name );
   row.kind = AttributeKind::SettablePointer;
   return row;
}

/// Entity and Map come first, so that they choose among the overloads of the members behind them.
/// This one: of values that hold their own key.
template < class Entity, class Map, const Map& ( Entity::*Get )() const,
           void ( Entity::*Is )( Detail::Passed< Detail::Element< Map > > ),
           Detail::Element< Map > ( Entity::*Del )( Detail::Passed< typename Map::Key > ) >
constexpr AttributeRecord
orderedMap( AttributeId id, const char* name ) {
   return Detail::collection< Entity, Map, Get, Is, Del >( id, name, AttributeKind::OrderedMap );
}

/// Of values that hold their own key.
template < class Entity, class Map, const Map& ( Entity::*Get )() const,
           void ( Entity::*Is )( Detail::Passed< Detail::Element< Map > > ),
           Detail::Element< Map > ( Entity::*Del )( Detail::Passed< typename Map::Key > ) >
constexpr AttributeRecord
hashMap( AttributeId id, const char* name ) {
   return Detail::collection< Entity, Map, Get, Is, Del >( id, name, AttributeKind::HashMap );
}

/// Of values beside their keys.
template < class Entity, class Map, const Map& ( Entity::*Get )() const,
           void ( Entity::*Is )( Detail::Passed< typename Map::Key >,
                                 Detail::Passed< Detail::Element< Map > > ),
           Detail::Element< Map > ( Entity::*Del )( Detail::Passed< typename Map::Key > ) >
constexpr AttributeRecord
hashMap( AttributeId id, const char* name ) {
   return Detail::collection< Entity, Map, Get, Is, Del >( id, name, AttributeKind::HashMap );
}

template < class Entity, class Set, const Set& ( Entity::*Get )() const,
           void ( Entity::*Is )( Detail::Passed< typename Set::Key >, bool ),
           bool ( Entity::*Del )( Detail::Passed< typename Set::Key > ) >
constexpr AttributeRecord
orderedSet( AttributeId id, const char* name ) {
   return Detail::collection< Entity, Set, Get, Is, Del >( id, name, AttributeKind::OrderedSet );
}

template < class Entity, class Set, const Set& ( Entity::*Get )() const,
           void ( Entity::*Is )( Detail::Passed< typename Set::Key > ),
           bool ( Entity::*Del )( Detail::Passed< typename Set::Key > ) >
constexpr AttributeRecord
hashSet( AttributeId id, const char* name ) {
   using Key = typename Set::Key;
   AttributeRecord row =
      Detail::Collection< Entity, Set, Get, Del >::record( id, name, AttributeKind::HashSet );
   row.set = { Detail::hashSetIs< Entity, Key, Is >, Detail::namesOf< Key, bool >() };
   return row;
}

/// Of entities, each made of its key.
template < class Entity, class Map, const Map& ( Entity::*Get )() const,
           Detail::Element< Map > ( Entity::*Is )( Detail::Passed< typename Map::Key > ),
           Detail::Element< Map > ( Entity::*Del )( Detail::Passed< typename Map::Key > ),
           std::size_t Names >
constexpr AttributeRecord
entityMap( AttributeId id, const char* name, const char* const ( &names )[ Names ] ) {
   using Creator = Detail::Callable< Is >;
   AttributeRecord row =
      Detail::collection< Entity, Map, Get, Is, Del >( id, name, AttributeKind::EntityMap );
   row.argumentNames = Detail::argumentNames< Creator::kArguments >( names );
   row.argumentTypes = Creator::types;
   return row;
}

/// Something that is told to reactors and has no value.
constexpr AttributeRecord
notification( AttributeId id, const char* name ) {
   return { id, name, AttributeKind::Method };
}

/// Described only: generic access does not call it.
template < auto Member >
constexpr AttributeRecord
method( AttributeId id, const char* name ) {
   using Method = Detail::Callable< Member >;
   static_assert( Method::kArguments == 0 );
   return { id, name, AttributeKind::Method, typeName< typename Method::Result > };
}
template < auto Member, std::size_t Names >
constexpr AttributeRecord
method( AttributeId id, const char* name, const char* const ( &names )[ Names ] ) {
   using Method = Detail::Callable< Member >;
   AttributeRecord row{ id, name, AttributeKind::Method, typeName< typename Method::Result > };
   row.argumentNames = Detail::argumentNames< Method::kArguments >( names );
   row.argumentTypes = Method::types;
   return row;
}

template < auto Member >
constexpr AttributeRecord
callableMethod( AttributeId id, const char* name ) {
   AttributeRecord row = method< Member >( id, name );
   row.kind = AttributeKind::CallableMethod;
   row.call = Detail::Callable< Member >::operation;
   return row;
}
template < auto Member, std::size_t Names >
constexpr AttributeRecord
callableMethod( AttributeId id, const char* name, const char* const ( &names )[ Names ] ) {
   AttributeRecord row = method< Member >( id, name, names );
   row.kind = AttributeKind::CallableMethod;
   row.call = Detail::Callable< Member >::operation;
   return row;
}

/// A constructor's operation and the names of its arguments.
struct ConstructorRecord {
   Operation operation;
   ArgumentNames names;
};

namespace Detail {

template < class T, class Base >
constexpr TypeRecord
typeRecord( TypeKind kind, const ConstructorRecord& constructor,
            std::span< const AttributeRecord > attributes, const ValueHooks* hooks ) {
   return { typeName< T >,
            kind,
            sizeof( T ),
            typeName< Base >,
            std::is_polymorphic_v< T >,
            constructor.operation,
            constructor.names,
            attributes,
            hooks };
}

}   // namespace Detail

/// By a static creator.
template < auto Creator >
constexpr ConstructorRecord
constructor() {
   static_assert( Detail::Callable< Creator >::kArguments == 0 );
   return { Detail::Callable< Creator >::operation, {} };
}
template < auto Creator, std::size_t Names >
constexpr ConstructorRecord
constructor( const char* const ( &names )[ Names ] ) {
   return { Detail::Callable< Creator >::operation,
            Detail::argumentNames< Detail::Callable< Creator >::kArguments >( names ) };
}

/// Of a value, from its parts.
template < class T, class... Parts, std::size_t Names >
constexpr ConstructorRecord
valueConstructor( const char* const ( &names )[ Names ] ) {
   return constructor< &Detail::makeValue< T, Parts... > >( names );
}

/// Of an abstract entity: what its constructor hands on to derived types.
template < class... Parameters, std::size_t Names >
constexpr ConstructorRecord
abstractConstructor( const char* const ( &names )[ Names ] ) {
   return { { nullptr, Detail::namesOf< Parameters... >() },
            Detail::argumentNames< sizeof...( Parameters ) >( names ) };
}

template < class T, class Base = PtrInterface >
constexpr TypeRecord
entityType( const ConstructorRecord& constructor = {},
            std::span< const AttributeRecord > attributes = {} ) {
   static_assert( std::is_void_v< Base > || std::derived_from< T, Base > );
   return Detail::typeRecord< T, Base >( TypeKind::Entity, constructor, attributes, nullptr );
}

template < class T, class Base = void >
constexpr TypeRecord
valueType( const ConstructorRecord& constructor = {},
           std::span< const AttributeRecord > attributes = {} ) {
   static_assert( std::is_void_v< Base > || std::is_base_of_v< Base, T > );
   return Detail::typeRecord< T, Base >( TypeKind::Value, constructor, attributes,
                                         &Detail::valueHooks< T > );
}

}   // namespace Zel
