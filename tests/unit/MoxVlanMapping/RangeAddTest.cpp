// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using TestSupport::mappingOf;

struct AddRow {
   const char* name;
   const char* before;
   unsigned vid;
   char mapping;
   const char* decision;
   const char* ranges;
   const char* starts;

   friend void PrintTo( const AddRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeAddTable : public RangeMgrTest, public testing::WithParamInterface< AddRow > {};

TEST_P( RangeAddTable, LeavesMaximalRanges ) {
   const AddRow& row = GetParam();
   given( row.before );
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "1" );
   add( row.vid, row.mapping );
   EXPECT_EQ( capture.lines().front().text, std::string( "addVlanToIdx" ) + row.decision );
   EXPECT_EQ( ranges(), row.ranges );
   EXPECT_EQ( starts(), row.starts );
   entry().vlanIdRange().verify();
   entry().revSortedStartVid().verify();
}

constexpr char kMerge[] = " merge 2 ranges ";
constexpr char kFront[] = " append to start of curRange ";
constexpr char kBack[] = " append to end of prev range";
constexpr char kNew[] = " vid not present in prev and cur: ";
constexpr char kPresent[] = " already present returning ";

INSTANTIATE_TEST_SUITE_P(
   Examples, RangeAddTable,
   testing::Values(
      AddRow{ "FillingTheGap", "10-12 M, 14-20 M", 13, 'M', kMerge, "10-20 M", "10" },
      AddRow{ "BehindARange", "10-20 M", 21, 'M', kBack, "10-21 M", "10" },
      AddRow{ "BeforeARange", "10-20 M", 9, 'M', kFront, "9-20 M", "9" },
      AddRow{ "TheLowestVlan", "2-5 M", 1, 'M', kFront, "1-5 M", "1" },
      AddRow{ "InsideARange", "10-20 M", 15, 'M', kPresent, "10-20 M", "10" },
      AddRow{ "AnotherMappingInTheGap", "10-12 M, 14-20 M", 13, 'N', kNew,
              "10-12 M, 13-13 N, 14-20 M", "14, 13, 10" },
      AddRow{ "IntoNothing", "", 100, 'M', kNew, "100-100 M", "100" },

      AddRow{ "AtAStart", "10-20 M", 10, 'M', kPresent, "10-20 M", "10" },
      AddRow{ "AtAnEnd", "10-20 M", 20, 'M', kPresent, "10-20 M", "10" },
      AddRow{ "TheHighestVlan", "", 4094, 'M', kNew, "4094-4094 M", "4094" },
      AddRow{ "TheHighestVlanBehindARange", "4000-4093 M", 4094, 'M', kBack, "4000-4094 M",
              "4000" },
      AddRow{ "TheLowestVlanAlone", "3-5 M", 1, 'M', kNew, "1-1 M, 3-5 M", "3, 1" },
      AddRow{ "TheSecondVlanBetween", "1-1 M, 3-3 M", 2, 'M', kMerge, "1-3 M", "1" },
      AddRow{ "TwoApart", "10-12 M, 15-20 M", 13, 'M', kBack, "10-13 M, 15-20 M", "15, 10" },
      AddRow{ "BehindAnotherMapping", "10-12 N", 13, 'M', kNew, "10-12 N, 13-13 M", "13, 10" },
      AddRow{ "BeforeAnotherMapping", "14-20 N", 13, 'M', kNew, "13-13 M, 14-20 N", "14, 13" },
      AddRow{ "BetweenOwnAndOther", "10-12 M, 14-20 N", 13, 'M', kBack, "10-13 M, 14-20 N",
              "14, 10" },
      AddRow{ "BetweenOtherAndOwn", "10-12 N, 14-20 M", 13, 'M', kFront, "10-12 N, 13-20 M",
              "13, 10" },
      AddRow{ "OneToOneGrows", "1-1 M", 2, 'M', kBack, "1-2 M", "1" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

class RangeAddTest : public RangeMgrTest {};

TEST_F( RangeAddTest, IntoAnEmptyInterfaceGivesOneRangeAndOneStart ) {
   add( 100, M );
   EXPECT_EQ( state(), "7: 100-100 M / 100\n" );
}

TEST_F( RangeAddTest, FillingTheSingleGapLeavesTheLowerStart ) {
   given( "10-12 M, 14-20 M" );
   add( 13, M );
   EXPECT_EQ( ranges(), "10-20 M" );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( RangeAddTest, TheLowestVlanAsksForNoLowerNeighbour ) {
   given( "1-1 N, 2-5 M" );
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "9" );
   add( 1, M );
   EXPECT_EQ( capture.text().find( "inVlanId: 0" ), std::string::npos );
   EXPECT_EQ( capture.lines().size(), 7u );   // arguments, and three tests of two lines each
}

TEST_F( RangeAddTest, TheHighestVlanAsksForNoUpperNeighbour ) {
   TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "9" );
   add( 4094, M );
   EXPECT_EQ( capture.text().find( "4095" ), std::string::npos );
   EXPECT_EQ( capture.lines().size(), 7u );
}

TEST_F( RangeAddTest, BesideAnotherMappingStartsARangeOfItsOwn ) {
   given( "10-20 M" );
   add( 21, N );
   add( 9, N );
   EXPECT_EQ( ranges(), "9-9 N, 10-20 M, 21-21 N" );
   EXPECT_EQ( starts(), "21, 10, 9" );
}

TEST_F( RangeAddTest, MappingsThatDifferBehindTheTranslatedVlanDoNotJoin ) {
   mgr_->addVlanToIdx( kPort, vlan( 10 ), Bridging::VlanXlateMapping::fromRaw( 300, 1 ) );
   mgr_->addVlanToIdx( kPort, vlan( 11 ), Bridging::VlanXlateMapping::fromRaw( 300, 2 ) );
   EXPECT_EQ( starts(), "11, 10" );
}

TEST_F( RangeAddTest, OverlapHidesTheRangeBelow ) {
   given( "10-20 M" );
   add( 15, N );
   EXPECT_EQ( ranges(), "10-20 M, 15-15 N" );
   add( 21, M );
   EXPECT_EQ( ranges(), "10-20 M, 15-15 N, 21-21 M" );
   EXPECT_EQ( starts(), "21, 15, 10" );
}

// Nothing is merged into the range that is there, and nothing guards the rest of its ids.
TEST_F( RangeAddTest, OverlapAtAStartReplacesTheWholeRange ) {
   given( "10-20 M, 30-40 M" );
   add( 10, N );
   EXPECT_EQ( ranges(), "10-10 N, 30-40 M" );
   EXPECT_EQ( starts(), "30, 10" );
}

TEST_F( RangeAddTest, UnderTheEmptyMappingEveryNeighbourJoins ) {
   given( "10-12 M, 14-20 N" );
   add( 13, kEmpty );
   EXPECT_EQ( ranges(), "10-20 -" );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( RangeAddTest, UnderTheEmptyMappingTheExtendedRangeLosesItsMapping ) {
   given( "10-12 M, 30-40 N" );
   add( 13, kEmpty );
   add( 29, kEmpty );
   EXPECT_EQ( ranges(), "10-13 -, 29-40 -" );
   EXPECT_EQ( starts(), "29, 10" );
}

TEST_F( RangeAddTest, UnderTheEmptyMappingAnyRangeHoldsTheIdAlready ) {
   given( "10-12 M" );
   add( 11, kEmpty );
   EXPECT_EQ( ranges(), "10-12 M" );
}

TEST_F( RangeAddTest, AnIdThatIsHeldChangesNothingBesideAStartWithoutItsRange ) {
   given( "10-20 M" );
   entry().revSortedStartVidIs( 50, true );
   add( 15, M );
   EXPECT_EQ( state(), "7: 10-20 M / 50, 10\n" );
}

TEST_F( RangeAddTest, OneToOneUnderTheEmptyMappingCanBeStored ) {
   add( 1, kEmpty );
   EXPECT_EQ( state(), "7: 1-1 - / 1\n" );
}

TEST_F( RangeAddTest, TouchesOneInterfaceOnly ) {
   given( "10-20 M" );
   mgr_->addVlanToIdx( Corvel::IntfId( 8 ), vlan( 21 ), mappingOf( M ) );
   EXPECT_EQ( state(), "7: 10-20 M / 10\n8: 21-21 M / 21\n" );
}

TEST_F( RangeAddTest, AllVlansBecomeOneRangeWhateverTheOrder ) {
   for ( unsigned step = 0; step < 4094; ++step ) {
      add( step * 1009 % 4094 + 1, M );   // 1009 and 4094 have no common divisor
   }
   EXPECT_EQ( state(), "7: 1-4094 M / 1\n" );
}

// Two slots fall vacant one after the other, the second before the first.
TEST_F( RangeAddTest, BehindTwoDeletionsLeavesTheOthersWhereTheyAre ) {
   given( "1-1 M, 3-3 N, 5-5 M, 7-7 N, 9-9 M" );
   del( 5 );
   del( 3 );
   entry().vlanIdRange().verify();
   add( 4, N );
   add( 2, N );
   EXPECT_EQ( state(), "7: 1-1 M, 2-2 N, 4-4 N, 7-7 N, 9-9 M / 9, 7, 4, 2, 1\n" );
   entry().vlanIdRange().verify();
}

}   // namespace
