// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Finding.h"

#include "agent/config/LocatedJson.h"

namespace Agent {

std::string
Finding::text() const {
   std::string out = shownText( file );
   if ( line != 0 ) {
      out += ':' + std::to_string( line );
   }
   if ( column != 0 ) {
      out += ':' + std::to_string( column );
   }
   out += ": ";
   if ( !path.empty() ) {
      out += path + ": ";
   }
   if ( !value.empty() ) {
      out += "value " + value + ' ';
   }
   out += problem;
   if ( !allowed.empty() ) {
      out += "; allowed: " + allowed;
   }
   return out;
}

}   // namespace Agent
