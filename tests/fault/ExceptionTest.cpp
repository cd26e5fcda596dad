// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What is foreign to the library throws, at every point where it is called: the exception reaches
// the caller, nothing is lost or leaks, every change stands as before or as after, and the work can
// be brought to its end.
#include <gtest/gtest.h>

#include <ostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "tests/fault/FaultWorld.h"

namespace {

using Fault::again;
using Fault::backlog;
using Fault::configured;
using Fault::idle;
using Fault::nothing;
using Fault::World;
using Act = Fault::Row< World >::Act;

void
ingressNew( World& w ) {
   w.ingressIs( w.config( 14, 'M' ) );
}
void
ingressChanged( World& w ) {
   w.ingressIs( w.config( 11, 'N' ) );
}
void
ingressGone( World& w ) {
   w.acsd->ingressConfigDir()->configDel( w.key( 11 ) );
}
void
egressNew( World& w ) {
   w.egressIs( w.config( 21, 'M' ) );
}
void
egressChanged( World& w ) {
   w.egressIs( w.config( 20, 'N' ) );
}
void
egressGone( World& w ) {
   w.acsd->egressConfigDir()->configDel( w.key( 20 ) );
}

void
inOtherDirectory( World& w ) {
   w.sm->handleInitialized();
   w.sm->vlanRangeMgrIs( w.otherRanges );
   w.ingressIs( w.config( 11, 'M' ) );
   w.drain();
}

struct Row {
   const char* name;
   const char* point;
   Act given;
   Act act;
   Act retry;

   friend void PrintTo( const Row* row, std::ostream* out ) { *out << row->name; }
};

const Row kRows[] = {
   // Reactors, each in front of the library's own.
   { "MarkReactor", "mark", nothing,
     []( World& w ) { w.schedule->vlanXlateScheduleIs( w.port( 7 ) ); }, nothing },
   { "UnmarkReactor", "mark", backlog,
     []( World& w ) { w.schedule->vlanXlateScheduleDel( w.port( 1 ) ); }, nothing },
   { "UnmarkAllReactor", "mark", backlog, []( World& w ) { w.schedule->vlanXlateScheduleDelAll(); },
     nothing },
   { "WorkReactor", "work", idle,
     []( World& w ) { w.schedule->vlanXlateScheduleIs( w.port( 7 ) ); }, nothing },
   { "IngressReactor", "ingress", configured, ingressNew, nothing },
   { "IngressGoneReactor", "ingress", configured, ingressGone, nothing },
   { "EgressReactor", "egress", configured, egressNew, nothing },
   { "EgressGoneReactor", "egress", configured, egressGone, nothing },
   { "StatusReactor", "status", configured, egressNew, nothing },
   { "StatusGoneReactor", "status", configured, egressGone, nothing },
   { "MarkReactorInsideAWrite", "mark", configured, ingressNew, nothing },
   { "MarkReactorInsideADeletion", "mark", configured, ingressGone, nothing },
   { "MarkReactorInsideAChange", "mark", configured, ingressChanged, again },
   { "WorkReactorInsideAWrite", "work", configured, ingressNew, nothing },
   { "LagReactor", "lag", []( World& w ) { w.acsd->portToLagIs( w.port( 7 ), w.port( 8 ) ); },
     []( World& w ) { w.acsd->portToLagDel( w.port( 7 ) ); }, nothing },
   { "RunReactor", "run", backlog, idle, idle },
   { "UnmarkReactorInsideADrain", "mark", backlog, idle, idle },
   // Derived classes.
   { "Process", "process", backlog, idle, idle },
   { "Complete", "complete", idle, []( World& w ) { w.codef->drainBacklog(); }, idle },
   { "ProcessByHand", "process", backlog, []( World& w ) { w.codef->drainBacklog(); }, idle },
   { "Clock", "clock", backlog, idle, idle },
   { "BeforeAdd", "before add", configured, ingressNew, again },
   { "BehindAdd", "behind add", configured, ingressNew, again },
   { "BeforeDelete", "before del", configured, ingressGone, again },
   { "BehindDelete", "behind del", configured, ingressGone, again },
   { "BeforeDeleteUnderAnotherManager", "before del", inOtherDirectory, ingressGone, ingressGone },
   { "BehindDeleteUnderAnotherManager", "behind del", inOtherDirectory, ingressGone, nothing },
   { "BeforeChangeAddsUnderAnotherManager", "before add", inOtherDirectory, ingressChanged,
     ingressChanged },
   { "BeforeChangeDeletes", "before del", configured, ingressChanged, again },
   { "BehindChangeDeletes", "behind del", configured, ingressChanged, again },
   { "BeforeChangeAdds", "before add", configured, ingressChanged, again },
   { "BehindChangeAdds", "behind add", configured, ingressChanged, again },
   { "BeforeEgressAdd", "before egress add", configured, egressNew, again },
   { "BehindEgressAdd", "behind egress add", configured, egressNew, again },
   { "BeforeEgressChange", "before egress add", configured, egressChanged, again },
   { "BehindEgressChange", "behind egress add", configured, egressChanged, again },
   { "BeforeEgressDelete", "before egress del", configured, egressGone, again },
   { "BehindEgressDelete", "behind egress del", configured, egressGone, again },
   { "BeforeAddInAReplay", "before add",
     []( World& w ) {
        w.ingressIs( w.config( 10, 'M' ) );
        w.ingressIs( w.config( 11, 'M' ) );
     },
     again, again },
   // Constructors.
   { "CodefConstructor", "codef constructed", nothing, []( World& w ) { w.made = w.newCodef(); },
     []( World& w ) { w.made = w.newCodef(); } },
   { "SmConstructor", "sm constructed", configured, []( World& w ) { w.made = w.newSm(); },
     []( World& w ) { w.made = w.newSm(); } },
   { "WatcherConstructor", "watcher constructed", nothing,
     []( World& w ) { w.madeListener = w.listener( w.schedule, "another" ); },
     []( World& w ) { w.madeListener = w.listener( w.schedule, "another" ); } },
   { "WorkReactorInsideACodefConstructor", "work", idle, []( World& w ) { w.made = w.newCodef(); },
     []( World& w ) { w.made = w.newCodef(); } },
};

void
throwAt( const Row& row, bool outOfRange ) {
   Fault::Parts after;
   {
      World world;
      row.given( world );
      row.act( world );
      row.retry( world );
      after = world.parts();
      world.drain();   // what is made once in the life of a process is made here
   }
   const auto live = TestSupport::liveObjects();
   const auto blocks = TestSupport::newBlocks();
   {
      World world;
      row.given( world );
      const Fault::Parts before = world.parts();
      world.points.due = [ & ]( std::string_view point ) { return point == row.point; };
      world.points.outOfRange = outOfRange;
      try {
         row.act( world );
         ADD_FAILURE() << "nothing reached the caller";
      } catch ( const std::runtime_error& error ) {
         EXPECT_STREQ( error.what(), row.point );
      }
      world.points.due = nullptr;
      world.verify();
      Fault::expectBeforeOrAfter( world.parts(), before, after );
      row.retry( world );
      EXPECT_EQ( world.parts(), after );
      world.verify();
      world.drain();
      EXPECT_TRUE( world.schedule->vlanXlateSchedule().empty() );
   }
   EXPECT_EQ( TestSupport::newBlocks(), blocks ) << "memory leaks";
   EXPECT_EQ( TestSupport::liveObjects(), live ) << "objects are left";
}

class ExceptionTest : public testing::TestWithParam< const Row* > {};

TEST_P( ExceptionTest, ReachesTheCallerAndLosesNothing ) {
   for ( const bool traced : { false, true } ) {
      SCOPED_TRACE( traced ? "traced" : "not traced" );
      const Fault::TraceSwitch traces( traced );
      throwAt( *GetParam(), false );
   }
}

// What the library itself refuses ids with is an exception like any other.
TEST_P( ExceptionTest, IsNotTakenForARefusal ) {
   throwAt( *GetParam(), true );
}

INSTANTIATE_TEST_SUITE_P( All, ExceptionTest, testing::ValuesIn( Fault::pointersTo( kRows ) ),
                          Fault::caseName< Row > );

class ThrowingSinkTest : public testing::Test {
 protected:
   ThrowingSinkTest() {
      Zel::traceSinkIs( []( const Zel::TraceLine& ) { throw std::runtime_error( "sink" ); } );
      Zel::traceLevelsIs( "*/*" );
   }
   ~ThrowingSinkTest() override {
      Zel::traceLevelsIs( "*/" );
      Zel::traceSinkIs( {} );
   }
};

TEST_F( ThrowingSinkTest, KeepsNothingFromItsEnd ) {
   World world;
   configured( world );
   EXPECT_EQ( world.parts().at( "sorted of 7" ), "10-12 M" );
   ingressGone( world );
   EXPECT_EQ( world.parts().at( "index of 7" ), "10-10 M, 12-12 M / 12, 10 waits" );
   world.drain();
   EXPECT_EQ( world.parts().at( "sorted of 7" ), "10-10 M, 12-12 M" );
}

}   // namespace
