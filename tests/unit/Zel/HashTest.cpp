// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Hash.h"

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <initializer_list>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace {

std::uint32_t
accumulated( std::uint32_t seed, std::initializer_list< std::uint32_t > words ) {
   Zel::HashAccumulator accumulator( seed );
   for ( const std::uint32_t word : words ) {
      accumulator.mix( word );
   }
   return accumulator.result();
}

TEST( HashAccumulator, IsTheSameForTheSameWords ) {
   EXPECT_EQ( accumulated( 7, { 1, 2, 3 } ), accumulated( 7, { 1, 2, 3 } ) );
}

TEST( HashAccumulator, DependsOnTheSeed ) {
   EXPECT_NE( accumulated( 7, { 1, 2, 3 } ), accumulated( 8, { 1, 2, 3 } ) );
}

TEST( HashAccumulator, DependsOnEveryWord ) {
   const std::uint32_t hash = accumulated( 7, { 1, 2, 3 } );
   EXPECT_NE( hash, accumulated( 7, { 9, 2, 3 } ) );
   EXPECT_NE( hash, accumulated( 7, { 1, 9, 3 } ) );
   EXPECT_NE( hash, accumulated( 7, { 1, 2, 9 } ) );
}

TEST( HashAccumulator, DependsOnTheOrderOfTheWords ) {
   EXPECT_NE( accumulated( 7, { 1, 2, 3 } ), accumulated( 7, { 2, 1, 3 } ) );
   EXPECT_NE( accumulated( 7, { 1, 2, 3 } ), accumulated( 7, { 1, 3, 2 } ) );
}

TEST( HashAccumulator, DependsOnTheNumberOfWords ) {
   EXPECT_NE( accumulated( 7, { 0 } ), accumulated( 7, { 0, 0 } ) );
   EXPECT_NE( accumulated( 7, {} ), accumulated( 7, { 0 } ) );
}

TEST( SingleAttrHash, DependsOnTheValueAndTheSeed ) {
   EXPECT_EQ( Zel::singleAttrHash( 100, 7 ), Zel::singleAttrHash( 100, 7 ) );
   EXPECT_NE( Zel::singleAttrHash( 100, 7 ), Zel::singleAttrHash( 101, 7 ) );
   EXPECT_NE( Zel::singleAttrHash( 100, 7 ), Zel::singleAttrHash( 100, 8 ) );
}

TEST( SingleAttrHash, DependsOnEveryBitOfTheValue ) {
   for ( unsigned bit = 0; bit < 64; ++bit ) {
      EXPECT_NE( Zel::singleAttrHash( 12345, 7 ),
                 Zel::singleAttrHash( 12345 ^ ( std::uint64_t{ 1 } << bit ), 7 ) )
         << "bit " << bit;
   }
}

TEST( SingleAttrHash, OfAPlainNumberIsItsZelHash ) {
   EXPECT_EQ( Zel::zelHash( std::uint16_t{ 5 }, 7 ), Zel::singleAttrHash( 5, 7 ) );
}

TEST( ZelHash, OfNumbersWithFractionDependsOnValueAndSeed ) {
   EXPECT_EQ( Zel::zelHash( 0.5, 7 ), Zel::zelHash( 0.5, 7 ) );
   EXPECT_NE( Zel::zelHash( 0.5, 7 ), Zel::zelHash( 0.25, 7 ) );
   EXPECT_NE( Zel::zelHash( 0.5, 7 ), Zel::zelHash( 0.5, 8 ) );
}

TEST( ZelHash, OfEqualNumbersIsTheSameWhateverTheirSignBit ) {
   EXPECT_EQ( Zel::zelHash( -0.0, 7 ), Zel::zelHash( 0.0, 7 ) );
   EXPECT_NE( Zel::zelHash( -1.0, 7 ), Zel::zelHash( 1.0, 7 ) );
}

TEST( ZelHash, OfATextDependsOnItsCharactersTheirOrderAndTheSeed ) {
   const auto hash = []( std::string_view text, std::uint32_t seed = 7 ) {
      return Zel::zelHash( text, seed );
   };
   EXPECT_EQ( hash( "abc" ), hash( std::string( "abc" ) ) );
   EXPECT_NE( hash( "abc" ), hash( "abd" ) );
   EXPECT_NE( hash( "abc" ), hash( "acb" ) );
   EXPECT_NE( hash( "abc" ), hash( "abc", 8 ) );
   EXPECT_NE( hash( "" ), hash( std::string_view( "\0", 1 ) ) );
   EXPECT_NE( hash( "\xff" ), hash( "\x7f" ) );
}

// The low bits choose the bucket.
std::size_t
longestChain( const std::vector< std::uint64_t >& keys, std::uint32_t seed ) {
   std::vector< std::size_t > chains( 1024 );
   for ( const std::uint64_t key : keys ) {
      ++chains[ Zel::singleAttrHash( key, seed ) % 1024 ];
   }
   return std::ranges::max( chains );
}

// Keys that all fall into one bucket under seed 1, which is what an attacker could look for who
// guessed the seed, spread as others do under another seed.
TEST( SingleAttrHash, KeysThatCollideUnderOneSeedSpreadUnderAnother ) {
   std::vector< std::uint64_t > colliding;
   const std::uint32_t bucket = Zel::singleAttrHash( 0, 1 ) % 1024;
   for ( std::uint64_t key = 0; colliding.size() < 200; ++key ) {
      if ( Zel::singleAttrHash( key, 1 ) % 1024 == bucket ) {
         colliding.push_back( key );
      }
   }
   EXPECT_EQ( longestChain( colliding, 1 ), 200u );
   for ( std::uint32_t seed = 2; seed < 12; ++seed ) {
      EXPECT_LT( longestChain( colliding, seed ), 20u ) << "seed " << seed;
   }
}

TEST( SingleAttrHash, RegularKeysSpread ) {
   for ( unsigned shift = 0; shift <= 52; shift += 4 ) {
      std::vector< std::uint64_t > keys;
      for ( std::uint64_t i = 0; i < 1024; ++i ) {
         keys.push_back( i << shift );
      }
      for ( std::uint32_t seed = 1; seed < 9; ++seed ) {
         EXPECT_LT( longestChain( keys, seed ), 24u ) << "shift " << shift << " seed " << seed;
      }
   }
}

TEST( HashSpread, IsABijectionOnASample ) {
   std::set< std::uint64_t > images;
   for ( std::uint64_t x = 0; x < 10000; ++x ) {
      images.insert( Zel::hashSpread( x ) );
   }
   EXPECT_EQ( images.size(), 10000u );
}

TEST( HashSeed, IsTheOneThatWasSet ) {
   const std::uint32_t before = Zel::hashSeed();
   Zel::hashSeedIs( 4711 );
   EXPECT_EQ( Zel::hashSeed(), 4711u );
   Zel::hashSeedIs( before );
   EXPECT_EQ( Zel::hashSeed(), before );
}

// Each runs in a process of its own, which reads the environment again.
class HashSeedDeathTest : public testing::Test {
 protected:
   HashSeedDeathTest() { testing::FLAGS_gtest_death_test_style = "threadsafe"; }
   ~HashSeedDeathTest() override { ::unsetenv( "ZEL_HASH_SEED" ); }

   static void reportAndExit() {
      std::fprintf( stderr, "seed %u\n", Zel::hashSeed() );
      std::exit( 0 );
   }
   static void drawTwice() {
      const std::uint32_t first = Zel::hashSeed();
      std::exit( first == Zel::hashSeed() ? 0 : 1 );
   }
};

TEST_F( HashSeedDeathTest, TheEnvironmentFixesIt ) {
   ::setenv( "ZEL_HASH_SEED", "4294967295", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ), "^seed 4294967295\n$" );
}

TEST_F( HashSeedDeathTest, ZeroInTheEnvironmentIsASeedToo ) {
   ::setenv( "ZEL_HASH_SEED", "0", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ), "^seed 0\n$" );
}

TEST_F( HashSeedDeathTest, AWrongTextInTheEnvironmentIsNamedAndIgnored ) {
   ::setenv( "ZEL_HASH_SEED", "4294967296", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ),
                "^ZEL_HASH_SEED is ignored: expected a number from 0 to 4294967295, found "
                "\"4294967296\" at offset 0\nseed [0-9]+\n$" );
   ::setenv( "ZEL_HASH_SEED", "12x", 1 );
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ),
                "^ZEL_HASH_SEED is ignored: expected the end of the text, found \"x\" at "
                "offset 2\nseed [0-9]+\n$" );
}

TEST_F( HashSeedDeathTest, StaysTheSameForTheLifeOfTheProcess ) {
   EXPECT_EXIT( drawTwice(), testing::ExitedWithCode( 0 ), "" );
}

}   // namespace
