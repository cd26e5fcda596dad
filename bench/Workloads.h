// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Workloads: sequences of additions and deletions, and how an index is put through them.
//
// Orders are drawn anew for every pass, so that no branch predictor learns them. An id is added
// only when no range holds it and deleted only when one does.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"

namespace Bench {

using Random = std::mt19937_64;

struct Operation {
   Corvel::IntfId intf;
   Bridging::VlanId vid;
   Bridging::VlanXlateMapping mapping;
   bool isAdd;
};

struct Script {
   std::vector< Operation > before;   ///< brings the index into its first state, untimed
   std::vector< Operation > timed;
};

struct Workload {
   std::string name;
   std::function< Script( Random& ) > draw;
};

/// The mapping that translates to `vlan`.
Bridging::VlanXlateMapping translationTo( std::size_t vlan );

/// "1 range", "16 ranges".
std::string textOf( std::uint64_t count, const std::string& noun );

/// All ids of one interface in ascending order, one mapping.
Workload sequentialAdd();
Workload sequentialDelete();
/// All ids of one interface in random order.
Workload randomAdd();
Workload randomDelete();
/// The same with a mapping of its own for every id.
Workload distinctAdd();
Workload distinctDelete();
/// 2,000 ids of one interface in runs over 8 mappings: all come in random order; then ids go and
/// come back a little later.
Workload churnLoad();
Workload churnChange();
/// 16 blocks of 16 ids on each of `interfaces` interfaces, each with its own order of blocks: one
/// id of each interface in turn, the next id of an interface behind its last one.
Workload roundRobinAdd( std::uint64_t interfaces );
/// The same blocks of all interfaces in random order, one whole block after the other.
Workload randomBlocksAdd( std::uint64_t interfaces );
/// 1,024 ids in runs of four on each of `interfaces` interfaces: interfaces in turn, each with its
/// own random order.
Workload growthAdd( std::uint64_t interfaces );

template < class Index >
void
runThrough( Index& index, const std::vector< Operation >& operations ) {
   for ( const Operation& operation : operations ) {
      if ( operation.isAdd ) {
         index.add( operation.intf, operation.vid, operation.mapping );
      } else {
         index.del( operation.intf, operation.vid );
      }
   }
}

}   // namespace Bench
