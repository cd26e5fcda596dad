// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What a reader sees while the trace writes: nothing that is not complete. A slot is one cache
// line, so two threads hardly ever meet in the middle of one; here one of them stops there.

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

#include <gtest/gtest.h>

#include "Pelrec/Image.h"
#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"
#include "tests/unit/Pelrec/SmallTrace.h"
#include "tests/unit/Pelrec/SplitImageTest.h"

namespace {

constexpr unsigned kLevel = 5;

class TornSlotTest : public SplitImageTest {
 protected:
   // The slot's first argument ends the first page.
   TornSlotTest()
       : SplitImageTest( kGeometry.ringsOffset() + kLevel * sizeof( Pelrec::Slot ) +
                         ( Pelrec::kPayload + 1 ) * sizeof( std::uint64_t ) ) {
      write( 1 );
   }

   void write( std::int64_t value ) {
      Pelrec::Arguments arguments;
      arguments.put( value );
      arguments.put( value );
      trace().write( kLevel, format_, arguments );
   }

   void meanwhile() override {
      if ( writeInTheMiddle_ ) {
         write( 2 );
      }
   }

   const std::uint32_t format_ = trace().formatIs( "%s %s" );
   bool writeInTheMiddle_ = false;
};

TEST_F( TornSlotTest, ARecordOverwrittenWhileItIsReadIsLeftOut ) {
   writeInTheMiddle_ = true;
   const Pelrec::Reader reader( trace().image() );
   closeSecondPage();
   EXPECT_EQ( shown( reader.records( kLevel ) ), "" );
   EXPECT_EQ( stops_, 1 );
   EXPECT_EQ( shown( reader.records( kLevel ) ), "2/5 2 2\n" );
}

TEST_F( TornSlotTest, ARecordReadWhileItIsWrittenIsLeftOut ) {
   closeSecondPage();
   write( 3 );
   EXPECT_EQ( stops_, 1 );
   EXPECT_EQ( shown( std::as_bytes( std::span( seenThere_ ) ) ), "" );
   EXPECT_EQ( shown( trace().image() ), "2/5 3 3\n" );
}

// The magic number alone stands in the first page.
class UnfinishedHeaderTest : public SplitImageTest {
 protected:
   UnfinishedHeaderTest() : SplitImageTest( sizeof( std::uint64_t ) ) {}
};

TEST_F( UnfinishedHeaderTest, TheMagicNumberComesWhenAllElseIsThere ) {
   closeFirstPageToWriters();
   trace().image();
   EXPECT_EQ( stops_, 1 );
   EXPECT_EQ( refusal( std::as_bytes( std::span( seenThere_ ) ) ),
              "Pelrec image: does not start with the magic number" );
   seenThere_[ 0 ] = Pelrec::kMagic;
   EXPECT_EQ( refusal( std::as_bytes( std::span( seenThere_ ) ) ), "" );
}

// The first page ends with the length of the format that is next.
class UnfinishedFormatTest : public SplitImageTest {
 protected:
   static constexpr std::size_t kEntry =
      sizeof( Pelrec::ImageHeader ) + sizeof( Pelrec::FormatEntry );

   UnfinishedFormatTest() : SplitImageTest( kEntry + sizeof( std::uint64_t ) ) {}
};

TEST_F( UnfinishedFormatTest, TheLengthComesWhenTheTextIsThere ) {
   trace().image();
   closeFirstPageToWriters();
   trace().formatIs( "from %s to %s" );
   EXPECT_EQ( stops_, 1 );
   const auto& entry = *reinterpret_cast< const Pelrec::FormatEntry* >(
      seenThere_ + kEntry / sizeof( *seenThere_ ) );
   EXPECT_EQ( entry.length, 0u );
   EXPECT_EQ( std::string_view( entry.text ), "from %s to %s" );
}

}   // namespace
