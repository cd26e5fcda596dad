// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Passes: a workload measured on whatever takes its operations: ns per operation.
#pragma once

#include <cstddef>
#include <utility>

#include "bench/Report.h"
#include "bench/Workloads.h"

namespace Bench {

/// One pass of an index over a script.
template < class Index >
struct Pass {
   Index index{};
   Script script;

   explicit Pass( Script drawn ) : script( std::move( drawn ) ) {
      runThrough( index, script.before );
   }
   std::size_t operator()() {
      runThrough( index, script.timed );
      return script.timed.size();
   }
};

/// Registers the figure of `subject`: each of its passes is made, untimed, from a script of its own.
template < class Pass >
void
measurePasses( const Row& row, const char* subject, const Workload& workload,
               int repetitions = 0 ) {
   measure(
      row, subject,
      [ workload, random = Random( 1 ) ]( benchmark::State& state ) mutable {
         return nanosecondsPerOperation( state, [ & ] { return Pass( workload.draw( random ) ); } );
      },
      repetitions );
}

}   // namespace Bench
