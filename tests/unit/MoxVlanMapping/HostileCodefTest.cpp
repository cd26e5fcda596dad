// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Derived classes that throw and meddle from inside processSortedVlanRange(), under every yield
// policy: nothing is lost, skipped, visited twice or left dangling.
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>

#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Corvel::IntfId;
using Quen::YieldPolicy;

struct PolicyRow {
   const char* name;
   YieldPolicy policy;
   std::uint64_t tests;

   friend void PrintTo( const PolicyRow& row, std::ostream* out ) { *out << row.name; }
};

class HostileCodefTest : public CodefTest, public testing::WithParamInterface< PolicyRow > {
 protected:
   HostileCodefTest() {
      settle();
      scheduler_->yieldPolicyIs( GetParam().policy, GetParam().tests );
   }

   /// Every processing takes a third of a quantum; `act` is done when interface `intf` is
   /// processed for the first time.
   void when( std::uint64_t intf, std::function< void() > act ) {
      codef_->processIs( [ this, intf, act, done = false ]( IntfId processed ) mutable {
         clock_->advance( 0.04 );
         if ( !done && processed == IntfId( intf ) ) {
            done = true;
            act();
         }
      } );
   }
   /// Runs until idle; exceptions from runs are counted and survived.
   std::string drained() {
      throws_ = 0;
      while ( scheduler_->workWaiting() ) {
         try {
            scheduler_->runOnce();
         } catch ( const std::runtime_error& ) {
            ++throws_;
         }
      }
      return codef_ ? codef_->record() : "";
   }

   int throws_ = 0;
};

TEST_P( HostileCodefTest, WithoutMeddlingEachIsHandedOverOnce ) {
   when( 0, [] {} );
   schedule( { 1, 2, 3, 4, 5 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \n4: \n5: \ncomplete\n" );
   EXPECT_EQ( work(), "done 5, pending 0" );
}

struct Throw {
   [[noreturn]] void operator()() const { throw std::runtime_error( "hardware" ); }
};

TEST_P( HostileCodefTest, ThrowingAtTheFirstLosesNothing ) {
   when( 1, Throw() );
   schedule( { 1, 2, 3 } );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_EQ( codef_->record(), "1: \n" );
   EXPECT_EQ( waiting(), "1, 2, 3" );
   EXPECT_EQ( work(), "done 0, pending 3, scheduled" );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( work(), "done 3, pending 0" );
   EXPECT_EQ( throws_, 0 );
}

TEST_P( HostileCodefTest, ThrowingInTheMiddleLosesNothing ) {
   when( 2, Throw() );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( throws_, 1 );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

TEST_P( HostileCodefTest, ThrowingInTheMiddleCountsWhatWasDone ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Never );
   when( 2, Throw() );
   schedule( { 1, 2, 3 } );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_EQ( waiting(), "2, 3" );
   EXPECT_EQ( work(), "done 1, pending 2, scheduled" );
}

TEST_P( HostileCodefTest, ThrowingAtTheLastLosesNothing ) {
   when( 3, Throw() );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \n3: \ncomplete\n" );
   EXPECT_EQ( throws_, 1 );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

TEST_P( HostileCodefTest, ThrowingEachTimeKeepsTheInterfaceWaiting ) {
   codef_->processIs( []( IntfId ) { Throw()(); } );
   schedule( { 1, 2 } );
   for ( int i = 0; i < 5; ++i ) {
      EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
      EXPECT_EQ( work(), "done 0, pending 2, scheduled" );
   }
   EXPECT_EQ( waiting(), "1, 2" );
   codef_->processIs( {} );
   codef_->record();
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
}

TEST_P( HostileCodefTest, ThrowingFromCompletionIsFollowedByAnother ) {
   codef_->completeIs( [ this ] {
      codef_->completeIs( {} );
      Throw()();
   } );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: \ncomplete\ncomplete\n" );
   EXPECT_EQ( throws_, 1 );
}

TEST_P( HostileCodefTest, SchedulingOthersPutsThemBehindTheWaitingOnes ) {
   when( 1, [ this ] { schedule( { 3, 4, 2 } ); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \n4: \ncomplete\n" );
   EXPECT_EQ( work(), "done 4, pending 0" );
}

TEST_P( HostileCodefTest, SchedulingOthersFromTheLastOneIsHeard ) {
   when( 2, [ this ] { schedule( { 3 } ); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
}

TEST_P( HostileCodefTest, SchedulingThoseDoneAlreadyHandsThemOverAgain ) {
   when( 2, [ this ] { schedule( { 1 } ); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \n1: \ncomplete\n" );
   EXPECT_EQ( work(), "done 4, pending 0" );
}

TEST_P( HostileCodefTest, SchedulingManyMakesTheSetGrowUnderTheWalk ) {
   std::string expected = "1: \n2: \n";
   for ( int i = 100; i < 300; ++i ) {
      expected += std::to_string( i ) + ": \n";
   }
   when( 1, [ this ] {
      for ( std::uint64_t i = 100; i < 300; ++i ) {
         schedule( { i } );
      }
   } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), expected + "complete\n" );
   EXPECT_EQ( work(), "done 202, pending 0" );
}

// A mark is taken away behind the processing, so one that is made meanwhile goes with it.
TEST_P( HostileCodefTest, AMarkForTheInterfaceItselfIsAbsorbed ) {
   when( 1, [ this ] {
      add( 1, 10, 'M' );
      schedule( { 1 } );
   } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
   EXPECT_EQ( work(), "done 2, pending 0" );
   EXPECT_EQ( sorted( 1 ), "" );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: 10-10 M\ncomplete\n" );
}

TEST_P( HostileCodefTest, AMarkForTheLastOneMadeAtCompletionIsKept ) {
   codef_->completeIs( [ this ] {
      codef_->completeIs( {} );
      schedule( { 1 } );
   } );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: \ncomplete\n1: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingAWaitingOneSparesTheOthers ) {
   when( 1, [ this ] { unschedule( 2 ); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n3: \ncomplete\n" );
   EXPECT_EQ( work(), "done 2, pending 0" );
}

TEST_P( HostileCodefTest, DeletingSeveralWaitingOnesSparesTheOthers ) {
   when( 2, [ this ] {
      unschedule( 3 );
      unschedule( 4 );
      unschedule( 6 );
   } );
   schedule( { 1, 2, 3, 4, 5, 6 } );
   EXPECT_EQ( drained(), "1: \n2: \n5: \ncomplete\n" );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

TEST_P( HostileCodefTest, DeletingOneThatIsDoneChangesNothing ) {
   when( 2, [ this ] { unschedule( 1 ); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingItselfGoesOnWithTheNext ) {
   when( 2, [ this ] { unschedule( 2 ); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

TEST_P( HostileCodefTest, DeletingItselfAsTheLastIsComplete ) {
   when( 1, [ this ] { unschedule( 1 ); } );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingItselfAndThrowingLosesNoOther ) {
   when( 2, [ this ] {
      unschedule( 2 );
      Throw()();
   } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( throws_, 1 );
}

// Its new mark stands behind the others; the deletion behind the processing takes it.
TEST_P( HostileCodefTest, DeletingAndSchedulingItselfAgainIsAbsorbedToo ) {
   when( 1, [ this ] {
      unschedule( 1 );
      schedule( { 1 } );
   } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingAllEndsTheDrain ) {
   when( 2, [ this ] { scheduleDir_->vlanXlateScheduleDelAll(); } );
   schedule( { 1, 2, 3, 4 } );
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
   EXPECT_EQ( work(), "done 2, pending 0" );
}

TEST_P( HostileCodefTest, DeletingAWaitingOneAndSchedulingItAgainHandsItOverOnce ) {
   when( 1, [ this ] {
      unschedule( 2 );
      schedule( { 2 } );
   } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n3: \n2: \ncomplete\n" );
}

TEST_P( HostileCodefTest, ChangingTheRangesOfTheInterfaceShowsAtTheNextSort ) {
   given( 1, "10-20 M, 30-30 M" );
   when( 1, [ this ] {
      del( 1, 15 );
      add( 1, 31, 'M' );
   } );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: 10-20 M, 30-30 M\ncomplete\n" );
   EXPECT_EQ( sorted( 1 ), "10-20 M, 30-30 M" );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: 10-14 M, 16-20 M, 30-31 M\ncomplete\n" );
}

TEST_P( HostileCodefTest, ChangingTheRangesOfAWaitingInterfaceShowsAtOnce ) {
   given( 2, "10-20 M" );
   when( 1, [ this ] { del( 2, 15 ); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: 10-14 M, 16-20 M\ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingTheEntriesOfTheInterfaceLeavesNothingDangling ) {
   given( 1, "10-20 M" );
   given( 2, "30-40 M" );
   when( 1, [ this ] {
      rangeDir_->vlanRangeEntryDel( IntfId( 1 ) );
      codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDel( IntfId( 1 ) );
   } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: 10-20 M\n2: 30-40 M\ncomplete\n" );
   EXPECT_EQ( rangeEntries(), "2" );
   EXPECT_EQ( scaleEntries(), "2" );
   schedule( { 1 } );
   EXPECT_EQ( drained(), "1: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DeletingAllEntriesLeavesNothingDangling ) {
   given( 1, "10-20 M" );
   given( 2, "30-40 M" );
   when( 1, [ this ] {
      rangeDir_->vlanRangeEntryDelAll();
      codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDelAll();
   } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: 10-20 M\n2: \ncomplete\n" );
   EXPECT_EQ( rangeEntries(), "2" );
}

TEST_P( HostileCodefTest, ReplacingTheScaleEntryDirectoryIsSeenByTheNext ) {
   given( 1, "10-20 M" );
   given( 2, "30-40 M" );
   when( 1, [ this ] {
      codef_->vlanXlateScaleEntryDirDel();
      codef_->vlanXlateScaleEntryDirIs();
   } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: 10-20 M\n2: 30-40 M\ncomplete\n" );
   EXPECT_EQ( scaleEntries(), "2" );
}

// The run holds the codef, and goes on to its end.
TEST_P( HostileCodefTest, DroppingTheCodefLetsTheRunEnd ) {
   when( 1, [ this ] { codef_ = nullptr; } );
   schedule( { 1, 2 } );
   scheduler_->runOnce();
   EXPECT_TRUE( codef_ == nullptr );
   EXPECT_FALSE( scheduler_->workWaiting() );
   EXPECT_EQ( scheduleDir_->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( waiting(), GetParam().policy == YieldPolicy::Always ? "2" : "" );
}

TEST_P( HostileCodefTest, DroppingTheCodefAndThrowingLeavesTheSchedule ) {
   when( 1, [ this ] {
      codef_ = nullptr;
      Throw()();
   } );
   schedule( { 1, 2 } );
   EXPECT_THROW( scheduler_->runOnce(), std::runtime_error );
   EXPECT_FALSE( scheduler_->workWaiting() );
   EXPECT_EQ( waiting(), "1, 2" );
   codef_ = newCodef();
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
}

TEST_P( HostileCodefTest, DroppingTheCodefAtCompletionLetsTheRunEnd ) {
   codef_->completeIs( [ this ] { codef_ = nullptr; } );
   codef_->task()->scheduleTask();
   scheduler_->runOnce();
   EXPECT_TRUE( codef_ == nullptr );
   EXPECT_FALSE( scheduler_->workWaiting() );
}

TEST_P( HostileCodefTest, RePointingTheTaskGoesOnWithTheNewOne ) {
   when( 1, [ this ] {
      codef_->taskIs( Quen::taskFactory( scheduler_, Quen::TaskPriority( 3 ), "another" ) );
   } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( waiting(), "" );
   EXPECT_EQ( codef_->task()->name().str(), "another" );
}

TEST_P( HostileCodefTest, DeletingTheTaskKeepsWhatIsLeftWaiting ) {
   when( 1, [ this ] { codef_->taskDel(); } );
   schedule( { 1, 2, 3, 4, 5 } );
   const std::string first = drained();
   EXPECT_TRUE( codef_->task() == nullptr );
   EXPECT_EQ( first.substr( 0, 4 ), "1: \n" );
   codef_->taskIs( Quen::taskFactory( scheduler_, Quen::TaskPriority( 3 ), "another" ) );
   codef_->task()->scheduleTask();
   EXPECT_EQ( first + drained(), "1: \n2: \n3: \n4: \n5: \ncomplete\n" );
   EXPECT_EQ( waiting(), "" );
}

TEST_P( HostileCodefTest, InitialisingAgainChangesNothing ) {
   when( 1, [ this ] { codef_->handleInitialized(); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
   EXPECT_EQ( work(), "done 2, pending 0" );
}

TEST_P( HostileCodefTest, RunningTheSchedulerFromInsideDoesNothing ) {
   bool ran = true;
   when( 1, [ & ] { ran = scheduler_->runOnce(); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( drained(), "1: \n2: \ncomplete\n" );
   EXPECT_FALSE( ran );
}

// The outer walk stands on an interface that the inner one has done.
TEST_P( HostileCodefTest, DrainingFromInsideVisitsNobodyTwiceButItself ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Never );
   when( 2, [ this ] { codef_->drainBacklog(); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( drained(), "1: \n2: \n2: \n3: \ncomplete\n" );
   EXPECT_EQ( waiting(), "" );
}

TEST_P( HostileCodefTest, BecomingAZombieLetsTheRunEndAndStopsTheNext ) {
   when( 1, [ this ] { codef_->zelDoZombieReactors( true ); } );
   schedule( { 1, 2, 3, 4, 5 } );
   const std::string first = drained();
   EXPECT_EQ( first.find( "complete" ), std::string::npos );
   codef_->zelDoZombieReactors( false );
   codef_->task()->scheduleTask();
   EXPECT_EQ( first + drained(), "1: \n2: \n3: \n4: \n5: \ncomplete\n" );
}

INSTANTIATE_TEST_SUITE_P( Yielding, HostileCodefTest,
                          testing::Values( PolicyRow{ "ByQuantum", YieldPolicy::Quantum, 0 },
                                           PolicyRow{ "Always", YieldPolicy::Always, 0 },
                                           PolicyRow{ "Never", YieldPolicy::Never, 0 },
                                           PolicyRow{ "AfterTwoTests", YieldPolicy::AfterTests,
                                                      2 } ),
                          []( const auto& row ) { return std::string( row.param.name ); } );

}   // namespace
