// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Assertions of the range manager: what they print, and what had been changed before.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>

#include "Zel/StdIterator.h"
#include "Zel/Trace.h"
#include "tests/support/AbortState.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Matcher;
using testing::StartsWith;
using TestSupport::rangeOf;

constexpr char kAddFunction[] = "addVlanToIdx(";
constexpr char kDeleteIdFunction[] = "deleteVlanFromIdx(";
constexpr char kDeleteFunction[] = "deleteVlanFromRange(";

Matcher< const std::string& >
failed( const char* function, const std::string& expression, const std::string& state ) {
   return AllOf( StartsWith( "MoxVlanMapping/MoxVlanRangeMgr:" ), HasSubstr( function ),
                 HasSubstr( ": Assertion `" + expression + "' failed.\n" ),
                 HasSubstr( "state at abort: " + state + "\n" ) );
}

class DyingRangeMgrTest : public RangeMgrTest {
 protected:
   void printState() {
      TestSupport::printOnAbort( [ this ] { return ranges() + " / " + starts(); } );
   }
   /// Runs `act` when the line `text` is traced: between two steps of an operation.
   static void atLine( const std::string& text, std::function< void() > act ) {
      Zel::traceLevelsIs( "MoxVlanRangeMgr/*" );
      Zel::traceSinkIs( [ text, act ]( const Zel::TraceLine& line ) {
         if ( line.text == text ) {
            act();
         }
      } );
   }
};

class RangeAddDeathTest : public DyingRangeMgrTest {
 protected:
   void dyingAdd( unsigned vid, char letter ) {
      printState();
      add( vid, letter );
   }
   void dyingAddAtLine( unsigned vid, const std::string& text, std::function< void() > act ) {
      atLine( text, act );
      dyingAdd( vid, M );
   }
};

// A merge deletes the upper range, the lower range, the upper start, in this order.

TEST_F( RangeAddDeathTest, OverlapAbortsTheMergeBehindItsFirstDeletion ) {
   given( "10-14 M, 16-20 M" );
   add( 15, N );
   EXPECT_EQ( ranges(), "10-14 M, 15-15 N, 16-20 M" );
   EXPECT_DEATH( dyingAdd( 15, M ),
                 failed( kAddFunction, "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )",
                         "10-14 M, 16-20 M / 16, 15, 10" ) );
}

TEST_F( RangeAddDeathTest, MergeWithOneToOneUnderTheEmptyMappingAborts ) {
   given( "1-1 -, 3-5 M" );
   EXPECT_DEATH(
      dyingAdd( 2, kEmpty ),
      failed( kAddFunction, "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )", " / 3, 1" ) );
}

TEST_F( RangeAddDeathTest, MergeWithoutTheUpperStartAborts ) {
   given( "10-12 M" );
   givenRangesAlone( "14-20 M" );
   EXPECT_DEATH( dyingAdd( 13, M ),
                 failed( kAddFunction,
                         "vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() )",
                         " / 10" ) );
}

TEST_F( RangeAddDeathTest, FrontExtensionBehindOneToOneUnderTheEmptyMappingAborts ) {
   given( "1-1 -, 2-5 M" );
   EXPECT_DEATH( dyingAdd( 1, M ),
                 failed( kAddFunction, "vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() )",
                         "2-5 M / 2, 1" ) );
}

TEST_F( RangeAddDeathTest, FrontExtensionWithoutTheStartAborts ) {
   givenRangesAlone( "10-20 M" );
   EXPECT_DEATH( dyingAdd( 9, M ),
                 failed( kAddFunction,
                         "vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() )",
                         " / " ) );
}

TEST_F( RangeAddDeathTest, BackExtensionOfOneToOneUnderTheEmptyMappingAborts ) {
   given( "1-1 -" );
   EXPECT_DEATH(
      dyingAdd( 2, kEmpty ),
      failed( kAddFunction, "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )", " / 1" ) );
}

// The start at 21 hides the range that is to be extended, and stands for no range itself.
TEST_F( RangeAddDeathTest, BackExtensionToAStartWithoutItsRangeAborts ) {
   given( "10-20 M" );
   entry().revSortedStartVidIs( 21, true );
   EXPECT_DEATH( dyingAdd( 21, M ),
                 failed( kAddFunction, "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )",
                         "10-20 M / 21, 10" ) );
}

// These cannot happen as long as nobody changes the entry in the middle of an operation.

TEST_F( RangeAddDeathTest, MergeThatLosesItsRangesAborts ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_DEATH( dyingAddAtLine( 13, "addVlanToIdx merge 2 ranges ",
                                 [ this ] { entry().vlanIdRangeDelAll(); } ),
                 failed( kAddFunction, "uBoundIter", " / 14, 10" ) );
}

TEST_F( RangeAddDeathTest, MergeThatLosesItsStartsAborts ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_DEATH( dyingAddAtLine( 13, "addVlanToIdx merge 2 ranges ",
                                 [ this ] { entry().revSortedStartVidDelAll(); } ),
                 failed( kAddFunction, "lBoundIter", "10-12 M, 14-20 M / " ) );
}

TEST_F( RangeAddDeathTest, FrontExtensionThatLosesItsRangesAborts ) {
   given( "10-20 M" );
   EXPECT_DEATH( dyingAddAtLine( 9, "addVlanToIdx append to start of curRange ",
                                 [ this ] { entry().vlanIdRangeDelAll(); } ),
                 failed( kAddFunction, "uBoundIter", " / 10" ) );
}

TEST_F( RangeAddDeathTest, BackExtensionThatLosesItsStartsAborts ) {
   given( "10-20 M" );
   EXPECT_DEATH( dyingAddAtLine( 21, "addVlanToIdx append to end of prev range",
                                 [ this ] { entry().revSortedStartVidDelAll(); } ),
                 failed( kAddFunction, "lBoundIter", "10-20 M / " ) );
}

class RangeDeleteDeathTest : public DyingRangeMgrTest {
 protected:
   void dyingDelAtLine( unsigned vid, const std::string& text, std::function< void() > act ) {
      atLine( text, act );
      dyingDel( vid );
   }
   void dyingDel( unsigned vid ) {
      printState();
      del( vid );
   }
   void dyingDelFrom( unsigned vid, const MoxVlanMapping::VlanRangeXlateMapping& range ) {
      printState();
      mgr_->deleteVlanFromRange( kPort, vlan( vid ), range );
   }
};

TEST_F( RangeDeleteDeathTest, OneToOneUnderTheEmptyMappingAborts ) {
   given( "1-1 -" );
   EXPECT_DEATH(
      dyingDel( 1 ),
      failed( kDeleteFunction, "vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() )", " / 1" ) );
}

TEST_F( RangeDeleteDeathTest, ARangeThatIsNotStoredAborts ) {
   given( "10-20 M" );
   EXPECT_DEATH( dyingDelFrom( 35, rangeOf( 30, 40, M ) ),
                 failed( kDeleteFunction, "vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() )",
                         "10-20 M / 10" ) );
}

TEST_F( RangeDeleteDeathTest, AStartWithoutItsRangeIsTakenForOneToOneAndAborts ) {
   entry().revSortedStartVidIs( 1, true );
   EXPECT_DEATH(
      dyingDel( 1 ),
      failed( kDeleteFunction, "vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() )", " / 1" ) );
}

TEST_F( RangeDeleteDeathTest, TheOnlyIdWithoutItsStartAborts ) {
   givenRangesAlone( "5-5 M" );
   EXPECT_DEATH( dyingDel( 5 ),
                 failed( kDeleteFunction,
                         "vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() )",
                         " / " ) );
}

TEST_F( RangeDeleteDeathTest, TheLowestIdWithoutItsStartAborts ) {
   givenRangesAlone( "10-20 M" );
   EXPECT_DEATH( dyingDel( 10 ),
                 failed( kDeleteFunction,
                         "vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() )",
                         " / " ) );
}

TEST_F( RangeDeleteDeathTest, AStartThatIsLostOnTheWayAborts ) {
   given( "10-20 M" );
   EXPECT_DEATH( dyingDelAtLine( 10, "deleteVlanFromIdx vid present in upper bound range ",
                                 [ this ] { entry().vlanIdRangeDelAll(); } ),
                 failed( kDeleteIdFunction, "uBoundIter", " / 10" ) );
}

TEST_F( RangeDeleteDeathTest, ARangeThatIsLostOnTheWayAborts ) {
   given( "10-20 M" );
   EXPECT_DEATH( dyingDelAtLine( 15, "deleteVlanFromIdx vid present in lower bound range ",
                                 [ this ] { entry().revSortedStartVidDelAll(); } ),
                 failed( kDeleteIdFunction, "lBoundIter", "10-20 M / " ) );
}

class RangeIteratorDeathTest : public RangeMgrTest {};

TEST_F( RangeIteratorDeathTest, StandingOnNoElementAborts ) {
   const auto expected =
      AllOf( StartsWith( "Zel/StdIterator:" ), HasSubstr( ": Assertion `iter_' failed.\n" ) );
   auto range = entry().vlanIdRange().first();
   auto start = entry().revSortedStartVid().first();
   EXPECT_DEATH( ++range, Matcher< const std::string& >( expected ) );
   EXPECT_DEATH( range->value(), Matcher< const std::string& >( expected ) );
   EXPECT_DEATH( ++start, Matcher< const std::string& >( expected ) );
   EXPECT_DEATH( ( *start ).value(), Matcher< const std::string& >( expected ) );
}

}   // namespace
