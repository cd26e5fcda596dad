// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The codef's task, initialisation and reactions.
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include "Zel/AllocationTracker.h"
#include "Zel/Notifiee.h"
#include "tests/unit/MoxVlanMapping/CodefMembers.h"
#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Corvel::IntfId;

class CodefConstructionTest : public CodefTest {};

TEST_F( CodefConstructionTest, EndsInitialisedWithOneScheduledTask ) {
   EXPECT_TRUE( codef_->initialized() );
   EXPECT_TRUE( codef_->hasNotificationActive() );
   ASSERT_TRUE( codef_->task() );
   EXPECT_EQ( codef_->task()->name().str(), "VlanRangeScale" );
   EXPECT_EQ( codef_->task()->priority().value(), 3 );
   EXPECT_EQ( codef_->task()->taskQuantum(), 0.1 );
   EXPECT_TRUE( codef_->task()->hasNotificationActive() );
   EXPECT_TRUE( codef_->task()->scheduled() );
   EXPECT_EQ( scheduler_->tasksScheduled(), 1u );
   EXPECT_EQ( work(), "done 0, pending 0, scheduled" );
}

TEST_F( CodefConstructionTest, MakesTwoTasksAndKeepsTheSecond ) {
   const auto before = Zel::allocationCount( "Quen::Task" );
   const auto another = newCodef();
   const auto after = Zel::allocationCount( "Quen::Task" );
   EXPECT_EQ( after.total, before.total + 2 );
   EXPECT_EQ( after.live, before.live + 1 );
   EXPECT_EQ( another->task()->notifieeList()->notifiees(), 1u );
}

TEST_F( CodefConstructionTest, KeepsWhatItIsGiven ) {
   EXPECT_TRUE( codef_->acsd() == acsd_ );
   EXPECT_TRUE( codef_->scheduler() == scheduler_ );
   EXPECT_TRUE( codef_->vlanRangeEntryDir() == rangeDir_ );
   EXPECT_TRUE( codef_->vlanXlateScheduleDir() == scheduleDir_ );
   EXPECT_TRUE( codef_->task()->scheduler() == scheduler_ );
   EXPECT_EQ( codef_->notifieeList(), nullptr );
}

TEST_F( CodefConstructionTest, MakesAnEmptyActiveScaleEntryDirectory ) {
   ASSERT_TRUE( codef_->vlanXlateScaleEntryDir() );
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDir()->hasNotificationActive() );
   EXPECT_EQ( scaleEntries(), "" );
}

TEST_F( CodefConstructionTest, ItsNotifieesAreActiveAndKnowTheirOwner ) {
   EXPECT_TRUE( CodefMembers::acsd( *codef_ )->hasNotificationActive() );
   EXPECT_TRUE( CodefMembers::schedule( *codef_ )->hasNotificationActive() );
   EXPECT_TRUE( CodefMembers::task( *codef_ )->hasNotificationActive() );
   EXPECT_EQ( CodefMembers::acsd( *codef_ )->owner(), codef_.get() );
   EXPECT_EQ( CodefMembers::schedule( *codef_ )->owner(), codef_.get() );
   EXPECT_EQ( CodefMembers::task( *codef_ )->owner(), codef_.get() );
}

TEST_F( CodefConstructionTest, TouchesNoneOfTheDirectories ) {
   EXPECT_EQ( rangeEntries(), "" );
   EXPECT_EQ( waiting(), "" );
}

TEST_F( CodefConstructionTest, WithoutCommonDataNothingWatchesIt ) {
   const auto codef =
      Zel::newEntity< RecordingCodef >( nullptr, scheduler_, rangeDir_, scheduleDir_ );
   EXPECT_TRUE( codef->acsd() == nullptr );
   EXPECT_TRUE( CodefMembers::acsd( *codef ) == nullptr );
   EXPECT_TRUE( codef->initialized() );
   codef_ = nullptr;
   acsd_->portToLagIs( IntfId( 1 ), IntfId( 2 ) );
   acsd_->portToLagDel( IntfId( 1 ) );
   EXPECT_EQ( waiting(), "" );
   schedule( { 7 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef->record(), "7: \ncomplete\n" );
}

TEST_F( CodefConstructionTest, WithoutAScheduleNothingWatchesIt ) {
   codef_ = nullptr;
   const auto codef = Zel::newEntity< RecordingCodef >( acsd_, scheduler_, rangeDir_, nullptr );
   EXPECT_TRUE( codef->vlanXlateScheduleDir() == nullptr );
   EXPECT_TRUE( CodefMembers::schedule( *codef ) == nullptr );
   EXPECT_TRUE( codef->initialized() );
   EXPECT_TRUE( codef->task()->scheduled() );
   EXPECT_EQ( scheduleDir_->notifieeList()->notifiees(), 0u );
}

class ThrowingCodef : public RecordingCodef {
 public:
   static constexpr char zelTypeName[] = "ThrowingCodef";

 protected:
   ThrowingCodef( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                  const Zel::Ptr< Quen::TaskScheduler >& scheduler,
                  const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& ranges,
                  const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir >& schedule )
       : RecordingCodef( acsd, scheduler, ranges, schedule ) {
      throw std::runtime_error( "no hardware" );
   }
};

TEST_F( CodefConstructionTest, ADerivedConstructorThatThrowsLeavesNothingBehind ) {
   codef_ = nullptr;
   const auto live = TestSupport::liveObjects();
   EXPECT_THROW( Zel::newEntity< ThrowingCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ ),
                 std::runtime_error );
   EXPECT_EQ( TestSupport::liveObjects(), live );
   EXPECT_FALSE( scheduler_->workWaiting() );
   EXPECT_EQ( scheduleDir_->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( acsd_->notifieeList()->notifiees(), 0u );
}

// Told when the scheduler's queue stops being empty.
class QueueListener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "QueueListener";
   void onAttribute( Zel::AttributeId, const void* ) override { react_(); }

 protected:
   QueueListener( const Zel::Ptr< Quen::TaskScheduler >& scheduler, std::function< void() > react )
       : react_( std::move( react ) ) {
      zelNotifierIs( scheduler );
   }

 private:
   const std::function< void() > react_;
};

class CodefInitialisationTest : public CodefTest {
 protected:
   CodefInitialisationTest() { settle(); }
};

TEST_F( CodefInitialisationTest, ASecondOneChangesNothing ) {
   codef_->task()->taskQuantumIs( 5 );
   const auto dir = codef_->vlanXlateScaleEntryDir();
   codef_->handleInitialized();
   EXPECT_TRUE( codef_->initialized() );
   EXPECT_EQ( codef_->task()->taskQuantum(), 5 );
   EXPECT_FALSE( codef_->task()->scheduled() );
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDir() == dir );
}

TEST_F( CodefInitialisationTest, ItComesInTheOrderDirectoryQuantumRequestFlag ) {
   codef_->initializedIs( false );
   codef_->vlanXlateScaleEntryDirDel();
   codef_->task()->taskQuantumIs( 5 );
   std::string seen;
   const auto listener = Zel::newEntity< QueueListener >( scheduler_, [ & ] {
      seen += codef_->vlanXlateScaleEntryDir() ? "directory" : "no directory";
      seen += codef_->task()->taskQuantum() == 0.1 ? ", quantum" : ", no quantum";
      seen += codef_->initialized() ? ", flag" : ", no flag";
   } );
   codef_->handleInitialized();
   EXPECT_EQ( seen, "directory, quantum, no flag" );
   EXPECT_TRUE( codef_->initialized() );
}

TEST_F( CodefInitialisationTest, TheScaleEntryDirectoryIsMadeOnce ) {
   const auto dir = codef_->vlanXlateScaleEntryDir();
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDirIs() == dir );
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDir() == dir );
}

TEST_F( CodefInitialisationTest, ADeletedScaleEntryDirectoryIsMadeAnew ) {
   const auto dir = codef_->vlanXlateScaleEntryDir();
   dir->vlanXlateScaleEntryIs( IntfId( 7 ) );
   codef_->vlanXlateScaleEntryDirDel();
   EXPECT_TRUE( codef_->vlanXlateScaleEntryDir() == nullptr );
   EXPECT_EQ( dir->zelReferences(), 1 );
   const auto fresh = codef_->vlanXlateScaleEntryDirIs();
   EXPECT_FALSE( fresh == dir );
   EXPECT_TRUE( fresh->hasNotificationActive() );
   EXPECT_EQ( scaleEntries(), "" );
}

class CodefReactionTest : public CodefTest {
 protected:
   CodefReactionTest() { settle(); }
   bool asked() { return codef_->task()->scheduled(); }
};

TEST_F( CodefReactionTest, AnAddedInterfaceAsksForTheTask ) {
   EXPECT_FALSE( asked() );
   schedule( { 7 } );
   EXPECT_TRUE( asked() );
}

TEST_F( CodefReactionTest, ADeletedInterfaceAsksForTheTask ) {
   codef_->initializedIs( false );   // so that the run leaves the schedule alone
   schedule( { 7 } );
   scheduler_->runUntilIdle();
   EXPECT_FALSE( asked() );
   unschedule( 7 );
   EXPECT_TRUE( asked() );
}

TEST_F( CodefReactionTest, WhatIsNoChangeDoesNotAsk ) {
   codef_->initializedIs( false );
   schedule( { 7 } );
   scheduler_->runUntilIdle();
   schedule( { 7 } );
   unschedule( 8 );
   EXPECT_FALSE( asked() );
}

TEST_F( CodefReactionTest, ManyChangesAskForOneRun ) {
   schedule( { 1, 2, 3 } );
   unschedule( 2 );
   EXPECT_EQ( scheduler_->tasksScheduled(), 1u );
}

TEST_F( CodefReactionTest, APortThatEntersAnAggregateIsNotScheduled ) {
   acsd_->portToLagIs( IntfId( 1 ), IntfId( 100 ) );
   acsd_->portToLagIs( IntfId( 1 ), IntfId( 101 ) );
   EXPECT_EQ( waiting(), "" );
   EXPECT_FALSE( asked() );
}

TEST_F( CodefReactionTest, APortThatLeavesAnAggregateIsScheduled ) {
   acsd_->portToLagIs( IntfId( 1 ), IntfId( 100 ) );
   acsd_->portToLagIs( IntfId( 2 ), IntfId( 100 ) );
   acsd_->portToLagDel( IntfId( 1 ) );
   EXPECT_EQ( waiting(), "1" );
   EXPECT_TRUE( asked() );
}

TEST_F( CodefReactionTest, MembershipDecidesWhoeverAsks ) {
   acsd_->portToLagIs( IntfId( 1 ), IntfId( 100 ) );
   codef_->handlePortToLag( IntfId( 1 ) );
   codef_->zel_handleAcsd_portToLag( IntfId( 1 ) );
   EXPECT_EQ( waiting(), "" );
   codef_->handlePortToLag( IntfId( 2 ) );
   codef_->zel_handleAcsd_portToLag( IntfId( 3 ) );
   EXPECT_EQ( waiting(), "2, 3" );
}

TEST_F( CodefReactionTest, APortWaitsEvenWhileTheTaskMayNotWork ) {
   codef_->initializedIs( false );
   codef_->handlePortToLag( IntfId( 1 ) );
   EXPECT_EQ( waiting(), "1" );
   EXPECT_TRUE( asked() );
   scheduler_->runUntilIdle();
   EXPECT_EQ( waiting(), "1" );
   codef_->handleInitialized();
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "1: \ncomplete\n" );
}

TEST_F( CodefReactionTest, OtherAttributesAreIgnored ) {
   const IntfId intf( 1 );
   CodefMembers::acsd( *codef_ )->onAttribute( Mox::MoxCommonSmData::kAttrPortToLag + 1, &intf );
   CodefMembers::schedule( *codef_ )->onAttribute(
      MoxVlanMapping::VlanXlateScheduleDir::kAttrVlanXlateSchedule + 1, &intf );
   CodefMembers::task( *codef_ )->onAttribute( Quen::Task::kRun + 1, nullptr );
   EXPECT_EQ( waiting(), "" );
   EXPECT_FALSE( asked() );
   EXPECT_EQ( codef_->record(), "" );
}

TEST_F( CodefReactionTest, TheirOwnAttributesAreNot ) {
   const IntfId intf( 1 );
   CodefMembers::schedule( *codef_ )->onAttribute(
      MoxVlanMapping::VlanXlateScheduleDir::kAttrVlanXlateSchedule, &intf );
   EXPECT_TRUE( asked() );
   CodefMembers::acsd( *codef_ )->onAttribute( Mox::MoxCommonSmData::kAttrPortToLag, &intf );
   EXPECT_EQ( waiting(), "1" );
   CodefMembers::task( *codef_ )->onAttribute( Quen::Task::kRun, nullptr );
   EXPECT_EQ( codef_->record(), "1: \n" );
}

TEST_F( CodefReactionTest, WithoutATaskAChangeOnlyWaits ) {
   codef_->taskDel();
   schedule( { 7 } );
   EXPECT_EQ( waiting(), "7" );
   EXPECT_FALSE( scheduler_->workWaiting() );
}

class CodefTaskTest : public CodefTest {
 protected:
   CodefTaskTest() { settle(); }
   Zel::Ptr< Quen::Task > newTask() const {
      return Quen::taskFactory( scheduler_, Quen::TaskPriority( 3 ), "another" );
   }
};

TEST_F( CodefTaskTest, TheTaskAlreadyHeldChangesNothing ) {
   const auto task = codef_->task();
   const auto notifiee = CodefMembers::task( *codef_ );
   const auto references = task->zelReferences();
   codef_->taskIs( task );
   EXPECT_TRUE( codef_->task() == task );
   EXPECT_TRUE( CodefMembers::task( *codef_ ) == notifiee );
   EXPECT_EQ( task->zelReferences(), references );
   EXPECT_EQ( task->notifieeList()->notifiees(), 1u );
}

TEST_F( CodefTaskTest, AnotherTaskRePointsTheNotifiee ) {
   const auto first = codef_->task();
   const auto notifiee = CodefMembers::task( *codef_ );
   const auto second = newTask();
   codef_->taskIs( second );
   EXPECT_TRUE( codef_->task() == second );
   EXPECT_TRUE( CodefMembers::task( *codef_ ) == notifiee );
   EXPECT_EQ( first->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( first->zelReferences(), 1 );
   schedule( { 7 } );
   EXPECT_FALSE( first->scheduled() );
   EXPECT_TRUE( second->scheduled() );
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "7: \ncomplete\n" );
}

TEST_F( CodefTaskTest, NoTaskTakesTheNotifieeOut ) {
   const auto task = codef_->task();
   const auto notifiee = CodefMembers::task( *codef_ );
   codef_->taskIs( nullptr );
   EXPECT_TRUE( codef_->task() == nullptr );
   EXPECT_TRUE( CodefMembers::task( *codef_ ) == nullptr );
   EXPECT_TRUE( notifiee->zelMarkedForDeletion() );
   EXPECT_EQ( notifiee->owner(), nullptr );
   codef_->taskIs( nullptr );
   EXPECT_TRUE( codef_->task() == nullptr );
}

TEST_F( CodefTaskTest, ATaskAfterNoneGetsANewActiveNotifiee ) {
   codef_->taskDel();
   const auto task = newTask();
   codef_->taskIs( task );
   EXPECT_TRUE( codef_->task() == task );
   EXPECT_TRUE( CodefMembers::task( *codef_ )->hasNotificationActive() );
   EXPECT_EQ( CodefMembers::task( *codef_ )->owner(), codef_.get() );
   EXPECT_FALSE( task->scheduled() );
   schedule( { 7 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "7: \ncomplete\n" );
}

TEST_F( CodefTaskTest, DeletingTheTaskHandsItOver ) {
   const auto held = codef_->task();
   const auto notifiee = CodefMembers::task( *codef_ );
   const auto task = codef_->taskDel();
   EXPECT_TRUE( task == held );
   EXPECT_TRUE( codef_->task() == nullptr );
   EXPECT_TRUE( notifiee->zelMarkedForDeletion() );
   EXPECT_EQ( notifiee->owner(), nullptr );
   EXPECT_TRUE( notifiee->notifier() == task );
}

TEST_F( CodefTaskTest, DeletingNoTaskReturnsNull ) {
   codef_->taskDel();
   EXPECT_TRUE( codef_->taskDel() == nullptr );
}

TEST_F( CodefTaskTest, ADeletedTaskDrainsNothing ) {
   schedule( { 7 } );
   const auto task = codef_->taskDel();
   EXPECT_TRUE( task->scheduled() );
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "" );
   EXPECT_EQ( waiting(), "7" );
}

}   // namespace
