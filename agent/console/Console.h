// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Console: reads commands and carries them out, by generic access alone.
//
// From a terminal: a prompt, editing, history and completion. From anything else: a command a
// line; a failed one is told as "line N: ..." and the next one is carried out.
#pragma once

#include <cstddef>
#include <string>

#include "agent/console/Path.h"

namespace Agent::Console {

/// Says in one line what could not be done.
using Complain = void ( * )( const std::string& error );

/// Reads standard input until its end or `quit`, prints to standard output. Returns the number of
/// lines that failed, 0 for a terminal. `step` and `run` call the root "scheduler".
std::size_t runConsole( Roots roots, Complain complain );

}   // namespace Agent::Console
