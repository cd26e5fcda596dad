// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/LocatedJson.h"

#include <limits>
#include <string>

#include <gtest/gtest.h>

namespace Agent {
namespace {

// Every value with its line and every member with the line of its name:
// {a@1:[1@2 2@3]@1}@1
std::string
rendered( const JsonValue& value ) {
   std::string out;
   if ( const JsonObject* object = value.object() ) {
      out += '{';
      for ( const JsonMember& member : *object ) {
         out += ( out.size() > 1 ? " " : "" ) + member.name + '@' + std::to_string( member.line ) +
                ':' + rendered( member.value );
      }
      out += '}';
   } else if ( const JsonArray* array = value.array() ) {
      out += '[';
      for ( const JsonValue& item : *array ) {
         out += ( out.size() > 1 ? " " : "" ) + rendered( item );
      }
      out += ']';
   } else {
      out += value.shown();
   }
   return out + '@' + std::to_string( value.line );
}

std::string
parsed( std::string_view text ) {
   const ParsedJson json = parseJson( text );
   EXPECT_NE( json.value.has_value(), !json.error.empty() );
   return json.value ? rendered( *json.value )
                     : std::to_string( json.errorLine ) + ':' + std::to_string( json.errorColumn ) +
                          ": " + json.error;
}

std::string
nested( std::size_t levels ) {
   return std::string( levels, '[' ) + std::string( levels, ']' );
}

TEST( LocatedJson, KnowsTheLineOfEachValueAndMember ) {
   EXPECT_EQ( parsed( "{\n \"a\":\n  1,\n \"b\": {\n  \"c\" : null } }\n" ),
              "{a@2:1@3 b@4:{c@5:null@5}@4}@1" );
}

TEST( LocatedJson, ANumberBeforeANewlineBelongsToItsOwnLine ) {
   EXPECT_EQ( parsed( "[1\n,22\n,3.5\n,-4\n]\n" ), "[1@1 22@2 3.5@3 -4@4]@1" );
   EXPECT_EQ( parsed( "{\"a\":1\n}" ), "{a@1:1@1}@1" );
   EXPECT_EQ( parsed( "[\n1\n\n,\n2\n]" ), "[1@2 2@5]@1" );
}

TEST( LocatedJson, LiteralsAndStringsBeforeANewlineBelongToTheirOwnLine ) {
   EXPECT_EQ( parsed( "[true\n,false\n,null\n,\"x\"\n,{}\n,[]\n]" ),
              "[true@1 false@2 null@3 \"x\"@4 {}@5 []@6]@1" );
}

TEST( LocatedJson, CarriageReturnsDoNotCountAsLines ) {
   EXPECT_EQ( parsed( "[\r\n1\r\n,\r\n2]" ), "[1@2 2@4]@1" );
}

TEST( LocatedJson, WhiteSpaceMayStandRoundTheValue ) {
   EXPECT_EQ( parsed( "\n\t 7 \n" ), "7@2" );
}

TEST( LocatedJson, KeepsIntegersOf64BitsExactly ) {
   const ParsedJson json =
      parseJson( "[18446744073709551615, 9223372036854775809, -9223372036854775808]" );
   ASSERT_TRUE( json.value );
   const JsonArray& items = *json.value->array();
   EXPECT_EQ( *items[ 0 ].unsignedInteger(), 18446744073709551615U );
   EXPECT_EQ( *items[ 1 ].unsignedInteger(), 9223372036854775809U );
   EXPECT_EQ( std::get< std::int64_t >( items[ 2 ].data ),
              std::numeric_limits< std::int64_t >::min() );
}

TEST( LocatedJson, KeepsOtherNumbersAsTheyStandInTheText ) {
   EXPECT_EQ( parsed( "[1.50, 1e3, 1E+2, 99999999999999999999]" ),
              "[1.50@1 1e3@1 1E+2@1 99999999999999999999@1]@1" );
}

TEST( LocatedJson, TellsIntegersFromNumbersWithFractionOrExponent ) {
   const ParsedJson json = parseJson( R"([1, -1, 99999999999999999999, 1.0, 1e0, "1", true])" );
   ASSERT_TRUE( json.value );
   std::string integers;
   for ( const JsonValue& item : *json.value->array() ) {
      integers += item.isInteger() ? 'y' : 'n';
   }
   EXPECT_EQ( integers, "yyynnnn" );
}

TEST( LocatedJson, NamesTheKindOfAValue ) {
   const ParsedJson json =
      parseJson( R"([null, true, 1, -1, 1.5, 99999999999999999999, "", [], {}])" );
   ASSERT_TRUE( json.value );
   std::string kinds;
   for ( const JsonValue& item : *json.value->array() ) {
      kinds += std::string( item.kind() ) + "; ";
   }
   EXPECT_EQ( kinds,
              "null; a boolean; an integer number; an integer number; a number with fraction or "
              "exponent; an integer number; a string; an array; an object; " );
}

TEST( LocatedJson, NumbersMayHaveAnySize ) {
   EXPECT_EQ( parsed( "[1e999, -1e+400,\n1E-400,1e0005 ,1.5e1000\n,2]" ),
              "[1e999@1 -1e+400@1 1E-400@2 1e0005@2 1.5e1000@2 2@3]@1" );
   EXPECT_EQ( parsed( "1e999" ), "1e999@1" );
   EXPECT_EQ( parsed( "{\"1e999\": \"\\\"2e999\", \"b\": 3}" ),
              R"({1e999@1:""2e999"@1 b@1:3@1}@1)" );
   const std::string digits( 1000, '7' );
   for ( const std::string& number :
         { digits, '-' + digits, digits + '.' + digits + "e-" + digits, "0." + digits } ) {
      const ParsedJson json = parseJson( '[' + number + ",8]" );
      ASSERT_TRUE( json.value ) << json.error;
      const JsonArray& items = *json.value->array();
      EXPECT_EQ( std::get< JsonDecimal >( items[ 0 ].data ).text, number );
      EXPECT_EQ( items[ 1 ].shown(), "8" );
   }
}

TEST( LocatedJson, DecodesEscapes ) {
   const ParsedJson json = parseJson( R"("\u0041\n\"\\\u00e4\ud83d\ude00")" );
   ASSERT_TRUE( json.value );
   EXPECT_EQ( *json.value->string(), "A\n\"\\\xc3\xa4\xf0\x9f\x98\x80" );
}

TEST( LocatedJson, KeepsMembersInTextOrderWithTheirRepetitions ) {
   EXPECT_EQ( parsed( "{\"b\":1,\n\"a\":2,\n\"b\":3}" ), "{b@1:1@1 a@2:2@2 b@3:3@3}@1" );
}

struct Broken {
   const char* name;
   std::string text;
   std::string error;
};

std::ostream&
operator<<( std::ostream& out, const Broken& broken ) {
   return out << broken.name;
}

class BrokenJson : public testing::TestWithParam< Broken > {};

TEST_P( BrokenJson, IsOneErrorWithItsPlace ) {
   EXPECT_EQ( parsed( GetParam().text ), GetParam().error );
}

INSTANTIATE_TEST_SUITE_P(
   LocatedJson, BrokenJson,
   testing::Values(
      Broken{ "EmptyText", "", "1:1: the text is empty" },
      Broken{ "WhiteSpaceAlone", " \n\n",
              "2:1: syntax error while parsing value - unexpected end of input; expected '[', "
              "'{', or a literal" },
      Broken{ "ByteOrderMark", "\xef\xbb\xbf{}", "1:1: the text starts with a byte order mark" },
      Broken{ "NulByte", std::string( "{}\n\0 junk", 9 ), "2:1: the text contains a NUL byte" },
      Broken{ "TextBehindTheValue", "{}\n\nx",
              "3:1: syntax error while parsing value - invalid literal; last read: "
              "'{}<U+000A><U+000A>x'; expected end of input" },
      Broken{ "SecondValue", "{}\n{}",
              "2:1: syntax error while parsing value - unexpected '{'; expected end of input" },
      Broken{ "MissingBrace", "{\n\"a\": 1\n",
              "2:7: syntax error while parsing object - unexpected end of input; expected '}'" },
      Broken{ "MissingComma", "[\n1\n2\n]",
              "3:1: syntax error while parsing array - unexpected number literal; expected ']'" },
      Broken{ "TrailingComma", "[1,\n]",
              "2:1: syntax error while parsing value - unexpected ']'; expected '[', '{', or a "
              "literal" },
      Broken{ "SingleQuotes", "{'a': 1}",
              "1:2: syntax error while parsing object key - invalid literal; last read: '{''; "
              "expected string literal" },
      Broken{ "Comment", "{ // no\n}",
              "1:3: syntax error while parsing object key - invalid literal; last read: '{ /'; "
              "expected string literal" },
      Broken{ "NotANumber", "[NaN]",
              "1:2: syntax error while parsing value - invalid literal; last read: '[N'" },
      Broken{ "Infinity", "[\n-Infinity]",
              "2:2: syntax error while parsing value - invalid number; expected digit after '-'; "
              "last read: '-I'" },
      Broken{ "ColumnsCountCharacters", "{\"\xc3\xa4\xf0\x9f\x98\x80\": 1,, 2}",
              "1:10: syntax error while parsing object key - unexpected ','; expected string "
              "literal" },
      Broken{ "NumberAtTheEnd", "[1 23",
              "1:5: syntax error while parsing array - unexpected number literal; expected ']'" },
      Broken{ "LeadingZero", "[01]",
              "1:3: syntax error while parsing array - unexpected number literal; expected ']'" },
      Broken{ "RawNewlineInAString", "[\n\"ab\ncd\"]",
              "2:4: syntax error while parsing value - invalid string: control character U+000A "
              "(LF) must be escaped to \\u000A or \\n; last read: '\"ab<U+000A>'" },
      Broken{ "IllFormedUtf8", "[\"\xff\"]",
              "1:3: syntax error while parsing value - invalid string: ill-formed UTF-8 byte; last "
              "read: '\"\\xff'" },
      Broken{ "OverlongUtf8", "[\"\xc0\xaf\"]",
              "1:3: syntax error while parsing value - invalid string: ill-formed UTF-8 byte; last "
              "read: '\"\\xc0'" },
      Broken{ "LoneSurrogate", R"(["\ud800"])",
              "1:9: syntax error while parsing value - invalid string: surrogate U+D800..U+DBFF "
              "must be followed by U+DC00..U+DFFF; last read: '\"\\ud800\"'" } ),
   []( const auto& broken ) { return std::string( broken.param.name ); } );

TEST( LocatedJson, NestingEndsAtItsLimit ) {
   EXPECT_TRUE( parseJson( nested( kMaxJsonDepth ) ).value );
   EXPECT_EQ( parsed( "\n" + nested( kMaxJsonDepth + 1 ) ),
              "2:129: nesting is deeper than 128 levels" );
}

TEST( LocatedJson, AMillionOpenBracketsAreRefusedAtTheLimit ) {
   EXPECT_EQ( parsed( std::string( 1000000, '[' ) ), "1:129: nesting is deeper than 128 levels" );
   std::string objects;
   for ( int i = 0; i < 200000; ++i ) {
      objects += "{\"a\":";
   }
   EXPECT_EQ( parsed( objects ), "1:641: nesting is deeper than 128 levels" );
}

TEST( LocatedJson, AnErrorLineStaysShortWhateverItQuotes ) {
   const ParsedJson json = parseJson( '"' + std::string( 1000000, 'x' ) );
   EXPECT_LE( json.error.size(), 210U );
   EXPECT_EQ( json.error.substr( 0, 79 ),
              "syntax error while parsing value - invalid string: missing closing quote; last "
              "" );
}

std::string
duplicates( std::string_view text, std::string_view module = {} ) {
   const ParsedJson json = parseJson( text );
   std::string out;
   for ( const auto& [ first, again ] : duplicateMembers( *json.value->object(), module ) ) {
      out += again->name + ' ' + std::to_string( first->line ) + '-' +
             std::to_string( again->line ) + ' ';
   }
   return out;
}

TEST( DuplicateMembers, NameTheFirstAndEachLaterLine ) {
   EXPECT_EQ( duplicates( "{\"a\":1,\n\"b\":1,\n\"a\":1,\n\"a\":1}" ), "a 1-3 a 1-4 " );
   EXPECT_EQ( duplicates( R"({"a":1, "A":1, "":1})" ), "" );
}

TEST( DuplicateMembers, AreFoundInLargeObjectsToo ) {
   std::string text = "{";
   for ( int i = 0; i < 100; ++i ) {
      text += "\"m" + std::to_string( i ) + "\":0,\n";
   }
   EXPECT_EQ( duplicates( text + "\"m40\":0}" ), "m40 41-101 " );
   EXPECT_EQ( duplicates( text + "\"x:m40\":0}", "x" ), "x:m40 41-101 " );
}

TEST( DuplicateMembers, APrefixOfTheOwnModuleMakesNoDifference ) {
   EXPECT_EQ( duplicates( "{\"a\":1,\n\"x:a\":1}", "x" ), "x:a 1-2 " );
   EXPECT_EQ( duplicates( R"({"a":1, "x:a":1})", "y" ), "" );
   EXPECT_EQ( duplicates( R"({"a":1, "x:a":1})" ), "" );
}

TEST( ShownText, EscapesControlCharacters ) {
   EXPECT_EQ( shownText( "a\n\x1b[2J\x7f" ), "a\\u000a\\u001b[2J\\u007f" );
   EXPECT_EQ( shownText( "\xc2\x9b"
                         "2J \xc3\xa4 \xc2\xa0" ),
              "\\u009b2J \xc3\xa4 \xc2\xa0" );
}

TEST( ShownText, ReplacesTheMiddleOfALongText ) {
   EXPECT_EQ( shownText( std::string( 80, 'a' ) ), std::string( 80, 'a' ) );
   EXPECT_EQ( shownText( std::string( 81, 'a' ) + 'z' ),
              std::string( 56, 'a' ) + "..." + std::string( 23, 'a' ) + 'z' );
}

TEST( ShownText, DoesNotCutCharactersApart ) {
   std::string text;
   for ( int i = 0; i < 50; ++i ) {
      text += "\xf0\x9f\x98\x80";
   }
   for ( const std::string shift : { "", "x", "xx", "xxx" } ) {
      const ParsedJson json = parseJson( '"' + shownText( shift + text ) + '"' );
      EXPECT_TRUE( json.value ) << json.error;
   }
}

}   // namespace
}   // namespace Agent
