// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Hash.h"

#include <atomic>
#include <cstdio>
#include <random>

#include "Zel/Environment.h"
#include "Zel/Exception.h"
#include "Zel/Parse.h"

namespace Zel {
namespace {

std::uint32_t
initialSeed() {
   if ( const char* fixed = environmentVariable( "ZEL_HASH_SEED" ) ) {
      const String text( fixed );
      try {
         StringIterator current = text.begin();
         const auto seed = parseNumber< std::uint32_t >( current, text.end() );
         parseEnd( current, text.end() );
         return seed;
      } catch ( const ParseException& error ) {
         // Nobody is there to catch it; a misspelt variable must not stop a switch agent.
         std::fprintf( stderr, "ZEL_HASH_SEED is ignored: %s\n", error.what() );
      }
   }
   return std::random_device()();
}

std::atomic< std::uint32_t >&
seedInForce() {
   static std::atomic< std::uint32_t > seed = initialSeed();
   return seed;
}

}   // namespace

std::uint32_t
hashSeed() {
   return seedInForce().load( std::memory_order_relaxed );
}

void
hashSeedIs( std::uint32_t seed ) {
   seedInForce().store( seed, std::memory_order_relaxed );
}

}   // namespace Zel
