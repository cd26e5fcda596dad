// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// inThreads: the same work in several threads, which set off together.
#pragma once

#include <latch>
#include <thread>
#include <vector>

namespace TestSupport {

/// Calls `work( 0 )` to `work( threads - 1 )`, each in a thread of its own; all have ended when
/// it returns.
template < class Work >
void
inThreads( int threads, const Work& work ) {
   std::latch start( threads );
   std::vector< std::thread > running;
   for ( int thread = 0; thread < threads; ++thread ) {
      running.emplace_back( [ &, thread ] {
         start.arrive_and_wait();
         work( thread );
      } );
   }
   for ( std::thread& each : running ) {
      each.join();
   }
}

}   // namespace TestSupport
