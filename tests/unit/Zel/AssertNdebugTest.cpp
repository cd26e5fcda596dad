// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#ifndef NDEBUG
#error "this source is to be compiled with NDEBUG"
#endif

#include <gtest/gtest.h>

#include "Zel/Assert.h"

namespace {

constexpr char zelSourceTag[] = "Some/Release";

TEST( AssertUnderNdebug, StillEvaluatesItsExpressionOnce ) {
   int evaluations = 0;
   ZEL_ASSERT( ++evaluations );
   EXPECT_EQ( evaluations, 1 );
}

TEST( AssertUnderNdebugDeathTest, StillAborts ) {
   EXPECT_DEATH( ZEL_ASSERT( 1 + 1 == 3 ), "Some/Release:[0-9]+: .*: Assertion "
                                           "`1 \\+ 1 == 3' failed\\." );
}

}   // namespace
