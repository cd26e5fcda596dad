// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Arguments: words of a command as the arguments of an operation or constructor.
//
// A value is written in its string form, in quotes if need be, or as $PATH: what stands there. An
// entity is written as its path; null pointers are refused, since operations may assert.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Value.h"
#include "agent/console/Path.h"
#include "agent/console/Types.h"

namespace Agent::Console {

/// `given` followed by the words as values. Throws Error, which names `what` and its argument
/// list, unless they are as many as `wanted` and each is of its type.
std::vector< Zel::Value > argumentsFrom( const Roots& roots, std::string_view what,
                                         std::span< const Argument > wanted,
                                         std::vector< Zel::Value > given,
                                         std::span< const std::string > words );

/// Carries out an operation of the attribute at `place`; a key in its path is the first argument.
Zel::Value operate( const Roots& roots, const Place& place, Zel::OpCode code,
                    std::span< const std::string > words );

}   // namespace Agent::Console
