// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Schema.h"

#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace Agent {
namespace {

constexpr std::string_view kColourNames[] = { "red", "green" };
constexpr LeafType kColour = { .allowed = "red, green", .names = kColourNames };
constexpr LeafType kPaint = { .allowed = "red, green", .names = kColourNames, .module = "paint" };
constexpr LeafType kOwnPaint = { .allowed = "red, green", .names = kColourNames, .module = "m" };
constexpr NumberRange kGap[] = { { 1, 2 }, { 5, 5 } };
constexpr LeafType kNumberOrName = { .allowed = "1..2, 5, or a JSON string",
                                     .numbers = kGap,
                                     .text = []( std::string_view ) { return true; } };

// Holds the object {"m:o":{...}}, whose members stand from line 1 on, to a schema of its own.
class SchemaTest : public testing::Test {
 protected:
   // All findings, one a line.
   std::string findings( std::vector< SchemaNode > nodes, const std::string& members ) {
      const ParsedJson json = parseJson( "{\"m:o\":{" + members + "}}" );
      EXPECT_TRUE( json.value ) << json.error;
      Document document( "f" );
      const Schema schema = { .modules = { "m", "n" },
                              .top = { container( "m:o", std::move( nodes ) ) } };
      checkDocument( document, schema, Place( *json.value ) );
      for ( const UnusedMember& member : document.takeUnused() ) {
         unused_ += member.path + ' ' + std::to_string( member.count ) + ' ' + member.reason + '\n';
      }
      std::string out;
      for ( const Finding& finding : document.takeFindings() ) {
         out += finding.text() + '\n';
      }
      return out;
   }

   std::string unused_;
};

const std::vector< SchemaNode > kLeaves = { leaf( "apple", kUnsigned8, Use::read ),
                                            leaf( "n:berry", kUnsigned8, Use::read ) };

// --- names

TEST_F( SchemaTest, AMemberStandsWithOrWithoutThePrefixOfItsModule ) {
   EXPECT_EQ( findings( kLeaves, R"("apple":1,"n:berry":2)" ), "" );
   EXPECT_EQ( findings( kLeaves, R"("m:apple":1)" ), "" );
   EXPECT_EQ( unused_, "" );
}

TEST_F( SchemaTest, AMemberOfAnotherModuleOfTheSchemaMustNameIt ) {
   EXPECT_EQ( findings( kLeaves, R"("berry":3)" ),
              "f:1: /m:o/berry: value 3 lacks its module name; allowed: \"n:berry\"\n" );
}

TEST_F( SchemaTest, AnUnknownMemberOfAModuleOfTheSchemaIsAFinding ) {
   EXPECT_EQ( findings( kLeaves, R"("appel":1)" ),
              "f:1: /m:o/appel: is unknown; allowed: apple perhaps\n" );
   EXPECT_EQ( findings( kLeaves, R"("m:apples":1)" ),
              "f:1: /m:o/apples: is unknown; allowed: apple perhaps\n" );
   EXPECT_EQ( findings( kLeaves, R"("zest":1)" ),
              "f:1: /m:o/zest: is unknown; allowed: what the module defines here\n" );
   EXPECT_EQ( findings( kLeaves, R"("n:zest":{"x":1})" ),
              "f:1: /m:o/n:zest: is unknown; allowed: what the module defines here\n" );
   EXPECT_EQ( unused_, "" );
}

TEST_F( SchemaTest, MembersOfOtherModulesAreNamedLeafByLeaf ) {
   EXPECT_EQ( findings( kLeaves, R"("x:list":[{"k":1,"n:x":{"y":1}},{"k":2}],"x:leaves":[1,2],)"
                                 R"("x:none":{},"x:empty":[],"x:matrix":[[1],[2]])" ),
              "" );
   EXPECT_EQ( unused_, "/m:o/x:list/k 2 of another module\n"
                       "/m:o/x:list/n:x/y 1 of another module\n"
                       "/m:o/x:leaves 1 of another module\n"
                       "/m:o/x:none 1 of another module\n"
                       "/m:o/x:empty 1 of another module\n"
                       "/m:o/x:matrix 2 of another module\n" );
}

TEST_F( SchemaTest, MembersOfOtherModulesMayNotRepeatEither ) {
   EXPECT_EQ( findings( kLeaves, "\"x:u\":[{\"v\":{\n\"w\":1,\n\"w\":2}}]" ),
              "f:3: /m:o/x:u[1]/v/w: value 2 is given twice, on lines 2 and 3; allowed: each "
              "member once\n" );
}

TEST_F( SchemaTest, AMemberGivenTwiceIsAFindingAndTheFirstCounts ) {
   EXPECT_EQ( findings( kLeaves, "\"apple\":1,\n\"apple\":999,\n\"m:apple\":3" ),
              "f:2: /m:o/apple: value 999 is given twice, on lines 1 and 2; allowed: each member "
              "once\n"
              "f:3: /m:o/apple: value 3 is given twice, on lines 1 and 3; allowed: each member "
              "once\n" );
}

TEST_F( SchemaTest, StateIsRefusedAndNotLookedInto ) {
   EXPECT_EQ( findings( { state( "counters" ) }, R"("counters":{"bogus":1})" ),
              "f:1: /m:o/counters: is state of the switch; allowed: configuration\n" );
}

// --- what has no effect

TEST_F( SchemaTest, LeavesThatAreNotReadAreCounted ) {
   EXPECT_EQ( findings( { leaf( "a", kBoolean ), leaf( "b", kBoolean, Use::checked ),
                          leaf( "c", kBoolean, Use::read ), leafList( "d", kUnsigned8 ) },
                        R"("a":true,"b":true,"c":true,"d":[1,2])" ),
              "" );
   EXPECT_EQ( unused_, "/m:o/a 1 not used by this agent\n"
                       "/m:o/b 1 checked, has no effect\n"
                       "/m:o/d 1 not used by this agent\n" );
}

TEST_F( SchemaTest, FindingsComeByLine ) {
   EXPECT_EQ(
      findings( { leaf( "a", kVlanId ), mandatory( leaf( "b", kVlanId ) ), leaf( "c", kVlanId ) },
                "\n\"c\":0,\n\"a\":0" ),
      "f:1: /m:o/b: is missing; allowed: 1..4094\n"
      "f:2: /m:o/c: value 0 is not allowed; allowed: 1..4094\n"
      "f:3: /m:o/a: value 0 is not allowed; allowed: 1..4094\n" );
}

// --- containers and lists

TEST_F( SchemaTest, AContainerThatIsAbsentMayStillLackALeaf ) {
   const std::vector< SchemaNode > nodes = {
      container( "config", { mandatory( leaf( "type", kColour ) ) } ) };
   EXPECT_EQ( findings( nodes, "" ), "f:1: /m:o/config/type: is missing; allowed: red, green\n" );
   EXPECT_EQ( findings( nodes, R"("config":[])" ),
              "f:1: /m:o/config: value [] has the wrong type, an array; allowed: an object\n" );
}

TEST_F( SchemaTest, ListsAreArraysOfObjects ) {
   const std::vector< SchemaNode > nodes = { list( "l", { "k" }, { leaf( "k", kUnsigned8 ) } ) };
   EXPECT_EQ( findings( nodes, R"("l":{})" ),
              "f:1: /m:o/l: value {} has the wrong type, an object; allowed: an array, one object "
              "for each entry\n" );
   EXPECT_EQ( findings( nodes, R"("l":[{"k":1},7])" ),
              "f:1: /m:o/l[2]: value 7 has the wrong type, an integer number; allowed: an "
              "object\n" );
}

TEST_F( SchemaTest, EntriesHaveTheirKeysAndEachOnce ) {
   const std::vector< SchemaNode > nodes = {
      list( "l", { "k", "j" }, { leaf( "k", kUnsigned8 ), leaf( "j", kText ) } ) };
   EXPECT_EQ( findings( nodes, R"("l":[{"k":1}])" ),
              "f:1: /m:o/l[k='1']/j: is missing; allowed: a JSON string\n" );
   EXPECT_EQ( findings( nodes, "\"l\":[{\"k\":1,\"j\":\"a\"},\n{\"k\":1,\"j\":\"b\"},\n"
                               "{\"k\":1,\"j\":\"a\"}]" ),
              "f:3: /m:o/l[k='1']/k: value 1 is already used on line 1; allowed: each key once\n" );
}

TEST_F( SchemaTest, TwoKeysAreNotOneThatReadsTheSame ) {
   const std::vector< SchemaNode > nodes = {
      list( "l", { "k", "j" }, { leaf( "k", kText ), leaf( "j", kText ) } ) };
   EXPECT_EQ( findings( nodes, R"("l":[{"k":"ab","j":"c"},{"k":"a","j":"bc"}])" ), "" );
}

TEST_F( SchemaTest, LongKeysAreToldApartByTheirMiddle ) {
   const std::vector< SchemaNode > nodes = { list( "l", { "k" }, { leaf( "k", kText ) } ) };
   const std::string end( 100, 'x' );
   EXPECT_EQ( findings( nodes, R"("l":[{"k":")" + end + 'a' + end + R"("},{"k":")" + end + 'b' +
                                  end + "\"}]" ),
              "" );
}

TEST_F( SchemaTest, AUniqueLeafHasEachValueOnce ) {
   SchemaNode node = list( "l", { "k" }, { leaf( "k", kUnsigned8 ), leaf( "u", kText ) } );
   node.unique = "u";
   EXPECT_EQ( findings( { node }, R"("l":[{"k":1,"u":"a"},{"k":2,"u":"b"},{"k":3,"u":"a"}])" ),
              "f:1: /m:o/l[k='3']/u: value \"a\" is already used on line 1; allowed: each value "
              "once\n" );
}

TEST_F( SchemaTest, AKeyThatStandsInConfigTwiceIsTheSame ) {
   SchemaNode node = list( "l", { "k" },
                           { leaf( "k", kUnsigned8 ),
                             container( "config", { mandatory( leaf( "k", kUnsigned8 ) ) } ) } );
   node.keyInConfig = true;
   EXPECT_EQ( findings( { node }, R"("l":[{"k":1,"config":{"k":1}}])" ), "" );
   EXPECT_EQ( findings( { node }, R"("l":[{"k":1,"config":{"k":2}}])" ),
              "f:1: /m:o/l[k='1']/config/k: value 2 differs from the key of its list entry; "
              "allowed: 1\n" );
   EXPECT_EQ( findings( { node }, R"("l":[{"k":1}])" ),
              "f:1: /m:o/l[k='1']/config/k: is missing; allowed: 0..255\n" );
}

TEST_F( SchemaTest, TheItemsOfALeafListDiffer ) {
   const std::vector< SchemaNode > nodes = { leafList( "l", kVlanId ) };
   EXPECT_EQ( findings( nodes, R"("l":[1,2,0,2])" ),
              "f:1: /m:o/l[3]: value 0 is not allowed; allowed: 1..4094\n"
              "f:1: /m:o/l[4]: value 2 is already used on line 1; allowed: each value once\n" );
   EXPECT_EQ( findings( nodes, R"("l":5)" ),
              "f:1: /m:o/l: value 5 has the wrong type, an integer number; allowed: an array, "
              "each item 1..4094\n" );
}

// --- conditions

TEST_F( SchemaTest, AConditionTellsWhereANodeMayStand ) {
   const std::vector< SchemaNode > nodes = {
      container( "config", { leaf( "type", kPaint ) } ),
      when( leafList( "l", kUnsigned8 ), "config/type", { "red" } ) };
   EXPECT_EQ( findings( nodes, R"("config":{"type":"paint:red"},"l":[1])" ), "" );
   EXPECT_EQ( findings( nodes, R"("config":{"type":"paint:green"},"l":[1])" ),
              "f:1: /m:o/l: does not go with config/type green; allowed: config/type red\n" );
   EXPECT_EQ( findings( nodes, R"("l":[1])" ),
              "f:1: /m:o/l: needs config/type; allowed: config/type red\n" );
   EXPECT_EQ( findings( nodes, R"("l":[])" ), "" );
}

TEST_F( SchemaTest, OneCaseOfAChoiceStands ) {
   const std::vector< SchemaNode > nodes = { choice( leaf( "a", kBoolean ) ),
                                             choice( leaf( "b", kBoolean ) ) };
   EXPECT_EQ( findings( nodes, R"("a":true)" ), "" );
   EXPECT_EQ( findings( nodes, R"("a":true,"b":true)" ),
              "f:1: /m:o/b: stands beside a; allowed: one of the two\n" );
}

TEST_F( SchemaTest, ARuleSeesContainersAndEntries ) {
   const auto rule = []( Document& document, const Place& place ) {
      document.finding( place, "seen", "" );
   };
   EXPECT_EQ( findings( { withRule( container( "c", {} ), rule ),
                          withRule( list( "l", { "k" }, { leaf( "k", kUnsigned8 ) } ), rule ) },
                        R"("c":{},"l":[{"k":1}])" ),
              "f:1: /m:o/c: value {} seen\nf:1: /m:o/l[k='1']: value {...} seen\n" );
}

// --- leaves

struct Leaf {
   const char* name;
   const LeafType& type;
   const char* json;
   // The finding without its "f:1: /m:o/a: value ", empty where there is none.
   const char* finding;
};

std::ostream&
operator<<( std::ostream& out, const Leaf& leaf ) {
   return out << leaf.name;
}

class LeafTest : public SchemaTest, public testing::WithParamInterface< Leaf > {};

TEST_P( LeafTest, IsAllowedOrAFinding ) {
   const std::string wanted =
      *GetParam().finding ? std::string( "f:1: /m:o/a: value " ) + GetParam().finding + '\n' : "";
   EXPECT_EQ(
      findings( { leaf( "a", GetParam().type ) }, std::string( "\"a\":" ) + GetParam().json ),
      wanted );
}

INSTANTIATE_TEST_SUITE_P(
   Schema, LeafTest,
   testing::Values(
      Leaf{ "VlanLowest", kVlanId, "1", "" }, Leaf{ "VlanHighest", kVlanId, "4094", "" },
      Leaf{ "VlanZero", kVlanId, "0", "0 is not allowed; allowed: 1..4094" },
      Leaf{ "VlanAboveHighest", kVlanId, "4095", "4095 is not allowed; allowed: 1..4094" },
      Leaf{ "VlanAbove16Bits", kVlanId, "65537", "65537 is not allowed; allowed: 1..4094" },
      Leaf{ "VlanAbove64Bits", kVlanId, "18446744073709551617",
            "18446744073709551617 is not allowed; allowed: 1..4094" },
      Leaf{ "VlanNegative", kVlanId, "-1", "-1 is not allowed; allowed: 1..4094" },
      Leaf{ "VlanFraction", kVlanId, "1.5",
            "1.5 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "VlanFractionOfZero", kVlanId, "100.0",
            "100.0 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "VlanExponent", kVlanId, "1e3",
            "1e3 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "VlanString", kVlanId, "\"100\"",
            "\"100\" has the wrong type, a string; allowed: 1..4094, a JSON number without "
            "fraction and exponent" },
      Leaf{ "VlanNull", kVlanId, "null",
            "null has the wrong type, null; allowed: 1..4094, a JSON number without fraction "
            "and exponent" },
      Leaf{ "VlanObject", kVlanId, "{\"x\":1}",
            "{...} has the wrong type, an object; allowed: 1..4094, a JSON number without "
            "fraction and exponent" },
      Leaf{ "VlanArray", kVlanId, "[100]",
            "[...] has the wrong type, an array; allowed: 1..4094, a JSON number without "
            "fraction and exponent" },
      Leaf{ "Unsigned8Highest", kUnsigned8, "255", "" },
      Leaf{ "Unsigned8AboveHighest", kUnsigned8, "256", "256 is not allowed; allowed: 0..255" },
      Leaf{ "Unsigned16Highest", kUnsigned16, "65535", "" },
      Leaf{ "Unsigned16AboveHighest", kUnsigned16, "65536",
            "65536 is not allowed; allowed: 0..65535" },
      Leaf{ "Unsigned32Zero", kUnsigned32, "0", "" },
      Leaf{ "Unsigned32Highest", kUnsigned32, "4294967295", "" },
      Leaf{ "Unsigned32AboveHighest", kUnsigned32, "4294967296",
            "4294967296 is not allowed; allowed: 0..4294967295" },
      Leaf{ "Unsigned32Negative", kUnsigned32, "-1", "-1 is not allowed; allowed: 0..4294967295" },
      Leaf{ "True", kBoolean, "true", "" }, Leaf{ "False", kBoolean, "false", "" },
      Leaf{ "BooleanString", kBoolean, "\"true\"",
            "\"true\" has the wrong type, a string; allowed: true or false" },
      Leaf{ "BooleanNumber", kBoolean, "1",
            "1 has the wrong type, an integer number; allowed: true or false" },
      Leaf{ "EmptyText", kText, "\"\"", "" },
      Leaf{ "TextNumber", kText, "1",
            "1 has the wrong type, an integer number; allowed: a JSON string" },
      Leaf{ "NamePlain", kName, "\"eth1\"", "" }, Leaf{ "NameBlank", kName, "\" \"", "" },
      Leaf{ "NameBeyondAscii", kName, "\"caf\xc3\xa9\"", "" },
      Leaf{ "NameEmpty", kName, "\"\"",
            "\"\" is not allowed; allowed: a name of one or more characters without control "
            "characters" },
      Leaf{ "NameNewline", kName, R"("a\nb")",
            R"("a\u000ab" is not allowed; allowed: a name of one or more characters without )"
            "control characters" },
      Leaf{ "EnumerationKnown", kColour, "\"green\"", "" },
      Leaf{ "EnumerationUnknown", kColour, "\"blue\"", "\"blue\" is unknown; allowed: red, green" },
      Leaf{ "EnumerationOtherCase", kColour, "\"Red\"", "\"Red\" is unknown; allowed: red, green" },
      Leaf{ "EnumerationEmpty", kColour, "\"\"", "\"\" is unknown; allowed: red, green" },
      Leaf{ "EnumerationNumber", kColour, "1",
            "1 has the wrong type, an integer number; allowed: red, green" },
      Leaf{ "IdentityKnown", kPaint, "\"paint:red\"", "" },
      Leaf{ "IdentityUnknown", kPaint, "\"paint:blue\"",
            "\"paint:blue\" is unknown; allowed: red, green" },
      Leaf{ "IdentityOtherModule", kPaint, "\"m:red\"",
            "\"m:red\" is unknown; allowed: red, green" },
      Leaf{ "IdentityPrefixAlone", kPaint, "\"paint:\"",
            "\"paint:\" is unknown; allowed: red, green" },
      Leaf{ "IdentityNoPrefix", kPaint, "\"red\"",
            "\"red\" lacks its module name; allowed: \"paint:red\"" },
      Leaf{ "IdentityBoolean", kPaint, "true",
            "true has the wrong type, a boolean; allowed: red, green" },
      Leaf{ "IdentityOfItsOwnModule", kOwnPaint, "\"red\"", "" },
      Leaf{ "IdentityOfItsOwnModuleWithPrefix", kOwnPaint, "\"m:red\"", "" },
      Leaf{ "UnionNumber", kNumberOrName, "5", "" },
      Leaf{ "UnionText", kNumberOrName, "\"x\"", "" },
      Leaf{ "UnionBetweenRanges", kNumberOrName, "3",
            "3 is not allowed; allowed: 1..2, 5, or a JSON string" },
      Leaf{ "UnionBoolean", kNumberOrName, "true",
            "true has the wrong type, a boolean; allowed: 1..2, 5, or a JSON string" } ),
   []( const auto& leaf ) { return std::string( leaf.param.name ); } );

TEST( HasForm, TakesHexadecimalDigitsWhereTheMaskSaysSo ) {
   EXPECT_TRUE( hasForm( "0a-F9", "hh-hh" ) );
   EXPECT_FALSE( hasForm( "0a:F9", "hh-hh" ) );
   EXPECT_FALSE( hasForm( "0a-G9", "hh-hh" ) );
   EXPECT_FALSE( hasForm( "0a-F", "hh-hh" ) );
   EXPECT_FALSE( hasForm( "0a-F99", "hh-hh" ) );
}

TEST( Document, UnusedMembersOfOnePathButDifferentReasonsAreKeptApart ) {
   const ParsedJson json = parseJson( R"({"m:a":1})" );
   const Place root( *json.value );
   const Place leaf = *root.member( "m:a" );
   Document document( "f" );
   document.unused( leaf, kNotUsed, 2 );
   document.unused( leaf, kOtherModule );
   document.unused( leaf, kNotUsed, 0 );
   document.unused( leaf, kNotUsed );
   const std::vector< UnusedMember > unused = document.takeUnused();
   ASSERT_EQ( unused.size(), 2u );
   EXPECT_EQ( unused[ 0 ].path, "/m:a" );
   EXPECT_EQ( unused[ 0 ].count, 3u );
   EXPECT_EQ( unused[ 0 ].kind, UnusedKind::known );
   EXPECT_EQ( unused[ 1 ].count, 1u );
   EXPECT_EQ( unused[ 1 ].kind, UnusedKind::otherModule );
}

}   // namespace
}   // namespace Agent
