// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The order in which add and delete change the two collections. Which of two ranges goes or comes
// first, RangeDeathTest (merge) and UncheckedIdTest (split) see where an operation is cut short.
#include <gtest/gtest.h>

#include <cstdint>
#include <ostream>
#include <string>

#include "MoxVlanMapping/RangeRules.h"
#include "MoxVlanMapping/RangeStore.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using MoxVlanMapping::RangeStore;
using MoxVlanMapping::VlanRangeXlateMapping;

/// A store that writes down how the rules change it: "delete range 14", "insert start 13",
/// "insert range 10-20", a line each.
class RecordingStore {
 public:
   using Found = RangeStore::Found;

   explicit RecordingStore( RangeStore& store ) : store_( store ) {}

   const std::string& lines() const { return lines_; }

   auto upperBound( Bridging::VlanId vid ) const { return store_.upperBound( vid ); }
   auto lowerBound( MoxVlanMapping::ReverseStartIdVlanId vid ) const {
      return store_.lowerBound( vid );
   }
   void reserve( Bridging::VlanId vid ) { store_.reserve( vid ); }
   void trim() { store_.trim(); }
   void vlanIdRangeIs( const VlanRangeXlateMapping& range ) {
      note( "insert range ", range.lowVid().value(),
            "-" + std::to_string( range.highVid().value() ) );
      store_.vlanIdRangeIs( range );
   }
   bool vlanIdRangeDel( Bridging::VlanId low ) {
      note( "delete range ", low.value() );
      return store_.vlanIdRangeDel( low );
   }
   void revSortedStartVidIs( MoxVlanMapping::ReverseStartIdVlanId start, bool flag ) {
      note( "insert start ", start.value(), flag ? "" : "=false" );
      store_.revSortedStartVidIs( start, flag );
   }
   bool revSortedStartVidDel( MoxVlanMapping::ReverseStartIdVlanId start ) {
      note( "delete start ", start.value() );
      return store_.revSortedStartVidDel( start );
   }

 private:
   void note( const char* what, unsigned id, const std::string& more = "" ) {
      lines_ += what + std::to_string( id ) + more + "\n";
   }

   RangeStore& store_;
   std::string lines_;
};

class RangeChangeOrderTest : public RangeMgrTest {
 protected:
   // Elements inserted or deleted: ranges, then starts.
   template < class Act >
   std::string changes( Act act ) {
      const std::uint32_t ranges = entry().vlanIdRange().changes();
      const std::uint32_t starts = entry().revSortedStartVid().changes();
      act();
      return std::to_string( entry().vlanIdRange().changes() - ranges ) + ", " +
             std::to_string( entry().revSortedStartVid().changes() - starts );
   }
};

struct OrderRow {
   const char* name;
   const char* before;
   char operation;   // '+' add, '-' delete
   unsigned vid;
   const char* changes;
   const char* after;

   friend void PrintTo( const OrderRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeChangeOrderTable :
    public RangeMgrTest,
    public testing::WithParamInterface< OrderRow > {};

TEST_P( RangeChangeOrderTable, IsKept ) {
   const OrderRow& row = GetParam();
   given( row.before );
   RecordingStore recording( entry().store() );
   Zel::TraceHandle silent( "RangeChangeOrderTable", false );
   MoxVlanMapping::RangeRules< RecordingStore, false > rules( { silent, kPort, nullptr },
                                                              recording );
   if ( row.operation == '+' ) {
      rules.addVlanToIdx( vlan( row.vid ), TestSupport::mappingOf( M ) );
   } else {
      rules.deleteVlanFromIdx( vlan( row.vid ) );
   }
   EXPECT_EQ( recording.lines(), row.changes );
   EXPECT_EQ( ranges() + " / " + starts(), row.after );
}

INSTANTIATE_TEST_SUITE_P(
   Cases, RangeChangeOrderTable,
   testing::Values(
      OrderRow{ "Merge", "10-12 M, 14-20 M", '+', 13,
                "delete range 14\ndelete range 10\ndelete start 14\ninsert range 10-20\n",
                "10-20 M / 10" },
      OrderRow{ "FrontExtension", "10-20 M", '+', 9,
                "delete range 10\ndelete start 10\ninsert start 9\ninsert range 9-20\n",
                "9-20 M / 9" },
      OrderRow{ "BackExtension", "10-20 M", '+', 21, "delete range 10\ninsert range 10-21\n",
                "10-21 M / 10" },
      OrderRow{ "NewRange", "", '+', 13, "insert start 13\ninsert range 13-13\n", "13-13 M / 13" },
      OrderRow{ "Present", "10-20 M", '+', 15, "", "10-20 M / 10" },
      OrderRow{ "OnlyId", "5-5 M", '-', 5, "delete range 5\ndelete start 5\n", " / " },
      OrderRow{ "LowestId", "10-20 M", '-', 10,
                "delete range 10\ndelete start 10\ninsert range 11-20\ninsert start 11\n",
                "11-20 M / 11" },
      OrderRow{ "HighestId", "10-20 M", '-', 20, "delete range 10\ninsert range 10-19\n",
                "10-19 M / 10" },
      OrderRow{ "Split", "10-20 M", '-', 15,
                "delete range 10\ninsert range 10-14\ninsert range 16-20\ninsert start 16\n",
                "10-14 M, 16-20 M / 16, 10" },
      OrderRow{ "Absent", "10-20 M", '-', 21, "", "10-20 M / 10" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

TEST_F( RangeChangeOrderTest, NothingElseIsChanged ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_EQ( changes( [ & ] { add( 13, M ); } ), "3, 1" );   // merge
   EXPECT_EQ( changes( [ & ] { add( 9, M ); } ), "2, 2" );    // front extension
   EXPECT_EQ( changes( [ & ] { add( 21, M ); } ), "2, 0" );   // back extension
   EXPECT_EQ( changes( [ & ] { add( 30, M ); } ), "1, 1" );   // new range
   EXPECT_EQ( changes( [ & ] { add( 30, M ); } ), "0, 0" );   // present
   EXPECT_EQ( changes( [ & ] { del( 30 ); } ), "1, 1" );      // only id
   EXPECT_EQ( changes( [ & ] { del( 9 ); } ), "2, 2" );       // lowest id
   EXPECT_EQ( changes( [ & ] { del( 21 ); } ), "2, 0" );      // highest id
   EXPECT_EQ( changes( [ & ] { del( 15 ); } ), "3, 1" );      // split
   EXPECT_EQ( changes( [ & ] { del( 15 ); } ), "0, 0" );      // absent
   EXPECT_EQ( ranges(), "10-14 M, 16-20 M" );
}

// An overwritten element would stay the same; here each rebuilt range is a new one.
TEST_F( RangeChangeOrderTest, RebuiltRangesAreNewElements ) {
   given( "10-20 M" );
   const auto first = entry().vlanIdRange().first();
   add( 21, M );
   EXPECT_FALSE( first.linked() );
   const auto second = entry().vlanIdRange().first();
   del( 21 );
   EXPECT_FALSE( second.linked() );
   EXPECT_EQ( ranges(), "10-20 M" );
}

TEST_F( RangeChangeOrderTest, StartsThatStayKeepTheirNodes ) {
   given( "10-12 M, 14-20 M" );
   const auto start = entry().revSortedStartVid().findElement( 10 );
   add( 13, M );
   add( 21, M );
   del( 21 );
   del( 15 );
   EXPECT_TRUE( start.linked() );
}

}   // namespace
