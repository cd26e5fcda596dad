// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// OpenConfigReader: VLAN translation of subinterfaces in the OpenConfig model (openconfig-vlan
// on top of openconfig-interfaces) as RFC 7951 JSON.
//
// A subinterface matches single-tagged frames by one VID, a list or a range, and swaps the tag
// on the way in and out. Other matches and actions of the model are refused: the switch cannot
// carry them out, and passing them over would forward frames in the wrong VLAN.
#pragma once

#include <cstdint>
#include <vector>

#include "agent/config/Document.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

// The mappings that the document at `top` asks for, counted before anything is expanded.
std::uint64_t countOpenConfigMappings( const Place& top );

// The ports of the document at `top`, which has been held to openConfigSchema(), as far as they
// can be made out. What is wrong stands in `document` afterwards; the ports are good only when it
// holds no finding.
std::vector< Port > readOpenConfig( Document& document, const Place& top );

}   // namespace Agent
