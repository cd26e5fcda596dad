// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/String.h"

#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <string_view>

#include <gtest/gtest.h>

#include "Zel/Parse.h"

namespace {

using Zel::String;

TEST( String, DefaultIsEmptyAndFalse ) {
   const String empty;
   EXPECT_TRUE( empty.empty() );
   EXPECT_EQ( empty.size(), 0u );
   EXPECT_FALSE( empty );
   EXPECT_STREQ( empty.c_str(), "" );
}

TEST( String, TakesEveryKindOfText ) {
   EXPECT_EQ( String( "abc" ).str(), "abc" );
   EXPECT_EQ( String( std::string( "abc" ) ).str(), "abc" );
   EXPECT_EQ( String( std::string_view( "abcd", 3 ) ).str(), "abc" );
   EXPECT_TRUE( String( "abc" ) );
}

TEST( String, ConvertsToAView ) {
   const String text( "abc" );
   const std::string_view view = text;
   EXPECT_EQ( view, "abc" );
}

TEST( String, ComparesByItsCharacters ) {
   EXPECT_TRUE( String( "abc" ) == String( "abc" ) );
   EXPECT_FALSE( String( "abc" ) == String( "abd" ) );
   EXPECT_TRUE( String( "abc" ) < String( "abd" ) );
   EXPECT_FALSE( String( "abd" ) < String( "abc" ) );
   EXPECT_FALSE( String( "abc" ) < String( "abc" ) );
}

TEST( String, ACopyIsItsOwn ) {
   String text( "abc" );
   const String copy = text;
   text += "def";
   EXPECT_EQ( text.str(), "abcdef" );
   EXPECT_EQ( copy.str(), "abc" );
}

TEST( String, WritesItsTextToAStream ) {
   std::ostringstream out;
   out << String( "a b" );
   EXPECT_EQ( out.str(), "a b" );
}

TEST( String, KeepsCharactersOfEveryKind ) {
   const String text( std::string( "a\0b", 3 ) );
   EXPECT_EQ( text.size(), 3u );
}

TEST( StringIterator, KnowsItsOffset ) {
   const String text( "abc" );
   Zel::StringIterator at = text.begin();
   EXPECT_EQ( *at, 'a' );
   EXPECT_EQ( at.offset(), 0u );
   ++at;
   EXPECT_EQ( *at, 'b' );
   at += 2;
   EXPECT_EQ( at.offset(), 3u );
   EXPECT_TRUE( at == text.end() );
   EXPECT_EQ( at.base(), text.c_str() + 3 );
}

TEST( ValueToStrep, OfNumbersIsDecimal ) {
   EXPECT_EQ( Zel::valueToStrep( std::uint8_t{ 255 } ).str(), "255" );
   EXPECT_EQ( Zel::valueToStrep( std::uint16_t{ 0 } ).str(), "0" );
   EXPECT_EQ( Zel::valueToStrep( std::uint32_t{ 4094 } ).str(), "4094" );
   EXPECT_EQ( Zel::valueToStrep( std::numeric_limits< std::uint64_t >::max() ).str(),
              "18446744073709551615" );
}

TEST( ValueToStrep, OfABoolIsAWord ) {
   EXPECT_EQ( Zel::valueToStrep( true ).str(), "true" );
   EXPECT_EQ( Zel::valueToStrep( false ).str(), "false" );
}

TEST( ValueToStrep, OfANumberWithFractionIsItsShortestDecimalForm ) {
   EXPECT_EQ( Zel::valueToStrep( 0.1 ).str(), "0.1" );
   EXPECT_EQ( Zel::valueToStrep( 0.0 ).str(), "0" );
   EXPECT_EQ( Zel::valueToStrep( -2.5 ).str(), "-2.5" );
   EXPECT_EQ( Zel::valueToStrep( 3.0 ).str(), "3" );
}

TEST( ValueToStrep, OfANumberWithFractionIsReadBackAsTheSameNumber ) {
   using Limits = std::numeric_limits< double >;
   for ( const double number :
         { 0.1, 0.1 + 0.2, 1.0 / 3.0, 1e-7, 123456789.125, Limits::max(), -Limits::max(),
           Limits::min(), Limits::denorm_min(), Limits::epsilon() } ) {
      const String text = Zel::valueToStrep( number );
      EXPECT_EQ( Zel::strepToValue< double >( text ), number ) << text;
   }
}

TEST( ValueToStrep, OfATextIsTheText ) {
   EXPECT_EQ( Zel::valueToStrep( String( "abc" ) ).str(), "abc" );
   EXPECT_EQ( Zel::valueToStrep( std::string( "abc" ) ).str(), "abc" );
}

// A pointer to characters converts to bool more readily than to a String: "abc" came out "true".
TEST( ValueToStrep, OfALiteralIsTheTextAndNotATruthValue ) {
   EXPECT_EQ( Zel::valueToStrep( "abc" ).str(), "abc" );
}

TEST( Format, PutsEachArgumentInPlace ) {
   EXPECT_EQ( Zel::format( "%s of %s is %s", std::uint32_t{ 2 }, String( "3" ), true ).str(),
              "2 of 3 is true" );
}

TEST( Format, WithoutArgumentsIsThePattern ) {
   EXPECT_EQ( Zel::format( "plain" ).str(), "plain" );
   EXPECT_EQ( Zel::format( "" ).str(), "" );
}

TEST( Format, WritesAPercentSignForTwo ) {
   EXPECT_EQ( Zel::format( "%%%s%%", std::uint32_t{ 50 } ).str(), "%50%" );
}

TEST( Format, DoesNotReadConversionsInArguments ) {
   EXPECT_EQ( Zel::format( "<%s>", String( "%s %d %" ) ).str(), "<%s %d %>" );
}

TEST( FormatDeathTest, TooFewArgumentsAbort ) {
   EXPECT_DEATH( Zel::format( "%s %s", std::uint32_t{ 1 } ),
                 "Zel/String:[0-9]+: .*formatStreps.*: Assertion "
                 "`argument != arguments.end\\(\\)' failed\\." );
}

TEST( FormatDeathTest, TooManyArgumentsAbort ) {
   EXPECT_DEATH( Zel::format( "%s", std::uint32_t{ 1 }, std::uint32_t{ 2 } ),
                 "Zel/String:[0-9]+: .*formatStreps.*: Assertion "
                 "`argument == arguments.end\\(\\)' failed\\." );
}

TEST( FormatDeathTest, AnotherConversionAborts ) {
   EXPECT_DEATH( Zel::format( "%d", std::uint32_t{ 1 } ),
                 "Zel/String:[0-9]+: .*: Assertion `i < pattern.size\\(\\) && "
                 "\\( pattern\\[ i \\] == '%' \\|\\| pattern\\[ i \\] == 's' \\)' failed\\." );
}

TEST( FormatDeathTest, APercentSignAtTheEndAborts ) {
   EXPECT_DEATH( Zel::format( "100%" ), "Assertion `i < pattern.size\\(\\) && " );
}

}   // namespace
