// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Session: what the commands of one console work on.
#pragma once

#include <map>
#include <ostream>
#include <set>
#include <string>

#include "Zel/Ptr.h"
#include "agent/console/Path.h"
#include "agent/console/Watch.h"

namespace Agent::Console {

struct Session {
   Roots roots;
   /// Where results and notifications go; outlives the session.
   std::ostream& out;
   /// The roots that `new` made.
   std::set< std::string > made{};
   /// By path.
   std::map< std::string, Zel::Ptr< Watch > > watches{};
   bool ended = false;
};

}   // namespace Agent::Console
