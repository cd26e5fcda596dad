// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/RangeProgrammer.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/NewEntity.h"
#include "agent/MemoryDataPlane.h"
#include "tests/support/Chain.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/unit/agent/ProgramText.h"

namespace Agent {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;

const IntfId kPort( 1 );

// A data plane that refuses every program while told to.
class FailingDataPlane : public MemoryDataPlane {
 public:
   using MemoryDataPlane::MemoryDataPlane;
   void portProgramIs( IntfId port, PortProgram program ) override {
      if ( fails ) {
         throw std::runtime_error( "hardware is gone" );
      }
      MemoryDataPlane::portProgramIs( port, std::move( program ) );
   }
   bool fails = false;
};

class RangeProgrammerTest : public TestSupport::NoneLeftTest, protected TestSupport::Chain {
 protected:
   void add( unsigned low, unsigned high, std::uint16_t relay ) {
      for ( unsigned vlan = low; vlan <= high; ++vlan ) {
         mgr_->addVlanToIdx( kPort, VlanId( vlan ), VlanXlateMapping::fromRaw( relay ) );
      }
      scheduleDir_->vlanXlateScheduleIs( kPort );
   }
   void del( unsigned vlan ) {
      mgr_->deleteVlanFromIdx( kPort, VlanId( vlan ) );
      scheduleDir_->vlanXlateScheduleIs( kPort );
   }
   std::string programmed() {
      scheduler_->runUntilIdle();
      return textOf( plane_.portProgram( kPort ) );
   }

   FailingDataPlane plane_{ 2 };
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   const Zel::Ptr< RangeProgrammer > programmer_ =
      Zel::newEntity< RangeProgrammer >( acsd_, scheduler_, rangeDir_, scheduleDir_, plane_ );
};

TEST_F( RangeProgrammerTest, givesTheLargestRangesTheRangeEntriesAndTheOthersExactOnes ) {
   add( 50, 50, 7 );
   add( 100, 120, 8 );
   add( 200, 230, 9 );
   add( 300, 301, 6 );
   EXPECT_EQ( programmed(), "ranges: 200-230>9 100-120>8 exact: 300>6 301>6 50>7" );
}

TEST_F( RangeProgrammerTest, singleIdsTakeRangeEntriesToo ) {
   add( 50, 50, 7 );
   add( 52, 52, 7 );
   EXPECT_EQ( programmed(), "ranges: 50-50>7 52-52>7 exact:" );
}

TEST_F( RangeProgrammerTest, reachesBothEndsOfTheVlans ) {
   add( 1, 1, 3 );
   add( 10, 11, 3 );
   add( 20, 21, 3 );
   add( 4094, 4094, 3 );
   EXPECT_EQ( programmed(), "ranges: 10-11>3 20-21>3 exact: 1>3 4094>3" );
}

TEST_F( RangeProgrammerTest, replacesAllEntriesOfThePort ) {
   add( 10, 11, 3 );
   add( 20, 22, 4 );
   add( 30, 30, 5 );
   ASSERT_EQ( programmed(), "ranges: 20-22>4 10-11>3 exact: 30>5" );
   del( 21 );
   EXPECT_EQ( programmed(), "ranges: 10-11>3 20-20>4 exact: 22>4 30>5" );
}

TEST_F( RangeProgrammerTest, aPortWithoutRangesIsLeftWithoutEntries ) {
   add( 10, 10, 3 );
   ASSERT_EQ( programmed(), "ranges: 10-10>3 exact:" );
   del( 10 );
   EXPECT_EQ( programmed(), "ranges: exact:" );
}

TEST_F( RangeProgrammerTest, aPortThatTheHardwareRefusedStaysScheduledAndIsTriedAgain ) {
   add( 10, 10, 3 );
   plane_.fails = true;
   EXPECT_THROW( scheduler_->runUntilIdle(), std::runtime_error );
   EXPECT_EQ( textOf( plane_.portProgram( kPort ) ), "ranges: exact:" );
   EXPECT_EQ( scheduleDir_->vlanXlateSchedule().size(), 1u );
   plane_.fails = false;
   scheduleDir_->vlanXlateScheduleIs( IntfId( 2 ) );
   EXPECT_EQ( programmed(), "ranges: 10-10>3 exact:" );
   EXPECT_EQ( scheduleDir_->vlanXlateSchedule().size(), 0u );
}

TEST_F( RangeProgrammerTest, progressCountsFromTheLastTime ) {
   add( 10, 10, 3 );
   scheduler_->runUntilIdle();
   const RangeProgrammer::Progress first = programmer_->takeProgress();
   EXPECT_EQ( first.completed, 1u );
   EXPECT_EQ( first.handed, std::vector{ kPort } );
   const RangeProgrammer::Progress second = programmer_->takeProgress();
   EXPECT_EQ( second.completed, 0u );
   EXPECT_TRUE( second.handed.empty() );
}

}   // namespace
}   // namespace Agent
