// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/console/Words.h"

#include <gtest/gtest.h>

#include <string>

#include "agent/console/Error.h"

namespace Agent::Console {
namespace {

// The words with their offsets, or why there are none.
std::string
words( std::string_view line ) {
   try {
      std::string text;
      for ( const Word& word : splitWords( line ) ) {
         text += std::to_string( word.at ) + "<" + word.text + ">";
      }
      return text;
   } catch ( const Error& error ) {
      return error.what();
   }
}

TEST( ConsoleWords, standBetweenBlanks ) {
   EXPECT_EQ( words( "get a.b" ), "0<get>4<a.b>" );
   EXPECT_EQ( words( "  get\t a  " ), "2<get>7<a>" );
   EXPECT_EQ( words( "" ), "" );
   EXPECT_EQ( words( " \t\r" ), "" );
}

TEST( ConsoleWords, holdBlanksBetweenBracketsOfAnyKind ) {
   EXPECT_EQ( words( "a[b c] (d e) {f g}h" ), "0<a[b c]>7<(d e)>13<{f g}h>" );
   EXPECT_EQ( words( "Value('T', ** {'a': [1, 2]}) x" ), "0<Value('T', ** {'a': [1, 2]})>29<x>" );
}

TEST( ConsoleWords, holdBlanksBetweenQuotesOfEitherKind ) {
   EXPECT_EQ( words( "'a b'c \"d e\"" ), "0<'a b'c>7<\"d e\">" );
   EXPECT_EQ( words( "\"a 'b\" '\"c d'" ), "0<\"a 'b\">7<'\"c d'>" );
}

TEST( ConsoleWords, quotedBracketsNeedNoPartner ) {
   EXPECT_EQ( words( "(')' ) x" ), "0<(')' )>7<x>" );
}

TEST( ConsoleWords, bracketsAndQuotesNeedTheirPartner ) {
   EXPECT_EQ( words( "a (b" ), "( is not closed: (b" );
   EXPECT_EQ( words( "a 'b" ), "' is not closed: 'b" );
   EXPECT_EQ( words( "a ('b)" ), "( is not closed: ('b)" );
   EXPECT_EQ( words( "a) b" ), ") without its partner: a) b" );
   EXPECT_EQ( words( "(a] b" ), "] without its partner: (a] b" );
}

TEST( ConsoleWords, quotesAroundTheWholeCanBeTaken ) {
   EXPECT_EQ( unquoted( "'a b'" ), "a b" );
   EXPECT_EQ( unquoted( "\"\"" ), "" );
   EXPECT_EQ( unquoted( "'a' 'b'" ), "'a' 'b'" );
   EXPECT_EQ( unquoted( "a'b'" ), "a'b'" );
   EXPECT_EQ( unquoted( "" ), "" );
}

}   // namespace
}   // namespace Agent::Console
