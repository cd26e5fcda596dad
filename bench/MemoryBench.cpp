// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Bytes of the heap: what malloc has handed out, its own words and all spare room included. Each
// figure comes from a forked child, whose heap nobody has used before.
//
//   library         what the content takes where more like it stands: others share the unused rest
//                   of the last chunks
//   library, first  what it takes where it is the first
#include <malloc.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <list>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "bench/LibraryIndex.h"
#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/SizeOrders.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;

double
heapBytes() {
   const struct mallinfo2 heap = mallinfo2();
   return static_cast< double >( heap.uordblks + heap.hblkhd );
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

/// What is stored: the ids of `ids` on each interface, each with a mapping of its own.
struct Content {
   std::uint64_t interfaces;
   std::vector< Vid > ids;

   /// Ranges, or interfaces when there are none.
   double parts() const {
      return static_cast< double >( interfaces * std::max< std::size_t >( ids.size(), 1 ) );
   }
};

/// An index that has stored the content.
template < class Index >
struct Stored {
   Index index;

   explicit Stored( const Content& content ) {
      for ( std::uint64_t i = 1; i <= content.interfaces; ++i ) {
         const Corvel::IntfId intf( i );
         if constexpr ( requires { index.of( intf ); } ) {
            index.of( intf );   // even without ranges
         }
         for ( const Vid vid : content.ids ) {
            index.add( intf, Bridging::VlanId::fromRaw( vid ), translationTo( 4095u - vid ) );
         }
         if constexpr ( requires { index.sort( intf ); } ) {
            index.sort( intf );
         }
      }
   }
};

/// Registers what a part of the content takes where it is stored `copies` times already: the mean
/// of as many copies more, at least one.
template < class Index >
void
measureBytes( const Row& row, const std::string& subject, const Content& content,
              std::size_t copies = 0 ) {
   const auto bytes = [ = ] {
      std::list< Stored< Index > > stored;
      const auto store = [ & ]( std::size_t count ) {
         for ( std::size_t copy = 0; copy < count; ++copy ) {
            stored.emplace_back( content );
         }
      };
      store( copies );
      const double heap = heapBytes();
      const std::size_t more = std::max< std::size_t >( copies, 1 );
      store( more );
      return ( heapBytes() - heap ) / static_cast< double >( more );
   };
   measureOnce( row, subject, [ = ] { return inChild( bytes ) / content.parts(); } );
}

/// As many copies as make what remains of the last chunks small.
std::size_t
manyCopies( const Content& content ) {
   constexpr double kParts = 60000;
   return tinyRun() ? 1 : static_cast< std::size_t >( std::ceil( kParts / content.parts() ) );
}

template < class Library, template < class > class Peer >
void
addRow( const Row& row, const Content& content ) {
   measureBytes< Library >( row, kLibrary, content, manyCopies( content ) );
   measureBytes< Library >( row, "library, first", content );
   forEachPeer(
      [ & ]< class Index >() { measureBytes< Peer< Index > >( row, Index::kName, content ); } );
}

void
addIndexRow( const std::string& group, const std::string& name, const Content& content,
             double limit ) {
   addRow< LibraryIndex, ByInterface >( { group, name, { atMost( limit ) } }, content );
}

// Without and with the size order.
void
addRows( const std::string& name, const Content& content, double unsortedLimit,
         double sortedLimit ) {
   const std::string group = "Memory: bytes per range";
   addIndexRow( group, name + ", without size order", content, unsortedLimit );
   addRow< SortedWorld, SortedPeer >(
      { group, name + ", with size order", { atMost( sortedLimit ) } }, content );
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
   ::addRows( "4,094 single ids", { 1, drawIds( Bridging::VlanId::kHighest ) }, 24, 48 );
   ::addRows( textOf( many( 1024 ), "interface" ) + " x 16 ranges, entries included",
              { many( 1024 ), drawIds( 16 ) }, 45, 75 );
   addIndexRow( "Memory: bytes per interface", "without ranges", { many( 1024 ), {} }, 400 );
   for ( const std::uint64_t interfaces : { 1u, 64u, 1024u, 4096u } ) {
      addIndexRow( "Growth: bytes per range",
                   textOf( many( interfaces ), "interface" ) + " x 256 ranges far apart",
                   { many( interfaces ), drawIds( 256 ) }, 30 );
   }
   const Content mappings{ many( 64 ), drawIds( 3000 ) };
   const Row row{ "Memory: bytes per mapping",
                  textOf( mappings.interfaces, "interface" ) +
                     " x 3,000 ids, configuration and delivery",
                  { over( LibraryIndex::kAlone, 110 ) } };
   measureBytes< ConfiguredWorld >( row, kLibrary, mappings, manyCopies( mappings ) );
   measureBytes< LibraryIndex >( row, LibraryIndex::kAlone, mappings, manyCopies( mappings ) );
}
