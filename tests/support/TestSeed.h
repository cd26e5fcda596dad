// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TestSeed: the seed of a random test, which a failure prints and a rerun accepts.
//
//   const std::uint64_t seed = testSeed();
//   SCOPED_TRACE( seedNote( seed ) );
#pragma once

#include <cstdint>
#include <cstdlib>
#include <string>

namespace TestSupport {

/// The environment variable MOX_TEST_SEED, else a fixed value.
inline std::uint64_t
testSeed() {
   const char* given = std::getenv( "MOX_TEST_SEED" );
   return given ? std::strtoull( given, nullptr, 10 ) : 20260807u;
}

inline std::string
seedNote( std::uint64_t seed ) {
   return "MOX_TEST_SEED=" + std::to_string( seed );
}

}   // namespace TestSupport
