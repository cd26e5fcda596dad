// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Schedule, sort, drain and task: each operation with a fault at each of its points.
#include <gtest/gtest.h>

#include "tests/fault/FaultWorld.h"

namespace {

using Fault::backlog;
using Fault::nothing;
using Fault::sortedBefore;
using Fault::World;
using Quen::YieldPolicy;
using Row = Fault::Row< World >;

Row::Act
yielding( YieldPolicy policy ) {
   return [ policy ]( World& w ) {
      backlog( w );
      w.scheduler->yieldPolicyIs( policy, 1 );
   };
}

const Row kRows[] = {
   { "Sort", backlog, []( World& w ) { w.codef->sortVlanRangeBySize( w.port( 2 ) ); } },
   { "SortAgainWithMore", sortedBefore,
     []( World& w ) { w.codef->sortVlanRangeBySize( w.port( 1 ) ); } },
   { "SortWhileHeld", sortedBefore,
     []( World& w ) {
        const auto scale = w.codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( w.port( 1 ) );
        const auto held = scale->vidRangeSorted().first();
        w.codef->sortVlanRangeBySize( w.port( 1 ) );
     } },
   { "Drain", backlog, []( World& w ) { w.drain(); } },
   { "DrainYieldingAlways", yielding( YieldPolicy::Always ), []( World& w ) { w.drain(); } },
   { "DrainYieldingNever", yielding( YieldPolicy::Never ), []( World& w ) { w.drain(); } },
   { "DrainYieldingAfterTests", yielding( YieldPolicy::AfterTests ),
     []( World& w ) { w.drain(); } },
   needsNoMemory( Row{ "DrainEmpty", []( World& w ) { w.drain(); },
                       []( World& w ) { w.codef->drainBacklog(); } } ),
   needsNoMemory(
      Row{ "CodefInitializedAgain", nothing, []( World& w ) { w.codef->handleInitialized(); } } ),
   { "DrainByHand", backlog, []( World& w ) { w.codef->drainBacklog(); },
     []( World& w ) { w.drain(); } },
   { "CodefMade", nothing, []( World& w ) { w.made = w.newCodef(); } },
   { "TaskMade", nothing,
     []( World& w ) {
        w.made = Quen::taskFactory( w.scheduler, Quen::TaskPriority( 1 ), "a name that is long" );
     } },
   needsNoMemory( Row{ "TaskScheduled", []( World& w ) { w.drain(); },
                       []( World& w ) { w.codef->task()->scheduleTask(); } } ),
   needsNoMemory( Row{ "TasksScheduled",
                       []( World& w ) {
                          for ( unsigned i = 0; i < 5; ++i ) {
                             w.values.push_back( Zel::Value::of( Quen::taskFactory(
                                w.scheduler, Quen::TaskPriority( 5 ), "more" ) ) );
                          }
                       },
                       []( World& w ) {
                          for ( const Zel::Value& task : w.values ) {
                             task.entity< Quen::Task >()->scheduleTask();
                          }
                       } } ),
   { "TaskReplaced",
     []( World& w ) { w.made = Quen::taskFactory( w.scheduler, Quen::TaskPriority( 1 ), "new" ); },
     []( World& w ) { w.codef->taskIs( static_cast< Quen::Task* >( w.made.get() ) ); } },
   { "TaskAgain", []( World& w ) { w.codef->taskDel(); },
     []( World& w ) {
        w.codef->taskIs( Quen::taskFactory( w.scheduler, Quen::TaskPriority( 1 ), "new" ) );
     } },
   { "WatcherMade", nothing,
     []( World& w ) { w.madeListener = w.listener( w.schedule, "another" ); } },
   { "WatcherMoved", []( World& w ) { w.madeListener = w.listener( w.schedule, "another" ); },
     []( World& w ) { w.madeListener->zelNotifierIs( w.acsd ); } },
};

class DrainFaultTest : public testing::TestWithParam< const Row* > {};

TEST_P( DrainFaultTest, LeavesBeforeOrAfterAndCanBeDoneAgain ) {
   Fault::sweep( *GetParam() );
}

INSTANTIATE_TEST_SUITE_P( All, DrainFaultTest, testing::ValuesIn( Fault::pointersTo( kRows ) ),
                          Fault::caseName< Row > );

}   // namespace
