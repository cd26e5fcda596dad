// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ChangeLog: the calls by which the range manager changes an entry, in their order.
//
// The linker sends the manager's calls of the entry's mutators through this test (--wrap, see
// CMakeLists.txt), so the log shows them as they are made, and the library is as users get it.
#pragma once

#include <string>

namespace TestSupport {

void changeLogStart();
std::string changeLogEnd();

/// Runs `act` and returns one line per call: "delete range 14", "insert start 13",
/// "insert range 10-20".
template < class Act >
std::string
changesOf( Act act ) {
   changeLogStart();
   act();
   return changeLogEnd();
}

}   // namespace TestSupport
