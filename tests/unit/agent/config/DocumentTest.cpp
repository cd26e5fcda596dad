// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Document.h"

#include <string>

#include <gtest/gtest.h>

namespace Agent {
namespace {

constexpr std::string_view kColours[] = { "red", "green" };
constexpr IdentitySet kColourIdentities = { "paint", kColours, "red, green" };

// Reads the members of one object, line 1, in module m.
class DocumentTest : public testing::Test {
 protected:
   void given( const std::string& members ) {
      json_ = parseJson( "{\"m:o\":{" + members + "}}" );
      ASSERT_TRUE( json_.value ) << json_.error;
      root_.emplace( *json_.value );
      object_.emplace( *root_, ( *json_.value->object() )[ 0 ] );
      members_.emplace( document_, *object_ );
   }

   std::string findings() {
      std::string out;
      for ( const Finding& finding : document_.takeFindings() ) {
         out += finding.text() + '\n';
      }
      return out;
   }

   std::string unused() {
      std::string out;
      for ( const UnusedMember& member : document_.takeUnused() ) {
         out += member.path + ' ' + std::to_string( member.count ) + ", ";
      }
      return out;
   }

   Document document_{ "f" };
   ParsedJson json_;
   std::optional< Place > root_;
   std::optional< Place > object_;
   std::optional< Members > members_;
};

TEST_F( DocumentTest, AMemberIsTakenWithAndWithoutThePrefixOfItsModule ) {
   given( R"("a": 1, "m:b": 2, "n:c": 3)" );
   EXPECT_EQ( members_->take( "a" )->path(), "/m:o/a" );
   EXPECT_EQ( members_->take( "b" )->path(), "/m:o/b" );
   EXPECT_EQ( members_->take( "n:c" )->path(), "/m:o/n:c" );
   EXPECT_FALSE( members_->take( "c" ) );
   EXPECT_FALSE( members_->take( "d" ) );
   EXPECT_EQ( findings(), "" );
}

TEST_F( DocumentTest, AMemberOfAnotherModuleMustNameIt ) {
   given( R"("c": 3)" );
   EXPECT_FALSE( members_->take( "n:c" ) );
   EXPECT_EQ( findings(), "f:1: /m:o/c: value 3 lacks its module name; allowed: \"n:c\"\n" );
}

TEST_F( DocumentTest, ARequiredMemberThatIsAbsentIsAFinding ) {
   given( R"("a": 1)" );
   EXPECT_TRUE( members_->require( "a", "1..2" ) );
   EXPECT_FALSE( members_->require( "b", "1..2" ) );
   EXPECT_EQ( findings(), "f:1: /m:o/b: is missing; allowed: 1..2\n" );
}

TEST_F( DocumentTest, AMemberGivenTwiceIsAFindingAndTheFirstCounts ) {
   given( "\"a\": 1,\n\"a\": 2,\n\"m:a\": 3" );
   EXPECT_EQ( members_->take( "a" )->value().shown(), "1" );
   members_->finish();
   EXPECT_EQ( findings(),
              "f:2: /m:o/a: value 2 is given twice, on lines 1 and 2; allowed: each member once\n"
              "f:3: /m:o/a: value 3 is given twice, on lines 1 and 3; allowed: each member "
              "once\n" );
   EXPECT_EQ( unused(), "" );
}

TEST_F( DocumentTest, WhatNobodyTakesIsUnused ) {
   given( R"("a": 1, "b": 2)" );
   members_->take( "a" );
   members_->finish();
   EXPECT_EQ( unused(), "/m:o/b 1, " );
}

TEST_F( DocumentTest, UnusedSubtreesAreNamedLeafByLeaf ) {
   given( R"("list": [{"k": 1, "n:x": {"y": 1}}, {"k": 2}], "leaves": [1, 2], "none": {},)"
          R"("empty": [], "matrix": [[1], [2]])" );
   members_->finish();
   EXPECT_EQ( unused(), "/m:o/list/k 2, /m:o/list/n:x/y 1, /m:o/leaves 1, /m:o/none 1, "
                        "/m:o/empty 1, /m:o/matrix 2, " );
}

TEST_F( DocumentTest, DuplicatesInUnusedSubtreesAreFindingsToo ) {
   given( "\"u\": [{\"v\": {\n\"w\": 1,\n\"w\": 2}}]" );
   members_->finish();
   EXPECT_EQ( findings(), "f:3: /m:o/u[1]/v/w: value 2 is given twice, on lines 2 and 3; "
                          "allowed: each member once\n" );
}

TEST_F( DocumentTest, UnusedMembersOfOnePathButDifferentReasonsAreKeptApart ) {
   given( R"("a": 1)" );
   const auto leaf = members_->take( "a" );
   document_.unused( *leaf, kNotUsed, 2 );
   document_.unused( *leaf, kCheckedOnly );
   document_.unused( *leaf, kNotUsed, 0 );
   document_.unused( *leaf, kNotUsed );
   EXPECT_EQ( unused(), "/m:o/a 3, /m:o/a 1, " );
}

TEST_F( DocumentTest, FindingsComeByLine ) {
   given( "\"a\": 0,\n\"b\": 0,\n\"c\": 0" );
   document_.vlanId( members_->take( "c" ) );
   document_.vlanId( members_->take( "a" ) );
   document_.vlanId( members_->take( "b" ) );
   EXPECT_EQ( findings(), "f:1: /m:o/a: value 0 is not allowed; allowed: 1..4094\n"
                          "f:2: /m:o/b: value 0 is not allowed; allowed: 1..4094\n"
                          "f:3: /m:o/c: value 0 is not allowed; allowed: 1..4094\n" );
}

struct Leaf {
   const char* name;
   const char* json;
   // What is read, or the finding without its "f:1: /m:o/a: value ".
   const char* result;
};

std::ostream&
operator<<( std::ostream& out, const Leaf& leaf ) {
   return out << leaf.name;
}

std::string
nameOf( const testing::TestParamInfo< Leaf >& leaf ) {
   return leaf.param.name;
}

class LeafTest : public DocumentTest, public testing::WithParamInterface< Leaf > {
 protected:
   // `read( leaf )` gives the value as text.
   template < typename Read >
   std::string result( const Read& read ) {
      given( std::string( "\"a\":" ) + GetParam().json );
      const std::string value = read( *members_->take( "a" ) );
      const std::string finding = findings();
      constexpr std::string_view kStart = "f:1: /m:o/a: value ";
      EXPECT_TRUE( finding.empty() || finding.starts_with( kStart ) ) << finding;
      return finding.empty() ? value
                             : finding.substr( kStart.size(), finding.size() - kStart.size() - 1 );
   }
};

class VlanIdLeaf : public LeafTest {};

TEST_P( VlanIdLeaf, IsANumberFrom1To4094 ) {
   EXPECT_EQ(
      result( [ & ]( const Place& leaf ) { return std::to_string( document_.vlanId( leaf ) ); } ),
      GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, VlanIdLeaf,
   testing::Values(
      Leaf{ "Lowest", "1", "1" }, Leaf{ "Highest", "4094", "4094" },
      Leaf{ "Zero", "0", "0 is not allowed; allowed: 1..4094" },
      Leaf{ "AboveHighest", "4095", "4095 is not allowed; allowed: 1..4094" },
      Leaf{ "Above16Bits", "65537", "65537 is not allowed; allowed: 1..4094" },
      Leaf{ "Above64Bits", "18446744073709551617",
            "18446744073709551617 is not allowed; allowed: 1..4094" },
      Leaf{ "Negative", "-1", "-1 is not allowed; allowed: 1..4094" },
      Leaf{ "Fraction", "1.5",
            "1.5 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "FractionOfZero", "100.0",
            "100.0 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "Exponent", "1e3",
            "1e3 has the wrong type, a number with fraction or exponent; allowed: 1..4094, a "
            "JSON number without fraction and exponent" },
      Leaf{ "String", "\"100\"",
            "\"100\" has the wrong type, a string; allowed: 1..4094, a JSON number without "
            "fraction and exponent" },
      Leaf{ "Null", "null",
            "null has the wrong type, null; allowed: 1..4094, a JSON number without fraction "
            "and exponent" },
      Leaf{ "Object", "{\"x\":1}",
            "{...} has the wrong type, an object; allowed: 1..4094, a JSON number without "
            "fraction and exponent" },
      Leaf{ "Array", "[100]",
            "[...] has the wrong type, an array; allowed: 1..4094, a JSON number without "
            "fraction and exponent" } ),
   nameOf );

class Unsigned32Leaf : public LeafTest {};

TEST_P( Unsigned32Leaf, IsANumberOf32Bits ) {
   EXPECT_EQ( result( [ & ]( const Place& leaf ) {
                 return std::to_string( document_.unsigned32( leaf ).value_or( 99 ) );
              } ),
              GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, Unsigned32Leaf,
   testing::Values(
      Leaf{ "Zero", "0", "0" }, Leaf{ "Highest", "4294967295", "4294967295" },
      Leaf{ "AboveHighest", "4294967296", "4294967296 is not allowed; allowed: 0..4294967295" },
      Leaf{ "Negative", "-1", "-1 is not allowed; allowed: 0..4294967295" },
      Leaf{ "String", "\"1\"",
            "\"1\" has the wrong type, a string; allowed: 0..4294967295, a JSON number without "
            "fraction and exponent" } ),
   nameOf );

class BooleanLeaf : public LeafTest {};

TEST_P( BooleanLeaf, IsTrueOrFalse ) {
   EXPECT_EQ( result( [ & ]( const Place& leaf ) {
                 return std::string( document_.boolean( leaf ).value_or( false ) ? "on" : "off" );
              } ),
              GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, BooleanLeaf,
   testing::Values(
      Leaf{ "True", "true", "on" }, Leaf{ "False", "false", "off" },
      Leaf{ "String", "\"true\"", "\"true\" has the wrong type, a string; allowed: true or false" },
      Leaf{ "Number", "1", "1 has the wrong type, an integer number; allowed: true or false" } ),
   nameOf );

class NameLeaf : public LeafTest {};

TEST_P( NameLeaf, IsAVisibleString ) {
   EXPECT_EQ(
      result( [ & ]( const Place& leaf ) { return document_.name( leaf ).value_or( "nothing" ); } ),
      GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, NameLeaf,
   testing::Values(
      Leaf{ "Plain", "\"eth1\"", "eth1" }, Leaf{ "Blank", "\" \"", " " },
      Leaf{ "BeyondAscii", "\"caf\xc3\xa9\"", "caf\xc3\xa9" },
      Leaf{ "Empty", "\"\"",
            "\"\" is not allowed; allowed: a name of one or more characters without control "
            "characters" },
      Leaf{ "Newline", R"("a\nb")",
            R"("a\u000ab" is not allowed; allowed: a name of one or more characters without )"
            "control characters" },
      Leaf{ "Number", "1", "1 has the wrong type, an integer number; allowed: a JSON string" } ),
   nameOf );

class EnumerationLeaf : public LeafTest {};

TEST_P( EnumerationLeaf, IsOneOfItsNames ) {
   EXPECT_EQ( result( [ & ]( const Place& leaf ) {
                 return std::string( document_.enumeration( leaf, kColours ).value_or( "" ) );
              } ),
              GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, EnumerationLeaf,
   testing::Values( Leaf{ "Known", "\"green\"", "green" },
                    Leaf{ "Unknown", "\"blue\"", "\"blue\" is unknown; allowed: red, green" },
                    Leaf{ "OtherCase", "\"Red\"", "\"Red\" is unknown; allowed: red, green" },
                    Leaf{ "Empty", "\"\"", "\"\" is unknown; allowed: red, green" },
                    Leaf{ "Number", "1",
                          "1 has the wrong type, an integer number; allowed: red, green" } ),
   nameOf );

class IdentityLeaf : public LeafTest {};

TEST_P( IdentityLeaf, NamesAnIdentityWithItsModule ) {
   EXPECT_EQ( result( [ & ]( const Place& leaf ) {
                 return std::string( document_.identity( leaf, kColourIdentities ).value_or( "" ) );
              } ),
              GetParam().result );
}

INSTANTIATE_TEST_SUITE_P(
   Document, IdentityLeaf,
   testing::Values(
      Leaf{ "Known", "\"paint:red\"", "red" },
      Leaf{ "Unknown", "\"paint:blue\"", "\"paint:blue\" is unknown; allowed: red, green" },
      Leaf{ "OtherModule", "\"m:red\"", "\"m:red\" is unknown; allowed: red, green" },
      Leaf{ "PrefixAlone", "\"paint:\"", "\"paint:\" is unknown; allowed: red, green" },
      Leaf{ "NoPrefix", "\"red\"", "\"red\" lacks its module name; allowed: \"paint:red\"" },
      Leaf{ "Boolean", "true", "true has the wrong type, a boolean; allowed: red, green" } ),
   nameOf );

TEST_F( DocumentTest, AnIdentityOfTheLeafsOwnModuleNeedsNoPrefix ) {
   given( R"("a": "red", "b": "m:green")" );
   const IdentitySet own = { "m", kColours, "red, green" };
   EXPECT_EQ( document_.identity( *members_->take( "a" ), own ), "red" );
   EXPECT_EQ( document_.identity( *members_->take( "b" ), own ), "green" );
   EXPECT_EQ( findings(), "" );
}

TEST_F( DocumentTest, AKeyUsedTwiceIsAFindingThatNamesTheFirstLine ) {
   given( "\"a\": \"k\",\n\"b\": \"k\",\n\"c\": \"l\"" );
   KeyRegister keys;
   EXPECT_TRUE( keys.add( document_, *members_->take( "a" ), "k" ) );
   EXPECT_FALSE( keys.add( document_, *members_->take( "b" ), "k" ) );
   EXPECT_TRUE( keys.add( document_, *members_->take( "c" ), "l" ) );
   EXPECT_EQ( findings(),
              "f:2: /m:o/b: value \"k\" is already used on line 1; allowed: each key once\n" );
}

TEST_F( DocumentTest, ListsAreArraysOfObjects ) {
   given( R"("a": {}, "b": [{"k": 1}, 7])" );
   std::string paths;
   const auto visit = [ & ]( const Place& entry ) {
      paths += entry.path() + ' ';
      Members( document_, entry ).finish();
   };
   forEachEntry( document_, *members_->take( "a" ), "k", visit );
   forEachEntry( document_, *members_->take( "b" ), "k", visit );
   EXPECT_EQ( paths, "/m:o/b[k='1'] /m:o/b[2] " );
   EXPECT_EQ( findings(), "f:1: /m:o/a: value {} has the wrong type, an object; allowed: an "
                          "array, one object for each entry\n"
                          "f:1: /m:o/b[2]: value 7 has the wrong type, an integer number; "
                          "allowed: an object\n" );
}

}   // namespace
}   // namespace Agent
