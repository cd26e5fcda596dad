// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanRange.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <ostream>
#include <set>
#include <sstream>
#include <string>
#include <type_traits>
#include <vector>

#include "Zel/Exception.h"
#include "Zel/Hash.h"
#include "Zel/Parse.h"
#include "tests/support/RangeText.h"

namespace {

using Bridging::VlanXlateMapping;
using MoxVlanMapping::ReverseStartIdVlanId;
using MoxVlanMapping::VlanRangeXlateMapping;
using TestSupport::mappingOf;
using TestSupport::rangeOf;
using TestSupport::rangeText;

template < class Value >
std::string
printed( const Value& value ) {
   std::ostringstream out;
   out << value;
   return out.str();
}

template < class Error, class Act >
std::string
thrownText( Act act ) {
   try {
      act();
   } catch ( const Error& error ) {
      return error.what();
   }
   return "nothing thrown";
}

constexpr char kStartRefused[] = "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed";
constexpr char kVlanRefused[] = "Bridging::VlanId::value < 1 or > 4094 not allowed";

const std::string kTenToTwenty =
   "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 10, 'highVid': 20, "
   "'mapping': Value('Bridging::VlanXlateMapping', ** {'vlanId': 3013, 'innerVlanId': 0, "
   "'tpid': 0, 'priority': 0, 'dropEligible': 0})})";

TEST( VlanRangeXlateMapping, IsOneToOneWithTheEmptyMappingByDefault ) {
   const VlanRangeXlateMapping range;
   EXPECT_EQ( rangeText( range ), "1-1 -" );
}

TEST( VlanRangeXlateMapping, IsFalseOnlyAsTheDefault ) {
   EXPECT_FALSE( VlanRangeXlateMapping() );
   EXPECT_FALSE( rangeOf( 1, 1, '-' ) );
   EXPECT_TRUE( rangeOf( 1, 1, 'M' ) );
   EXPECT_TRUE( rangeOf( 1, 2, '-' ) );
   EXPECT_TRUE( rangeOf( 2, 2, '-' ) );
}

TEST( VlanRangeXlateMapping, TakesBoundsInAnyOrder ) {
   EXPECT_EQ( rangeText( rangeOf( 20, 10, 'M' ) ), "20-10 M" );
   EXPECT_EQ( rangeOf( 20, 10, 'M' ).size(), -10 );
}

TEST( VlanRangeXlateMapping, EqualityAsksAllThreeFields ) {
   const VlanRangeXlateMapping range = rangeOf( 10, 20, 'M' );
   EXPECT_TRUE( range == rangeOf( 10, 20, 'M' ) );
   EXPECT_FALSE( range == rangeOf( 11, 20, 'M' ) );
   EXPECT_FALSE( range == rangeOf( 10, 21, 'M' ) );
   EXPECT_FALSE( range == rangeOf( 10, 20, 'N' ) );
}

TEST( VlanRangeXlateMapping, SizeIsTheDistanceOfTheBounds ) {
   EXPECT_EQ( rangeOf( 5, 5, 'M' ).size(), 0 );
   EXPECT_EQ( rangeOf( 10, 20, 'M' ).size(), 10 );
   EXPECT_EQ( rangeOf( 1, 4094, 'M' ).size(), 4093 );
}

struct OrderRow {
   const char* name;
   const char* first;
   const char* second;

   friend void PrintTo( const OrderRow& row, std::ostream* out ) { *out << row.name; }
};

class VlanRangeXlateMappingOrder : public testing::TestWithParam< OrderRow > {};

TEST_P( VlanRangeXlateMappingOrder, PutsTheFirstBeforeTheSecond ) {
   const VlanRangeXlateMapping first = TestSupport::rangesOf( GetParam().first ).front();
   const VlanRangeXlateMapping second = TestSupport::rangesOf( GetParam().second ).front();
   EXPECT_TRUE( first < second );
   EXPECT_FALSE( second < first );
}

INSTANTIATE_TEST_SUITE_P(
   Ranges, VlanRangeXlateMappingOrder,
   testing::Values( OrderRow{ "LargerBeforeSingle", "10-20 M", "5-5 M" },
                    OrderRow{ "LowerStartAmongEqualSizes", "3-7 M", "10-14 M" },
                    OrderRow{ "AllVlansBeforeTheNextLargest", "1-4094 M", "2-4094 M" },
                    OrderRow{ "AllVlansBeforeASingle", "1-4094 M", "1-1 M" },
                    OrderRow{ "LargerBeforeLowerStart", "100-120 M", "1-10 M" },
                    OrderRow{ "LowerStartBeforeLowerMapping", "3-7 N", "4-8 M" },
                    OrderRow{ "LowerTranslatedVlanAmongEqualBounds", "3-7 M", "3-7 N" },
                    OrderRow{ "EmptyMappingBeforeAnyOther", "3-7 -", "3-7 M" },
                    OrderRow{ "ReversedBoundsLast", "5-5 M", "20-10 M" } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

TEST( VlanRangeXlateMapping, IsNotLessThanItself ) {
   EXPECT_FALSE( rangeOf( 10, 20, 'M' ) < rangeOf( 10, 20, 'M' ) );
}

TEST( VlanRangeXlateMapping, OrderIgnoresTheMappingBehindItsFirstField ) {
   const Bridging::VlanId low( 10 );
   const Bridging::VlanId high( 20 );
   const VlanRangeXlateMapping plain( low, high, VlanXlateMapping::fromRaw( 300 ) );
   for ( const VlanXlateMapping mapping :
         { VlanXlateMapping::fromRaw( 300, 1 ), VlanXlateMapping::fromRaw( 300, 0, 1 ),
           VlanXlateMapping::fromRaw( 300, 0, 0, 1 ),
           VlanXlateMapping::fromRaw( 300, 0, 0, 0, 1 ) } ) {
      const VlanRangeXlateMapping twin( low, high, mapping );
      SCOPED_TRACE( printed( twin ) );
      EXPECT_FALSE( plain < twin );
      EXPECT_FALSE( twin < plain );
      EXPECT_FALSE( plain == twin );
   }
}

TEST( VlanRangeXlateMapping, ComparesTranslatedVlansUnsigned ) {
   const Bridging::VlanId vid( 10 );
   const VlanRangeXlateMapping low( vid, vid, VlanXlateMapping::fromRaw( 1 ) );
   const VlanRangeXlateMapping high( vid, vid, VlanXlateMapping::fromRaw( 0xffff ) );
   EXPECT_TRUE( low < high );
   EXPECT_FALSE( high < low );
}

TEST( VlanRangeXlateMapping, HashMixesTheThreeFieldsInOrder ) {
   const VlanRangeXlateMapping range = rangeOf( 10, 20, 'M' );
   for ( const std::uint32_t seed : { 0u, 1u, 0xdeadbeefu } ) {
      Zel::HashAccumulator accumulator( seed );
      accumulator.mix( Zel::singleAttrHash( 10, 0 ) );
      accumulator.mix( Zel::singleAttrHash( 20, 0 ) );
      accumulator.mix( mappingOf( 'M' ).hash( 0 ) );
      EXPECT_EQ( range.hash( seed ), accumulator.result() ) << "seed " << seed;
   }
}

TEST( VlanRangeXlateMapping, HashDependsOnEachField ) {
   const std::uint32_t hash = rangeOf( 10, 20, 'M' ).hash( 0 );
   EXPECT_NE( hash, rangeOf( 11, 20, 'M' ).hash( 0 ) );
   EXPECT_NE( hash, rangeOf( 10, 21, 'M' ).hash( 0 ) );
   EXPECT_NE( hash, rangeOf( 10, 20, 'N' ).hash( 0 ) );
   EXPECT_NE( hash, rangeOf( 20, 10, 'M' ).hash( 0 ) );
   EXPECT_NE( hash, rangeOf( 10, 20, 'M' ).hash( 1 ) );
}

TEST( VlanRangeXlateMapping, PrintsItsStringForm ) {
   const VlanRangeXlateMapping range = rangeOf( 10, 20, 'M' );
   EXPECT_EQ( valueToStrep( range ).str(), kTenToTwenty );
   EXPECT_EQ( printed( range ), kTenToTwenty );
}

TEST( VlanRangeXlateMapping, StringFormParsesBack ) {
   for ( const auto& range :
         { rangeOf( 10, 20, 'M' ), VlanRangeXlateMapping(), rangeOf( 1, 4094, 'Z' ),
           rangeOf( 20, 10, '-' ),
           VlanRangeXlateMapping( Bridging::VlanId( 3 ), Bridging::VlanId( 4 ),
                                  VlanXlateMapping::fromRaw( 65535, 1, 2, 3, 2 ) ) } ) {
      EXPECT_TRUE( Zel::strepToValue< VlanRangeXlateMapping >( valueToStrep( range ) ) == range )
         << range;
   }
}

TEST( VlanRangeXlateMapping, ParsingStopsBehindTheValue ) {
   const Zel::String text( kTenToTwenty + ", next" );
   Zel::StringIterator current = text.begin();
   const VlanRangeXlateMapping range( current, text.end() );
   EXPECT_EQ( rangeText( range ), "10-20 M" );
   EXPECT_EQ( current.offset(), kTenToTwenty.size() );
}

TEST( VlanRangeXlateMapping, OneCharacterMoreIsAParseError ) {
   EXPECT_THROW( Zel::strepToValue< VlanRangeXlateMapping >( kTenToTwenty + " " ),
                 Zel::ParseException );
}

// Every literal of the form, damaged at each of its characters.
TEST( VlanRangeXlateMapping, AnyDamagedLiteralIsAParseError ) {
   for ( std::size_t at = 0; at < kTenToTwenty.size(); ++at ) {
      if ( kTenToTwenty[ at ] >= '0' && kTenToTwenty[ at ] <= '9' ) {
         continue;
      }
      std::string damaged = kTenToTwenty;
      damaged[ at ] = '#';
      EXPECT_THROW( Zel::strepToValue< VlanRangeXlateMapping >( damaged ), Zel::ParseException )
         << damaged;
   }
}

TEST( VlanRangeXlateMapping, AnyTruncatedFormIsAParseError ) {
   for ( std::size_t length = 0; length < kTenToTwenty.size(); ++length ) {
      const std::string cut = kTenToTwenty.substr( 0, length );
      EXPECT_THROW( Zel::strepToValue< VlanRangeXlateMapping >( cut ), Zel::ParseException ) << cut;
   }
}

struct RefusedFieldRow {
   const char* attribute;
   const char* low;
   const char* high;

   friend void PrintTo( const RefusedFieldRow& row, std::ostream* out ) {
      *out << row.attribute << " " << row.low << "-" << row.high;
   }
};

class VlanRangeXlateMappingRefusal : public testing::TestWithParam< RefusedFieldRow > {};

TEST_P( VlanRangeXlateMappingRefusal, NamesTheAttribute ) {
   const std::string text = std::string( "Value('MoxVlanMapping::VlanRangeXlateMapping', ** "
                                         "{'lowVid': " ) +
                            GetParam().low + ", 'highVid': " + GetParam().high +
                            ", 'mapping': " + valueToStrep( mappingOf( 'M' ) ).str() + "})";
   try {
      Zel::strepToValue< VlanRangeXlateMapping >( text );
      FAIL() << "nothing thrown";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(), kVlanRefused );
      EXPECT_EQ( error.attributes(), std::vector< std::string >{ GetParam().attribute } );
      EXPECT_EQ( error.message(), std::string( GetParam().attribute ) + ": " + kVlanRefused );
   }
}

INSTANTIATE_TEST_SUITE_P( Fields, VlanRangeXlateMappingRefusal,
                          testing::Values( RefusedFieldRow{ "lowVid", "0", "20" },
                                           RefusedFieldRow{ "lowVid", "4095", "20" },
                                           RefusedFieldRow{ "highVid", "10", "0" },
                                           RefusedFieldRow{ "highVid", "10", "4095" } ) );

TEST( VlanRangeXlateMapping, ABrokenMappingIsAParseError ) {
   EXPECT_THROW( Zel::strepToValue< VlanRangeXlateMapping >(
                    "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 10, "
                    "'highVid': 20, 'mapping': 7})" ),
                 Zel::ParseException );
}

TEST( ReverseStartIdVlanId, IsZeroAndFalseByDefault ) {
   const ReverseStartIdVlanId start;
   EXPECT_EQ( start.value(), 0 );
   EXPECT_FALSE( start );
}

TEST( ReverseStartIdVlanId, AcceptsZeroToTheHighestVlan ) {
   EXPECT_FALSE( ReverseStartIdVlanId( 0 ) );
   EXPECT_TRUE( ReverseStartIdVlanId( 1 ) );
   EXPECT_EQ( ReverseStartIdVlanId( 4094 ).value(), 4094 );
}

TEST( ReverseStartIdVlanId, RefusesMoreThanTheHighestVlan ) {
   for ( const std::uint16_t number : std::initializer_list< std::uint16_t >{ 4095, 65535 } ) {
      EXPECT_EQ( thrownText< Zel::RangeException >( [ & ] { ReverseStartIdVlanId{ number }; } ),
                 kStartRefused );
   }
}

// Cut to sixteen bits each would be a start.
TEST( ReverseStartIdVlanId, ANumberOfAnyWidthAndSignIsCheckedAsAWhole ) {
   for ( const std::uint64_t number : { 1ull << 16 | 5, 1ull << 32 | 5, 1ull << 63 } ) {
      EXPECT_EQ(
         thrownText< Zel::RangeException >( [ & ] { ReverseStartIdVlanId start( number ); } ),
         kStartRefused );
   }
   for ( const auto number :
         std::initializer_list< std::int64_t >{ INT64_MIN, -( 1ll << 32 ) + 5, -65536 } ) {
      EXPECT_EQ( thrownText< Zel::RangeException >( [ & ] {
                    ReverseStartIdVlanId start( static_cast< std::uint64_t >( number ) );
                 } ),
                 kStartRefused );
   }
   EXPECT_EQ( ReverseStartIdVlanId( std::int64_t{ 4094 } ).value(), 4094 );
}

TEST( ReverseStartIdVlanId, OrdersHigherNumbersFirst ) {
   EXPECT_TRUE( ReverseStartIdVlanId( 11 ) < ReverseStartIdVlanId( 10 ) );
   EXPECT_FALSE( ReverseStartIdVlanId( 10 ) < ReverseStartIdVlanId( 11 ) );
   EXPECT_FALSE( ReverseStartIdVlanId( 10 ) < ReverseStartIdVlanId( 10 ) );
   EXPECT_TRUE( ReverseStartIdVlanId( 10 ) == ReverseStartIdVlanId( 10 ) );
   EXPECT_FALSE( ReverseStartIdVlanId( 10 ) == ReverseStartIdVlanId( 11 ) );
}

TEST( ReverseStartIdVlanId, ASetIteratesFromTheHighest ) {
   std::set< ReverseStartIdVlanId > starts;
   for ( const std::uint16_t start : std::initializer_list< std::uint16_t >{ 10, 200, 3000 } ) {
      starts.insert( start );
   }
   EXPECT_EQ( TestSupport::joined( starts, []( const auto& start ) { return printed( start ); } ),
              "3000, 200, 10" );
}

TEST( ReverseStartIdVlanId, HashIsThatOfTheNumber ) {
   EXPECT_EQ( ReverseStartIdVlanId( 200 ).hash(), Zel::singleAttrHash( 200, 0 ) );
}

TEST( ReverseStartIdVlanId, PrintsABareNumber ) {
   EXPECT_EQ( valueToStrep( ReverseStartIdVlanId( 4094 ) ).str(), "4094" );
   EXPECT_EQ( printed( ReverseStartIdVlanId( 0 ) ), "0" );
}

TEST( ReverseStartIdVlanId, StringFormParsesBack ) {
   EXPECT_EQ( Zel::strepToValue< ReverseStartIdVlanId >( "0" ).value(), 0 );
   EXPECT_EQ( Zel::strepToValue< ReverseStartIdVlanId >( "4094" ).value(), 4094 );
}

TEST( ReverseStartIdVlanId, ParsingRefusesMoreThanTheHighestVlan ) {
   for ( const char* text : { "4095", "65535" } ) {
      EXPECT_EQ( thrownText< Zel::RangeException >(
                    [ & ] { Zel::strepToValue< ReverseStartIdVlanId >( text ); } ),
                 kStartRefused );
   }
}

TEST( ReverseStartIdVlanId, WhatIsNoNumberIsAParseError ) {
   for ( const char* text : { "", "x", "-1", "1x", "65536", " 1" } ) {
      EXPECT_THROW( Zel::strepToValue< ReverseStartIdVlanId >( text ), Zel::ParseException )
         << text;
   }
}

TEST( RangeValues, AreTriviallyCopyable ) {
   EXPECT_TRUE( std::is_trivially_copyable_v< VlanRangeXlateMapping > );
   EXPECT_TRUE( std::is_trivially_copyable_v< ReverseStartIdVlanId > );
   EXPECT_EQ( sizeof( ReverseStartIdVlanId ), 2u );
   EXPECT_EQ( sizeof( VlanRangeXlateMapping ), 12u );
}

}   // namespace
