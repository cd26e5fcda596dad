// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Assert.h"

#include <csignal>
#include <cstdio>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

constexpr char zelSourceTag[] = "Some/Source";

constexpr int kLine = __LINE__ + 3;   // of the assertion
void
mustBeSmall( int number ) {
   ZEL_ASSERT( number < 10 && true );
}

TEST( Assert, PassesWhenTrue ) {
   mustBeSmall( 9 );
}

TEST( Assert, EvaluatesItsExpressionOnce ) {
   int evaluations = 0;
   ZEL_ASSERT( ++evaluations );
   EXPECT_EQ( evaluations, 1 );
}

TEST( Assert, TakesCommasInItsExpression ) {
   ZEL_ASSERT( std::pair< int, int >( 1, 2 ).second == 2 );
}

TEST( Assert, IsAnExpression ) {
   const int seven = ( ZEL_ASSERT( true ), 7 );
   EXPECT_EQ( seven, 7 );
}

TEST( AssertDeathTest, NamesSourceLineFunctionAndExpression ) {
   // The compilers name an unnamed namespace differently.
   EXPECT_DEATH( mustBeSmall( 10 ), "^Some/Source:" + std::to_string( kLine ) +
                                       ": void .anonymous.*.::mustBeSmall\\(int\\): "
                                       "Assertion `number < 10 && true' failed\\.\n" );
}

TEST( AssertDeathTest, EndsTheProcessByAbort ) {
   EXPECT_EXIT( mustBeSmall( 10 ), testing::KilledBySignal( SIGABRT ), "" );
}

TEST( AssertDeathTest, EvaluatesAFalseExpressionOnce ) {
   static int evaluations = 0;
   const auto fail = [] {
      struct Report {
         bool operator()() const {
            ++evaluations;
            std::fprintf( stderr, "evaluation %d\n", evaluations );
            return false;
         }
      };
      ZEL_ASSERT( Report()() );
   };
   EXPECT_DEATH( fail(), "^evaluation 1\nSome/Source" );
}

}   // namespace
