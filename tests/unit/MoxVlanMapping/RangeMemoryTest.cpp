// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What add and delete leave behind when memory runs out while somebody holds the elements that they
// would use again: the index as it was. How many elements they make, and what is given back.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <ostream>
#include <string>
#include <tuple>
#include <vector>

#include "Zel/AllocationTracker.h"
#include "Zel/NewEntity.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

// Holds all memory that new elements could have without asking operator new.
class Exhausted {
 public:
   Exhausted() {
      nodes_.reserve( kMostFreeCells );
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      takeAll( [] {
         return Zel::newEntity< MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange >(
            MoxVlanMapping::VlanRangeXlateMapping() );
      } );
      takeAll( [] {
         return Zel::newEntity< MoxVlanMapping::VlanRangeEntry::ZelRevSortedStartVid >(
            MoxVlanMapping::ReverseStartIdVlanId( 1 ), true );
      } );
   }

 private:
   static constexpr std::size_t kMostFreeCells = 100000;

   template < class Take >
   void takeAll( Take take ) {
      try {
         while ( nodes_.size() < kMostFreeCells ) {
            nodes_.push_back( take() );
         }
      } catch ( const std::bad_alloc& ) {
         return;   // there is none left
      }
      ADD_FAILURE() << "there is more memory than this can hold";
   }

   std::vector< Zel::Ptr< Zel::PtrInterface > > nodes_;
};

struct ShortageRow {
   const char* name;
   const char* before;
   bool add;
   unsigned vid;
   const char* after;

   friend void PrintTo( const ShortageRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeShortageTable : public RangeMgrTest, public testing::WithParamInterface< ShortageRow > {
 protected:
   // Runs the operation with the request for memory number `refused`, from 0, refused. Returns
   // whether it came to its end.
   bool succeeds( unsigned refused ) {
      const Exhausted exhausted;
      unsigned request = 0;
      const TestSupport::OperatorNewHook hook( [ & ] {
         if ( request++ == refused ) {
            throw std::bad_alloc();
         }
      } );
      try {
         if ( GetParam().add ) {
            add( GetParam().vid, M );
         } else {
            del( GetParam().vid );
         }
         return true;
      } catch ( const std::bad_alloc& ) {
         return false;
      }
   }

   // How many requests for memory the operation makes; the index is as it was when one is refused.
   unsigned requestsUntilItSucceeds() {
      const std::string before = state();
      unsigned refused = 0;
      while ( !succeeds( refused ) && refused < 10 ) {
         EXPECT_EQ( state(), before ) << "request " << refused << " refused";
         ++refused;
      }
      EXPECT_EQ( state(), GetParam().after );
      return refused;
   }
};

TEST_P( RangeShortageTable, LeavesTheIndexAsItWasWhileItsElementsAreHeld ) {
   given( GetParam().before );
   std::vector< Zel::Ptr< Zel::PtrInterface > > held;
   for ( auto at = entry().vlanIdRange().first(); at; ++at ) {
      held.emplace_back( entry().vlanIdRange().findNode( at->key() ) );
   }
   for ( auto at = entry().revSortedStartVid().first(); at; ++at ) {
      held.emplace_back( entry().revSortedStartVid().findNode( at->key() ) );
   }
   const auto first = entry().vlanIdRange().first();
   const MoxVlanMapping::VlanRangeXlateMapping shown = first->value();
   EXPECT_GT( requestsUntilItSucceeds(), 0u );
   EXPECT_EQ( first->value(), shown ) << "changed under the one who holds it";
}

INSTANTIATE_TEST_SUITE_P(
   Cases, RangeShortageTable,
   testing::Values(
      ShortageRow{ "Merge", "10-12 M, 14-20 M", true, 13, "7: 10-20 M / 10\n" },
      ShortageRow{ "FrontExtension", "10-20 M", true, 9, "7: 9-20 M / 9\n" },
      ShortageRow{ "BackExtension", "10-20 M", true, 21, "7: 10-21 M / 10\n" },
      ShortageRow{ "NewRange", "10-20 M", true, 30, "7: 10-20 M, 30-30 M / 30, 10\n" },
      ShortageRow{ "LowestId", "10-20 M", false, 10, "7: 11-20 M / 11\n" },
      ShortageRow{ "HighestId", "10-20 M", false, 20, "7: 10-19 M / 10\n" },
      ShortageRow{ "Split", "10-20 M", false, 15, "7: 10-14 M, 16-20 M / 16, 10\n" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

struct MadeRow {
   const char* name;
   const char* before;
   bool add;
   unsigned vid;
   const char* made;         // ranges, starts
   const char* madeTraced;   // those who read the traces see elements replaced, not changed

   friend void PrintTo( const MadeRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeElementsMadeTable : public RangeMgrTest, public testing::WithParamInterface< MadeRow > {
 protected:
   static std::int64_t made( const char* element ) {
      return Zel::allocationCount( std::string( "MoxVlanMapping::VlanRangeEntry::" ) + element )
         .total;
   }
   std::string madeByTheCall() {
      given( GetParam().before );
      const std::int64_t ranges = made( "ZelVlanIdRange" );
      const std::int64_t starts = made( "ZelRevSortedStartVid" );
      if ( GetParam().add ) {
         add( GetParam().vid, M );
      } else {
         del( GetParam().vid );
      }
      return std::to_string( made( "ZelVlanIdRange" ) - ranges ) + ", " +
             std::to_string( made( "ZelRevSortedStartVid" ) - starts );
   }
};

TEST_P( RangeElementsMadeTable, AreThoseThatAreStored ) {
   EXPECT_EQ( madeByTheCall(), GetParam().made );
}

TEST_P( RangeElementsMadeTable, AreThoseThatAreStoredWhileTracesAreRead ) {
   const TestSupport::TraceCapture traces( "MoxVlanRangeMgr", "*" );
   EXPECT_EQ( madeByTheCall(), GetParam().madeTraced );
}

INSTANTIATE_TEST_SUITE_P(
   Cases, RangeElementsMadeTable,
   testing::Values( MadeRow{ "Present", "10-12 M", true, 11, "0, 0", "0, 0" },
                    MadeRow{ "NewRange", "10-12 M", true, 20, "1, 1", "1, 1" },
                    MadeRow{ "Merge", "10-12 M, 14-20 M", true, 13, "0, 0", "1, 0" },
                    MadeRow{ "FrontExtension", "10-12 M", true, 9, "0, 0", "1, 1" },
                    MadeRow{ "BackExtension", "10-12 M", true, 13, "0, 0", "1, 0" },
                    MadeRow{ "Absent", "10-12 M", false, 13, "0, 0", "0, 0" },
                    MadeRow{ "OnlyId", "10-10 M", false, 10, "0, 0", "0, 0" },
                    MadeRow{ "LowestId", "10-12 M", false, 10, "0, 0", "1, 1" },
                    MadeRow{ "HighestId", "10-12 M", false, 12, "0, 0", "1, 0" },
                    MadeRow{ "Split", "10-12 M", false, 11, "1, 1", "2, 1" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

// Whether the traces are read, for the way of the deletion differs.
class EmptiedIndexTest : public RangeMgrTest, public testing::WithParamInterface< bool > {};

TEST_P( EmptiedIndexTest, GivesTheMemoryOfItsElementsBack ) {
   const TestSupport::TraceCapture traces( "MoxVlanRangeMgr", GetParam() ? "*" : "" );
   given( "5-5 M" );
   del( 5 );
   const auto before = TestSupport::newRequests();
   entry().reserve( vlan( 5 ), 1 );
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
      const Exhausted exhausted;
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
         ChangeRow{ "LastOfTheArray", 269, "10-12 M", 11,
                    "10-10 M, 11-11 N, 12-12 M / 12, 11, 10" },
         ChangeRow{ "FirstOfTheTrie", 270, "10-12 M", 11,
                    "10-10 M, 11-11 N, 12-12 M / 12, 11, 10" },
         ChangeRow{ "PageOfItsOwn", 272, "60-66 M", 64,
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
      const Exhausted exhausted;
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
   const auto live = Zel::allocationCount( "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange" ).live;
   mgr_->changeReserve( kPort, vlan( 5 ) );
   del( 5 );
   EXPECT_EQ( Zel::allocationCount( "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange" ).live, live );
   mgr_->changeRelease( kPort, vlan( 5 ) );
   EXPECT_EQ( Zel::allocationCount( "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange" ).live,
              live - 1 );
   const auto requests = TestSupport::newRequests();
   entry().reserve( vlan( 5 ), 1 );
   EXPECT_GT( TestSupport::newRequests(), requests ) << "the room was kept";
}

}   // namespace
