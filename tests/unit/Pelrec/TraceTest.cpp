// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Trace.h"

#include <atomic>
#include <cstdint>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/Pelrec/ManualSystemClock.h"
#include "tests/unit/Pelrec/SmallTrace.h"

namespace {

class TraceTest : public testing::Test {
 protected:
   SmallTrace small_;
   Pelrec::Trace& trace_ = small_.trace();
};

TEST_F( TraceTest, HasNoRecordsAtFirst ) {
   EXPECT_EQ( small_.shown(), "" );
}

TEST_F( TraceTest, TheImageIsAsLargeAsItsGeometrySays ) {
   EXPECT_EQ( trace_.image().size(), SmallTrace::kGeometry.imageBytes() );
}

TEST_F( TraceTest, ShowsRecordsInOrderOfWritingAcrossLevels ) {
   small_.write( 9, "nine" );
   small_.write( 0, "zero" );
   small_.write( 5, "five" );
   small_.write( 0, "zero" );
   EXPECT_EQ( small_.shown(), "1/9 nine\n2/0 zero\n3/5 five\n4/0 zero\n" );
}

TEST_F( TraceTest, OverwritesTheOldestRecordsOfALevel ) {
   for ( std::int64_t i = 1; i <= 6; ++i ) {
      small_.write( 5, "record %s", i );
   }
   EXPECT_EQ( small_.shown(), "3/5 record 3\n4/5 record 4\n5/5 record 5\n6/5 record 6\n" );
}

TEST_F( TraceTest, KeepsARareLevelWhileABusyOneWraps ) {
   small_.write( 5, "rare" );
   for ( std::int64_t i = 2; i <= 101; ++i ) {
      small_.write( 6, "busy %s", i );
   }
   EXPECT_EQ( small_.shown(), "1/5 rare\n98/6 busy 98\n99/6 busy 99\n100/6 busy 100\n"
                              "101/6 busy 101\n" );
}

TEST_F( TraceTest, ArgumentsOfTheOverwrittenRecordDoNotShowThrough ) {
   for ( int i = 0; i < 4; ++i ) {
      small_.write( 5, "%s %s", std::string_view( "abcdefghijkl" ), std::int64_t{ 7 } );
   }
   small_.write( 5, "%s", std::string_view( "x" ) );
   EXPECT_EQ( Pelrec::Reader( trace_.image() ).records( 5 ).back().text, "x" );
}

TEST_F( TraceTest, GivesTheSameFormatTheSameId ) {
   const std::uint32_t id = trace_.formatIs( "one" );
   EXPECT_NE( trace_.formatIs( "two" ), id );
   EXPECT_EQ( trace_.formatIs( "one" ), id );
}

TEST_F( TraceTest, AFormatMayFillItsEntry ) {
   const std::string longest( Pelrec::kMaxFormatBytes, 'x' );
   small_.write( 0, longest );
   EXPECT_EQ( small_.shown(), "1/0 " + longest + "\n" );
}

TEST_F( TraceTest, RecordsOfFormatsBeyondTheTableKeepTheirArguments ) {
   small_.write( 0, "one" );
   small_.write( 0, "two" );
   small_.write( 0, "three" );
   small_.write( 1, "four %s of %s", std::int64_t{ 4 }, std::uint64_t{ 9 } );
   small_.write( 1, "one" );
   EXPECT_EQ( shown( Pelrec::Reader( trace_.image() ).records( 1 ) ),
              "4/1 (format table is full) 4 9\n5/1 one\n" );
}

TEST_F( TraceTest, EveryLevelIsEnabledAtFirst ) {
   EXPECT_EQ( trace_.levelMask(), 0x3ffu );
}

TEST_F( TraceTest, TheMaskNamesTheEnabledLevels ) {
   trace_.levelMaskIs( 0x220 );
   std::string enabled;
   for ( unsigned level = 0; level < Pelrec::kLevels; ++level ) {
      enabled += trace_.enabled( level ) ? '1' : '0';
   }
   EXPECT_EQ( enabled, "0000010001" );
}

TEST_F( TraceTest, RecordsCarryTheWallClocksTime ) {
   const ManualSystemClock manual;
   ManualSystemClock::wallNs = 1'700'000'000'123'456'789;
   small_.write( 0, "now" );
   EXPECT_EQ( Pelrec::Reader( trace_.image() ).records( 0 ).at( 0 ).timeNs,
              1'700'000'000'123'456'789u );
}

TEST_F( TraceTest, AReaderInAnotherThreadNeverSeesATornRecord ) {
   const auto image = trace_.image();
   std::atomic< bool > done = false;
   std::thread writer( [ & ] {
      for ( std::int64_t i = 1; !done; ++i ) {
         small_.write( 5, "%s %s %s %s", i, i, i, i );
      }
   } );
   std::size_t seen = 0;
   std::string torn;
   while ( seen < 20'000 && torn.empty() ) {
      std::uint64_t previous = 0;
      for ( const Pelrec::Record& record : Pelrec::Reader( image ).records( 5 ) ) {
         const std::string number = std::to_string( record.sequence );
         if ( record.text != number + ' ' + number + ' ' + number + ' ' + number ||
              record.sequence <= previous ) {
            torn += number + ": " + record.text + '\n';
         }
         previous = record.sequence;
         ++seen;
      }
   }
   done = true;
   writer.join();
   EXPECT_EQ( torn, "" );
}

}   // namespace
