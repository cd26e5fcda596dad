// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MemoryDataPlane: a data plane that remembers what it was given; range entries are limited, as
// in hardware.
#pragma once

#include <cstddef>
#include <map>

#include "Corvel/IntfId.h"
#include "agent/DataPlane.h"

namespace Agent {

class MemoryDataPlane : public DataPlane {
 public:
   explicit MemoryDataPlane( std::size_t rangeEntriesPerPort )
       : rangeEntriesPerPort_( rangeEntriesPerPort ) {}

   std::size_t rangeEntriesPerPort() const override { return rangeEntriesPerPort_; }
   /// Throws std::length_error when there are more ranges than entries.
   void portProgramIs( Corvel::IntfId port, PortProgram program ) override;

   /// What the port was given last; nothing for a port that was never programmed.
   const PortProgram& portProgram( Corvel::IntfId port ) const;

 private:
   const std::size_t rangeEntriesPerPort_;
   std::map< Corvel::IntfId, PortProgram > programs_;
};

}   // namespace Agent
