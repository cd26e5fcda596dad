// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What the range index gives back, and what an open change keeps.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "MoxVlanMapping/RangeStore.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

// Whether the traces are read, for the way of the deletion differs.
class EmptiedIndexTest : public RangeMgrTest, public testing::WithParamInterface< bool > {};

TEST_P( EmptiedIndexTest, GivesTheMemoryOfItsElementsBack ) {
   const TestSupport::TraceCapture traces( "MoxVlanRangeMgr", GetParam() ? "*" : "" );
   given( "5-5 M" );
   del( 5 );
   const auto before = TestSupport::newRequests();
   entry().store().reserve( vlan( 5 ) );
   EXPECT_GT( TestSupport::newRequests(), before ) << "the room was kept";
}

INSTANTIATE_TEST_SUITE_P( TracedAndNot, EmptiedIndexTest, testing::Bool() );

// The addition behind a deletion, with no memory but what was reserved before it.

struct ChangeRow {
   const char* name;
   unsigned others;   ///< ranges of one id above, which decide on the form of the store
   const char* before;
   unsigned vid;
   const char* after;

   friend void PrintTo( const ChangeRow& row, std::ostream* out ) { *out << row.name; }
};

class ReservedChangeTest :
    public RangeMgrTest,
    public testing::WithParamInterface< std::tuple< ChangeRow, bool > > {
 protected:
   static constexpr unsigned kFirstOther = 1001;

   void givenOthers() {
      for ( unsigned i = 0; i < std::get< 0 >( GetParam() ).others; ++i ) {
         add( kFirstOther + 2 * i, M );
      }
   }
};

TEST_P( ReservedChangeTest, AddsWithoutMemory ) {
   const auto& [ row, traced ] = GetParam();
   const TestSupport::TraceCapture traces( "MoxVlanRangeMgr", traced ? "*" : "" );
   given( row.before );
   givenOthers();
   mgr_->changeReserve( kPort, vlan( row.vid ) );
   del( row.vid );
   {
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      add( row.vid, N );
   }
   mgr_->changeRelease( kPort, vlan( row.vid ) );
   for ( unsigned i = 0; i < row.others; ++i ) {
      del( kFirstOther + 2 * i );
   }
   EXPECT_EQ( ranges() + " / " + starts(), row.after );
}

INSTANTIATE_TEST_SUITE_P(
   Cases, ReservedChangeTest,
   testing::Combine(
      testing::Values(
         ChangeRow{ "OnlyRange", 0, "5-5 M", 5, "5-5 N / 5" },
         ChangeRow{ "LowestId", 0, "10-12 M", 10, "10-10 N, 11-12 M / 11, 10" },
         ChangeRow{ "HighestId", 0, "10-12 M", 12, "10-11 M, 12-12 N / 12, 10" },
         ChangeRow{ "IdInside", 0, "10-12 M", 11, "10-10 M, 11-11 N, 12-12 M / 12, 11, 10" },
         ChangeRow{ "FullArray", 2, "10-12 M, 20-20 M", 11,
                    "10-10 M, 11-11 N, 12-12 M, 20-20 M / 20, 12, 11, 10" },
         ChangeRow{ "Merge", 0, "10-10 N, 11-11 M, 12-12 N", 11, "10-12 N / 10" },
         ChangeRow{ "FrontExtension", 0, "10-11 M, 12-12 N", 11, "10-10 M, 11-12 N / 11, 10" },
         ChangeRow{ "LastOfTheArray", 253, "10-12 M", 11,
                    "10-10 M, 11-11 N, 12-12 M / 12, 11, 10" },
         ChangeRow{ "FirstOfThePages", 254, "10-12 M", 11,
                    "10-10 M, 11-11 N, 12-12 M / 12, 11, 10" },
         ChangeRow{ "PageOfItsOwn", 256, "60-66 M", 64,
                    "60-63 M, 64-64 N, 65-66 M / 65, 64, 60" } ),
      testing::Bool() ),
   []( const auto& row ) {
      return std::string( std::get< 0 >( row.param ).name ) +
             ( std::get< 1 >( row.param ) ? "Traced" : "" );
   } );

// As a reactor of one change may make others.
TEST_F( RangeMgrTest, WhatAChangeReservedServesNoOtherId ) {
   given( "10-12 M, 20-22 M" );
   mgr_->changeReserve( kPort, vlan( 11 ) );
   del( 11 );
   mgr_->changeReserve( kPort, vlan( 21 ) );
   del( 21 );
   add( 30, M );
   {
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      add( 21, N );
      mgr_->changeRelease( kPort, vlan( 21 ) );
      add( 11, N );
      mgr_->changeRelease( kPort, vlan( 11 ) );
   }
   EXPECT_EQ( ranges(), "10-10 M, 11-11 N, 12-12 M, 20-20 M, 21-21 N, 22-22 M, 30-30 M" );
}

TEST_F( RangeMgrTest, AChangeGivesBackWhatItReservedAndDidNotUse ) {
   given( "5-5 M" );
   mgr_->changeReserve( kPort, vlan( 5 ) );
   del( 5 );
   auto requests = TestSupport::newRequests();
   entry().store().reserve( vlan( 5 ) );
   EXPECT_EQ( TestSupport::newRequests(), requests ) << "the room was not kept";
   mgr_->changeRelease( kPort, vlan( 5 ) );
   requests = TestSupport::newRequests();
   entry().store().reserve( vlan( 5 ) );
   EXPECT_GT( TestSupport::newRequests(), requests ) << "the room was kept";
}

}   // namespace
