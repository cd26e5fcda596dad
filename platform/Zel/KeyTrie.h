// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyTrie: pointers by 16-bit place, in order.
//
// Shape      Three levels of pages, by 4, 6 and 6 bits of the place; a page has 64 slots and a bit
//            for each, so that the next one in use is found by counting zeros.
// Ownership  Plain pointers; whoever uses it holds what they point to.
// Memory     A page of 520 bytes for each 64 places of which one was reserved, until it goes.
// Cost       O(1).
// Throws     std::bad_alloc from reserve() alone.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>
#include <utility>

namespace Zel {

template < class Node >
class KeyTrie {
 public:
   using Place = std::uint16_t;
   static constexpr std::uint32_t kNoPlace = 0x10000;

   Node* find( Place place ) const {
      const Leaf* page = leaf( place );
      return page ? page->slots[ leafSlot( place ) ] : nullptr;
   }

   /// The first place in use at or behind `place`; kNoPlace for none.
   std::uint32_t placeOrNext( Place place ) const {
      unsigned r = rootSlot( place );
      if ( const Middle* above = root_.slots[ r ].get() ) {
         unsigned m = middleSlot( place );
         if ( const Leaf* page = above->slots[ m ].get() ) {
            if ( const unsigned l = page->from( leafSlot( place ) ); l < kSlots ) {
               return r << 12 | m << 6 | l;
            }
         }
         m = above->from( m + 1 );
         if ( m < kSlots ) {
            return r << 12 | m << 6 | above->slots[ m ]->from( 0 );
         }
      }
      r = root_.from( r + 1 );
      if ( r == kSlots ) {
         return kNoPlace;
      }
      const Middle& above = *root_.slots[ r ];
      const unsigned m = above.from( 0 );
      return r << 12 | m << 6 | above.slots[ m ]->from( 0 );
   }

   /// Makes the pages on the way to `place` and returns what stands there, or null.
   Node* reserve( Place place ) {
      std::unique_ptr< Middle >& above = root_.slots[ rootSlot( place ) ];
      if ( !above ) {
         above = std::make_unique< Middle >();
      }
      std::unique_ptr< Leaf >& page = above->slots[ middleSlot( place ) ];
      if ( !page ) {
         page = std::make_unique< Leaf >();
      }
      return page->slots[ leafSlot( place ) ];
   }

   /// Requires: `place` is reserved and empty.
   void insert( Place place, Node* node ) {
      Middle& above = *root_.slots[ rootSlot( place ) ];
      Leaf& page = *above.slots[ middleSlot( place ) ];
      page.slots[ leafSlot( place ) ] = node;
      page.used |= bit( leafSlot( place ) );
      above.used |= bit( middleSlot( place ) );
      root_.used |= bit( rootSlot( place ) );
   }

   /// Takes out what stands at `place`; null when that is nothing.
   Node* take( Place place ) {
      Middle* const above = middle( place );
      Leaf* const page = above ? above->slots[ middleSlot( place ) ].get() : nullptr;
      if ( !page ) {
         return nullptr;
      }
      page->used &= ~bit( leafSlot( place ) );
      if ( page->used == 0 ) {
         above->used &= ~bit( middleSlot( place ) );
         if ( above->used == 0 ) {
            root_.used &= ~bit( rootSlot( place ) );
         }
      }
      return std::exchange( page->slots[ leafSlot( place ) ], nullptr );
   }

   /// Calls `visit` with each place and what stands there, in order.
   template < class Visit >
   void each( const Visit& visit ) const {
      for ( unsigned r = root_.from( 0 ); r < kSlots; r = root_.from( r + 1 ) ) {
         const Middle& above = *root_.slots[ r ];
         for ( unsigned m = above.from( 0 ); m < kSlots; m = above.from( m + 1 ) ) {
            const Leaf& page = *above.slots[ m ];
            for ( unsigned l = page.from( 0 ); l < kSlots; l = page.from( l + 1 ) ) {
               visit( static_cast< Place >( r << 12 | m << 6 | l ), page.slots[ l ] );
            }
         }
      }
   }

 private:
   static constexpr unsigned kSlots = 64;

   // Which slots lead to something, and where to. A page may be there though the bit that leads to
   // it is clear.
   template < class Slot >
   struct Page {
      /// The first slot in use at or behind `slot`, which may be kSlots; kSlots for none.
      unsigned from( unsigned slot ) const {
         const std::uint64_t rest = slot < kSlots ? used >> slot : 0;
         return rest != 0 ? slot + static_cast< unsigned >( std::countr_zero( rest ) ) : kSlots;
      }

      std::uint64_t used = 0;
      std::array< Slot, kSlots > slots{};
   };
   using Leaf = Page< Node* >;
   using Middle = Page< std::unique_ptr< Leaf > >;

   static constexpr std::uint64_t bit( unsigned slot ) { return std::uint64_t{ 1 } << slot; }
   static unsigned rootSlot( std::uint32_t place ) { return place >> 12; }
   static unsigned middleSlot( std::uint32_t place ) { return place >> 6 & ( kSlots - 1 ); }
   static unsigned leafSlot( std::uint32_t place ) { return place & ( kSlots - 1 ); }

   Middle* middle( std::uint32_t place ) const { return root_.slots[ rootSlot( place ) ].get(); }
   Leaf* leaf( std::uint32_t place ) const {
      const Middle* above = middle( place );
      return above ? above->slots[ middleSlot( place ) ].get() : nullptr;
   }

   Page< std::unique_ptr< Middle > > root_;
};

}   // namespace Zel
