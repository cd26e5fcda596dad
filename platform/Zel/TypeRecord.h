// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TypeRecord: what the framework knows of a registered type; plain constant data.
//
// A type is described once, by a table in the registration file beside its source, whose rows the
// builders of Zel/TypeTable.h make. Generic access (Zel/GenericIf.h), documentation and tools read
// these records and nothing else. Types refer to each other by name, so a table may name a type of
// another library.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>

#include "Zel/String.h"

namespace Zel {

class GenericIterator;
class Value;

/// Number of an attribute within its type. Value types number their fields from 2, entities their
/// attributes from 130; a type with a base that is an entity, from 256 above that base's. 0 stands
/// for the whole value.
using AttributeId = std::uint16_t;

enum class TypeKind : std::uint8_t { Value, Entity };

enum class AttributeKind : std::uint8_t {
   Field,                  ///< value that is only read
   Pointer,                ///< entity, set by the constructor
   InstantiatingPointer,   ///< entity that the attribute makes and removes
   SettablePointer,
   SettableValue,
   OrderedMap,
   OrderedSet,   ///< of bool
   HashMap,
   HashSet,     ///< holds true only
   EntityMap,   ///< of entities that know their key
   Method,      ///< described, but not to be called by generic access
   CallableMethod,
};

/// One thing that can be done with an attribute, or a constructor.
struct Operation {
   /// Requires: `object` and as many `arguments` as `types` names, of those types. Leaves `result`
   /// alone when the operation yields nothing.
   using Invoke = void ( * )( const void* object, const Value* arguments, Value& result );

   /// Null when the operation is not supported.
   Invoke invoke = nullptr;
   /// Names of the arguments' types.
   std::span< const char* const > types;
};

/// Names of the arguments of a creator, method or constructor.
struct ArgumentNames {
   static constexpr std::size_t kMost = 6;
   std::array< const char*, kMost > names{};
};

struct AttributeRecord {
   AttributeId id = 0;
   const char* name = "";
   AttributeKind kind = AttributeKind::Field;
   /// Type of the value, of a collection's elements, or of a method's result ("" for none).
   const char* valueType = "";
   /// Type of a collection's keys; "" for other kinds.
   const char* keyType = "";
   /// Arguments of the creator or method; see `argumentTypes`.
   ArgumentNames argumentNames{};
   std::span< const char* const > argumentTypes{};

   // A collection's key is the argument of get, del and has.
   Operation get{};
   Operation set{};
   Operation del{};
   Operation size{};
   Operation changes{};
   Operation has{};
   Operation call{};
   /// The iterator set of a collection: a new iterator on its first element; else null.
   std::unique_ptr< GenericIterator > ( *iterate )( const void* object ) = nullptr;
};

/// What a value type can do with storage that holds one. Null where the type lacks it.
struct ValueHooks {
   /// A copy in storage of its own, to be given to `destroy`.
   void* ( *copy )( const void* value );
   void ( *destroy )( void* value ) noexcept;
   bool ( *isDefault )( const void* value );
   bool ( *equal )( const void* a, const void* b );
   /// The type's own order.
   bool ( *less )( const void* a, const void* b );
   std::uint32_t ( *hash )( const void* value, std::uint32_t seed );
   /// The string form, and the value that it stands for.
   String ( *strep )( const void* value );
   void* ( *parse )( StringIterator& current, StringIterator end );
};

struct TypeRecord {
   /// Qualified name, such as "MoxVlanMapping::VlanRangeEntry".
   const char* name;
   TypeKind kind;
   /// Bytes of one object.
   std::uint32_t size;
   /// Name of the registered base; "" for none.
   const char* base = "";
   bool polymorphic = false;
   /// Makes an object from arguments; not supported by abstract types, which may list arguments
   /// for the types that derive from them.
   Operation constructor{};
   ArgumentNames constructorNames{};
   std::span< const AttributeRecord > attributes{};
   /// Null for entities.
   const ValueHooks* hooks = nullptr;
};

}   // namespace Zel
