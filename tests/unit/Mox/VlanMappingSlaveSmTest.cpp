// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Mox/VlanMappingSlaveSm.h"

#include <cstdint>
#include <functional>
#include <ostream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Bridging/Config.h"
#include "Zel/Clock.h"
#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/Mox/RecordingSm.h"

namespace {

using Mox::MoxVlanMappingConfig;
using Mox::PortVlanKey;
using TestMox::key;
using TestMox::RecordingSm;

class VlanMappingSlaveSmTest : public TestSupport::NoneLeftTest {
 protected:
   void ingress( const PortVlanKey& at, std::uint16_t vlan ) {
      acsd_->ingressConfigDir()->configIs( { at, Bridging::VlanXlateMapping::fromRaw( vlan ) } );
   }
   void egress( const PortVlanKey& at, std::uint16_t vlan ) {
      acsd_->egressConfigDir()->configIs( { at, Bridging::VlanXlateMapping::fromRaw( vlan ) } );
   }
   void ingressDel( const PortVlanKey& at ) { acsd_->ingressConfigDir()->configDel( at ); }
   void egressDel( const PortVlanKey& at ) { acsd_->egressConfigDir()->configDel( at ); }
   // Does `action` after the hook that logs `hook`, the first time.
   template < class Action >
   void once( const std::string& hook, Action action ) {
      record_.after = [ this, hook, action ]( const std::string& what ) {
         if ( what == hook ) {
            record_.after = {};
            action();
         }
      };
   }
   void initialize() {
      sm_->handleInitialized();
      record_.take();
   }

   TestMox::Record record_;
   Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   Zel::Ptr< RecordingSm > sm_ = Zel::newEntity< RecordingSm >( acsd_, record_ );
};
using VlanMappingSlaveSmDeathTest = VlanMappingSlaveSmTest;

// Takes every argument of the base.
class Complete : public Mox::VlanMappingSlaveSm {
 public:
   static constexpr char zelTypeName[] = "VlanMappingSlaveSmTest::Complete";
   Complete( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
             const Zel::Ptr< const Zel::Clock >& clock,
             const Zel::Ptr< const Bridging::Config >& config,
             const Zel::Ptr< Bridging::VlanXlateStatusDir >& status )
       : VlanMappingSlaveSm( acsd, clock, config, status ) {}
   void doAddIngressVlanMapping( const PortVlanKey& ) override {}
   void doDelIngressVlanMapping( const PortVlanKey& ) override {}
   void doAddEgressVlanMapping( const PortVlanKey& ) override {}
   void doDelEgressVlanMapping( const PortVlanKey& ) override {}
};

TEST_F( VlanMappingSlaveSmTest, KeepsWhatItWasMadeWith ) {
   const Zel::Ptr< Zel::Clock > clock = Zel::manualClockFactory();
   const auto config = Bridging::configFactory();
   const auto status = Bridging::vlanXlateStatusDirFactory();
   const auto sm = Zel::newEntity< Complete >( acsd_, clock, config, status );
   EXPECT_EQ( sm->acsd(), acsd_ );
   EXPECT_EQ( sm->clock(), clock );
   EXPECT_EQ( sm->bridgingConfig(), config );
   EXPECT_EQ( sm->vlanXlateStatusDir(), status );
   EXPECT_EQ( sm->ingressConfigDir(), acsd_->ingressConfigDir() );
   EXPECT_EQ( sm->egressConfigDir(), acsd_->egressConfigDir() );
   EXPECT_EQ( sm->statusDir(), acsd_->statusDir() );
}

TEST_F( VlanMappingSlaveSmTest, DeliversNothingBeforeItIsInitialized ) {
   ingress( key( 1, 100 ), 3001 );
   egress( key( 1, 200 ), 3002 );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, ReplaysWhatIsConfiguredWhenItIsInitialized ) {
   egress( key( 1, 200 ), 3002 );
   ingress( key( 1, 101 ), 3001 );
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 2, 100 ), 3003 );
   ingressDel( key( 1, 101 ) );
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "+1/100=3001 +2/100=3003 e+1/200=3002" );
}

TEST_F( VlanMappingSlaveSmTest, BeingInitializedAgainDeliversNothingTwice ) {
   ingress( key( 1, 100 ), 3001 );
   egress( key( 1, 200 ), 3002 );
   initialize();
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, AnAddedIngressMappingIsDeliveredOnce ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AChangedIngressMappingIsDeletedAndThenAdded ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   record_.take();
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3002" );
}

TEST_F( VlanMappingSlaveSmTest, AFlagThatChangesIsAChangedMapping ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   record_.take();
   acsd_->ingressConfigDir()->configIs(
      { key( 1, 100 ), Bridging::VlanXlateMapping::fromRaw( 3001 ), true } );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3001" );
}

TEST_F( VlanMappingSlaveSmTest, ARemovedIngressMappingIsDeletedOnce ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   record_.take();
   ingressDel( key( 1, 100 ) );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
}

TEST_F( VlanMappingSlaveSmTest, AnEgressMappingIsAddedChangedAndDeletedWithoutADeleteBetween ) {
   initialize();
   egress( key( 1, 200 ), 3001 );
   egress( key( 1, 200 ), 3001 );
   egress( key( 1, 200 ), 3002 );
   egressDel( key( 1, 200 ) );
   egressDel( key( 1, 200 ) );
   EXPECT_EQ( record_.take(), "e+1/200=3001 e+1/200=3002 e-1/200" );
}

TEST_F( VlanMappingSlaveSmTest, EgressKeysThatDifferInTheInnerVlanAreDeliveredEach ) {
   initialize();
   egress( key( 1, 200, 5 ), 3001 );
   egress( key( 1, 200, 6 ), 3002 );
   egressDel( key( 1, 200, 5 ) );
   EXPECT_EQ( record_.take(), "e+1/200.5=3001 e+1/200.6=3002 e-1/200.5" );
}

TEST_F( VlanMappingSlaveSmTest, OtherAttributesOfTheDirectoriesAreNoConfiguration ) {
   initialize();
   const PortVlanKey at = key( 1, 100 );
   acsd_->ingressConfigDir()->notifieeList()->notify( 131, &at );
   acsd_->egressConfigDir()->notifieeList()->notify( 131, &at );
   EXPECT_EQ( record_.take(), "" );
}

// What is refused, and what it leaves.

struct Refused {
   const char* name;
   std::uint16_t vlan;
   std::uint16_t translated;
   const char* text;

   friend void PrintTo( const Refused& row, std::ostream* out ) { *out << row.name; }
};

class RefusedRecordTest :
    public VlanMappingSlaveSmTest,
    public testing::WithParamInterface< Refused > {};

TEST_P( RefusedRecordTest, ReachesTheWriterBeforeAnyHook ) {
   initialize();
   const PortVlanKey at = key( 1, GetParam().vlan );
   const auto refusal = [ & ]( const auto& write ) -> std::string {
      try {
         write();
      } catch ( const Zel::RangeException& error ) {
         return error.what();
      }
      return "";
   };
   EXPECT_EQ( refusal( [ & ] { ingress( at, GetParam().translated ); } ), GetParam().text );
   EXPECT_EQ( refusal( [ & ] { egress( at, GetParam().translated ); } ), GetParam().text );
   EXPECT_EQ( record_.take(), "" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

INSTANTIATE_TEST_SUITE_P(
   All, RefusedRecordTest,
   testing::Values(
      Refused{ "VlanZero", 0, 3001, "Bridging::VlanId::value < 1 or > 4094 not allowed" },
      Refused{ "VlanAboveTheHighest", 4095, 3001,
               "Bridging::VlanId::value < 1 or > 4094 not allowed" },
      Refused{ "TranslatedVlanAboveTheHighest", 100, 4095,
               "Bridging::VlanIdOrNone::value > 4094 not allowed" },
      Refused{ "NoTranslatedVlan", 100, 0,
               "Mox::MoxVlanMappingConfig::mapping without translated VLAN not allowed; allowed: 1 "
               "to 4094" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

TEST_F( VlanMappingSlaveSmTest, TheLowestAndTheHighestIdsAreDelivered ) {
   initialize();
   ingress( key( 1, 1 ), 4094 );
   ingress( key( 1, 4094 ), 1 );
   EXPECT_EQ( record_.take(), "+1/1=4094 +1/4094=1" );
}

TEST_F( VlanMappingSlaveSmTest, ARefusedAdditionKeepsItsRecordAndIsNotDelivered ) {
   initialize();
   EXPECT_THROW( ingress( key( 1, 100 ), 4095 ), Zel::RangeException );
   EXPECT_TRUE( acsd_->ingressConfigDir()->config().contains( key( 1, 100 ) ) );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, AChangeOfARefusedMappingDeliversOnlyTheAddition ) {
   initialize();
   EXPECT_THROW( ingress( key( 1, 100 ), 4095 ), Zel::RangeException );
   record_.take();
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AChangeThatIsRefusedLeavesTheEarlierMappingInForce ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   EXPECT_THROW( ingress( key( 1, 100 ), 4095 ), Zel::RangeException );
   EXPECT_EQ( record_.take(), "+1/100=3001" );
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3002" );
   EXPECT_THROW( ingress( key( 1, 100 ), 4095 ), Zel::RangeException );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayGoesOnBehindARefusedRecordAndThrowsTheFirstRefusal ) {
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 1, 101 ), 4095 );
   ingress( key( 1, 102 ), 3001 );
   egress( key( 1, 200 ), 3002 );
   EXPECT_THROW( sm_->handleInitialized(), Zel::RangeException );
   EXPECT_EQ( record_.take(), "+1/100=3001 +1/102=3001 e+1/200=3002" );
   ingress( key( 1, 101 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/101=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayThrowsTheFirstOfSeveralExceptions ) {
   for ( const std::uint16_t vlan : { std::uint16_t{ 100 }, std::uint16_t{ 101 } } ) {
      ingress( key( 1, vlan ), 3001 );
   }
   record_.after = []( const std::string& what ) { throw std::runtime_error( what ); };
   try {
      sm_->handleInitialized();
      FAIL() << "nothing was thrown";
   } catch ( const std::runtime_error& error ) {
      EXPECT_STREQ( error.what(), "+1/100=3001" );
   }
   EXPECT_EQ( record_.take(), "+1/100=3001 +1/101=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AnExceptionOfAnotherKindFromAnAdditionCountsAsDelivered ) {
   initialize();
   once( "+1/100=3001", [] { throw std::runtime_error( "later" ); } );
   EXPECT_THROW( ingress( key( 1, 100 ), 3001 ), std::runtime_error );
   record_.take();
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
}

TEST_F( VlanMappingSlaveSmTest, AnExceptionFromADeletionLeavesTheMappingDelivered ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] {
      record_.index[ { 1, 100 } ] = 3001;   // the hook failed before it deleted
      throw std::runtime_error( "no" );
   } );
   EXPECT_THROW( ingress( key( 1, 100 ), 3002 ), std::runtime_error );
   record_.take();
   ingress( key( 1, 100 ), 3003 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3003" );
}

TEST_F( VlanMappingSlaveSmTest, ARecordThatComesBackAfterItsFailedDeletionIsDeliveredAgain ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] {
      record_.index[ { 1, 100 } ] = 3001;   // the hook failed before it deleted
      throw std::runtime_error( "no" );
   } );
   EXPECT_THROW( ingressDel( key( 1, 100 ) ), std::runtime_error );
   record_.take();
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayDeliversAFailedAdditionOnceMore ) {
   initialize();
   once( "+1/100=3001", [] { throw std::runtime_error( "later" ); } );
   EXPECT_THROW( ingress( key( 1, 100 ), 3001 ), std::runtime_error );
   record_.take();
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3001" );
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, TheNextWriteDeliversAFailedAdditionOnceMore ) {
   initialize();
   once( "+1/100=3001", [] { throw std::runtime_error( "later" ); } );
   EXPECT_THROW( ingress( key( 1, 100 ), 3001 ), std::runtime_error );
   record_.take();
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3002" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayDeliversAFailedDeletionOnceMore ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] {
      record_.index[ { 1, 100 } ] = 3001;   // the hook failed before it deleted
      throw std::runtime_error( "no" );
   } );
   EXPECT_THROW( ingressDel( key( 1, 100 ) ), std::runtime_error );
   record_.take();
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "-1/100" );
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, ARangeExceptionOfAHookIsOneLikeAnyOther ) {
   initialize();
   once( "+1/100=3001", [] { throw Zel::RangeException( "later" ); } );
   EXPECT_THROW( ingress( key( 1, 100 ), 3001 ), Zel::RangeException );
   once( "-1/100", [] { throw Zel::RangeException( "later still" ); } );
   EXPECT_THROW( ingressDel( key( 1, 100 ) ), Zel::RangeException );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayDeliversFailedEgressHooksOnceMore ) {
   initialize();
   once( "e+1/200=3001", [] { throw std::runtime_error( "later" ); } );
   EXPECT_THROW( egress( key( 1, 200 ), 3001 ), std::runtime_error );
   record_.take();
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "e+1/200=3001" );
   once( "e-1/200", [ & ] {
      record_.egress[ "1/200" ] = 3001;   // the hook failed before it deleted
      throw std::runtime_error( "no" );
   } );
   EXPECT_THROW( egressDel( key( 1, 200 ) ), std::runtime_error );
   record_.take();
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "e-1/200" );
   EXPECT_EQ( record_.shownEgress(), "" );
}

TEST_F( VlanMappingSlaveSmTest, ARefusedEgressAdditionCountsAsNotDelivered ) {
   initialize();
   EXPECT_THROW( egress( key( 1, 200 ), 4095 ), Zel::RangeException );
   egressDel( key( 1, 200 ) );
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, ARefusedEgressChangeLeavesTheEarlierOneDelivered ) {
   initialize();
   egress( key( 1, 200 ), 3001 );
   EXPECT_THROW( egress( key( 1, 200 ), 4095 ), Zel::RangeException );
   record_.take();
   egressDel( key( 1, 200 ) );
   EXPECT_EQ( record_.take(), "e-1/200" );
}

// What a hook that failed has done is asked of the index.

class IndexedSlaveSmTest : public VlanMappingSlaveSmTest {
 protected:
   IndexedSlaveSmTest() { sm_ = Zel::newEntity< TestMox::IndexedSm >( acsd_, record_ ); }

   static void fails( std::function< void( const std::string& ) >& at, const std::string& hook ) {
      at = [ hook ]( const std::string& what ) {
         if ( what == hook ) {
            throw std::runtime_error( hook );
         }
      };
   }
   void failsBefore( const std::string& hook ) { fails( record_.before, hook ); }
   void failsAfter( const std::string& hook ) { fails( record_.after, hook ); }
   void failsNoMore() {
      record_.before = {};
      record_.after = {};
   }
   // The first exception of a write; none: "".
   template < class Write >
   static std::string thrown( const Write& write ) {
      try {
         write();
      } catch ( const std::runtime_error& error ) {
         return error.what();
      }
      return "";
   }
   std::string ingressThrown( const PortVlanKey& at, std::uint16_t vlan ) {
      return thrown( [ & ] { ingress( at, vlan ); } );
   }
   void givenOne() {
      initialize();
      ingress( key( 1, 100 ), 3001 );
      record_.take();
   }
};

TEST_F( IndexedSlaveSmTest, AChangeReservesBeforeItDeletes ) {
   givenOne();
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 +1/100=3002" );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
}

TEST_F( IndexedSlaveSmTest, AChangeThatCannotReserveChangesNothing ) {
   givenOne();
   failsBefore( "r1/100" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3002 ), "r1/100" );
   EXPECT_EQ( record_.take(), "" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 +1/100=3002" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, AChangeCarriesOnBehindADeletionThatThrowsWhenItIsDone ) {
   givenOne();
   failsAfter( "-1/100" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3002 ), "-1/100" );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 +1/100=3002" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, AChangeWhoseDeletionIsNotDoneLeavesTheEarlierMapping ) {
   givenOne();
   failsBefore( "-1/100" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3002 ), "-1/100" );
   EXPECT_EQ( record_.shownIndex(), "1/100=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
}

TEST_F( IndexedSlaveSmTest, AChangeWhoseAdditionIsNotDoneIsPutBack ) {
   givenOne();
   failsBefore( "+1/100=3002" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3002 ), "+1/100=3002" );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 <1/100=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 +1/100=3002" );
}

TEST_F( IndexedSlaveSmTest, AnAdditionThatThrowsWhenItIsDoneIsDelivered ) {
   initialize();
   failsAfter( "+1/100=3001" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3001 ), "+1/100=3001" );
   failsNoMore();
   EXPECT_EQ( sm_->undelivered(), 0u );
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "+1/100=3001" );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
}

TEST_F( IndexedSlaveSmTest, AnEqualWriteTriesAFailedAdditionAgain ) {
   initialize();
   failsBefore( "+1/100=3001" );
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3001 ), "+1/100=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, ARepeatedRemovalTriesAFailedDeletionAgain ) {
   givenOne();
   failsBefore( "-1/100" );
   EXPECT_EQ( thrown( [ & ] { ingressDel( key( 1, 100 ) ); } ), "-1/100" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "-1/100" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, AKeyThatCannotTakeOverLeavesTheEarlierInForceAndTakesOverLater ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   record_.take();
   failsBefore( "+1/100.6=3002" );
   EXPECT_EQ( thrown( [ & ] { ingressDel( key( 1, 100, 5 ) ); } ), "+1/100.6=3002" );
   EXPECT_EQ( record_.take(), "r1/100.5 -1/100.5 <1/100.5=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100.5 -1/100.5 +1/100.6=3002" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, AChangeMadeInsideAFailingDeletionIsTheOneThatIsAdded ) {
   givenOne();
   record_.after = [ & ]( const std::string& what ) {
      if ( what == "-1/100" ) {
         record_.after = {};
         ingress( key( 1, 100 ), 3003 );
         throw std::runtime_error( what );
      }
   };
   EXPECT_EQ( ingressThrown( key( 1, 100 ), 3002 ), "-1/100" );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 +1/100=3003" );
}

TEST_F( IndexedSlaveSmTest, ARemovalInsideTheDeletionOfAChangeLeavesNothing ) {
   givenOne();
   once( "-1/100", [ & ] { ingressDel( key( 1, 100 ) ); } );
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100 -1/100" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, WhatFailsInsideAReplayIsCountedAndTheOthersAreDelivered ) {
   for ( std::uint16_t vlan = 100; vlan < 103; ++vlan ) {
      ingress( key( 1, vlan ), 3001 );
   }
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( sm_->undelivered(), 4u );
   failsBefore( "+1/101=3001" );
   EXPECT_EQ( thrown( [ & ] { sm_->handleInitialized(); } ), "+1/101=3001" );
   EXPECT_EQ( record_.take(), "+1/100=3001 +1/102=3001 e+1/200=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
}

TEST_F( IndexedSlaveSmTest, AFailedEgressHookIsCounted ) {
   initialize();
   failsBefore( "e+1/200=3001" );
   EXPECT_EQ( thrown( [ & ] { egress( key( 1, 200 ), 3001 ); } ), "e+1/200=3001" );
   EXPECT_EQ( sm_->undelivered(), 1u );
   failsNoMore();
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( sm_->undelivered(), 0u );
   failsBefore( "e-1/200" );
   EXPECT_EQ( thrown( [ & ] { egressDel( key( 1, 200 ) ); } ), "e-1/200" );
   EXPECT_EQ( sm_->undelivered(), 1u );
}

TEST_F( IndexedSlaveSmTest, ARecordThatComesBackAfterItsFailedDeletionIsDeliveredAgain ) {
   initialize();
   egress( key( 1, 200 ), 3001 );
   failsAfter( "e-1/200" );
   EXPECT_EQ( thrown( [ & ] { egressDel( key( 1, 200 ) ); } ), "e-1/200" );
   failsNoMore();
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( record_.shownEgress(), "1/200=3001" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, AKeyWhoseAdditionFailedHasItsSlotBeforeALaterOne ) {
   initialize();
   failsBefore( "+1/100.5=3001" );
   EXPECT_EQ( ingressThrown( key( 1, 100, 5 ), 3001 ), "+1/100.5=3001" );
   failsNoMore();
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_EQ( record_.take(), "+1/100.5=3001" );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "r1/100.5 -1/100.5 +1/100.6=3002" );
}

TEST_F( IndexedSlaveSmTest, ARefusedRecordLeavesItsSlotToTheKeyThatWaits ) {
   initialize();
   failsBefore( "+1/100.5=3001" );
   EXPECT_EQ( ingressThrown( key( 1, 100, 5 ), 3001 ), "+1/100.5=3001" );
   EXPECT_EQ( ingressThrown( key( 1, 100, 6 ), 3002 ), "+1/100.5=3001" );
   failsNoMore();
   EXPECT_THROW( ingress( key( 1, 100, 5 ), 4095 ), Zel::RangeException );
   EXPECT_EQ( record_.take(), "+1/100.6=3002" );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, APlainDeletionInsideAChangeReleasesNothingOfIt ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 1, 101 ), 3001 );
   record_.take();
   once( "-1/100", [ & ] { ingressDel( key( 1, 101 ) ); } );
   record_.before = [ & ]( const std::string& what ) {
      if ( what == "+1/100=3002" ) {
         record_.log += " reserved " + std::to_string( record_.reserved );
      }
   };
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "r1/100 -1/100 -1/101 reserved 1 +1/100=3002" );
}

TEST_F( IndexedSlaveSmTest, AKeyThatWaitsForItsSlotIsNotUndelivered ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_EQ( sm_->undelivered(), 0u );
}

TEST_F( IndexedSlaveSmTest, UndeliveredIsAnAttribute ) {
   ingress( key( 1, 100 ), 3001 );
   const Zel::Value object( {}, Zel::Ptr< Zel::PtrInterface >( sm_ ) );
   EXPECT_EQ( Zel::zelStrep( Zel::zelAttribute( object, "undelivered", Zel::OpCode::Get ) ).str(),
              "1" );
}

// The index knows port and VLAN alone: of keys that differ in the inner VLAN one is in force.

TEST_F( VlanMappingSlaveSmTest, TheSecondKeyOfAPlaceWaits ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_EQ( record_.take(), "+1/100.5=3001" );
}

TEST_F( VlanMappingSlaveSmTest, AWaitingKeyTakesThePlaceThatComesFree ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   record_.take();
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "-1/100.5 +1/100.6=3002" );
}

TEST_F( VlanMappingSlaveSmTest, WaitingKeysTakeThePlaceOneAfterTheOther ) {
   initialize();
   for ( const std::uint16_t inner :
         { std::uint16_t{ 9 }, std::uint16_t{ 0 }, std::uint16_t{ 6 }, std::uint16_t{ 5 } } ) {
      ingress( key( 1, 100, inner ), static_cast< std::uint16_t >( 3000 + inner ) );
   }
   ingressDel( key( 1, 100, 9 ) );
   ingressDel( key( 1, 100, 0 ) );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.9=3009 -1/100.9 +1/100=3000 -1/100 +1/100.5=3005 "
                              "-1/100.5 +1/100.6=3006" );
}

TEST_F( VlanMappingSlaveSmTest, AWaitingKeyThatWentDoesNotTakeThePlace ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   ingressDel( key( 1, 100, 6 ) );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5" );
}

TEST_F( VlanMappingSlaveSmTest, AWaitingKeyThatWentUnheardDoesNotTakeThePlace ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   sm_->hasNotificationActiveIs( false );
   ingressDel( key( 1, 100, 6 ) );
   sm_->hasNotificationActiveIs( true );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5" );
}

TEST_F( VlanMappingSlaveSmTest, WaitingKeysThatWentLeaveNothingBehind ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   const auto comeAndGo = [ this ]( std::uint16_t inner ) {
      ingress( key( 1, 100, inner ), 3002 );
      ingressDel( key( 1, 100, inner ) );
   };
   comeAndGo( 1 );
   const std::int64_t before = TestSupport::newBlocks();
   for ( std::uint16_t inner = 2; inner <= 100; ++inner ) {
      comeAndGo( inner );
   }
   EXPECT_EQ( TestSupport::newBlocks(), before );
}

TEST_F( VlanMappingSlaveSmTest, AWaitingKeyThatChangedTakesThePlaceAsItIsThen ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   ingress( key( 1, 100, 6 ), 3003 );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5 +1/100.6=3003" );
}

TEST_F( VlanMappingSlaveSmTest, AKeyThatChangesKeepsItsPlace ) {
   initialize();
   ingress( key( 1, 100, 6 ), 3001 );
   ingress( key( 1, 100, 5 ), 3002 );
   ingress( key( 1, 100, 6 ), 3003 );
   EXPECT_EQ( record_.take(), "+1/100.6=3001 -1/100.6 +1/100.6=3003" );
}

TEST_F( VlanMappingSlaveSmTest, AKeyWhoseChangeIsRefusedKeepsItsPlace ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_THROW( ingress( key( 1, 100, 5 ), 4095 ), Zel::RangeException );
   EXPECT_EQ( record_.take(), "+1/100.5=3001" );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "-1/100.5 +1/100.6=3002" );
}

TEST_F( VlanMappingSlaveSmTest, ARefusedWaitingKeyIsPassedOver ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   EXPECT_THROW( ingress( key( 1, 100, 6 ), 4095 ), Zel::RangeException );
   ingress( key( 1, 100, 7 ), 3003 );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5 +1/100.7=3003" );
}

TEST_F( VlanMappingSlaveSmTest, WaitingKeysOfOtherPlacesStayWhereTheyAre ) {
   initialize();
   for ( const std::uint16_t vlan : { std::uint16_t{ 100 }, std::uint16_t{ 101 } } ) {
      ingress( key( 1, vlan, 5 ), 3001 );
      ingress( key( 1, vlan, 6 ), 3002 );
   }
   record_.take();
   ingressDel( key( 1, 101, 5 ) );
   EXPECT_EQ( record_.take(), "-1/101.5 +1/101.6=3002" );
}

TEST_F( VlanMappingSlaveSmTest, AReplayPutsOneKeyOfAPlaceInForce ) {
   ingress( key( 1, 100, 6 ), 3001 );
   ingress( key( 1, 100, 5 ), 3002 );
   sm_->handleInitialized();
   EXPECT_EQ( record_.take(), "+1/100.6=3001" );
   ingressDel( key( 1, 100, 6 ) );
   EXPECT_EQ( record_.take(), "-1/100.6 +1/100.5=3002" );
}

// Configuration written from inside the hooks.

TEST_F( VlanMappingSlaveSmTest, AnAdditionMayConfigureAnotherMapping ) {
   initialize();
   once( "+1/100=3001", [ & ] { ingress( key( 1, 101 ), 3002 ); } );
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001 +1/101=3002" );
}

TEST_F( VlanMappingSlaveSmTest, AnAdditionMayChangeItsOwnMapping ) {
   initialize();
   once( "+1/100=3001", [ & ] { ingress( key( 1, 100 ), 3002 ); } );
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100 +1/100=3002" );
}

// The record was looked up once more after the hook had removed it.
TEST_F( VlanMappingSlaveSmTest, AnAdditionMayRemoveItsOwnMapping ) {
   initialize();
   once( "+1/100=3001", [ & ] { ingressDel( key( 1, 100 ) ); } );
   ingress( key( 1, 100 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100" );
   EXPECT_EQ( record_.shownIndex(), "" );
}

TEST_F( VlanMappingSlaveSmTest, ADeletionMayConfigureItsOwnMappingAgain ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] { ingress( key( 1, 100 ), 3002 ); } );
   ingressDel( key( 1, 100 ) );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100 +1/100=3002" );
}

TEST_F( VlanMappingSlaveSmTest, TheDeletionOfAChangeMayRemoveTheMapping ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] { ingressDel( key( 1, 100 ) ); } );
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100" );
   EXPECT_EQ( record_.shownIndex(), "" );
}

TEST_F( VlanMappingSlaveSmTest, TheDeletionOfAChangeMayChangeTheMappingOnceMore ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   once( "-1/100", [ & ] { ingress( key( 1, 100 ), 3003 ); } );
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "+1/100=3001 -1/100 +1/100=3003" );
}

TEST_F( VlanMappingSlaveSmTest, ADeletionMayRemoveTheKeyThatWaitsForThePlace ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 6 ), 3002 );
   once( "-1/100.5", [ & ] { ingressDel( key( 1, 100, 6 ) ); } );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5" );
}

TEST_F( VlanMappingSlaveSmTest, AChangedKeyKeepsItsPlaceFromOneConfiguredInsideTheDeletion ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   once( "-1/100.5", [ & ] { ingress( key( 1, 100, 6 ), 3003 ); } );
   ingress( key( 1, 100, 5 ), 3002 );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5 +1/100.5=3002" );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "-1/100.5 +1/100.6=3003" );
}

TEST_F( VlanMappingSlaveSmTest, AKeyConfiguredInsideADeletionWaitsLikeAnyOther ) {
   initialize();
   ingress( key( 1, 100, 5 ), 3001 );
   ingress( key( 1, 100, 7 ), 3002 );
   once( "-1/100.5", [ & ] { ingress( key( 1, 100, 6 ), 3003 ); } );
   ingressDel( key( 1, 100, 5 ) );
   EXPECT_EQ( record_.take(), "+1/100.5=3001 -1/100.5 +1/100.6=3003" );
   ingressDel( key( 1, 100, 6 ) );
   EXPECT_EQ( record_.take(), "-1/100.6 +1/100.7=3002" );
}

TEST_F( VlanMappingSlaveSmTest, AReplaysHooksMayChangeTheConfiguration ) {
   for ( std::uint16_t vlan = 100; vlan < 104; ++vlan ) {
      ingress( key( 1, vlan ), 3001 );
   }
   once( "+1/100=3001", [ & ] {
      ingressDel( key( 1, 100 ) );
      ingressDel( key( 1, 102 ) );
      ingress( key( 1, 103 ), 3002 );
      ingress( key( 1, 104 ), 3003 );
   } );
   sm_->handleInitialized();
   EXPECT_EQ( record_.shownIndex(), "1/101=3001 1/103=3002 1/104=3003" );
}

TEST_F( VlanMappingSlaveSmTest, AnEgressHookMayChangeAndRemoveItsOwnMapping ) {
   initialize();
   once( "e+1/200=3001", [ & ] { egress( key( 1, 200 ), 3002 ); } );
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( record_.take(), "e+1/200=3001 e+1/200=3002" );
   once( "e+1/200=3003", [ & ] { egressDel( key( 1, 200 ) ); } );
   egress( key( 1, 200 ), 3003 );
   EXPECT_EQ( record_.take(), "e+1/200=3003 e-1/200" );
}

// Switched off, zombie, destroyed.

TEST_F( VlanMappingSlaveSmTest, DeliversNothingWhileItsNotificationIsOff ) {
   initialize();
   sm_->hasNotificationActiveIs( false );
   EXPECT_FALSE( sm_->hasNotificationActive() );
   ingress( key( 1, 100 ), 3001 );
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( record_.take(), "" );
   sm_->hasNotificationActiveIs( true );
   ingress( key( 1, 101 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/101=3001" );
}

TEST_F( VlanMappingSlaveSmTest, DeliversNothingAsAZombie ) {
   initialize();
   sm_->zelDoZombieReactors( true );
   EXPECT_TRUE( sm_->zelMarkedForDeletion() );
   ingress( key( 1, 100 ), 3001 );
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( record_.take(), "" );
   sm_->zelDoZombieReactors( false );
   EXPECT_FALSE( sm_->zelMarkedForDeletion() );
   ingress( key( 1, 101 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/101=3001" );
}

TEST_F( VlanMappingSlaveSmTest, StopsWatchingWhenItGoes ) {
   initialize();
   EXPECT_EQ( acsd_->ingressConfigDir()->notifieeList()->notifiees(), 1u );
   sm_ = nullptr;
   EXPECT_EQ( acsd_->ingressConfigDir()->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( acsd_->egressConfigDir()->notifieeList()->notifiees(), 0u );
   ingress( key( 1, 100 ), 3001 );
   egress( key( 1, 200 ), 3001 );
   EXPECT_EQ( record_.take(), "" );
}

TEST_F( VlanMappingSlaveSmTest, MayLoseItsLastReferenceInsideAHook ) {
   initialize();
   ingress( key( 1, 100 ), 3001 );
   record_.take();
   once( "-1/100", [ & ] { sm_ = nullptr; } );
   ingress( key( 1, 100 ), 3002 );
   EXPECT_EQ( record_.take(), "-1/100 +1/100=3002" );
   EXPECT_EQ( Zel::allocationCount( "TestMox::RecordingSm" ).live, 0 );
}

// handleInitialized() is called through a plain pointer here: only it keeps the object alive.
TEST_F( VlanMappingSlaveSmTest, MayLoseItsLastReferenceInsideAReplay ) {
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 1, 101 ), 3001 );
   once( "+1/100=3001", [ & ] { sm_ = nullptr; } );
   RecordingSm* const raw = sm_.get();
   raw->handleInitialized();
   EXPECT_EQ( record_.take(), "+1/100=3001 +1/101=3001" );
   EXPECT_EQ( Zel::allocationCount( "TestMox::RecordingSm" ).live, 0 );
}

// Writes configuration while the object is half destroyed.
class WritingAtItsEnd : public RecordingSm {
 public:
   WritingAtItsEnd( const Zel::Ptr< Mox::MoxCommonSmData >& acsd, TestMox::Record& record )
       : RecordingSm( acsd, record ) {}

 protected:
   ~WritingAtItsEnd() override {
      zelDoZombieReactors( true );
      acsd()->ingressConfigDir()->configIs(
         { key( 1, 100 ), Bridging::VlanXlateMapping::fromRaw( 3001 ) } );
   }
};

TEST_F( VlanMappingSlaveSmTest, DeliversNothingAfterTheZombieStepOfItsDestruction ) {
   sm_ = Zel::newEntity< WritingAtItsEnd >( acsd_, record_ );
   initialize();
   sm_ = nullptr;
   EXPECT_EQ( record_.take(), "" );
   EXPECT_TRUE( acsd_->ingressConfigDir()->config().contains( key( 1, 100 ) ) );
}

TEST_F( VlanMappingSlaveSmTest, BecomingAZombieInsideAHookEndsTheDelivery ) {
   initialize();
   once( "+1/100=3001", [ & ] { sm_->zelDoZombieReactors( true ); } );
   ingress( key( 1, 100 ), 3001 );
   ingress( key( 1, 101 ), 3001 );
   EXPECT_EQ( record_.take(), "+1/100=3001" );
}

TEST_F( VlanMappingSlaveSmDeathTest, WithoutCommonDataAborts ) {
   EXPECT_DEATH( Zel::newEntity< RecordingSm >( nullptr, record_ ),
                 "Mox/VlanMappingSlaveSm:[0-9]+: .*: Assertion `acsd_' failed\\." );
}

}   // namespace
