// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PortNames: port names of configuration files and scripts as the interface ids of the library.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "Corvel/IntfId.h"

namespace Agent {

/// Numbers ports from 1 in the order in which they are first named. The empty name is the empty
/// interface id.
class PortNames {
 public:
   PortNames() : names_{ "" }, ids_{ { "", 0 } } {}

   Corvel::IntfId id( const std::string& name ) {
      const auto [ entry, isNew ] = ids_.try_emplace( name, names_.size() );
      if ( isNew ) {
         names_.push_back( name );
      }
      return Corvel::IntfId( entry->second );
   }

   /// Requires: `id` came from id().
   const std::string& name( Corvel::IntfId id ) const {
      return names_.at( static_cast< std::size_t >( id.value() ) );
   }

 private:
   std::vector< std::string > names_;
   std::map< std::string, std::uint64_t > ids_;
};

}   // namespace Agent
