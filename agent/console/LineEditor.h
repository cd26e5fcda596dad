// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// LineEditor: lines typed at a terminal, with editing, history and completion.
//
// At most one at a time: the editing library keeps its state for the process. While there is one,
// SIGINT does not end the process.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "agent/console/Completion.h"

namespace Agent::Console {

class LineEditor {
 public:
   using Complete = std::function< Completions( std::string_view line ) >;

   /// Reads the history of earlier sessions.
   explicit LineEditor( Complete complete );
   /// Writes the history; without a word when that cannot be.
   ~LineEditor();
   LineEditor( const LineEditor& ) = delete;
   LineEditor& operator=( const LineEditor& ) = delete;

   /// The next line without its end; none at the end of input. A line that a signal such as that of
   /// Ctrl-C breaks off is dropped, and the prompt stands again.
   std::optional< std::string > next( const char* prompt );

 private:
   const std::string historyFile_;   // empty when there is no place for one
};

}   // namespace Agent::Console
