// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/RangeStore.h"

#include "Zel/Assert.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/RangeStore";
constexpr std::uint32_t kLast = RangeSlots::kNone - 1;

}   // namespace

void
RangeStore::vlanIdRangeDelAll() {
   while ( const auto at = slots_.floor( RangeSlots::kRange, kLast ) ) {
      slots_.erase( RangeSlots::kRange, at );
      ranges_.gone( at.id );
   }
   trim();
}

void
RangeStore::revSortedStartVidDelAll() {
   while ( const auto at = slots_.floor( RangeSlots::kStart, kLast ) ) {
      slots_.erase( RangeSlots::kStart, at );
      starts_.gone( at.id );
   }
   trim();
}

std::optional< RangeStore::Ranges::Spot >
RangeStore::Ranges::firstSpot() const {
   return spot( slots_.ceiling( RangeSlots::kRange, 0 ) );
}

std::optional< RangeStore::Ranges::Spot >
RangeStore::Ranges::spotOf( const VlanId& key ) const {
   return spot( slots_.find( RangeSlots::kRange, key.value() ) );
}

std::optional< RangeStore::Ranges::Spot >
RangeStore::Ranges::spotOrNext( const VlanId& key ) const {
   return spot( slots_.ceiling( RangeSlots::kRange, key.value() ) );
}

bool
RangeStore::Ranges::spotBehind( const Position& position, Spot& spot ) const {
   const auto at = slots_.ceiling( RangeSlots::kRange, position.spot().position + 1 );
   if ( at ) {
      spot = { at.id, Element( Found( at ).value() ) };
   }
   return static_cast< bool >( at );
}

void
RangeStore::Ranges::verify() const {
   slots_.verify();
   std::uint32_t elements = 0;
   std::uint32_t lowest = 0;
   slots_.forEach( RangeSlots::kRange, [ & ]( std::uint32_t id, const RangeSlots::Range& range ) {
      ZEL_ASSERT( elements == 0 || id >= lowest );
      ZEL_ASSERT( slots_.find( RangeSlots::kRange, id ).range == &range );
      lowest = id + 1;
      ++elements;
   } );
   ZEL_ASSERT( elements == size() );
}

std::optional< RangeStore::Starts::Spot >
RangeStore::Starts::firstSpot() const {
   return spot( slots_.floor( RangeSlots::kStart, kLast ) );
}

std::optional< RangeStore::Starts::Spot >
RangeStore::Starts::spotOf( const ReverseStartIdVlanId& key ) const {
   return spot( slots_.find( RangeSlots::kStart, key.value() ) );
}

std::optional< RangeStore::Starts::Spot >
RangeStore::Starts::spotOrNext( const ReverseStartIdVlanId& key ) const {
   return spot( slots_.floor( RangeSlots::kStart, key.value() ) );
}

bool
RangeStore::Starts::spotBehind( const Position& position, Spot& spot ) const {
   const std::uint32_t id = position.spot().position;
   const auto at = id == 0 ? RangeSlots::At() : slots_.floor( RangeSlots::kStart, id - 1 );
   if ( at ) {
      spot = { at.id, Element( at.id, slots_.flag( at ) ) };
   }
   return static_cast< bool >( at );
}

void
RangeStore::Starts::verify() const {
   slots_.verify();
   std::uint32_t elements = 0;
   slots_.forEach( RangeSlots::kStart, [ & ]( std::uint32_t id, const RangeSlots::Range& ) {
      ZEL_ASSERT( slots_.has( RangeSlots::kStart, id ) );
      ++elements;
   } );
   ZEL_ASSERT( elements == size() );
}

}   // namespace MoxVlanMapping
