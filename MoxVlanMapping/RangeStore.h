// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeStore: the inside of a VlanRangeEntry: its two collections over one RangeSlots.
//
// Mutators have the names of the entry's, which the rules' assertions print. They take no memory:
// reserve() does, before. Who stands on an element is told of each change to it.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>

#include "MoxVlanMapping/RangeSlots.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"

namespace MoxVlanMapping {

class RangeStore {
 public:
   using VlanId = Bridging::VlanId;
   using Range = VlanRangeXlateMapping;

   // Stands for the range of a start that has none.
   static constexpr RangeSlots::Range kNoRange{};

   /// A stored range, read where it is: until the next change.
   class Found {
    public:
      Found() = default;
      explicit Found( RangeSlots::At at ) : at_( at ) {}

      explicit operator bool() const { return static_cast< bool >( at_ ); }
      /// The start id, also of a start that has no range.
      std::uint32_t start() const { return at_.id; }
      Range value() const {
         if ( at_.range == &kNoRange ) [[unlikely]] {
            return {};
         }
         return { VlanId::fromRaw( static_cast< std::uint16_t >( at_.id ) ),
                  VlanId::fromRaw( at_.range->high ), at_.range->mapping };
      }

    private:
      RangeSlots::At at_;
   };

   /// The range that starts at `lowVid`.
   [[gnu::always_inline]] Found range( VlanId lowVid ) const {
      return Found( slots_.find( RangeSlots::kRange, lowVid.value() ) );
   }
   /// The first range that starts at or above `vid`.
   [[gnu::always_inline]] Found upperBound( VlanId vid ) const {
      return Found( slots_.ceiling( RangeSlots::kRange, vid.value() ) );
   }
   /// The range of the last start at or below `vid`, the only one that can hold it; the default
   /// range when that start has none. Throws Zel::RangeException when the start is no VLAN id.
   [[gnu::always_inline]] Found lowerBound( ReverseStartIdVlanId vid ) const {
      const auto start = slots_.floor( RangeSlots::kStart, vid.value() );
      if ( !start ) {
         return {};
      }
      static_cast< void >( VlanId( start.id ) );
      return Found( slots_.rangeOf( start ) ? start : RangeSlots::At{ start.id, 0, &kNoRange } );
   }

   [[gnu::always_inline]] void vlanIdRangeIs( const Range& range ) {
      const auto [ stored, isNew ] = slots_.insert( RangeSlots::kRange, range.lowVid().value() );
      stored = { range.highVid().value(), range.mapping() };
      ranges_.stored( range, isNew );
   }
   /// Whether a range went that is not the default one.
   [[gnu::always_inline]] bool vlanIdRangeDel( VlanId lowVid ) {
      const auto gone = slots_.find( RangeSlots::kRange, lowVid.value() );
      if ( !gone ) {
         return false;
      }
      const bool isRange = static_cast< bool >( Found( gone ).value() );
      slots_.erase( RangeSlots::kRange, gone );
      ranges_.gone( lowVid.value() );
      return isRange;
   }
   bool revSortedStartVid( ReverseStartIdVlanId start ) const {
      const auto at = slots_.find( RangeSlots::kStart, start.value() );
      return at && slots_.flag( at );
   }
   [[gnu::always_inline]] void revSortedStartVidIs( ReverseStartIdVlanId start, bool flag ) {
      const bool isNew = slots_.insert( RangeSlots::kStart, start.value() ).isNew;
      slots_.flagIs( start.value(), flag );
      starts_.stored( start, flag, isNew );
   }
   /// The flag of the start that went.
   [[gnu::always_inline]] bool revSortedStartVidDel( ReverseStartIdVlanId start ) {
      const auto gone = slots_.find( RangeSlots::kStart, start.value() );
      if ( !gone ) {
         return false;
      }
      const bool flag = slots_.flag( gone );
      slots_.erase( RangeSlots::kStart, gone );
      starts_.gone( start.value() );
      return flag;
   }
   void vlanIdRangeDelAll();
   void revSortedStartVidDelAll();

   const VlanRangeEntry::VlanIdRangeMap& vlanIdRange() const { return ranges_; }
   const VlanRangeEntry::RevSortedStartVidMap& revSortedStartVid() const { return starts_; }
   /// Calls `visit` with each range in ascending order. Requires: `visit` changes nothing here.
   template < class Visit >
   void forEachRange( const Visit& visit ) const {
      slots_.forEach( RangeSlots::kRange,
                      [ & ]( std::uint32_t id, const RangeSlots::Range& range ) {
                         visit( Found( { id, 0, &range } ).value() );
                      } );
   }

   /// Makes room for an element at `vid`, beside what is kept. Throws std::bad_alloc, with nothing
   /// changed.
   void reserve( VlanId vid ) { slots_.reserve( vid.value(), kept_ ); }
   /// The same for an id that will be deleted and added again.
   void reserveChange( VlanId vid ) { slots_.reserve( vid.value(), kept_ + kSlotsOfAChange ); }
   /// How many changes are open, for which nothing is given back, and how many of them are not of
   /// the id that is added or deleted next and keep their room meanwhile.
   void changesAre( std::size_t open, std::size_t others ) {
      isChanging_ = open > 0;
      kept_ = kSlotsOfAChange * others;
   }
   /// Gives back what is not needed; nothing while changes are open.
   void trim() noexcept {
      if ( !isChanging_ ) {
         slots_.trim();
      }
   }

 private:
   // The id itself, and what its deletion may split off.
   static constexpr std::size_t kSlotsOfAChange = 2;

   // A position in either collection is the id.
   class Ranges final : public VlanRangeEntry::VlanIdRangeMap {
    public:
      explicit Ranges( const RangeSlots& slots ) : slots_( slots ) {}
      void stored( const Range& range, bool isNew ) {
         isNew ? inserted() : overwritten( range.lowVid().value(), Element( range ) );
      }
      void gone( std::uint32_t id ) { erased( id ); }
      void verify() const override;

    private:
      static std::optional< Spot > spot( RangeSlots::At at ) {
         return at ? std::optional( Spot{ at.id, Element( Found( at ).value() ) } ) : std::nullopt;
      }
      std::optional< Spot > firstSpot() const override;
      std::optional< Spot > spotOf( const VlanId& key ) const override;
      std::optional< Spot > spotOrNext( const VlanId& key ) const override;
      bool spotBehind( const Position& position, Spot& spot ) const override;

      const RangeSlots& slots_;
   };

   class Starts final : public VlanRangeEntry::RevSortedStartVidMap {
    public:
      explicit Starts( const RangeSlots& slots ) : slots_( slots ) {}
      void stored( ReverseStartIdVlanId start, bool flag, bool isNew ) {
         isNew ? inserted() : overwritten( start.value(), Element( start, flag ) );
      }
      void gone( std::uint32_t id ) { erased( id ); }
      void verify() const override;

    private:
      std::optional< Spot > spot( RangeSlots::At at ) const {
         return at ? std::optional( Spot{ at.id, Element( at.id, slots_.flag( at ) ) } )
                   : std::nullopt;
      }
      std::optional< Spot > firstSpot() const override;
      std::optional< Spot > spotOf( const ReverseStartIdVlanId& key ) const override;
      std::optional< Spot > spotOrNext( const ReverseStartIdVlanId& key ) const override;
      bool spotBehind( const Position& position, Spot& spot ) const override;

      const RangeSlots& slots_;
   };

   RangeSlots slots_;
   std::size_t kept_ = 0;   // slots
   bool isChanging_ = false;
   Ranges ranges_{ slots_ };
   Starts starts_{ slots_ };
};

}   // namespace MoxVlanMapping
