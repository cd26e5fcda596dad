// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Complain: the one way to standard error.
//
// What is said there only explains the exit code, so a line that cannot be written is left out and
// ends nothing. Neither does memory that has run out: a long line is cut then.
#pragma once

#include <fmt/core.h>

namespace Agent {

void complainLine( fmt::string_view format, fmt::format_args args ) noexcept;

/// Writes one line, without its end, to standard error.
template < class... Args >
void
complain( fmt::format_string< const Args&... > format, const Args&... args ) noexcept {
   complainLine( format, fmt::make_format_args( args... ) );
}

}   // namespace Agent
