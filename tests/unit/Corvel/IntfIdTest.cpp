// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Corvel/IntfId.h"

#include <cstdint>
#include <limits>
#include <sstream>
#include <type_traits>

#include <gtest/gtest.h>

#include "Zel/Parse.h"

namespace {

using Corvel::IntfId;

constexpr std::uint64_t kGreatest = std::numeric_limits< std::uint64_t >::max();

TEST( IntfId, IsSixtyFourBitsOfPlainValue ) {
   static_assert( sizeof( IntfId ) == 8 );
   static_assert( std::is_trivially_copyable_v< IntfId > );
}

TEST( IntfId, DefaultIsTheEmptyIdAndFalse ) {
   EXPECT_EQ( IntfId().value(), 0u );
   EXPECT_FALSE( IntfId() );
   EXPECT_TRUE( IntfId( 1 ) );
}

TEST( IntfId, TakesAnyNumber ) {
   EXPECT_EQ( IntfId( kGreatest ).value(), kGreatest );
}

TEST( IntfId, ComparesByItsNumber ) {
   EXPECT_TRUE( IntfId( 7 ) == IntfId( 7 ) );
   EXPECT_FALSE( IntfId( 7 ) == IntfId( 8 ) );
   EXPECT_TRUE( IntfId( 7 ) < IntfId( 8 ) );
   EXPECT_FALSE( IntfId( 8 ) < IntfId( 7 ) );
   EXPECT_TRUE( IntfId( 1 ) < IntfId( std::uint64_t{ 1 } << 63 ) );
}

TEST( IntfId, HashesAsASingleAttribute ) {
   EXPECT_EQ( zelHash( IntfId( 7 ), 5 ), Zel::singleAttrHash( 7, 5 ) );
}

TEST( IntfId, IsWrittenAsABareNumber ) {
   std::ostringstream out;
   out << IntfId( kGreatest );
   EXPECT_EQ( out.str(), "18446744073709551615" );
   EXPECT_EQ( valueToStrep( IntfId( 12 ) ).str(), "12" );
}

TEST( IntfId, ParsesBack ) {
   for ( const std::uint64_t number : { std::uint64_t{ 0 }, std::uint64_t{ 12 }, kGreatest } ) {
      EXPECT_EQ( Zel::strepToValue< IntfId >( valueToStrep( IntfId( number ) ) ).value(), number );
   }
}

TEST( IntfId, AdvancesBehindItsNumber ) {
   const Zel::String text( "12, 'vlanId'" );
   Zel::StringIterator at = text.begin();
   EXPECT_EQ( IntfId( at, text.end() ).value(), 12u );
   EXPECT_EQ( at.offset(), 2u );
}

TEST( IntfId, RefusesWhatIsNoNumberOrTooLarge ) {
   EXPECT_THROW( Zel::strepToValue< IntfId >( "eth1" ), Zel::ParseException );
   EXPECT_THROW( Zel::strepToValue< IntfId >( "18446744073709551616" ), Zel::ParseException );
   EXPECT_THROW( Zel::strepToValue< IntfId >( "12 " ), Zel::ParseException );
}

}   // namespace
