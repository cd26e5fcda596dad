// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The codef by generic access: through its base type, and as a registered derived class.
#include "tests/unit/MoxVlanMapping/GenericAccess.h"

#include <array>
#include <new>
#include <string>

#include "Zel/Exception.h"
#include "Zel/TypeTable.h"
#include "tests/support/Chain.h"
#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Zel::Value;

struct HardwareFailure {};

// Has an attribute of its own behind those of the base.
class CountingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Test::CountingCodef";
   static Zel::Ptr< CountingCodef >
   CountingCodefIs( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                    const Zel::Ptr< Quen::TaskScheduler >& scheduler,
                    const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& rangeDir,
                    const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir >& scheduleDir ) {
      return Zel::newEntity< CountingCodef >( acsd, scheduler, rangeDir, scheduleDir );
   }

   void processSortedVlanRange( Corvel::IntfId ) override { ++handedOver_; }
   std::uint32_t handedOver() const { return handedOver_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~CountingCodef() override { zelDoZombieReactors( true ); }

 private:
   std::uint32_t handedOver_ = 0;
};

constexpr std::array kCountingCodef{
   Zel::field< &CountingCodef::handedOver >( 386, "handedOver" ),
};
constexpr std::array kTypes{
   Zel::entityType< CountingCodef, MoxVlanMapping::MoxVlanRangeMappingCodef >(
      Zel::constructor< &CountingCodef::CountingCodefIs >(
         { "acsd", "scheduler", "vlanRangeEntryDir", "vlanXlateScheduleDir" } ),
      kCountingCodef ),
};
constexpr Zel::TypeModule kModule{ "Test/CountingCodef", kTypes };

Zel::TypeHandle
CountingCodef::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

class GenericCodefTest : public GenericAccess, protected TestSupport::Chain {
 protected:
   using Codef = MoxVlanMapping::MoxVlanRangeMappingCodef;

   // A class that is not registered goes by its base's name.
   Value codef() const { return Value::of( recording_ ); }
   void schedule( std::uint64_t port ) {
      scheduleDir_->vlanXlateScheduleIs( Corvel::IntfId( port ) );
   }
   std::string waiting() const {
      return TestSupport::interfacesText( scheduleDir_->vlanXlateSchedule() );
   }

   const Zel::Ptr< RecordingCodef > recording_ =
      Zel::newEntity< RecordingCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );
};

TEST_F( GenericCodefTest, ADerivedClassThatIsNotRegisteredIsSeenAsTheCodef ) {
   EXPECT_EQ( codef().type(), Zel::zelTypeOf( "MoxVlanMapping::MoxVlanRangeMappingCodef" ) );
   EXPECT_EQ( codef().entity< Codef >(), recording_ );
}

TEST_F( GenericCodefTest, ItsPointersAnswerWhatItWorksOn ) {
   EXPECT_EQ( done( codef(), 130, kGet ).entity(), acsd_ );
   EXPECT_EQ( done( codef(), 131, kGet ).entity(), scheduler_ );
   EXPECT_EQ( done( codef(), 132, kGet ).entity(), rangeDir_ );
   EXPECT_EQ( done( codef(), 133, kGet ).entity(), scheduleDir_ );
   EXPECT_EQ( done( codef(), 134, kGet ).entity(), recording_->task() );
   EXPECT_EQ( done( codef(), 135, kGet ).entity(), recording_->vlanXlateScaleEntryDir() );
}

TEST_F( GenericCodefTest, SettingTheTaskMakesItWatchThatOne ) {
   const auto task = Quen::taskFactory( scheduler_, Quen::TaskPriority( 1 ), "other" );
   EXPECT_EQ( text( done( codef(), 134, kSet, { Value::of( task ) } ) ), "nothing" );
   EXPECT_EQ( recording_->task(), task );
   scheduler_->runUntilIdle();
   schedule( 7 );
   EXPECT_TRUE( task->scheduled() );
}

TEST_F( GenericCodefTest, SettingTheTaskToNullTakesItOut ) {
   done( codef(), 134, kSet, { Value( Zel::zelTypeOf( "Quen::Task" ), nullptr ) } );
   EXPECT_EQ( text( done( codef(), 134, kGet ) ), "null Quen::Task" );
   EXPECT_FALSE( recording_->task() );
}

TEST_F( GenericCodefTest, InitializedIsReadAndWritten ) {
   EXPECT_EQ( text( done( codef(), 142, kGet ) ), "true" );
   EXPECT_EQ( text( done( codef(), 142, kSet, { flag( false ) } ) ), "nothing" );
   EXPECT_EQ( text( done( codef(), 142, kGet ) ), "false" );
   EXPECT_FALSE( recording_->initialized() );
   done( codef(), 142, kSet, { flag( true ) } );
   EXPECT_TRUE( recording_->initialized() );
}

TEST_F( GenericCodefTest, HandleInitializedRunsOnceMoreAfterTheFlagWasTakenBack ) {
   scheduler_->runUntilIdle();
   done( codef(), 143, kCall );
   EXPECT_FALSE( recording_->task()->scheduled() );
   done( codef(), 142, kSet, { flag( false ) } );
   done( codef(), 143, kCall );
   EXPECT_TRUE( recording_->initialized() );
   EXPECT_TRUE( recording_->task()->scheduled() );
}

TEST_F( GenericCodefTest, DrainBacklogHandsOverWhatIsScheduled ) {
   TestSupport::store( *rangeDir_->vlanRangeEntryIs( Corvel::IntfId( 7 ) ), "5-5 M, 10-20 N" );
   schedule( 7 );
   EXPECT_EQ( text( done( codef(), 136, kCall ) ), "nothing" );
   EXPECT_EQ( recording_->record(), "7: 10-20 N, 5-5 M\n" );
   EXPECT_EQ( waiting(), "" );
}

TEST_F( GenericCodefTest, CompleteAndProcessReachTheDerivedClass ) {
   done( codef(), 137, kCall );
   EXPECT_EQ( recording_->record(), "complete\n" );
   done( codef(), 141, kCall, { intf( 8 ) } );
   EXPECT_EQ( recording_->record(), "8: no entry\n" );
}

TEST_F( GenericCodefTest, HandlePortToLagSchedulesAPortOutsideOfAggregates ) {
   acsd_->portToLagIs( Corvel::IntfId( 8 ), Corvel::IntfId( 100 ) );
   done( codef(), 138, kCall, { intf( 7 ) } );
   done( codef(), 138, kCall, { intf( 8 ) } );
   EXPECT_EQ( waiting(), "7" );
}

TEST_F( GenericCodefTest, WhatAHookThrowsPassesThroughUnchanged ) {
   Value result;
   recording_->processIs( []( Corvel::IntfId ) { throw HardwareFailure(); } );
   EXPECT_THROW( op( result, codef(), 141, kCall, { intf( 7 ) } ), HardwareFailure );
   schedule( 7 );
   EXPECT_THROW( op( result, codef(), 136, kCall ), HardwareFailure );
   EXPECT_EQ( waiting(), "7" );
   recording_->completeIs( [] { throw std::bad_alloc(); } );
   EXPECT_THROW( op( result, codef(), 137, kCall ), std::bad_alloc );
   EXPECT_EQ( text( result ), "nothing" );
}

TEST_F( GenericCodefTest, WrongArgumentsAreATypeErrorAndNothingIsCalled ) {
   Value result;
   EXPECT_THROW( op( result, codef(), 136, kCall, { intf( 7 ) } ), Zel::TypeException );
   EXPECT_THROW( op( result, codef(), 138, kCall, {} ), Zel::TypeException );
   EXPECT_THROW( op( result, codef(), 141, kCall, { vlan( 7 ) } ), Zel::TypeException );
   EXPECT_THROW( op( result, codef(), 134, kSet, { Value::of( scheduler_ ) } ),
                 Zel::TypeException );
   EXPECT_EQ( recording_->record(), "" );
   EXPECT_EQ( waiting(), "" );
}

class DerivedCodefTest : public GenericCodefTest {
 protected:
   Value counting() const {
      return Zel::zelConstruct( Zel::zelTypeOf( "Test::CountingCodef" ),
                                { Value::of( acsd_ ), Value::of( scheduler_ ),
                                  Value::of( rangeDir_ ), Value::of( scheduleDir_ ) } );
   }

 private:
   const Zel::ModuleRegistration registration_{ kModule };
};

TEST_F( DerivedCodefTest, IsConstructedByNameUnderItsOwnType ) {
   const Value codef = counting();
   EXPECT_EQ( text( codef ), "Test::CountingCodef" );
   EXPECT_EQ( Zel::zelAttribute( codef, "handedOver", Zel::OpCode::Get ).as< std::uint32_t >(),
              0u );
}

TEST_F( DerivedCodefTest, TheBasesAttributesAreReachedByName ) {
   const Value codef = counting();
   EXPECT_EQ( Zel::zelAttribute( codef, "acsd", Zel::OpCode::Get ).entity(), acsd_ );
   Zel::zelAttribute( codef, "processSortedVlanRange", Zel::OpCode::Call, { intf( 7 ) } );
   schedule( 9 );
   Zel::zelAttribute( codef, "drainBacklog", Zel::OpCode::Call );
   EXPECT_EQ( text( done( codef, 386, kGet ) ), "2" );
   Zel::zelAttribute( codef, "initialized", Zel::OpCode::Set, { flag( false ) } );
   EXPECT_EQ( text( Zel::zelAttribute( codef, "initialized", Zel::OpCode::Get ) ), "false" );
}

TEST_F( DerivedCodefTest, TheBasesIdsAreNotItsOwnUntilItIsViewedAsTheBase ) {
   const Value codef = counting();
   Value result;
   EXPECT_EQ( op( result, codef, 136, kCall ), Zel::kNoAttribute );
   EXPECT_EQ( op( result, codef, 386, kSet, { flag( true ) } ), Zel::kUnsupported );
   const Zel::View base =
      Zel::zelViewAs( codef, Zel::zelTypeOf( "MoxVlanMapping::MoxVlanRangeMappingCodef" ) );
   EXPECT_EQ( Zel::genericIfAttributeOp( result, base, 136, kCall, {} ), Zel::kDone );
   EXPECT_EQ( Zel::genericIfAttributeOp( result, base, 386, kGet, {} ), Zel::kNoAttribute );
   ASSERT_NE( Zel::zelAttributeById( codef.type(), 136 ), nullptr );
   EXPECT_STREQ( Zel::zelAttributeById( codef.type(), 136 )->name, "drainBacklog" );
}

TEST_F( DerivedCodefTest, DescribedMethodsOfTheBaseStayUncallable ) {
   const Value codef = counting();
   EXPECT_THROW(
      Zel::zelAttribute( codef, "sortVlanRangeBySize", Zel::OpCode::Call, { intf( 7 ) } ),
      Zel::TypeException );
   EXPECT_THROW( Zel::zelAttribute( codef, "processVlanRange", Zel::OpCode::Call, { intf( 7 ) } ),
                 Zel::TypeException );
   EXPECT_EQ( text( done( codef, 386, kGet ) ), "0" );
   EXPECT_TRUE( rangeDir_->vlanRangeEntry().empty() );
}

}   // namespace
