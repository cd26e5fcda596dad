// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The libraries as built: exported names, exceptions and process-wide state across their border.
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <type_traits>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/AllocationTracker.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/Parse.h"
#include "Zel/TypeModule.h"
#include "tests/support/PelrecCapture.h"
#include "tests/support/TraceCapture.h"

namespace {

using MoxVlanMapping::moxVlanRangeMgrFactory;
using MoxVlanMapping::vlanMappingScaleSlaveSmFactory;
using MoxVlanMapping::vlanRangeEntryDirFactory;
using MoxVlanMapping::vlanRangeEntryFactory;
using MoxVlanMapping::vlanXlateScaleEntryDirFactory;
using MoxVlanMapping::vlanXlateScaleEntryFactory;
using MoxVlanMapping::vlanXlateScheduleDirFactory;

using MoxVlanMapping::MoxVlanRangeMappingCodef;
using MoxVlanMapping::MoxVlanRangeMgr;
using MoxVlanMapping::VlanMappingScaleSlaveSm;
using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanRangeEntryDir;
using MoxVlanMapping::VlanRangeXlateMapping;
using MoxVlanMapping::VlanXlateScaleEntry;
using MoxVlanMapping::VlanXlateScaleEntryDir;
using MoxVlanMapping::VlanXlateScheduleDir;
using Zel::Ptr;

static_assert( std::is_same_v< decltype( &vlanRangeEntryFactory ),
                               Ptr< VlanRangeEntry > ( * )( Corvel::IntfId ) > );
static_assert(
   std::is_same_v< decltype( &vlanRangeEntryDirFactory ), Ptr< VlanRangeEntryDir > ( * )() > );
static_assert( std::is_same_v< decltype( &vlanXlateScheduleDirFactory ),
                               Ptr< VlanXlateScheduleDir > ( * )() > );
static_assert( std::is_same_v< decltype( &vlanXlateScaleEntryFactory ),
                               Ptr< VlanXlateScaleEntry > ( * )( Corvel::IntfId ) > );
static_assert( std::is_same_v< decltype( &vlanXlateScaleEntryDirFactory ),
                               Ptr< VlanXlateScaleEntryDir > ( * )() > );
static_assert( std::is_same_v< decltype( &moxVlanRangeMgrFactory ),
                               Ptr< MoxVlanRangeMgr > ( * )( const Ptr< VlanRangeEntryDir >& ) > );
static_assert( std::is_same_v<
               decltype( &vlanMappingScaleSlaveSmFactory ),
               Ptr< VlanMappingScaleSlaveSm > ( * )(
                  const Ptr< Mox::MoxCommonSmData >&, const Ptr< const Zel::Clock >&,
                  const Ptr< const Bridging::Config >&, const Ptr< Bridging::VlanXlateStatusDir >&,
                  const Ptr< VlanRangeEntryDir >&, const Ptr< VlanXlateScheduleDir >& ) > );

class Collector : public MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Collector";
   void processSortedVlanRange( Corvel::IntfId intfId ) override {
      const auto entry = vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intfId );
      for ( const auto& element : entry->vidRangeSorted() ) {
         sorted += std::to_string( element.key().lowVid().value() ) + "-" +
                   std::to_string( element.key().highVid().value() ) + " ";
      }
   }
   void vlanXlateCodefComplete() override { sorted += "complete "; }
   std::string sorted;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~Collector() override { zelDoZombieReactors( true ); }
};

TEST( SharedLibrary, ADerivedClassOutsideOfItIsHandedTheSortedRanges ) {
   const auto acsd = Mox::moxCommonSmDataFactory();
   const auto clock = Zel::manualClockFactory();
   const auto scheduler = Quen::taskSchedulerFactory( clock );
   const auto ranges = vlanRangeEntryDirFactory();
   const auto schedule = vlanXlateScheduleDirFactory();
   const auto sm =
      vlanMappingScaleSlaveSmFactory( acsd, clock, nullptr, nullptr, ranges, schedule );
   const auto collector = Zel::newEntity< Collector >( acsd, scheduler, ranges, schedule );
   sm->handleInitialized();
   for ( const unsigned vid : { 5u, 10u, 11u, 12u } ) {
      acsd->ingressConfigDir()->configIs(
         Mox::MoxVlanMappingConfig( { Corvel::IntfId( 1 ), Bridging::VlanId( vid ) },
                                    Bridging::VlanXlateMapping::fromRaw( 100 ) ) );
   }
   scheduler->runUntilIdle();
   EXPECT_EQ( collector->sorted, "10-12 5-5 complete " );
}

TEST( SharedLibrary, ItsExceptionsAreCaughtByType ) {
   const auto mgr = moxVlanRangeMgrFactory( vlanRangeEntryDirFactory() );
   try {
      mgr->addVlanToIdx( Corvel::IntfId( 1 ), Bridging::VlanId::fromRaw( 4095 ),
                         Bridging::VlanXlateMapping::fromRaw( 100 ) );
      FAIL() << "nothing was thrown";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(),
                    "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
   }
   EXPECT_THROW( Zel::strepToValue< VlanRangeXlateMapping >( "x" ), Zel::ParseException );
}

struct HardwareFailure {};

class FailingCodef : public MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "FailingCodef";
   void processSortedVlanRange( Corvel::IntfId ) override { throw HardwareFailure(); }

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
};

TEST( SharedLibrary, ADerivedClassesExceptionsPassThroughIt ) {
   const auto scheduler = Quen::taskSchedulerFactory( Zel::manualClockFactory() );
   const auto schedule = vlanXlateScheduleDirFactory();
   const auto codef = Zel::newEntity< FailingCodef >( Mox::moxCommonSmDataFactory(), scheduler,
                                                      vlanRangeEntryDirFactory(), schedule );
   schedule->vlanXlateScheduleIs( Corvel::IntfId( 1 ) );
   EXPECT_THROW( scheduler->runOnce(), HardwareFailure );
   EXPECT_EQ( schedule->vlanXlateSchedule().size(), 1u );
}

TEST( SharedLibrary, ItsFactoriesMakeActiveEntitiesOfTheirTypes ) {
   const Corvel::IntfId intf( 1 );
   const auto ranges = vlanRangeEntryDirFactory();
   const auto schedule = vlanXlateScheduleDirFactory();
   const Ptr< Zel::PtrInterface > made[] = {
      vlanRangeEntryFactory( intf ),
      ranges,
      schedule,
      vlanXlateScaleEntryFactory( intf ),
      vlanXlateScaleEntryDirFactory(),
      moxVlanRangeMgrFactory( ranges ),
      vlanMappingScaleSlaveSmFactory( Mox::moxCommonSmDataFactory(), nullptr, nullptr, nullptr,
                                      ranges, schedule ),
   };
   std::string types;
   for ( const auto& entity : made ) {
      EXPECT_TRUE( entity->hasNotificationActive() );
      types += std::string( entity->fwkType().record()->name ) + "\n";
   }
   EXPECT_EQ( types, "MoxVlanMapping::VlanRangeEntry\n"
                     "MoxVlanMapping::VlanRangeEntryDir\n"
                     "MoxVlanMapping::VlanXlateScheduleDir\n"
                     "MoxVlanMapping::VlanXlateScaleEntry\n"
                     "MoxVlanMapping::VlanXlateScaleEntryDir\n"
                     "MoxVlanMapping::MoxVlanRangeMgr\n"
                     "MoxVlanMapping::VlanMappingScaleSlaveSm\n" );
}

TEST( SharedLibrary, ItsTracesReachTheSinksOfTheProgram ) {
   const TestSupport::TraceCapture lines( "MoxVlanRangeMappingCodef", "5" );
   const TestSupport::PelrecCapture records;
   const auto scheduler = Quen::taskSchedulerFactory( Zel::manualClockFactory() );
   const auto collector = Zel::newEntity< Collector >(
      nullptr, scheduler, vlanRangeEntryDirFactory(), vlanXlateScheduleDirFactory() );
   scheduler->runOnce();
   EXPECT_EQ( lines.text(), "5 drainBacklog Marking codef completed\n" );
   EXPECT_EQ( records.text(), "5 drainBacklog Marking codef completed\n" );
}

TEST( SharedLibrary, ThePlatformExistsOncePerProcess ) {
   const auto before = Zel::allocationCount( "MoxVlanMapping::VlanRangeEntryDir" ).live;
   const auto made = vlanRangeEntryDirFactory();
   EXPECT_EQ( Zel::allocationCount( "MoxVlanMapping::VlanRangeEntryDir" ).live, before + 1 );
   const std::uint32_t seed = Zel::hashSeed();
   Zel::hashSeedIs( 12345 );
   EXPECT_EQ( vlanXlateScheduleDirFactory()->vlanXlateSchedule().seed(), 12345u ^ 0xcb5901bu );
   Zel::hashSeedIs( seed );
}

TEST( SharedLibrary, EveryTypeIsFoundByName ) {
   for ( const char* name :
         { "ReverseStartIdVlanId", "VlanRangeXlateMapping", "VlanRangeEntry", "VlanRangeEntryDir",
           "VlanXlateScheduleDir", "MoxVlanRangeMgr", "VlanMappingScaleSlaveSm",
           "VlanXlateScaleEntry", "VlanXlateScaleEntryDir", "MoxVlanRangeMappingCodef" } ) {
      EXPECT_TRUE( Zel::zelTypeByName( std::string( "MoxVlanMapping::" ) + name ) ) << name;
   }
   EXPECT_EQ( moxVlanRangeMgrFactory( nullptr )->fwkType(),
              Zel::zelTypeByName( "MoxVlanMapping::MoxVlanRangeMgr" ) );
}

}   // namespace
