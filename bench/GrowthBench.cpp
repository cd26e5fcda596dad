// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The same content on more and more interfaces: ns per addition. What a pass touches grows with
// them; how that tells on a hand-tuned map shows what is the caches' doing.
#include <cstddef>
#include <cstdint>

#include "bench/Agreement.h"
#include "bench/LibraryIndex.h"
#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/Workloads.h"

namespace {

using namespace Bench;

constexpr std::uint64_t kCheckedInterfaces = 64;   // the peers agree or not whatever the number

template < class Index >
struct Pass {
   Script script;
   Index index{};

   std::size_t operator()() {
      runThrough( index, script.timed );
      return script.timed.size();
   }
};

// A pass over thousands of interfaces takes a second, so it is repeated less often.
template < class Index >
void
measureGrowth( const Row& row, const Workload& workload, int repetitions ) {
   measure(
      row, Index::kName,
      [ workload, random = Random( 11 ) ]( benchmark::State& state ) mutable {
         return nanosecondsPerOperation(
            state, [ & ] { return Pass< Index >{ workload.draw( random ) }; } );
      },
      repetitions );
}

void
addRow( std::uint64_t interfaces, int repetitions ) {
   const Workload workload = growthAdd( interfaces );
   if ( interfaces <= kCheckedInterfaces ) {
      requireAgreement( workload );
   }
   const Row row{ "Growth: ns per addition", workload.name, { shownBeside( "map" ) } };
   measureGrowth< LibraryIndex >( row, workload, repetitions );
   measureGrowth< ByInterface< TreeIndex< StdTree > > >( row, workload, repetitions );
}

}   // namespace

void
Bench::addRows() {
   addRow( 1, 9 );
   addRow( 64, 9 );
   if ( !tinyRun() ) {
      addRow( 1024, 5 );
      addRow( 4096, 3 );
   }
}
