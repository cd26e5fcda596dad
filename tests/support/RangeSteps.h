// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeSteps: random calls of the range manager and changes behind its back, which run on it and on
// its literal form alike, and how the two are written down.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/RangeSlots.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/Exception.h"
#include "tests/support/LiteralRangeMgr.h"
#include "tests/support/RangeText.h"

namespace TestSupport {

using Range = MoxVlanMapping::VlanRangeXlateMapping;

enum class Op {
   Add,
   Del,
   DelFromRange,
   UpperTest,
   LowerTest,
   InRange,
   // Behind the manager's back:
   RangeIs,
   RangeDel,
   RangeDelAll,
   StartIs,
   StartDel,
   StartDelAll,
};

struct Step {
   Op op;
   Corvel::IntfId intfId;
   Bridging::VlanId vid;
   Range range;   // its mapping is the mapping of what takes no range
   bool flag;
};

inline void
PrintTo( const Step& step, std::ostream* out ) {
   static constexpr const char* kNames[] = {
      "add",     "delete",   "delete from range", "upper test", "lower test", "in range",
      "rangeIs", "rangeDel", "rangeDelAll",       "startIs",    "startDel",   "startDelAll" };
   *out << kNames[ static_cast< int >( step.op ) ] << " on " << step.intfId << ": id " << step.vid
        << ", range " << rangeText( step.range ) << flagText( step.flag );
}

inline bool
isEdit( Op op ) {
   return op >= Op::RangeIs;
}

inline void
edit( MoxVlanMapping::VlanRangeEntry& entry, const Step& step ) {
   switch ( step.op ) {
   case Op::RangeIs:
      entry.vlanIdRangeIs( step.range );
      break;
   case Op::RangeDel:
      entry.vlanIdRangeDel( step.vid );
      break;
   case Op::RangeDelAll:
      entry.vlanIdRangeDelAll();
      break;
   case Op::StartIs:
      entry.revSortedStartVidIs( step.vid.value(), step.flag );
      break;
   case Op::StartDel:
      entry.revSortedStartVidDel( step.vid.value() );
      break;
   default:
      entry.revSortedStartVidDelAll();
      break;
   }
}

inline void
edit( LiteralRangeEntry& entry, const Step& step ) {
   switch ( step.op ) {
   case Op::RangeIs:
      entry.rangeIs( step.range );
      break;
   case Op::RangeDel:
      entry.rangeDel( step.vid );
      break;
   case Op::RangeDelAll:
      entry.ranges.delAll();
      break;
   case Op::StartIs:
      entry.startIs( step.vid.value(), step.flag );
      break;
   case Op::StartDel:
      entry.startDel( step.vid.value() );
      break;
   default:
      entry.starts.delAll();
      break;
   }
}

// What the call answers. `range` may be the stored element's own.
template < class Mgr >
std::string
call( Mgr& mgr, const Step& step, const Range& range ) {
   const auto answer = []( bool yes ) { return yes ? "true" : "false"; };
   const Bridging::VlanXlateMapping mapping = step.range.mapping();
   try {
      switch ( step.op ) {
      case Op::Add:
         mgr.addVlanToIdx( step.intfId, step.vid, mapping );
         break;
      case Op::Del:
         mgr.deleteVlanFromIdx( step.intfId, step.vid );
         break;
      case Op::DelFromRange:
         mgr.deleteVlanFromRange( step.intfId, step.vid, range );
         break;
      case Op::UpperTest:
         return answer( mgr.isVidAndDot1qInUpperBoundRange( step.intfId, step.vid, mapping ) );
      case Op::LowerTest:
         return answer( mgr.isVidAndDot1qInLowerBoundRange( step.intfId, step.vid, mapping ) );
      default:
         return answer( mgr.isVidInRange( range, step.vid ) );
      }
   } catch ( const Zel::RangeException& exception ) {
      return std::string( "range exception: " ) + exception.what();
   }
   return "done";
}

inline std::string
entryText( const MoxVlanMapping::VlanRangeEntry& entry ) {
   return rangesText( entry ) + " / " + startsText( entry );
}

inline std::string
entryText( const LiteralRangeEntry& entry ) {
   return joined( entry.ranges.elements(),
                  []( const auto& each ) { return rangeText( *each.second ); } ) +
          " / " + joined( entry.starts.elements(), []( const auto& each ) {
             return std::to_string( each.first ) + flagText( *each.second );
          } );
}

// What steps are like.
struct Profile {
   const char* name;
   std::vector< std::pair< unsigned, unsigned > > windows;   // of VLAN ids: first, last
   const char* levels;                                       // of trace
   int sequences;
   int steps;              // of each
   unsigned edits;         // in 100 steps
   bool watched = false;   // the reader of the trace looks at the index, and changes it
   bool crosses = false;   // grows and shrinks across the sizes that change the index's shape
};

inline void
PrintTo( const Profile& profile, std::ostream* out ) {
   *out << profile.name;
}

// How often a collection outgrew the array of its index and went back to it.
struct Crossings {
   bool many = false;
   int down = 0;

   void sizeIs( std::size_t size ) {
      if ( !many && size > MoxVlanMapping::RangeSlots::kMaxArraySize ) {
         many = true;
      } else if ( many && size <= MoxVlanMapping::RangeSlots::kMaxArraySize / 2 ) {
         many = false;
         ++down;
      }
   }
};

/// A number that a start may have, also if the id is none.
inline std::uint16_t
startNear( Bridging::VlanId vid ) {
   return static_cast< std::uint16_t >( vid.value() % ( Bridging::VlanId::kHighest + 1 ) );
}

/// Draws steps that fit what the literal form holds.
class RangeSteps {
 public:
   RangeSteps( const Profile& profile, std::uint64_t seed, const LiteralRangeMgr& literal )
       : profile_( profile ), random_( seed ), literal_( literal ) {}

   std::size_t any( std::size_t below ) { return static_cast< std::size_t >( random_() % below ); }
   bool oneIn( std::size_t times ) { return any( times ) == 0; }

   Bridging::VlanId anyVid() {
      static constexpr std::array< std::uint16_t, 3 > kNoVlanIds{ 0, 4095, 65535 };
      if ( oneIn( 40 ) ) {
         return Bridging::VlanId::fromRaw( kNoVlanIds[ any( kNoVlanIds.size() ) ] );
      }
      const auto& [ first, last ] = profile_.windows[ any( profile_.windows.size() ) ];
      unsigned vid = first + static_cast< unsigned >( any( last - first + 1 ) );
      if ( oneIn( 2 ) && first <= lastVid_ && lastVid_ < last ) {
         vid = lastVid_ + 1;
      }
      lastVid_ = vid;
      return Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( vid ) );
   }
   Bridging::VlanXlateMapping anyMapping() {
      // The second and the third differ behind their first field alone.
      static constexpr std::array kMappings{ Bridging::VlanXlateMapping::fromRaw( 3001 ),
                                             Bridging::VlanXlateMapping::fromRaw( 3002 ),
                                             Bridging::VlanXlateMapping::fromRaw( 3002, 7 ) };
      return oneIn( 8 ) ? Bridging::VlanXlateMapping() : kMappings[ any( kMappings.size() ) ];
   }
   // Where a stored range starts, at or above a random id.
   Bridging::VlanId anyStoredLow( Corvel::IntfId intfId ) {
      const LiteralRangeEntry* entry = literal_.find( intfId );
      if ( !entry ) {
         return anyVid();
      }
      const auto& ranges = entry->ranges.elements();
      const auto at = ranges.lower_bound( anyVid().value() );
      return at == ranges.end() ? anyVid() : Bridging::VlanId::fromRaw( at->first );
   }
   Range anyRange( Corvel::IntfId intfId ) {
      const Bridging::VlanId low = oneIn( 3 ) ? anyVid() : anyStoredLow( intfId );
      const LiteralRangeEntry* entry = literal_.find( intfId );
      const auto stored = entry ? entry->ranges.find( low.value() ) : nullptr;
      if ( stored && !oneIn( 3 ) ) {
         return *stored;
      }
      const auto high = static_cast< std::uint16_t >( low.value() + any( 6 ) - oneIn( 20 ) );
      return { low, oneIn( 20 ) ? anyVid() : Bridging::VlanId::fromRaw( high ), anyMapping() };
   }
   Step anyEdit( Corvel::IntfId intfId ) {
      static constexpr std::array kEdits{ Op::RangeIs, Op::RangeDel, Op::StartIs, Op::StartDel };
      Step step{ kEdits[ any( 4 ) ], intfId, anyVid(), anyRange( intfId ), !oneIn( 4 ) };
      if ( oneIn( 60 ) ) {
         step.op = oneIn( 2 ) ? Op::RangeDelAll : Op::StartDelAll;
      } else if ( step.op == Op::RangeDel || oneIn( 2 ) ) {
         step.vid = anyStoredLow( intfId );
      }
      if ( step.op == Op::StartIs || step.op == Op::StartDel ) {
         step.vid = Bridging::VlanId::fromRaw( startNear( step.vid ) );
      }
      return step;
   }
   Step anyStep() {
      const Corvel::IntfId intfId( 1 + any( profile_.crosses ? 2 : 3 ) );
      if ( any( 100 ) < profile_.edits ) {
         return anyEdit( intfId );
      }
      static constexpr std::array kOps{ Op::Add,       Op::Add,     Op::Add,      Op::Add,
                                        Op::Add,       Op::Add,     Op::Del,      Op::Del,
                                        Op::Del,       Op::Del,     Op::Del,      Op::DelFromRange,
                                        Op::UpperTest, Op::InRange, Op::LowerTest };
      Step step{ kOps[ any( kOps.size() ) ], intfId, anyVid(),
                 Range( Bridging::VlanId(), Bridging::VlanId(), anyMapping() ), false };
      if ( step.op == Op::DelFromRange || step.op == Op::InRange ) {
         step.range = anyRange( intfId );
         if ( !oneIn( 3 ) ) {
            step.vid = oneIn( 2 ) ? step.range.highVid() : step.range.lowVid();
         }
      }
      const bool shrinks = profile_.crosses && grown( intfId );
      if ( profile_.crosses && ( step.op == Op::Add || step.op == Op::Del ) && !oneIn( 6 ) ) {
         step.op = shrinks ? Op::Del : Op::Add;
         if ( shrinks ) {
            step.vid = anyStoredLow( intfId );
         }
      }
      return step;
   }

   /// The literal form starts anew.
   void restart() { crossings_.clear(); }
   /// How often an interface's ranges became too many for an array and few enough again.
   int crossedDown() const { return crossedDown_; }

 private:
   // Whether the interface's ranges became many and are not few again yet.
   bool grown( Corvel::IntfId intfId ) {
      Crossings& crossings = crossings_[ intfId.value() ];
      const LiteralRangeEntry* entry = literal_.find( intfId );
      const int before = crossings.down;
      crossings.sizeIs( entry ? entry->ranges.elements().size() : 0 );
      crossedDown_ += crossings.down - before;
      return crossings.many;
   }

   const Profile profile_;
   std::mt19937_64 random_;
   const LiteralRangeMgr& literal_;
   unsigned lastVid_ = 0;
   std::map< std::uint64_t, Crossings > crossings_;   // by interface
   int crossedDown_ = 0;
};

}   // namespace TestSupport
