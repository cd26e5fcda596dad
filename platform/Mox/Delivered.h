// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// DeliveredTable: what the hooks of one direction have been told, slot by slot.
//
// Slot        What one mapping is in force for at a time: a port's VLAN, whatever the inner VLAN, or
//             a key. There is one for nearly every configured mapping, so slots are no entities:
//             they stand side by side, and each takes 32 bytes and its share of the chains' heads.
// References  To a slot last until it is erased, whatever else comes and goes.
// Cost        findOrInsert(), find() and erase() O(1) on average.
// Throws      std::bad_alloc from findOrInsert(), with nothing changed.
// Threads     One thread, no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Mox/MoxVlanMapping.h"
#include "Mox/PortVlanKey.h"

namespace Mox {

struct Delivered {
   /// What is in force; while nothing is, its key is the one that failed last.
   MoxVlanMappingConfig record;
   bool inForce : 1 = false;
   /// Whether hooks of this slot are being called; the caller looks again after each.
   bool busy : 1 = false;

   /// A hook failed, and nobody knows what it did.
   void inDoubt() {
      record = MoxVlanMappingConfig( record.key(), {} );   // equals no deliverable record
      inForce = true;
   }

 private:
   friend class DeliveredTable;
   bool stored_ : 1 = false;
   std::uint32_t next_ = 0;   // of its chain, or of those that are free
   std::uint32_t hash_ = 0;
};

class DeliveredTable {
 public:
   enum class Slots { PortVlan, Key };

   explicit DeliveredTable( Slots slots );

   /// The key without what slots do not tell apart.
   PortVlanKey slotOf( const PortVlanKey& key ) const {
      return { key.intfId(), key.vlanId(),
               static_cast< std::uint16_t >( key.innerVlanId() & innerMask_ ) };
   }
   /// The slot of `key`, or null.
   Delivered* find( const PortVlanKey& key );
   /// The slot of `key`; a new one has an empty record of that key, and nothing is in force.
   Delivered& findOrInsert( const PortVlanKey& key );
   /// Requires: the slot stands in this table.
   void erase( const Delivered& gone );

   /// For walks, which bear any change: places from 0 on, of which some are free.
   std::uint32_t places() const { return places_; }
   /// Null when the place is free.
   const Delivered* at( std::uint32_t place ) const {
      const Delivered& slot = chunks_[ place / kChunk ][ place % kChunk ];
      return slot.stored_ ? &slot : nullptr;
   }

 private:
   static constexpr std::uint32_t kNone = 0xffffffff;
   static constexpr std::uint32_t kChunk = 128;

   Delivered& slot( std::uint32_t place ) { return chunks_[ place / kChunk ][ place % kChunk ]; }
   std::uint32_t& head( std::uint32_t hash ) { return heads_[ hash & ( heads_.size() - 1 ) ]; }
   Delivered* search( const PortVlanKey& key, std::uint32_t hash );
   void reserveOne();

   std::vector< std::unique_ptr< Delivered[] > > chunks_;
   std::vector< std::uint32_t > heads_;   // as many as slots at least, a power of two
   std::uint32_t places_ = 0;
   std::uint32_t free_ = kNone;
   std::uint32_t stored_ = 0;
   const std::uint32_t seed_;
   const std::uint16_t innerMask_;
};

}   // namespace Mox
