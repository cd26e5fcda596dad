// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// environmentVariable: the one way in which the platform reads its ZEL_ variables. Not exported.
#pragma once

namespace Zel {

/// The variable's value; null when it is not set, and in a process with more rights than its caller
/// (set-user-id, set-group-id, file capabilities): there the environment is a stranger's. Belongs
/// to the environment; no thread may change that meanwhile.
const char* environmentVariable( const char* name );

}   // namespace Zel
