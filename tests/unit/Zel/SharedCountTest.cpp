// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/SharedCount.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "tests/support/InThreads.h"
#include "tests/support/NoneLeftTest.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 5000;

class Shared : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "SharedCountTest::Shared";
   int number = 42;
};

class SharedCountTest : public TestSupport::NoneLeftTest {
 protected:
   ~SharedCountTest() override { Zel::threadSafePtrIs( false ); }
};

TEST_F( SharedCountTest, TheSwitchIsOffUntilItIsAskedFor ) {
   EXPECT_FALSE( Zel::threadSafePtr() );
   Zel::threadSafePtrIs( true );
   EXPECT_TRUE( Zel::threadSafePtr() );
   Zel::threadSafePtrIs( false );
   EXPECT_FALSE( Zel::threadSafePtr() );
}

TEST_F( SharedCountTest, CountsTheSameWithTheSwitchOnAndOff ) {
   for ( const bool on : { false, true } ) {
      Zel::threadSafePtrIs( on );
      Zel::SharedCount count( 1 );
      count.add( 5 );
      EXPECT_EQ( count.value(), 6 );
      EXPECT_EQ( count.subtract( 2 ), 4 );
      EXPECT_EQ( count.value(), 4 );
   }
}

TEST_F( SharedCountTest, CopiesMadeAndDroppedByThreadsLeaveTheCountExact ) {
   Zel::threadSafePtrIs( true );
   const auto shared = Zel::newEntity< Shared >();
   TestSupport::inThreads( kThreads, [ & ]( int ) {
      for ( int i = 0; i < kRounds; ++i ) {
         const Zel::Ptr< Shared > copy( shared );
         Zel::Ptr< const Shared > another( copy );
         another = nullptr;
      }
   } );
   EXPECT_EQ( shared->zelReferences(), 1 );
}

TEST_F( SharedCountTest, TheThreadThatDropsTheLastReferenceDestroysTheObject ) {
   Zel::threadSafePtrIs( true );
   for ( int round = 0; round < 200; ++round ) {
      auto shared = Zel::newEntity< Shared >();
      std::vector< std::thread > threads;
      for ( int i = 0; i < kThreads; ++i ) {
         threads.emplace_back(
            [ mine = shared ]() mutable { mine->number == 42 ? mine = nullptr : nullptr; } );
      }
      shared = nullptr;
      for ( std::thread& thread : threads ) {
         thread.join();
      }
   }
   EXPECT_EQ( Zel::allocationCount( "SharedCountTest::Shared" ).live, 0 );
}

TEST_F( SharedCountTest, ObjectsMadeAndDroppedByThreadsAreCountedExactly ) {
   Zel::threadSafePtrIs( true );
   const std::int64_t before = Zel::allocationCount( "SharedCountTest::Shared" ).total;
   TestSupport::inThreads( kThreads, []( int ) {
      for ( int i = 0; i < kRounds; ++i ) {
         const auto one = Zel::newEntity< Shared >();
         const auto two = Zel::newEntity< Shared >();
      }
   } );
   const Zel::AllocationCount count = Zel::allocationCount( "SharedCountTest::Shared" );
   EXPECT_EQ( count.live, 0 );
   EXPECT_EQ( count.total - before, 2 * kThreads * kRounds );
}

// A new process reads the environment again; the threadsafe style starts one.
class SharedCountDeathTest : public testing::Test {
 protected:
   SharedCountDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
   ~SharedCountDeathTest() override { ::unsetenv( "ZEL_THREAD_SAFE_PTR" ); }

   static void reportAndExit() {
      std::fputs( Zel::threadSafePtr() ? "switch on" : "switch off", stderr );
      std::exit( 0 );
   }
};

TEST_F( SharedCountDeathTest, TheEnvironmentSwitchesOn ) {
   ::setenv( "ZEL_THREAD_SAFE_PTR", "1", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ), "switch on" );
}

TEST_F( SharedCountDeathTest, AnythingElseInTheEnvironmentDoesNotSwitchOn ) {
   ::setenv( "ZEL_THREAD_SAFE_PTR", "yes", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ), "switch off" );
}

}   // namespace
