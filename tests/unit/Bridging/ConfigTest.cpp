// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Bridging/Config.h"

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"

namespace {

class BridgingConfigTest : public TestSupport::NoneLeftTest {};

TEST_F( BridgingConfigTest, HasNoNameUntilItIsGivenOne ) {
   const auto config = Bridging::configFactory();
   EXPECT_TRUE( config->bridgeName().empty() );
   config->bridgeNameIs( "br0" );
   EXPECT_EQ( config->bridgeName().str(), "br0" );
}

TEST_F( BridgingConfigTest, ItsCreatorMakesAnActiveEntity ) {
   EXPECT_TRUE( Bridging::Config::ConfigIs()->hasNotificationActive() );
}

}   // namespace
