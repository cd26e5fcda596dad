// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <string>
#include <utility>

#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/ScaleSlaveSmTest.h"

namespace {

using Corvel::IntfId;

class ScheduleListener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "ScheduleListener";
   void onAttribute( Zel::AttributeId, const void* ) override { react_(); }

 protected:
   ScheduleListener( const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir >& dir,
                     std::function< void() > react )
       : react_( std::move( react ) ) {
      zelNotifierIs( dir );
   }

 private:
   const std::function< void() > react_;
};

class ScaleSlaveSmHookTest : public ScaleSlaveSmTest {
 protected:
   ScaleSlaveSmHookTest() { givenManager(); }

   template < class Act >
   static std::string refusal( Act act ) {
      try {
         act();
      } catch ( const Zel::RangeException& error ) {
         return error.what();
      }
      return "";
   }
};

TEST_F( ScaleSlaveSmHookTest, IngressAddPutsTheConfiguredMappingIntoTheIndex ) {
   ingressIs( config( 100, 'M' ) );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
   EXPECT_EQ( schedule(), "7" );
   EXPECT_EQ( status(), "" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddWithoutConfigurationTakesTheEmptyMapping ) {
   sm_->doAddIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7: 100-100 - / 100\n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddDoesNotReadTheEgressConfiguration ) {
   egressIs( config( 100, 'M' ) );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7: 100-100 - / 100\n" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddWorksForLagMembersAndUntaggedFramesToo ) {
   ingressIs( config( 100, 'M', true, true ) );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddOfAMappingTo4095IsRefusedBeforeAnything ) {
   ingressIs( { key( 100 ), Bridging::VlanXlateMapping::fromRaw( 4095 ) } );
   for ( const char* levels : { "", "5" } ) {
      TestSupport::TraceCapture capture( "MoxVlanMappingScaleSm", levels );
      EXPECT_EQ( refusal( [ & ] { sm_->doAddIngressVlanMapping( key( 100 ) ); } ),
                 "Bridging::VlanIdOrNone::value > 4094 not allowed" );
   }
   EXPECT_EQ( index(), "" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddOfAMappingTo4095StopsBehindTheFirstLine ) {
   ingressIs( { key( 100 ), Bridging::VlanXlateMapping::fromRaw( 65535 ) } );
   TestSupport::TraceCapture capture( "MoxVlanMappingScaleSm", "*" );
   refusal( [ & ] { sm_->doAddIngressVlanMapping( key( 100 ) ); } );
   EXPECT_EQ( capture.text(),
              "5 doAddIngressVlanMapping pvKey: Value('Mox::PortVlanKey', ** {'intfId': 7, "
              "'vlanId': 100, 'innerVlanId': 0})\n" );
}

TEST_F( ScaleSlaveSmHookTest, IngressAddOfUncheckedVlansIsRefusedByTheIndexAndNotScheduled ) {
   EXPECT_EQ( refusal( [ & ] { sm_->doAddIngressVlanMapping( key( 0 ) ); } ),
              "Bridging::VlanId::value < 1 or > 4094 not allowed" );
   for ( const unsigned vlan : { 4095u, 65535u } ) {
      EXPECT_EQ( refusal( [ & ] { sm_->doAddIngressVlanMapping( key( vlan ) ); } ),
                 "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
   }
   EXPECT_EQ( index(), "7:  / \n" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( ScaleSlaveSmHookTest, IngressDeleteOfUncheckedVlansIsRefusedBeforeAnything ) {
   for ( const unsigned vlan : { 0u, 4095u, 65535u } ) {
      EXPECT_EQ( refusal( [ & ] { sm_->doDelIngressVlanMapping( key( vlan ) ); } ),
                 "Bridging::VlanId::value < 1 or > 4094 not allowed" );
   }
   EXPECT_EQ( index(), "" );
   EXPECT_EQ( schedule(), "" );
   EXPECT_EQ( status(), "" );
}

// What the index throws of ranges that were stored by hand ends the hook there.
TEST_F( ScaleSlaveSmHookTest,
        IngressDeleteFromARangeBeyondTheHighestVlanThrowsAndDoesNotSchedule ) {
   TestSupport::store( *rangeDir_->vlanRangeEntryIs( kPort ), "4094-5000 M" );
   EXPECT_EQ( refusal( [ & ] { sm_->doDelIngressVlanMapping( key( 4094 ) ); } ),
              "Bridging::VlanId::value < 1 or > 4094 not allowed" );
   EXPECT_EQ( index(), "7:  / \n" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( ScaleSlaveSmHookTest, IngressDeleteBesideAStartOf0ThrowsAndDoesNotSchedule ) {
   rangeDir_->vlanRangeEntryIs( kPort )->revSortedStartVidIs( 0, true );
   EXPECT_EQ( refusal( [ & ] { sm_->doDelIngressVlanMapping( key( 1 ) ); } ),
              "Bridging::VlanId::value < 1 or > 4094 not allowed" );
   EXPECT_EQ( index(), "7:  / 0\n" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( ScaleSlaveSmHookTest, ARangeExceptionOfAReactorPassesThroughTheHooks ) {
   const auto listener = Zel::newEntity< ScheduleListener >(
      scheduleDir_, [] { Zel::throwRangeException( "reactor" ); } );
   EXPECT_EQ( refusal( [ & ] { sm_->doAddIngressVlanMapping( key( 100 ) ); } ), "reactor" );
   EXPECT_EQ( index(), "7: 100-100 - / 100\n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, IngressDeleteOfTheOutermostVlansDeletesAndSchedules ) {
   for ( const unsigned vlan : { 1u, 4094u } ) {
      ingressIs( config( vlan, 'M' ) );
      sm_->doAddIngressVlanMapping( key( vlan ) );
      scheduleDir_->vlanXlateScheduleDelAll();
      sm_->doDelIngressVlanMapping( key( vlan ) );
      EXPECT_EQ( index(), "7:  / \n" );
      EXPECT_EQ( schedule(), "7" );
   }
}

TEST_F( ScaleSlaveSmHookTest, IngressDeleteDoesNotReadTheConfiguration ) {
   ingressIs( config( 100, 'M' ) );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   ingressIs( config( 100, 'N' ) );
   sm_->doDelIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7:  / \n" );
}

TEST_F( ScaleSlaveSmHookTest, IngressDeleteOfWhatIsNotThereStillSchedules ) {
   sm_->doDelIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7:  / \n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, AddingAndDeletingHoldsTheInterfaceOnce ) {
   int marks = 0;
   const auto listener = Zel::newEntity< ScheduleListener >( scheduleDir_, [ & ] { ++marks; } );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   sm_->doDelIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( schedule(), "7" );
   EXPECT_EQ( marks, 1 );
}

TEST_F( ScaleSlaveSmHookTest, TheIndexIsChangedBeforeTheInterfaceIsScheduled ) {
   std::string seen;
   const auto listener =
      Zel::newEntity< ScheduleListener >( scheduleDir_, [ & ] { seen += index(); } );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   scheduleDir_->vlanXlateScheduleDelAll();
   seen.clear();
   sm_->doDelIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( seen, "7:  / \n" );
}

TEST_F( ScaleSlaveSmHookTest, EgressAddPublishesTheConfigurationButForUntaggedFrames ) {
   egressIs( config( 100, 'M', true, true, 3 ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   EXPECT_EQ( status(), "7/100 M lag origin 3\n" );
}

TEST_F( ScaleSlaveSmHookTest, EgressAddReplacesTheStatus ) {
   egressIs( config( 100, 'M' ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   egressIs( config( 100, 'N', false, false, 9 ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   EXPECT_EQ( status(), "7/100 N origin 9\n" );
}

TEST_F( ScaleSlaveSmHookTest, EgressAddKeepsTheKeysInnerVlan ) {
   const Mox::PortVlanKey inner( kPort, Bridging::VlanId( 100 ), 42 );
   egressIs( { inner, TestSupport::mappingOf( 'M' ) } );
   sm_->doAddEgressVlanMapping( inner );
   EXPECT_TRUE( acsd_->statusDir()->status().contains( inner ) );
}

TEST_F( ScaleSlaveSmHookTest, EgressAddWithoutConfigurationPublishesTheDefaultKey ) {
   ingressIs( config( 100, 'M' ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   EXPECT_EQ( status(), "0/1 - origin 0\n" );
}

TEST_F( ScaleSlaveSmHookTest, EgressDeleteRemovesTheStatusOfItsKey ) {
   egressIs( config( 100, 'M' ) );
   egressIs( config( 101, 'M' ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   sm_->doAddEgressVlanMapping( key( 101 ) );
   sm_->doDelEgressVlanMapping( key( 100 ) );
   EXPECT_EQ( status(), "7/101 M origin 0\n" );
}

TEST_F( ScaleSlaveSmHookTest, EgressHooksLeaveIndexAndScheduleAlone ) {
   egressIs( config( 100, 'M' ) );
   sm_->doAddEgressVlanMapping( key( 100 ) );
   sm_->doDelEgressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( ScaleSlaveSmHookTest, EgressHooksTakeUncheckedVlans ) {
   for ( const unsigned vlan : { 0u, 4095u, 65535u } ) {
      egressIs( { key( vlan ), Bridging::VlanXlateMapping::fromRaw( 4095 ) } );
      EXPECT_EQ( refusal( [ & ] { sm_->doAddEgressVlanMapping( key( vlan ) ); } ), "" );
   }
   EXPECT_EQ( acsd_->statusDir()->status().size(), 3u );
   for ( const unsigned vlan : { 0u, 4095u, 65535u } ) {
      EXPECT_EQ( refusal( [ & ] { sm_->doDelEgressVlanMapping( key( vlan ) ); } ), "" );
   }
   EXPECT_EQ( status(), "" );
}

// A hook holds what it calls.

TEST_F( ScaleSlaveSmHookTest, AManagerDroppedDuringTheCallFinishesIt ) {
   Zel::traceSinkIs( [ this ]( const Zel::TraceLine& ) { sm_->vlanRangeMgrDel(); } );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/*" );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   givenManager();
   sm_->doDelIngressVlanMapping( key( 101 ) );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/" );
   Zel::traceSinkIs( {} );
   EXPECT_TRUE( sm_->vlanRangeMgr() == nullptr );
   EXPECT_EQ( index(), "7: 100-100 - / 100\n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, AnInterfaceUnscheduledDuringTheCallIsScheduledBehindIt ) {
   ingressIs( config( 100, 'M' ) );
   scheduleDir_->vlanXlateScheduleIs( kPort );
   Zel::traceSinkIs(
      [ this ]( const Zel::TraceLine& ) { scheduleDir_->vlanXlateScheduleDel( kPort ); } );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/*" );
   sm_->doAddIngressVlanMapping( key( 100 ) );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/" );
   Zel::traceSinkIs( {} );
   EXPECT_EQ( index(), "7: 100-100 M / 100\n" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( ScaleSlaveSmHookTest, AStateMachineDroppedByAScheduleReactorIsNotTouchedAgain ) {
   const auto listener =
      Zel::newEntity< ScheduleListener >( scheduleDir_, [ this ] { sm_ = nullptr; } );
   Sm& sm = *sm_;
   sm.doAddIngressVlanMapping( key( 100 ) );
   EXPECT_EQ( index(), "7: 100-100 - / 100\n" );
}

TEST_F( ScaleSlaveSmHookTest, TheIngressHooksSayThatThereIsNoManager ) {
   ingressIs( config( 100, 'M' ) );
   const auto without = newSm();
   for ( const auto hook : { &Sm::doAddIngressVlanMapping, &Sm::doDelIngressVlanMapping } ) {
      try {
         ( *without.*hook )( key( 100 ) );
         FAIL() << "nothing was thrown";
      } catch ( const Zel::Exception& error ) {
         EXPECT_STREQ( error.what(), "VlanMappingScaleSlaveSm has no vlanRangeMgr" );
      }
   }
   EXPECT_EQ( schedule(), "" );
}

class ScaleSlaveSmTraceTest : public ScaleSlaveSmTest {
 protected:
   template < class Act >
   std::string traced( Act act ) {
      TestSupport::TraceCapture capture( "MoxVlanMappingScaleSm", "*" );
      act();
      for ( const auto& line : capture.lines() ) {
         EXPECT_EQ( line.handle, "MoxVlanMappingScaleSm" );
         EXPECT_EQ( line.source, "MoxVlanMapping/MoxVlanMappingScaleSlaveSm" );
         EXPECT_TRUE( line.text.starts_with( line.function ) ) << line.text;
      }
      return capture.text();
   }

   static std::string keyText( const std::string& vlan ) {
      return "Value('Mox::PortVlanKey', ** {'intfId': 7, 'vlanId': " + vlan +
             ", 'innerVlanId': 0})";
   }
};

TEST_F( ScaleSlaveSmTraceTest, Initialisation ) {
   EXPECT_EQ( traced( [ & ] { sm_->handleInitialized(); } ), "5 handleInitialized\n" );
}

TEST_F( ScaleSlaveSmTraceTest, IngressAddOfAConfiguredKey ) {
   ingressIs( config( 100, 'M', true, false ) );
   givenManager();
   EXPECT_EQ( traced( [ & ] { sm_->doAddIngressVlanMapping( key( 100 ) ); } ),
              "5 doAddIngressVlanMapping pvKey: " + keyText( "100" ) +
                 "\n5 doAddIngressVlanMapping 7 : Adding mapping 100 to 3013 inLag true "
                 "xlateUntagged false\n" );
}

TEST_F( ScaleSlaveSmTraceTest, IngressAddWithoutConfiguration ) {
   givenManager();
   EXPECT_EQ( traced( [ & ] { sm_->doAddIngressVlanMapping( key( 100 ) ); } ),
              "5 doAddIngressVlanMapping pvKey: " + keyText( "100" ) +
                 "\n5 doAddIngressVlanMapping 7 : Adding mapping 100 to none inLag false "
                 "xlateUntagged false\n" );
}

TEST_F( ScaleSlaveSmTraceTest, TheOtherHooks ) {
   givenManager();
   EXPECT_EQ( traced( [ & ] {
                 sm_->doDelIngressVlanMapping( key( 100 ) );
                 sm_->doAddEgressVlanMapping( key( 101 ) );
                 sm_->doDelEgressVlanMapping( key( 102 ) );
              } ),
              "5 doDelIngressVlanMapping pvKey: " + keyText( "100" ) +
                 "\n5 doAddEgressVlanMapping pvKey: " + keyText( "101" ) +
                 "\n5 doDelEgressVlanMapping pvKey: " + keyText( "102" ) + "\n" );
}

TEST_F( ScaleSlaveSmTraceTest, OtherLevelsShowNothing ) {
   TestSupport::TraceCapture capture( "MoxVlanMappingScaleSm", "0-4,6-31" );
   ingressIs( config( 100, 'M' ) );
   sm_->handleInitialized();
   sm_->doDelEgressVlanMapping( key( 102 ) );
   EXPECT_EQ( capture.text(), "" );
}

// In a process of its own, where nobody has set a level.
using ScaleSlaveSmTraceDeathTest = ScaleSlaveSmTraceTest;
TEST_F( ScaleSlaveSmTraceDeathTest, NoLevelIsEnabledAtFirst ) {
   GTEST_FLAG_SET( death_test_style, "threadsafe" );
   EXPECT_EXIT( sm_->handleInitialized(); std::_Exit( 0 ), testing::ExitedWithCode( 0 ), "^$" );
}

// To compose a line takes memory; these calls insert nothing, so nothing else does.
TEST_F( ScaleSlaveSmTraceTest, DisabledLinesAreNotComposed ) {
   givenManager();
   sm_->doAddIngressVlanMapping( key( 100 ) );
   const auto act = [ this ] {
      sm_->doAddIngressVlanMapping( key( 100 ) );
      sm_->doDelIngressVlanMapping( key( 101 ) );
      sm_->doDelEgressVlanMapping( key( 102 ) );
   };
   const auto before = TestSupport::newRequests();
   act();
   EXPECT_EQ( TestSupport::newRequests(), before );
   traced( act );
   EXPECT_GT( TestSupport::newRequests(), before );
}

}   // namespace
