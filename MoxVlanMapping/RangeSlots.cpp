// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/RangeSlots.h"

#include <new>
#include <utility>

#include "Zel/Assert.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/RangeSlots";
constexpr std::size_t kFirstCapacity = 4;

}   // namespace

std::size_t
RangeSlots::search( std::uint32_t id ) const {
   const Slot* const slots = array_.data();
   std::size_t below = 0;   // slots that are known to be below
   for ( std::size_t rest = array_.size(); rest > 0; ) {
      const std::size_t half = rest / 2;
      const bool isBelow = slots[ below + half ].id < id;
      below += isBelow ? half + 1 : 0;
      rest = isBelow ? rest - half - 1 : half;
   }
   return lastIndex_ = below;
}

// The vacant slot moves to where it is to be.
RangeSlots::Slot&
RangeSlots::newSlot( std::uint16_t id, std::size_t index ) {
   const auto at = [ & ]( std::size_t i ) {
      return array_.begin() + static_cast< std::ptrdiff_t >( i );
   };
   if ( vacant_ == kNowhere ) {
      return *array_.insert( at( index ), Slot{ id, 0, false, {} } );
   }
   if ( vacant_ < index ) {
      std::move( at( vacant_ + 1 ), at( index ), at( vacant_ ) );
      --index;
      lastIndex_ = index;
   } else {
      std::move_backward( at( index ), at( vacant_ ), at( vacant_ + 1 ) );
   }
   vacant_ = kNowhere;
   return array_.data()[ index ] = { id, 0, false, {} };
}

// An array whose room is promised to others stays one, however large it grows.
void
RangeSlots::arrayReserve( std::uint32_t id, std::size_t others ) {
   const std::size_t index = indexOf( id );
   const bool isThere = index < array_.size() && array_[ index ].id == id;
   const std::size_t needed = array_.size() + ( isThere ? 0 : 1 ) + others;
   if ( needed <= array_.capacity() ) {
      return;
   }
   if ( needed > kMaxArraySize && others == 0 && !pages_ && id < kPaged ) {
      toPages();
      reserve( id, 0 );
   } else {
      array_.reserve( std::max( { needed, 2 * array_.capacity(), kFirstCapacity } ) );
   }
}

void
RangeSlots::toPages() {
   auto pages = std::make_unique< Pages >();
   std::vector< Slot > rest;
   for ( const Slot& slot : array_ ) {
      if ( slot.lanes == 0 ) {
         continue;
      }
      if ( slot.id >= kPaged ) {
         rest.push_back( slot );
         continue;
      }
      std::unique_ptr< Page >& page = pages->pages[ pageOf( slot.id ) ];
      if ( !page ) {
         page = std::make_unique< Page >();
      }
      for ( const Lane lane : { kRange, kStart } ) {
         if ( ( slot.lanes & bit( lane ) ) != 0 ) {
            page->used[ lane ] |= bit( slotOf( slot.id ) );
            pages->used[ lane ] |= bit( pageOf( slot.id ) );
         }
      }
      page->flags |= std::uint64_t{ slot.flag } << slotOf( slot.id );
      page->ranges[ slotOf( slot.id ) ] = slot.range;
      ++pages->slots;
   }
   pages_ = std::move( pages );
   array_ = std::move( rest );
   vacant_ = kNowhere;
}

void
RangeSlots::toArray() {
   std::vector< Slot > all;
   all.reserve( std::max( kFirstCapacity, pages_->slots + array_.size() ) );
   for ( std::uint64_t rest = pages_->used[ kRange ] | pages_->used[ kStart ]; rest != 0;
         rest &= rest - 1 ) {
      const Page& page = *pages_->pages[ lowest( rest ) ];
      for ( std::uint64_t slots = page.used[ kRange ] | page.used[ kStart ]; slots != 0;
            slots &= slots - 1 ) {
         const unsigned number = lowest( slots );
         const auto uses = [ & ]( Lane lane ) {
            return ( page.used[ lane ] & bit( number ) ) != 0 ? bit( lane ) : std::uint8_t{ 0 };
         };
         all.push_back( { static_cast< std::uint16_t >( lowest( rest ) * kPageSize + number ),
                          static_cast< std::uint8_t >( uses( kRange ) | uses( kStart ) ),
                          ( page.flags & bit( number ) ) != 0, page.ranges[ number ] } );
      }
   }
   for ( const Slot& slot : array_ ) {
      if ( slot.lanes != 0 ) {
         all.push_back( slot );
      }
   }
   array_ = std::move( all );
   pages_.reset();
   vacant_ = kNowhere;
}

void
RangeSlots::trim() {
   if ( pages_ ) {
      if ( pages_->slots + array_.size() <= kMaxArraySize / 2 ) {
         try {
            toArray();
         } catch ( const std::bad_alloc& ) {
            return;   // the pages do as well
         }
      }
   }
   if ( !pages_ && array_.size() == ( vacant_ == kNowhere ? 0u : 1u ) ) {
      array_ = std::vector< Slot >();
      vacant_ = kNowhere;
   }
}

void
RangeSlots::verify() const {
   ZEL_ASSERT( vacant_ == kNowhere || ( vacant_ < array_.size() && array_[ vacant_ ].lanes == 0 ) );
   for ( std::size_t i = 0; i < array_.size(); ++i ) {
      ZEL_ASSERT( i == 0 || array_[ i - 1 ].id < array_[ i ].id );
      ZEL_ASSERT( array_[ i ].lanes != 0 || i == vacant_ );
      ZEL_ASSERT( !pages_ || array_[ i ].id >= kPaged );
   }
   if ( !pages_ ) {
      return;
   }
   std::size_t slots = 0;
   for ( std::uint32_t number = 0; number < kPageSize; ++number ) {
      const Page* const page = pages_->pages[ number ].get();
      for ( const Lane lane : { kRange, kStart } ) {
         const bool isUsed = page && page->used[ lane ] != 0;
         ZEL_ASSERT( isUsed == ( ( pages_->used[ lane ] & bit( number ) ) != 0 ) );
      }
      if ( page ) {
         slots += static_cast< std::size_t >(
            std::popcount( page->used[ kRange ] | page->used[ kStart ] ) );
      }
   }
   ZEL_ASSERT( slots == pages_->slots );
}

}   // namespace MoxVlanMapping
