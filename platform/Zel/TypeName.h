// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// typeName: the name under which a C++ type is registered.
//
// A class says it in a constant `zelTypeName`; numbers, bool and String have theirs here. A counted
// pointer goes by the name of what it points to, void by "".
#pragma once

#include <cstdint>
#include <type_traits>

#include "Zel/Ptr.h"
#include "Zel/String.h"

namespace Zel {

/// To be specialised for a type that cannot have a `zelTypeName`, such as an enumeration.
template < class T >
struct TypeName {
   static constexpr const char* value = T::zelTypeName;
};
template <>
struct TypeName< void > {
   static constexpr const char* value = "";
};
template <>
struct TypeName< bool > {
   static constexpr const char* value = "bool";
};
template <>
struct TypeName< std::uint8_t > {
   static constexpr const char* value = "uint8_t";
};
template <>
struct TypeName< std::uint16_t > {
   static constexpr const char* value = "uint16_t";
};
template <>
struct TypeName< std::uint32_t > {
   static constexpr const char* value = "uint32_t";
};
template <>
struct TypeName< std::uint64_t > {
   static constexpr const char* value = "uint64_t";
};
template <>
struct TypeName< double > {
   static constexpr const char* value = "double";
};
template <>
struct TypeName< String > {
   static constexpr const char* value = "Zel::String";
};
template < class T >
struct TypeName< Ptr< T > > : TypeName< std::remove_const_t< T > > {};

/// References and const make no difference.
template < class T >
inline constexpr const char* typeName = TypeName< std::remove_cvref_t< T > >::value;

template < class... Types >
inline constexpr const char* typeNames[ sizeof...( Types ) ] = { typeName< Types >... };

}   // namespace Zel
