// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/Delivered.h"

#include <algorithm>
#include <utility>

#include "Zel/Hash.h"

namespace Mox {
namespace {

constexpr std::uint32_t kSeedConstant = 0x66a3d15b;
constexpr std::size_t kFirstHeads = 4;

}   // namespace

DeliveredTable::DeliveredTable( Slots slots )
    : seed_( Zel::hashSeed() ^ kSeedConstant ), innerMask_( slots == Slots::Key ? 0xffff : 0 ) {}

Delivered*
DeliveredTable::search( const PortVlanKey& key, std::uint32_t hash ) {
   for ( std::uint32_t at = heads_.empty() ? kNone : head( hash ); at != kNone; ) {
      Delivered& found = slot( at );
      if ( found.hash_ == hash && slotOf( found.record.key() ) == key ) {
         return &found;
      }
      at = found.next_;
   }
   return nullptr;
}

Delivered*
DeliveredTable::find( const PortVlanKey& key ) {
   const PortVlanKey asked = slotOf( key );
   return search( asked, zelHash( asked, seed_ ) );
}

Delivered&
DeliveredTable::findOrInsert( const PortVlanKey& key ) {
   const PortVlanKey asked = slotOf( key );
   const std::uint32_t hash = zelHash( asked, seed_ );
   if ( Delivered* const found = search( asked, hash ) ) {
      return *found;
   }
   reserveOne();
   const std::uint32_t place = free_ == kNone ? places_++ : free_;
   Delivered& made = slot( place );
   free_ = place == free_ ? made.next_ : kNone;
   made.record = MoxVlanMappingConfig( key, {} );
   made.stored_ = true;
   made.hash_ = hash;
   made.next_ = std::exchange( head( hash ), place );
   ++stored_;
   return made;
}

// A free place, and a head for each slot.
void
DeliveredTable::reserveOne() {
   if ( stored_ == heads_.size() ) {
      heads_ = std::vector< std::uint32_t >( std::max( kFirstHeads, 2 * heads_.size() ), kNone );
      for ( std::uint32_t place = 0; place < places_; ++place ) {
         if ( Delivered& known = slot( place ); known.stored_ ) {
            known.next_ = std::exchange( head( known.hash_ ), place );
         }
      }
   }
   if ( free_ == kNone && places_ == chunks_.size() * kChunk ) {
      chunks_.push_back( std::make_unique< Delivered[] >( kChunk ) );
   }
}

void
DeliveredTable::erase( const Delivered& gone ) {
   std::uint32_t* link = &head( gone.hash_ );
   while ( &slot( *link ) != &gone ) {
      link = &slot( *link ).next_;
   }
   const std::uint32_t place = std::exchange( *link, gone.next_ );
   slot( place ) = Delivered();
   slot( place ).next_ = std::exchange( free_, place );
   --stored_;
}

}   // namespace Mox
