// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "tests/support/PrivateMember.h"
#include "tests/support/TraceCapture.h"
#include "tests/support/VirtualSlot.h"
#include "tests/unit/MoxVlanMapping/ScaleSlaveSmTest.h"

namespace TestSupport {

struct SlaveSmManager {
   friend auto privateMember( SlaveSmManager );
};
template struct PrivateMember< SlaveSmManager,
                               &MoxVlanMapping::VlanMappingScaleSlaveSm::vlanRangeMgr_ >;

}   // namespace TestSupport

namespace {

using MoxVlanMapping::MoxVlanRangeMgr;
using MoxVlanMapping::VlanMappingScaleSlaveSm;
using MoxVlanMapping::VlanRangeEntryDir;
using MoxVlanMapping::VlanXlateScheduleDir;
using TestSupport::virtualSlot;

class ScaleSlaveSmLifeTest : public ScaleSlaveSmTest {};

TEST_F( ScaleSlaveSmLifeTest, FactoryAndCreatorMakeAnActiveStateMachineWithoutManager ) {
   const auto created = Sm::VlanMappingScaleSlaveSmIs(
      acsd_, clock_, bridgingConfig_, vlanXlateStatusDir_, rangeDir_, scheduleDir_ );
   for ( const auto& sm : { created, newSm() } ) {
      EXPECT_TRUE( sm->hasNotificationActive() );
      EXPECT_EQ( sm->notifieeList(), nullptr );
      EXPECT_TRUE( sm->acsd() == acsd_ );
      EXPECT_TRUE( sm->clock() == clock_ );
      EXPECT_TRUE( sm->bridgingConfig() == bridgingConfig_ );
      EXPECT_TRUE( sm->vlanXlateStatusDir() == vlanXlateStatusDir_ );
      EXPECT_TRUE( sm->vlanRangeEntryDir() == rangeDir_ );
      EXPECT_TRUE( sm->vlanXlateScheduleDir() == scheduleDir_ );
      EXPECT_TRUE( sm->vlanRangeMgr() == nullptr );
   }
}

TEST_F( ScaleSlaveSmLifeTest, AllocationIsTrackedByTypeName ) {
   const auto live = [] {
      return Zel::allocationCount( "MoxVlanMapping::VlanMappingScaleSlaveSm" ).live;
   };
   EXPECT_EQ( live(), 1 );
   {
      const auto another = newSm();
      EXPECT_EQ( live(), 2 );
   }
   EXPECT_EQ( live(), 1 );
}

TEST_F( ScaleSlaveSmLifeTest, InitialisationMakesAnActiveManagerOverTheDirectory ) {
   sm_->handleInitialized();
   ASSERT_TRUE( sm_->vlanRangeMgr() );
   EXPECT_TRUE( sm_->vlanRangeMgr()->vlanRangeEntryDir() == rangeDir_ );
   EXPECT_TRUE( sm_->vlanRangeMgr()->hasNotificationActive() );
   EXPECT_EQ( sm_->vlanRangeMgr()->zelReferences(), 1 );
}

TEST_F( ScaleSlaveSmLifeTest, InitialisedTwiceItKeepsItsManagerAndIndex ) {
   sm_->handleInitialized();
   ingressIs( config( 100, 'M' ) );
   const auto mgr = sm_->vlanRangeMgr();
   sm_->handleInitialized();
   EXPECT_TRUE( sm_->vlanRangeMgr() == mgr );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
}

TEST_F( ScaleSlaveSmLifeTest, AManagerOverTheSameDirectoryIsKept ) {
   const auto mgr = sm_->vlanRangeMgrIs( rangeDir_ );
   EXPECT_TRUE( sm_->vlanRangeMgrIs( rangeDir_ ) == mgr );
   EXPECT_TRUE( sm_->vlanRangeMgr() == mgr );
}

TEST_F( ScaleSlaveSmLifeTest, AManagerOverAnotherDirectoryReplacesIt ) {
   const auto first = sm_->vlanRangeMgrIs( rangeDir_ );
   const auto other = MoxVlanMapping::vlanRangeEntryDirFactory();
   const auto second = sm_->vlanRangeMgrIs( other );
   EXPECT_FALSE( second == first );
   EXPECT_TRUE( sm_->vlanRangeMgr() == second );
   EXPECT_TRUE( second->vlanRangeEntryDir() == other );
   EXPECT_EQ( first->zelReferences(), 1 );
   EXPECT_TRUE( sm_->vlanRangeEntryDir() == rangeDir_ );
}

TEST_F( ScaleSlaveSmLifeTest, AManagerMayStandOverNoDirectory ) {
   const auto mgr = sm_->vlanRangeMgrIs( nullptr );
   EXPECT_TRUE( mgr->vlanRangeEntryDir() == nullptr );
   EXPECT_TRUE( sm_->vlanRangeMgrIs( nullptr ) == mgr );
}

TEST_F( ScaleSlaveSmLifeTest, TakingTheManagerOutHandsItsReferenceOver ) {
   givenManager();
   MoxVlanRangeMgr* const raw = sm_->vlanRangeMgr().get();
   const auto mgr = sm_->vlanRangeMgrDel();
   EXPECT_EQ( mgr.get(), raw );
   EXPECT_EQ( mgr->zelReferences(), 1 );
   EXPECT_TRUE( sm_->vlanRangeMgr() == nullptr );
   EXPECT_TRUE( sm_->vlanRangeMgrDel() == nullptr );
}

// Delivery of the configuration, as far as it reaches the hooks here.

TEST_F( ScaleSlaveSmLifeTest, NothingIsDeliveredBeforeInitialisation ) {
   ingressIs( config( 100, 'M' ) );
   egressIs( config( 200, 'M' ) );
   EXPECT_EQ( index() + schedule() + status(), "" );
   sm_->handleInitialized();
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
   EXPECT_EQ( schedule(), "7" );
   EXPECT_EQ( status(), "7/200 M origin 0\n" );
}

TEST_F( ScaleSlaveSmLifeTest, AChangedMappingMovesItsVlanBetweenRanges ) {
   sm_->handleInitialized();
   for ( unsigned vlan = 10; vlan <= 20; ++vlan ) {
      ingressIs( config( vlan, 'M' ) );
   }
   ingressIs( config( 15, 'N' ) );
   EXPECT_EQ( index(), "7: 10-14 M, 15-15 N, 16-20 M / 16, 15, 10\n" );
   ingressIs( config( 15, 'M' ) );
   EXPECT_EQ( index(), "7: 10-20 M / 10\n" );
   acsd_->ingressConfigDir()->configDel( key( 20 ) );
   EXPECT_EQ( index(), "7: 10-19 M / 10\n" );
}

TEST_F( ScaleSlaveSmLifeTest, ADeletionThatStopsHalfWayIsBroughtToItsEnd ) {
   sm_->handleInitialized();
   ingressIs( config( 4094, 'M' ) );
   rangeDir_->vlanRangeEntry( kPort )->vlanIdRangeIs( TestSupport::rangeOf( 4094, 5000, 'M' ) );
   EXPECT_THROW( acsd_->ingressConfigDir()->configDel( key( 4094 ) ), Zel::Exception );
   EXPECT_EQ( index(), "7:  / \n" );
   sm_->handleInitialized();
   EXPECT_EQ( index(), "7:  / \n" );
}

TEST_F( ScaleSlaveSmLifeTest, AnUnchangedMappingDoesNotSchedule ) {
   sm_->handleInitialized();
   ingressIs( config( 10, 'M' ) );
   scheduleDir_->vlanXlateScheduleDelAll();
   ingressIs( config( 10, 'M' ) );
   EXPECT_EQ( schedule(), "" );
}

// Notification and zombie state.

TEST_F( ScaleSlaveSmLifeTest, InactiveItIsToldOfNothing ) {
   sm_->handleInitialized();
   sm_->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm_->hasNotificationActive() );
   ingressIs( config( 100, 'M' ) );
   EXPECT_EQ( index(), "" );
   sm_->hasNotificationActiveIs( true );
   ingressIs( config( 101, 'M' ) );
   EXPECT_EQ( index(), "7: 101-101 M / 101\n" );
}

TEST_F( ScaleSlaveSmLifeTest, AnUnchangedActiveFlagIsNotForwarded ) {
   sm_->handleInitialized();
   sm_->PtrInterface::hasNotificationActiveIs( false );   // the flag alone
   sm_->hasNotificationActiveIs( false );
   ingressIs( config( 100, 'M' ) );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
}

TEST_F( ScaleSlaveSmLifeTest, AZombieIsToldOfNothing ) {
   sm_->handleInitialized();
   sm_->zelDoZombieReactors( true );
   EXPECT_TRUE( sm_->zelMarkedForDeletion() );
   ingressIs( config( 100, 'M' ) );
   egressIs( config( 100, 'M' ) );
   EXPECT_EQ( index() + schedule() + status(), "" );
   sm_->zelDoZombieReactors( false );
   EXPECT_FALSE( sm_->zelMarkedForDeletion() );
   ingressIs( config( 101, 'M' ) );
   EXPECT_EQ( index(), "7: 101-101 M / 101\n" );
}

TEST_F( ScaleSlaveSmLifeTest, AnUnchangedZombieFlagIsNotForwarded ) {
   sm_->handleInitialized();
   sm_->zelMarkedForDeletionIs( true );   // the flag alone
   sm_->zelDoZombieReactors( true );
   ingressIs( config( 100, 'M' ) );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
}

// Collaborators that write down when they go, and what they see of the state machine then.

struct Departures {
   VlanMappingScaleSlaveSm* sm = nullptr;
   Mox::MoxCommonSmData* acsd = nullptr;
   std::vector< std::string > log;

   void gone( const std::string& who ) {
      log.push_back( who + ": zombie " + ( sm->zelMarkedForDeletion() ? "yes" : "no" ) +
                     ", manager " + ( sm->vlanRangeMgr() ? "set" : "null" ) + ", schedule " +
                     ( sm->vlanXlateScheduleDir() ? "set" : "null" ) + ", ranges " +
                     ( sm->vlanRangeEntryDir() ? "set" : "null" ) + ", base " +
                     ( sm->acsd().get() == acsd ? "whole" : "gone" ) );
   }
};

class TellingManager : public MoxVlanRangeMgr {
 protected:
   TellingManager( const Zel::Ptr< VlanRangeEntryDir >& dir, Departures& departures )
       : MoxVlanRangeMgr( dir ), departures_( departures ) {}
   ~TellingManager() override {
      departures_.gone( "manager" );
      // Were the state machine still told of this, it would need the manager.
      departures_.acsd->ingressConfigDir()->configIs(
         { Mox::PortVlanKey( Corvel::IntfId( 7 ), Bridging::VlanId( 100 ) ),
           TestSupport::mappingOf( 'M' ) } );
   }

 private:
   Departures& departures_;
};

class TellingScheduleDir : public VlanXlateScheduleDir {
 protected:
   explicit TellingScheduleDir( Departures& departures ) : departures_( departures ) {}
   ~TellingScheduleDir() override { departures_.gone( "schedule" ); }

 private:
   Departures& departures_;
};

class TellingRangeDir : public VlanRangeEntryDir {
 protected:
   explicit TellingRangeDir( Departures& departures ) : departures_( departures ) {}
   ~TellingRangeDir() override { departures_.gone( "ranges" ); }

 private:
   Departures& departures_;
};

TEST_F( ScaleSlaveSmLifeTest, DestructionStopsReactionsThenReleasesInReverseOrder ) {
   Departures departures;
   auto ranges = Zel::newEntity< TellingRangeDir >( departures );
   auto schedule = Zel::newEntity< TellingScheduleDir >( departures );
   auto sm = MoxVlanMapping::vlanMappingScaleSlaveSmFactory(
      acsd_, clock_, bridgingConfig_, vlanXlateStatusDir_, ranges, schedule );
   departures.sm = sm.get();
   departures.acsd = acsd_.get();
   sm->handleInitialized();
   ( *sm ).*privateMember( TestSupport::SlaveSmManager() ) =
      Zel::newEntity< TellingManager >( rangeDir_, departures );
   ranges = nullptr;
   schedule = nullptr;
   EXPECT_EQ( departures.log, std::vector< std::string >() );

   TestSupport::TraceCapture capture( "MoxVlanMappingScaleSm", "*" );
   sm = nullptr;
   EXPECT_EQ( departures.log,
              ( std::vector< std::string >{
                 "manager: zombie yes, manager null, schedule set, ranges set, base whole",
                 "schedule: zombie yes, manager null, schedule null, ranges set, base whole",
                 "ranges: zombie yes, manager null, schedule null, ranges null, base whole" } ) );
   EXPECT_EQ( capture.text(), "" );
}

// Its destructor leaves the zombie step to the base's, and writes configuration.
class CarelessSm : public VlanMappingScaleSlaveSm {
 public:
   static constexpr char zelTypeName[] = "CarelessSm";

 protected:
   using VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSm;
   ~CarelessSm() override {
      const Mox::MoxVlanMappingConfig config(
         Mox::PortVlanKey( Corvel::IntfId( 7 ), Bridging::VlanId( 100 ) ),
         TestSupport::mappingOf( 'M' ) );
      acsd()->ingressConfigDir()->configIs( config );
      acsd()->egressConfigDir()->configIs( config );
   }
};

TEST_F( ScaleSlaveSmLifeTest, NothingThatFiresInsideADerivedDestructorReachesIt ) {
   sm_ = nullptr;
   auto careless = Zel::newEntity< CarelessSm >( acsd_, clock_, bridgingConfig_,
                                                 vlanXlateStatusDir_, rangeDir_, scheduleDir_ );
   careless->handleInitialized();
   careless = nullptr;
   EXPECT_EQ( index() + schedule() + status(), "" );
}

TEST_F( ScaleSlaveSmLifeTest, AfterDestructionNobodyIsTold ) {
   sm_->handleInitialized();
   sm_ = nullptr;
   ingressIs( config( 100, 'M' ) );
   egressIs( config( 100, 'M' ) );
   EXPECT_EQ( index() + schedule() + status(), "" );
   EXPECT_EQ( acsd_->ingressConfigDir()->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( acsd_->egressConfigDir()->notifieeList()->notifiees(), 0u );
}

TEST_F( ScaleSlaveSmLifeTest, VirtualSlotsStandInTheirOrder ) {
   EXPECT_EQ( virtualSlot( &Zel::PtrInterface::notifieeList ), 0 );
   EXPECT_EQ( virtualSlot( &Sm::hasNotificationActiveIs ), 1 );
   EXPECT_EQ( virtualSlot( &Zel::PtrInterface::zeroReferencesIs ), 2 );
   EXPECT_EQ( virtualSlot( &Sm::fwkType ), 3 );
   // 4 and 5: the destructor
   EXPECT_EQ( virtualSlot( &Sm::zelDoZombieReactors ), 6 );
   EXPECT_EQ( virtualSlot( &Sm::handleInitialized ), 7 );
   EXPECT_EQ( virtualSlot( &Sm::doAddIngressVlanMapping ), 8 );
   EXPECT_EQ( virtualSlot( &Sm::doDelIngressVlanMapping ), 9 );
   EXPECT_EQ( virtualSlot( &Sm::doAddEgressVlanMapping ), 10 );
   EXPECT_EQ( virtualSlot( &Sm::doDelEgressVlanMapping ), 11 );
}

}   // namespace
