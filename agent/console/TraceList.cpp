// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/TraceList.h"

#include <algorithm>

namespace Agent::Console {

std::vector< std::string >
handlesBeside( std::span< const std::string > known, std::string_view list ) {
   std::vector< std::string > beside;
   while ( !list.empty() ) {
      const std::string_view setting = list.substr( 0, list.find( ';' ) );
      const std::string_view handle = setting.substr( 0, setting.find( '/' ) );
      if ( handle != "*" && std::ranges::find( known, handle ) == known.end() ) {
         beside.emplace_back( handle );
      }
      list.remove_prefix( std::min( setting.size() + 1, list.size() ) );
   }
   return beside;
}

}   // namespace Agent::Console
