// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Allocation counts while threads make and drop objects of their own.
#include <atomic>
#include <cstdint>
#include <stdexcept>

#include <gtest/gtest.h>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "Zel/PtrInterface.h"
#include "tests/support/InThreads.h"
#include "tests/support/NoneLeftTest.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 5000;
constexpr char kName[] = "CountsThreadsTest::Thing";

class Thing : public Zel::PtrInterface {
 public:
   static constexpr const char* zelTypeName = kName;
   explicit Thing( bool fails = false ) {
      if ( fails ) {
         throw std::runtime_error( "no" );
      }
   }
};

using CountsThreadsTest = TestSupport::NoneLeftTest;

TEST_F( CountsThreadsTest, CountsOfAllThreadsAddUpWithoutTheSwitch ) {
   const std::int64_t before = Zel::allocationCount( kName ).total;
   TestSupport::inThreads( kThreads, []( int ) {
      for ( int i = 0; i < kRounds; ++i ) {
         const auto one = Zel::newEntity< Thing >();
         EXPECT_THROW( Zel::newEntity< Thing >( true ), std::runtime_error );
      }
   } );
   EXPECT_EQ( Zel::allocationCount( kName ).live, 0 );
   EXPECT_EQ( Zel::allocationCount( kName ).total - before, kThreads * kRounds );
}

TEST_F( CountsThreadsTest, CountsMayBeReadWhileOthersRun ) {
   const std::int64_t before = Zel::allocationCount( kName ).total;
   std::atomic< int > running = kThreads - 1;
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      if ( thread != 0 ) {
         for ( int i = 0; i < kRounds; ++i ) {
            const auto one = Zel::newEntity< Thing >();
         }
         --running;
         return;
      }
      for ( std::int64_t seen = before; running != 0; ) {
         const std::int64_t total = Zel::allocationCount( kName ).total;
         EXPECT_GE( total, seen );
         seen = total;
         for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
            if ( count.typeName == kName ) {
               EXPECT_GE( count.total, seen );
               seen = count.total;
            }
         }
      }
   } );
   EXPECT_EQ( Zel::allocationCount( kName ).total - before, ( kThreads - 1 ) * kRounds );
}

}   // namespace
