// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// NoneLeftTest: fixture base that fails a test which leaves counted objects behind.
//
// Declare pointers that live through the test as members of the derived fixture, or as locals of
// the test: both are gone when the check runs.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <string>

#include "tests/support/LiveObjects.h"

namespace TestSupport {

// Derived members are destroyed before this base, so its destructor sees what they left.
class NoneLeftTest : public testing::Test {
 protected:
   ~NoneLeftTest() override { EXPECT_EQ( liveObjects(), before_ ) << "objects are left"; }

 private:
   const std::map< std::string, std::int64_t > before_ = liveObjects();
};

}   // namespace TestSupport
