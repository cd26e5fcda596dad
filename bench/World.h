// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// World: everything between the VLAN configuration and the sorted ranges, as an agent wires it, and
// the forms in which it is put through workloads.
//
// Threads  One.
#pragma once

#include <cstdint>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "bench/Report.h"

namespace Bench {

/// Programs nothing.
class CountingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Bench::CountingCodef";
   void processSortedVlanRange( Corvel::IntfId ) override { ++handed; }
   std::uint64_t handed = 0;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~CountingCodef() override { zelDoZombieReactors( true ); }
};

struct World {
   Zel::Ptr< Mox::MoxCommonSmData > acsd = Mox::moxCommonSmDataFactory();
   Zel::Ptr< Zel::SteadyClock > clock = Zel::steadyClockFactory();
   Zel::Ptr< Quen::TaskScheduler > scheduler = Quen::taskSchedulerFactory( clock );
   Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > ranges =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > schedule =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   Zel::Ptr< CountingCodef > codef =
      Zel::newEntity< CountingCodef >( acsd, scheduler, ranges, schedule );
   Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr =
      MoxVlanMapping::moxVlanRangeMgrFactory( ranges );
   /// Not initialised yet: it delivers nothing.
   Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > stateMachine =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd, clock, nullptr, nullptr, ranges,
                                                      schedule );
};

/// Operations are writes into the configuration, of which nothing is delivered.
struct WrittenWorld : World {
   void add( Corvel::IntfId intf, Bridging::VlanId vid, Bridging::VlanXlateMapping mapping ) {
      acsd->ingressConfigDir()->configIs( Mox::MoxVlanMappingConfig( { intf, vid }, mapping ) );
   }
   void del( Corvel::IntfId intf, Bridging::VlanId vid ) {
      acsd->ingressConfigDir()->configDel( { intf, vid } );
   }
};

/// A mapping has reached the index when its write returns, and its interface is marked in the
/// schedule.
struct ConfiguredWorld : WrittenWorld {
   ConfiguredWorld() { stateMachine->handleInitialized(); }
};

/// Operations are calls of the range manager; interfaces are sorted and walked.
struct SortedWorld : World {
   static constexpr const char* kName = kLibrary;

   void add( Corvel::IntfId intf, Bridging::VlanId vid, Bridging::VlanXlateMapping mapping ) {
      mgr->addVlanToIdx( intf, vid, mapping );
   }
   void del( Corvel::IntfId intf, Bridging::VlanId vid ) { mgr->deleteVlanFromIdx( intf, vid ); }
   void sort( Corvel::IntfId intf ) { codef->sortVlanRangeBySize( intf ); }
   void forget( Corvel::IntfId intf ) {
      codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDel( intf );
   }
   /// As a programmer of hardware does, from the largest range to the smallest.
   template < class Visit >
   void walk( Corvel::IntfId intf, const Visit& visit ) {
      const auto entry = codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intf );
      for ( auto at = entry->vidRangeSorted().first(); at; ++at ) {
         visit( at->key() );
      }
   }
};

}   // namespace Bench
