// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Place.h"

#include <string>

#include <gtest/gtest.h>

namespace Agent {
namespace {

class PlaceTest : public testing::Test {
 protected:
   const ParsedJson json_ =
      parseJson( R"({"m:list": [{"key": "it's", "other:leaf": 1, "m:plain": 2}, {"key": 7}]})" );
   const Place root_{ *json_.value };
   const Place list_{ root_, ( *json_.value->object() )[ 0 ] };
   const JsonValue& entry_ = ( *list_.value().array() )[ 0 ];
   const JsonValue& second_ = ( *list_.value().array() )[ 1 ];
};

TEST_F( PlaceTest, TheDocumentIsASlash ) {
   EXPECT_EQ( root_.path(), "/" );
   EXPECT_EQ( root_.pattern(), "/" );
   EXPECT_EQ( root_.module(), "" );
}

TEST_F( PlaceTest, AMemberNamesItsModuleWhereThatChanges ) {
   const Place entry( list_, 0, entry_ );
   const Place other( entry, ( *entry_.object() )[ 1 ] );
   const Place plain( entry, ( *entry_.object() )[ 2 ] );
   EXPECT_EQ( other.pattern(), "/m:list/other:leaf" );
   EXPECT_EQ( other.module(), "other" );
   EXPECT_EQ( plain.pattern(), "/m:list/plain" );
   EXPECT_EQ( plain.module(), "m" );
}

TEST_F( PlaceTest, AnEntryIsNamedByItsKey ) {
   const Place second( list_, 1, second_, "key" );
   EXPECT_EQ( second.path(), "/m:list[key='7']" );
   EXPECT_EQ( second.pattern(), "/m:list" );
}

TEST_F( PlaceTest, AKeyWithAQuoteStandsInTheOtherQuotes ) {
   const Place first( list_, 0, entry_, "key" );
   EXPECT_EQ( first.path(), "/m:list[key=\"it's\"]" );
}

TEST_F( PlaceTest, AnEntryWithoutKeyIsNamedByItsPositionFromOne ) {
   EXPECT_EQ( Place( list_, 1, second_ ).path(), "/m:list[2]" );
}

TEST_F( PlaceTest, AnEntryWhoseKeyIsNoScalarIsNamedByItsPosition ) {
   const ParsedJson entry = parseJson( R"({"key":{}})" );
   EXPECT_EQ( Place( list_, 1, *entry.value, "key" ).path(), "/m:list[2]" );
}

TEST_F( PlaceTest, MembersAreFoundWithAndWithoutThePrefixOfTheirModule ) {
   const Place entry( list_, 0, entry_ );
   EXPECT_EQ( entry.member( "plain" )->value().shown(), "2" );
   EXPECT_EQ( entry.member( "other:leaf" )->value().shown(), "1" );
   EXPECT_FALSE( entry.member( "leaf" ) );
   EXPECT_FALSE( list_.member( "key" ) );
   EXPECT_EQ( root_.parent(), nullptr );
   EXPECT_EQ( entry.parent(), &list_ );
}

TEST_F( PlaceTest, AValueIsFoundByItsPath ) {
   const ParsedJson json = parseJson( R"({"m:a":{"b":{"m:c":7}}})" );
   const Place root( *json.value );
   EXPECT_EQ( root.valueBelow( "m:a/b/c" )->shown(), "7" );
   EXPECT_EQ( root.valueBelow( "m:a/b/c/d" ), nullptr );
   EXPECT_EQ( root.valueBelow( "m:a/x/c" ), nullptr );
}

TEST_F( PlaceTest, AMemberWithoutNameStillShowsInThePath ) {
   const ParsedJson odd = parseJson( R"({"": 1})" );
   const Place root( *odd.value );
   EXPECT_EQ( Place( root, ( *odd.value->object() )[ 0 ] ).path(), "/" );
   const Place entry( list_, 0, entry_ );
   const JsonMember nameless{ "", JsonValue(), 1 };
   EXPECT_EQ( Place( entry, nameless ).path(), "/m:list[1]/" );
}

TEST_F( PlaceTest, ControlCharactersOfNamesAndKeysAreEscaped ) {
   const JsonMember odd{ "a\nb", JsonValue(), 1 };
   const ParsedJson entry = parseJson( R"({"key":"k\u001b"})" );
   EXPECT_EQ( Place( Place( list_, 0, *entry.value, "key" ), odd ).path(),
              "/m:list[key='k\\u001b']/a\\u000ab" );
}

}   // namespace
}   // namespace Agent
