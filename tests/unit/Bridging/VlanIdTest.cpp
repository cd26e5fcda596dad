// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Bridging/VlanId.h"

#include <cstdint>
#include <initializer_list>
#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "Zel/Parse.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanIdOrNone;

template < class Step >
std::string
rangeError( Step step ) {
   try {
      step();
   } catch ( const Zel::RangeException& error ) {
      return error.what();
   }
   return "none";
}

template < class T >
std::string
written( const T& value ) {
   std::ostringstream out;
   out << value;
   return out.str();
}

constexpr const char* kVlanIdError = "Bridging::VlanId::value < 1 or > 4094 not allowed";
constexpr const char* kOrNoneError = "Bridging::VlanIdOrNone::value > 4094 not allowed";

TEST( VlanId, IsSixteenBitsOfPlainValue ) {
   static_assert( sizeof( VlanId ) == 2 );
   static_assert( std::is_trivially_copyable_v< VlanId > );
}

TEST( VlanId, DefaultIsOne ) {
   EXPECT_EQ( VlanId().value(), 1u );
}

TEST( VlanId, TakesOneTo4094 ) {
   EXPECT_EQ( VlanId( 1 ).value(), 1u );
   EXPECT_EQ( VlanId( 4094 ).value(), 4094u );
}

TEST( VlanId, RefusesZeroAndAbove4094 ) {
   for ( const std::uint32_t number : { 0u, 4095u, 65535u, 4294967295u } ) {
      EXPECT_EQ( rangeError( [ & ] { VlanId{ number }; } ), kVlanIdError ) << number;
   }
}

// 65537 is 1 in sixteen bits.
TEST( VlanId, ChecksTheNumberBeforeItIsCutToSixteenBits ) {
   EXPECT_EQ( rangeError( [] { VlanId( 65537 ); } ), kVlanIdError );
}

// All but the last of each list end in the bits of an id.
constexpr std::uint64_t kWide[] = { 1ull << 32 | 5, 1ull << 63 | 5, ~0ull };
// What a call converts a number below zero to; some compilers warn of that.
constexpr std::uint64_t
passed( std::int64_t number ) {
   return static_cast< std::uint64_t >( number );
}
constexpr std::int64_t kNegative[] = { INT64_MIN + 5, -( 1ll << 32 ) + 5, -65536 + 5, -1 };

TEST( VlanId, ANumberOfAnyWidthAndSignIsCheckedAsAWhole ) {
   for ( const std::uint64_t number : kWide ) {
      EXPECT_EQ( rangeError( [ & ] { VlanId id( number ); } ), kVlanIdError ) << number;
   }
   for ( const std::int64_t number : kNegative ) {
      EXPECT_EQ( rangeError( [ & ] { VlanId id( passed( number ) ); } ), kVlanIdError ) << number;
   }
   EXPECT_EQ( VlanId( std::uint64_t{ 4094 } ).value(), 4094 );
   EXPECT_EQ( VlanId( std::int64_t{ 4094 } ).value(), 4094 );
}

TEST( VlanId, FromRawTakesAnySixteenBits ) {
   for ( const auto bits : std::initializer_list< std::uint16_t >{ 0, 1, 4094, 4095, 65535 } ) {
      EXPECT_EQ( VlanId::fromRaw( bits ).value(), bits );
   }
}

TEST( VlanId, ComparesByItsNumber ) {
   EXPECT_TRUE( VlanId( 7 ) == VlanId( 7 ) );
   EXPECT_FALSE( VlanId( 7 ) == VlanId( 8 ) );
   EXPECT_TRUE( VlanId( 7 ) < VlanId( 8 ) );
   EXPECT_FALSE( VlanId( 8 ) < VlanId( 8 ) );
   EXPECT_TRUE( VlanId( 4094 ) < VlanId::fromRaw( 65535 ) );
}

TEST( VlanId, HashesAsASingleAttribute ) {
   EXPECT_EQ( zelHash( VlanId( 7 ), 5 ), Zel::singleAttrHash( 7, 5 ) );
}

TEST( VlanId, IsWrittenAsABareNumberAndParsesBack ) {
   EXPECT_EQ( written( VlanId( 4094 ) ), "4094" );
   for ( std::uint32_t number = 1; number <= 4094; ++number ) {
      ASSERT_EQ( Zel::strepToValue< VlanId >( valueToStrep( VlanId( number ) ) ).value(), number );
   }
}

TEST( VlanId, ParsingChecksTheRange ) {
   EXPECT_EQ( rangeError( [] { Zel::strepToValue< VlanId >( "0" ); } ), kVlanIdError );
   EXPECT_EQ( rangeError( [] { Zel::strepToValue< VlanId >( "4095" ); } ), kVlanIdError );
   EXPECT_THROW( Zel::strepToValue< VlanId >( "65536" ), Zel::ParseException );
   EXPECT_THROW( Zel::strepToValue< VlanId >( "7x" ), Zel::ParseException );
}

TEST( VlanIdOrNone, DefaultIsNoneAndFalse ) {
   EXPECT_EQ( VlanIdOrNone().value(), 0u );
   EXPECT_FALSE( VlanIdOrNone() );
   EXPECT_TRUE( VlanIdOrNone( 1 ) );
}

TEST( VlanIdOrNone, TakesZeroTo4094 ) {
   EXPECT_EQ( VlanIdOrNone( 0 ).value(), 0u );
   EXPECT_EQ( VlanIdOrNone( 4094 ).value(), 4094u );
}

TEST( VlanIdOrNone, RefusesAbove4094 ) {
   for ( const std::uint32_t number : { 4095u, 65535u, 65536u } ) {
      EXPECT_EQ( rangeError( [ & ] { VlanIdOrNone{ number }; } ), kOrNoneError ) << number;
   }
}

TEST( VlanIdOrNone, ANumberOfAnyWidthAndSignIsCheckedAsAWhole ) {
   for ( const std::uint64_t number : kWide ) {
      EXPECT_EQ( rangeError( [ & ] { VlanIdOrNone id( number ); } ), kOrNoneError ) << number;
   }
   for ( const std::int64_t number : kNegative ) {
      EXPECT_EQ( rangeError( [ & ] { VlanIdOrNone id( passed( number ) ); } ), kOrNoneError )
         << number;
   }
   EXPECT_EQ( rangeError( [] { VlanIdOrNone( 1ull << 32 ); } ), kOrNoneError );
   EXPECT_EQ( VlanIdOrNone( std::int64_t{ 4094 } ).value(), 4094 );
}

TEST( VlanIdOrNone, ComparesByItsNumber ) {
   EXPECT_TRUE( VlanIdOrNone() == VlanIdOrNone( 0 ) );
   EXPECT_TRUE( VlanIdOrNone() < VlanIdOrNone( 1 ) );
   EXPECT_FALSE( VlanIdOrNone( 1 ) < VlanIdOrNone( 1 ) );
}

TEST( VlanIdOrNone, ItsStringFormIsABareNumberThatParsesBack ) {
   EXPECT_EQ( valueToStrep( VlanIdOrNone() ).str(), "0" );
   for ( const std::uint32_t number : { 0u, 1u, 4094u } ) {
      const VlanIdOrNone id( number );
      EXPECT_EQ( Zel::strepToValue< VlanIdOrNone >( valueToStrep( id ) ), id );
   }
}

TEST( VlanIdOrNone, ParsingChecksTheRange ) {
   EXPECT_EQ( rangeError( [] { Zel::strepToValue< VlanIdOrNone >( "4095" ); } ), kOrNoneError );
}

TEST( VlanIdOrNone, IsPrintedAsNumberOrNone ) {
   EXPECT_EQ( written( VlanIdOrNone( 3001 ) ), "3001" );
   EXPECT_EQ( written( VlanIdOrNone() ), "none" );
}

}   // namespace
