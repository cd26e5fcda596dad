// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Numbers that are no VLAN ids: which operation refuses them at which step, and what it has done
// until then.
#include <gtest/gtest.h>

#include <ostream>
#include <string>

#include "Zel/Exception.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

using TestSupport::mappingOf;
using TestSupport::rangeOf;

constexpr char kStartRefused[] = "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed";
constexpr char kVlanRefused[] = "Bridging::VlanId::value < 1 or > 4094 not allowed";
constexpr char kNothing[] = "";

// The text of the range exception that `act` throws, empty when it throws none.
template < class Act >
std::string
refusal( Act act ) {
   try {
      act();
   } catch ( const Zel::RangeException& error ) {
      return error.what();
   }
   return "";
}

struct UncheckedRow {
   const char* name;
   const char* operation;
   unsigned vid;
   const char* refusal;
   /// Function of the last line at level 9: the step that was reached.
   const char* lastStep;

   friend void PrintTo( const UncheckedRow& row, std::ostream* out ) { *out << row.name; }
};

class UncheckedIdTable : public RangeMgrTest, public testing::WithParamInterface< UncheckedRow > {
 protected:
   std::string act() {
      const UncheckedRow& row = GetParam();
      const std::string operation = row.operation;
      return refusal( [ & ] {
         if ( operation == "add" ) {
            add( row.vid, M );
         } else if ( operation == "del" ) {
            del( row.vid );
         } else if ( operation == "upper" ) {
            EXPECT_FALSE( inUpper( row.vid, M ) );
         } else {
            EXPECT_FALSE( inLower( row.vid, M ) );
         }
      } );
   }
   std::string tracedAct() {
      TestSupport::TraceCapture capture( "MoxVlanRangeMgr", "*" );
      const std::string refused = act();
      for ( const auto& line : capture.lines() ) {
         lastLine_ = line.text;
      }
      return refused;
   }

   std::string lastLine_;
};

TEST_P( UncheckedIdTable, IsRefusedAtItsStepWithTheIndexUntouched ) {
   given( "1-5 M, 4090-4094 M" );
   const std::string before = state();
   EXPECT_EQ( tracedAct(), GetParam().refusal );
   EXPECT_EQ( state(), before );
   EXPECT_TRUE( lastLine_.starts_with( GetParam().lastStep ) ) << lastLine_;
}

TEST_P( UncheckedIdTable, LeavesOnlyTheEmptyEntryOfANewInterface ) {
   EXPECT_EQ( act(), GetParam().refusal );
   EXPECT_EQ( state(), "7:  / \n" );
}

INSTANTIATE_TEST_SUITE_P(
   Operations, UncheckedIdTable,
   testing::Values( UncheckedRow{ "UpperBoundOfZero", "upper", 0, kNothing,
                                  "isVidAndDot1qInUpperBoundRange uppper bound Range: " },
                    UncheckedRow{ "UpperBoundOf4095", "upper", 4095, kNothing,
                                  "isVidAndDot1qInUpperBoundRange upper bound iterator empty" },
                    UncheckedRow{ "UpperBoundOf65535", "upper", 65535, kNothing,
                                  "isVidAndDot1qInUpperBoundRange upper bound iterator empty" },
                    UncheckedRow{ "LowerBoundOfZero", "lower", 0, kNothing,
                                  "isVidAndDot1qInLowerBoundRange lower bound iterator empty" },
                    UncheckedRow{ "LowerBoundOf4095", "lower", 4095, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 4095" },
                    UncheckedRow{ "LowerBoundOf65535", "lower", 65535, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 65535" },
                    // Its upper neighbour is asked for, its lower one cannot be formed.
                    UncheckedRow{ "AddOfZero", "add", 0, kVlanRefused,
                                  "isVidAndDot1qInUpperBoundRange uppper bound Range: " },
                    UncheckedRow{ "AddOf4095", "add", 4095, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 4095" },
                    UncheckedRow{ "AddOf65535", "add", 65535, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 65535" },
                    UncheckedRow{
                       "DeleteOfZero", "del", 0, kNothing,
                       "deleteVlanFromIdx vid not present in lower and upper bound range " },
                    UncheckedRow{ "DeleteOf4095", "del", 4095, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 4095" },
                    UncheckedRow{ "DeleteOf65535", "del", 65535, kStartRefused,
                                  "isVidAndDot1qInLowerBoundRange intfId: 7 inVlanId: 65535" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

class UncheckedIdTest : public RangeMgrTest {
 protected:
   std::string delFrom( unsigned vid, const MoxVlanMapping::VlanRangeXlateMapping& range ) {
      return refusal( [ & ] { mgr_->deleteVlanFromRange( kPort, vlan( vid ), range ); } );
   }
   // Stores a range without asking whether its start is a VLAN id.
   void givenRaw( unsigned low, unsigned high ) {
      entry().vlanIdRangeIs( rangeOf( low, high, M ) );
   }
};

TEST_F( UncheckedIdTest, WhetherAnIdIsInARangeNeverThrows ) {
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 1, 4094, M ), vlan( 0 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 1, 4094, M ), vlan( 4095 ) ) );
   EXPECT_FALSE( mgr_->isVidInRange( rangeOf( 1, 4094, M ), vlan( 65535 ) ) );
}

TEST_F( UncheckedIdTest, AMappingToAnUncheckedVlanIsStored ) {
   mgr_->addVlanToIdx( kPort, vlan( 10 ), Bridging::VlanXlateMapping::fromRaw( 4095 ) );
   mgr_->addVlanToIdx( kPort, vlan( 11 ), Bridging::VlanXlateMapping::fromRaw( 4095 ) );
   EXPECT_EQ( entry().vlanIdRange().first()->value().mapping().rawVlanId(), 4095 );
   EXPECT_EQ( starts(), "10" );
}

TEST_F( UncheckedIdTest, AStoredStartZeroIsNoVlan ) {
   entry().revSortedStartVidIs( 0, true );
   EXPECT_EQ( refusal( [ & ] { inLower( 10, M ); } ), kVlanRefused );
   EXPECT_EQ( refusal( [ & ] { add( 10, M ); } ), kVlanRefused );
   EXPECT_EQ( refusal( [ & ] { del( 10 ); } ), kVlanRefused );
   EXPECT_EQ( state(), "7:  / 0\n" );
}

TEST_F( UncheckedIdTest, AStoredRangeAbove4094GoesBeforeItsStartIsRefused ) {
   givenRaw( 4095, 4095 );
   EXPECT_EQ( refusal( [ & ] { del( 4095 ); } ), kStartRefused );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( UncheckedIdTest, ALowestIdAbove4094GoesBeforeItsStartIsRefused ) {
   givenRaw( 4095, 4099 );
   EXPECT_EQ( delFrom( 4095, rangeOf( 4095, 4099, M ) ), kStartRefused );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( UncheckedIdTest, TheStartAbove4094IsRefusedBehindTheLowestIdsDeletion ) {
   givenRaw( 4094, 4095 );
   entry().revSortedStartVidIs( 4094, true );
   EXPECT_EQ( refusal( [ & ] { del( 4094 ); } ), kVlanRefused );
   EXPECT_EQ( state(), "7:  / \n" );
}

TEST_F( UncheckedIdTest, TheEndBelowOneIsRefusedBehindTheHighestIdsDeletion ) {
   givenRaw( 5, 0 );
   entry().revSortedStartVidIs( 5, true );
   EXPECT_EQ( delFrom( 0, rangeOf( 5, 0, M ) ), kVlanRefused );
   EXPECT_EQ( state(), "7:  / 5\n" );
}

TEST_F( UncheckedIdTest, TheEndAbove4094IsRefusedBehindTheHighestIdsDeletion ) {
   givenRaw( 10, 65535 );
   entry().revSortedStartVidIs( 10, true );
   EXPECT_EQ( delFrom( 65535, rangeOf( 10, 65535, M ) ), kVlanRefused );
   EXPECT_EQ( state(), "7:  / 10\n" );
}

TEST_F( UncheckedIdTest, AHighestIdOf4095LeavesTheRestOfItsRange ) {
   givenRaw( 10, 4095 );
   entry().revSortedStartVidIs( 10, true );
   EXPECT_EQ( delFrom( 4095, rangeOf( 10, 4095, M ) ), kNothing );
   EXPECT_EQ( state(), "7: 10-4094 M / 10\n" );
}

TEST_F( UncheckedIdTest, ASplitKeepsItsLowerPieceWhenTheUpperOneIsRefused ) {
   givenRaw( 10, 4099 );
   entry().revSortedStartVidIs( 10, true );
   EXPECT_EQ( refusal( [ & ] { del( 4094 ); } ), kVlanRefused );
   EXPECT_EQ( state(), "7: 10-4093 M / 10\n" );
}

TEST_F( UncheckedIdTest, ASplitIsRefusedWhenItsLowerPieceIs ) {
   givenRaw( 10, 4099 );
   entry().revSortedStartVidIs( 10, true );
   EXPECT_EQ( delFrom( 4097, rangeOf( 10, 4099, M ) ), kVlanRefused );
   EXPECT_EQ( state(), "7:  / 10\n" );
}

}   // namespace
