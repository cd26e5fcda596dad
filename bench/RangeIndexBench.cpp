// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Additions and deletions against every peer: ns per operation.
#include <cstddef>
#include <cstdint>

#include "bench/Agreement.h"
#include "bench/LibraryIndex.h"
#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/Workloads.h"

namespace {

using namespace Bench;

constexpr double kRandomOrder = 0.50;
constexpr double kSequential = 1.20;
constexpr double kManyInterfaces = 0.75;
constexpr double kIcl = 1.00;

template < class Index >
struct Pass {
   Script script;
   Index index{};

   std::size_t operator()() {
      runThrough( index, script.timed );
      return script.timed.size();
   }
};

template < class Index >
void
measureIndex( const Row& row, const Workload& workload ) {
   measure( row, Index::kName,
            [ workload, random = Random( 1 ) ]( benchmark::State& state ) mutable {
               return nanosecondsPerOperation( state, [ & ] {
                  Pass< Index > pass{ workload.draw( random ) };
                  runThrough( pass.index, pass.script.before );
                  return pass;
               } );
            } );
}

void
addRow( const Workload& workload, double limitToMap ) {
   requireAgreement( workload );
   const Row row{ "Range index: ns per operation",
                  workload.name,
                  { ratioTo( "map", limitToMap ), ratioTo( "ICL", kIcl ) } };
   measureIndex< LibraryIndex >( row, workload );
   measureIndex< ByInterface< TwoMapsIndex > >( row, workload );
   measureIndex< ByInterface< TreeIndex< StdTree > > >( row, workload );
   measureIndex< ByInterface< IclIndex > >( row, workload );
   measureIndex< ByInterface< TreeIndex< AbslTree > > >( row, workload );
   measureIndex< ByInterface< SortedVectorIndex > >( row, workload );
   measureIndex< ByInterface< FlatIndex > >( row, workload );
}

}   // namespace

void
Bench::addRows() {
   addRow( sequentialAdd(), kSequential );
   addRow( sequentialDelete(), kSequential );
   addRow( randomAdd(), kRandomOrder );
   addRow( randomDelete(), kRandomOrder );
   addRow( distinctAdd(), kRandomOrder );
   addRow( distinctDelete(), kRandomOrder );
   addRow( churn(), kRandomOrder );
   addRow( roundRobinAdd( tinyRun() ? 8 : 1024 ), kManyInterfaces );
}
