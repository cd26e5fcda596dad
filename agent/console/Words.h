// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Words: a command line split at its blanks.
//
// String forms of values contain blanks, so text between quotes and between brackets of any kind
// stays together. All functions throw Error for a bracket or quote without its partner.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Agent::Console {

struct Word {
   std::size_t at = 0;   ///< offset in the line
   std::string text;
};

std::vector< Word > splitWords( std::string_view line );

/// One past the end of the piece that starts at `at`: a quoted text, brackets with all that they
/// hold, or one character. Requires: `at` is inside `text`.
std::size_t pieceEnd( std::string_view text, std::size_t at );

/// The text without the quotes that stand around the whole of it, if there are any.
std::string_view unquoted( std::string_view word );

}   // namespace Agent::Console
