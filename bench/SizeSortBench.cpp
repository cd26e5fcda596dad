// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Size order: ns per interface.
//
// A pass takes a few interfaces, one after the other, whose ranges are drawn for it and were sorted
// before, untimed; so is the change between the two sorts. First what a user pays: the ranges came
// in random order, and whoever has them sorted reads each, from the largest to the smallest. Then
// the sort alone of ranges that came, and so lie in memory, in ascending order.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <numeric>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "bench/Peers.h"
#include "bench/Report.h"
#include "bench/SizeOrders.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;
using Bridging::VlanId;
using Corvel::IntfId;

using Ranges = std::vector< VlanRangeXlateMapping >;

enum class Between { Nothing, OneChange, Forgotten };
enum class Road { RandomWalked, AscendingAlone };

struct Case {
   Road road;
   std::size_t interfaces;
   std::size_t ranges;
   Between between;
   double limit;   // times std::set
};

Row
rowOf( const Case& what ) {
   const bool isWalked = what.road == Road::RandomWalked;
   Row row{ isWalked ? "Size sort and walk, loaded in random order: ns per interface"
                     : "Size sort alone, loaded in ascending order: ns per interface",
            textOf( what.interfaces, "interface" ) + " x " + textOf( what.ranges, "range" ) +
               ( what.between == Between::Nothing     ? ", unchanged"
                 : what.between == Between::OneChange ? ", after one add or delete"
                                                      : ", first sort" ),
            { ratioTo( StdSetOrder::kName, what.limit ) } };
   if ( isWalked ) {
      row.goals.push_back(
         belowBest( { StdSetOrder::kName, BtreeSetOrder::kName, SortedVectorOrder::kName } ) );
   }
   return row;
}

VlanId
idOf( std::size_t number ) {
   return VlanId::fromRaw( static_cast< std::uint16_t >( number ) );
}

/// Ranges that begin and end anywhere, and an id that none holds.
struct Draw {
   Ranges ranges;
   VlanId free;
};

Draw
drawRanges( std::size_t count, Random& random ) {
   std::vector< std::size_t > ids( VlanId::kHighest - 1u );
   std::iota( ids.begin(), ids.end(), 1u );
   std::vector< std::size_t > lows;
   std::ranges::sample( ids, std::back_inserter( lows ), static_cast< std::ptrdiff_t >( count ),
                        random );
   lows.push_back( VlanId::kHighest );
   Draw draw;
   std::vector< std::size_t > free{ VlanId::kHighest };
   for ( std::size_t i = 0; i < count; ++i ) {
      const std::size_t high = lows[ i ] + random() % ( lows[ i + 1 ] - lows[ i ] );
      draw.ranges.emplace_back( idOf( lows[ i ] ), idOf( high ), translationTo( 3001 + i % 2 ) );
      if ( high + 1 < lows[ i + 1 ] ) {
         free.push_back( high + 1 );
      }
   }
   draw.free = idOf( free[ random() % free.size() ] );
   return draw;
}

/// Interfaces with ranges of their own, sorted once.
template < class Sorter >
class Sorted {
 public:
   Sorted( const Case& what, Random& random ) : isWalked_( what.road == Road::RandomWalked ) {
      std::vector< std::pair< std::size_t, std::size_t > > order;   // interface, its range
      for ( std::size_t i = 0; i < what.interfaces; ++i ) {
         draws_.push_back( drawRanges( what.ranges, random ) );
         for ( std::size_t range = 0; range < what.ranges; ++range ) {
            order.emplace_back( i, range );
         }
      }
      if ( what.road == Road::RandomWalked ) {
         std::ranges::shuffle( order, random );
      }
      for ( const auto& [ i, number ] : order ) {
         const VlanRangeXlateMapping& range = draws_[ i ].ranges[ number ];
         for ( std::size_t vid = range.lowVid().value(); vid <= range.highVid().value(); ++vid ) {
            sorter_.add( intf( i ), idOf( vid ), range.mapping() );
         }
      }
      ( *this )();
   }

   // Joins nothing: the mapping is one that no other range has.
   void addOne() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sorter_.add( intf( i ), draws_[ i ].free, translationTo( 3003 ) );
      }
   }
   void deleteOne() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sorter_.del( intf( i ), draws_[ i ].free );
      }
   }
   void forget() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sorter_.forget( intf( i ) );
      }
   }

   std::size_t operator()() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sorter_.sort( intf( i ) );
         if ( isWalked_ ) {
            std::uint64_t sum = 0;
            sorter_.walk( intf( i ), [ & ]( const VlanRangeXlateMapping& range ) {
               sum = sum * 3 + range.lowVid().value() + range.highVid().value() +
                     bitsOf( range.mapping() );
            } );
            benchmark::DoNotOptimize( sum );
         }
      }
      return draws_.size();
   }

   std::vector< Ranges > orders() {
      std::vector< Ranges > orders( draws_.size() );
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sorter_.walk( intf( i ), [ & ]( const VlanRangeXlateMapping& range ) {
            orders[ i ].push_back( range );
         } );
      }
      return orders;
   }

 private:
   static IntfId intf( std::size_t i ) { return IntfId( i + 1 ); }

   std::vector< Draw > draws_;
   Sorter sorter_;
   bool isWalked_;
};

// After the first sort, after one more id, without it again, after a first sort once more.
template < class Sorter >
std::vector< std::vector< Ranges > >
someOrders( const Case& what ) {
   Random random( 4 );
   Sorted< Sorter > sorted( what, random );
   std::vector< std::vector< Ranges > > orders{ sorted.orders() };
   const auto sortAgain = [ & ] {
      sorted();
      orders.push_back( sorted.orders() );
   };
   sorted.addOne();
   sortAgain();
   sorted.deleteOne();
   sortAgain();
   sorted.forget();
   sortAgain();
   return orders;
}

template < class Sorter >
void
measureSort( const Row& row, const Case& what ) {
   measure( row, Sorter::kName, [ what, random = Random( 5 ) ]( benchmark::State& state ) mutable {
      bool odd = false;
      return nanosecondsPerOperation( state, [ & ] {
         Sorted< Sorter > sorted( what, random );
         if ( what.between == Between::Forgotten ) {
            sorted.forget();
         } else if ( what.between == Between::OneChange ) {
            odd = !odd;
            sorted.addOne();
            if ( odd ) {
               sorted();
               sorted.deleteOne();
            }
         }
         return sorted;
      } );
   } );
}

void
addRow( const Case& what ) {
   const Row row = rowOf( what );
   const auto orders = someOrders< SortedWorld >( what );
   measureSort< SortedWorld >( row, what );
   const auto peer = [ & ]< class Index >() {
      if ( someOrders< SortedPeer< Index > >( what ) != orders ) {
         throw std::runtime_error( row.name + ", " + SortedPeer< Index >::kName +
                                   ": another order than the library's" );
      }
      measureSort< SortedPeer< Index > >( row, what );
   };
   peer.operator()< TreeIndex< StdTree > >();
   peer.operator()< TreeIndex< AbslTree > >();
   peer.operator()< SortedVectorIndex >();
}

}   // namespace

void
Bench::addRows() {
   constexpr double kShown = std::numeric_limits< double >::infinity();
   const std::size_t many = tinyRun() ? 8 : 1024;
   const auto addWalked = []( std::size_t interfaces, std::size_t ranges, double changed ) {
      addRow( { Road::RandomWalked, interfaces, ranges, Between::OneChange, changed } );
      addRow( { Road::RandomWalked, interfaces, ranges, Between::Forgotten, kShown } );
   };
   addWalked( 64, 1, 0.90 );
   addWalked( 64, 16, 0.35 );
   addWalked( 16, 256, 0.09 );
   addWalked( 2, 2047, 0.07 );
   addWalked( many, 12, 0.40 );
   const auto addAlone = []( std::size_t interfaces, std::size_t ranges, double unchanged,
                             double changed ) {
      addRow( { Road::AscendingAlone, interfaces, ranges, Between::Nothing, unchanged } );
      addRow( { Road::AscendingAlone, interfaces, ranges, Between::OneChange, changed } );
      addRow( { Road::AscendingAlone, interfaces, ranges, Between::Forgotten, kShown } );
   };
   addAlone( 64, 1, 1.00, 1.00 );
   addAlone( 64, 16, 0.40, 0.40 );
   addAlone( 16, 256, 0.15, 0.20 );
   addAlone( 2, 2047, 0.15, 0.20 );
}
