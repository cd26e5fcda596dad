// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Random configuration writes: index, status and sorted ranges follow from the configuration alone.
#include "tests/model/RoadModel.h"

#include <gtest/gtest.h>

namespace {

TEST( RoadModelTest, AnyConfigurationWritesLeaveTheIndexEqualToTheConfiguration ) {
   TestSupport::expectModelled< RoadModel::Model, RoadModel::Real >(
      RoadModel::steps( true, true ), { 1500, 300 }, RoadModel::kOpening );
}

}   // namespace
