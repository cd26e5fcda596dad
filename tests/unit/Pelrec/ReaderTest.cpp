// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Pelrec/Reader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <limits>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/Pelrec/SmallTrace.h"

namespace {

using namespace std::string_view_literals;

class ReaderTest : public testing::Test {
 protected:
   // A record of every type of argument, and one without any.
   void writeSamples() {
      small_.write( 5, "signed %s", std::int64_t{ -1 } );
      small_.write( 5, "unsigned %s and text %s", std::uint64_t{ 1 }, "eth1"sv );
      small_.write( 6, "double %s", 0.5 );
      small_.write( 6, "double %s", 1.5 );
   }

   SmallTrace small_;
};

template < typename... Args >
std::string
roundTrip( std::string_view format, const Args&... args ) {
   SmallTrace trace;
   trace.write( 0, format, args... );
   return Pelrec::Reader( trace.trace().image() ).records( 0 ).at( 0 ).text;
}

TEST_F( ReaderTest, ShowsSignedArguments ) {
   using Limits = std::numeric_limits< std::int64_t >;
   EXPECT_EQ( roundTrip( "%s..%s", Limits::min(), Limits::max() ),
              "-9223372036854775808..9223372036854775807" );
}

TEST_F( ReaderTest, ShowsUnsignedArguments ) {
   EXPECT_EQ( roundTrip( "%s", std::numeric_limits< std::uint64_t >::max() ),
              "18446744073709551615" );
}

TEST_F( ReaderTest, ShowsTheShortestFormOfADouble ) {
   EXPECT_EQ( roundTrip( "%s %s %s", 0.1, -1e300, 3.0 ), "0.1 -1e+300 3" );
   EXPECT_EQ( roundTrip( "%s", std::numeric_limits< double >::infinity() ), "inf" );
   EXPECT_EQ( roundTrip( "%s", -std::numeric_limits< double >::denorm_min() ), "-5e-324" );
}

TEST_F( ReaderTest, ShowsTextArguments ) {
   EXPECT_EQ( roundTrip( "<%s> <%s>", "Ethernet1/1"sv, ""sv ), "<Ethernet1/1> <>" );
}

TEST_F( ReaderTest, ShowsFourArgumentsOfMixedTypes ) {
   EXPECT_EQ( roundTrip( "%s,%s,%s,%s", "ab"sv, std::int64_t{ -2 }, "cd"sv, 2.5 ), "ab,-2,cd,2.5" );
}

TEST_F( ReaderTest, MarksATextThatWasCut ) {
   EXPECT_EQ( roundTrip( "%s", std::string_view( std::string( 39, 'x' ) ) ),
              std::string( 39, 'x' ) );
   EXPECT_EQ( roundTrip( "%s", std::string_view( std::string( 40, 'x' ) ) ),
              std::string( 39, 'x' ) + "..." );
}

TEST_F( ReaderTest, ShowsArgumentsThatFillThePayload ) {
   const std::string fifteen( 15, 'x' );
   EXPECT_EQ( roundTrip( "%s %s %s %s", std::string_view( fifteen ), std::int64_t{ 1 },
                         std::uint64_t{ 2 }, 2.5 ),
              fifteen + " 1 2 2.5" );
   const std::string thirtyEight( 38, 'x' );
   EXPECT_EQ( roundTrip( "%s<%s>", std::string_view( thirtyEight ), ""sv ), thirtyEight + "<>" );
}

TEST_F( ReaderTest, LeavesAPlaceholderWithoutArgument ) {
   EXPECT_EQ( roundTrip( "%s and %s", std::int64_t{ 1 } ), "1 and %s" );
}

TEST_F( ReaderTest, AppendsArgumentsWithoutPlaceholder ) {
   EXPECT_EQ( roundTrip( "done", std::int64_t{ 1 }, "x"sv ), "done 1 x" );
}

TEST_F( ReaderTest, TakesAPlaceholderInAnArgumentAsText ) {
   EXPECT_EQ( roundTrip( "%s %s", "%s"sv, std::int64_t{ 1 } ), "%s 1" );
}

TEST_F( ReaderTest, KnowsNoOtherPlaceholder ) {
   EXPECT_EQ( roundTrip( "%d %% 100% %s", std::int64_t{ 1 } ), "%d %% 100% 1" );
}

TEST_F( ReaderTest, ShowsControlCharactersInHexadecimal ) {
   EXPECT_EQ( roundTrip( "a\tb %s", "c\nd\x1b[2J\x7f\0 \xc3\xa9"sv ),
              "a\\x09b c\\x0ad\\x1b[2J\\x7f\\x00 \xc3\xa9" );
}

TEST_F( ReaderTest, ShowsOneLevelAlone ) {
   writeSamples();
   EXPECT_EQ( shown( Pelrec::Reader( small_.bytes() ).records( 6 ) ),
              "3/6 double 0.5\n4/6 double 1.5\n" );
}

TEST_F( ReaderTest, RefusesALevelAboveNine ) {
   EXPECT_THROW( Pelrec::Reader( small_.bytes() ).records( 10 ), std::out_of_range );
}

TEST_F( ReaderTest, IgnoresBytesBehindTheImage ) {
   writeSamples();
   const auto image = small_.bytes();
   std::vector< std::byte > longer( image.begin(), image.end() );
   longer.resize( longer.size() + 100, std::byte{ 0xff } );
   EXPECT_EQ( shown( longer ), small_.shown() );
}

struct NameOf {
   template < typename Case >
   std::string operator()( const Case& tested ) const {
      return tested.param.name;
   }
};

struct SlotDamage {
   const char* name;
   std::function< void( SmallTrace& ) > apply;
};

// The damage hits the second record of level 5, "unsigned 1 and text eth1" in slot 1.
class DamagedSlotTest : public ReaderTest, public testing::WithParamInterface< SlotDamage > {};

TEST_P( DamagedSlotTest, IsLeftOut ) {
   writeSamples();
   GetParam().apply( small_ );
   EXPECT_EQ( small_.shown(), "1/5 signed -1\n3/6 double 0.5\n4/6 double 1.5\n" );
}

const SlotDamage kSlotDamages[] = {
   SlotDamage{ "StillBeingWritten",
               []( SmallTrace& t ) { t.slot( 5, 1 ).words[ Pelrec::kSequence ] = 0; } },
   SlotDamage{ "FormatIdBeyondTheTable",
               []( SmallTrace& t ) {
                  const std::uint32_t id = SmallTrace::kGeometry.formats;
                  std::memcpy( t.codes( 5, 1 ) - sizeof id, &id, sizeof id );
                  // Behind the table lies the first slot: like a format of 9 bytes, but no
                  // record.
                  t.slot( 0, 0 ).words[ Pelrec::kSequence ] = 9;
                  t.slot( 0, 0 ).words[ Pelrec::kFormatAndCodes ] = ~std::uint64_t{ 0 };
               } },
   SlotDamage{ "FormatWithoutText", []( SmallTrace& t ) { t.format( 2 ).length = 0; } },
   SlotDamage{ "FormatLongerThanItsEntry", []( SmallTrace& t ) { t.format( 2 ).length = 121; } },
   SlotDamage{ "FormatOfHugeLength",
               []( SmallTrace& t ) { t.format( 2 ).length = ~std::uint64_t{ 0 }; } },
   SlotDamage{ "UnknownTypeCode", []( SmallTrace& t ) { t.codes( 5, 1 )[ 1 ] = 'q'; } },
   SlotDamage{ "TextBeyondThePayload",
               []( SmallTrace& t ) {
                  std::memset( &t.slot( 5, 1 ).words[ Pelrec::kPayload + 1 ], 32, 1 );
               } },
   SlotDamage{ "TextBehindTheWholePayload",
               []( SmallTrace& t ) {
                  std::memcpy( t.codes( 5, 1 ), "ss\0\0", 4 );
                  std::memset( &t.slot( 5, 1 ).words[ Pelrec::kPayload ], 39, 1 );
               } },
   SlotDamage{ "NumberBeyondThePayload", []( SmallTrace& t ) {
                 std::memcpy( t.codes( 5, 1 ), "si\0\0", 4 );
                 std::memset( &t.slot( 5, 1 ).words[ Pelrec::kPayload ], 32, 1 );
              } } };

INSTANTIATE_TEST_SUITE_P( Reader, DamagedSlotTest, testing::ValuesIn( kSlotDamages ), NameOf() );

struct HeaderDamage {
   const char* name;
   std::function< void( Pelrec::ImageHeader& ) > apply;
   const char* refusal;
};

class DamagedHeaderTest : public ReaderTest, public testing::WithParamInterface< HeaderDamage > {};

TEST_P( DamagedHeaderTest, IsRefusedWithTheReason ) {
   GetParam().apply( small_.header() );
   EXPECT_EQ( refusal( small_.bytes() ), std::string( "Pelrec image: " ) + GetParam().refusal );
}

const HeaderDamage kHeaderDamages[] = {
   HeaderDamage{ "NoMagic", []( auto& h ) { h.magic = 0; },
                 "does not start with the magic number" },
   HeaderDamage{ "OtherByteOrder", []( auto& h ) { h.magic = __builtin_bswap64( Pelrec::kMagic ); },
                 "written in the other byte order" },
   HeaderDamage{ "OtherVersion", []( auto& h ) { h.version = 2; }, "version is 2, not 1" },
   HeaderDamage{ "OtherLevels", []( auto& h ) { h.levels = 11; },
                 "number of levels is 11, not 10" },
   HeaderDamage{ "NoSlots", []( auto& h ) { h.slotsPerRing = 0; },
                 "ring size is 0, not a power of two up to 1048576" },
   HeaderDamage{ "UnevenSlots", []( auto& h ) { h.slotsPerRing = 3; },
                 "ring size is 3, not a power of two up to 1048576" },
   HeaderDamage{ "TooManySlots", []( auto& h ) { h.slotsPerRing = 1u << 21; },
                 "ring size is 2097152, not a power of two up to 1048576" },
   HeaderDamage{ "AsManySlotsAsAllowed", []( auto& h ) { h.slotsPerRing = 1u << 20; },
                 "stated size is 3136, not what its parts add up to" },
   HeaderDamage{ "NoFormats", []( auto& h ) { h.formats = 0; },
                 "number of formats is 0, not 1 to 65536" },
   HeaderDamage{ "TooManyFormats", []( auto& h ) { h.formats = 65537; },
                 "number of formats is 65537, not 1 to 65536" },
   HeaderDamage{ "AsManyFormatsAsAllowed", []( auto& h ) { h.formats = 65536; },
                 "stated size is 3136, not what its parts add up to" },
   HeaderDamage{ "AsFewFormatsAsAllowed", []( auto& h ) { h.formats = 1; },
                 "stated size is 3136, not what its parts add up to" },
   HeaderDamage{ "WrongSize", []( auto& h ) { h.bytes -= 64; },
                 "stated size is 3072, not what its parts add up to" },
   HeaderDamage{ "MoreThanThereIs",
                 []( auto& h ) {
                    h.formats = 5;
                    h.bytes += 128;
                 },
                 "size is 3136, not at least the stated size" } };

INSTANTIATE_TEST_SUITE_P( Reader, DamagedHeaderTest, testing::ValuesIn( kHeaderDamages ),
                          NameOf() );

TEST_F( ReaderTest, RefusesEveryShorterImage ) {
   writeSamples();
   const auto image = small_.bytes();
   for ( std::size_t length = 0; length < image.size(); ++length ) {
      // A copy of that very size, so that a sanitizer sees any read behind its end.
      const std::vector< std::byte > cut( image.begin(),
                                          image.begin() + static_cast< std::ptrdiff_t >( length ) );
      ASSERT_NE( refusal( cut ), "" ) << "at length " << length;
   }
}

TEST_F( ReaderTest, RefusesBytesThatAreNotAligned ) {
   const auto image = small_.bytes();
   // At 4 some machines would do with numbers of 64 bits, but not with atomic ones.
   for ( const std::size_t offset : { std::size_t{ 1 }, std::size_t{ 4 } } ) {
      std::vector< std::byte > moved( image.size() + offset );
      std::ranges::copy( image, moved.begin() + static_cast< std::ptrdiff_t >( offset ) );
      EXPECT_EQ( refusal( std::span( moved ).subspan( offset ) ),
                 "Pelrec image: does not start at a multiple of 8 bytes" );
   }
}

TEST_F( ReaderTest, AnyChangedBitIsRefusedInTheHeaderAndHarmlessBehindIt ) {
   writeSamples();
   const auto original = small_.bytes();
   const std::vector< std::byte > image( original.begin(), original.end() );
   for ( std::size_t at = 0; at < image.size(); ++at ) {
      for ( unsigned bit = 0; bit < 8; ++bit ) {
         std::vector< std::byte > changed = image;
         changed[ at ] ^= static_cast< std::byte >( 1u << bit );
         const bool checked = at < offsetof( Pelrec::ImageHeader, unused );
         ASSERT_EQ( refusal( changed ) != "", checked ) << "bit " << bit << " of byte " << at;
      }
   }
}

TEST_F( ReaderTest, ReadsRandomBytesBehindAGoodHeaderWithoutHarm ) {
   const char* text = std::getenv( "MOX_TEST_SEED" );
   const std::uint64_t seed = text != nullptr ? std::strtoull( text, nullptr, 10 ) : 1;
   SCOPED_TRACE( "MOX_TEST_SEED=" + std::to_string( seed ) );
   std::mt19937_64 random( seed );
   writeSamples();
   std::size_t decoded = 0;
   for ( int round = 0; round < 2000; ++round ) {
      const auto original = small_.bytes();
      std::vector< std::byte > image( original.begin(), original.end() );
      // Plausible ids and codes, or hardly a slot would get as far as its arguments.
      for ( std::size_t at = SmallTrace::kGeometry.ringsOffset(); at < image.size(); at += 64 ) {
         for ( std::size_t byte = 0; byte < 64; ++byte ) {
            image[ at + byte ] = static_cast< std::byte >( random() );
         }
         const std::uint32_t id = static_cast< std::uint32_t >( random() % 5 );
         std::memcpy( &image[ at + 16 ], &id, sizeof id );
         for ( std::size_t code = 20; code < 24; ++code ) {
            image[ at + code ] = static_cast< std::byte >( "iuds"[ random() % 5 ] );
         }
      }
      const std::size_t records = Pelrec::Reader( image ).records().size();
      ASSERT_LE( records, Pelrec::kLevels * SmallTrace::kGeometry.slotsPerRing );
      decoded += records;
   }
   EXPECT_GT( decoded, 0u );
}

TEST( WallTimeTest, IsUniversalTimeWithNineDecimalPlaces ) {
   EXPECT_EQ( Pelrec::wallTime( 0 ), "1970-01-01T00:00:00.000000000Z" );
   EXPECT_EQ( Pelrec::wallTime( 1'000'000'000'000'000'042 ), "2001-09-09T01:46:40.000000042Z" );
   EXPECT_EQ( Pelrec::wallTime( ~std::uint64_t{ 0 } ), "2554-07-21T23:34:33.709551615Z" );
}

}   // namespace
