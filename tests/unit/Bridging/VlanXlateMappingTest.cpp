// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Bridging/VlanXlateMapping.h"

#include <array>
#include <bit>
#include <cstdint>
#include <cstring>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "Zel/Parse.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanIdOrNone;
using Bridging::VlanXlateMapping;

TEST( VlanXlateMapping, IsSixtyFourBitsOfPlainValue ) {
   static_assert( sizeof( VlanXlateMapping ) == 8 );
   static_assert( std::is_trivially_copyable_v< VlanXlateMapping > );
}

TEST( VlanXlateMapping, DefaultIsAllBitsZero ) {
   const VlanXlateMapping empty;
   std::array< unsigned char, 8 > bytes{};
   std::memcpy( bytes.data(), &empty, 8 );
   EXPECT_EQ( bytes, ( std::array< unsigned char, 8 >{} ) );
   EXPECT_FALSE( empty.vlanId() );
   EXPECT_EQ( empty, VlanXlateMapping::fromRaw( 0 ) );
}

TEST( VlanXlateMapping, FieldsStandInTheirDocumentedOrder ) {
   const auto mapping = VlanXlateMapping::fromRaw( 0x0102, 0x0304, 0x0506, 7, 8 );
   EXPECT_EQ( std::bit_cast< std::uint64_t >( mapping ), 0x0807'0506'0304'0102u );
}

TEST( VlanXlateMapping, FromAVlanLeavesTheRestAlone ) {
   const VlanXlateMapping mapping( VlanIdOrNone( 3001 ) );
   EXPECT_EQ( mapping, VlanXlateMapping::fromRaw( 3001, 0, 0, 0, 0 ) );
   EXPECT_EQ( mapping.vlanId().value(), 3001u );
}

TEST( VlanXlateMapping, ShowsEachField ) {
   const auto mapping = VlanXlateMapping::fromRaw( 100, 200, 0x88a8, 6, 2 );
   EXPECT_EQ( mapping.rawVlanId(), 100u );
   EXPECT_EQ( mapping.rawInnerVlanId(), 200u );
   EXPECT_EQ( mapping.tpid(), 0x88a8u );
   EXPECT_EQ( mapping.priority(), 6u );
   EXPECT_EQ( mapping.dropEligible(), 2u );
}

TEST( VlanXlateMapping, KeepsATranslatedVlanOutOfRangeAndRefusesItWhenAsked ) {
   const auto mapping = VlanXlateMapping::fromRaw( 4095 );
   EXPECT_EQ( mapping.rawVlanId(), 4095u );
   try {
      mapping.vlanId();
      FAIL() << "4095 was accepted";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(), "Bridging::VlanIdOrNone::value > 4094 not allowed" );
   }
}

TEST( VlanXlateMapping, EveryFieldCountsInEqualityAndHash ) {
   const auto mapping = VlanXlateMapping::fromRaw( 1, 2, 3, 4, 5 );
   const std::array others{
      VlanXlateMapping::fromRaw( 9, 2, 3, 4, 5 ), VlanXlateMapping::fromRaw( 1, 9, 3, 4, 5 ),
      VlanXlateMapping::fromRaw( 1, 2, 9, 4, 5 ), VlanXlateMapping::fromRaw( 1, 2, 3, 9, 5 ),
      VlanXlateMapping::fromRaw( 1, 2, 3, 4, 9 ) };
   EXPECT_TRUE( mapping == VlanXlateMapping::fromRaw( 1, 2, 3, 4, 5 ) );
   std::set< std::uint32_t > hashes{ mapping.hash( 7 ) };
   for ( const VlanXlateMapping& other : others ) {
      EXPECT_FALSE( mapping == other ) << other;
      hashes.insert( other.hash( 7 ) );
   }
   EXPECT_EQ( hashes.size(), 6u );
}

TEST( VlanXlateMapping, ItsHashDependsOnTheSeed ) {
   const auto mapping = VlanXlateMapping::fromRaw( 1, 2, 3, 4, 5 );
   EXPECT_EQ( mapping.hash( 7 ), mapping.hash( 7 ) );
   EXPECT_NE( mapping.hash( 7 ), mapping.hash( 8 ) );
}

TEST( VlanXlateMapping, IsWrittenFieldByField ) {
   const auto mapping = VlanXlateMapping::fromRaw( 3001, 20, 34984, 3, 1 );
   const char* const expected =
      "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3001, 'innerVlanId': 20, "
      "'tpid': 34984, 'priority': 3, 'dropEligible': 1})";
   EXPECT_EQ( valueToStrep( mapping ).str(), expected );
   std::ostringstream out;
   out << mapping;
   EXPECT_EQ( out.str(), expected );
}

TEST( VlanXlateMapping, RandomValuesParseBack ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   for ( int i = 0; i < 1000; ++i ) {
      const auto mapping = VlanXlateMapping::fromRaw(
         static_cast< std::uint16_t >( random() ), static_cast< std::uint16_t >( random() ),
         static_cast< std::uint16_t >( random() ), static_cast< std::uint8_t >( random() ),
         static_cast< std::uint8_t >( random() ) );
      ASSERT_EQ( Zel::strepToValue< VlanXlateMapping >( valueToStrep( mapping ) ), mapping );
   }
}

TEST( VlanXlateMapping, EveryCutTextIsAParseError ) {
   const std::string whole = valueToStrep( VlanXlateMapping::fromRaw( 1, 2, 3, 4, 5 ) ).str();
   for ( std::size_t length = 0; length < whole.size(); ++length ) {
      EXPECT_THROW( Zel::strepToValue< VlanXlateMapping >( whole.substr( 0, length ) ),
                    Zel::ParseException )
         << length;
   }
   EXPECT_THROW( Zel::strepToValue< VlanXlateMapping >( whole + " " ), Zel::ParseException );
}

}   // namespace
