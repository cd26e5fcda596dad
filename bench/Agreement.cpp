// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "bench/Agreement.h"

#include <algorithm>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "bench/LibraryIndex.h"
#include "bench/Peers.h"

namespace Bench {
namespace {

struct States {
   std::vector< StoredRange > before;
   std::vector< StoredRange > after;
};

template < class Index >
States
statesOf( const Script& script ) {
   Index index;
   States states;
   runThrough( index, script.before );
   states.before = index.ranges();
   runThrough( index, script.timed );
   states.after = index.ranges();
   return states;
}

std::string
textOf( const std::vector< StoredRange >& ranges, std::size_t at ) {
   if ( at >= ranges.size() ) {
      return "nothing";
   }
   std::ostringstream text;
   text << "interface " << ranges[ at ].intf << ": " << ranges[ at ].low << "-" << ranges[ at ].high
        << " mapping " << std::hex << ranges[ at ].mapping;
   return text.str();
}

void
requireEqual( const std::string& where, const std::vector< StoredRange >& library,
              const std::vector< StoredRange >& peer ) {
   if ( library == peer ) {
      return;
   }
   const auto [ different, _ ] = std::ranges::mismatch( library, peer );
   const auto at = static_cast< std::size_t >( different - library.begin() );
   throw std::runtime_error( where + ": library has " + textOf( library, at ) + ", peer has " +
                             textOf( peer, at ) );
}

template < class Peer >
void
requireSameStates( const std::string& workload, const Script& script, const States& library ) {
   const States peer = statesOf< Peer >( script );
   requireEqual( workload + ", " + Peer::kName + ", before", library.before, peer.before );
   requireEqual( workload + ", " + Peer::kName + ", after", library.after, peer.after );
}

}   // namespace

void
requireAgreement( const Workload& workload ) {
   constexpr int kDraws = 3;
   Random random( 2 );
   for ( int draw = 0; draw < kDraws; ++draw ) {
      const Script script = workload.draw( random );
      const States library = statesOf< LibraryIndex >( script );
      forEachPeer( [ & ]< class Index >() {
         requireSameStates< ByInterface< Index > >( workload.name, script, library );
      } );
   }
}

}   // namespace Bench
