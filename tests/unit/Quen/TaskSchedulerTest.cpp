// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Quen/TaskScheduler.h"

#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/OperatorNew.h"
#include "tests/unit/Quen/SchedulerFixture.h"

namespace {

using Quen::TaskScheduler;

// Counts how often the loop would be woken.
struct Loop {
   int woken = 0;
};
class LoopReactor : public Zel::Reactor< TaskScheduler, Loop > {
 public:
   static constexpr char zelTypeName[] = "TaskSchedulerTest::LoopReactor";
   void onAttribute( Zel::AttributeId attribute, const void* ) override {
      EXPECT_EQ( attribute, TaskScheduler::kWorkWaiting );
      ++owner()->woken;
      EXPECT_TRUE( notifier()->workWaiting() );
   }

 protected:
   using Reactor::Reactor;
};

class TaskSchedulerTest : public TestQuen::SchedulerFixture {
 protected:
   TaskSchedulerTest() {
      for ( const char* name : { "a", "b", "c" } ) {
         make( name );
      }
   }
};
using TaskSchedulerDeathTest = TaskSchedulerTest;

TEST_F( TaskSchedulerTest, HasNothingToRunAtFirst ) {
   EXPECT_FALSE( scheduler_->workWaiting() );
   EXPECT_EQ( scheduler_->tasksScheduled(), 0u );
   EXPECT_FALSE( scheduler_->runOnce() );
   EXPECT_EQ( scheduler_->runUntilIdle(), 0u );
}

TEST_F( TaskSchedulerTest, KeepsItsClock ) {
   EXPECT_EQ( TaskScheduler::TaskSchedulerIs( clock_ )->clock(), clock_ );
}

TEST_F( TaskSchedulerTest, RunsEqualPrioritiesInOrderOfTheirRequests ) {
   schedule( "bca" );
   EXPECT_EQ( run(), "bca" );
}

TEST_F( TaskSchedulerTest, RunsTheLowestPriorityValueFirst ) {
   make( "x", 1 );
   make( "y", 20 );
   schedule( "yabx" );
   EXPECT_EQ( run(), "xaby" );
}

TEST_F( TaskSchedulerTest, EqualPrioritiesTakeTurnsWhenEachAsksAgain ) {
   int runs = 0;
   for ( const char* name : { "a", "b", "c" } ) {
      work( name ) = [ this, name, &runs ] {
         if ( ++runs <= 6 ) {
            task( name ).scheduleTask();
         }
      };
   }
   schedule( "abc" );
   EXPECT_EQ( run(), "abcabcabc" );
}

TEST_F( TaskSchedulerTest, AnUrgentTaskAskedForInsideARunComesNext ) {
   make( "x", 1 );
   work( "a" ) = [ & ] { schedule( "x" ); };
   schedule( "abc" );
   EXPECT_EQ( run(), "axbc" );
}

TEST_F( TaskSchedulerTest, RunOnceRunsOneTask ) {
   schedule( "ab" );
   EXPECT_TRUE( scheduler_->runOnce() );
   EXPECT_EQ( log_, "a" );
   EXPECT_EQ( scheduler_->tasksScheduled(), 1u );
   EXPECT_TRUE( scheduler_->runOnce() );
   EXPECT_FALSE( scheduler_->runOnce() );
   EXPECT_EQ( log_, "ab" );
}

TEST_F( TaskSchedulerTest, ARequestNeedsNoMemory ) {
   const auto before = TestSupport::newRequests();
   task( "a" ).scheduleTask();
   task( "b" ).scheduleTask();
   task( "c" ).scheduleTask();
   EXPECT_EQ( TestSupport::newRequests(), before );
   EXPECT_EQ( run(), "abc" );
}

TEST_F( TaskSchedulerTest, RunUntilIdleCountsItsRuns ) {
   schedule( "ab" );
   EXPECT_EQ( scheduler_->runUntilIdle(), 2u );
}

TEST_F( TaskSchedulerTest, TellsTheLoopWhenTheFirstTaskIsQueued ) {
   Loop loop;
   const auto reactor = Zel::newEntity< LoopReactor >( scheduler_, &loop );
   schedule( "a" );
   EXPECT_EQ( loop.woken, 1 );
   schedule( "ab" );
   EXPECT_EQ( loop.woken, 1 );
   run();
   schedule( "c" );
   EXPECT_EQ( loop.woken, 2 );
}

TEST_F( TaskSchedulerTest, TellsTheLoopOfARequestMadeInsideARun ) {
   Loop loop;
   const auto reactor = Zel::newEntity< LoopReactor >( scheduler_, &loop );
   work( "a" ) = [ & ] { schedule( "b" ); };
   schedule( "a" );
   scheduler_->runOnce();
   EXPECT_EQ( loop.woken, 2 );
   EXPECT_TRUE( scheduler_->workWaiting() );
}

TEST_F( TaskSchedulerTest, ARunInsideARunIsRefused ) {
   work( "a" ) = [ & ] {
      EXPECT_FALSE( scheduler_->runOnce() );
      EXPECT_EQ( scheduler_->runUntilIdle(), 0u );
      log_ += ".";
   };
   schedule( "ab" );
   EXPECT_EQ( run(), "a.b" );
}

TEST_F( TaskSchedulerTest, AnExceptionReachesTheCallerOfRunOnceAndTheTaskIsQueuedAgain ) {
   work( "a" ) = [] { throw std::runtime_error( "from a" ); };
   schedule( "ab" );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_TRUE( task( "a" ).scheduled() );
   EXPECT_EQ( scheduler_->tasksScheduled(), 2u );
}

TEST_F( TaskSchedulerTest, StaysUsableAfterAnException ) {
   work( "a" ) = [] { throw std::runtime_error( "from a" ); };
   schedule( "ab" );
   EXPECT_THROW( scheduler_->runUntilIdle(), std::runtime_error );
   work( "a" ) = {};
   EXPECT_EQ( run(), "ba" );
}

TEST_F( TaskSchedulerTest, ATaskThatThrowsAfterAskingAgainIsQueuedOnce ) {
   work( "a" ) = [ & ] {
      schedule( "a" );
      throw std::runtime_error( "from a" );
   };
   schedule( "a" );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_EQ( scheduler_->tasksScheduled(), 1u );
}

TEST_F( TaskSchedulerTest, ATaskThatGoesWhileQueuedDoesNotRun ) {
   schedule( "abc" );
   drop( "b" );
   EXPECT_EQ( scheduler_->tasksScheduled(), 2u );
   EXPECT_EQ( run(), "ac" );
}

TEST_F( TaskSchedulerTest, ATaskMayGoInsideItsOwnRun ) {
   work( "a" ) = [ & ] { drop( "a" ); };
   schedule( "ab" );
   EXPECT_EQ( run(), "ab" );
   EXPECT_EQ( Zel::allocationCount( "Quen::Task" ).live, 2 );
}

TEST_F( TaskSchedulerTest, ATaskThatGoesInsideItsOwnRunIsNotQueuedAgain ) {
   work( "a" ) = [ & ] {
      schedule( "a" );
      drop( "a" );
      throw std::runtime_error( "from a" );
   };
   schedule( "a" );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_FALSE( scheduler_->workWaiting() );
}

TEST_F( TaskSchedulerTest, ATaskMayTakeAnotherOutOfTheQueue ) {
   work( "a" ) = [ & ] { drop( "b" ); };
   schedule( "abc" );
   EXPECT_EQ( run(), "ac" );
}

// The run goes through a plain pointer here: only the scheduler itself keeps itself alive.
TEST_F( TaskSchedulerTest, MayLoseItsLastReferenceInsideARun ) {
   work( "a" ) = [ & ] {
      scheduler_ = nullptr;
      for ( const char* name : { "a", "b", "c" } ) {
         drop( name );
      }
   };
   schedule( "ab" );
   TaskScheduler* const raw = scheduler_.get();
   EXPECT_EQ( raw->runUntilIdle(), 1u );
   EXPECT_EQ( log_, "a" );
   EXPECT_EQ( Zel::allocationCount( "Quen::TaskScheduler" ).live, 0 );
}

TEST_F( TaskSchedulerTest, TasksHoldTheirScheduler ) {
   scheduler_ = nullptr;
   EXPECT_EQ( Zel::allocationCount( "Quen::TaskScheduler" ).live, 1 );
   schedule( "a" );
   EXPECT_TRUE( task( "a" ).scheduler()->runOnce() );
}

TEST_F( TaskSchedulerTest, ManyTasksOfManyPrioritiesRunInOrder ) {
   std::string expected;
   for ( std::uint8_t priority = 0; priority < 26; ++priority ) {
      expected += static_cast< char >( 'A' + priority );
      make( std::string( 1, expected.back() ), priority );
   }
   for ( std::uint8_t i = 0; i < 26; ++i ) {
      schedule( std::string( 1, static_cast< char >( 'A' + i * 7 % 26 ) ) );
   }
   EXPECT_EQ( run(), expected );
}

// Enough of them that a heap or a sort that does not keep the order would show.
TEST_F( TaskSchedulerTest, ManyTasksOfOnePriorityRunInOrderOfTheirRequests ) {
   for ( const char name : std::string( "ABCDEFGHIJKLMNOPQRSTUVWXYZ" ) ) {
      make( std::string( 1, name ), 10 );
   }
   make( "u", 1 );
   make( "v", 1 );
   make( "y", 20 );
   make( "z", 20 );
   schedule( "zQWEyRTZUvIOPASDuFGHJKLYXCVBNM" );
   EXPECT_EQ( run(), "vuQWERTZUIOPASDFGHJKLYXCVBNMzy" );
}

TEST_F( TaskSchedulerDeathTest, WithoutAClockAborts ) {
   EXPECT_DEATH( Quen::taskSchedulerFactory( nullptr ),
                 "Quen/TaskScheduler:[0-9]+: .*: Assertion `clock_' failed\\." );
}

}   // namespace
