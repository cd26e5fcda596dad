// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Quen/Task.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "tests/unit/Quen/SchedulerFixture.h"

namespace {

using Quen::Task;
using Quen::TaskPriority;
using Quen::YieldPolicy;

class TaskTest : public TestQuen::SchedulerFixture {
 protected:
   TaskTest() : task_( make( "t", 7 ) ) {}

   Task& task_;
};
using TaskDeathTest = TaskTest;

TEST_F( TaskTest, IsMadeWithSchedulerPriorityAndName ) {
   EXPECT_EQ( task_.scheduler(), scheduler_ );
   EXPECT_EQ( task_.priority(), TaskPriority( 7 ) );
   EXPECT_EQ( task_.priority().value(), 7u );
   EXPECT_EQ( task_.name().str(), "t" );
   EXPECT_TRUE( task_.hasNotificationActive() );
}

TEST_F( TaskTest, PrioritiesCompareByTheirValue ) {
   EXPECT_TRUE( TaskPriority( 1 ) < TaskPriority( 2 ) );
   EXPECT_FALSE( TaskPriority( 2 ) < TaskPriority( 2 ) );
}

TEST_F( TaskTest, TheDefaultPriorityIsTheFirst ) {
   EXPECT_EQ( TaskPriority(), TaskPriority( 0 ) );
}

TEST_F( TaskTest, SchedulingOnlyQueues ) {
   task_.scheduleTask();
   EXPECT_TRUE( task_.scheduled() );
   EXPECT_EQ( log_, "" );
   EXPECT_TRUE( scheduler_->workWaiting() );
}

TEST_F( TaskTest, TwoRequestsBeforeARunGiveOneRun ) {
   task_.scheduleTask();
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
   EXPECT_FALSE( task_.scheduled() );
}

TEST_F( TaskTest, RequestsDuringItsOwnRunGiveOneMoreRun ) {
   bool first = true;
   work( "t" ) = [ & ] {
      EXPECT_FALSE( task_.scheduled() );
      if ( first ) {
         first = false;
         task_.scheduleTask();
         task_.scheduleTask();
         EXPECT_TRUE( task_.scheduled() );
      }
   };
   task_.scheduleTask();
   EXPECT_EQ( run(), "tt" );
}

TEST_F( TaskTest, WithoutAWorkerARunDoesNothing ) {
   reactors_.clear();
   task_.scheduleTask();
   EXPECT_EQ( run(), "" );
   EXPECT_FALSE( task_.scheduled() );
}

TEST_F( TaskTest, CountsItsWork ) {
   EXPECT_EQ( task_.taskWorkCount(), 0u );
   EXPECT_EQ( task_.taskWorkPending(), 0u );
   task_.taskWorkCountInc( 3 );
   task_.taskWorkCountInc( 4 );
   task_.taskWorkPendingIs( 9 );
   task_.taskWorkPendingIs( 2 );
   EXPECT_EQ( task_.taskWorkCount(), 7u );
   EXPECT_EQ( task_.taskWorkPending(), 2u );
}

TEST_F( TaskTest, HasTenMillisecondsUntilItIsGivenAQuantum ) {
   EXPECT_EQ( task_.taskQuantum(), 0.01 );
   task_.taskQuantumIs( 0.1 );
   EXPECT_EQ( task_.taskQuantum(), 0.1 );
}

TEST_F( TaskTest, YieldsExactlyAtItsQuantum ) {
   task_.taskQuantumIs( 0.5 );
   work( "t" ) = [ & ] {
      EXPECT_FALSE( task_.taskShouldYield() );
      clock_->advance( 0.25 );
      EXPECT_FALSE( task_.taskShouldYield() );
      clock_->advance( 0.25 );
      EXPECT_TRUE( task_.taskShouldYield() );
      clock_->advance( 1 );
      EXPECT_TRUE( task_.taskShouldYield() );
   };
   clock_->advance( 3 );
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
}

TEST_F( TaskTest, EachRunHasAFullQuantum ) {
   task_.taskQuantumIs( 0.5 );
   std::string answers;
   work( "t" ) = [ & ] {
      clock_->advance( 0.375 );
      answers += task_.taskShouldYield() ? 'y' : 'n';
      if ( answers.size() < 3 ) {
         task_.scheduleTask();
      }
   };
   task_.scheduleTask();
   run();
   EXPECT_EQ( answers, "nnn" );
}

TEST_F( TaskTest, AQuantumOfZeroYieldsAtOnce ) {
   task_.taskQuantumIs( 0 );
   work( "t" ) = [ & ] { EXPECT_TRUE( task_.taskShouldYield() ); };
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
}

TEST_F( TaskTest, OutsideOfARunTheQuantumDoesNotTick ) {
   clock_->advance( 100 );
   EXPECT_FALSE( task_.taskShouldYield() );
   task_.scheduleTask();
   run();
   clock_->advance( 100 );
   EXPECT_FALSE( task_.taskShouldYield() );
}

TEST_F( TaskTest, ARunThatThrowsHasEnded ) {
   work( "t" ) = [] { throw std::runtime_error( "from t" ); };
   task_.scheduleTask();
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   clock_->advance( 100 );
   EXPECT_FALSE( task_.taskShouldYield() );
}

TEST_F( TaskTest, ThePolicyIsTheQuantumAtFirst ) {
   EXPECT_EQ( scheduler_->yieldPolicy(), YieldPolicy::Quantum );
   EXPECT_EQ( scheduler_->yieldTestsAllowed(), 0u );
}

TEST_F( TaskTest, UnderAlwaysItYieldsWhateverTheClockSays ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Always );
   work( "t" ) = [ & ] { EXPECT_TRUE( task_.taskShouldYield() ); };
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
}

TEST_F( TaskTest, UnderNeverItDoesNotYieldWhateverTheClockSays ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Never );
   work( "t" ) = [ & ] {
      clock_->advance( 100 );
      EXPECT_FALSE( task_.taskShouldYield() );
   };
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
}

TEST_F( TaskTest, UnderAfterTestsItYieldsFromTheNextTestOnInEachRun ) {
   scheduler_->yieldPolicyIs( YieldPolicy::AfterTests, 2 );
   EXPECT_EQ( scheduler_->yieldTestsAllowed(), 2u );
   std::string answers;
   work( "t" ) = [ & ] {
      for ( int i = 0; i < 4; ++i ) {
         answers += task_.taskShouldYield() ? 'y' : 'n';
      }
      if ( answers.size() < 8 ) {
         task_.scheduleTask();
      }
   };
   task_.scheduleTask();
   EXPECT_EQ( run(), "tt" );
   EXPECT_EQ( answers, "nnyynnyy" );
}

TEST_F( TaskTest, UnderAfterTestsItYieldsAtOnceUnlessTestsAreAllowed ) {
   scheduler_->yieldPolicyIs( YieldPolicy::AfterTests );
   work( "t" ) = [ & ] { EXPECT_TRUE( task_.taskShouldYield() ); };
   task_.scheduleTask();
   EXPECT_EQ( run(), "t" );
}

TEST_F( TaskDeathTest, WithoutASchedulerAborts ) {
   EXPECT_DEATH( Quen::taskFactory( nullptr, TaskPriority( 1 ), "lost" ),
                 "Quen/Task:[0-9]+: .*: Assertion `scheduler_' failed\\." );
}

TEST_F( TaskTest, ANegativeQuantumIsRefused ) {
   const Zel::Seconds before = task_.taskQuantum();
   try {
      task_.taskQuantumIs( -0.1 );
      FAIL() << "nothing was thrown";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(), "Quen::Task::taskQuantum < 0 not allowed" );
   }
   EXPECT_EQ( task_.taskQuantum(), before );
}

}   // namespace
