// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Runs of the task: what is sorted, handed over, counted and asked for again.
#include <gtest/gtest.h>

#include <string>

#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Corvel::IntfId;
using Quen::YieldPolicy;

class DrainTest : public CodefTest {
 protected:
   DrainTest() { settle(); }
   void yieldPolicyIs( YieldPolicy policy, std::uint64_t tests = 0 ) {
      scheduler_->yieldPolicyIs( policy, tests );
   }
   /// One run; what was handed over in it.
   std::string run() {
      scheduler_->runOnce();
      return codef_->record();
   }
};

// Not initialised.

TEST_F( DrainTest, UninitialisedItTouchesNothing ) {
   codef_->initializedIs( false );
   codef_->task()->taskWorkPendingIs( 42 );
   given( 1, "10-20 M" );
   schedule( { 1, 2 } );
   EXPECT_EQ( run(), "" );
   EXPECT_EQ( waiting(), "1, 2" );
   EXPECT_EQ( work(), "done 0, pending 42" );
   EXPECT_EQ( scaleEntries(), "" );
   EXPECT_EQ( rangeEntries(), "1" );
}

TEST_F( DrainTest, InitialisedLaterItDrainsWhatWaited ) {
   codef_->initializedIs( false );
   schedule( { 1, 2 } );
   run();
   codef_->handleInitialized();
   EXPECT_EQ( run(), "1: \n2: \n" );
}

// Empty.

TEST_F( DrainTest, AnEmptyScheduleIsComplete ) {
   codef_->task()->taskWorkPendingIs( 42 );
   codef_->task()->scheduleTask();
   EXPECT_EQ( run(), "complete\n" );
   EXPECT_EQ( work(), "done 0, pending 42" );
   EXPECT_FALSE( scheduler_->workWaiting() );
}

TEST_F( DrainTest, EachRunOnAnEmptyScheduleIsComplete ) {
   codef_->drainBacklog();
   codef_->drainBacklog();
   EXPECT_EQ( codef_->record(), "complete\ncomplete\n" );
   EXPECT_EQ( work(), "done 0, pending 0" );
}

TEST_F( DrainTest, TheRunThatConstructionAskedForIsComplete ) {
   const auto codef = newCodef();
   scheduler_->runOnce();
   EXPECT_EQ( codef->record(), "complete\n" );
}

TEST_F( DrainTest, CompletionBringsNewWorkIn ) {
   codef_->completeIs( [ this ] {
      codef_->completeIs( {} );
      schedule( { 1 } );
   } );
   codef_->task()->scheduleTask();
   EXPECT_EQ( run(), "complete\n" );
   EXPECT_EQ( run(), "1: \n" );
   EXPECT_EQ( run(), "complete\n" );
   EXPECT_FALSE( scheduler_->workWaiting() );
}

// Draining.

TEST_F( DrainTest, TheRunThatEmptiesTheScheduleIsNotYetComplete ) {
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( run(), "1: \n2: \n3: \n" );
   EXPECT_EQ( waiting(), "" );
   // The run itself asks for nothing; each deletion from the schedule did.
   EXPECT_EQ( work(), "done 3, pending 0, scheduled" );
   EXPECT_EQ( run(), "complete\n" );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

// With the deletions unheard, only what the run itself asks for is left.
TEST_F( DrainTest, TheRunThatEmptiesTheScheduleDoesNotAskForAnother ) {
   schedule( { 1, 2 } );
   codef_->processIs( [ this ]( IntfId ) { scheduleDir_->hasNotificationActiveIs( false ); } );
   EXPECT_EQ( run(), "1: \n2: \n" );
   EXPECT_EQ( work(), "done 2, pending 0" );
}

TEST_F( DrainTest, TheRunThatLeavesInterfacesAsksForAnother ) {
   yieldPolicyIs( YieldPolicy::Always );
   schedule( { 1, 2 } );
   codef_->processIs( [ this ]( IntfId ) { scheduleDir_->hasNotificationActiveIs( false ); } );
   EXPECT_EQ( run(), "1: \n" );
   EXPECT_EQ( work(), "done 1, pending 1, scheduled" );
}

TEST_F( DrainTest, YieldingAlwaysTakesOneInterfaceARun ) {
   yieldPolicyIs( YieldPolicy::Always );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( run(), "1: \n" );
   EXPECT_EQ( waiting(), "2, 3" );
   EXPECT_EQ( work(), "done 1, pending 2, scheduled" );
   EXPECT_EQ( run(), "2: \n" );
   EXPECT_EQ( work(), "done 2, pending 1, scheduled" );
   EXPECT_EQ( run(), "3: \n" );
   EXPECT_EQ( work(), "done 3, pending 0, scheduled" );
   EXPECT_EQ( run(), "complete\n" );
   EXPECT_EQ( work(), "done 3, pending 0" );
}

TEST_F( DrainTest, YieldingAfterTheSecondTestTakesTwo ) {
   yieldPolicyIs( YieldPolicy::AfterTests, 1 );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( run(), "1: \n2: \n" );
   EXPECT_EQ( work(), "done 2, pending 1, scheduled" );
   EXPECT_EQ( run(), "3: \n" );
}

TEST_F( DrainTest, YieldingBehindTheLastLeavesNothing ) {
   yieldPolicyIs( YieldPolicy::AfterTests, 2 );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( run(), "1: \n2: \n3: \n" );
   EXPECT_EQ( work(), "done 3, pending 0, scheduled" );
   EXPECT_EQ( run(), "complete\n" );
}

TEST_F( DrainTest, AQuantumThatIsUsedUpEndsTheRunBehindItsInterface ) {
   codef_->processIs( [ this ]( IntfId ) { clock_->advance( 0.06 ); } );
   schedule( { 1, 2, 3 } );
   EXPECT_EQ( run(), "1: \n2: \n" );
   EXPECT_EQ( work(), "done 2, pending 1, scheduled" );
   EXPECT_EQ( run(), "3: \n" );
}

TEST_F( DrainTest, AQuantumUsedUpByTheFirstInterfaceStillProcessesIt ) {
   codef_->processIs( [ this ]( IntfId ) { clock_->advance( 100 ); } );
   schedule( { 1, 2 } );
   EXPECT_EQ( run(), "1: \n" );
   EXPECT_EQ( run(), "2: \n" );
}

TEST_F( DrainTest, InterfacesAreTakenFirstInFirstOut ) {
   schedule( { 30, 10, 20 } );
   EXPECT_EQ( run(), "30: \n10: \n20: \n" );
   schedule( { 20, 10, 30 } );
   unschedule( 20 );
   schedule( { 20 } );
   EXPECT_EQ( run(), "10: \n30: \n20: \n" );
}

TEST_F( DrainTest, NoInterfaceStarvesWhileOthersComeBack ) {
   yieldPolicyIs( YieldPolicy::Always );
   schedule( { 1, 2, 3 } );
   run();
   schedule( { 1 } );
   EXPECT_EQ( run(), "2: \n" );
   schedule( { 2 } );
   EXPECT_EQ( run(), "3: \n" );
   EXPECT_EQ( run(), "1: \n" );
   EXPECT_EQ( run(), "2: \n" );
}

TEST_F( DrainTest, AnInterfaceStaysScheduledUntilItIsHandedOver ) {
   std::string seen;
   codef_->processIs( [ & ]( IntfId ) { seen += waiting() + "; "; } );
   schedule( { 1, 2 } );
   run();
   EXPECT_EQ( seen, "1, 2; 2; " );
}

TEST_F( DrainTest, WorkAddsUpOverRuns ) {
   schedule( { 1, 2 } );
   scheduler_->runUntilIdle();
   schedule( { 3 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( work(), "done 3, pending 0" );
}

// The sort.

TEST_F( DrainTest, RangesAreHandedOverLargestFirst ) {
   given( 1, "10-19 M, 100-100 M, 200-209 M, 1-5 N, 1000-1500 N" );
   schedule( { 1 } );
   EXPECT_EQ( run(), "1: 1000-1500 N, 10-19 M, 200-209 M, 1-5 N, 100-100 M\n" );
}

TEST_F( DrainTest, AnInterfaceNeverSeenGetsBothItsEmptyEntries ) {
   schedule( { 7 } );
   EXPECT_EQ( run(), "7: \n" );
   EXPECT_EQ( rangeEntries(), "7" );
   EXPECT_EQ( scaleEntries(), "7" );
   EXPECT_EQ( sorted( 7 ), "" );
}

TEST_F( DrainTest, NoOtherEntriesAreMade ) {
   given( 1, "10-19 M" );
   given( 2, "10-19 M" );
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( rangeEntries(), "1, 2" );
   EXPECT_EQ( scaleEntries(), "1" );
}

TEST_F( DrainTest, RangesThatAreGoneDoNotSurviveTheNextSort ) {
   given( 1, "10-19 M, 30-39 M" );
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   for ( unsigned vid = 30; vid <= 39; ++vid ) {
      del( 1, vid );
   }
   del( 1, 15 );
   add( 1, 50, 'N' );
   EXPECT_EQ( sorted( 1 ), "10-19 M, 30-39 M" );
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( sorted( 1 ), "10-14 M, 16-19 M, 50-50 N" );
}

TEST_F( DrainTest, TheNextSortReusesTheScaleEntry ) {
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   const auto entry = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( 1 ) );
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( 1 ) ) == entry );
}

TEST_F( DrainTest, InterfacesAreSortedIndependently ) {
   given( 1, "10-19 M" );
   given( 2, "5-5 N" );
   schedule( { 1, 2 } );
   run();
   EXPECT_EQ( sorted( 1 ), "10-19 M" );
   EXPECT_EQ( sorted( 2 ), "5-5 N" );
}

TEST_F( DrainTest, TheVlanSetOfTheScaleEntryIsLeftAlone ) {
   const auto entry = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( IntfId( 1 ) );
   entry->vlanInXlateHashTableIs( Bridging::VlanId( 300 ) );
   given( 1, "10-19 M" );
   schedule( { 1 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( TestSupport::interfacesText( entry->vlanInXlateHashTable() ), "300" );
}

TEST_F( DrainTest, SortingAloneHandsNothingOver ) {
   given( 1, "10-19 M" );
   codef_->sortVlanRangeBySize( IntfId( 1 ) );
   EXPECT_EQ( codef_->record(), "" );
   EXPECT_EQ( sorted( 1 ), "10-19 M" );
}

TEST_F( DrainTest, ProcessingAloneLeavesTheSchedule ) {
   given( 1, "10-19 M" );
   schedule( { 1 } );
   codef_->processVlanRange( IntfId( 1 ) );
   EXPECT_EQ( codef_->record(), "1: 10-19 M\n" );
   EXPECT_EQ( waiting(), "1" );
}

TEST_F( DrainTest, AllSingleVlansAreSortedByNumber ) {
   for ( unsigned vid = 4093; vid <= 4093; vid -= 2 ) {   // down to 1, then round
      add( 1, vid, 'M' );
   }
   schedule( { 1 } );
   run();
   const auto entry = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( 1 ) );
   EXPECT_EQ( entry->vidRangeSorted().size(), 2047u );
   unsigned expected = 1;
   for ( const auto& element : entry->vidRangeSorted() ) {
      ASSERT_EQ( element.key().lowVid().value(), expected );
      EXPECT_TRUE( element.value() );
      expected += 2;
   }
   entry->vidRangeSorted().verify();
}

// A derived class need not care for completion.
class QuietCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "QuietCodef";
   void processSortedVlanRange( IntfId ) override {}

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
};

TEST_F( DrainTest, CompletionDoesNothingUnlessOverridden ) {
   codef_ = nullptr;
   const auto quiet = Zel::newEntity< QuietCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );
   schedule( { 1 } );
   EXPECT_EQ( scheduler_->runUntilIdle(), 2u );
   EXPECT_EQ( waiting(), "" );
   EXPECT_EQ( quiet->task()->taskWorkCount(), 1u );
}

}   // namespace
