// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <string>

#include "tests/support/OperatorNew.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using TestSupport::mappingOf;
using TestSupport::rangeOf;

const std::string kM = "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3013, "
                       "'innerVlanId': 0, 'tpid': 0, 'priority': 0, 'dropEligible': 0})";
const std::string kN = "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3014, "
                       "'innerVlanId': 0, 'tpid': 0, 'priority': 0, 'dropEligible': 0})";
const std::string kAny = "Value('Bridging::VlanXlateMapping', ** {'vlanId': 0, "
                         "'innerVlanId': 0, 'tpid': 0, 'priority': 0, 'dropEligible': 0})";

std::string
range( const std::string& low, const std::string& high, const std::string& mapping ) {
   return "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': " + low +
          ", 'highVid': " + high + ", 'mapping': " + mapping + "})";
}

// The lines of one bound test: its arguments, and what it found.
std::string
upper( const std::string& vid, const std::string& mapping, const std::string& found ) {
   return "9 isVidAndDot1qInUpperBoundRange intfId: 7 inVlanId: " + vid + " mapping: " + mapping +
          "\n9 isVidAndDot1qInUpperBoundRange" +
          ( found.empty() ? " upper bound iterator empty" : " uppper bound Range: " + found ) +
          "\n";
}

std::string
lower( const std::string& vid, const std::string& mapping, const std::string& found ) {
   return "9 isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: " + vid + " mapping: " + mapping +
          "\n9 isVidAndDot1qInLowerBoundRange" +
          ( found.empty() ? " lower bound iterator empty" : " lBoundRange  " + found ) + "\n";
}

class RangeTraceTest : public RangeMgrTest {
 protected:
   template < class Act >
   std::string traced( const std::string& levels, Act act ) {
      TestSupport::TraceCapture capture( "MoxVlanRangeMgr", levels );
      act();
      for ( const auto& line : capture.lines() ) {
         EXPECT_EQ( line.handle, "MoxVlanRangeMgr" );
         EXPECT_EQ( line.source, "MoxVlanMapping/MoxVlanRangeMgr" );
         EXPECT_EQ( line.text.substr( 0, line.function.size() + 1 ), line.function + " " );
      }
      return capture.text();
   }
   std::string tracedAdd( unsigned vid, char mapping, const std::string& levels = "*" ) {
      return traced( levels, [ & ] { add( vid, mapping ); } );
   }
   std::string tracedDel( unsigned vid, const std::string& levels = "*" ) {
      return traced( levels, [ & ] { del( vid ); } );
   }
};

// Who reads the trace may take the entry away: each test then finds the one that is there, and the
// call goes on with the entry that it began with.
TEST_F( RangeTraceTest, EachTestLooksTheEntryUpForItself ) {
   given( "10-12 M" );
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntry > begunWith = dir_->vlanRangeEntryIs( kPort );
   std::string lines;
   Zel::traceSinkIs( [ & ]( const Zel::TraceLine& line ) {
      if ( lines.empty() && line.text.starts_with( "isVidAndDot1qInLowerBoundRange" ) ) {
         dir_->vlanRangeEntryDel( kPort );
      }
      if ( line.text.starts_with( "isVid" ) ) {
         lines += std::string( line.text ) + "\n";
      }
   } );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/9" );
   add( 11, M );
   Zel::traceLevelsIs( "MoxVlanRangeMgr/" );
   Zel::traceSinkIs( {} );
   EXPECT_EQ( lines.find( "lBoundRange" ), std::string::npos ) << lines;
   EXPECT_NE( lines.find( "lower bound iterator empty" ), std::string::npos ) << lines;
   EXPECT_EQ( TestSupport::rangesText( *begunWith ), "10-12 M, 11-11 M" );
   EXPECT_EQ( ranges(), "" );
}

TEST_F( RangeTraceTest, UpperBoundTestShowsArgumentsAndRange ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_EQ( traced( "*", [ & ] { inUpper( 13, M ); } ),
              upper( "13", kM, range( "14", "20", kM ) ) );
}

TEST_F( RangeTraceTest, UpperBoundTestShowsThatThereIsNone ) {
   given( "10-12 M" );
   EXPECT_EQ( traced( "*", [ & ] { inUpper( 13, N ); } ), upper( "13", kN, "" ) );
}

TEST_F( RangeTraceTest, LowerBoundTestShowsArgumentsAndRange ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_EQ( traced( "*", [ & ] { inLower( 13, kEmpty ); } ),
              lower( "13", kAny, range( "10", "12", kM ) ) );
}

TEST_F( RangeTraceTest, LowerBoundTestShowsThatThereIsNone ) {
   given( "10-12 M" );
   EXPECT_EQ( traced( "*", [ & ] { inLower( 9, M ); } ), lower( "9", kM, "" ) );
}

TEST_F( RangeTraceTest, WhetherAnIdIsInARangeIsNotTraced ) {
   EXPECT_EQ( traced( "*", [ & ] { mgr_->isVidInRange( rangeOf( 1, 2, M ), vlan( 1 ) ); } ), "" );
}

TEST_F( RangeTraceTest, AddToNothing ) {
   EXPECT_EQ( tracedAdd( 100, M ), "9 addVlanToIdx intfId: 7 vlanId: 100 mapping: " + kM + "\n" +
                                      lower( "100", kM, "" ) + upper( "100", kM, "" ) +
                                      upper( "101", kM, "" ) + lower( "99", kM, "" ) +
                                      "1 addVlanToIdx vid not present in prev and cur: \n"
                                      "1 addVlanToIdx adding new Range: " +
                                      range( "100", "100", kM ) + "\n" );
}

TEST_F( RangeTraceTest, AddThatMerges ) {
   given( "10-12 M, 14-20 M" );
   const std::string low = range( "10", "12", kM );
   const std::string high = range( "14", "20", kM );
   EXPECT_EQ( tracedAdd( 13, M ), "9 addVlanToIdx intfId: 7 vlanId: 13 mapping: " + kM + "\n" +
                                     lower( "13", kM, low ) + upper( "13", kM, high ) +
                                     upper( "14", kM, high ) + lower( "12", kM, low ) +
                                     "1 addVlanToIdx merge 2 ranges \n"
                                     "1 addVlanToIdx adding new Range: " +
                                     range( "10", "20", kM ) + "\n" );
}

TEST_F( RangeTraceTest, AddBeforeARange ) {
   given( "10-20 M" );
   const std::string stored = range( "10", "20", kM );
   EXPECT_EQ( tracedAdd( 9, M ), "9 addVlanToIdx intfId: 7 vlanId: 9 mapping: " + kM + "\n" +
                                    lower( "9", kM, "" ) + upper( "9", kM, stored ) +
                                    upper( "10", kM, stored ) + lower( "8", kM, "" ) +
                                    "1 addVlanToIdx append to start of curRange \n"
                                    "1 addVlanToIdx adding new Range: " +
                                    range( "9", "20", kM ) + "\n" );
}

TEST_F( RangeTraceTest, AddBehindARange ) {
   given( "10-20 M" );
   const std::string stored = range( "10", "20", kM );
   EXPECT_EQ( tracedAdd( 21, M ), "9 addVlanToIdx intfId: 7 vlanId: 21 mapping: " + kM + "\n" +
                                     lower( "21", kM, stored ) + upper( "21", kM, "" ) +
                                     upper( "22", kM, "" ) + lower( "20", kM, stored ) +
                                     "1 addVlanToIdx append to end of prev range\n"
                                     "1 addVlanToIdx adding new Range: " +
                                     range( "10", "21", kM ) + "\n" );
}

TEST_F( RangeTraceTest, AddOfAnIdThatIsThere ) {
   given( "10-20 M" );
   EXPECT_EQ( tracedAdd( 15, M ), "9 addVlanToIdx intfId: 7 vlanId: 15 mapping: " + kM + "\n" +
                                     lower( "15", kM, range( "10", "20", kM ) ) +
                                     "1 addVlanToIdx already present returning \n" );
}

// The lower bound does not know of a range whose start is missing; the upper bound does.
TEST_F( RangeTraceTest, AddOfAnIdThatOnlyTheUpperBoundKnows ) {
   givenRangesAlone( "10-20 M" );
   EXPECT_EQ( tracedAdd( 10, M ), "9 addVlanToIdx intfId: 7 vlanId: 10 mapping: " + kM + "\n" +
                                     lower( "10", kM, "" ) +
                                     upper( "10", kM, range( "10", "20", kM ) ) +
                                     "1 addVlanToIdx already present returning \n" );
}

TEST_F( RangeTraceTest, AddOfTheLowestVlan ) {
   EXPECT_EQ( tracedAdd( 1, M ), "9 addVlanToIdx intfId: 7 vlanId: 1 mapping: " + kM + "\n" +
                                    lower( "1", kM, "" ) + upper( "1", kM, "" ) +
                                    upper( "2", kM, "" ) +
                                    "1 addVlanToIdx vid not present in prev and cur: \n"
                                    "1 addVlanToIdx adding new Range: " +
                                    range( "1", "1", kM ) + "\n" );
}

TEST_F( RangeTraceTest, AddOfTheHighestVlan ) {
   EXPECT_EQ( tracedAdd( 4094, M ), "9 addVlanToIdx intfId: 7 vlanId: 4094 mapping: " + kM + "\n" +
                                       lower( "4094", kM, "" ) + upper( "4094", kM, "" ) +
                                       lower( "4093", kM, "" ) +
                                       "1 addVlanToIdx vid not present in prev and cur: \n"
                                       "1 addVlanToIdx adding new Range: " +
                                       range( "4094", "4094", kM ) + "\n" );
}

TEST_F( RangeTraceTest, DeleteOfAnAbsentId ) {
   given( "10-12 M, 14-20 M" );
   EXPECT_EQ( tracedDel( 13 ),
              "9 deleteVlanFromIdx intfId: 7 vlanId: 13\n" +
                 upper( "13", kAny, range( "14", "20", kM ) ) +
                 lower( "13", kAny, range( "10", "12", kM ) ) +
                 "1 deleteVlanFromIdx vid not present in lower and upper bound range \n" );
}

TEST_F( RangeTraceTest, DeleteOfAStartAsksTheUpperBoundTwice ) {
   given( "10-20 M" );
   const std::string stored = range( "10", "20", kM );
   EXPECT_EQ( tracedDel( 10 ), "9 deleteVlanFromIdx intfId: 7 vlanId: 10\n" +
                                  upper( "10", kAny, stored ) + upper( "10", kAny, stored ) +
                                  "1 deleteVlanFromIdx vid present in upper bound range \n"
                                  "9 deleteVlanFromRange intfId: 7 vlanId: 10 vidRange: " +
                                  stored + "\n1 deleteVlanFromRange remove lowVid from Range \n" );
}

TEST_F( RangeTraceTest, DeleteInsideARangeAsksUpperLowerUpperLower ) {
   given( "10-20 M" );
   const std::string stored = range( "10", "20", kM );
   EXPECT_EQ( tracedDel( 15 ), "9 deleteVlanFromIdx intfId: 7 vlanId: 15\n" +
                                  upper( "15", kAny, "" ) + lower( "15", kAny, stored ) +
                                  upper( "15", kAny, "" ) + lower( "15", kAny, stored ) +
                                  "1 deleteVlanFromIdx vid present in lower bound range \n"
                                  "9 deleteVlanFromRange intfId: 7 vlanId: 15 vidRange: " +
                                  stored + "\n1 deleteVlanFromRange spliting  Range \n" );
}

TEST_F( RangeTraceTest, DeleteOfAnEnd ) {
   given( "10-20 M" );
   const std::string stored = range( "10", "20", kM );
   EXPECT_EQ( tracedDel( 20 ), "9 deleteVlanFromIdx intfId: 7 vlanId: 20\n" +
                                  upper( "20", kAny, "" ) + lower( "20", kAny, stored ) +
                                  upper( "20", kAny, "" ) + lower( "20", kAny, stored ) +
                                  "1 deleteVlanFromIdx vid present in lower bound range \n"
                                  "9 deleteVlanFromRange intfId: 7 vlanId: 20 vidRange: " +
                                  stored + "\n1 deleteVlanFromRange remove highVid from Range \n" );
}

TEST_F( RangeTraceTest, DeleteOfTheOnlyId ) {
   given( "5-5 M" );
   const std::string stored = range( "5", "5", kM );
   EXPECT_EQ( tracedDel( 5 ), "9 deleteVlanFromIdx intfId: 7 vlanId: 5\n" +
                                 upper( "5", kAny, stored ) + upper( "5", kAny, stored ) +
                                 "1 deleteVlanFromIdx vid present in upper bound range \n"
                                 "9 deleteVlanFromRange intfId: 7 vlanId: 5 vidRange: " +
                                 stored + "\n1 deleteVlanFromRange removing size 1 Range \n" );
}

TEST_F( RangeTraceTest, LevelOneShowsTheDecisionsAlone ) {
   given( "10-20 M" );
   EXPECT_EQ( tracedAdd( 9, M, "1" ), "1 addVlanToIdx append to start of curRange \n"
                                      "1 addVlanToIdx adding new Range: " +
                                         range( "9", "20", kM ) + "\n" );
   EXPECT_EQ( tracedDel( 9, "1" ), "1 deleteVlanFromIdx vid present in upper bound range \n"
                                   "1 deleteVlanFromRange remove lowVid from Range \n" );
}

TEST_F( RangeTraceTest, LevelNineShowsTheArgumentsAlone ) {
   given( "5-5 M" );
   const std::string stored = range( "5", "5", kM );
   EXPECT_EQ( tracedDel( 5, "9" ),
              "9 deleteVlanFromIdx intfId: 7 vlanId: 5\n" + upper( "5", kAny, stored ) +
                 upper( "5", kAny, stored ) +
                 "9 deleteVlanFromRange intfId: 7 vlanId: 5 vidRange: " + stored + "\n" );
}

TEST_F( RangeTraceTest, OtherLevelsShowNothing ) {
   given( "10-20 M" );
   EXPECT_EQ( tracedAdd( 21, M, "0,2-8,10-31" ), "" );
   EXPECT_EQ( tracedDel( 15, "0,2-8,10-31" ), "" );
}

TEST_F( RangeTraceTest, ResultsAreTheSameWithAndWithoutTrace ) {
   given( "10-20 M" );
   tracedAdd( 21, M );
   add( 22, M );
   tracedDel( 15 );
   del( 13 );
   EXPECT_EQ( state(), "7: 10-12 M, 14-14 M, 16-22 M / 16, 14, 10\n" );
}

// To compose a line takes memory; these operations insert nothing, so nothing else does.
TEST_F( RangeTraceTest, DisabledLinesAreNotComposed ) {
   given( "5-5 M, 10-12 M, 14-20 M" );
   const auto act = [ this ] {
      inUpper( 13, M );
      inUpper( 21, M );
      inLower( 13, M );
      inLower( 4, M );
      add( 15, M );
      del( 13 );
      del( 5 );
   };
   const auto before = TestSupport::newRequests();
   act();
   EXPECT_EQ( TestSupport::newRequests(), before );
   traced( "*", act );
   EXPECT_GT( TestSupport::newRequests(), before );
}

}   // namespace
