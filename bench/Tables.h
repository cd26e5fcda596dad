// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Tables: the medians of all rows as Markdown, as JSON and as a picture.
#pragma once

#include <string>
#include <vector>

#include "bench/Report.h"

namespace Bench {

struct SubjectFigures {
   std::string name;
   std::vector< double > figures;   ///< one per repetition, at least one
};

struct RowFigures {
   Row row;
   std::vector< SubjectFigures > subjects;
};

/// A table for each group: the medians, and the library's against each goal, the goal in
/// parentheses, bold where it is missed.
std::string markdownOf( const std::vector< RowFigures >& rows );
/// A JSON array with an object for each row: its medians, and what was reached of each goal.
std::string jsonOf( const std::vector< RowFigures >& rows );
/// Bars as SVG: each row's subjects as multiples of the first subject that a ratio goal names.
std::string chartOf( const std::vector< RowFigures >& rows );

}   // namespace Bench
