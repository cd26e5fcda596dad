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
        w.ingressIs( { { w.port( 6 ), Bridging::VlanId( 11 ) }, TestSupport::mappingOf( 'M' ) } );
        w.egressIs( w.config( 20, 'M' ) );
     },
     again },
   { "IngressNew", configured, []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); } ) },
   { "IngressFirst", again, []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 14, 'M' ) ); } ) },
   { "IngressChanged", configured, []( World& w ) { w.ingressIs( w.config( 11, 'N' ) ); }, again },
   // Its interface has no other range: the index is empty between deletion and addition.
   { "OnlyIngressChanged",
     []( World& w ) {
        again( w );
        w.ingressIs( w.config( 10, 'M' ) );
        w.drain();
     },
     []( World& w ) { w.ingressIs( w.config( 10, 'N' ) ); }, again },
   // The deletion splits a range where one more changes the form of the store.
   { "IngressChangedAmongMany",
     []( World& w ) {
        again( w );
        for ( unsigned i = 0; i < 269; ++i ) {
           w.ingressIs( w.config( 2 + 2 * i, 'M' ) );
        }
        for ( unsigned vlan = 1001; vlan <= 1003; ++vlan ) {
           w.ingressIs( w.config( vlan, 'M' ) );
        }
        w.drain();
     },
     []( World& w ) { w.ingressIs( w.config( 1002, 'N' ) ); }, again },
   { "LowestIngressChanged", configured, []( World& w ) { w.ingressIs( w.config( 10, 'N' ) ); },
     again },
   { "HighestIngressChanged", configured, []( World& w ) { w.ingressIs( w.config( 12, 'N' ) ); },
     again },
   // The addition merges, and needs less than was reserved.
   { "IngressChangedToThatOfItsNeighbours",
     []( World& w ) {
        configured( w );
        w.ingressIs( w.config( 11, 'N' ) );
        w.drain();
     },
     []( World& w ) { w.ingressIs( w.config( 11, 'M' ) ); }, again },
   { "IngressGone", configured,
     []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 11 ) ); }, again },
   { "IngressWaits", contended, []( World& w ) { w.ingressIs( w.config( 30, 'O', 3 ) ); },
     writtenAgain( []( World& w ) { w.ingressIs( w.config( 30, 'O', 3 ) ); } ) },
   { "IngressTakesOver", contended,
     []( World& w ) { w.acsd->ingressConfigDir()->configDel( w.key( 30, 1 ) ); }, again },
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
