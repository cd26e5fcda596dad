// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// One rebuild of an interface's size order against clearing and refilling a tree: ns per sort.
//
// A pass sorts a few interfaces, one after the other, whose ranges are drawn for it and were sorted
// before, untimed; so is the change between the two sorts. The trees read their ranges from a
// std::map by start. The orders are compared before anything is timed.
#include <absl/container/btree_set.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <numeric>
#include <set>
#include <stdexcept>
#include <string>
#include <unordered_map>
#include <vector>

#include "MoxVlanMapping/VlanRange.h"
#include "bench/Report.h"
#include "bench/Workloads.h"
#include "bench/World.h"

namespace {

using namespace Bench;
using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using MoxVlanMapping::VlanRangeXlateMapping;

using Ranges = std::vector< VlanRangeXlateMapping >;

enum class Between { Nothing, OneChange, Forgotten };

struct Case {
   std::size_t ranges;
   std::size_t interfaces;
   Between between;
   std::vector< Goal > goals;
};

std::string
rowName( const Case& row ) {
   const std::string ranges =
      std::to_string( row.ranges ) + ( row.ranges == 1 ? " range" : " ranges" );
   switch ( row.between ) {
   case Between::Nothing:
      return ranges + ", unchanged";
   case Between::OneChange:
      return ranges + ", after one add or delete";
   case Between::Forgotten:
      return ranges + ", first sort";
   }
   return ranges;
}

VlanId
idOf( std::size_t number ) {
   return VlanId::fromRaw( static_cast< std::uint16_t >( number ) );
}

VlanXlateMapping
translationTo( std::size_t vlan ) {
   return VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( vlan ) );
}

/// Ranges that begin and end anywhere, and an id that none of them holds.
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

class LibrarySort {
 public:
   static constexpr const char* kName = kLibrary;

   void store( IntfId intf, const VlanRangeXlateMapping& range ) {
      const auto entry = world_.ranges->vlanRangeEntryIs( intf );
      entry->vlanIdRangeIs( range );
      entry->revSortedStartVidIs( range.lowVid().value(), true );
   }
   void add( IntfId intf, VlanId vid, VlanXlateMapping mapping ) {
      world_.mgr->addVlanToIdx( intf, vid, mapping );
   }
   void del( IntfId intf, VlanId vid ) { world_.mgr->deleteVlanFromIdx( intf, vid ); }
   void sort( IntfId intf ) { world_.codef->sortVlanRangeBySize( intf ); }
   void forget( IntfId intf ) {
      world_.codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDel( intf );
   }

   Ranges order( IntfId intf ) const {
      Ranges order;
      const auto entry = world_.codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intf );
      for ( const auto& element : entry->vidRangeSorted() ) {
         order.push_back( element.key() );
      }
      return order;
   }

 private:
   World world_;
};

using StdOrder = std::set< VlanRangeXlateMapping >;
using AbslOrder = absl::btree_set< VlanRangeXlateMapping >;

template < class Order >
struct OrderName {
   static constexpr const char* value = "std::set";
};
template <>
struct OrderName< AbslOrder > {
   static constexpr const char* value = "btree_set";
};

template < class Order >
class TreeSort {
 public:
   static constexpr const char* kName = OrderName< Order >::value;

   void store( IntfId intf, const VlanRangeXlateMapping& range ) {
      interfaces_[ intf.value() ].ranges.emplace( range.lowVid().value(), range );
   }
   // Joins nothing: the mapping is one that no other range has.
   void add( IntfId intf, VlanId vid, VlanXlateMapping mapping ) {
      store( intf, { vid, vid, mapping } );
   }
   void del( IntfId intf, VlanId vid ) { interfaces_[ intf.value() ].ranges.erase( vid.value() ); }
   void sort( IntfId intf ) {
      Interface& sorted = interfaces_[ intf.value() ];
      sorted.order.clear();
      for ( const auto& [ low, range ] : sorted.ranges ) {
         sorted.order.insert( range );
      }
   }
   void forget( IntfId intf ) { interfaces_[ intf.value() ].order = Order(); }

   Ranges order( IntfId intf ) const {
      const Order& order = interfaces_.at( intf.value() ).order;
      return { order.begin(), order.end() };
   }

 private:
   struct Interface {
      std::map< std::uint16_t, VlanRangeXlateMapping > ranges;
      Order order;
   };
   std::unordered_map< std::uint64_t, Interface > interfaces_;
};

/// Interfaces with ranges of their own, sorted once.
template < class Sort >
class Sorted {
 public:
   Sorted( const Case& row, Random& random ) {
      for ( std::size_t i = 0; i < row.interfaces; ++i ) {
         draws_.push_back( drawRanges( row.ranges, random ) );
         for ( const VlanRangeXlateMapping& range : draws_.back().ranges ) {
            sort_.store( intf( i ), range );
         }
      }
      ( *this )();
   }

   void addOne() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sort_.add( intf( i ), draws_[ i ].free, translationTo( 3003 ) );
      }
   }
   void deleteOne() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sort_.del( intf( i ), draws_[ i ].free );
      }
   }
   void forget() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sort_.forget( intf( i ) );
      }
   }

   std::size_t operator()() {
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         sort_.sort( intf( i ) );
      }
      return draws_.size();
   }

   std::vector< Ranges > orders() const {
      std::vector< Ranges > orders;
      for ( std::size_t i = 0; i < draws_.size(); ++i ) {
         orders.push_back( sort_.order( intf( i ) ) );
      }
      return orders;
   }

 private:
   static IntfId intf( std::size_t i ) { return IntfId( i + 1 ); }

   std::vector< Draw > draws_;
   Sort sort_;
};

// After the first sort, after one more id, without it again.
template < class Sort >
std::vector< std::vector< Ranges > >
someOrders( const Case& row ) {
   Random random( 4 );
   Sorted< Sort > sorted( row, random );
   std::vector< std::vector< Ranges > > orders{ sorted.orders() };
   sorted.addOne();
   sorted();
   orders.push_back( sorted.orders() );
   sorted.deleteOne();
   sorted();
   orders.push_back( sorted.orders() );
   return orders;
}

void
requireSameOrders( const Case& row ) {
   const auto library = someOrders< LibrarySort >( row );
   if ( library != someOrders< TreeSort< StdOrder > >( row ) ||
        library != someOrders< TreeSort< AbslOrder > >( row ) ) {
      throw std::runtime_error( rowName( row ) + ": library and trees sort differently" );
   }
}

template < class Sort >
void
measureSort( const Row& row, const Case& what ) {
   measure( row, Sort::kName, [ what, random = Random( 5 ) ]( benchmark::State& state ) mutable {
      bool odd = false;
      return nanosecondsPerOperation( state, [ & ] {
         Sorted< Sort > sorted( what, random );
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
   requireSameOrders( what );
   const Row row{ "Size sort: ns per sort of one interface", rowName( what ), what.goals };
   measureSort< LibrarySort >( row, what );
   measureSort< TreeSort< StdOrder > >( row, what );
   measureSort< TreeSort< AbslOrder > >( row, what );
}

// Goals against std::set; of a first sort there is none, as nodes must be fetched.
void
addRows( std::size_t ranges, std::size_t interfaces, double unchanged, double changed ) {
   const auto goal = []( double limit ) { return std::vector{ ratioTo( "std::set", limit ) }; };
   addRow( { ranges, interfaces, Between::Nothing, goal( unchanged ) } );
   addRow( { ranges, interfaces, Between::OneChange, goal( changed ) } );
   addRow( { ranges, interfaces, Between::Forgotten, { shownBeside( "std::set" ) } } );
}

}   // namespace

void
Bench::addRows() {
   ::addRows( 1, 64, 1.00, 1.00 );
   ::addRows( 16, 64, 0.40, 0.40 );
   ::addRows( 256, 16, 0.15, 0.20 );
   ::addRows( 2047, 2, 0.15, 0.20 );
}
