// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Peers: other ways to keep the VLAN ids of each interface merged into ranges of one mapping.
//
//   TwoMapsIndex       what the library's structures ask, done naively: two std::map, each change
//                      deletes and reinserts, no search serves two questions
//   TreeIndex          one ordered map, one search per operation, ranges grow and shrink in place;
//                      with std::map and with absl::btree_map
//   IclIndex           Boost.ICL interval_map, static right-open intervals
//   SortedVectorIndex  one sorted std::vector
//   FlatIndex          a slot per VLAN id and a bit per start: searches nothing, 33 KB an interface
//
// No workload adds an id that another mapping holds. add() of an id that is held and del() of one
// that is not change nothing.
//
// Form     Each is the index of one interface; ByInterface makes it one of many.
// Threads  One.
#pragma once

#include <absl/container/btree_map.h>

#include <algorithm>
#include <array>
#include <bit>
#include <bitset>
#include <boost/icl/interval_map.hpp>
#include <boost/icl/right_open_interval.hpp>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <memory>
#include <unordered_map>
#include <utility>
#include <vector>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"

namespace Bench {

using Vid = std::uint16_t;
using Mapping = Bridging::VlanXlateMapping;

/// All 64 bits of a mapping, to be stored as a number.
inline std::uint64_t
bitsOf( Mapping mapping ) {
   return std::bit_cast< std::uint64_t >( mapping );
}

/// One range of one interface, the form in which results are compared.
struct StoredRange {
   std::uint64_t intf;
   Vid low;
   Vid high;
   std::uint64_t mapping;
   friend auto operator<=>( const StoredRange&, const StoredRange& ) = default;
};

/// The index of all interfaces over that of one. Remembers the interface of the last call, as a user
/// would.
template < class OneInterface >
class ByInterface {
 public:
   static constexpr const char* kName = OneInterface::kName;

   ByInterface() = default;
   ByInterface( ByInterface&& ) = default;   // and no copy: last_ points into interfaces_

   void add( Corvel::IntfId intf, Bridging::VlanId vid, Mapping mapping ) {
      of( intf ).add( vid.value(), mapping );
   }
   void del( Corvel::IntfId intf, Bridging::VlanId vid ) { of( intf ).del( vid.value() ); }

   /// The interface's index; an empty one is made when there is none.
   OneInterface& of( Corvel::IntfId intf ) {
      return last_ && last_->first == intf.value() ? last_->second : search( intf.value() );
   }

   std::vector< StoredRange > ranges() const {
      std::vector< StoredRange > all;
      for ( const auto& [ intf, index ] : interfaces_ ) {
         index.forEach( [ &, intf = intf ]( Vid low, Vid high, Mapping mapping ) {
            all.push_back( { intf, low, high, bitsOf( mapping ) } );
         } );
      }
      std::ranges::sort( all );
      return all;
   }

 private:
   using Interfaces = std::unordered_map< std::uint64_t, OneInterface >;

   OneInterface& search( std::uint64_t intf ) {
      last_ = &*interfaces_.try_emplace( intf ).first;
      return last_->second;
   }

   Interfaces interfaces_;
   typename Interfaces::value_type* last_ = nullptr;
};

struct HighAndMapping {
   Vid high;
   Mapping mapping;
};

class TwoMapsIndex {
 public:
   static constexpr const char* kName = "two maps";

   void add( Vid vid, Mapping mapping ) {
      if ( holds( vid ) ) {
         return;
      }
      Vid low = vid;
      Vid high = vid;
      if ( const auto start = starts_.lower_bound( vid ); start != starts_.end() ) {
         const auto left = ranges_.find( start->first );
         if ( left->second.high + 1 == vid && left->second.mapping == mapping ) {
            low = left->first;
         }
      }
      if ( const auto right = ranges_.find( static_cast< Vid >( vid + 1 ) );
           right != ranges_.end() && right->second.mapping == mapping ) {
         high = right->second.high;
         erase( right->first );
      }
      if ( low != vid ) {
         erase( low );
      }
      insert( low, { high, mapping } );
   }

   void del( Vid vid ) {
      if ( !holds( vid ) ) {
         return;
      }
      const Vid low = starts_.lower_bound( vid )->first;
      const HighAndMapping range = ranges_.find( low )->second;
      erase( low );
      if ( low < vid ) {
         insert( low, { static_cast< Vid >( vid - 1 ), range.mapping } );
      }
      if ( vid < range.high ) {
         insert( static_cast< Vid >( vid + 1 ), range );
      }
   }

   template < class Visit >
   void forEach( const Visit& visit ) const {
      for ( const auto& [ low, range ] : ranges_ ) {
         visit( low, range.high, range.mapping );
      }
   }

 private:
   bool holds( Vid vid ) const {
      const auto start = starts_.lower_bound( vid );   // the order is reversed: the start below
      return start != starts_.end() && vid <= ranges_.find( start->first )->second.high;
   }
   void insert( Vid low, HighAndMapping range ) {
      ranges_.emplace( low, range );
      starts_.emplace( low, true );
   }
   void erase( Vid low ) {
      ranges_.erase( low );
      starts_.erase( low );
   }

   std::map< Vid, HighAndMapping > ranges_;
   std::map< Vid, bool, std::greater<> > starts_;
};

/// The key of TreeIndex. A range's start moves in place: it stays between its neighbours.
struct Start {
   mutable Vid low;
   friend bool operator<( Start a, Start b ) { return a.low < b.low; }
};

template < class Tree >
struct TreeName;

using StdTree = std::map< Start, HighAndMapping >;
template <>
struct TreeName< StdTree > {
   static constexpr const char* value = "map";
};

using AbslTree = absl::btree_map< Start, HighAndMapping >;
template <>
struct TreeName< AbslTree > {
   static constexpr const char* value = "btree";
};

template < class Tree >
class TreeIndex {
 public:
   static constexpr const char* kName = TreeName< Tree >::value;

   void add( Vid vid, Mapping mapping ) {
      const auto above = ranges_.upper_bound( Start{ vid } );
      const bool joinsRight = above != ranges_.end() && above->first.low == vid + 1 &&
                              bitsOf( above->second.mapping ) == bitsOf( mapping );
      if ( above != ranges_.begin() ) {
         HighAndMapping& below = std::prev( above )->second;
         if ( vid <= below.high ) {
            return;
         }
         if ( below.high + 1 == vid && bitsOf( below.mapping ) == bitsOf( mapping ) ) {
            below.high = joinsRight ? above->second.high : vid;
            if ( joinsRight ) {
               ranges_.erase( above );
            }
            return;
         }
      }
      if ( joinsRight ) {
         above->first.low = vid;
      } else {
         ranges_.emplace_hint( above, Start{ vid }, HighAndMapping{ vid, mapping } );
      }
   }

   void del( Vid vid ) {
      const auto above = ranges_.upper_bound( Start{ vid } );
      if ( above == ranges_.begin() ) {
         return;
      }
      const auto at = std::prev( above );
      const HighAndMapping range = at->second;
      if ( range.high < vid ) {
         return;
      }
      if ( at->first.low == range.high ) {
         ranges_.erase( at );
      } else if ( at->first.low == vid ) {
         at->first.low = static_cast< Vid >( vid + 1 );
      } else {
         at->second.high = static_cast< Vid >( vid - 1 );
         if ( vid < range.high ) {
            ranges_.emplace_hint( above, Start{ static_cast< Vid >( vid + 1 ) }, range );
         }
      }
   }

   template < class Visit >
   void forEach( const Visit& visit ) const {
      for ( const auto& [ start, range ] : ranges_ ) {
         visit( start.low, range.high, range.mapping );
      }
   }

 private:
   Tree ranges_;
};

class IclIndex {
 public:
   static constexpr const char* kName = "ICL";

   // interval_map would combine the values of an id that comes twice; none does here.
   void add( Vid vid, Mapping mapping ) { ranges_.add( { interval( vid ), bitsOf( mapping ) } ); }
   void del( Vid vid ) { ranges_.erase( interval( vid ) ); }

   template < class Visit >
   void forEach( const Visit& visit ) const {
      for ( const auto& [ ids, mapping ] : ranges_ ) {
         visit( ids.lower(), static_cast< Vid >( ids.upper() - 1 ),
                std::bit_cast< Mapping >( mapping ) );
      }
   }

 private:
   using Interval = boost::icl::right_open_interval< Vid >;
   static Interval interval( Vid vid ) { return { vid, static_cast< Vid >( vid + 1 ) }; }

   boost::icl::interval_map< Vid, std::uint64_t, boost::icl::partial_enricher, std::less,
                             boost::icl::inplace_plus, boost::icl::inter_section, Interval >
      ranges_;
};

class SortedVectorIndex {
 public:
   static constexpr const char* kName = "sorted vector";

   void add( Vid vid, Mapping mapping ) {
      const auto above = firstAbove( vid );
      const bool joinsRight = above != ranges_.end() && above->low == vid + 1 &&
                              bitsOf( above->mapping ) == bitsOf( mapping );
      if ( above != ranges_.begin() ) {
         Range& below = *std::prev( above );
         if ( vid <= below.high ) {
            return;
         }
         if ( below.high + 1 == vid && bitsOf( below.mapping ) == bitsOf( mapping ) ) {
            below.high = joinsRight ? above->high : vid;
            if ( joinsRight ) {
               ranges_.erase( above );
            }
            return;
         }
      }
      if ( joinsRight ) {
         above->low = vid;
      } else {
         ranges_.insert( above, { vid, vid, mapping } );
      }
   }

   void del( Vid vid ) {
      const auto above = firstAbove( vid );
      if ( above == ranges_.begin() || std::prev( above )->high < vid ) {
         return;
      }
      Range& range = *std::prev( above );
      if ( range.low == range.high ) {
         ranges_.erase( std::prev( above ) );
      } else if ( range.low == vid ) {
         range.low = static_cast< Vid >( vid + 1 );
      } else {
         const Vid high = std::exchange( range.high, static_cast< Vid >( vid - 1 ) );
         if ( vid < high ) {
            ranges_.insert( above, { static_cast< Vid >( vid + 1 ), high, range.mapping } );
         }
      }
   }

   template < class Visit >
   void forEach( const Visit& visit ) const {
      for ( const Range& range : ranges_ ) {
         visit( range.low, range.high, range.mapping );
      }
   }

 private:
   struct Range {
      Vid low;
      Vid high;
      Mapping mapping;
   };
   std::vector< Range >::iterator firstAbove( Vid vid ) {
      return std::ranges::upper_bound( ranges_, vid, {}, &Range::low );
   }

   std::vector< Range > ranges_;
};

class FlatIndex {
 public:
   static constexpr const char* kName = "flat";

   void add( Vid vid, Mapping mapping ) {
      const std::uint64_t bits = bitsOf( mapping );
      table_->mapping[ vid ] = bits;
      table_->starts[ vid ] = table_->mapping[ vid - 1u ] != bits;
      if ( table_->mapping[ vid + 1u ] == bits ) {
         table_->starts[ vid + 1u ] = false;
      }
   }

   void del( Vid vid ) {
      const std::uint64_t bits = std::exchange( table_->mapping[ vid ], 0 );
      table_->starts[ vid ] = false;
      if ( bits != 0 && table_->mapping[ vid + 1u ] == bits ) {
         table_->starts[ vid + 1u ] = true;
      }
   }

   template < class Visit >
   void forEach( const Visit& visit ) const {
      for ( std::size_t low = 1; low < kSlots - 1; ++low ) {
         if ( table_->starts[ low ] ) {
            std::size_t high = low;
            while ( table_->mapping[ high + 1 ] == table_->mapping[ low ] ) {
               ++high;
            }
            visit( static_cast< Vid >( low ), static_cast< Vid >( high ),
                   std::bit_cast< Mapping >( table_->mapping[ low ] ) );
         }
      }
   }

 private:
   // Slots 0 and 4095 stay empty: every id has two neighbours.
   static constexpr std::size_t kSlots = Bridging::VlanId::kHighest + 2;
   struct Table {
      std::array< std::uint64_t, kSlots > mapping{};   // 0: nothing there
      std::bitset< kSlots > starts;
   };
   std::unique_ptr< Table > table_ = std::make_unique< Table >();
};

/// The containers that goals speak of: calls visit.operator()< Index >() with each.
template < class Visit >
void
forEachContainer( const Visit& visit ) {
   visit.template operator()< TreeIndex< StdTree > >();
   visit.template operator()< IclIndex >();
   visit.template operator()< TreeIndex< AbslTree > >();
   visit.template operator()< SortedVectorIndex >();
}

/// These, and the two that show what the structures cost done naively and without any search.
template < class Visit >
void
forEachPeer( const Visit& visit ) {
   forEachContainer( visit );
   visit.template operator()< TwoMapsIndex >();
   visit.template operator()< FlatIndex >();
}

}   // namespace Bench
