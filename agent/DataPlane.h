// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// DataPlane: the hardware that translates VLAN ids, as the agent sees it.
//
// Each port has few range entries, which cover any run of consecutive VLAN ids that share one
// translation, and many exact entries, which cover one VLAN id each.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Corvel/IntfId.h"

namespace Agent {

/// VLAN ids `low` to `high`, both inclusive, to `relay`.
struct RangeEntry {
   std::uint16_t low;
   std::uint16_t high;
   std::uint16_t relay;

   friend bool operator==( const RangeEntry&, const RangeEntry& ) = default;
};

struct ExactEntry {
   std::uint16_t vlan;
   std::uint16_t relay;

   friend bool operator==( const ExactEntry&, const ExactEntry& ) = default;
};

struct PortProgram {
   std::vector< RangeEntry > ranges;
   std::vector< ExactEntry > exact;
};

class DataPlane {
 public:
   virtual ~DataPlane() = default;
   DataPlane() = default;
   DataPlane( const DataPlane& ) = delete;
   DataPlane& operator=( const DataPlane& ) = delete;

   virtual std::size_t rangeEntriesPerPort() const = 0;
   /// Replaces all of a port's entries. Throws, with nothing changed, when the program does not
   /// fit.
   virtual void portProgramIs( Corvel::IntfId port, PortProgram program ) = 0;
};

}   // namespace Agent
