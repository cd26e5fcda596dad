// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Show: values and entities as the console prints them.
#pragma once

#include <string>

#include "Zel/Value.h"

namespace Agent::Console {

/// A value's string form; of an entity its type with the values that it can be asked for without
/// a key, such as "MoxVlanMapping::VlanRangeEntry( intfId: 7 )"; "null" for a null pointer.
std::string shortForm( const Zel::Value& value );

/// One line per attribute: name, kind, and what stands there. Requires: no null pointer.
std::string listing( const Zel::Value& object );

}   // namespace Agent::Console
