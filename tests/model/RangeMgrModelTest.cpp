// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The range manager against its table: maximal runs, their starts, and the bound tests.
#include "tests/model/RangeMgrModel.h"

#include <gtest/gtest.h>

namespace {

using RangeMgrModel::Model;
using RangeMgrModel::Real;

TEST( RangeMgrModelTest, HoldsTheMaximalRunsOfFewIds ) {
   TestSupport::expectModelled< Model, Real >( RangeMgrModel::fewIds(), { 2000, 200 } );
}

TEST( RangeMgrModelTest, HoldsTheMaximalRunsOfManyIds ) {
   TestSupport::expectModelled< Model, Real >( RangeMgrModel::manyIds(), { 200, 40 } );
}

}   // namespace
