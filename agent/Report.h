// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Report: what the library and the data plane made of a configuration, as text and as JSON.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "agent/ScaleAgent.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

struct RangeReport {
   std::uint16_t low;
   std::uint16_t high;
   std::uint16_t relay;
   std::size_t rank;                          ///< from 1, by size
   std::optional< std::size_t > rangeEntry;   ///< from 1; none when its ids have exact entries

   std::size_t ids() const { return static_cast< std::size_t >( high - low ) + 1; }
};

struct PortReport {
   std::string name;
   std::optional< std::string > lag;
   std::size_t mappings = 0;
   std::vector< RangeReport > ranges;   ///< by rank
   std::size_t rangeEntries = 0;
   std::size_t exactEntries = 0;
};

/// Sums over all ports.
struct Totals {
   std::size_t mappings = 0;
   std::size_t ranges = 0;
   std::size_t rangeEntries = 0;
   std::size_t exactEntries = 0;
};

struct Report {
   std::vector< PortReport > ports;   ///< in the order of the file
   std::size_t rangeEntriesPerPort = 0;

   Totals total() const;
};

Report makeReport( const ScaleAgent& agent, const Configuration& configuration );

enum class RangeOrder { Size, Vid };

/// "1 mapping", "36,775 mappings"
std::string counted( std::size_t number, const char* one, const char* many );
/// "36,775 mappings -> 4,092 ranges -> 325 range entries + 4,407 exact entries at 8 entries per
/// port"
std::string closingLine( const Report& report );

// What follows is written as it is made, for a report may be large. Names are shown escaped.

/// One line per port and the closing line.
void printSummary( std::ostream& out, const Report& report );
/// One line per range: "eth1  1000-1127  -> 3001  128 ids  range entry 2".
void printRanges( std::ostream& out, const PortReport& port, RangeOrder order );
/// A port's numbers, its VLAN ids by translation, and its ranges.
void printPort( std::ostream& out, const PortReport& port, RangeOrder order );

void printSummaryJson( std::ostream& out, const Report& report );
void printRangesJson( std::ostream& out, const std::vector< PortReport >& ports, RangeOrder order );
void printPortJson( std::ostream& out, const PortReport& port, RangeOrder order );

/// Only the ranges that hold one of `vlans` (ascending).
PortReport onlyVlans( PortReport port, const std::vector< std::uint16_t >& vlans );

}   // namespace Agent
