// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// FaultWorld: everything from configuration to data plane, with a reactor or hook that can throw
// at every point, and what it holds as text.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/GenericIf.h"
#include "Zel/NewEntity.h"
#include "tests/fault/Sweep.h"
#include "tests/support/RangeText.h"

namespace Fault {

class Listener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr const char* zelTypeName = "Fault::Listener";
   void onAttribute( Zel::AttributeId, const void* ) override { points_( point_ ); }

 protected:
   Listener( const Zel::Ptr< Zel::PtrInterface >& notifier, Points& points, const char* point )
       : points_( points ), point_( point ) {
      zelNotifierIs( notifier );
      points_( "watcher constructed" );
   }

 private:
   Points& points_;
   const char* const point_;
};

class PointClock : public Zel::Clock {
 public:
   static constexpr const char* zelTypeName = "Fault::PointClock";
   Zel::Seconds now() const override {
      points_( "clock" );
      return 0;
   }

 protected:
   explicit PointClock( Points& points ) : points_( points ) {}

 private:
   Points& points_;
};

class Codef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr const char* zelTypeName = "Fault::Codef";
   void processSortedVlanRange( Corvel::IntfId ) override {
      points_( "process" );
      ++processed;
   }
   void vlanXlateCodefComplete() override { points_( "complete" ); }
   void hasNotificationActiveIs( bool active ) override {
      MoxVlanRangeMappingCodef::hasNotificationActiveIs( active );
      points_( "codef active" );
   }

   std::uint64_t processed = 0;

 protected:
   template < class... Args >
   explicit Codef( Points& points, const Args&... args )
       : MoxVlanRangeMappingCodef( args... ), points_( points ) {
      points_( "codef constructed" );
   }
   ~Codef() override { zelDoZombieReactors( true ); }

 private:
   Points& points_;
};

/// The library's state machine, with a point in front of each hook and one behind it.
class Sm : public MoxVlanMapping::VlanMappingScaleSlaveSm {
 public:
   static constexpr const char* zelTypeName = "Fault::Sm";
   void hasNotificationActiveIs( bool active ) override {
      VlanMappingScaleSlaveSm::hasNotificationActiveIs( active );
      points_( "sm active" );
   }
   void handleInitialized() override {
      points_( "initialized" );
      VlanMappingScaleSlaveSm::handleInitialized();
   }
   void doAddIngressVlanMapping( const Mox::PortVlanKey& key ) override {
      points_( "before add" );
      VlanMappingScaleSlaveSm::doAddIngressVlanMapping( key );
      points_( "behind add" );
   }
   void doDelIngressVlanMapping( const Mox::PortVlanKey& key ) override {
      points_( "before del" );
      VlanMappingScaleSlaveSm::doDelIngressVlanMapping( key );
      points_( "behind del" );
   }
   void doAddEgressVlanMapping( const Mox::PortVlanKey& key ) override {
      points_( "before egress add" );
      VlanMappingScaleSlaveSm::doAddEgressVlanMapping( key );
      points_( "behind egress add" );
   }
   void doDelEgressVlanMapping( const Mox::PortVlanKey& key ) override {
      points_( "before egress del" );
      VlanMappingScaleSlaveSm::doDelEgressVlanMapping( key );
      points_( "behind egress del" );
   }

 protected:
   template < class... Args >
   explicit Sm( Points& points, const Args&... args )
       : VlanMappingScaleSlaveSm( args... ), points_( points ) {
      points_( "sm constructed" );
   }
   ~Sm() override { zelDoZombieReactors( true ); }

 private:
   Points& points_;
};

class World {
 public:
   static constexpr std::uint64_t kPorts = 9;

   static Corvel::IntfId port( std::uint64_t number ) { return Corvel::IntfId( number ); }
   static Mox::PortVlanKey key( unsigned vlan, std::uint16_t inner = 0 ) {
      return { port( 7 ), Bridging::VlanId( vlan ), inner };
   }
   static Mox::MoxVlanMappingConfig config( unsigned vlan, char letter, std::uint16_t inner = 0 ) {
      return { key( vlan, inner ), TestSupport::mappingOf( letter ) };
   }

   Zel::Ptr< Codef > newCodef() {
      return Zel::newEntity< Codef >( points, acsd, scheduler, ranges, schedule );
   }
   Zel::Ptr< Sm > newSm() {
      return Zel::newEntity< Sm >( points, acsd, Zel::Ptr< const Zel::Clock >( clock ),
                                   Zel::Ptr< const Bridging::Config >(),
                                   Zel::Ptr< Bridging::VlanXlateStatusDir >(), ranges, schedule );
   }
   Zel::Ptr< Listener > listener( const Zel::Ptr< Zel::PtrInterface >& notifier,
                                  const char* point ) {
      return Zel::newEntity< Listener >( notifier, points, point );
   }

   void given( const std::string& text, std::uint64_t number = 7 ) {
      TestSupport::store( *ranges->vlanRangeEntryIs( port( number ) ), text );
   }
   void add( unsigned vlan, char letter = 'M' ) {
      mgr->addVlanToIdx( port( 7 ), Bridging::VlanId( vlan ), TestSupport::mappingOf( letter ) );
   }
   void del( unsigned vlan ) { mgr->deleteVlanFromIdx( port( 7 ), Bridging::VlanId( vlan ) ); }
   /// Ranges with a gap between, so many that one more or less changes the form of their store.
   void givenMany( unsigned many ) {
      for ( unsigned i = 0; i < many; ++i ) {
         add( 2 + 2 * i );
      }
   }
   void ingressIs( const Mox::MoxVlanMappingConfig& record ) {
      acsd->ingressConfigDir()->configIs( record );
   }
   void egressIs( const Mox::MoxVlanMappingConfig& record ) {
      acsd->egressConfigDir()->configIs( record );
   }
   /// Runs until idle, whatever a run throws.
   void drain() {
      while ( scheduler->workWaiting() ) {
         scheduler->runOnce();
      }
   }

   /// What must be as before or as after, each part by itself. An interface without ranges is the
   /// same with and without an entry, for a look-up makes one.
   Parts parts() const {
      Parts all;
      for ( std::uint64_t number = 1; number <= kPorts; ++number ) {
         const std::string name = std::to_string( number );
         const auto entry = ranges->vlanRangeEntry( port( number ) );
         const auto scale = codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( port( number ) );
         all[ "index of " + name ] =
            ( entry ? TestSupport::rangesText( *entry ) + " / " + TestSupport::startsText( *entry )
                    : " / " ) +
            ( schedule->vlanXlateSchedule().contains( port( number ) ) ? kMarked : "" );
         all[ "sorted of " + name ] = scale ? TestSupport::sortedText( *scale ) : "";
         all[ "hash of " + name ] =
            scale ? TestSupport::interfacesText( scale->vlanInXlateHashTable() ) : "";
         all[ "lag of " + name ] = acsd->portToLag().contains( port( number ) ) ? "member" : "";
      }
      const auto other = otherRanges->vlanRangeEntry( port( 7 ) );
      all[ "other index of 7" ] = other ? TestSupport::rangesText( *other ) : "";
      all[ "ingress" ] = records( acsd->ingressConfigDir()->config() );
      all[ "egress" ] = records( acsd->egressConfigDir()->config() );
      all[ "status" ] = records( acsd->statusDir()->status() );
      // A mark that nobody was asked to look at would be lost.
      all[ "asleep" ] = !schedule->vlanXlateSchedule().empty() && !codef->task()->scheduled()
                         ? "marks without a task"
                         : "";
      return all;
   }
   void verify() const {
      if ( codef->task() == firstTask ) {
         EXPECT_EQ( firstTask->taskWorkCount(), codef->processed );
      }
      ranges->vlanRangeEntry().verify();
      for ( const auto& node : ranges->vlanRangeEntry() ) {
         node.entity()->vlanIdRange().verify();
         node.entity()->revSortedStartVid().verify();
      }
      codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry().verify();
      for ( const auto& node : codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry() ) {
         node.entity()->vidRangeSorted().verify();
         node.entity()->vlanInXlateHashTable().verify();
      }
      schedule->vlanXlateSchedule().verify();
      acsd->ingressConfigDir()->config().verify();
      acsd->egressConfigDir()->config().verify();
      acsd->statusDir()->status().verify();
      acsd->portToLag().verify();
   }

   Points points;
   const Zel::Ptr< PointClock > clock = Zel::newEntity< PointClock >( points );
   const Zel::Ptr< Quen::TaskScheduler > scheduler =
      Quen::taskSchedulerFactory( Zel::Ptr< const Zel::Clock >( clock ) );
   const Zel::Ptr< Mox::MoxCommonSmData > acsd = Mox::moxCommonSmDataFactory();
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > ranges =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   /// For a manager that replaces the first.
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > otherRanges =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > schedule =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr =
      MoxVlanMapping::moxVlanRangeMgrFactory( ranges );
   /// In front of the library's own reactors, which must hear of a change all the same.
   const std::vector< Zel::Ptr< Listener > > listeners{
      listener( scheduler, "work" ),
      listener( acsd, "lag" ),
      listener( schedule, "mark" ),
      listener( acsd->ingressConfigDir(), "ingress" ),
      listener( acsd->egressConfigDir(), "egress" ),
      listener( acsd->statusDir(), "status" ),
   };
   Zel::Ptr< Sm > sm = newSm();
   Zel::Ptr< Codef > codef = newCodef();
   const Zel::Ptr< Quen::Task > firstTask = codef->task();
   const Zel::Ptr< Listener > taskListener = listener( firstTask, "run" );
   /// What an operation makes.
   Zel::Ptr< Zel::PtrInterface > made;
   Zel::Ptr< Zel::PtrInterface::NotifieeConst > madeListener;
   std::vector< Zel::Value > values;

 private:
   template < class Records >
   static std::string records( const Records& all ) {
      return TestSupport::joined( all, []( const auto& node ) {
         return std::to_string( node.key().vlanId().value() ) + "." +
                std::to_string( node.key().innerVlanId() ) + " " +
                TestSupport::mappingText( node.value().mapping() );
      } );
   }
};

// States to start from, and ways to bring the work to its end.

inline void
nothing( World& ) {}

inline void
idle( World& w ) {
   w.drain();
}

inline void
again( World& w ) {
   w.sm->handleInitialized();
}

inline void
configured( World& w ) {
   w.sm->handleInitialized();
   w.ingressIs( w.config( 10, 'M' ) );
   w.ingressIs( w.config( 11, 'M' ) );
   w.ingressIs( w.config( 12, 'M' ) );
   w.egressIs( w.config( 20, 'M' ) );
   w.drain();
}

inline void
backlog( World& w ) {
   w.drain();
   for ( std::uint64_t port = 1; port <= 3; ++port ) {
      w.given( "10-12 M, 20-29 M, 40-40 N", port );
      w.schedule->vlanXlateScheduleIs( w.port( port ) );
   }
}

inline void
sortedBefore( World& w ) {
   backlog( w );
   w.drain();
   w.given( "50-70 M, 80-81 M, 90-90 N", 1 );
   w.schedule->vlanXlateScheduleIs( w.port( 1 ) );
}

}   // namespace Fault
