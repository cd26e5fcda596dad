// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Bridging/VlanXlateStatusDir.h"

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"

namespace {

using Corvel::IntfId;

class VlanXlateStatusDirTest : public TestSupport::NoneLeftTest {
 protected:
   Zel::Ptr< Bridging::VlanXlateStatusDir > dir_ = Bridging::vlanXlateStatusDirFactory();
};

TEST_F( VlanXlateStatusDirTest, IsEmptyAtFirst ) {
   EXPECT_TRUE( dir_->vlanXlateStatus().empty() );
}

TEST_F( VlanXlateStatusDirTest, HoldsAnInterfaceOnceHoweverOftenItIsAdded ) {
   dir_->vlanXlateStatusIs( IntfId( 7 ) );
   dir_->vlanXlateStatusIs( IntfId( 7 ) );
   dir_->vlanXlateStatusIs( IntfId( 8 ) );
   EXPECT_EQ( dir_->vlanXlateStatus().size(), 2u );
   EXPECT_TRUE( dir_->vlanXlateStatus().contains( IntfId( 7 ) ) );
}

TEST_F( VlanXlateStatusDirTest, DeletionSaysWhetherTheInterfaceWasThere ) {
   dir_->vlanXlateStatusIs( IntfId( 7 ) );
   EXPECT_TRUE( dir_->vlanXlateStatusDel( IntfId( 7 ) ) );
   EXPECT_FALSE( dir_->vlanXlateStatusDel( IntfId( 7 ) ) );
   EXPECT_TRUE( dir_->vlanXlateStatus().empty() );
}

}   // namespace
