// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/ProgressBar.h"

#include <fmt/format.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace Agent {
namespace {

constexpr std::size_t kWidth = 40;
constexpr std::chrono::seconds kPatience{ 1 };

}   // namespace

ProgressBar::ProgressBar( std::string label, std::size_t total )
    : label_( std::move( label ) ),
      total_( std::max< std::size_t >( total, 1 ) ),
      onTerminal_( isatty( STDERR_FILENO ) == 1 ) {}

ProgressBar::~ProgressBar() {
   if ( shown_ ) {
      std::fputs( "\r\033[K", stderr );
   }
}

void
ProgressBar::show() {
   if ( !shown_ && std::chrono::steady_clock::now() - start_ < kPatience ) {
      return;
   }
   shown_ = true;
   const std::size_t filled = std::min( done_, total_ ) * kWidth / total_;
   fmt::print( stderr, "\r{} [{:<{}}] {}/{}", label_, std::string( filled, '#' ), kWidth, done_,
               total_ );
   std::fflush( stderr );
}

}   // namespace Agent
