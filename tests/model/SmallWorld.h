// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SmallWorld: six ids and three mappings on one interface, every call that can be made there, and all
// that an index can hold there.
#pragma once

#include <array>
#include <cstdint>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "MoxVlanMapping/VlanRangeEntry.h"
#include "tests/support/LiteralRangeMgr.h"
#include "tests/support/RangeSteps.h"

namespace SmallWorld {

using Bridging::VlanId;
using Corvel::IntfId;
using TestSupport::LiteralRangeEntry;
using TestSupport::Range;

constexpr unsigned kIds = 6;
constexpr unsigned kMappings = 3;
inline const IntfId kIntf( 1 );

// Which ids and mappings there are.
struct World {
   const char* name;
   unsigned first;
   const char* mappings;   // letters of RangeText

   VlanId vid( unsigned index ) const { return VlanId( first + index ); }
   Bridging::VlanXlateMapping mapping( unsigned index ) const {
      return TestSupport::mappingOf( mappings[ index ] );
   }
};

inline void
PrintTo( const World& world, std::ostream* out ) {
   *out << world.name;
}

// One call: an addition of each id under each mapping, then a deletion of each id.
using Call = std::uint8_t;
constexpr Call kAdditions = kIds * kMappings;
constexpr Call kCalls = kAdditions + kIds;
using Path = std::vector< Call >;

constexpr bool
isAddition( Call call ) {
   return call < kAdditions;
}
constexpr unsigned
idOf( Call call ) {
   return isAddition( call ) ? call / kMappings : call - kAdditions;
}
constexpr unsigned
mappingOf( Call call ) {
   return call % kMappings;
}

template < class Mgr >
void
carryOut( Mgr& mgr, const World& world, Call call ) {
   if ( isAddition( call ) ) {
      mgr.addVlanToIdx( kIntf, world.vid( idOf( call ) ), world.mapping( mappingOf( call ) ) );
   } else {
      mgr.deleteVlanFromIdx( kIntf, world.vid( idOf( call ) ) );
   }
}

inline std::string
pathText( const World& world, const Path& path ) {
   std::string all;
   for ( const Call call : path ) {
      all +=
         ( isAddition( call ) ? "add " : "delete " ) + std::to_string( world.first + idOf( call ) );
      all += isAddition( call ) ? std::string( " " ) + world.mappings[ mappingOf( call ) ] : "";
      all += "; ";
   }
   return all;
}

// All that both collections of an entry hold: five bits for the range that starts at each id, where
// there is one, and one bit for each start.
using State = std::uint64_t;
constexpr unsigned kRangeBits = 5;

constexpr State
rangeState( unsigned low, unsigned high, unsigned mapping ) {
   return State( 1 + mapping * kIds + high ) << ( kRangeBits * low );
}
constexpr State
startState( unsigned low ) {
   return State( 1 ) << ( kRangeBits * kIds + low );
}
constexpr unsigned
rangeCode( State state, unsigned low ) {
   return ( state >> ( kRangeBits * low ) ) & ( ( 1u << kRangeBits ) - 1 );
}

[[noreturn]] inline void
leavesTheWorld( const std::string& what ) {
   throw std::logic_error( "not of this world: " + what );
}

inline unsigned
indexOf( const World& world, unsigned vid ) {
   if ( vid < world.first || vid >= world.first + kIds ) {
      leavesTheWorld( std::to_string( vid ) );
   }
   return vid - world.first;
}

inline State
stateOf( const World& world, const Range& range ) {
   for ( unsigned mapping = 0; mapping < kMappings; ++mapping ) {
      if ( range.mapping() == world.mapping( mapping ) ) {
         return rangeState( indexOf( world, range.lowVid().value() ),
                            indexOf( world, range.highVid().value() ), mapping );
      }
   }
   leavesTheWorld( TestSupport::rangeText( range ) );
}

inline State
stateOf( const World& world, const LiteralRangeEntry& entry ) {
   State state = 0;
   for ( const auto& [ key, element ] : entry.ranges.elements() ) {
      state |= stateOf( world, *element );
   }
   for ( const auto& [ key, element ] : entry.starts.elements() ) {
      state |= startState( indexOf( world, key ) );
   }
   return state;
}

// Each element stands under its own key and in its place.
inline State
stateOf( const World& world, const MoxVlanMapping::VlanRangeEntry& entry ) {
   State state = 0;
   unsigned lowest = 0;
   for ( const auto& element : entry.vlanIdRange() ) {
      const unsigned key = element.key().value();
      if ( key != element.value().lowVid().value() || key <= std::exchange( lowest, key ) ) {
         leavesTheWorld( TestSupport::rangesText( entry ) );
      }
      state |= stateOf( world, element.value() );
   }
   unsigned highest = VlanId::kHighest + 1;
   for ( const auto& element : entry.revSortedStartVid() ) {
      const unsigned key = element.key().value();
      if ( !element.value() || key >= std::exchange( highest, key ) ) {
         leavesTheWorld( TestSupport::startsText( entry ) );
      }
      state |= startState( indexOf( world, key ) );
   }
   return state;
}

inline LiteralRangeEntry
entryOf( const World& world, State state ) {
   LiteralRangeEntry entry;
   for ( unsigned low = 0; low < kIds; ++low ) {
      if ( const unsigned code = rangeCode( state, low ) ) {
         entry.rangeIs( { world.vid( low ), world.vid( ( code - 1 ) % kIds ),
                          world.mapping( ( code - 1 ) / kIds ) } );
      }
      if ( state & startState( low ) ) {
         entry.startIs( world.vid( low ).value(), true );
      }
   }
   return entry;
}

inline std::string
stateText( const World& world, State state ) {
   return TestSupport::entryText( entryOf( world, state ) );
}

inline std::string
linesText( const std::vector< std::string >& lines ) {
   return TestSupport::joined( lines, []( const std::string& line ) { return "\n" + line; } );
}

inline const World kLowestIds{ "LowestIds", 1, "ABC" };
inline const World kMiddleIds{ "MiddleIds", 2045, "ABC" };
inline const World kHighestIds{ "HighestIds", 4089, "ABC" };

}   // namespace SmallWorld
