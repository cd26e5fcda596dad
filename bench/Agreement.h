// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Agreement: proof that library and peers do the same, before any of them is timed.
#pragma once

#include "bench/Workloads.h"

namespace Bench {

/// Puts library and peers through the workload, several times, and compares all ranges of all
/// interfaces before and after the timed part. Throws std::runtime_error that names workload,
/// peer and the first difference.
void requireAgreement( const Workload& workload );

}   // namespace Bench
