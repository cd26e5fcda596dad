// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/ProgressBar.h"

#include <fmt/format.h>
#include <sys/ioctl.h>

#include <algorithm>
#include <cstdio>
#include <utility>

namespace Agent {
namespace {

constexpr Zel::Seconds kPatience = 1;
constexpr Zel::Seconds kFrame = 0.1;
constexpr std::size_t kUsualColumns = 80;

// The last one stays empty, for some terminals begin a new line behind it.
std::size_t
usableColumns( int terminal ) {
   winsize size{};
   const bool told = ioctl( terminal, TIOCGWINSZ, &size ) == 0 && size.ws_col > 0;
   return ( told ? size.ws_col : kUsualColumns ) - 1;
}

std::string
bar( std::size_t done, std::size_t total, std::size_t width ) {
   const double part =
      static_cast< double >( std::min( done, total ) ) / static_cast< double >( total );
   const auto filled = static_cast< std::size_t >( part * static_cast< double >( width ) );
   return fmt::format( "[{:<{}}]", std::string( filled, '#' ), width );
}

}   // namespace

ProgressBar::ProgressBar( std::string label, Zel::Ptr< const Zel::Clock > clock, int output )
    : label_( std::move( label ) ),
      output_( output ),
      onTerminal_( isatty( output ) == 1 ),
      clock_( std::move( clock ) ),
      nextFrame_( clock_->now() + kPatience ) {}

ProgressBar::~ProgressBar() {
   if ( shown_ ) {
      dprintf( output_, "\r\033[K" );
   }
}

void
ProgressBar::doneIs( std::size_t done, std::size_t total ) {
   if ( !onTerminal_ ) {
      return;
   }
   const Zel::Seconds now = clock_->now();
   if ( now >= nextFrame_ ) {
      nextFrame_ = now + kFrame;
      shown_ = true;
      draw( done, total );
   }
}

void
ProgressBar::draw( std::size_t done, std::size_t total ) {
   constexpr std::size_t kAroundBar = 4;   // two blanks, two brackets
   const std::size_t columns = usableColumns( output_ );
   const std::string count =
      total > 0 ? fmt::format( "{}/{}", done, total ) : fmt::format( "{}", done );
   const std::size_t rest = label_.size() + count.size() + kAroundBar;
   std::string frame =
      total > 0 && rest < columns
         ? fmt::format( "{} {} {}", label_, bar( done, total, columns - rest ), count )
         : fmt::format( "{} {}", label_, count );
   frame.resize( std::min( frame.size(), columns ) );
   dprintf( output_, "\r%s\033[K", frame.c_str() );
}

}   // namespace Agent
