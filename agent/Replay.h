// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Replay: carries out a script of events against the library, one JSON object a line.
//
// docs/replay.md lists the events.
#pragma once

#include <cstddef>
#include <istream>
#include <ostream>
#include <stdexcept>
#include <string>

namespace Agent {

/// A line that cannot be carried out; what() is "SCRIPT:LINE: cause".
class ReplayError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

/// Reads `script` (named `name` in errors) to its end, or until `out` cannot be written. What the
/// events print goes to `out`, a line at a time. Throws ReplayError at the first line that cannot be
/// carried out, one of more than 1 MiB among them; what the lines before it did stays done.
void replay( const std::string& name, std::istream& script, std::ostream& out,
             std::size_t rangeEntriesPerPort );

}   // namespace Agent
