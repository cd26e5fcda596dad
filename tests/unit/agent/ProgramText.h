// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ProgramText: a port's hardware entries as one line, "ranges: 10-20>5 exact: 30>6".
#pragma once

#include <fmt/format.h>

#include <string>

#include "agent/DataPlane.h"

namespace Agent {

inline std::string
textOf( const PortProgram& program ) {
   std::string text = "ranges:";
   for ( const RangeEntry& range : program.ranges ) {
      text += fmt::format( " {}-{}>{}", range.low, range.high, range.relay );
   }
   text += " exact:";
   for ( const ExactEntry& exact : program.exact ) {
      text += fmt::format( " {}>{}", exact.vlan, exact.relay );
   }
   return text;
}

}   // namespace Agent
