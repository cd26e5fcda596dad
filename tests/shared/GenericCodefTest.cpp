// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The codef's operations through the built library, on a derived class outside of it. The class
// is compiled against the library; everything else goes by names.
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/GenericIf.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"

namespace {

using Zel::OpCode;
using Zel::Value;

class Collector : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Collector";
   void processSortedVlanRange( Corvel::IntfId intfId ) override {
      heard += std::to_string( intfId.value() ) + "\n";
   }
   void vlanXlateCodefComplete() override { heard += "complete\n"; }
   std::string heard;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~Collector() override { zelDoZombieReactors( true ); }
};

Value
made( const std::string& type, std::initializer_list< Value > arguments = {} ) {
   return Zel::zelConstruct( Zel::zelTypeOf( type ), arguments );
}

class SharedCodefTest : public TestSupport::NoneLeftTest {
 protected:
   using Codef = MoxVlanMapping::MoxVlanRangeMappingCodef;

   Value codef() const { return Value::of( collector_ ); }
   Value call( const std::string& method, std::initializer_list< Value > arguments = {} ) const {
      return Zel::zelAttribute( codef(), method, OpCode::Call, arguments );
   }
   Value get( const Value& object, const std::string& attribute ) const {
      return Zel::zelAttribute( object, attribute, OpCode::Get );
   }
   static Value port( const std::string& number ) {
      return Zel::zelParse( "Corvel::IntfId", number );
   }
   bool waits( const std::string& number ) const {
      return Zel::zelAttribute( schedule_, "vlanXlateSchedule", OpCode::Has, { port( number ) } )
         .as< bool >();
   }

   const Value scheduler_ = made( "Quen::TaskScheduler", { made( "Zel::ManualClock" ) } );
   const Value acsd_ = made( "Mox::MoxCommonSmData" );
   const Value ranges_ = made( "MoxVlanMapping::VlanRangeEntryDir" );
   const Value schedule_ = made( "MoxVlanMapping::VlanXlateScheduleDir" );
   const Zel::Ptr< Collector > collector_ = Zel::newEntity< Collector >(
      acsd_.entity< Mox::MoxCommonSmData >(), scheduler_.entity< Quen::TaskScheduler >(),
      ranges_.entity< MoxVlanMapping::VlanRangeEntryDir >(),
      schedule_.entity< MoxVlanMapping::VlanXlateScheduleDir >() );
};

TEST_F( SharedCodefTest, DrainBacklogHandsOverEachScheduledInterface ) {
   for ( const char* number : { "8", "7" } ) {
      Zel::zelAttribute( schedule_, "vlanXlateSchedule", OpCode::Set,
                         { port( number ), Value::of( true ) } );
   }
   call( "drainBacklog" );
   call( "drainBacklog" );
   EXPECT_EQ( collector_->heard, "8\n7\ncomplete\n" );
   const Value task = get( codef(), "task" );
   EXPECT_EQ( get( task, "taskWorkCount" ).as< std::uint64_t >(), 2u );
}

TEST_F( SharedCodefTest, CompleteAndProcessReachTheDerivedClass ) {
   call( "vlanXlateCodefComplete" );
   call( "processSortedVlanRange", { port( "9" ) } );
   EXPECT_EQ( collector_->heard, "complete\n9\n" );
}

TEST_F( SharedCodefTest, HandlePortToLagSchedulesThePort ) {
   Zel::zelAttribute( acsd_, "portToLag", OpCode::Set, { port( "8" ), port( "100" ) } );
   call( "handlePortToLag", { port( "8" ) } );
   call( "handlePortToLag", { port( "7" ) } );
   EXPECT_TRUE( waits( "7" ) );
   EXPECT_FALSE( waits( "8" ) );
}

TEST_F( SharedCodefTest, HandleInitializedAsksForTheTaskUnlessItWasCalledBefore ) {
   Zel::zelAttribute( scheduler_, "runUntilIdle", OpCode::Call );
   const Value task = get( codef(), "task" );
   call( "handleInitialized" );
   EXPECT_FALSE( get( task, "scheduled" ).as< bool >() );
   Zel::zelAttribute( codef(), "initialized", OpCode::Set, { Value::of( false ) } );
   call( "handleInitialized" );
   EXPECT_TRUE( get( task, "scheduled" ).as< bool >() );
   EXPECT_TRUE( get( codef(), "initialized" ).as< bool >() );
}

}   // namespace
