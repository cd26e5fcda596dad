// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeSlots: what an interface's two collections store, by start id: one slot for each id at which
// a range starts, or is said to start.
//
// Lanes      A slot is in use by `kRange`, by `kStart`, or by both, as those who keep the
//            collections in step see to.
// Shape      Up to kMaxArraySize slots form a sorted array, more of them 64 pages of 64 slots each,
//            with a bit for each slot and lane. Numbers that are no VLAN ids (VlanId::fromRaw())
//            stay in the array.
// Memory     16 bytes a slot of the array, which doubles; 664 bytes a page, made when one of its ids
//            is reserved. Nothing is given back before trim().
// Cost       O(1), counting the at most kMaxArraySize moves in the array as such, while both lanes
//            use the same slots; else a search is O(n) in the slots of the other lane alone.
// Throws     std::bad_alloc from reserve() alone, with nothing changed.
// Threads    One thread, no locks; that goes for searches too, which remember what they found.
#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Bridging/VlanXlateMapping.h"

namespace MoxVlanMapping {

class RangeSlots {
 public:
   enum Lane : unsigned { kRange, kStart };
   static constexpr std::size_t kMaxArraySize = 256;
   /// Above every id; stands for none.
   static constexpr std::uint32_t kNone = 0x10000;

   struct Range {
      std::uint16_t high = 0;
      Bridging::VlanXlateMapping mapping;
   };
   /// A slot in use, until the next change. `range` is meaningful where the range lane uses it.
   struct At {
      std::uint32_t id = kNone;
      std::uint32_t index = 0;   // in the array
      const Range* range = nullptr;

      explicit operator bool() const { return range != nullptr; }
   };

   RangeSlots() = default;
   RangeSlots( const RangeSlots& ) = delete;
   RangeSlots& operator=( const RangeSlots& ) = delete;

   bool has( Lane lane, std::uint32_t id ) const { return static_cast< bool >( find( lane, id ) ); }
   At find( Lane lane, std::uint32_t id ) const;
   /// The lane's last slot at or below `id`.
   At floor( Lane lane, std::uint32_t id ) const;
   /// The lane's first slot at or above `id`, which may be kNone.
   At ceiling( Lane lane, std::uint32_t id ) const;
   /// The range of a slot that is in use; null when the range lane does not use it.
   const Range* rangeOf( At at ) const;
   /// The flag of a slot that the start lane uses.
   bool flag( At at ) const;
   void flagIs( std::uint32_t id, bool flag );

   /// Makes room for a slot at `id` beside what is there, and for any `others` that were reserved
   /// before. Trimming loses it.
   void reserve( std::uint32_t id, std::size_t others );
   /// The range of a slot, and whether the lane did not use the slot before.
   struct Inserted {
      Range& range;
      bool isNew;
   };
   /// Lets the lane use the slot at `id`. Requires: room for the slot, unless a lane uses it.
   Inserted insert( Lane lane, std::uint32_t id );
   /// Requires: the lane uses the slot.
   void erase( Lane lane, At at );
   /// Gives memory back that is not needed for what is stored.
   void trim();

   /// Calls `visit( id, range )` for each slot of the lane in ascending order. Requires: `visit`
   /// does not change anything here.
   template < class Visit >
   void forEach( Lane lane, const Visit& visit ) const;

   /// For tests: asserts order, bits and counts.
   void verify() const;

 private:
   static constexpr unsigned kPageSize = 64;
   static constexpr std::uint32_t kPaged = kPageSize * kPageSize;   // ids below it go into pages
   static constexpr std::size_t kNowhere = ~std::size_t{ 0 };

   // Aligned, so that an index is found by a shift.
   struct alignas( 8 ) Slot {
      std::uint16_t id = 0;
      std::uint8_t lanes = 0;   // a bit for each
      bool flag = false;
      Range range;
   };
   struct Page {
      std::array< std::uint64_t, 2 > used{};
      std::uint64_t flags = 0;
      std::array< Range, kPageSize > ranges{};
   };
   struct Pages {
      At find( Lane lane, std::uint32_t id ) const;
      At floor( Lane lane, std::uint32_t id ) const;
      At ceiling( Lane lane, std::uint32_t id ) const;

      std::array< std::uint64_t, 2 > used{};   // pages with a slot in use
      std::size_t slots = 0;
      std::array< std::unique_ptr< Page >, kPageSize > pages;
   };

   static std::uint64_t bit( std::uint32_t slot ) { return std::uint64_t{ 1 } << slot; }
   static std::uint8_t bit( Lane lane ) { return static_cast< std::uint8_t >( 1u << lane ); }
   // Of bits that are not all clear.
   static unsigned lowest( std::uint64_t bits ) {
      return static_cast< unsigned >( std::countr_zero( bits ) );
   }
   static unsigned highest( std::uint64_t bits ) {
      return kPageSize - 1 - static_cast< unsigned >( std::countl_zero( bits ) );
   }
   static std::uint32_t pageOf( std::uint32_t id ) { return id / kPageSize; }
   static std::uint32_t slotOf( std::uint32_t id ) { return id % kPageSize; }
   static At at( std::uint32_t page, const Page& slots, unsigned slot ) {
      return { page * kPageSize + slot, 0, &slots.ranges[ slot ] };
   }

   bool isPaged( std::uint32_t id ) const { return pages_ && id < kPaged; }
   /// Where the array's first slot that is not below `id` is, or would be.
   std::size_t indexOf( std::uint32_t id ) const;
   bool isIndexOf( std::size_t index, std::uint32_t id ) const;
   std::size_t search( std::uint32_t id ) const;
   At arrayFind( Lane lane, std::uint32_t id ) const;
   At arrayFloor( Lane lane, std::uint32_t id ) const;
   At arrayCeiling( Lane lane, std::uint32_t id ) const;
   void arrayErase( Lane lane, std::size_t index );
   [[gnu::always_inline]] At inArray( std::size_t index ) const {
      const Slot& slot = array_.data()[ index ];
      return { slot.id, static_cast< std::uint32_t >( index ), &slot.range };
   }
   [[gnu::always_inline]] bool uses( Lane lane, std::size_t index ) const {
      return ( array_.data()[ index ].lanes & bit( lane ) ) != 0;
   }
   Slot& insertSlot( std::uint32_t id );
   Slot& newSlot( std::uint16_t id, std::size_t index );
   void arrayReserve( std::uint32_t id, std::size_t others );
   void toPages();
   void toArray();

   std::unique_ptr< Pages > pages_;
   std::vector< Slot > array_;
   mutable std::size_t lastIndex_ = 0;   // found last: changes come in runs of neighbouring ids
   // A slot that no lane uses any more. The next insertion takes it, so that a range which moves its
   // start moves nothing else.
   std::size_t vacant_ = kNowhere;
};

// By pointers here and below: the checks of a vector's index cost more than the search.
[[gnu::always_inline]] inline bool
RangeSlots::isIndexOf( std::size_t index, std::uint32_t id ) const {
   const Slot* const slots = array_.data();
   const std::size_t size = array_.size();
   return index <= size && ( index == size || slots[ index ].id >= id ) &&
          ( index == 0 || slots[ index - 1 ].id < id );
}

[[gnu::always_inline]] inline std::size_t
RangeSlots::indexOf( std::uint32_t id ) const {
   const std::size_t last = lastIndex_;
   if ( isIndexOf( last, id ) ) {
      return last;
   }
   if ( isIndexOf( last + 1, id ) ) {
      return lastIndex_ = last + 1;
   }
   if ( last > 0 && isIndexOf( last - 1, id ) ) {
      return lastIndex_ = last - 1;
   }
   return search( id );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::Pages::find( Lane lane, std::uint32_t id ) const {
   const Page* const page = pages[ pageOf( id ) ].get();
   return page && ( page->used[ lane ] & bit( slotOf( id ) ) ) != 0
           ? at( pageOf( id ), *page, slotOf( id ) )
           : At{};
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::Pages::floor( Lane lane, std::uint32_t id ) const {
   std::uint32_t number = pageOf( id );
   if ( const Page* const page = pages[ number ].get() ) {
      const std::uint64_t below =
         page->used[ lane ] & ~std::uint64_t{ 0 } >> ( kPageSize - 1 - slotOf( id ) );
      if ( below != 0 ) {
         return at( number, *page, highest( below ) );
      }
   }
   const std::uint64_t below = used[ lane ] & ( bit( number ) - 1 );
   if ( below == 0 ) {
      return {};
   }
   number = highest( below );
   return at( number, *pages[ number ], highest( pages[ number ]->used[ lane ] ) );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::Pages::ceiling( Lane lane, std::uint32_t id ) const {
   std::uint32_t number = pageOf( id );
   if ( const Page* const page = pages[ number ].get() ) {
      const std::uint64_t above = page->used[ lane ] & ~std::uint64_t{ 0 } << slotOf( id );
      if ( above != 0 ) {
         return at( number, *page, lowest( above ) );
      }
   }
   const std::uint64_t above = used[ lane ] & ~( bit( number ) | ( bit( number ) - 1 ) );
   if ( above == 0 ) {
      return {};
   }
   number = lowest( above );
   return at( number, *pages[ number ], lowest( pages[ number ]->used[ lane ] ) );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::find( Lane lane, std::uint32_t id ) const {
   return isPaged( id ) ? pages_->find( lane, id ) : arrayFind( lane, id );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::floor( Lane lane, std::uint32_t id ) const {
   return isPaged( id ) ? pages_->floor( lane, id ) : arrayFloor( lane, id );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::ceiling( Lane lane, std::uint32_t id ) const {
   if ( isPaged( id ) ) {
      const At found = pages_->ceiling( lane, id );
      if ( found || array_.empty() ) {
         return found;
      }
   }
   return arrayCeiling( lane, id );
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::arrayFind( Lane lane, std::uint32_t id ) const {
   const std::size_t index = indexOf( id );
   return index < array_.size() && array_.data()[ index ].id == id && uses( lane, index )
           ? inArray( index )
           : At{};
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::arrayFloor( Lane lane, std::uint32_t id ) const {
   for ( std::size_t index = indexOf( id + 1 ); index > 0; --index ) {
      if ( uses( lane, index - 1 ) ) {
         return inArray( index - 1 );
      }
   }
   return pages_ ? pages_->floor( lane, kPaged - 1 ) : At{};
}

[[gnu::always_inline]] inline RangeSlots::At
RangeSlots::arrayCeiling( Lane lane, std::uint32_t id ) const {
   for ( std::size_t index = indexOf( id ); index < array_.size(); ++index ) {
      if ( uses( lane, index ) ) {
         return inArray( index );
      }
   }
   return {};
}

[[gnu::always_inline]] inline const RangeSlots::Range*
RangeSlots::rangeOf( At at ) const {
   const bool isRange =
      isPaged( at.id )
         ? ( pages_->pages[ pageOf( at.id ) ]->used[ kRange ] & bit( slotOf( at.id ) ) ) != 0
         : uses( kRange, at.index );
   return isRange ? at.range : nullptr;
}

[[gnu::always_inline]] inline bool
RangeSlots::flag( At at ) const {
   return isPaged( at.id )
           ? ( pages_->pages[ pageOf( at.id ) ]->flags & bit( slotOf( at.id ) ) ) != 0
           : array_.data()[ at.index ].flag;
}

[[gnu::always_inline]] inline void
RangeSlots::flagIs( std::uint32_t id, bool flag ) {
   if ( isPaged( id ) ) {
      Page& page = *pages_->pages[ pageOf( id ) ];
      const std::uint64_t others = page.flags & ~bit( slotOf( id ) );
      page.flags = others | std::uint64_t{ flag } << slotOf( id );
   } else {
      array_.data()[ indexOf( id ) ].flag = flag;
   }
}

[[gnu::always_inline]] inline void
RangeSlots::reserve( std::uint32_t id, std::size_t others ) {
   if ( isPaged( id ) ) {
      std::unique_ptr< Page >& page = pages_->pages[ pageOf( id ) ];
      if ( !page ) [[unlikely]] {
         page = std::make_unique< Page >();
      }
   } else if ( array_.capacity() - array_.size() < 1 + others ) [[unlikely]] {
      arrayReserve( id, others );
   }
}

[[gnu::always_inline]] inline RangeSlots::Inserted
RangeSlots::insert( Lane lane, std::uint32_t id ) {
   if ( isPaged( id ) ) {
      Page& page = *pages_->pages[ pageOf( id ) ];
      const std::uint64_t slot = bit( slotOf( id ) );
      const bool isNew = ( page.used[ lane ] & slot ) == 0;
      pages_->slots += ( ( page.used[ kRange ] | page.used[ kStart ] ) & slot ) == 0;
      page.used[ lane ] |= slot;
      pages_->used[ lane ] |= bit( pageOf( id ) );
      return { page.ranges[ slotOf( id ) ], isNew };
   }
   Slot& slot = insertSlot( id );
   const bool isNew = ( slot.lanes & bit( lane ) ) == 0;
   slot.lanes |= bit( lane );
   return { slot.range, isNew };
}

[[gnu::always_inline]] inline void
RangeSlots::erase( Lane lane, At at ) {
   if ( !isPaged( at.id ) ) {
      arrayErase( lane, at.index );
      return;
   }
   Page& page = *pages_->pages[ pageOf( at.id ) ];
   const std::uint64_t slot = bit( slotOf( at.id ) );
   page.used[ lane ] &= ~slot;
   if ( page.used[ lane ] == 0 ) {
      pages_->used[ lane ] &= ~bit( pageOf( at.id ) );
   }
   pages_->slots -= ( ( page.used[ kRange ] | page.used[ kStart ] ) & slot ) == 0;
}

[[gnu::always_inline]] inline void
RangeSlots::arrayErase( Lane lane, std::size_t index ) {
   Slot& slot = array_.data()[ index ];
   slot.lanes = static_cast< std::uint8_t >( slot.lanes & ~bit( lane ) );
   if ( slot.lanes != 0 ) {
      return;
   }
   if ( vacant_ == kNowhere ) {
      vacant_ = index;
   } else {
      array_.erase( array_.begin() + static_cast< std::ptrdiff_t >( index ) );
      vacant_ -= vacant_ > index ? 1 : 0;
   }
}

// Either the slot that is there, or a new one: the vacant slot moves to where it is to be.
[[gnu::always_inline]] inline RangeSlots::Slot&
RangeSlots::insertSlot( std::uint32_t id ) {
   std::size_t index = indexOf( id );
   const auto number = static_cast< std::uint16_t >( id );
   if ( index < array_.size() && array_.data()[ index ].id == id ) {
      vacant_ = vacant_ == index ? kNowhere : vacant_;
      return array_.data()[ index ];
   }
   return newSlot( number, index );
}

template < class Visit >
void
RangeSlots::forEach( Lane lane, const Visit& visit ) const {
   if ( pages_ ) {
      for ( std::uint64_t rest = pages_->used[ lane ]; rest != 0; rest &= rest - 1 ) {
         const Page& page = *pages_->pages[ lowest( rest ) ];
         for ( std::uint64_t slots = page.used[ lane ]; slots != 0; slots &= slots - 1 ) {
            visit( lowest( rest ) * kPageSize + lowest( slots ), page.ranges[ lowest( slots ) ] );
         }
      }
   }
   for ( const Slot& slot : array_ ) {
      if ( ( slot.lanes & bit( lane ) ) != 0 ) {
         visit( std::uint32_t{ slot.id }, slot.range );
      }
   }
}

}   // namespace MoxVlanMapping
