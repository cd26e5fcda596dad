// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Sweep: repeats an operation with a fault at its first point, at its second, ... until none fires
// any more. A point is a request for memory, or a call of something foreign (Points).
//
// State   What the operation works on, made anew for each repetition. Offers parts(), what must be
//         as before or as after, by name; verify(), which aborts or fails when the inside of a
//         container is damaged; and points, when foreign calls are swept.
// Promise Behind each fault every part is as before or as after, the operation can be brought to
//         its end, and neither a block of memory nor a counted object is left.
#pragma once

#include <functional>
#include <iterator>
#include <map>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "Zel/Trace.h"
#include "tests/support/LiveObjects.h"
#include "tests/support/OperatorNew.h"

namespace Fault {

using Parts = std::map< std::string, std::string >;

class ForeignFault : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

/// Where something foreign is called.
class Points {
 public:
   /// Throws when `due()` answers true to the point's name.
   void operator()( const char* point ) const {
      if ( due && due( point ) ) {
         if ( outOfRange ) {
            throw Zel::RangeException( point );
         }
         throw ForeignFault( point );
      }
   }

   std::function< bool( std::string_view ) > due;
   bool outOfRange = false;   ///< throws what the library itself refuses ids with
};

struct Kind {
   const char* name;
   enum Source { Memory, Foreign } source;
   bool traced;
   bool onwards;   ///< every point from one on, not that one alone
};

constexpr Kind kMemoryKinds[] = {
   { "Once", Kind::Memory, false, false },
   { "Onwards", Kind::Memory, false, true },
   { "TracedOnce", Kind::Memory, true, false },
   { "TracedOnwards", Kind::Memory, true, true },
};
constexpr Kind kForeignKinds[] = {
   { "ForeignOnce", Kind::Foreign, false, false },
   { "ForeignOnwards", Kind::Foreign, false, true },
};

/// Whether an operation asks for memory while nothing is traced.
enum class Memory { Asked, NotAsked, Either };

template < class State >
struct Row {
   using Act = std::function< void( State& ) >;

   std::string name;
   Act given;
   Act act;
   /// Behind a fault: brings what was interrupted to its end. Null: `act` once more.
   Act retry = nullptr;
   Memory memory = Memory::Asked;

   friend void PrintTo( const Row* row, std::ostream* out ) { *out << row->name; }
};

/// The lines are made, and then thrown away.
class TraceSwitch {
 public:
   explicit TraceSwitch( bool on ) {
      Zel::traceSinkIs( []( const Zel::TraceLine& ) {} );
      Zel::traceLevelsIs( on ? "*/*" : "*/" );
   }
   ~TraceSwitch() {
      Zel::traceLevelsIs( "*/" );
      Zel::traceSinkIs( {} );
   }
   TraceSwitch( const TraceSwitch& ) = delete;
   TraceSwitch& operator=( const TraceSwitch& ) = delete;
};

/// Of an interface whose ranges changed. Who put a change back leaves the mark: an interface handed
/// over once too often loses nothing.
inline constexpr const char* kMarked = " waits";

inline void
expectBeforeOrAfter( const Parts& now, const Parts& before, const Parts& after ) {
   for ( const auto& [ name, text ] : now ) {
      EXPECT_TRUE( text == before.at( name ) || text == after.at( name ) ||
                   text == before.at( name ) + kMarked )
         << name << " is \"" << text << "\"\nbefore: \"" << before.at( name ) << "\"\nafter: \""
         << after.at( name ) << "\"";
   }
}

/// What happened while a fault waited at one of the points of an operation.
struct Outcome {
   bool fired = false;
   bool ended = true;   ///< by itself, not by the fault's exception
};

template < class State >
Outcome
actUnderFault( const Kind& kind, unsigned first, State& state, const Row< State >& row ) {
   Outcome outcome;
   unsigned point = 0;
   const auto due = [ & ] {
      const bool isDue = kind.onwards ? point >= first : point == first;
      ++point;
      outcome.fired = outcome.fired || isDue;
      return isDue;
   };
   try {
      if constexpr ( requires { state.points; } ) {
         if ( kind.source == Kind::Foreign ) {
            state.points.due = [ & ]( std::string_view ) { return due(); };
            row.act( state );
            state.points.due = nullptr;
            EXPECT_FALSE( outcome.fired ) << "the exception did not reach the caller";
            return outcome;
         }
      }
      const TestSupport::OperatorNewHook refuse( [ & ] {
         if ( due() ) {
            throw std::bad_alloc();
         }
      } );
      row.act( state );
   } catch ( const std::bad_alloc& ) {
      outcome.ended = false;
   } catch ( const ForeignFault& ) {
      outcome.ended = false;
   }
   if constexpr ( requires { state.points; } ) {
      state.points.due = nullptr;
   }
   return outcome;
}

template < class State >
Parts
partsAfter( const Row< State >& row ) {
   State state;
   row.given( state );
   row.act( state );
   return state.parts();
}

template < class State >
void
sweep( const Row< State >& row, const Kind& kind ) {
   const TraceSwitch traces( kind.traced );
   partsAfter( row );   // what is made once in the life of a process is made here
   const Parts after = partsAfter( row );
   unsigned points = 0;
   for ( bool fired = true; fired && !testing::Test::HasFailure(); ) {
      SCOPED_TRACE( row.name + ", " + kind.name + ": fault at point " + std::to_string( points ) );
      const auto live = TestSupport::liveObjects();
      const auto blocks = TestSupport::newBlocks();
      {
         State state;
         row.given( state );
         const Parts before = state.parts();
         const Outcome outcome = actUnderFault( kind, points, state, row );
         fired = outcome.fired;
         points += fired;
         state.verify();
         if ( !outcome.ended ) {
            expectBeforeOrAfter( state.parts(), before, after );
            ( row.retry ? row.retry : row.act )( state );
            state.verify();
         }
         EXPECT_EQ( state.parts(), after );
      }
      EXPECT_EQ( TestSupport::newBlocks(), blocks ) << "memory leaks";
      EXPECT_EQ( TestSupport::liveObjects(), live ) << "objects are left";
   }
   if ( kind.source == Kind::Memory && !kind.traced && row.memory != Memory::Either ) {
      EXPECT_EQ( points != 0, row.memory == Memory::Asked ) << "faults: " << points;
   }
}

template < class State >
Row< State >
needsNoMemory( Row< State > row ) {
   row.memory = Memory::NotAsked;
   return row;
}

template < class State >
void
sweep( const Row< State >& row ) {
   for ( const Kind& kind : kMemoryKinds ) {
      sweep( row, kind );
   }
   if constexpr ( requires( State & state ) { state.points; } ) {
      for ( const Kind& kind : kForeignKinds ) {
         sweep( row, kind );
      }
   }
}

/// For testing::ValuesIn().
template < class Rows >
auto
pointersTo( const Rows& rows ) {
   std::vector< decltype( std::data( rows ) ) > pointers;
   for ( const auto& row : rows ) {
      pointers.push_back( &row );
   }
   return pointers;
}

template < class Row >
std::string
caseName( const testing::TestParamInfo< const Row* >& info ) {
   return info.param->name;
}

}   // namespace Fault
