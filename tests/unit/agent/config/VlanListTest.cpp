// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/VlanList.h"

#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

using Ids = std::vector< std::uint16_t >;

TEST( FormatVlanList, JoinsConsecutiveIds ) {
   EXPECT_EQ( formatVlanList( Ids{ 1, 10, 11, 12, 250, 251 } ), "1,10-12,250-251" );
   EXPECT_EQ( formatVlanList( Ids{ 1, 4094 } ), "1,4094" );
   EXPECT_EQ( formatVlanList( Ids{ 7 } ), "7" );
   EXPECT_EQ( formatVlanList( Ids{} ), "" );
}

TEST( FormatVlanList, WritesAllIdsAsOneRange ) {
   Ids all( 4094 );
   for ( std::uint16_t i = 0; i < 4094; ++i ) {
      all[ i ] = static_cast< std::uint16_t >( i + 1 );
   }
   EXPECT_EQ( formatVlanList( all ), "1-4094" );
}

TEST( FormatVlanList, RefusesIdsThatDoNotAscendWithinTheRange ) {
   for ( const Ids& ids :
         { Ids{ 2, 1 }, Ids{ 2, 2 }, Ids{ 0 }, Ids{ 4095 }, Ids{ 4094, 4095 }, Ids{ 65535, 0 } } ) {
      EXPECT_THROW( formatVlanList( ids ), std::invalid_argument );
   }
}

std::string
parsed( std::string_view text ) {
   const ParsedVlanList list = parseVlanList( text );
   if ( list.error.empty() ) {
      return formatVlanList( list.ids );
   }
   EXPECT_TRUE( list.ids.empty() );
   EXPECT_TRUE( list.error.starts_with( "offset " + std::to_string( list.errorOffset ) + ':' ) );
   return list.error;
}

TEST( ParseVlanList, ReadsIdsAndRanges ) {
   EXPECT_EQ( parseVlanList( "1,10-12,250" ).ids, ( Ids{ 1, 10, 11, 12, 250 } ) );
   EXPECT_EQ( parseVlanList( "1-4094" ).ids.size(), 4094U );
   EXPECT_EQ( parsed( "1,10-100,250" ), "1,10-100,250" );
}

TEST( ParseVlanList, AcceptsNeighboursAndRangesOfOneId ) {
   EXPECT_EQ( parsed( "1-5,6-9" ), "1-9" );
   EXPECT_EQ( parsed( "10-10" ), "10" );
}

struct Wrong {
   const char* text;
   const char* error;
};

TEST( ParseVlanList, SaysWhatWasExpectedAndWhere ) {
   for ( const Wrong& wrong : {
            Wrong{ "", "offset 0: expected a VLAN id 1..4094, found the end" },
            Wrong{ "0", "offset 0: expected a VLAN id 1..4094, found \"0\"" },
            Wrong{ "4095", "offset 0: expected a VLAN id 1..4094, found \"4095\"" },
            Wrong{ "1,99999999999", "offset 2: expected a VLAN id 1..4094, found "
                                    "\"99999999999\"" },
            Wrong{ "01", "offset 0: expected a VLAN id 1..4094, found \"01\"" },
            Wrong{ "1,", "offset 2: expected a VLAN id 1..4094, found the end" },
            Wrong{ ",1", "offset 0: expected a VLAN id 1..4094, found \",1\"" },
            Wrong{ "1,,2", "offset 2: expected a VLAN id 1..4094, found \",2\"" },
            Wrong{ "1, 2", "offset 2: expected a VLAN id 1..4094, found \" 2\"" },
            Wrong{ "1-", "offset 2: expected a VLAN id 1..4094, found the end" },
            Wrong{ "-5", "offset 0: expected a VLAN id 1..4094, found \"-5\"" },
            Wrong{ "1 ", "offset 1: expected \",\" or the end, found \" \"" },
            Wrong{ "1-2-3", "offset 3: expected \",\" or the end, found \"-3\"" },
            Wrong{ "1x", "offset 1: expected \",\" or the end, found \"x\"" },
            Wrong{ "20-10", "offset 3: expected a VLAN id of at least 20, found \"10\"" },
            Wrong{ "5,5", "offset 2: expected a VLAN id above 5, found \"5\"" },
            Wrong{ "9,3", "offset 2: expected a VLAN id above 9, found \"3\"" },
            Wrong{ "1-10,10-20", "offset 5: expected a VLAN id above 10, found \"10\"" },
         } ) {
      EXPECT_EQ( parsed( wrong.text ), wrong.error ) << '"' << wrong.text << '"';
   }
}

TEST( ParseVlanList, TakesBackWhatFormatWrote ) {
   const std::uint64_t seed = testSeed();
   SCOPED_TRACE( "MOX_TEST_SEED=" + std::to_string( seed ) );
   std::mt19937_64 random( seed );
   for ( int round = 0; round < 200; ++round ) {
      const unsigned density = 1 + static_cast< unsigned >( random() % 99 );
      Ids ids;
      for ( std::uint16_t vlan = 1; vlan <= 4094; ++vlan ) {
         if ( random() % 100 < density ) {
            ids.push_back( vlan );
         }
      }
      const ParsedVlanList list = parseVlanList( formatVlanList( ids ) );
      ASSERT_EQ( list.error, "" );
      ASSERT_EQ( list.ids, ids );
   }
}

}   // namespace
}   // namespace Agent
