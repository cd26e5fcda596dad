// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PairedRanges: adds and deletes one VLAN id where both collections of an entry are in step.
//
// The range manager changes each collection by itself, every change a deletion and an insertion,
// as its traces and assertions show it. Here one search serves all tests, a range grows and
// shrinks where it stands, and one step changes both collections. The result is the same, and so
// are the counts of changes.
//
// Declines   An id or a start out of range; collections that disagree; ranges that overlap where
//            the id stands; an element that somebody else holds and would see changed.
// Inlined    A call would cost as much as the most frequent changes.
// Cost       O(1), see Zel/KeyIndex.h.
// Throws     std::bad_alloc, with nothing changed.
#pragma once

#include <cstdint>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/KeyIndex.h"
#include "Zel/NewEntity.h"

namespace MoxVlanMapping {

class PairedRanges {
 public:
   explicit PairedRanges( VlanRangeEntry& entry ) : index_( entry.index_ ) {}

   /// False when it declines: nothing is changed then.
   bool add( Bridging::VlanId vid, Bridging::VlanXlateMapping mapping );
   bool del( Bridging::VlanId vid );

 private:
   using VlanId = Bridging::VlanId;
   using Mapping = Bridging::VlanXlateMapping;
   using At = Zel::KeyIndex::At;
   using RangeElement = VlanRangeEntry::ZelVlanIdRange;
   using StartElement = VlanRangeEntry::ZelRevSortedStartVid;

   static RangeElement& rangeAt( At at ) {
      return static_cast< RangeElement& >( *( *at.value )[ Zel::KeyIndex::kFirst ] );
   }
   static StartElement& startAt( At at ) {
      return static_cast< StartElement& >( *( *at.value )[ Zel::KeyIndex::kSecond ] );
   }
   static bool isVlanId( std::uint32_t number ) {
      return VlanId::kLowest <= number && number <= VlanId::kHighest;
   }
   static bool accepts( const RangeElement& range, Mapping mapping ) {
      return mapping == Mapping() || mapping == range.value().mapping();
   }
   /// Whether nobody else would see the element change.
   static bool isUnshared( const Zel::PtrInterface& element ) {
      return element.zelReferences() == 1;
   }
   static bool canMove( At at ) {
      return isUnshared( rangeAt( at ) ) && isUnshared( startAt( at ) ) && startAt( at ).value();
   }

   void insert( VlanId low, VlanId high, Mapping mapping );
   void move( At at, VlanId low, VlanId high, Mapping mapping );
   void replace( RangeElement& range, VlanId high, Mapping mapping ) {
      range.valueIs( { range.key(), high, mapping } );
      index_.replaced( Zel::KeyIndex::kFirst );
   }

   Zel::KeyIndex& index_;
};

[[gnu::always_inline]] inline bool
PairedRanges::add( Bridging::VlanId vid, Bridging::VlanXlateMapping mapping ) {
   if ( !index_.paired() || !isVlanId( vid.value() ) ) {
      return false;
   }
   const Zel::KeyIndex::Around& around = index_.around( vid.value() );
   const At below = around.below;
   const At above = around.above;
   bool joinsLower = false;
   if ( below.value ) {
      const RangeElement& lower = rangeAt( below );
      const VlanId high = lower.value().highVid();
      const bool accepted = accepts( lower, mapping );
      if ( !isVlanId( below.place ) ) {
         return false;
      }
      if ( accepted && !( high < vid ) ) {
         return true;
      }
      if ( below.place == vid.value() ) {
         return false;   // held under another mapping
      }
      joinsLower = accepted && high.value() + 1 == vid.value();
   }
   // Each place carries a start, and none is above the highest VLAN id: `above` is one here.
   const bool joinsUpper = above.place == vid.value() + 1u &&
                           above.place <= rangeAt( above ).value().highVid().value() &&
                           accepts( rangeAt( above ), mapping );
   // The default range's deletion is not seen to succeed.
   if ( joinsLower && !( isUnshared( rangeAt( below ) ) && rangeAt( below ).value() ) ) {
      return false;
   }
   if ( joinsLower && joinsUpper ) {
      if ( !startAt( above ).value() ) {
         return false;
      }
      replace( rangeAt( below ), rangeAt( above ).value().highVid(), mapping );
      index_.takePair( above );
   } else if ( joinsLower ) {
      replace( rangeAt( below ), vid, mapping );
   } else if ( joinsUpper ) {
      if ( !canMove( above ) ) {
         return false;
      }
      move( above, vid, rangeAt( above ).value().highVid(), mapping );
   } else {
      insert( vid, vid, mapping );
   }
   return true;
}

[[gnu::always_inline]] inline bool
PairedRanges::del( Bridging::VlanId vid ) {
   if ( !index_.paired() || !isVlanId( vid.value() ) ) {
      return false;
   }
   const Zel::KeyIndex::Around& around = index_.around( vid.value() );
   const At below = around.below;
   if ( !below.value ) {
      return true;
   }
   if ( !isVlanId( below.place ) ) {
      return false;
   }
   RangeElement& range = rangeAt( below );
   const VlanId low = range.value().lowVid();
   const VlanId high = range.value().highVid();
   const Mapping mapping = range.value().mapping();
   if ( high < vid ) {
      return true;
   }
   const VlanId vidBelow = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() - 1 ) );
   const VlanId vidAbove = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() + 1 ) );
   const bool isAboveFree = isVlanId( vidAbove.value() ) && around.above.place != vidAbove.value();
   if ( low == high ) {
      if ( !range.value() || !startAt( below ).value() ) {
         return false;
      }
      index_.takePair( below );
      index_.trim();
   } else if ( vid == low ) {
      if ( !isAboveFree || !canMove( below ) ) {
         return false;
      }
      move( below, vidAbove, high, mapping );
   } else if ( vid == high ) {
      if ( !isUnshared( range ) ) {
         return false;
      }
      replace( range, vidBelow, mapping );
   } else {
      if ( !isAboveFree || !isUnshared( range ) ) {
         return false;
      }
      insert( vidAbove, high, mapping );
      replace( range, vidBelow, mapping );
   }
   return true;
}

inline void
PairedRanges::insert( VlanId low, VlanId high, Mapping mapping ) {
   const auto range = Zel::newEntity< RangeElement >( VlanRangeXlateMapping( low, high, mapping ) );
   const auto start = Zel::newEntity< StartElement >( low.value(), true );
   index_.insertPair( low.value(), *range, *start );
}

inline void
PairedRanges::move( At at, VlanId low, VlanId high, Mapping mapping ) {
   RangeElement& range = rangeAt( at );
   StartElement& start = startAt( at );
   index_.movePair( at, low.value() );
   range.valueIs( { low, high, mapping } );
   start.keyIs( low.value() );
}

}   // namespace MoxVlanMapping
