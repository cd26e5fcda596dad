// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Path: names an object, a value or an attribute by the way to it from a root:
//
//   ranges.vlanRangeEntry[7].vlanIdRange[10].mapping
//
// A key stands in the string form of the collection's key type.
#pragma once

#include <map>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/GenericIf.h"
#include "Zel/TypeRecord.h"
#include "Zel/Value.h"

namespace Agent::Console {

/// The objects and values that a path may begin with, by name.
using Roots = std::map< std::string, Zel::Value, std::less<> >;

/// Where a path leads: to a root, an attribute of an object, or a member of a collection.
struct Place {
   std::string path;
   Zel::Value owner;                            ///< the root, or the object with the attribute
   const Zel::AttributeRecord* row = nullptr;   ///< null for a root
   std::vector< Zel::Value > key;               ///< of the member; else empty
};

/// Throws Error when there is no such place.
Place placeAt( const Roots& roots, std::string_view path );

/// What stands there; throws Error when it is nothing that can be read.
Zel::Value valueAt( const Place& place );
Zel::Value valueAt( const Roots& roots, std::string_view path );

/// The same; throws Error when it is a null pointer.
Zel::Value objectAt( const Place& place );

/// Throws Error, which names the attribute's kind and what it supports, unless it supports `code`.
void requireOperation( const Place& place, Zel::OpCode code );

/// Whether `name` may be the name of a root.
bool isName( std::string_view name );

}   // namespace Agent::Console
