// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/NearMiss.h"

#include <gtest/gtest.h>

namespace Agent {
namespace {

const std::vector< std::string > kNames{ "run", "check", "show", "--range-entries" };

TEST( NearMiss, OneSlipOfAnyKind ) {
   EXPECT_EQ( nearMiss( "chck", kNames ), "check" );
   EXPECT_EQ( nearMiss( "chexck", kNames ), "check" );
   EXPECT_EQ( nearMiss( "chesk", kNames ), "check" );
   EXPECT_EQ( nearMiss( "cehck", kNames ), "check" );
   EXPECT_EQ( nearMiss( "hcekc", { "chekc" } ), "chekc" );
   EXPECT_EQ( nearMiss( "rnu", kNames ), "run" );
}

TEST( NearMiss, AThirdOfTheCharactersAtMost ) {
   EXPECT_EQ( nearMiss( "--rnge-entry", kNames ), "--range-entries" );
   EXPECT_EQ( nearMiss( "ab1234", { "abcdef" } ), "" );
   EXPECT_EQ( nearMiss( "abcd12", { "abcdef" } ), "abcdef" );
   EXPECT_EQ( nearMiss( "abc123", { "abcdef" } ), "" );
   EXPECT_EQ( nearMiss( "rx", kNames ), "" );
}

TEST( NearMiss, TheNearestWinsAndTheFirstOfEquals ) {
   EXPECT_EQ( nearMiss( "abcdef", { "abcdxy", "abcdez" } ), "abcdez" );
   EXPECT_EQ( nearMiss( "abcdef", { "abcdex", "abcdez" } ), "abcdex" );
}

TEST( NearMiss, NothingIsNearToNothing ) {
   EXPECT_EQ( nearMiss( "", kNames ), "" );
   EXPECT_EQ( nearMiss( "run", {} ), "" );
   EXPECT_EQ( nearMiss( std::string( 100000, 'x' ), { "x" } ), "" );
}

}   // namespace
}   // namespace Agent
