// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/ProgressBar.h"

#include <gtest/gtest.h>
#include <pty.h>
#include <sys/ioctl.h>

#include <cerrno>
#include <memory>
#include <system_error>

namespace Agent {
namespace {

// A bar at a terminal of its own, and a clock that is turned by hand.
class ProgressBarTest : public testing::Test {
 protected:
   ProgressBarTest() {
      if ( openpty( &screen_, &terminal_, nullptr, nullptr, nullptr ) != 0 ) {
         throw std::system_error( errno, std::generic_category(), "openpty" );
      }
      columnsAre( 40 );
      bar_ = std::make_unique< ProgressBar >( "reading", clock_, terminal_ );
   }
   ~ProgressBarTest() override {
      bar_.reset();
      close( terminal_ );
      close( screen_ );
   }

   void columnsAre( unsigned short columns ) {
      winsize size{};
      size.ws_col = columns;
      ASSERT_EQ( ioctl( terminal_, TIOCSWINSZ, &size ), 0 );
   }

   // What was drawn since the last call: all that comes before a mark of our own.
   std::string drawn() {
      constexpr char kMark = '$';
      EXPECT_EQ( write( terminal_, &kMark, 1 ), 1 );
      std::string text;
      for ( char next = 0; read( screen_, &next, 1 ) == 1 && next != kMark; ) {
         text += next;
      }
      return text;
   }

   std::string drawnAt( std::size_t done, std::size_t total ) {
      bar_->doneIs( done, total );
      return drawn();
   }

   int screen_ = -1;
   int terminal_ = -1;
   Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   std::unique_ptr< ProgressBar > bar_;
};

std::string
frame( const std::string& text ) {
   return "\r" + text + "\033[K";
}

TEST_F( ProgressBarTest, IsNotShownInTheFirstSecond ) {
   EXPECT_EQ( drawnAt( 1, 100 ), "" );
   clock_->advance( 0.75 );
   EXPECT_EQ( drawnAt( 50, 100 ), "" );
   bar_.reset();
   EXPECT_EQ( drawn(), "" );
}

TEST_F( ProgressBarTest, FillsTheTerminalButForItsLastColumn ) {
   clock_->advance( 1 );
   EXPECT_EQ( drawnAt( 50, 100 ), frame( "reading [###########           ] 50/100" ) );
   clock_->advance( 1 );
   EXPECT_EQ( drawnAt( 100, 100 ), frame( "reading [#####################] 100/100" ) );
}

TEST_F( ProgressBarTest, FollowsTheWidthOfTheTerminal ) {
   clock_->advance( 1 );
   columnsAre( 24 );
   EXPECT_EQ( drawnAt( 50, 100 ), frame( "reading [###   ] 50/100" ) );
   clock_->advance( 1 );
   columnsAre( 18 );
   EXPECT_EQ( drawnAt( 50, 100 ), frame( "reading 50/100" ) );
   clock_->advance( 1 );
   columnsAre( 6 );
   EXPECT_EQ( drawnAt( 50, 100 ), frame( "readi" ) );
   clock_->advance( 1 );
   columnsAre( 0 );
   EXPECT_EQ( drawnAt( 0, 1 ), frame( "reading [" + std::string( 65, ' ' ) + "] 0/1" ) );
}

TEST_F( ProgressBarTest, IsDrawnTenTimesASecondAtMost ) {
   clock_->advance( 1 );
   std::size_t frames = 0;
   for ( int step = 0; step < 512; ++step ) {
      frames += drawnAt( 1, 2 ).empty() ? 0u : 1u;
      clock_->advance( 1.0 / 256 );
   }
   EXPECT_LE( frames, 20u );
   EXPECT_GE( frames, 18u );
}

TEST_F( ProgressBarTest, CountsWhereNobodyKnowsTheTotal ) {
   clock_->advance( 2 );
   EXPECT_EQ( drawnAt( 123456, 0 ), frame( "reading 123456" ) );
}

TEST_F( ProgressBarTest, MoreThanAllFillsTheBar ) {
   clock_->advance( 2 );
   EXPECT_EQ( drawnAt( 9, 3 ), frame( "reading [#########################] 9/3" ) );
}

TEST_F( ProgressBarTest, IsWipedAtTheEnd ) {
   clock_->advance( 2 );
   EXPECT_NE( drawnAt( 1, 2 ), "" );
   bar_.reset();
   EXPECT_EQ( drawn(), "\r\033[K" );
}

TEST( ProgressBar, ShowsNothingInAPipe ) {
   int ends[ 2 ];
   ASSERT_EQ( pipe( ends ), 0 );
   const auto clock = Zel::manualClockFactory();
   {
      ProgressBar bar( "reading", clock, ends[ 1 ] );
      clock->advance( 5 );
      bar.doneIs( 1, 2 );
   }
   close( ends[ 1 ] );
   char byte = 0;
   EXPECT_EQ( read( ends[ 0 ], &byte, 1 ), 0 );
   close( ends[ 0 ] );
}

}   // namespace
}   // namespace Agent
