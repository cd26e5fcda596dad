// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Escaped.h"

#include <gtest/gtest.h>

#include "agent/config/LocatedJson.h"

namespace Agent {
namespace {

TEST( Escaped, WhatTerminalsObey ) {
   EXPECT_EQ( escaped( "a\n\x1b[2J\x7f" ), "a\\u000a\\u001b[2J\\u007f" );
   EXPECT_EQ( escaped( "\xc2\x80|\xc2\x9f|\xc2\xa0" ), "\\u0080|\\u009f|\xc2\xa0" );
   EXPECT_EQ( escaped( std::string_view( "\0", 1 ) ), "\\u0000" );
}

TEST( Escaped, WhatTurnsTheDirectionOfText ) {
   EXPECT_EQ( escaped( "eth\u202e1" ), "eth\\u202e1" );
   EXPECT_EQ( escaped( "\u061c\u200e\u200f\u202a\u202b\u202c\u202d" ),
              "\\u061c\\u200e\\u200f\\u202a\\u202b\\u202c\\u202d" );
   EXPECT_EQ( escaped( "\u2066\u2067\u2068\u2069" ), "\\u2066\\u2067\\u2068\\u2069" );
}

TEST( Escaped, WhatIsNotSeen ) {
   EXPECT_EQ( escaped( "e\u200bt\u200ch\u200d1" ), "e\\u200bt\\u200ch\\u200d1" );
   EXPECT_EQ( escaped( "\u00ad\u034f\u180e\u2028\u2060\u2064\u3164\ufe0f\ufeff\uffa0" ),
              "\\u00ad\\u034f\\u180e\\u2028\\u2060\\u2064\\u3164\\ufe0f\\ufeff\\uffa0" );
   EXPECT_EQ( escaped( "\U000e0041|\U000e01ef" ), "\\udb40\\udc41|\\udb40\\uddef" );
}

TEST( Escaped, OrdinaryTextStays ) {
   for ( const std::string_view text :
         { "", "eth1/2.100", "Z\u00fcrich", "e\u0301", "\u05d0\u05d1", "\u540d\u524d",
           "\u200a|\u2010", "\u2027|\u202f", "\ufdff|\ufe10", "\U0001f600",
           "\U000dffff|\U000e1000" } ) {
      EXPECT_EQ( escaped( text ), text );
   }
}

TEST( Escaped, BytesThatAreNoCharactersStay ) {
   for ( const std::string_view text : { "\xff", "\x80", "\xc2", "\xe2\x80", "\xe2\x80|",
                                         "\xf0\x9f\x98", "\xfe\x80\x80\x80\x80" } ) {
      EXPECT_EQ( escaped( text ), text );
   }
}

TEST( Escaped, IsTheSameTextToAReaderOfJson ) {
   const std::string text = "a\u202eb\U000e0041c\x7f";
   const ParsedJson json = parseJson( '"' + escaped( text ) + '"' );
   ASSERT_TRUE( json.value ) << json.error;
   EXPECT_EQ( *json.value->string(), text );
}

TEST( HasControls, OnlyWhereTerminalsObey ) {
   for ( const std::string_view text : { "\x1f", "a\x7f", "\xc2\x80", "\xc2\x9f" } ) {
      EXPECT_TRUE( hasControls( text ) ) << escaped( text );
   }
   for ( const std::string_view text : { "", "eth1", " ", "\u00a0", "\u202e", "\u200b" } ) {
      EXPECT_FALSE( hasControls( text ) ) << escaped( text );
   }
}

}   // namespace
}   // namespace Agent
