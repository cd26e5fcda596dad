// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Complain.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdio>
#include <new>
#include <string_view>

namespace Agent {
namespace {

// fmt::print() throws, streams remember a failure for ever; this does neither.
void
write( std::string_view line ) {
   std::fwrite( line.data(), 1, line.size(), stderr );
}

}   // namespace

void
complainLine( fmt::string_view format, fmt::format_args args ) noexcept {
   try {
      fmt::memory_buffer line;
      fmt::vformat_to( std::back_inserter( line ), format, args );
      line.push_back( '\n' );
      write( { line.data(), line.size() } );
   } catch ( const std::bad_alloc& ) {
      std::array< char, 256 > line;
      const std::size_t length =
         fmt::vformat_to_n( line.begin(), line.size() - 1, format, args ).size;
      const std::size_t kept = std::min( length, line.size() - 1 );
      line[ kept ] = '\n';
      write( { line.data(), kept + 1 } );
   }
}

}   // namespace Agent
