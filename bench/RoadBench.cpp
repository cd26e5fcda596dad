// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The road of one configuration event: record, state machine hook, index, schedule mark; and the
// drain of the schedule. What they cost beyond the index and the sort alone.
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "bench/LibraryIndex.h"
#include "bench/Report.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;

constexpr const char* kPlain = "index alone";

Mox::PortVlanKey
keyOf( const Operation& operation ) {
   return { operation.intf, operation.vid };
}

void
write( World& world, const Operation& operation ) {
   if ( operation.isAdd ) {
      world.acsd->ingressConfigDir()->configIs(
         Mox::MoxVlanMappingConfig( keyOf( operation ), operation.mapping ) );
   } else {
      world.acsd->ingressConfigDir()->configDel( keyOf( operation ) );
   }
}

/// Events are writes into the configuration directory.
struct FromWrite {
   World world;
   Script script;

   explicit FromWrite( Script drawn ) : script( std::move( drawn ) ) {
      world.stateMachine->handleInitialized();
      for ( const Operation& operation : script.before ) {
         write( world, operation );
      }
   }
   std::size_t operator()() {
      for ( const Operation& operation : script.timed ) {
         write( world, operation );
      }
      return script.timed.size();
   }
};

/// Events are calls of the hooks, with the record in the configuration already.
struct FromHook {
   World world;
   Script script;

   explicit FromHook( Script drawn ) : script( std::move( drawn ) ) {
      world.stateMachine->vlanRangeMgrIs( world.ranges );   // delivers nothing by itself
      for ( const Operation& operation : script.before ) {
         write( world, operation );
         deliver( operation );
      }
      for ( const Operation& operation : script.timed ) {
         write( world, operation );
      }
   }
   std::size_t operator()() {
      for ( const Operation& operation : script.timed ) {
         deliver( operation );
      }
      return script.timed.size();
   }

 private:
   void deliver( const Operation& operation ) {
      if ( operation.isAdd ) {
         world.stateMachine->doAddIngressVlanMapping( keyOf( operation ) );
      } else {
         world.stateMachine->doDelIngressVlanMapping( keyOf( operation ) );
      }
   }
};

struct Plain {
   LibraryIndex index{};
   Script script;

   explicit Plain( Script drawn ) : script( std::move( drawn ) ) {
      runThrough( index, script.before );
   }
   std::size_t operator()() {
      runThrough( index, script.timed );
      return script.timed.size();
   }
};

template < class Pass >
void
measureRoad( const Row& row, const char* subject, const Workload& workload ) {
   measure( row, subject, [ workload, random = Random( 7 ) ]( benchmark::State& state ) mutable {
      return nanosecondsPerOperation( state, [ & ] { return Pass( workload.draw( random ) ); } );
   } );
}

// All three roads must lead to the same index.
void
requireSameIndex( const Workload& workload ) {
   Random random( 8 );
   const Script script = workload.draw( random );
   Plain plain( script );
   FromHook hook( script );
   FromWrite road( script );
   plain();
   hook();
   road();
   if ( plain.index.ranges() != rangesOf( *hook.world.ranges ) ||
        plain.index.ranges() != rangesOf( *road.world.ranges ) ||
        road.world.schedule->vlanXlateSchedule().size() == 0 ) {
      throw std::runtime_error( workload.name + ": the roads lead to different states" );
   }
}

void
addRoadRows( const Workload& workload ) {
   requireSameIndex( workload );
   const std::string group = "Road: ns per event";
   const Row hook{ group, workload.name + ", from the hook", { over( kPlain, 250 ) } };
   measureRoad< FromHook >( hook, kLibrary, workload );
   measureRoad< Plain >( hook, kPlain, workload );
   const Row write{ group, workload.name + ", from the write", { over( kPlain, 250 ) } };
   measureRoad< FromWrite >( write, kLibrary, workload );
   measureRoad< Plain >( write, kPlain, workload );
}

/// Interfaces with some ranges each, all of them sorted once and scheduled again.
struct Drain {
   World world;
   const std::uint64_t interfaces;

   Drain( std::uint64_t count, std::size_t ranges ) : interfaces( count ) {
      for ( std::uint64_t intf = 1; intf <= interfaces; ++intf ) {
         for ( std::size_t i = 0; i < ranges; ++i ) {
            world.mgr->addVlanToIdx( Corvel::IntfId( intf ),
                                     Bridging::VlanId::fromRaw( static_cast< Vid >( 1 + 2 * i ) ),
                                     Mapping::fromRaw( 3001 ) );
         }
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
                  std::to_string( interfaces ) + " interfaces x " + std::to_string( ranges ) +
                     ( ranges == 1 ? " range" : " ranges" ),
                  { over( kSorts, 300 ) } };
   measureDrain< DrainAll >( row, kLibrary, interfaces, ranges );
   measureDrain< SortAll >( row, kSorts, interfaces, ranges );
}

}   // namespace

void
Bench::addRows() {
   addRoadRows( randomAdd() );
   addRoadRows( randomDelete() );
   addRoadRows( distinctAdd() );
   addRoadRows( roundRobinAdd( tinyRun() ? 8 : 1024 ) );
   addDrainRow( 1 );
   addDrainRow( 16 );
}
