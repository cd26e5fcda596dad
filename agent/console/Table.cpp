// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Table.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstddef>

namespace Agent::Console {

std::string
table( const std::vector< std::vector< std::string > >& rows ) {
   std::vector< std::size_t > widths;
   for ( const auto& row : rows ) {
      widths.resize( std::max( widths.size(), row.size() ) );
      for ( std::size_t column = 0; column < row.size(); ++column ) {
         widths[ column ] = std::max( widths[ column ], row[ column ].size() );
      }
   }
   std::string text;
   for ( const auto& row : rows ) {
      std::string line;
      for ( std::size_t column = 0; column < row.size(); ++column ) {
         line += fmt::format( "{:{}}  ", row[ column ], widths[ column ] );
      }
      line.erase( line.find_last_not_of( ' ' ) + 1 );
      text += line + "\n";
   }
   return text;
}

}   // namespace Agent::Console
