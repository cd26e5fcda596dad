// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Additions and deletions against every peer, and additions to more and more interfaces: what a
// pass touches grows with them, and how that tells on the peers shows what is the caches' doing.
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "bench/Agreement.h"
#include "bench/LibraryIndex.h"
#include "bench/Passes.h"
#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/Workloads.h"

namespace {

using namespace Bench;

constexpr double kSequential = 1.15;
constexpr double kRandomOrder = 0.28;
constexpr double kOwnMappings = 0.20;
constexpr double kLoading = 0.32;
constexpr double kChanging = 0.28;
constexpr double kManyInterfaces = 0.48;
constexpr double kGrowth = 0.75;
constexpr std::uint64_t kCheckedInterfaces = 64;   // the peers agree or not whatever the number

constexpr double kShown = std::numeric_limits< double >::infinity();

std::vector< Goal >
goals( double limitToMap ) {
   std::vector< std::string > containers;
   forEachContainer( [ & ]< class Index >() { containers.emplace_back( Index::kName ); } );
   return { ratioTo( TreeIndex< StdTree >::kName, limitToMap ), belowBest( containers ) };
}

void
addRow( const Workload& workload, double limitToMap ) {
   requireAgreement( workload );
   const Row row{ "Range index: ns per operation", workload.name, goals( limitToMap ) };
   measurePasses< Pass< LibraryIndex > >( row, kLibrary, workload );
   forEachPeer( [ & ]< class Index >() {
      measurePasses< Pass< ByInterface< Index > > >( row, Index::kName, workload );
   } );
}

// A pass over thousands of interfaces takes a second, so it is repeated less often.
void
addGrowthRow( std::uint64_t interfaces, int repetitions ) {
   const Workload workload = growthAdd( interfaces );
   if ( interfaces <= kCheckedInterfaces ) {
      requireAgreement( workload );
   }
   const Row row{ "Growth: ns per addition", workload.name, goals( kGrowth ) };
   measurePasses< Pass< LibraryIndex > >( row, kLibrary, workload, repetitions );
   forEachContainer( [ & ]< class Index >() {
      measurePasses< Pass< ByInterface< Index > > >( row, Index::kName, workload, repetitions );
   } );
}

}   // namespace

void
Bench::addRows() {
   const std::uint64_t many = tinyRun() ? 8 : 1024;
   addRow( sequentialAdd(), kSequential );
   addRow( sequentialDelete(), kSequential );
   addRow( randomAdd(), kRandomOrder );
   addRow( randomDelete(), kRandomOrder );
   addRow( distinctAdd(), kOwnMappings );
   addRow( distinctDelete(), kOwnMappings );
   addRow( churnLoad(), kLoading );
   addRow( churnChange(), kChanging );
   addRow( roundRobinAdd( many ), kManyInterfaces );
   addRow( randomBlocksAdd( many ), kShown );
   addGrowthRow( 1, 9 );
   addGrowthRow( 64, 9 );
   if ( !tinyRun() ) {
      addGrowthRow( 1024, 5 );
      addGrowthRow( 4096, 3 );
   }
}
