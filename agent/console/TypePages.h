// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TypePages: what is registered, as text and as the reference page docs/types.md.
#pragma once

#include <string>

#include "Zel/TypeModule.h"

namespace Agent::Console {

/// One line per type: module, index, name, kind.
std::string typesText();

/// One type with its attributes, those of its bases included.
std::string typeText( Zel::TypeHandle type );

/// Every module and type, with the operation and return codes. The same on every machine.
std::string typesMarkdown();

}   // namespace Agent::Console
