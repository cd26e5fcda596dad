// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The road of one configuration event: record, state machine hook, index, schedule mark; and the
// drain of the schedule. What they cost beyond the index and the sort alone.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/LibraryIndex.h"
#include "bench/Passes.h"
#include "bench/Report.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;

/// Events are writes into the configuration directory.
using FromWrite = Pass< ConfiguredWorld >;

/// Events are calls of the hooks, with the record in the configuration already.
struct FromHook {
   WrittenWorld index;
   Script script;

   explicit FromHook( Script drawn ) : script( std::move( drawn ) ) {
      index.stateMachine->vlanRangeMgrIs( index.ranges );   // delivers nothing by itself
      runThrough( index, script.before );
      deliver( script.before );
      runThrough( index, script.timed );
   }
   std::size_t operator()() {
      deliver( script.timed );
      return script.timed.size();
   }

 private:
   void deliver( const std::vector< Operation >& operations ) {
      for ( const Operation& operation : operations ) {
         const Mox::PortVlanKey key( operation.intf, operation.vid );
         if ( operation.isAdd ) {
            index.stateMachine->doAddIngressVlanMapping( key );
         } else {
            index.stateMachine->doDelIngressVlanMapping( key );
         }
      }
   }
};

template < class Road >
void
addRoadRow( const Row& row, const Workload& workload ) {
   Random random( 8 );
   const Script script = workload.draw( random );
   Pass< LibraryIndex > alone( script );
   Road road( script );
   alone();
   road();
   if ( alone.index.ranges() != rangesOf( *road.index.ranges ) ||
        road.index.schedule->vlanXlateSchedule().size() == 0 ) {
      throw std::runtime_error( workload.name + ": the road leads to another state" );
   }
   measurePasses< Road >( row, kLibrary, workload );
   measurePasses< Pass< LibraryIndex > >( row, LibraryIndex::kAlone, workload );
}

void
addRoadRows( const Workload& workload, double limit ) {
   const std::vector< Goal > goals{ over( LibraryIndex::kAlone, limit ) };
   addRoadRow< FromWrite >(
      { "Road: ns from the configuration write to the schedule mark", workload.name, goals },
      workload );
   addRoadRow< FromHook >(
      { "Road: ns from the state machine's hook to the schedule mark", workload.name, goals },
      workload );
}

/// Interfaces with some ranges each, loaded in random order, all of them sorted once and scheduled
/// again.
struct Drain {
   World world;
   const std::uint64_t interfaces;

   Drain( std::uint64_t count, std::size_t ranges ) : interfaces( count ) {
      std::vector< std::uint64_t > order( interfaces * ranges );
      std::iota( order.begin(), order.end(), std::uint64_t{ 0 } );
      std::ranges::shuffle( order, Random( 9 ) );
      for ( const std::uint64_t each : order ) {
         world.mgr->addVlanToIdx(
            Corvel::IntfId( 1 + each / ranges ),
            Bridging::VlanId::fromRaw( static_cast< Vid >( 1 + each % ranges * 2 ) ),
            translationTo( 3001 ) );
      }
      for ( std::uint64_t intf = 1; intf <= interfaces; ++intf ) {
         world.schedule->vlanXlateScheduleIs( Corvel::IntfId( intf ) );
      }
      world.scheduler->runUntilIdle();
      if ( world.codef->handed != interfaces ) {
         throw std::runtime_error( "the drain left interfaces out" );
      }
      for ( std::uint64_t intf = 1; intf <= interfaces; ++intf ) {
         world.schedule->vlanXlateScheduleIs( Corvel::IntfId( intf ) );
      }
   }
};

struct DrainAll : Drain {
   using Drain::Drain;
   std::size_t operator()() {
      world.scheduler->runUntilIdle();
      return interfaces;
   }
};

struct SortAll : Drain {
   using Drain::Drain;
   std::size_t operator()() {
      for ( std::uint64_t intf = 1; intf <= interfaces; ++intf ) {
         world.codef->sortVlanRangeBySize( Corvel::IntfId( intf ) );
      }
      return interfaces;
   }
};

template < class Pass >
void
measureDrain( const Row& row, const char* subject, std::uint64_t interfaces, std::size_t ranges ) {
   measure( row, subject, [ = ]( benchmark::State& state ) {
      return nanosecondsPerOperation( state, [ = ] { return Pass( interfaces, ranges ); } );
   } );
}

void
addDrainRow( std::size_t ranges ) {
   constexpr const char* kSorts = "sort alone";
   const std::uint64_t interfaces = tinyRun() ? 8 : 1024;
   const Row row{ "Drain: ns per interface",
                  textOf( interfaces, "interface" ) + " x " + textOf( ranges, "range" ),
                  { over( kSorts, 300 ) } };
   measureDrain< DrainAll >( row, kLibrary, interfaces, ranges );
   measureDrain< SortAll >( row, kSorts, interfaces, ranges );
}

}   // namespace

void
Bench::addRows() {
   constexpr double kOneInterface = 80;
   constexpr double kManyInterfaces = 150;
   addRoadRows( randomAdd(), kOneInterface );
   addRoadRows( randomDelete(), kOneInterface );
   addRoadRows( distinctAdd(), kOneInterface );
   addRoadRows( roundRobinAdd( tinyRun() ? 8 : 1024 ), kManyInterfaces );
   addDrainRow( 1 );
   addDrainRow( 16 );
}
