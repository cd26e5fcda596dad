// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Apply: brings a checked configuration through the config directories to the data plane.
#pragma once

#include "agent/ScaleAgent.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

/// Writes all of `configuration` and runs the scheduler until the schedule is drained.
void applyConfiguration( ScaleAgent& agent, const Configuration& configuration );

}   // namespace Agent
