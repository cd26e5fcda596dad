// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// NearMiss: the name that somebody may have meant.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace Agent {

/// The one of `names` that the fewest slips of the pen turn into `word`: a character too few, too
/// many or wrong, or two neighbours exchanged. The first of several; empty where none is near, for
/// more than a third of the characters would be wrong.
std::string nearMiss( std::string_view word, const std::vector< std::string >& names );

}   // namespace Agent
