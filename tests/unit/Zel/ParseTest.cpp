// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Parse.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using Zel::ParseException;
using Zel::String;
using Zel::StringIterator;

// What a failing step says, as "TEXT [OFFSET]".
template < class Step >
std::string
complaint( Step step ) {
   try {
      step();
   } catch ( const ParseException& error ) {
      return std::string( error.what() ) + " [" + std::to_string( error.offset() ) + "]";
   }
   return "no complaint";
}

template < class T >
std::string
numberComplaint( const String& text ) {
   return complaint( [ & ] {
      StringIterator at = text.begin();
      Zel::parseNumber< T >( at, text.end() );
   } );
}

TEST( ParseLiteral, AdvancesBehindTheLiteral ) {
   const String text( "lowVid: 7" );
   StringIterator at = text.begin();
   Zel::parseLiteral( at, text.end(), "lowVid: " );
   EXPECT_EQ( at.offset(), 8u );
   EXPECT_EQ( *at, '7' );
}

TEST( ParseLiteral, SaysWhatWasExpectedAndFoundAndWhere ) {
   const String text( "lowVid: 7" );
   EXPECT_EQ( complaint( [ & ] {
                 StringIterator at = text.begin();
                 Zel::parseLiteral( at, text.end(), "low" );
                 Zel::parseLiteral( at, text.end(), "vid" );
              } ),
              "expected \"vid\", found \"Vid: 7\" at offset 3 [3]" );
}

TEST( ParseLiteral, StaysWhereItFailed ) {
   const String text( "abc" );
   StringIterator at = text.begin();
   EXPECT_THROW( Zel::parseLiteral( at, text.end(), "abd" ), ParseException );
   EXPECT_EQ( at.offset(), 0u );
}

TEST( ParseLiteral, SaysThatTheTextEnded ) {
   const String text( "ab" );
   EXPECT_EQ( complaint( [ & ] {
                 StringIterator at = text.begin();
                 Zel::parseLiteral( at, text.end(), "ab" );
                 Zel::parseLiteral( at, text.end(), "c" );
              } ),
              "expected \"c\", found the end of the text at offset 2 [2]" );
}

TEST( ParseLiteral, ShowsTheBeginningOfALongText ) {
   const String text( "abcdefghijklmnopqrstuvwxyz" );
   EXPECT_EQ( complaint( [ & ] {
                 StringIterator at = text.begin();
                 Zel::parseLiteral( at, text.end(), "z" );
              } ),
              "expected \"z\", found \"abcdefghijklmnopqrstuvwx...\" at offset 0 [0]" );
}

TEST( ParseLiteral, ShowsATextOfTwentyFourCharactersWhole ) {
   const String text( "abcdefghijklmnopqrstuvwx" );
   EXPECT_EQ( complaint( [ & ] {
                 StringIterator at = text.begin();
                 Zel::parseLiteral( at, text.end(), "z" );
              } ),
              "expected \"z\", found \"abcdefghijklmnopqrstuvwx\" at offset 0 [0]" );
}

TEST( ParseNumber, ReadsDigitsAndStopsBehindThem ) {
   const String text( "4094, next" );
   StringIterator at = text.begin();
   EXPECT_EQ( Zel::parseNumber< std::uint16_t >( at, text.end() ), 4094u );
   EXPECT_EQ( at.offset(), 4u );
}

TEST( ParseNumber, ReadsLeadingZeros ) {
   const String text( "007" );
   StringIterator at = text.begin();
   EXPECT_EQ( Zel::parseNumber< std::uint8_t >( at, text.end() ), 7u );
}

TEST( ParseNumber, TakesTheGreatestValueOfItsTypeAndNoGreater ) {
   const auto read = []( const String& text ) {
      StringIterator at = text.begin();
      return Zel::parseNumber< std::uint64_t >( at, text.end() );
   };
   EXPECT_EQ( read( "18446744073709551615" ), 18446744073709551615u );
   EXPECT_EQ( numberComplaint< std::uint64_t >( "18446744073709551616" ),
              "expected a number from 0 to 18446744073709551615, "
              "found \"18446744073709551616\" at offset 0 [0]" );
   EXPECT_EQ( numberComplaint< std::uint16_t >( "65536" ),
              "expected a number from 0 to 65535, found \"65536\" at offset 0 [0]" );
   EXPECT_EQ( numberComplaint< std::uint8_t >( "256" ),
              "expected a number from 0 to 255, found \"256\" at offset 0 [0]" );
}

TEST( ParseNumber, RefusesANumberThatWrapsRoundIntoRange ) {
   EXPECT_NE( numberComplaint< std::uint64_t >( "36893488147419103233" ), "no complaint" );
   EXPECT_NE( numberComplaint< std::uint16_t >( "18446744073709551617" ), "no complaint" );
}

TEST( ParseNumber, RefusesSignsBlanksAndLetters ) {
   for ( const char* text : { "-1", "+1", " 1", "x1", "" } ) {
      EXPECT_NE( numberComplaint< std::uint32_t >( text ), "no complaint" ) << text;
   }
}

TEST( ParseNumber, StaysWhereItFailed ) {
   const String text( "70000" );
   StringIterator at = text.begin();
   EXPECT_THROW( Zel::parseNumber< std::uint16_t >( at, text.end() ), ParseException );
   EXPECT_EQ( at.offset(), 0u );
}

TEST( ParseUnsigned, HonoursALimitThatNeedNotBeATypes ) {
   const String text( "31" );
   StringIterator at = text.begin();
   EXPECT_EQ( Zel::parseUnsigned( at, text.end(), 31 ), 31u );
   at = text.begin();
   EXPECT_THROW( Zel::parseUnsigned( at, text.end(), 30 ), ParseException );
   at = text.begin();
   EXPECT_THROW( Zel::parseUnsigned( at, text.end(), 2 ), ParseException );
}

TEST( ParseBool, ReadsTheTwoWordsAndNothingElse ) {
   const auto read = []( const String& text ) {
      StringIterator at = text.begin();
      const bool value = Zel::parseBool( at, text.end() );
      return std::to_string( at.offset() ) + ( value ? " yes" : " no" );
   };
   EXPECT_EQ( read( "true" ), "4 yes" );
   EXPECT_EQ( read( "false, next" ), "5 no" );
   for ( const char* text : { "", "1", "True", "tru", " true" } ) {
      EXPECT_THROW( read( text ), ParseException ) << text;
   }
}

TEST( ParseBool, SaysWhatWasExpectedAndStaysWhereItFailed ) {
   const String text( "maybe" );
   StringIterator at = text.begin();
   EXPECT_EQ( complaint( [ & ] { Zel::parseBool( at, text.end() ); } ),
              "expected false or true, found \"maybe\" at offset 0 [0]" );
   EXPECT_EQ( at.offset(), 0u );
}

TEST( ParseChoice, AnswersThePlaceOfTheChoiceAndStopsBehindIt ) {
   constexpr const char* choices[] = { "red", "green", "blue" };
   const String text( "blue,red" );
   StringIterator at = text.begin();
   EXPECT_EQ( Zel::parseChoice( at, text.end(), choices ), 2u );
   ++at;
   EXPECT_EQ( Zel::parseChoice( at, text.end(), choices ), 0u );
   EXPECT_TRUE( at == text.end() );
}

TEST( ParseChoice, NamesAllChoicesWhenNoneIsThere ) {
   constexpr const char* choices[] = { "red", "green", "blue" };
   const String text( "gree" );
   StringIterator at = text.begin();
   EXPECT_EQ( complaint( [ & ] { Zel::parseChoice( at, text.end(), choices ); } ),
              "expected red or green or blue, found \"gree\" at offset 0 [0]" );
   EXPECT_EQ( at.offset(), 0u );
}

TEST( ParseDouble, ReadsDecimalNumbersAndStopsBehindThem ) {
   const auto read = []( const String& text ) {
      StringIterator at = text.begin();
      const double value = Zel::parseDouble( at, text.end() );
      return std::pair( value, at.offset() );
   };
   EXPECT_EQ( read( "0.1" ), std::pair( 0.1, std::size_t{ 3 } ) );
   EXPECT_EQ( read( "-2.5e3 s" ), std::pair( -2500.0, std::size_t{ 6 } ) );
   EXPECT_EQ( read( "7,5" ), std::pair( 7.0, std::size_t{ 1 } ) );
   EXPECT_EQ( read( "0x10" ), std::pair( 0.0, std::size_t{ 1 } ) );
}

TEST( ParseDouble, RefusesWhatIsNoFiniteNumberAndStaysWhereItFailed ) {
   for ( const char* number :
         { "", " 1", "+1", "x", "inf", "-inf", "nan", "infinity", "1e999", "-1e999", "." } ) {
      const String text( number );
      StringIterator at = text.begin();
      EXPECT_THROW( Zel::parseDouble( at, text.end() ), ParseException ) << number;
      EXPECT_EQ( at.offset(), 0u ) << number;
   }
   EXPECT_EQ( complaint( [] { Zel::strepToValue< double >( "fast" ); } ),
              "expected a decimal number, found \"fast\" at offset 0 [0]" );
}

TEST( ParseValue, OfATextIsAllThatIsLeft ) {
   EXPECT_EQ( Zel::strepToValue< String >( "any, text" ).str(), "any, text" );
   EXPECT_EQ( Zel::strepToValue< String >( "" ).str(), "" );
   const String text( "name: a b" );
   StringIterator at = text.begin();
   Zel::parseLiteral( at, text.end(), "name: " );
   EXPECT_EQ( Zel::parseValue< String >( at, text.end() ).str(), "a b" );
   EXPECT_TRUE( at == text.end() );
}

enum class Side : std::uint8_t { Left, Right };

void
zelParseValue( StringIterator& current, StringIterator end, Side& side ) {
   constexpr const char* names[] = { "Left", "Right" };
   side = static_cast< Side >( Zel::parseChoice( current, end, names ) );
}

TEST( ParseValue, OfATypeWithoutConstructorsIsTheFunctionBesideIt ) {
   EXPECT_EQ( Zel::strepToValue< Side >( "Right" ), Side::Right );
   EXPECT_EQ( Zel::strepToValue< bool >( "true" ), true );
   EXPECT_THROW( Zel::strepToValue< Side >( "Rightmost" ), ParseException );
}

TEST( ParseEnd, AcceptsTheEndAlone ) {
   const String text( "a" );
   Zel::parseEnd( text.end(), text.end() );
   EXPECT_EQ( complaint( [ & ] { Zel::parseEnd( text.begin(), text.end() ); } ),
              "expected the end of the text, found \"a\" at offset 0 [0]" );
}

// A value of at most 10.
struct Small {
   Small( StringIterator& current, StringIterator end )
       : number( Zel::parseNumber< std::uint8_t >( current, end ) ) {
      if ( number > 10 ) {
         Zel::throwRangeException( "Small > 10 not allowed" );
      }
   }
   unsigned number;
};

TEST( StrepToValue, ReadsAWholeText ) {
   EXPECT_EQ( Zel::strepToValue< Small >( "7" ).number, 7u );
}

TEST( StrepToValue, RefusesTextLeftOver ) {
   EXPECT_EQ( complaint( [] { Zel::strepToValue< Small >( "7 " ); } ),
              "expected the end of the text, found \" \" at offset 1 [1]" );
}

TEST( ParseAttribute, ReadsNumbersAndValues ) {
   const String text( "12,3" );
   StringIterator at = text.begin();
   EXPECT_EQ( Zel::parseAttribute< std::uint16_t >( at, text.end(), "first" ), 12u );
   ++at;
   EXPECT_EQ( Zel::parseAttribute< Small >( at, text.end(), "second" ).number, 3u );
}

TEST( ParseAttribute, NamesTheAttributeInARangeException ) {
   const String text( "11" );
   StringIterator at = text.begin();
   try {
      Zel::parseAttribute< Small >( at, text.end(), "small" );
      FAIL() << "11 was accepted";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_STREQ( error.what(), "Small > 10 not allowed" );
      EXPECT_EQ( error.message(), "small: Small > 10 not allowed" );
   }
}

TEST( ParseAttribute, LeavesAParseExceptionAsItIs ) {
   const String text( "x" );
   StringIterator at = text.begin();
   try {
      Zel::parseAttribute< Small >( at, text.end(), "small" );
      FAIL() << "x was accepted";
   } catch ( const ParseException& error ) {
      EXPECT_TRUE( error.attributes().empty() );
   }
}

}   // namespace
