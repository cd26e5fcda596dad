// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Finding.h"

#include <gtest/gtest.h>

namespace Agent {
namespace {

TEST( Finding, ReadsAsFileLinePathValueAndAllowedRange ) {
   const Finding finding{ "a.json", 12, 0, "/m:x/y", "4095", "is not allowed", "1..4094" };
   EXPECT_EQ( finding.text(), "a.json:12: /m:x/y: value 4095 is not allowed; allowed: 1..4094" );
}

TEST( Finding, HasAColumnWhereTheLineSaysTooLittle ) {
   EXPECT_EQ( ( Finding{ "a.json", 1, 345678, "", "", "is no JSON", "" } ).text(),
              "a.json:1:345678: is no JSON" );
}

TEST( Finding, LeavesOutWhatItDoesNotHave ) {
   EXPECT_EQ( ( Finding{ "a.json", 3, 0, "/m:x/y", "", "is missing", "1..4094" } ).text(),
              "a.json:3: /m:x/y: is missing; allowed: 1..4094" );
   EXPECT_EQ( ( Finding{ "a.json", 0, 0, "", "", "cannot be opened", "" } ).text(),
              "a.json: cannot be opened" );
}

TEST( Finding, StaysOnOneLineWhateverTheFileIsCalled ) {
   EXPECT_EQ( ( Finding{ "a\nb.json", 1, 0, "", "", "is bad", "" } ).text(),
              "a\\u000ab.json:1: is bad" );
}

}   // namespace
}   // namespace Agent
