// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Lines and ring records of several threads at once.
#include <algorithm>
#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "Kirlog/PelrecMessage.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"
#include "tests/support/InThreads.h"
#include "tests/support/PelrecCapture.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/Pelrec/SmallTrace.h"

namespace {

constexpr char zelSourceTag[] = "tests/threads/TraceThreadsTest";
constexpr int kThreads = 4;
constexpr int kLines = 300;

std::string
lineOf( int thread, int line ) {
   return "thread " + std::to_string( thread ) + " line " + std::to_string( line );
}

class TraceThreadsTest : public testing::Test {
 protected:
   TraceThreadsTest() {
      Zel::traceLevelsIs( "*/" );
      Zel::traceSinkIs( []( const Zel::TraceLine& ) {} );
   }
   ~TraceThreadsTest() override {
      Zel::traceLevelsIs( "*/" );
      Zel::traceSinkIs( {} );
   }

   Zel::TraceHandle handle_{ "TraceThreadsTest", false };
};

TEST_F( TraceThreadsTest, EachLineReachesTheOneSinkWholeAndInTheOrderOfItsThread ) {
   TestSupport::TraceCapture capture( "TraceThreadsTest", "1" );
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      for ( int line = 0; line < kLines; ++line ) {
         ZEL_TRACE( handle_, 1, 7, "thread ", thread, " line ", line );
      }
   } );
   std::array< int, kThreads > next{};
   for ( const TestSupport::CapturedLine& line : capture.lines() ) {
      const auto thread =
         static_cast< std::size_t >( line.text.at( std::string( "thread " ).size() ) - '0' );
      EXPECT_EQ( line.text, lineOf( static_cast< int >( thread ), next.at( thread )++ ) );
   }
   EXPECT_EQ( capture.lines().size(), std::size_t{ kThreads } * kLines );
}

TEST_F( TraceThreadsTest, LevelsSinksAndHandlesChangeWhileOthersTrace ) {
   std::atomic< int > running = kThreads - 1;
   std::size_t characters = 0;   // the sink is called for one line at a time
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      if ( thread != 0 ) {
         for ( int line = 0; line < kLines; ++line ) {
            Zel::TraceHandle fresh( "TraceThreadsTest.Fresh", false );
            ZEL_TRACE( handle_, 1, 7, "line ", line );
            ZEL_TRACE( fresh, 2, 7, "line ", line );
            handle_.maskIs( 1u << 1 );
         }
         --running;
         return;
      }
      do {
         Zel::traceLevelsIs( "TraceThreadsTest/1;TraceThreadsTest.Fresh/2" );
         Zel::traceSinkIs(
            [ & ]( const Zel::TraceLine& line ) { characters += line.text.size(); } );
         EXPECT_EQ( std::ranges::count( Zel::traceHandles(), "TraceThreadsTest" ), 1 );
         Zel::traceSinkIs( []( const Zel::TraceLine& ) {} );
         Zel::traceLevelsIs( "*/" );
      } while ( running != 0 );
   } );
   EXPECT_EQ( std::ranges::count( Zel::traceHandles(), "TraceThreadsTest.Fresh" ), 0 );
}

TEST_F( TraceThreadsTest, ASinkThatWasReplacedIsNotCalledAnyMore ) {
   handle_.maskIs( 1u << 1 );
   std::atomic< bool > ended = false;
   TestSupport::inThreads( 2, [ & ]( int thread ) {
      while ( thread == 0 && !ended ) {
         ZEL_TRACE( handle_, 1, 7, "line" );
      }
      for ( int round = 0; thread == 1 && round < kLines; ++round ) {
         // Gone when the sink is: a call that still ran would count in what is no more.
         auto lines = std::make_unique< int >( 0 );
         Zel::traceSinkIs( [ &lines = *lines ]( const Zel::TraceLine& ) { ++lines; } );
         Zel::traceSinkIs( []( const Zel::TraceLine& ) {} );
         EXPECT_GE( *lines, 0 );
      }
      ended = ended || thread == 1;
   } );
}

TEST_F( TraceThreadsTest, ASinkMayReplaceItselfAndTraceAgain ) {
   handle_.maskIs( 1u << 1 );
   std::string seen;
   Zel::traceSinkIs( [ & ]( const Zel::TraceLine& line ) {
      seen += "first " + std::string( line.text ) + "; ";
      Zel::traceSinkIs( [ & ]( const Zel::TraceLine& next ) {
         seen += "second " + std::string( next.text ) + "; ";
      } );
      ZEL_TRACE( handle_, 1, 7, "inner" );
   } );
   ZEL_TRACE( handle_, 1, 7, "outer" );
   EXPECT_EQ( seen, "first outer; second inner; " );
}

constinit Kirlog::PelrecMessage< 5, "i" > written( "TraceThreadsTest written %s" );

TEST_F( TraceThreadsTest, RecordsOfAllThreadsStandInTheRingsWhole ) {
   const TestSupport::PelrecCapture records;
   constexpr int kEach = 1024 / kThreads;   // one ring takes them all
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      for ( int i = 0; i < kEach; ++i ) {
         written( thread * kEach + i );
      }
   } );
   std::set< std::string > expected;
   for ( int i = 0; i < kThreads * kEach; ++i ) {
      expected.insert( "TraceThreadsTest written " + std::to_string( i ) );
   }
   std::set< std::string > found;
   std::uint64_t sequence = 0;
   for ( const auto& record : Pelrec::Reader( Pelrec::trace().image() ).records( 5 ) ) {
      EXPECT_TRUE( sequence == 0 || record.sequence == sequence + 1 );
      sequence = record.sequence;
      found.insert( record.text );
   }
   EXPECT_EQ( found, expected );
}

TEST_F( TraceThreadsTest, FormatsEnteredAtOnceHaveOneIdEach ) {
   SmallTrace small;
   std::array< std::uint32_t, kThreads > ids{};
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      const std::string own = "own " + std::to_string( thread % 2 );
      small.trace().formatIs( own );
      ids.at( static_cast< std::size_t >( thread ) ) = small.trace().formatIs( "common" );
   } );
   for ( const std::uint32_t id : ids ) {
      EXPECT_EQ( id, ids.front() );
   }
   EXPECT_EQ( small.trace().formatIs( "no room" ), Pelrec::Trace::kNoRoomFormat )
      << "four entries: the one that stands for no room, two own ones, the common one";
}

class Silent : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "TraceThreadsTest::Silent";

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~Silent() override { zelDoZombieReactors( true ); }
   void processSortedVlanRange( Corvel::IntfId ) override {}
};

TEST_F( TraceThreadsTest, CodefsOfTwoThreadsShareTheRings ) {
   const TestSupport::PelrecCapture records;
   constexpr int kCodefs = 100;
   TestSupport::inThreads( 2, []( int ) {
      for ( int i = 0; i < kCodefs; ++i ) {
         const auto scheduler = Quen::taskSchedulerFactory( Zel::manualClockFactory() );
         const auto codef = Zel::newEntity< Silent >(
            nullptr, scheduler, MoxVlanMapping::vlanRangeEntryDirFactory(),
            MoxVlanMapping::vlanXlateScheduleDirFactory() );
         scheduler->runOnce();
      }
   } );
   std::string expected;
   for ( int i = 0; i < 2 * kCodefs; ++i ) {
      expected += "5 drainBacklog Marking codef completed\n";
   }
   EXPECT_EQ( records.text(), expected );
}

}   // namespace
