// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Bytes per range, and per interface without ranges.
//
// Each figure comes from a forked child, whose heap nobody has used before.
//   library        what Zel::allocationCounts() holds in objects, and the tables of its
//                  collections. The tables are what the heap grows by when everything is built a
//                  second time: the cells of all objects lie ready then. Whatever else would be
//                  kept for later shows in the next column alone.
//   library, heap  what the heap grew by the first time: with the unused rest of the last chunks
//   peers          what the heap grew by, the allocator's own words included
#include <absl/container/btree_set.h>
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "MoxVlanMapping/VlanRange.h"
#include "Zel/AllocationTracker.h"
#include "bench/LibraryIndex.h"
#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;
using MoxVlanMapping::VlanRangeXlateMapping;

double
heapBytes() {
   const struct mallinfo2 heap = mallinfo2();
   return static_cast< double >( heap.uordblks + heap.hblkhd );
}

double
objectBytes() {
   double bytes = 0;
   for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
      bytes += static_cast< double >( count.bytes );
   }
   return bytes;
}

/// What `measurement` yields in a child of its own.
double
inChild( const std::function< double() >& measurement ) {
   int ends[ 2 ];
   if ( pipe( ends ) != 0 ) {
      throw std::system_error( errno, std::generic_category(), "pipe" );
   }
   const pid_t child = fork();
   if ( child < 0 ) {
      throw std::system_error( errno, std::generic_category(), "fork" );
   }
   if ( child == 0 ) {
      const double figure = measurement();
      const bool told = write( ends[ 1 ], &figure, sizeof figure ) == sizeof figure;
      _exit( told ? 0 : 1 );
   }
   close( ends[ 1 ] );
   double figure = 0;
   const bool heard = read( ends[ 0 ], &figure, sizeof figure ) == sizeof figure;
   close( ends[ 0 ] );
   int status = 0;
   if ( waitpid( child, &status, 0 ) != child || status != 0 || !heard ) {
      throw std::runtime_error( "the child that measures memory failed" );
   }
   return figure;
}

/// What is stored: the ids of `ids` on each interface, each a range of its own.
struct Content {
   std::string name;
   std::uint64_t interfaces;
   std::vector< Vid > ids;

   /// Ranges, or interfaces when there are none.
   double parts() const {
      return static_cast< double >( interfaces * ( ids.empty() ? 1 : ids.size() ) );
   }
};

template < class Index >
void
fill( Index& index, const Content& content ) {
   for ( std::uint64_t intf = 1; intf <= content.interfaces; ++intf ) {
      index.touch( Corvel::IntfId( intf ) );
      for ( const Vid vid : content.ids ) {
         index.add( Corvel::IntfId( intf ), Bridging::VlanId::fromRaw( vid ),
                    Mapping::fromRaw( static_cast< std::uint16_t >( 4095 - vid ) ) );
      }
   }
}

class FilledWorld {
 public:
   FilledWorld( const Content& content, bool sorted ) {
      fill( *this, content );
      for ( std::uint64_t intf = 1; sorted && intf <= content.interfaces; ++intf ) {
         world_.codef->sortVlanRangeBySize( Corvel::IntfId( intf ) );
      }
   }
   void touch( Corvel::IntfId intf ) { world_.ranges->vlanRangeEntryIs( intf ); }
   void add( Corvel::IntfId intf, Bridging::VlanId vid, Mapping mapping ) {
      world_.mgr->addVlanToIdx( intf, vid, mapping );
   }

 private:
   World world_;
};

struct LibraryBytes {
   double held;
   double heap;
};

LibraryBytes
libraryBytes( const Content& content, bool sorted ) {
   // What there is once per process: slabs' first chunks, the wiring, the heap's own caches.
   const World other;
   const double objects = objectBytes();
   const double heap = heapBytes();
   auto filled = std::make_unique< FilledWorld >( content, sorted );
   const double held = objectBytes() - objects;
   const double grown = heapBytes() - heap;
   filled.reset();
   const double empty = heapBytes();
   filled = std::make_unique< FilledWorld >( content, sorted );
   return { held + heapBytes() - empty, grown };
}

/// The size order that a tree's owner would keep beside the index of each interface.
using StdOrder = std::set< VlanRangeXlateMapping >;
using AbslOrder = absl::btree_set< VlanRangeXlateMapping >;

template < class Index, class Order >
double
peerBytes( const Content& content, bool sorted ) {
   const double heap = heapBytes();
   ByInterface< Index > index;
   fill( index, content );
   std::vector< Order > orders( sorted ? content.interfaces : 0 );
   for ( Order& order : orders ) {
      for ( const Vid vid : content.ids ) {
         const auto id = Bridging::VlanId::fromRaw( vid );
         order.insert( VlanRangeXlateMapping( id, id, Mapping::fromRaw( 3001 ) ) );
      }
   }
   return heapBytes() - heap;
}

void
measureBytes( const Row& row, const std::string& subject, const Content& content,
              const std::function< double() >& bytes ) {
   measureOnce( row, subject, [ = ] { return inChild( bytes ) / content.parts(); } );
}

void
addRow( const Row& row, const Content& content, bool sorted ) {
   measureBytes( row, kLibrary, content, [ = ] { return libraryBytes( content, sorted ).held; } );
   measureBytes( row, "library, heap", content,
                 [ = ] { return libraryBytes( content, sorted ).heap; } );
   const auto peer = [ & ]< class Index, class Order >() {
      measureBytes( row, Index::kName, content,
                    [ = ] { return peerBytes< Index, Order >( content, sorted ); } );
   };
   peer.operator()< TwoMapsIndex, StdOrder >();
   peer.operator()< TreeIndex< StdTree >, StdOrder >();
   peer.operator()< IclIndex, StdOrder >();
   peer.operator()< TreeIndex< AbslTree >, AbslOrder >();
   peer.operator()< SortedVectorIndex, AbslOrder >();
   peer.operator()< FlatIndex, AbslOrder >();
}

// Without and with the size order.
void
addRows( const Content& content, double unsortedLimit, double sortedLimit ) {
   const std::string group = "Memory: bytes per range";
   addRow( { group, content.name + ", without size order", { atMost( unsortedLimit ) } }, content,
           false );
   addRow( { group, content.name + ", with size order", { atMost( sortedLimit ) } }, content,
           true );
}

/// `count` ids spread over all, in random order.
std::vector< Vid >
drawIds( std::size_t count ) {
   Random random( 6 );
   std::vector< Vid > ids;
   for ( std::size_t i = 0; i < count; ++i ) {
      ids.push_back( static_cast< Vid >( 1 + i * ( Bridging::VlanId::kHighest / count ) ) );
   }
   std::ranges::shuffle( ids, random );
   return ids;
}

}   // namespace

void
Bench::addRows() {
   const auto many = []( std::uint64_t interfaces ) { return tinyRun() ? 16 : interfaces; };
   const auto named = []( std::uint64_t interfaces, std::size_t ranges ) {
      const std::string noun = interfaces == 1 ? " interface x " : " interfaces x ";
      return std::to_string( interfaces ) + noun + std::to_string( ranges ) + " ranges";
   };
   ::addRows( { "4,094 single ids", 1, drawIds( Bridging::VlanId::kHighest ) }, 116, 174 );
   ::addRows( { named( many( 1024 ), 16 ), many( 1024 ), drawIds( 16 ) }, 120, 186 );
   addRow( { "Memory: bytes per interface", "without ranges", { atMost( 400 ) } },
           { "", many( 1024 ), {} }, false );
   for ( const std::uint64_t interfaces : { 1u, 64u, 1024u, 4096u } ) {
      addRow( { "Growth: bytes per range", named( interfaces, 256 ), {} },
              { "", many( interfaces ), drawIds( 256 ) }, false );
   }
}
