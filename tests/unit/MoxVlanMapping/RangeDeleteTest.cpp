// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Zel/Trace.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

constexpr char kUpper[] = "deleteVlanFromIdx vid present in upper bound range \n";
constexpr char kLower[] = "deleteVlanFromIdx vid present in lower bound range \n";
constexpr char kAbsent[] = "deleteVlanFromIdx vid not present in lower and upper bound range \n";
constexpr char kSingle[] = "deleteVlanFromRange removing size 1 Range \n";
constexpr char kFirst[] = "deleteVlanFromRange remove lowVid from Range \n";
constexpr char kLast[] = "deleteVlanFromRange remove highVid from Range \n";
constexpr char kSplit[] = "deleteVlanFromRange spliting  Range \n";

struct DeleteRow {
   const char* name;
   const char* before;
   unsigned vid;
   const char* path;
   const char* what;
   const char* ranges;
   const char* starts;

   friend void PrintTo( const DeleteRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeDeleteTable : public RangeMgrTest, public testing::WithParamInterface< DeleteRow > {
 protected:
   static std::string decisions( const TestSupport::TraceCapture& capture ) {
      std::string all;
      for ( const auto& line : capture.lines() ) {
         all += line.text + "\n";
      }
      return all;
   }
};

TEST_P( RangeDeleteTable, ShrinksSplitsOrDropsTheRange ) {
   const DeleteRow& row = GetParam();
   given( row.before );
   {
      TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "1" );
      del( row.vid );
      EXPECT_EQ( decisions( capture ), std::string( row.path ) + row.what );
   }
   EXPECT_EQ( ranges(), row.ranges );
   EXPECT_EQ( starts(), row.starts );
   EXPECT_EQ( TestSupport::interfacesText( dir_->vlanRangeEntry() ), "7" );
   entry().vlanIdRange().verify();
   entry().revSortedStartVid().verify();
}

INSTANTIATE_TEST_SUITE_P(
   Examples, RangeDeleteTable,
   testing::Values(
      DeleteRow{ "InTheMiddle", "10-20 M", 15, kLower, kSplit, "10-14 M, 16-20 M", "16, 10" },
      DeleteRow{ "AtTheStart", "10-20 M", 10, kUpper, kFirst, "11-20 M", "11" },
      DeleteRow{ "AtTheEnd", "10-20 M", 20, kLower, kLast, "10-19 M", "10" },
      DeleteRow{ "TheOnlyId", "5-5 M", 5, kUpper, kSingle, "", "" },
      DeleteRow{ "InAGap", "10-12 M, 14-20 M", 13, kAbsent, "", "10-12 M, 14-20 M", "14, 10" },

      DeleteRow{ "TheSecondId", "10-20 M", 11, kLower, kSplit, "10-10 M, 12-20 M", "12, 10" },
      DeleteRow{ "TheLastButOne", "10-20 M", 19, kLower, kSplit, "10-18 M, 20-20 M", "20, 10" },
      DeleteRow{ "TheFirstOfTwo", "10-11 M", 10, kUpper, kFirst, "11-11 M", "11" },
      DeleteRow{ "TheLastOfTwo", "10-11 M", 11, kLower, kLast, "10-10 M", "10" },
      DeleteRow{ "TheLowestVlan", "1-4094 M", 1, kUpper, kFirst, "2-4094 M", "2" },
      DeleteRow{ "TheHighestVlan", "1-4094 M", 4094, kLower, kLast, "1-4093 M", "1" },
      DeleteRow{ "TheHighestVlanAlone", "4094-4094 M", 4094, kUpper, kSingle, "", "" },
      DeleteRow{ "TheLowestVlanAlone", "1-1 M", 1, kUpper, kSingle, "", "" },
      DeleteRow{ "BelowAll", "10-20 M", 9, kAbsent, "", "10-20 M", "10" },
      DeleteRow{ "AboveAll", "10-20 M", 21, kAbsent, "", "10-20 M", "10" },
      DeleteRow{ "FromNothing", "", 10, kAbsent, "", "", "" },
      DeleteRow{ "BetweenMappings", "10-12 M, 13-13 N, 14-20 M", 13, kUpper, kSingle,
                 "10-12 M, 14-20 M", "14, 10" },
      DeleteRow{ "UnderTheEmptyMapping", "10-20 -", 15, kLower, kSplit, "10-14 -, 16-20 -",
                 "16, 10" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

class RangeDeleteTest : public RangeMgrTest {};

TEST_F( RangeDeleteTest, AddingTheAbsentIdMergesAgain ) {
   given( "10-14 M, 16-20 M" );
   del( 15 );
   EXPECT_EQ( ranges(), "10-14 M, 16-20 M" );
   add( 15, M );
   EXPECT_EQ( ranges(), "10-20 M" );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( RangeDeleteTest, AnIdGoesWhateverItsMappingAndThePiecesKeepIt ) {
   given( "10-20 M, 21-30 N" );
   del( 15 );
   del( 25 );
   EXPECT_EQ( ranges(), "10-14 M, 16-20 M, 21-24 N, 26-30 N" );
   EXPECT_EQ( starts(), "26, 21, 16, 10" );
}

TEST_F( RangeDeleteTest, TheOnlyIdTakesRangeAndStartAndLeavesTheEntry ) {
   given( "5-5 M" );
   const auto entry = dir_->vlanRangeEntry( kPort );
   del( 5 );
   EXPECT_EQ( state(), "7:  / \n" );
   EXPECT_TRUE( dir_->vlanRangeEntry( kPort ) == entry );
}

TEST_F( RangeDeleteTest, OfAnInterfaceNeverSeenLeavesAnEmptyEntry ) {
   del( 5 );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( RangeDeleteTest, OfTheFirstIdMovesTheStart ) {
   given( "10-20 M" );
   del( 10 );
   EXPECT_EQ( starts(), "11" );
}

TEST_F( RangeDeleteTest, OfTheLastIdLeavesTheStartAlone ) {
   given( "10-20 M" );
   const auto node = entry().revSortedStartVid().first();
   const auto changes = entry().revSortedStartVid().changes();
   del( 20 );
   EXPECT_TRUE( entry().revSortedStartVid().first() == node );
   EXPECT_EQ( entry().revSortedStartVid().changes(), changes );
}

TEST_F( RangeDeleteTest, ARangeThatStartsThereGoesBeforeOneThatStartsBelow ) {
   given( "10-20 M, 15-17 N" );
   del( 15 );
   EXPECT_EQ( ranges(), "10-20 M, 16-17 N" );
   EXPECT_EQ( starts(), "16, 10" );
}

TEST_F( RangeDeleteTest, OverlapHidesIds ) {
   given( "10-20 M" );
   add( 15, N );
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "1" );
   del( 16 );
   EXPECT_EQ( capture.text(), std::string( "1 " ) + kAbsent );
   EXPECT_EQ( ranges(), "10-20 M, 15-15 N" );
   del( 15 );
   EXPECT_EQ( ranges(), "10-20 M" );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( RangeDeleteTest, TouchesOneInterfaceOnly ) {
   given( "10-20 M" );
   mgr_->deleteVlanFromIdx( Corvel::IntfId( 8 ), vlan( 15 ) );
   EXPECT_EQ( state(), "7: 10-20 M / 10\n8:  / \n" );
}

TEST_F( RangeDeleteTest, AllVlansGoOneByOneWhateverTheOrder ) {
   given( "1-4094 M" );
   for ( unsigned step = 0; step < 4094; ++step ) {
      del( step * 1009 % 4094 + 1 );
   }
   EXPECT_EQ( state(), "7:  / \n" );
}

// The tests are asked again where their answer is acted upon. An answer that turned meanwhile,
// here by whoever reads the trace, ends the removal.
TEST_F( RangeDeleteTest, WhatIsGoneWhenItIsAskedAgainIsNotTouched ) {
   given( "10-20 M" );
   int asked = 0;
   Zel::traceSinkIs( [ & ]( const Zel::TraceLine& line ) {
      if ( line.text.starts_with( "isVidAndDot1qInUpperBoundRange intfId" ) && ++asked == 2 ) {
         entry().vlanIdRangeDelAll();
         entry().revSortedStartVidDelAll();
      }
   } );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/9" );
   del( 15 );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/" );
   Zel::traceSinkIs( {} );
   EXPECT_EQ( asked, 2 );
   EXPECT_EQ( state(), "7:  / \n" );
}

class RangePieceDeleteTest : public RangeMgrTest {
 protected:
   void delFrom( unsigned vid, const MoxVlanMapping::VlanRangeXlateMapping& range ) {
      mgr_->deleteVlanFromRange( kPort, vlan( vid ), range );
   }
};

// Nobody but deleteVlanFromIdx() calls it, and it trusts that caller.
TEST_F( RangePieceDeleteTest, DoesNotCheckThatTheIdLiesInTheRange ) {
   given( "10-20 M" );
   delFrom( 30, TestSupport::rangeOf( 10, 20, M ) );
   EXPECT_EQ( ranges(), "10-29 M, 31-20 M" );
   EXPECT_EQ( starts(), "31, 10" );
}

TEST_F( RangePieceDeleteTest, ARangeOfOneIdGoesWhateverTheId ) {
   given( "10-10 M" );
   delFrom( 30, TestSupport::rangeOf( 10, 10, M ) );
   EXPECT_EQ( ranges(), "" );
}

// The argument may be the stored value itself, which goes with its node.
TEST_F( RangePieceDeleteTest, TheRangeMayBeTheStoredOneItself ) {
   given( "10-20 M" );
   delFrom( 15, entry().vlanIdRange().findElement( vlan( 10 ) )->value() );
   EXPECT_EQ( ranges(), "10-14 M, 16-20 M" );
   EXPECT_EQ( starts(), "16, 10" );
}

}   // namespace
