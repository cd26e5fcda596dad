// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// StateJson: the whole state of the library as one line of JSON, for comparison from outside.
#pragma once

#include <ostream>

#include "agent/ScaleAgent.h"

namespace Agent {

/// One line without its end, keys sorted, ports by name. Takes the programmer's progress, so each
/// call shows what happened since the last one. docs/replay.md describes the members.
void printState( std::ostream& out, ScaleAgent& agent );

}   // namespace Agent
