// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// KeyTrie: values by 16-bit place, in order; the form of a KeyIndex that holds many.
//
// Shape      Three levels of pages, by 4, 6 and 6 bits of the place; a page has 64 slots and a bit
//            for each, so that the nearest one in use is found by counting zeros.
// Memory     A page for each 64 places of which one was reserved, until the trie goes.
// Cost       O(1).
// Throws     std::bad_alloc from reserve() alone.
#pragma once

#include <array>
#include <bit>
#include <cstdint>
#include <memory>

#include "Zel/KeyPlace.h"

namespace Zel {

template < class Value >
class KeyTrie {
 public:
   using At = KeyAt< Value >;

   /// The value at `place`, or null.
   Value* find( KeyPlace place ) const {
      Leaf* const page = leaf( place );
      return page && ( page->used & bit( leafSlot( place ) ) ) != 0
              ? &page->slots[ leafSlot( place ) ]
              : nullptr;
   }

   /// The first place in use at or above `place`, which may be kNoKeyPlace.
   At atOrAbove( std::uint32_t place ) const {
      for ( unsigned r = rootSlot( place ); r < kRootSlots; ++r, place = r << 12 ) {
         const Middle* const middle = root_[ r ].get();
         if ( !middle ) {
            continue;
         }
         const unsigned m = middleSlot( place );
         if ( Leaf* const page = middle->slots[ m ].get() ) {
            if ( const std::uint64_t rest = page->fromUp( leafSlot( place ) ); rest != 0 ) {
               return atSlot( place, *page, lowest( rest ) );
            }
         }
         if ( const std::uint64_t rest = middle->fromUp( m ) & ~bit( m ); rest != 0 ) {
            Leaf& page = *middle->slots[ lowest( rest ) ];
            return atSlot( r << 12 | lowest( rest ) << 6, page, lowest( page.used ) );
         }
      }
      return {};
   }

   /// The last place in use at or below `place`.
   At atOrBelow( std::uint32_t place ) const {
      for ( unsigned r = rootSlot( place );; place = --r << 12 | 0xfff ) {
         if ( const Middle* const middle = root_[ r ].get() ) {
            const unsigned m = middleSlot( place );
            if ( Leaf* const page = middle->slots[ m ].get() ) {
               if ( const std::uint64_t rest = page->fromDown( leafSlot( place ) ); rest != 0 ) {
                  return atSlot( place, *page, highest( rest ) );
               }
            }
            if ( const std::uint64_t rest = middle->fromDown( m ) & ~bit( m ); rest != 0 ) {
               Leaf& page = *middle->slots[ highest( rest ) ];
               return atSlot( r << 12 | highest( rest ) << 6, page, highest( page.used ) );
            }
         }
         if ( r == 0 ) {
            return {};
         }
      }
   }

   void around( KeyPlace place, KeyAround< Value >& found ) const {
      // Most often both stand in the place's own page.
      if ( Leaf* const page = leaf( place ) ) {
         const std::uint64_t below = page->fromDown( leafSlot( place ) );
         const std::uint64_t above = page->used & ~below;
         if ( below != 0 && above != 0 ) {
            found.below = atSlot( place, *page, highest( below ) );
            found.above = atSlot( place, *page, lowest( above ) );
            return;
         }
      }
      aroundPage( place, found );
   }

   /// Makes the pages on the way to `place`.
   void reserve( KeyPlace place ) {
      std::unique_ptr< Middle >& middle = root_[ rootSlot( place ) ];
      if ( !middle ) {
         middle = std::make_unique< Middle >();
      }
      std::unique_ptr< Leaf >& page = middle->slots[ middleSlot( place ) ];
      if ( !page ) {
         page = std::make_unique< Leaf >();
      }
   }

   /// Requires: `place` is reserved and not in use.
   Value& insert( KeyPlace place, const Value& value ) {
      Middle& middle = *root_[ rootSlot( place ) ];
      Leaf& page = *middle.slots[ middleSlot( place ) ];
      page.used |= bit( leafSlot( place ) );
      middle.used |= bit( middleSlot( place ) );
      return page.slots[ leafSlot( place ) ] = value;
   }

   /// Requires: `place` is in use.
   void erase( KeyPlace place ) {
      Middle& middle = *root_[ rootSlot( place ) ];
      Leaf& page = *middle.slots[ middleSlot( place ) ];
      page.used &= ~bit( leafSlot( place ) );
      if ( page.used == 0 ) {
         middle.used &= ~bit( middleSlot( place ) );
      }
   }

   /// Calls `visit` with each place and its value, in order.
   template < class Visit >
   void each( const Visit& visit ) const {
      for ( unsigned r = 0; r < kRootSlots; ++r ) {
         const Middle* const middle = root_[ r ].get();
         for ( std::uint64_t ms = middle ? middle->used : 0; ms != 0; ms &= ms - 1 ) {
            const Leaf& page = *middle->slots[ lowest( ms ) ];
            for ( std::uint64_t ls = page.used; ls != 0; ls &= ls - 1 ) {
               visit( static_cast< KeyPlace >( r << 12 | lowest( ms ) << 6 | lowest( ls ) ),
                      page.slots[ lowest( ls ) ] );
            }
         }
      }
   }

 private:
   static constexpr unsigned kRootSlots = 16;
   static constexpr unsigned kSlots = 64;

   // Which slots lead to something, and where to. A page may be there though the bit that leads to
   // it is clear.
   template < class Slot >
   struct Page {
      /// The bits of the slots in use from `slot` on, `slot` included.
      std::uint64_t fromUp( unsigned slot ) const { return used & ~std::uint64_t{ 0 } << slot; }
      std::uint64_t fromDown( unsigned slot ) const {
         return used & ~std::uint64_t{ 0 } >> ( kSlots - 1 - slot );
      }

      std::uint64_t used = 0;
      std::array< Slot, kSlots > slots{};
   };
   using Leaf = Page< Value >;
   using Middle = Page< std::unique_ptr< Leaf > >;

   static constexpr std::uint64_t bit( unsigned slot ) { return std::uint64_t{ 1 } << slot; }
   // Of bits that are not all clear.
   static unsigned lowest( std::uint64_t bits ) {
      return static_cast< unsigned >( std::countr_zero( bits ) );
   }
   static unsigned highest( std::uint64_t bits ) {
      return kSlots - 1 - static_cast< unsigned >( std::countl_zero( bits ) );
   }
   static unsigned rootSlot( std::uint32_t place ) { return place >> 12; }
   static unsigned middleSlot( std::uint32_t place ) { return place >> 6 & ( kSlots - 1 ); }
   static unsigned leafSlot( std::uint32_t place ) { return place & ( kSlots - 1 ); }

   // What stands in a page that holds `place`.
   static At atSlot( std::uint32_t place, Leaf& page, unsigned slot ) {
      return { ( place & ~( kSlots - 1 ) ) | slot, &page.slots[ slot ] };
   }
   [[gnu::noinline]] void aroundPage( KeyPlace place, KeyAround< Value >& found ) const {
      found.below = atOrBelow( place );
      found.above = atOrAbove( place + 1u );
   }
   Leaf* leaf( std::uint32_t place ) const {
      const Middle* const middle = root_[ rootSlot( place ) ].get();
      return middle ? middle->slots[ middleSlot( place ) ].get() : nullptr;
   }

   std::array< std::unique_ptr< Middle >, kRootSlots > root_;
};

}   // namespace Zel
