// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Mox/PortVlanKey.h"

#include <cstdint>
#include <random>
#include <sstream>
#include <string>

#include <gtest/gtest.h>

#include "Zel/Parse.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Corvel::IntfId;
using Mox::PortVlanKey;

PortVlanKey
key( std::uint64_t port, std::uint16_t vlan, std::uint16_t inner = 0 ) {
   return { IntfId( port ), VlanId::fromRaw( vlan ), inner };
}

TEST( PortVlanKey, DefaultIsTheEmptyInterfaceAndVlanOne ) {
   EXPECT_EQ( PortVlanKey(), key( 0, 1, 0 ) );
}

TEST( PortVlanKey, ShowsItsFields ) {
   EXPECT_EQ( key( 7, 100, 5 ).intfId(), IntfId( 7 ) );
   EXPECT_EQ( key( 7, 100, 5 ).vlanId(), VlanId( 100 ) );
   EXPECT_EQ( key( 7, 100, 5 ).innerVlanId(), 5u );
}

TEST( PortVlanKey, MayCarryAnUncheckedVlan ) {
   EXPECT_EQ( key( 7, 0 ).vlanId().value(), 0u );
   EXPECT_EQ( key( 7, 4095 ).vlanId().value(), 4095u );
   EXPECT_EQ( key( 7, 65535 ).vlanId().value(), 65535u );
}

TEST( PortVlanKey, EveryFieldCountsInEquality ) {
   EXPECT_TRUE( key( 7, 100, 5 ) == key( 7, 100, 5 ) );
   EXPECT_FALSE( key( 7, 100, 5 ) == key( 8, 100, 5 ) );
   EXPECT_FALSE( key( 7, 100, 5 ) == key( 7, 101, 5 ) );
   EXPECT_FALSE( key( 7, 100, 5 ) == key( 7, 100, 6 ) );
}

TEST( PortVlanKey, OrdersByInterfaceThenVlanThenInnerVlan ) {
   EXPECT_TRUE( key( 7, 200, 9 ) < key( 8, 100, 5 ) );
   EXPECT_TRUE( key( 7, 100, 9 ) < key( 7, 200, 5 ) );
   EXPECT_TRUE( key( 7, 100, 5 ) < key( 7, 100, 6 ) );
   EXPECT_FALSE( key( 7, 100, 5 ) < key( 7, 100, 5 ) );
   EXPECT_FALSE( key( 8, 100, 5 ) < key( 7, 200, 9 ) );
}

TEST( PortVlanKey, EveryFieldAndTheSeedCountInTheHash ) {
   const std::uint32_t hash = key( 7, 100, 5 ).hash( 3 );
   EXPECT_EQ( hash, zelHash( key( 7, 100, 5 ), 3 ) );
   EXPECT_NE( hash, key( 8, 100, 5 ).hash( 3 ) );
   EXPECT_NE( hash, key( std::uint64_t{ 1 } << 40 | 7, 100, 5 ).hash( 3 ) );
   EXPECT_NE( hash, key( 7, 101, 5 ).hash( 3 ) );
   EXPECT_NE( hash, key( 7, 100, 6 ).hash( 3 ) );
   EXPECT_NE( hash, key( 7, 0x8000 | 100, 5 ).hash( 3 ) );
   EXPECT_NE( hash, key( 7, 100, 0x8000 | 5 ).hash( 3 ) );
   EXPECT_NE( hash, key( 7, 100, 5 ).hash( 4 ) );
   EXPECT_EQ( key( 7, 100, 5 ).hash(), key( 7, 100, 5 ).hash( 0 ) );
}

TEST( PortVlanKey, IsWrittenFieldByField ) {
   const char* const expected =
      "Value('Mox::PortVlanKey', ** {'intfId': 7, 'vlanId': 100, 'innerVlanId': 5})";
   EXPECT_EQ( valueToStrep( key( 7, 100, 5 ) ).str(), expected );
   std::ostringstream out;
   out << key( 7, 100, 5 );
   EXPECT_EQ( out.str(), expected );
}

TEST( PortVlanKey, RandomKeysParseBackUncheckedVlansIncluded ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   for ( int i = 0; i < 1000; ++i ) {
      const PortVlanKey one = key( random(), static_cast< std::uint16_t >( random() ),
                                   static_cast< std::uint16_t >( random() ) );
      ASSERT_EQ( Zel::strepToValue< PortVlanKey >( valueToStrep( one ) ), one );
   }
}

TEST( PortVlanKey, EveryCutTextIsAParseError ) {
   const std::string whole = valueToStrep( key( 7, 100, 5 ) ).str();
   for ( std::size_t length = 0; length < whole.size(); ++length ) {
      EXPECT_THROW( Zel::strepToValue< PortVlanKey >( whole.substr( 0, length ) ),
                    Zel::ParseException )
         << length;
   }
}

}   // namespace
