// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "bench/Workloads.h"

#include <algorithm>
#include <array>
#include <numeric>
#include <utility>

namespace Bench {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;

using Ids = std::vector< std::uint16_t >;
using MappingOf = std::function< VlanXlateMapping( std::uint16_t ) >;

VlanXlateMapping
theSame( std::uint16_t ) {
   return translationTo( 3001 );
}

VlanXlateMapping
itsOwn( std::uint16_t vid ) {
   return translationTo( VlanId::kHighest + 1u - vid );
}

Operation
operation( std::uint64_t intf, std::size_t vid, VlanXlateMapping mapping, bool isAdd ) {
   return { IntfId( intf ), VlanId::fromRaw( static_cast< std::uint16_t >( vid ) ), mapping,
            isAdd };
}

Ids
allIds() {
   Ids ids( VlanId::kHighest );
   std::iota( ids.begin(), ids.end(), VlanId::kLowest );
   return ids;
}

Ids
shuffled( Ids ids, Random& random ) {
   std::ranges::shuffle( ids, random );
   return ids;
}

std::vector< Operation >
operations( const Ids& ids, const MappingOf& mapping, bool isAdd ) {
   std::vector< Operation > result;
   for ( const std::uint16_t vid : ids ) {
      result.push_back( operation( 1, vid, mapping( vid ), isAdd ) );
   }
   return result;
}

Workload
addInRandomOrder( const std::string& name, const MappingOf& mapping ) {
   return { name, [ = ]( Random& random ) {
              return Script{ {}, operations( shuffled( allIds(), random ), mapping, true ) };
           } };
}

Workload
deleteInRandomOrder( const std::string& name, const MappingOf& mapping ) {
   return { name, [ = ]( Random& random ) {
              return Script{ operations( shuffled( allIds(), random ), mapping, true ),
                             operations( shuffled( allIds(), random ), mapping, false ) };
           } };
}

struct Clusters {
   Ids ids;
   std::array< VlanXlateMapping, VlanId::kHighest + 1 > mapping{};

   /// One for each id, in random order.
   std::vector< Operation > drawOperations( Random& random, bool isAdd ) const {
      return operations(
         shuffled( ids, random ), [ & ]( std::uint16_t vid ) { return mapping[ vid ]; }, isAdd );
   }
};

// Runs of 1 to 15 ids until there are 2,000, each of one of 8 mappings, some side by side.
Clusters
drawClusters( Random& random ) {
   constexpr std::size_t kIds = 2000;
   Clusters clusters;
   while ( clusters.ids.size() < kIds ) {
      const std::size_t first = 1 + random() % VlanId::kHighest;
      const std::size_t end =
         std::min< std::size_t >( first + 1 + random() % 15, VlanId::kHighest + 1 );
      const VlanXlateMapping mapping = translationTo( 3001 + random() % 8 );
      for ( std::size_t vid = first; vid < end && clusters.ids.size() < kIds; ++vid ) {
         if ( clusters.mapping[ vid ] == VlanXlateMapping() ) {
            clusters.mapping[ vid ] = mapping;
            clusters.ids.push_back( static_cast< std::uint16_t >( vid ) );
         }
      }
   }
   return clusters;
}

constexpr std::size_t kBlocks = 16;
constexpr std::size_t kBlockIds = 16;

std::string
blocksName( std::uint64_t interfaces ) {
   return textOf( interfaces, "interface" ) + " x 16 blocks of 16 ids, ";
}

/// Adds one id of a block; each block of an interface has a mapping of its own.
Operation
blockOperation( std::uint64_t intf, std::size_t block, std::size_t id ) {
   return operation( intf + 1, 100u + block * 200u + id, translationTo( 3001u + block ), true );
}

}   // namespace

VlanXlateMapping
translationTo( std::size_t vlan ) {
   return VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( vlan ) );
}

std::string
textOf( std::uint64_t count, const std::string& noun ) {
   return std::to_string( count ) + " " + noun + ( count == 1 ? "" : "s" );
}

Workload
sequentialAdd() {
   return { "sequential, one mapping: add", []( Random& ) {
              return Script{ {}, operations( allIds(), theSame, true ) };
           } };
}

Workload
sequentialDelete() {
   return { "sequential, one mapping: delete", []( Random& ) {
              return Script{ operations( allIds(), theSame, true ),
                             operations( allIds(), theSame, false ) };
           } };
}

Workload
randomAdd() {
   return addInRandomOrder( "random order, one mapping: add", theSame );
}

Workload
randomDelete() {
   return deleteInRandomOrder( "random order, one mapping: delete", theSame );
}

Workload
distinctAdd() {
   return addInRandomOrder( "random order, own mappings: add", itsOwn );
}

Workload
distinctDelete() {
   return deleteInRandomOrder( "random order, own mappings: delete", itsOwn );
}

Workload
churnLoad() {
   return { "churn, 2,000 ids in runs over 8 mappings: loading", []( Random& random ) {
              const Clusters clusters = drawClusters( random );
              return Script{ {}, clusters.drawOperations( random, true ) };
           } };
}

Workload
churnChange() {
   return { "churn, 2,000 ids in runs over 8 mappings: changing", []( Random& random ) {
              constexpr std::size_t kAway = 64;   // ids between a deletion and the addition
              const Clusters clusters = drawClusters( random );
              Script script{ clusters.drawOperations( random, true ), {} };
              const std::vector< Operation > away = clusters.drawOperations( random, false );
              for ( std::size_t i = 0; i < away.size() + kAway; ++i ) {
                 if ( i < away.size() ) {
                    script.timed.push_back( away[ i ] );
                 }
                 if ( i >= kAway ) {
                    script.timed.push_back( away[ i - kAway ] );
                    script.timed.back().isAdd = true;
                 }
              }
              return script;
           } };
}

Workload
roundRobinAdd( std::uint64_t interfaces ) {
   return { blocksName( interfaces ) + "interfaces in turn: add", [ = ]( Random& random ) {
              Ids ascending( kBlocks );
              std::iota( ascending.begin(), ascending.end(), std::uint16_t{ 0 } );
              std::vector< Ids > blocks;   // of each interface, in the order in which they come
              for ( std::uint64_t intf = 0; intf < interfaces; ++intf ) {
                 blocks.push_back( shuffled( ascending, random ) );
              }
              Script script;
              script.timed.reserve( kBlocks * kBlockIds * interfaces );
              for ( std::size_t step = 0; step < kBlocks * kBlockIds; ++step ) {
                 for ( std::uint64_t intf = 0; intf < interfaces; ++intf ) {
                    script.timed.push_back( blockOperation(
                       intf, blocks[ intf ][ step / kBlockIds ], step % kBlockIds ) );
                 }
              }
              return script;
           } };
}

Workload
randomBlocksAdd( std::uint64_t interfaces ) {
   return { blocksName( interfaces ) + "blocks in random order: add", [ = ]( Random& random ) {
              std::vector< std::uint64_t > blocks( kBlocks * interfaces );
              std::iota( blocks.begin(), blocks.end(), std::uint64_t{ 0 } );
              std::ranges::shuffle( blocks, random );
              Script script;
              script.timed.reserve( kBlockIds * blocks.size() );
              for ( const std::uint64_t block : blocks ) {
                 for ( std::size_t id = 0; id < kBlockIds; ++id ) {
                    script.timed.push_back(
                       blockOperation( block / kBlocks, block % kBlocks, id ) );
                 }
              }
              return script;
           } };
}

Workload
growthAdd( std::uint64_t interfaces ) {
   return { textOf( interfaces, "interface" ) + " x 1,024 ids", [ = ]( Random& random ) {
              constexpr std::size_t kIds = 1024;
              constexpr std::size_t kRun = 4;
              constexpr std::size_t kStep = 13;   // from the start of a run to the next
              std::vector< Ids > ids( interfaces, Ids( kIds ) );
              for ( Ids& own : ids ) {
                 std::iota( own.begin(), own.end(), std::uint16_t{ 0 } );
                 std::ranges::shuffle( own, random );
              }
              Script script;
              script.timed.reserve( interfaces * kIds );
              for ( std::size_t step = 0; step < kIds; ++step ) {
                 for ( std::uint64_t intf = 0; intf < interfaces; ++intf ) {
                    const std::size_t i = ids[ intf ][ step ];
                    script.timed.push_back( operation( intf + 1, 1 + i / kRun * kStep + i % kRun,
                                                       translationTo( 3001 ), true ) );
                 }
              }
              return script;
           } };
}

}   // namespace Bench
