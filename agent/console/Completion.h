// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Completion: how the last word of a line may go on.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "agent/console/Session.h"

namespace Agent::Console {

struct Completions {
   std::size_t at = 0;                 ///< offset of the last word in the line
   std::vector< std::string > words;   ///< what may stand in its place
   bool mayGoOn = false;               ///< as paths may, by another attribute
};

/// Of the commands, the types, or the roots and attributes, whichever the command takes there.
Completions complete( const Session& session, std::string_view line );

}   // namespace Agent::Console
