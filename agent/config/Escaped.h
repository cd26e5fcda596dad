// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Escaped: text from outside that can stand in a line of output without changing how the line
// looks.
#pragma once

#include <string>
#include <string_view>

namespace Agent {

// Whether there is a character in `text`, UTF-8, that terminals obey: U+0000..U+001F, U+007F..U+009F.
bool hasControls( std::string_view text );

// `text` with those characters, and the ones that are not seen or turn the direction of what stands
// beside them, as JSON escapes: "\u202e". Bytes that are no UTF-8 stay.
std::string escaped( std::string_view text );

}   // namespace Agent
