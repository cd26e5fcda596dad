// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/NearMiss.h"

#include <algorithm>
#include <cstddef>
#include <utility>

namespace Agent {
namespace {

// Optimal string alignment, row by row.
std::size_t
slips( std::string_view from, std::string_view to ) {
   std::vector< std::size_t > beforeLast( to.size() + 1 );
   std::vector< std::size_t > last( to.size() + 1 );
   std::vector< std::size_t > row( to.size() + 1 );
   for ( std::size_t j = 0; j <= to.size(); ++j ) {
      row[ j ] = j;
   }
   for ( std::size_t i = 1; i <= from.size(); ++i ) {
      beforeLast = std::exchange( last, row );
      row[ 0 ] = i;
      for ( std::size_t j = 1; j <= to.size(); ++j ) {
         const std::size_t wrong = from[ i - 1 ] == to[ j - 1 ] ? 0 : 1;
         row[ j ] = std::min( { last[ j ] + 1, row[ j - 1 ] + 1, last[ j - 1 ] + wrong } );
         if ( i > 1 && j > 1 && from[ i - 1 ] == to[ j - 2 ] && from[ i - 2 ] == to[ j - 1 ] ) {
            row[ j ] = std::min( row[ j ], beforeLast[ j - 2 ] + 1 );
         }
      }
   }
   return row.back();
}

}   // namespace

std::string
nearMiss( std::string_view word, const std::vector< std::string >& names ) {
   constexpr std::size_t kLongestName = 64;   // a word far longer is near to none
   std::string nearest;
   std::size_t fewest = word.size();
   for ( const std::string& name : names ) {
      const std::size_t length = std::max( word.size(), name.size() );
      if ( length > kLongestName ) {
         continue;
      }
      const std::size_t wrong = slips( word, name );
      if ( 3 * wrong <= length && wrong < fewest ) {
         nearest = name;
         fewest = wrong;
      }
   }
   return nearest;
}

}   // namespace Agent
