// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// GenericIf: access to objects of registered types without being compiled against them.
//
//   const Value dir = zelConstruct( zelTypeOf( "MoxVlanMapping::VlanRangeEntryDir" ), {} );
//   const Value mgr = zelConstruct( zelTypeOf( "MoxVlanMapping::MoxVlanRangeMgr" ), { dir } );
//   zelAttribute( mgr, "deleteVlanFromIdx", OpCode::Call,
//                 { zelParse( "Corvel::IntfId", "7" ), zelParse( "Bridging::VlanId", "100" ) } );
//
// Arguments   Must be as many as the operation takes, each of its type or one that derives from it,
//             both polymorphic or neither; else TypeException, with nothing called. A pointer
//             argument may be null; whether the operation takes it is its own affair, as are its
//             other conditions.
// Errors      What a called operation throws passes through unchanged.
// Cost        A few look-ups by name per operation, and a copy of each value.
// Threads     As the types themselves: one.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <span>
#include <string_view>

#include "Zel/Export.h"
#include "Zel/GenericIterator.h"
#include "Zel/String.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"

namespace Zel {

enum class OpCode : std::uint8_t {
   Get = 0,       ///< field, pointer, or a collection's member by key (absent: the default value)
   Set = 1,       ///< the arguments of the attribute's ...Is mutator; yields what that returns
   Delete = 2,    ///< a collection's key: yields whether it was there; a pointer: what was removed
   Size = 3,      ///< elements of a collection
   Changes = 4,   ///< elements ever inserted into or deleted from a collection
   Has = 5,       ///< whether the key is present
   Call = 10,     ///< a callable method's arguments; yields what it returns
   IsSet = 11,    ///< whole value: whether it differs from its type's default
   Equal = 12,    ///< whole value: whether it equals the argument
   Less = 13,     ///< whole value: whether it comes before the argument
};

enum GenericIfResult : int {
   kDone = 0,
   kUnsupported = 1,   ///< the attribute exists but does not support the operation
   kNoAttribute = 2,   ///< the id is not one of this type's; the caller tries the base type
};

/// Attribute 0 is the whole value. Only attributes of exactly `object.type` are looked at.
/// `result` is written only by operations that yield something. Anything but kDone means that
/// nothing was called or changed. Throws TypeException for a null object, and for an entity that is
/// not of the type under which it is viewed.
ZEL_EXPORT int genericIfAttributeOp( Value& result, View object, AttributeId attribute,
                                     unsigned operation, std::span< const Value > arguments );

/// The same by name, own attributes first, then the bases'. Throws TypeException for a null
/// object, an unknown attribute and an unsupported operation.
ZEL_EXPORT Value zelAttribute( View object, std::string_view attribute, OpCode operation,
                               std::span< const Value > arguments );
ZEL_EXPORT Value zelAttribute( View object, std::string_view attribute, OpCode operation,
                               std::initializer_list< Value > arguments = {} );
/// An iterator on the first element of a collection; throws as zelAttribute().
ZEL_EXPORT std::unique_ptr< GenericIterator > zelIterate( View object, std::string_view attribute );

/// An attribute of the type or of one of its bases; null when there is none.
ZEL_EXPORT const AttributeRecord* zelAttributeByName( TypeHandle type, std::string_view name );
ZEL_EXPORT const AttributeRecord* zelAttributeById( TypeHandle type, AttributeId id );

/// What a row says of an operation code; without `invoke` when it is not supported.
ZEL_EXPORT const Operation& zelOperation( const AttributeRecord& row, unsigned operation );

/// Makes an object; what the creator throws passes on. Throws TypeException for an abstract type
/// and for a null handle.
ZEL_EXPORT Value zelConstruct( TypeHandle type, std::span< const Value > arguments );
ZEL_EXPORT Value zelConstruct( TypeHandle type, std::initializer_list< Value > arguments );

/// Whether `type` is `base` or derives from it.
ZEL_EXPORT bool zelDerives( TypeHandle type, TypeHandle base );
/// The same storage under another type. Throws TypeException unless one of the types derives from
/// the other, both polymorphic or neither.
ZEL_EXPORT View zelViewAs( View object, TypeHandle type );
/// Throws TypeException unless the object's type is or derives from the named one, both
/// polymorphic or neither.
ZEL_EXPORT void zelRequireType( View object, const char* type );

/// What can be done with the viewed value. Throws TypeException unless there is one, of a value type.
ZEL_EXPORT const ValueHooks& zelRequireValue( View value );
/// A value's string form. Throws TypeException for what has none, such as an entity or nothing.
ZEL_EXPORT String zelStrep( View value );
/// The value that the whole text stands for; throws what the type's parsing throws.
ZEL_EXPORT Value zelParse( TypeHandle type, std::string_view text );
ZEL_EXPORT Value zelParse( std::string_view type, std::string_view text );

/// Throws SetFalseValueException when `value` is false: a hash set only holds true.
ZEL_EXPORT void zelRequireTrue( bool value );

}   // namespace Zel
