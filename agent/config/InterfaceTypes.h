// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// InterfaceTypes: the interface types that IANA has registered, as identities of the module
// iana-if-type (revision 2023-01-26). Both formats use them.
#pragma once

#include "agent/config/Schema.h"

namespace Agent {

extern const LeafType kInterfaceTypes;

}   // namespace Agent
