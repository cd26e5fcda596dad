// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// OpenConfigSchema: configuration of openconfig-interfaces (revision 2026-01-06),
// openconfig-if-ethernet (2026-06-22), openconfig-if-aggregate (2026-01-06) and openconfig-vlan
// (2023-02-07).
#pragma once

#include "agent/config/Schema.h"

namespace Agent {

const Schema& openConfigSchema();

}   // namespace Agent
