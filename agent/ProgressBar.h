// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ProgressBar: shows on a terminal how far a piece of work is, once it takes more than a second: at
// most ten times a second, and as wide as the terminal is at that moment. In a pipe or a file it
// shows nothing.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <string>

#include "Zel/Clock.h"

namespace Agent {

class ProgressBar {
 public:
   /// `label` stands before the bar; `output` is the descriptor of what may be a terminal.
   ProgressBar( std::string label, Zel::Ptr< const Zel::Clock > clock, int output = STDERR_FILENO );
   /// Wipes the bar.
   ~ProgressBar();
   ProgressBar( const ProgressBar& ) = delete;
   ProgressBar& operator=( const ProgressBar& ) = delete;

   /// So many of `total` steps are done; 0 for a total that nobody knows yet. Looks at the clock, so
   /// a caller with short steps comes every few hundred.
   void doneIs( std::size_t done, std::size_t total );

 private:
   void draw( std::size_t done, std::size_t total );

   const std::string label_;
   const int output_;
   const bool onTerminal_;
   const Zel::Ptr< const Zel::Clock > clock_;
   Zel::Seconds nextFrame_;
   bool shown_ = false;
};

}   // namespace Agent
