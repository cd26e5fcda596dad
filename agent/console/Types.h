// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Types: what the records of registered types say, in words.
#pragma once

#include <array>
#include <span>
#include <string>
#include <vector>

#include "Zel/GenericIf.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeRecord.h"

namespace Agent::Console {

struct OperationName {
   Zel::OpCode code;
   const char* name;
   const char* meaning;
};
inline constexpr std::array kAttributeOperations{
   OperationName{ Zel::OpCode::Get, "get",
                  "the value; of a collection the member under the key, the default when absent" },
   OperationName{ Zel::OpCode::Set, "set",
                  "writes the value, inserts or updates a member, makes the entity of a pointer" },
   OperationName{ Zel::OpCode::Delete, "delete",
                  "removes a member (answers whether it was there) or the entity of a pointer" },
   OperationName{ Zel::OpCode::Size, "size", "elements of the collection" },
   OperationName{ Zel::OpCode::Changes, "changes",
                  "elements ever inserted into or deleted from the collection" },
   OperationName{ Zel::OpCode::Has, "has", "whether the key is present" },
   OperationName{ Zel::OpCode::Call, "call", "calls the method" },
};
/// Of attribute 0, the whole of a value.
inline constexpr std::array kWholeValueOperations{
   OperationName{ Zel::OpCode::IsSet, "is set", "whether the value differs from the default" },
   OperationName{ Zel::OpCode::Equal, "equal", "whether it equals the argument" },
   OperationName{ Zel::OpCode::Less, "less", "whether it comes before the argument" },
};

const char* kindName( Zel::TypeKind kind );
const char* kindName( Zel::AttributeKind kind );
/// The same in a sentence: "an ordered map".
std::string aKind( Zel::AttributeKind kind );

/// The attribute operations that the row supports, and those of a whole value.
std::vector< OperationName > operationsOf( const Zel::AttributeRecord& row );
std::vector< OperationName > wholeValueOperationsOf( const Zel::TypeRecord& type );

/// The attributes of a type, those of its bases first.
std::vector< const Zel::AttributeRecord* > attributesOf( Zel::TypeHandle type );

struct Argument {
   const char* name;
   const char* type;
};
/// What an operation of an attribute takes.
std::vector< Argument > argumentsOf( const Zel::AttributeRecord& row, Zel::OpCode code );
/// What a creator or method takes, callable or not.
std::vector< Argument > argumentsOf( const Zel::AttributeRecord& row );
std::vector< Argument > constructorArguments( const Zel::TypeRecord& type );

/// "( intfId: Corvel::IntfId )"; "()" for none.
std::string listOf( std::span< const Argument > arguments );

/// Whether nothing can be made of the type.
bool isAbstract( const Zel::TypeRecord& type );

/// The handle; throws Error for a name that nobody registered.
Zel::TypeHandle typeNamed( std::string_view name );

/// By name, whatever the order in which libraries were loaded.
std::vector< const Zel::TypeModule* > modulesByName();

}   // namespace Agent::Console
