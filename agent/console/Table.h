// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Table: rows of text with their columns aligned.
#pragma once

#include <string>
#include <vector>

namespace Agent::Console {

/// One line per row, columns two blanks apart, no blanks at the ends.
std::string table( const std::vector< std::vector< std::string > >& rows );

}   // namespace Agent::Console
