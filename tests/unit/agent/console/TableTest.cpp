// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/console/Table.h"

#include <gtest/gtest.h>

namespace Agent::Console {
namespace {

TEST( ConsoleTable, columnsAreAlignedAndLinesHaveNoBlanksAtTheirEnds ) {
   EXPECT_EQ( table( { { "a", "bb", "c" }, { "aaa", "", "" }, { "", "b", "cc" } } ),
              "a    bb  c\n"
              "aaa\n"
              "     b   cc\n" );
}

TEST( ConsoleTable, rowsMayDifferInLength ) {
   EXPECT_EQ( table( { { "a" }, { "bb", "c" } } ), "a\nbb  c\n" );
   EXPECT_EQ( table( {} ), "" );
}

}   // namespace
}   // namespace Agent::Console
