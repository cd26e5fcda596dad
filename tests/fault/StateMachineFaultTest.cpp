// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// From configuration to index and status: each write with a fault at each of its points.
#include <gtest/gtest.h>

#include "tests/fault/FaultWorld.h"

namespace {

using Fault::again;
using Fault::configured;
using Fault::nothing;
using Fault::World;
using Row = Fault::Row< World >;
using Act = Row::Act;

// The write, which may not have come to the record, and what it should have delivered.
Act
writtenAgain( const Act& write ) {
   return [ write ]( World& world ) {
      write( world );
      again( world );
   };
}

// Two keys of one VLAN: the second waits for the place of the first.
void
contended( World& w ) {
   configured( w );
   w.ingressIs( w.config( 30, 'M', 1 ) );
   w.ingressIs( w.config( 30, 'N', 2 ) );
   w.drain();
}

const Row kRows[] = {
   { "SmMade", nothing, []( World& w ) { w.made = w.newSm(); } },
   { "AllMade", nothing,
     []( World& w ) {
        w.made = Mox::moxCommonSmDataFactory();
        w.made = MoxVlanMapping::vlanRangeEntryFactory( w.port( 1 ) );
        w.made = MoxVlanMapping::vlanXlateScaleEntryFactory( w.port( 1 ) );
        w.made = MoxVlanMapping::vlanXlateScaleEntryDirFactory();
        w.made = Bridging::configFactory();
        w.made = Bridging::vlanXlateStatusDirFactory();
        w.made = Zel::manualClockFactory();
     } },
   { "ManagerReplaced", configured,
     []( World& w ) {
        w.sm->vlanRangeMgrIs( MoxVlanMapping::vlanRangeEntryDirFactory() );
        w.sm->vlanRangeMgrIs( w.ranges );
     } },
   { "Replay",
     []( World& w ) {
        w.drain();
        w.ingressIs( w.config( 10, 'M' ) );
        w.ingressIs( w.config( 11, 'M' ) );
        w.egressIs( w.config( 20, 'M' ) );
     },
     again,
     again,
     { "10-10 M / 10 waits", "11-11 M / 11 waits" } },
   { "IngressNew", configured, []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); } ) },
   { "IngressFirst", again, []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); } ) },
   { "IngressChanged",
     configured,
     []( World& w ) { w.ingressIs( w.config( 11, 'N' ) ); },
     again,
     { "10-10 M, 12-12 M / 12, 10 waits" } },
   { "IngressGone", configured,
     []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 11 ) ); }, again },
   { "IngressWaits", contended, []( World& w ) { w.ingressIs( w.config( 30, 'O', 3 ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 30, 'O', 3 ) ); } ) },
   { "IngressTakesOver",
     contended,
     []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 30, 1 ) ); },
     again,
     { "10-12 M / 10 waits" } },
   { "EgressNew", configured, []( World& w ) { w.egressIs( w.config( 21, 'M' ) ); },
     writtenAgain( []( World& w ) { w.egressIs( w.config( 21, 'M' ) ); } ) },
   needsNoMemory( Row{ "EgressChanged", configured,
                       []( World& w ) { w.egressIs( w.config( 20, 'N' ) ); }, again } ),
   needsNoMemory( Row{ "EgressGone", configured,
                       []( World& w ) { w.acsd->egressConfigDir()->configDel( w.key( 20 ) ); },
                       again } ),
   needsNoMemory( Row{ "IngressWaitsNoMore", contended,
                       []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 30, 2 ) ); },
                       again } ),
   needsNoMemory( Row{ "IngressUnknownGone", configured,
                       []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 13 ) ); } } ),
   { "StatusWritten", configured,
     []( World& w ) {
        w.acsd->statusDir()->statusIs(
           { w.key( 40 ), TestSupport::mappingOf( 'M' ), false, false, 0 } );
     } },
   needsNoMemory( Row{ "StatusGone", configured,
                       []( World& w ) { w.acsd->statusDir()->statusDel( w.key( 20 ) ); } } ),
   needsNoMemory( Row{ "LagChanged",
                       []( World& w ) { w.acsd->portToLagIs( w.port( 7 ), w.port( 8 ) ); },
                       []( World& w ) { w.acsd->portToLagIs( w.port( 7 ), w.port( 6 ) ); } } ),
   { "LagJoined", nothing, []( World& w ) { w.acsd->portToLagIs( w.port( 7 ), w.port( 8 ) ); } },
   { "LagLeft", []( World& w ) { w.acsd->portToLagIs( w.port( 7 ), w.port( 8 ) ); },
     []( World& w ) { w.acsd->portToLagDel( w.port( 7 ) ); },
     []( World& w ) { w.codef->handlePortToLag( w.port( 7 ) ); } },
};

class StateMachineFaultTest : public testing::TestWithParam< const Row* > {};

TEST_P( StateMachineFaultTest, LeavesBeforeOrAfterAndCanBeDoneAgain ) {
   Fault::sweep( *GetParam() );
}

INSTANTIATE_TEST_SUITE_P( All, StateMachineFaultTest,
                          testing::ValuesIn( Fault::pointersTo( kRows ) ), Fault::caseName< Row > );

}   // namespace
