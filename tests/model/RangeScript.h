// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeScript: what scripts of VLAN mappings have in common. Their lines are those that
// vlan-scale-agent replay reads, and what they leave is written as it writes its state.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <vector>

#include "Bridging/VlanId.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

namespace RangeScript {

using Triple = std::array< unsigned, 3 >;   ///< low, high, relay
using Triples = std::vector< Triple >;

inline std::string
portName( std::uint64_t port ) {
   return "eth" + std::to_string( port );
}

/// One line of a script. `members` as `,"vlan":1`.
inline std::string
event( const std::string& op, const std::string& members = "" ) {
   return "{\"op\":\"" + op + "\"" + members + "}";
}
inline std::string
member( const std::string& name, const std::string& text ) {
   return ",\"" + name + "\":\"" + text + "\"";
}
inline std::string
member( const std::string& name, unsigned number ) {
   return ",\"" + name + "\":" + std::to_string( number );
}

/// What each VLAN id of a port is translated to.
using Table = std::map< unsigned, unsigned >;

/// Maximal runs, ascending.
inline Triples
runsOf( const Table& table ) {
   Triples runs;
   for ( const auto& [ vid, relay ] : table ) {
      if ( !runs.empty() && runs.back()[ 1 ] + 1 == vid && runs.back()[ 2 ] == relay ) {
         runs.back()[ 1 ] = vid;
      } else {
         runs.push_back( { vid, vid, relay } );
      }
   }
   return runs;
}

inline Triples
bySize( Triples runs ) {
   std::ranges::sort( runs, {}, []( const Triple& run ) {
      return std::tuple( int( run[ 0 ] ) - int( run[ 1 ] ), run[ 0 ], run[ 2 ] );
   } );
   return runs;
}

inline std::string
text( const std::vector< unsigned >& numbers ) {
   std::string all;
   for ( const unsigned number : numbers ) {
      all += ( all.empty() ? "" : "," ) + std::to_string( number );
   }
   return "[" + all + "]";
}
inline std::string
text( const Triples& runs ) {
   std::string all;
   for ( const Triple& run : runs ) {
      all += ( all.empty() ? "" : "," ) + text( std::vector( run.begin(), run.end() ) );
   }
   return "[" + all + "]";
}

/// One line of an index; nothing for a port without ranges.
inline std::string
indexText( std::uint64_t port, const std::string& ranges, const std::string& starts ) {
   return ranges == "[]" && starts == "[]"
           ? ""
           : portName( port ) + " ranges " + ranges + " starts " + starts + "\n";
}
inline std::string
indexText( std::uint64_t port, const Table& table ) {
   const Triples runs = runsOf( table );
   std::vector< unsigned > starts;
   for ( auto run = runs.rbegin(); run != runs.rend(); ++run ) {
      starts.push_back( ( *run )[ 0 ] );
   }
   return indexText( port, text( runs ), text( starts ) );
}

inline Triple
tripleOf( const MoxVlanMapping::VlanRangeXlateMapping& range ) {
   return { range.lowVid().value(), range.highVid().value(), range.mapping().rawVlanId() };
}

/// As stored; the inside of both collections is verified on the way.
inline std::string
indexText( std::uint64_t port, const MoxVlanMapping::VlanRangeEntry& entry ) {
   Triples ranges;
   for ( const auto& element : entry.vlanIdRange() ) {
      ranges.push_back( tripleOf( element.value() ) );
   }
   std::vector< unsigned > starts;
   for ( const auto& element : entry.revSortedStartVid() ) {
      starts.push_back( element.key().value() );
   }
   entry.vlanIdRange().verify();
   entry.revSortedStartVid().verify();
   return indexText( port, text( ranges ), text( starts ) );
}

/// The ranges of an interface in the order of the size sort.
inline std::string
sortedText( const MoxVlanMapping::VlanXlateScaleEntry* entry ) {
   Triples sorted;
   if ( entry ) {
      for ( const auto& element : entry->vidRangeSorted() ) {
         sorted.push_back( tripleOf( element.key() ) );
      }
      entry->vidRangeSorted().verify();
   }
   return text( sorted );
}

/// Ids near each other and near the ends, so that neighbours meet often; by number.
constexpr unsigned kVids = 36;
constexpr unsigned
vidAt( unsigned number ) {
   constexpr std::array< unsigned, 3 > kFirst{ 1, 2045, Bridging::VlanId::kHighest - 11 };
   return kFirst[ number / 12 % 3 ] + number % 12;
}

}   // namespace RangeScript
