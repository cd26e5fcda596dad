// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Messages of the codef: text, level, source line, and which of the two sinks they reach.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string>

#include "Pelrec/Image.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/PelrecCapture.h"
#include "tests/support/TraceCapture.h"
#include "tests/unit/MoxVlanMapping/CodefTest.h"

namespace {

using Corvel::IntfId;
using Quen::YieldPolicy;

constexpr char kHandle[] = "MoxVlanRangeMappingCodef";
constexpr char kSource[] = "MoxVlanMapping/MoxVlanRangeMappingCodef";

class CodefTraceTest : public CodefTest {
 protected:
   CodefTraceTest() { settle(); }

   // "LEVEL:LINE TEXT", one a line.
   template < class Act >
   static std::string traced( Act act, const std::string& levels = "*" ) {
      const TestSupport::TraceCapture capture( kHandle, levels );
      act();
      std::string all;
      for ( const auto& line : capture.lines() ) {
         EXPECT_EQ( line.handle, kHandle );
         EXPECT_EQ( line.source, kSource );
         EXPECT_NE( line.text.find( line.function ), std::string::npos );
         all += std::to_string( line.level ) + ":" + std::to_string( line.line ) + " " + line.text +
                "\n";
      }
      return all;
   }

   template < class Act >
   static std::string recorded( Act act ) {
      const TestSupport::PelrecCapture capture;
      act();
      return capture.text();
   }
};

using CodefTraceDeathTest = CodefTraceTest;

TEST_F( CodefTraceTest, Construction ) {
   EXPECT_EQ( traced( [ & ] { newCodef(); } ), "0:14 handleInitialized\n" );
   EXPECT_EQ( recorded( [ & ] { newCodef(); } ), "" );
}

TEST_F( CodefTraceTest, SecondInitialisation ) {
   const auto act = [ & ] { codef_->handleInitialized(); };
   EXPECT_EQ( traced( act ), "0:14 handleInitialized\n"
                             "5:16 handleInitialized Already Initialized\n" );
   EXPECT_EQ( recorded( act ), "5 handleInitialized Already Initialized\n" );
}

TEST_F( CodefTraceTest, RunWithoutInitialisation ) {
   codef_->initializedIs( false );
   schedule( { 1 } );
   const auto act = [ & ] { codef_->drainBacklog(); };
   EXPECT_EQ( traced( act ), "5:33 drainBacklog Not Initialized\n" );
   EXPECT_EQ( recorded( act ), "5 drainBacklog Not Initialized\n" );
}

TEST_F( CodefTraceTest, RunOnAnEmptySchedule ) {
   const auto act = [ & ] { codef_->drainBacklog(); };
   EXPECT_EQ( traced( act ), "6:37 drainBacklog pending vlanXlate backlogs: 0\n"
                             "5:40 drainBacklog Marking codef completed\n" );
   EXPECT_EQ( recorded( act ), "5 drainBacklog Marking codef completed\n" );
}

TEST_F( CodefTraceTest, RunThatEmptiesTheSchedule ) {
   const auto act = [ & ] {
      schedule( { 11, 12 } );
      codef_->drainBacklog();
   };
   EXPECT_EQ( traced( act ), "6:37 drainBacklog pending vlanXlate backlogs: 2\n"
                             "6:90 VlanXlateScaleSm::processVlanRange intfId 11\n"
                             "5:78 sortVlanRangeBySize intfId: 11\n"
                             "6:90 VlanXlateScaleSm::processVlanRange intfId 12\n"
                             "5:78 sortVlanRangeBySize intfId: 12\n"
                             "5:59 drainBacklog pending work count: 0\n" );
   EXPECT_EQ( recorded( act ), "5 drainBacklog pending work count: 0\n" );
}

TEST_F( CodefTraceTest, RunThatYields ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Always );
   const auto act = [ & ] {
      scheduleDir_->vlanXlateScheduleDelAll();
      schedule( { 11, 12, 13 } );
      codef_->drainBacklog();
   };
   EXPECT_EQ( traced( act ), "6:37 drainBacklog pending vlanXlate backlogs: 3\n"
                             "6:90 VlanXlateScaleSm::processVlanRange intfId 11\n"
                             "5:78 sortVlanRangeBySize intfId: 11\n"
                             "6:53 drainBacklog yeilding with pending vlanXlate backlogs: 2\n"
                             "5:59 drainBacklog pending work count: 2\n" );
   EXPECT_EQ( recorded( act ), "6 drainBacklog yeilding with pending vlanXlate backlogs: 2\n"
                               "5 drainBacklog pending work count: 2\n" );
}

TEST_F( CodefTraceTest, PortThatLeavesAnAggregate ) {
   EXPECT_EQ( traced( [ & ] { codef_->handlePortToLag( IntfId( 42 ) ); } ),
              "6:68 VlanXlateScaleSm::handlePortToLag intfId 42\n" );
   EXPECT_EQ( recorded( [ & ] { codef_->handlePortToLag( IntfId( 43 ) ); } ), "" );
}

TEST_F( CodefTraceTest, FunctionsAreNamedWithoutTheirLabel ) {
   TestSupport::TraceCapture capture( kHandle, "6" );
   codef_->handlePortToLag( IntfId( 42 ) );
   codef_->processVlanRange( IntfId( 42 ) );
   ASSERT_EQ( capture.lines().size(), 2u );
   EXPECT_EQ( capture.lines()[ 0 ].function, "handlePortToLag" );
   EXPECT_EQ( capture.lines()[ 1 ].function, "processVlanRange" );
}

TEST_F( CodefTraceTest, AThrowingRunShowsNoCountBehindIt ) {
   codef_->processIs( []( IntfId ) { throw std::runtime_error( "hardware" ); } );
   schedule( { 11 } );
   EXPECT_EQ( traced( [ & ] { EXPECT_ANY_THROW( codef_->drainBacklog() ); } ),
              "6:37 drainBacklog pending vlanXlate backlogs: 1\n"
              "6:90 VlanXlateScaleSm::processVlanRange intfId 11\n"
              "5:78 sortVlanRangeBySize intfId: 11\n" );
}

TEST_F( CodefTraceTest, LevelsAreShownOneByOne ) {
   const auto act = [ & ] {
      codef_->handleInitialized();
      schedule( { 11 } );
      codef_->drainBacklog();
   };
   EXPECT_EQ( traced( act, "0" ), "0:14 handleInitialized\n" );
   EXPECT_EQ( traced( act, "5" ), "5:16 handleInitialized Already Initialized\n"
                                  "5:78 sortVlanRangeBySize intfId: 11\n"
                                  "5:59 drainBacklog pending work count: 0\n" );
   EXPECT_EQ( traced( act, "6" ), "6:37 drainBacklog pending vlanXlate backlogs: 1\n"
                                  "6:90 VlanXlateScaleSm::processVlanRange intfId 11\n" );
   EXPECT_EQ( traced( act, "1-4,7-31" ), "" );
}

TEST_F( CodefTraceTest, TheRingIsWrittenWhateverTheHandleShows ) {
   EXPECT_EQ( recorded( [ & ] { traced( [ & ] { codef_->drainBacklog(); }, "" ); } ),
              "5 drainBacklog Marking codef completed\n" );
}

TEST_F( CodefTraceTest, TheHandleShowsWhateverTheRingsRecord ) {
   const auto mask = Pelrec::trace().levelMask();
   Pelrec::trace().levelMaskIs( 0 );
   std::string text;
   EXPECT_EQ( recorded( [ & ] { text = traced( [ & ] { codef_->drainBacklog(); }, "5" ); } ), "" );
   Pelrec::trace().levelMaskIs( mask );
   EXPECT_EQ( text, "5:40 drainBacklog Marking codef completed\n" );
}

// The newest record as it lies in its ring: the format's text, and the argument's type code.
std::string
newestRaw( unsigned level ) {
   const auto image = Pelrec::trace().image();
   const auto* header = reinterpret_cast< const Pelrec::ImageHeader* >( image.data() );
   const Pelrec::Geometry geometry{ header->slotsPerRing, header->formats };
   const auto* formats = reinterpret_cast< const Pelrec::FormatEntry* >( header + 1 );
   const auto* ring =
      reinterpret_cast< const Pelrec::Slot* >( image.data() + geometry.ringsOffset() ) +
      std::size_t{ level } * geometry.slotsPerRing;
   const Pelrec::Slot* newest = ring;
   for ( const auto* slot = ring; slot != ring + geometry.slotsPerRing; ++slot ) {
      if ( slot->words[ Pelrec::kSequence ] > newest->words[ Pelrec::kSequence ] ) {
         newest = slot;
      }
   }
   const auto* codes = reinterpret_cast< const char* >( newest->words ) + 20;
   std::uint32_t id = 0;
   std::memcpy( &id, &newest->words[ Pelrec::kFormatAndCodes ], sizeof id );
   return std::string( formats[ id ].text, static_cast< std::size_t >( formats[ id ].length ) ) +
          " (" + std::string( codes, strnlen( codes, 4 ) ) + ")";
}

TEST_F( CodefTraceTest, RingRecordsHoldFormatAndRawArgument ) {
   scheduler_->yieldPolicyIs( YieldPolicy::Always );
   schedule( { 11, 12 } );
   codef_->drainBacklog();
   // One integer each; the code tells the reader that it is unsigned.
   EXPECT_EQ( newestRaw( 5 ), "drainBacklog pending work count: %s (u)" );
   EXPECT_EQ( newestRaw( 6 ), "drainBacklog yeilding with pending vlanXlate backlogs: %s (u)" );
   codef_->handleInitialized();
   EXPECT_EQ( newestRaw( 5 ), "handleInitialized Already Initialized ()" );
}

class SilentCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "SilentCodef";
   void processSortedVlanRange( IntfId ) override {}

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
};

// In a process of its own, where nobody has set a level.
TEST_F( CodefTraceDeathTest, NoLevelIsEnabledAtFirst ) {
   GTEST_FLAG_SET( death_test_style, "threadsafe" );
   EXPECT_EXIT( settle(); std::_Exit( 0 ), testing::ExitedWithCode( 0 ), "^$" );
}

// To compose a line takes memory; where nothing is inserted, nothing else does.
TEST_F( CodefTraceTest, DisabledLinesAreNotComposed ) {
   codef_ = nullptr;
   const auto silent = Zel::newEntity< SilentCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );
   scheduler_->yieldPolicyIs( YieldPolicy::Always );
   const auto requests = [ & ] {
      schedule( { 11, 12 } );
      const auto before = TestSupport::newRequests();
      silent->handleInitialized();
      silent->handlePortToLag( IntfId( 11 ) );
      silent->drainBacklog();   // yields
      silent->drainBacklog();   // empties the schedule
      silent->drainBacklog();   // is complete
      return TestSupport::newRequests() - before;
   };
   requests();   // makes the entries
   EXPECT_EQ( requests(), 0u );
   std::uint64_t enabled = 0;
   traced( [ & ] { enabled = requests(); } );
   EXPECT_GT( enabled, 0u );
}

}   // namespace
