// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Apply: brings a checked configuration through the config directories to the data plane.
#pragma once

#include "agent/ScaleAgent.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

constexpr unsigned kApplyTries = 3;

/// Writes all of `configuration` and runs the scheduler until the schedule is drained. When something
/// fails, the rest is written all the same, and then all of it again, kApplyTries times in all;
/// then std::bad_alloc is rethrown, and anything else as a std::runtime_error that says how many
/// mappings are not delivered.
void applyConfiguration( ScaleAgent& agent, const Configuration& configuration );

}   // namespace Agent
