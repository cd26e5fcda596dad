// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Kirlog/PelrecConverter.h"

#include <cstdint>
#include <limits>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

namespace {

struct Vlan {
   std::uint16_t id;
};
struct Port {
   std::string name;
};
struct Unknown {};
struct Odd {};

}   // namespace

template <>
struct Kirlog::PelrecConverter< Vlan > {
   static std::uint64_t convert( const Vlan& vlan ) { return vlan.id; }
};

template <>
struct Kirlog::PelrecConverter< Port > {
   static const std::string& convert( const Port& port ) { return port.name; }
};

// No raw argument: an integer of another width than the record's.
template <>
struct Kirlog::PelrecConverter< Odd > {
   static int convert( const Odd& ) { return 0; }
};

namespace {

template < typename T >
auto
converted( const T& value ) {
   return Kirlog::PelrecConverterOf< T >::convert( value );
}

// The letters of a type string that a value of type T may stand for.
template < typename T >
std::string
letters() {
   std::string fitting;
   for ( const char letter : { 'i', 'd', 's', 'u', 'x', '\0' } ) {
      if ( Kirlog::pelrecLetterFits< T >( letter ) ) {
         fitting += letter;
      }
   }
   return fitting;
}

TEST( PelrecConverterTest, KeepsTheSignOfEveryWidth ) {
   EXPECT_EQ( converted( std::int8_t{ -128 } ), std::int64_t{ -128 } );
   EXPECT_EQ( converted( std::int16_t{ -1 } ), std::int64_t{ -1 } );
   EXPECT_EQ( converted( std::numeric_limits< int >::min() ), std::int64_t{ -2147483648 } );
   EXPECT_EQ( converted( std::numeric_limits< long long >::min() ),
              std::numeric_limits< std::int64_t >::min() );
}

TEST( PelrecConverterTest, KeepsTheTopBitOfUnsignedValues ) {
   EXPECT_EQ( converted( std::uint8_t{ 255 } ), std::uint64_t{ 255 } );
   EXPECT_EQ( converted( ~0u ), std::uint64_t{ 4294967295 } );
   EXPECT_EQ( converted( ~0ull ), ~std::uint64_t{ 0 } );
}

TEST( PelrecConverterTest, TakesBoolAsOneOrZero ) {
   EXPECT_EQ( converted( true ), std::uint64_t{ 1 } );
   EXPECT_EQ( converted( false ), std::uint64_t{ 0 } );
}

TEST( PelrecConverterTest, TakesFloatingPointAsDouble ) {
   EXPECT_EQ( converted( 0.5f ), 0.5 );
   EXPECT_EQ( converted( 1e300 ), 1e300 );
}

TEST( PelrecConverterTest, TakesEveryKindOfText ) {
   const char* const pointer = "pointer";
   EXPECT_EQ( converted( "literal" ), "literal" );
   EXPECT_EQ( converted( pointer ), "pointer" );
   EXPECT_EQ( converted( std::string( "string" ) ), "string" );
   EXPECT_EQ( converted( std::string_view( "view" ) ), "view" );
}

TEST( PelrecConverterTest, ShowsANullPointerAsText ) {
   EXPECT_EQ( converted( static_cast< const char* >( nullptr ) ), "(null)" );
}

TEST( PelrecConverterTest, GivesEachTypeItsLetter ) {
   EXPECT_EQ( letters< int >(), "i" );
   EXPECT_EQ( letters< std::uint64_t >(), "i" );
   EXPECT_EQ( letters< bool >(), "i" );
   EXPECT_EQ( letters< float >(), "d" );
   EXPECT_EQ( letters< std::string >(), "s" );
   EXPECT_EQ( letters< char[ 4 ] >(), "s" );
}

TEST( PelrecConverterTest, GivesAValueTypeTheLetterOfItsSpecialisation ) {
   EXPECT_EQ( letters< Vlan >(), "i" );
   EXPECT_EQ( letters< Port >(), "s" );
   EXPECT_EQ( converted( Vlan{ 4095 } ), std::uint64_t{ 4095 } );
   EXPECT_EQ( converted( Port{ "eth1" } ), "eth1" );
}

TEST( PelrecConverterTest, FitsNoLetterWithoutAConversionToARawArgument ) {
   EXPECT_EQ( letters< Unknown >(), "" );
   EXPECT_EQ( letters< Odd >(), "" );
   EXPECT_EQ( letters< void* >(), "" );
}

}   // namespace
