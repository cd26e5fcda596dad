// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanList: lists of VLAN ids in the syntax of IEEE 802.1Q: "1,10-100,250". Ids and ranges
// ascend and do not overlap; there are no blanks and no leading zeros.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Agent {

// Each run of consecutive ids as one range. No ids give an empty text, which is the one result
// that parseVlanList() does not take back.
// Requires: `ids` ascend without repetition within 1..4094; std::invalid_argument otherwise.
std::string formatVlanList( std::span< const std::uint16_t > ids );

struct ParsedVlanList {
   // Ascending; empty when there is an error.
   std::vector< std::uint16_t > ids;
   // Empty when there is none, else what was expected, what stands there, and where:
   // offset 3: expected a VLAN id 1..4094, found "4095"
   std::string error;
   // From 0, in bytes.
   std::size_t errorOffset = 0;
};

ParsedVlanList parseVlanList( std::string_view text );

}   // namespace Agent
