// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/JsonWriter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <limits>
#include <sstream>

namespace Agent {
namespace {

std::string
written( JsonWriter::Layout layout, const std::function< void( JsonWriter& ) >& write ) {
   std::ostringstream out;
   JsonWriter json( out, layout );
   write( json );
   return out.str();
}

std::string
line( const std::function< void( JsonWriter& ) >& write ) {
   return written( JsonWriter::Layout::Line, write );
}

void
someOfAll( JsonWriter& json ) {
   json.object( [ & ] {
      json.member( "absent", std::optional< std::string >() );
      json.member( "flag", true );
      json.key( "list" );
      json.array( [ & ] {
         json.value( std::uint16_t( 1 ) );
         json.array( [] {} );
         json.object( [] {} );
         json.array( [ & ] { json.value( "x" ); } );
      } );
      json.member( "some", std::optional< std::size_t >( 7 ) );
   } );
}

TEST( JsonWriter, OnALineNothingStandsBetween ) {
   EXPECT_EQ( line( someOfAll ), R"({"absent":null,"flag":true,"list":[1,[],{},["x"]],"some":7})" );
}

TEST( JsonWriter, IndentedEachValueHasALine ) {
   EXPECT_EQ( written( JsonWriter::Layout::Indented, someOfAll ), R"({
  "absent": null,
  "flag": true,
  "list": [
    1,
    [],
    {},
    [
      "x"
    ]
  ],
  "some": 7
})" );
}

TEST( JsonWriter, NumbersAreExact ) {
   EXPECT_EQ(
      line( []( JsonWriter& json ) { json.value( std::numeric_limits< std::uint64_t >::max() ); } ),
      "18446744073709551615" );
}

TEST( JsonWriter, TextIsQuoted ) {
   const auto text = []( const std::string& plain ) {
      return line( [ & ]( JsonWriter& json ) { json.value( plain ); } );
   };
   EXPECT_EQ( text( "a\"b\\c\n\x01\x7f" ), R"("a\"b\\c\n\u0001\u007f")" );
   EXPECT_EQ( text( "\u00e4\u202e\u200b" ), "\"\u00e4\\u202e\\u200b\"" );
   EXPECT_EQ( text( "\xff!" ), "\"\ufffd!\"" );
   EXPECT_EQ(
      line( []( JsonWriter& json ) { json.object( [ & ] { json.member( "\"\u202e", "" ); } ); } ),
      R"({"\"\u202e":""})" );
}

}   // namespace
}   // namespace Agent
