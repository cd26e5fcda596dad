// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ProgressBar: shows on a terminal how far a piece of work is, once it takes more than a second.
// In a pipe or a file it shows nothing.
#pragma once

#include <chrono>
#include <cstddef>
#include <string>

namespace Agent {

class ProgressBar {
 public:
   /// `label` stands before the bar; `total` is the number of steps.
   ProgressBar( std::string label, std::size_t total );
   /// Wipes the bar.
   ~ProgressBar();
   ProgressBar( const ProgressBar& ) = delete;
   ProgressBar& operator=( const ProgressBar& ) = delete;

   /// One step done. Cheap: looks at the clock every few hundred steps.
   void step() {
      if ( ++done_ % kStepsPerLook == 0 && onTerminal_ ) {
         show();
      }
   }

 private:
   static constexpr std::size_t kStepsPerLook = 256;
   void show();

   const std::string label_;
   const std::size_t total_;
   const bool onTerminal_;
   const std::chrono::steady_clock::time_point start_ = std::chrono::steady_clock::now();
   std::size_t done_ = 0;
   bool shown_ = false;
};

}   // namespace Agent
