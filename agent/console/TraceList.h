// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TraceList: who is named in a list of HANDLE/LEVELS.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace Agent::Console {

/// The handles that `list`, which Zel::traceLevelsIs() takes, names and that are not among `known`.
std::vector< std::string > handlesBeside( std::span< const std::string > known,
                                          std::string_view list );

}   // namespace Agent::Console
