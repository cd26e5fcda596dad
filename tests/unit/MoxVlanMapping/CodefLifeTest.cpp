// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The codef's active, zombie and destroyed states.
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "MoxVlanMapping/SizeOrder.h"
#include "tests/support/VirtualSlot.h"
#include "tests/unit/MoxVlanMapping/CodefMembers.h"
#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Corvel::IntfId;
using MoxVlanMapping::MoxVlanRangeMappingCodef;
using MoxVlanMapping::VlanRangeEntryDir;
using MoxVlanMapping::VlanXlateScaleEntry;
using MoxVlanMapping::VlanXlateScaleEntryDir;
using MoxVlanMapping::VlanXlateScheduleDir;
using TestSupport::virtualSlot;

class CodefLifeTest : public CodefTest {
 protected:
   CodefLifeTest() { settle(); }

   // Changes everything that the codef watches.
   void changeAll() {
      acsd_->portToLagIs( IntfId( 1 ), IntfId( 100 ) );
      acsd_->portToLagDel( IntfId( 1 ) );
      schedule( { 2 } );
   }
   // Flags of the codef and of its notifiees: acsd, schedule, task.
   std::string active() const {
      return std::string( codef_->hasNotificationActive() ? "1" : "0" ) +
             ( CodefMembers::acsd( *codef_ )->hasNotificationActive() ? "1" : "0" ) +
             ( CodefMembers::schedule( *codef_ )->hasNotificationActive() ? "1" : "0" ) +
             ( CodefMembers::task( *codef_ )->hasNotificationActive() ? "1" : "0" );
   }
   // Changes everything that it watches, and runs its task.
   void expectNoReaction() {
      changeAll();
      EXPECT_EQ( waiting(), "2" );
      EXPECT_FALSE( codef_->task()->scheduled() );
      codef_->task()->scheduleTask();
      scheduler_->runUntilIdle();
      EXPECT_EQ( codef_->record(), "" );
   }
   std::string zombies() const {
      return std::string( codef_->zelMarkedForDeletion() ? "1" : "0" ) +
             ( CodefMembers::acsd( *codef_ )->zelMarkedForDeletion() ? "1" : "0" ) +
             ( CodefMembers::schedule( *codef_ )->zelMarkedForDeletion() ? "1" : "0" ) +
             ( CodefMembers::task( *codef_ )->zelMarkedForDeletion() ? "1" : "0" );
   }
};

TEST_F( CodefLifeTest, TheActiveFlagReachesAllNotifiees ) {
   EXPECT_EQ( active(), "1111" );
   codef_->hasNotificationActiveIs( false );
   EXPECT_EQ( active(), "0000" );
   codef_->hasNotificationActiveIs( true );
   EXPECT_EQ( active(), "1111" );
}

TEST_F( CodefLifeTest, AnUnchangedActiveFlagIsNotPassedOn ) {
   CodefMembers::schedule( *codef_ )->hasNotificationActiveIs( false );
   codef_->hasNotificationActiveIs( true );
   EXPECT_EQ( active(), "1101" );
}

TEST_F( CodefLifeTest, InactiveItReactsToNothing ) {
   codef_->hasNotificationActiveIs( false );
   expectNoReaction();
   codef_->hasNotificationActiveIs( true );
   codef_->task()->scheduleTask();
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "2: \ncomplete\n" );
}

TEST_F( CodefLifeTest, FlagsSkipAbsentNotifiees ) {
   const auto codef = Zel::newEntity< RecordingCodef >( nullptr, scheduler_, rangeDir_, nullptr );
   codef->taskDel();
   codef->hasNotificationActiveIs( false );
   EXPECT_FALSE( codef->hasNotificationActive() );
   codef->zelDoZombieReactors( true );
   EXPECT_TRUE( codef->zelMarkedForDeletion() );
}

TEST_F( CodefLifeTest, TheZombieFlagReachesAllNotifiees ) {
   EXPECT_EQ( zombies(), "0000" );
   codef_->zelDoZombieReactors( true );
   EXPECT_EQ( zombies(), "1111" );
   codef_->zelDoZombieReactors( false );
   EXPECT_EQ( zombies(), "0000" );
}

TEST_F( CodefLifeTest, AnUnchangedZombieFlagIsNotPassedOn ) {
   CodefMembers::schedule( *codef_ )->zelDoZombieReactors( true );
   codef_->zelDoZombieReactors( false );
   EXPECT_EQ( zombies(), "0010" );
}

TEST_F( CodefLifeTest, AZombieReactsToNothing ) {
   codef_->zelDoZombieReactors( true );
   expectNoReaction();
}

TEST_F( CodefLifeTest, AZombieIsNotReachedPastTheNotifieeList ) {
   codef_->zelDoZombieReactors( true );
   const IntfId intf( 1 );
   CodefMembers::acsd( *codef_ )->onAttribute( Mox::MoxCommonSmData::kAttrPortToLag, &intf );
   CodefMembers::schedule( *codef_ )->onAttribute( VlanXlateScheduleDir::kAttrVlanXlateSchedule,
                                                   &intf );
   CodefMembers::task( *codef_ )->onAttribute( Quen::Task::kRun, nullptr );
   EXPECT_EQ( waiting(), "" );
   EXPECT_FALSE( codef_->task()->scheduled() );
   EXPECT_EQ( codef_->record(), "" );
}

TEST_F( CodefLifeTest, AZombieMayComeBack ) {
   codef_->zelDoZombieReactors( true );
   changeAll();
   codef_->zelDoZombieReactors( false );
   schedule( { 3 } );
   scheduler_->runUntilIdle();
   EXPECT_EQ( codef_->record(), "2: \n3: \ncomplete\n" );
}

// Observers in all places that the codef releases.

struct Departures {
   MoxVlanRangeMappingCodef* codef = nullptr;
   Quen::Task* task = nullptr;
   VlanXlateScheduleDir* schedule = nullptr;
   Mox::MoxCommonSmData* acsd = nullptr;
   std::vector< std::string > log;
};

std::string
ownerText( const void* owner ) {
   return owner ? "owner set" : "owner cleared";
}

template < class Base >
class TellingNotifiee : public Base {
 public:
   void zelDoZombieReactors( bool zombie ) override {
      Base::zelDoZombieReactors( zombie );
      departures_.log.push_back(
         name_ + ( zombie ? " zombie, " : " alive, " ) + ownerText( this->owner() ) + ", codef " +
         ( departures_.codef->zelMarkedForDeletion() ? "marked" : "unmarked" ) );
   }

 protected:
   template < class Notifier >
   TellingNotifiee( const Notifier& notifier, Departures& departures, std::string name )
       : Base( notifier, departures.codef ),
         departures_( departures ),
         name_( std::move( name ) ) {}
   ~TellingNotifiee() override {
      departures_.log.push_back( name_ + " notifiee gone, " + ownerText( this->owner() ) );
   }

 private:
   Departures& departures_;
   const std::string name_;
};

class TellingRangeDir : public VlanRangeEntryDir {
 protected:
   explicit TellingRangeDir( Departures& departures ) : departures_( departures ) {}
   ~TellingRangeDir() override { departures_.log.push_back( "range directory gone" ); }

 private:
   Departures& departures_;
};

class TellingScheduler : public Quen::TaskScheduler {
 protected:
   TellingScheduler( const Zel::Ptr< const Zel::Clock >& clock, Departures& departures )
       : TaskScheduler( clock ), departures_( departures ) {}
   ~TellingScheduler() override { departures_.log.push_back( "scheduler gone" ); }

 private:
   Departures& departures_;
};

// Goes with the scale entry directory that holds it, and changes what the codef watched.
class TellingScaleEntry : public VlanXlateScaleEntry {
 protected:
   explicit TellingScaleEntry( Departures& departures )
       : VlanXlateScaleEntry( IntfId( 9 ), order_ ), departures_( departures ) {}
   ~TellingScaleEntry() override {
      const auto task = CodefMembers::task( *departures_.codef );
      departures_.schedule->vlanXlateScheduleIs( IntfId( 1 ) );
      departures_.acsd->portToLagIs( IntfId( 2 ), IntfId( 100 ) );
      departures_.acsd->portToLagDel( IntfId( 2 ) );
      departures_.log.push_back(
         std::string( "scale entries gone, attribute " ) +
         ( departures_.codef->vlanXlateScaleEntryDir() ? "set" : "empty" ) + ", " +
         ownerText( CodefMembers::acsd( *departures_.codef )->owner() ) + ", " +
         ownerText( CodefMembers::schedule( *departures_.codef )->owner() ) + ", " +
         ( task ? ownerText( task->owner() ) : "none" ) + ", task " +
         ( departures_.task->scheduled() ? "scheduled" : "idle" ) );
   }

 private:
   MoxVlanMapping::SizeOrder order_;
   Departures& departures_;
};

void
insertTelling( VlanXlateScaleEntryDir& dir, Departures& departures ) {
   const Zel::Ptr< VlanXlateScaleEntry > entry = Zel::newEntity< TellingScaleEntry >( departures );
   const_cast< VlanXlateScaleEntryDir::VlanXlateScaleEntryMap& >( dir.vlanXlateScaleEntry() )
      .insert( Zel::newEntity< VlanXlateScaleEntryDir::ZelVlanXlateScaleEntry >( entry ) );
}

class CodefDestructionTest : public CodefTest {
 protected:
   // The observers write to a member of this class.
   ~CodefDestructionTest() override { codef_ = nullptr; }

   using Acsd = TellingNotifiee< MoxVlanRangeMappingCodef::ZelAcsd >;
   using Schedule = TellingNotifiee< MoxVlanRangeMappingCodef::ZelVlanXlateScheduleDir >;
   using Task = TellingNotifiee< MoxVlanRangeMappingCodef::ZelTask >;

   void putObservers( RecordingCodef& codef ) {
      departures_.codef = &codef;
      departures_.task = codef.task().get();
      departures_.schedule = scheduleDir_.get();
      departures_.acsd = acsd_.get();
      CodefMembers::acsd( codef ) = Zel::newEntity< Acsd >( acsd_, departures_, "acsd" );
      CodefMembers::schedule( codef ) =
         Zel::newEntity< Schedule >( scheduleDir_, departures_, "schedule" );
      CodefMembers::task( codef ) = Zel::newEntity< Task >( codef.task(), departures_, "task" );
      insertTelling( *codef.vlanXlateScaleEntryDir(), departures_ );
   }

   Departures departures_;
};

TEST_F( CodefDestructionTest, ZombieStepBackPointersScaleEntriesThenReverseOrder ) {
   codef_ = nullptr;
   auto ranges = Zel::newEntity< TellingRangeDir >( departures_ );
   auto scheduler = Zel::newEntity< TellingScheduler >( clock_, departures_ );
   auto codef = Zel::newEntity< RecordingCodef >( acsd_, scheduler, ranges, scheduleDir_ );
   scheduler->runUntilIdle();
   putObservers( *codef );
   ranges = nullptr;
   scheduler = nullptr;
   codef = nullptr;
   EXPECT_EQ( departures_.log,
              ( std::vector< std::string >{
                 "acsd zombie, owner set, codef unmarked",
                 "schedule zombie, owner set, codef unmarked",
                 "task zombie, owner set, codef unmarked",
                 "scale entries gone, attribute empty, owner cleared, owner cleared, "
                 "owner cleared, task idle",
                 "task notifiee gone, owner cleared",
                 "schedule notifiee gone, owner cleared",
                 "range directory gone",
                 "scheduler gone",
                 "acsd notifiee gone, owner cleared",
              } ) );
   // Only the schedule saw the changes that were made while the codef went.
   EXPECT_EQ( waiting(), "1" );
}

TEST_F( CodefDestructionTest, DeletingTheScaleEntryDirectoryEmptiesTheAttributeFirst ) {
   settle();
   putObservers( *codef_ );
   codef_->vlanXlateScaleEntryDirDel();
   EXPECT_EQ( departures_.log.front(), "scale entries gone, attribute empty, owner set, "
                                       "owner set, owner set, task scheduled" );
}

TEST_F( CodefDestructionTest, ZombieStateGoesToTheNotifieesInOrderThenToTheCodef ) {
   putObservers( *codef_ );
   codef_->zelDoZombieReactors( true );
   codef_->zelDoZombieReactors( true );
   codef_->zelDoZombieReactors( false );
   EXPECT_EQ( departures_.log, ( std::vector< std::string >{
                                  "acsd zombie, owner set, codef unmarked",
                                  "schedule zombie, owner set, codef unmarked",
                                  "task zombie, owner set, codef unmarked",
                                  "acsd alive, owner set, codef marked",
                                  "schedule alive, owner set, codef marked",
                                  "task alive, owner set, codef marked",
                               } ) );
}

TEST_F( CodefDestructionTest, DeletingTheTaskMakesAZombieBeforeItClearsTheOwner ) {
   putObservers( *codef_ );
   codef_->vlanXlateScaleEntryDirDel();   // its observer looks at the task
   departures_.log.clear();
   codef_->taskDel();
   EXPECT_EQ( departures_.log, ( std::vector< std::string >{
                                  "task zombie, owner set, codef unmarked",
                                  "task notifiee gone, owner cleared",
                               } ) );
}

TEST_F( CodefDestructionTest, ItsTaskLeavesTheQueue ) {
   EXPECT_TRUE( scheduler_->workWaiting() );
   codef_ = nullptr;
   EXPECT_FALSE( scheduler_->workWaiting() );
}

TEST_F( CodefDestructionTest, ATaskHeldByOthersRunsForNobody ) {
   const auto task = codef_->task();
   schedule( { 7 } );
   codef_ = nullptr;
   EXPECT_EQ( scheduler_->runUntilIdle(), 1u );
   EXPECT_EQ( task->notifieeList()->notifiees(), 0u );
   EXPECT_EQ( waiting(), "7" );
}

// A notifiee that somebody still holds, and even tells, finds no owner and is a zombie.
TEST_F( CodefDestructionTest, ItsNotifieesReactToNothingAfterwards ) {
   const auto acsd = CodefMembers::acsd( *codef_ );
   const auto schedule = CodefMembers::schedule( *codef_ );
   const auto task = CodefMembers::task( *codef_ );
   settle();
   codef_ = nullptr;
   const IntfId intf( 1 );
   for ( const bool zombie : { true, false } ) {
      acsd->zelDoZombieReactors( zombie );
      schedule->zelDoZombieReactors( zombie );
      task->zelDoZombieReactors( zombie );
      acsd->onAttribute( Mox::MoxCommonSmData::kAttrPortToLag, &intf );
      task->onAttribute( Quen::Task::kRun, nullptr );
      schedule->onAttribute( VlanXlateScheduleDir::kAttrVlanXlateSchedule, &intf );
      EXPECT_FALSE( task->notifier()->scheduled() );
   }
   EXPECT_EQ( waiting(), "" );
}

// Its destructor leaves the zombie step to the base's, and changes what the base still watches.
class CarelessCodef : public RecordingCodef {
 public:
   static constexpr char zelTypeName[] = "CarelessCodef";

 protected:
   template < class... Args >
   explicit CarelessCodef( std::string& heard, const Args&... args )
       : RecordingCodef( args... ), heard_( heard ) {}
   ~CarelessCodef() override {
      const Zel::Ptr< Quen::Task > vlanRangeScale = task();
      acsd()->portToLagIs( IntfId( 1 ), IntfId( 100 ) );
      acsd()->portToLagDel( IntfId( 1 ) );
      vlanXlateScheduleDir()->vlanXlateScheduleIs( IntfId( 2 ) );
      vlanRangeScale->scheduleTask();
      scheduler()->runUntilIdle();
      heard_ = record() + ( vlanRangeScale->scheduled() ? "scheduled" : "" );
   }

 private:
   std::string& heard_;
};

TEST_F( CodefDestructionTest, NothingThatFiresInsideADerivedDestructorReachesIt ) {
   settle();
   std::string heard = "nothing yet";
   auto careless =
      Zel::newEntity< CarelessCodef >( heard, acsd_, scheduler_, rangeDir_, scheduleDir_ );
   scheduler_->runUntilIdle();
   EXPECT_EQ( careless->record(), "complete\n" );
   codef_->zelDoZombieReactors( true );   // the fixture's own would drain the schedule
   careless = nullptr;
   EXPECT_EQ( heard, "" );
   EXPECT_EQ( waiting(), "2" );
}

TEST_F( CodefDestructionTest, WithoutNotifieesItGoesAsWell ) {
   auto codef = Zel::newEntity< RecordingCodef >( nullptr, scheduler_, rangeDir_, nullptr );
   codef->taskDel();
   codef->vlanXlateScaleEntryDirDel();
   codef = nullptr;
   EXPECT_EQ( scheduler_->tasksScheduled(), 1u );   // that of the fixture's own codef
}

TEST_F( CodefLifeTest, VirtualSlotsStandInTheirOrder ) {
   EXPECT_EQ( virtualSlot( &Zel::PtrInterface::notifieeList ), 0 );
   EXPECT_EQ( virtualSlot( &Codef::hasNotificationActiveIs ), 1 );
   EXPECT_EQ( virtualSlot( &Zel::PtrInterface::zeroReferencesIs ), 2 );
   EXPECT_EQ( virtualSlot( &Codef::fwkType ), 3 );
   // 4 and 5: the destructor
   EXPECT_EQ( virtualSlot( &Codef::zelDoZombieReactors ), 6 );
   EXPECT_EQ( virtualSlot( &Codef::vlanXlateCodefComplete ), 7 );
   EXPECT_EQ( virtualSlot( &Codef::processSortedVlanRange ), 8 );
}

template < class Notifiee >
void
expectNotifieeSlots() {
   // 0 and 1: the destructor
   EXPECT_EQ( virtualSlot( &Notifiee::onAttribute ), 2 );
   EXPECT_EQ( virtualSlot( &Notifiee::zelDoZombieReactors ), 3 );
}

TEST_F( CodefLifeTest, VirtualSlotsOfItsNotifieesStandInTheirOrder ) {
   expectNotifieeSlots< Codef::ZelAcsd >();
   expectNotifieeSlots< Codef::ZelVlanXlateScheduleDir >();
   expectNotifieeSlots< Codef::ZelTask >();
}

}   // namespace
