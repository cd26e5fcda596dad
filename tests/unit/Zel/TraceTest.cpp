// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Trace.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "Zel/String.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TraceCapture.h"

namespace {

constexpr char zelSourceTag[] = "Test/Source";

class TraceTest : public testing::Test {
 protected:
   TraceTest() {
      Zel::traceSinkIs( [ this ]( const Zel::TraceLine& line ) {
         lines_ += std::string( line.handle ) + "/" + std::to_string( line.level ) + " " +
                   line.source + ":" + std::to_string( line.line ) + " " + line.function + " " +
                   std::string( line.text ) + "\n";
      } );
      Zel::traceLevelsIs( "*/" );
   }
   ~TraceTest() override {
      Zel::traceLevelsIs( "*/" );
      Zel::traceSinkIs( {} );
   }

   std::string enabledLevels() {
      std::string levels;
      for ( unsigned level = 0; level < 32; ++level ) {
         if ( one_.enabled( level ) ) {
            levels += ( levels.empty() ? "" : " " ) + std::to_string( level );
         }
      }
      return levels;
   }
   static std::string complaint( const char* list ) {
      try {
         Zel::traceLevelsIs( list );
      } catch ( const Zel::ParseException& error ) {
         return error.what();
      }
      return "accepted";
   }

   Zel::TraceHandle one_{ "TraceTest.One", false };
   Zel::TraceHandle two_{ "TraceTest.Two", false };
   std::string lines_;
};

TEST_F( TraceTest, ALineCarriesHandleLevelSourceLineFunctionAndText ) {
   one_.maskIs( 1u << 5 );
   ZEL_TRACE( one_, 5, 14, "range", " low: ", 7, " on: ", true );
   EXPECT_EQ( lines_, "TraceTest.One/5 Test/Source:14 TestBody range low: 7 on: true\n" );
}

TEST_F( TraceTest, ALevelIsItsBitOfTheMask ) {
   one_.maskIs( ( 1u << 1 ) | ( 1u << 9 ) | ( 1u << 31 ) );
   EXPECT_EQ( enabledLevels(), "1 9 31" );
   one_.maskIs( 1 );
   EXPECT_EQ( enabledLevels(), "0" );
   one_.maskIs( 0 );
   EXPECT_EQ( enabledLevels(), "" );
   EXPECT_EQ( one_.mask(), 0u );
}

TEST_F( TraceTest, NothingOfADisabledLineIsEvaluated ) {
   int evaluations = 0;
   one_.maskIs( ~( 1u << 9 ) );
   ZEL_TRACE( one_, 9, __LINE__, "n: ", ++evaluations );
   EXPECT_EQ( evaluations, 0 );
   EXPECT_EQ( lines_, "" );
   one_.maskIs( 1u << 9 );
   ZEL_TRACE( one_, 9, __LINE__, "n: ", ++evaluations );
   EXPECT_EQ( evaluations, 1 );
}

TEST_F( TraceTest, TheFirstLineOfADisabledHandleIsNotEvaluatedEither ) {
   Zel::TraceHandle fresh( "TraceTest.Fresh", false );
   int evaluations = 0;
   ZEL_TRACE( fresh, 1, __LINE__, "n: ", ++evaluations );
   EXPECT_EQ( evaluations, 0 );
   EXPECT_EQ( fresh.mask(), 0u );
}

TEST_F( TraceTest, PiecesAreWrittenByTheirOwnPrinters ) {
   EXPECT_EQ( Zel::traceText( "a", 'b', 1, " ", Zel::String( "s" ), " ", false, " ", 2u ),
              "ab1 s false 2" );
}

TEST_F( TraceTest, AHandleJoinsTheRegistryWhenItIsFirstUsedAndLeavesIt ) {
   const auto known = []( const std::string& name ) {
      return std::ranges::count( Zel::traceHandles(), name );
   };
   {
      Zel::TraceHandle handle( "TraceTest.Joining", false );
      EXPECT_EQ( known( "TraceTest.Joining" ), 0 );
      EXPECT_FALSE( handle.enabled( 3 ) );
      EXPECT_EQ( known( "TraceTest.Joining" ), 1 );
      EXPECT_FALSE( handle.enabled( 3 ) );
      EXPECT_EQ( known( "TraceTest.Joining" ), 1 );
   }
   EXPECT_EQ( known( "TraceTest.Joining" ), 0 );
}

TEST_F( TraceTest, HandlesAreListedSorted ) {
   two_.mask();
   one_.mask();
   EXPECT_TRUE( std::ranges::is_sorted( Zel::traceHandles() ) );
}

TEST_F( TraceTest, AHandleKnowsItsName ) {
   EXPECT_STREQ( one_.name(), "TraceTest.One" );
}

TEST_F( TraceTest, LevelsAreSetByList ) {
   Zel::traceLevelsIs( "TraceTest.One/1,9;TraceTest.Two/5" );
   EXPECT_EQ( one_.mask(), ( 1u << 1 ) | ( 1u << 9 ) );
   EXPECT_EQ( two_.mask(), 1u << 5 );
}

TEST_F( TraceTest, AListReplacesTheLevelsOfTheHandlesItNames ) {
   Zel::traceLevelsIs( "TraceTest.One/1;TraceTest.Two/2" );
   Zel::traceLevelsIs( "TraceTest.One/3" );
   EXPECT_EQ( one_.mask(), 1u << 3 );
   EXPECT_EQ( two_.mask(), 1u << 2 );
}

TEST_F( TraceTest, AListMaySpanLevels ) {
   Zel::traceLevelsIs( "TraceTest.One/0,5-7,9-9,31" );
   EXPECT_EQ( enabledLevels(), "0 5 6 7 9 31" );
}

TEST_F( TraceTest, AStarEnablesAllLevels ) {
   Zel::traceLevelsIs( "TraceTest.One/*" );
   EXPECT_EQ( one_.mask(), ~0u );
}

TEST_F( TraceTest, NothingAfterTheSlashDisablesTheHandle ) {
   one_.maskIs( ~0u );
   Zel::traceLevelsIs( "TraceTest.One/" );
   EXPECT_EQ( one_.mask(), 0u );
}

TEST_F( TraceTest, AStarAsHandleMeansEveryHandle ) {
   Zel::traceLevelsIs( "*/4;TraceTest.Two/6" );
   EXPECT_EQ( one_.mask(), 1u << 4 );
   EXPECT_EQ( two_.mask(), 1u << 6 );
}

TEST_F( TraceTest, AnEmptyListAndAClosingSemicolonAreFine ) {
   EXPECT_EQ( complaint( "" ), "accepted" );
   EXPECT_EQ( complaint( "TraceTest.One/2;" ), "accepted" );
   EXPECT_EQ( one_.mask(), 1u << 2 );
}

TEST_F( TraceTest, AHandleUsedLaterGetsEarlierSettings ) {
   Zel::traceLevelsIs( "TraceTest.Later/1;TraceTest.Later/2,3" );
   Zel::TraceHandle later( "TraceTest.Later", false );
   EXPECT_EQ( later.mask(), ( 1u << 2 ) | ( 1u << 3 ) );
   Zel::traceLevelsIs( "TraceTest.Later/" );
}

TEST_F( TraceTest, AHandleThatStartsEnabledTracesEveryLevelUnlessToldOtherwise ) {
   Zel::traceLevelsIs( "TraceTest.Loud/2" );
   Zel::TraceHandle loud( "TraceTest.Loud", true );
   EXPECT_EQ( loud.mask(), 1u << 2 );
}

// An agent may change levels for as long as it runs.
TEST_F( TraceTest, SettingLevelsAgainAndAgainKeepsNoOldOnes ) {
   Zel::traceLevelsIs( "a handle whose name has memory of its own/1;*/" );
   const std::int64_t before = TestSupport::newBlocks();
   for ( int i = 0; i < 100; ++i ) {
      Zel::traceLevelsIs( "a handle whose name has memory of its own/1" );
      Zel::traceLevelsIs( "another handle whose name has memory of its own/2" );
      Zel::traceLevelsIs( "*/" );
   }
   EXPECT_LE( TestSupport::newBlocks(), before );
}

TEST_F( TraceTest, ABadListSaysWhereAndAppliesNothing ) {
   Zel::traceLevelsIs( "TraceTest.One/7" );
   EXPECT_EQ( complaint( "TraceTest.One/1;TraceTest.Two" ),
              "expected \"/\", found the end of the text at offset 29" );
   EXPECT_EQ( complaint( "TraceTest.One/1;/5" ),
              "expected \"HANDLE/LEVELS\", found \"/5\" at offset 16" );
   EXPECT_EQ( complaint( "TraceTest.One/32" ),
              "expected a number from 0 to 31, found \"32\" at offset 14" );
   EXPECT_EQ( complaint( "TraceTest.One/1,x" ),
              "expected a number from 0 to 31, found \"x\" at offset 16" );
   EXPECT_EQ( complaint( "TraceTest.One/1-" ),
              "expected a number from 0 to 31, found the end of the text at offset 16" );
   EXPECT_EQ( complaint( "TraceTest.One/7-5" ),
              "expected a level from 7 to 31, found 5 at offset 16" );
   EXPECT_EQ( complaint( "TraceTest.One/1 " ), "expected \";\", found \" \" at offset 15" );
   EXPECT_EQ( complaint( "TraceTest.One/*,1" ), "expected \";\", found \",1\" at offset 15" );
   EXPECT_EQ( one_.mask(), 1u << 7 );
}

TEST_F( TraceTest, TheSinkIsReplaced ) {
   std::string other;
   Zel::traceSinkIs( [ & ]( const Zel::TraceLine& line ) { other += line.text; } );
   one_.maskIs( 1 );
   ZEL_TRACE( one_, 0, 1, "hello" );
   EXPECT_EQ( other, "hello" );
   EXPECT_EQ( lines_, "" );
}

// The sink's own captures must live until it returns.
TEST_F( TraceTest, ASinkMayReplaceItself ) {
   std::string seen;
   Zel::traceSinkIs( [ &seen, mine = std::string( "a text too long for a small string" ) ](
                        const Zel::TraceLine& line ) {
      Zel::traceSinkIs( [ &seen ]( const Zel::TraceLine& l ) {
         seen += "second: " + std::string( l.text ) + "\n";
      } );
      seen += mine + ": " + std::string( line.text ) + "\n";
   } );
   one_.maskIs( 1 );
   ZEL_TRACE( one_, 0, 1, "x" );
   ZEL_TRACE( one_, 0, 1, "y" );
   EXPECT_EQ( seen, "a text too long for a small string: x\nsecond: y\n" );
}

TEST_F( TraceTest, TheDefaultSinkWritesToStandardError ) {
   Zel::traceSinkIs( {} );
   one_.maskIs( 1u << 3 );
   testing::internal::CaptureStderr();
   ZEL_TRACE( one_, 3, 40, "hello ", 7 );
   EXPECT_EQ( testing::internal::GetCapturedStderr(), "TraceTest.One/3 Test/Source:40 hello 7\n" );
}

// Each runs in a process of its own, which reads the environment again.
class TraceDeathTest : public testing::Test {
 protected:
   TraceDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
   ~TraceDeathTest() override { ::unsetenv( "ZEL_TRACE" ); }

   static void traceAndExit() {
      static Zel::TraceHandle handle( "TraceDeathTest.Env", false );
      ZEL_TRACE( handle, 0, 1, "zero" );
      ZEL_TRACE( handle, 2, 2, "two" );
      ZEL_TRACE( handle, 3, 3, "three" );
      std::exit( 0 );
   }
};

TEST_F( TraceDeathTest, TheEnvironmentSetsLevels ) {
   ::setenv( "ZEL_TRACE", "TraceDeathTest.Env/3", 1 );
   EXPECT_EXIT( traceAndExit(), testing::ExitedWithCode( 0 ),
                "^TraceDeathTest.Env/3 Test/Source:3 three\n$" );
}

TEST_F( TraceDeathTest, WithoutTheEnvironmentNothingIsTraced ) {
   ::unsetenv( "ZEL_TRACE" );
   EXPECT_EXIT( traceAndExit(), testing::ExitedWithCode( 0 ), "^$" );
}

TEST_F( TraceDeathTest, AWrongTextInTheEnvironmentIsNamedAndIgnored ) {
   ::setenv( "ZEL_TRACE", "TraceDeathTest.Env/3;x", 1 );
   EXPECT_EXIT( traceAndExit(), testing::ExitedWithCode( 0 ),
                "^ZEL_TRACE is ignored: expected \"/\", found the end of the text at offset "
                "22\n$" );
}

TEST_F( TraceTest, CaptureCollectsTheLinesOfItsHandle ) {
   TestSupport::TraceCapture capture( "TraceTest.One", "1,9" );
   ZEL_TRACE( one_, 9, 1, "nine" );
   ZEL_TRACE( one_, 5, 1, "five" );
   ZEL_TRACE( two_, 9, 1, "other" );
   ZEL_TRACE( one_, 1, 1, "one" );
   EXPECT_EQ( capture.text(), "9 nine\n1 one\n" );
}

}   // namespace
