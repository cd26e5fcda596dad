// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/MemoryDataPlane.h"

#include <fmt/format.h>

#include <stdexcept>
#include <utility>

namespace Agent {

void
MemoryDataPlane::portProgramIs( Corvel::IntfId port, PortProgram program ) {
   if ( program.ranges.size() > rangeEntriesPerPort_ ) {
      throw std::length_error( fmt::format( "port {}: {} ranges do not fit into {} range entries",
                                            port.value(), program.ranges.size(),
                                            rangeEntriesPerPort_ ) );
   }
   programs_[ port ] = std::move( program );
}

const PortProgram&
MemoryDataPlane::portProgram( Corvel::IntfId port ) const {
   static const PortProgram none;
   const auto entry = programs_.find( port );
   return entry == programs_.end() ? none : entry->second;
}

}   // namespace Agent
