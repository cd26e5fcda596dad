// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Ieee8021qReader: VLAN translation tables in the YANG model of IEEE 802.1Q
// (ieee802-dot1q-bridge on top of ietf-interfaces) as RFC 7951 JSON.
//
// A table acts only while its enable leaf is true. With the ingress table alone the entries
// act both ways, hence one local VID for each relay VID; with an egress table of its own each
// direction has its entries.
#pragma once

#include <cstdint>
#include <vector>

#include "agent/config/Document.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

// The mappings that the document at `top` asks for: entries of ingress tables that act.
std::uint64_t countIeee8021qMappings( const Place& top );

// The ports of the document at `top`, which has been held to ieee8021qSchema(), as far as they can
// be made out. What is wrong stands in `document` afterwards; the ports are good only when it holds
// no finding.
std::vector< Port > readIeee8021q( Document& document, const Place& top );

}   // namespace Agent
