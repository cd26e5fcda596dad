// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Ieee8021qSchema: configuration of ietf-interfaces (revision 2018-02-20) and ieee802-dot1q-bridge
// (2023-10-26).
#pragma once

#include "agent/config/Schema.h"

namespace Agent {

// Without what takes more than one place of the document: which bridge and component a port names,
// and what ports and components of some types do not have.
const Schema& ieee8021qSchema();

// The values of the identity, without prefix.
constexpr std::string_view kDBridgeComponent = "d-bridge-component";

}   // namespace Agent
