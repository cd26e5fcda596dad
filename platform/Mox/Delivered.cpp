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
DeliveredTable::search( const PortVlanKey& slot, std::uint32_t hash ) {
   std::uint32_t at = heads_.empty() ? kNone : head( hash );
   while ( at != kNone && !( slotOf( slots_[ at ].record.key() ) == slot ) ) {
      at = slots_[ at ].next_;
   }
   return at == kNone ? nullptr : &slots_[ at ];
}

Delivered*
DeliveredTable::find( const PortVlanKey& key ) {
   const PortVlanKey slot = slotOf( key );
   return search( slot, hash( slot ) );
}

Delivered&
DeliveredTable::findOrInsert( const PortVlanKey& key ) {
   const PortVlanKey slot = slotOf( key );
   const std::uint32_t hashed = hash( slot );
   if ( Delivered* const found = search( slot, hashed ) ) {
      return *found;
   }
   reserveOne();
   const std::uint32_t place = free_;
   Delivered& made = slots_[ place ];
   free_ = made.next_;
   made.record = MoxVlanMappingConfig( key, {} );
   made.stored_ = true;
   made.next_ = std::exchange( head( hashed ), place );
   ++stored_;
   return made;
}

// A free place, and a head for each slot.
void
DeliveredTable::reserveOne() {
   if ( stored_ == heads_.size() ) {
      std::vector< std::uint32_t > wider( std::max( kFirstHeads, 2 * heads_.size() ), kNone );
      heads_.swap( wider );
      for ( std::uint32_t place = 0; place < slots_.size(); ++place ) {
         if ( slots_[ place ].stored_ ) {
            std::uint32_t& first = head( hash( slotOf( slots_[ place ].record.key() ) ) );
            slots_[ place ].next_ = std::exchange( first, place );
         }
      }
   }
   if ( free_ == kNone ) {
      slots_.emplace_back().next_ = kNone;
      free_ = static_cast< std::uint32_t >( slots_.size() - 1 );
   }
}

void
DeliveredTable::erase( const Delivered& slot ) {
   std::uint32_t* link = &head( hash( slotOf( slot.record.key() ) ) );
   while ( &slots_[ *link ] != &slot ) {
      link = &slots_[ *link ].next_;
   }
   const std::uint32_t place = *link;
   Delivered& gone = slots_[ place ];
   *link = gone.next_;
   gone = Delivered();
   gone.next_ = std::exchange( free_, place );
   --stored_;
}

}   // namespace Mox
