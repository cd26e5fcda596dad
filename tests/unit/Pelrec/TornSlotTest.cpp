// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// A slot is one cache line, so two threads hardly ever meet in the middle of one. Here the
// image lies so that a slot crosses from one memory page into the next, and the second page is
// closed: whoever comes to the middle of the slot stops there, and the other side runs.

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>
#include <span>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Pelrec/Image.h"
#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"
#include "tests/unit/Pelrec/SmallTrace.h"

namespace {

constexpr unsigned kLevel = 5;
constexpr Pelrec::Geometry kOneSlot{ 1, 2 };
constexpr std::size_t kWords = kOneSlot.imageBytes() / sizeof( std::uint64_t );

class TornSlotTest : public testing::Test {
 protected:
   TornSlotTest() {
      running_ = this;
      struct sigaction action {};
      action.sa_handler = []( int ) { running_->middleReached(); };
      sigaction( SIGSEGV, &action, &before_ );
      write( 1 );
   }
   ~TornSlotTest() override {
      sigaction( SIGSEGV, &before_, nullptr );
      munmap( pages_, 2 * pageSize_ );
   }

   void write( std::int64_t value ) {
      Pelrec::Arguments arguments;
      arguments.put( value );
      arguments.put( value );
      trace_.write( kLevel, format_, arguments );
   }

   void closeSecondPage() { mprotect( pages_ + pageSize_, pageSize_, PROT_NONE ); }

   // Runs in the signal handler.
   void middleReached() {
      mprotect( pages_ + pageSize_, pageSize_, PROT_READ | PROT_WRITE );
      ++stops_;
      if ( writeInTheMiddle_ ) {
         write( 2 );
      }
      std::copy_n( memory_, kWords, seenInTheMiddle_ );
   }

   static TornSlotTest* running_;

   const std::size_t pageSize_ = static_cast< std::size_t >( sysconf( _SC_PAGESIZE ) );
   std::byte* pages_ = static_cast< std::byte* >(
      mmap( nullptr, 2 * pageSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0 ) );
   // The slot's first argument ends the first page.
   std::uint64_t* memory_ = reinterpret_cast< std::uint64_t* >(
      pages_ + pageSize_ - kOneSlot.ringsOffset() - kLevel * sizeof( Pelrec::Slot ) -
      ( Pelrec::kPayload + 1 ) * sizeof( std::uint64_t ) );
   Pelrec::Trace trace_{ memory_, kOneSlot };
   const std::uint32_t format_ = trace_.formatIs( "%s %s" );
   struct sigaction before_ {};

   bool writeInTheMiddle_ = false;
   int stops_ = 0;
   alignas( Pelrec::Slot ) std::uint64_t seenInTheMiddle_[ kWords ] = {};
};

TornSlotTest* TornSlotTest::running_ = nullptr;

TEST_F( TornSlotTest, ARecordOverwrittenWhileItIsReadIsLeftOut ) {
   writeInTheMiddle_ = true;
   const Pelrec::Reader reader( trace_.image() );
   closeSecondPage();
   EXPECT_EQ( shown( reader.records( kLevel ) ), "" );
   EXPECT_EQ( stops_, 1 );
   EXPECT_EQ( shown( reader.records( kLevel ) ), "2/5 2 2\n" );
}

TEST_F( TornSlotTest, ARecordReadWhileItIsWrittenIsLeftOut ) {
   closeSecondPage();
   write( 3 );
   EXPECT_EQ( stops_, 1 );
   EXPECT_EQ( shown( std::as_bytes( std::span( seenInTheMiddle_ ) ) ), "" );
   EXPECT_EQ( shown( trace_.image() ), "2/5 3 3\n" );
}

}   // namespace
