// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/PairedRanges.h"

#include <cstdint>

#include "Zel/NewEntity.h"

namespace MoxVlanMapping {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Zel::KeyIndex;

using RangeElement = VlanRangeEntry::ZelVlanIdRange;
using StartElement = VlanRangeEntry::ZelRevSortedStartVid;

RangeElement&
rangeAt( KeyIndex::At at ) {
   return static_cast< RangeElement& >( *( *at.value )[ KeyIndex::kFirst ] );
}

StartElement&
startAt( KeyIndex::At at ) {
   return static_cast< StartElement& >( *( *at.value )[ KeyIndex::kSecond ] );
}

bool
isVlanId( std::uint32_t place ) {
   return VlanId::kLowest <= place && place <= VlanId::kHighest;
}

bool
accepts( const RangeElement& range, VlanXlateMapping mapping ) {
   return mapping == VlanXlateMapping() || mapping == range.value().mapping();
}

// Whether nobody else would see the element change.
bool
isUnshared( const Zel::PtrInterface& element ) {
   return element.zelReferences() == 1;
}

// Whether the range's deletion is seen to succeed, and the element may be used again.
bool
canReplace( const RangeElement& range ) {
   return isUnshared( range ) && range.value();
}

bool
canMove( KeyIndex::At at ) {
   return canReplace( rangeAt( at ) ) && isUnshared( startAt( at ) ) && startAt( at ).value();
}

void
move( KeyIndex& index, KeyIndex::At at, VlanId low, VlanId high, VlanXlateMapping mapping ) {
   RangeElement& range = rangeAt( at );
   StartElement& start = startAt( at );
   index.movePair( at, low.value() );
   range.valueIs( { low, high, mapping } );
   start.keyIs( low.value() );
}

void
replace( KeyIndex& index, RangeElement& range, VlanId high, VlanXlateMapping mapping ) {
   range.valueIs( { range.key(), high, mapping } );
   index.replaced( KeyIndex::kFirst );
}

void
insert( KeyIndex& index, VlanId low, VlanId high, VlanXlateMapping mapping ) {
   const auto range = Zel::newEntity< RangeElement >( VlanRangeXlateMapping( low, high, mapping ) );
   const auto start = Zel::newEntity< StartElement >( low.value(), true );
   index.insertPair( low.value(), *range, *start );
}

}   // namespace

bool
PairedRanges::add( VlanId vid, VlanXlateMapping mapping ) {
   if ( !index_.paired() || !isVlanId( vid.value() ) ) {
      return false;
   }
   const KeyIndex::At below = index_.around( vid.value() ).below;
   const KeyIndex::At above = index_.around( vid.value() ).above;
   bool joinsLower = false;
   if ( below.value ) {
      const RangeElement& lower = rangeAt( below );
      const std::uint32_t high = lower.value().highVid().value();
      const bool accepted = accepts( lower, mapping );
      if ( !isVlanId( below.place ) ) {
         return false;
      }
      if ( accepted && vid.value() <= high ) {
         return true;
      }
      if ( below.place == vid.value() ) {
         return false;   // held under another mapping
      }
      joinsLower = accepted && vid.value() == high + 1;
   }
   const bool joinsUpper = above.place == vid.value() + 1u && isVlanId( above.place ) &&
                           above.place <= rangeAt( above ).value().highVid().value() &&
                           accepts( rangeAt( above ), mapping );
   if ( joinsLower && !canReplace( rangeAt( below ) ) ) {
      return false;
   }
   if ( joinsLower && joinsUpper ) {
      if ( !startAt( above ).value() ) {
         return false;
      }
      replace( index_, rangeAt( below ), rangeAt( above ).value().highVid(), mapping );
      index_.takePair( above );
   } else if ( joinsUpper ) {
      if ( !canMove( above ) ) {
         return false;
      }
      move( index_, above, vid, rangeAt( above ).value().highVid(), mapping );
   } else if ( joinsLower ) {
      replace( index_, rangeAt( below ), vid, mapping );
   } else {
      insert( index_, vid, vid, mapping );
   }
   return true;
}

bool
PairedRanges::del( VlanId vid ) {
   if ( !index_.paired() || !isVlanId( vid.value() ) ) {
      return false;
   }
   const KeyIndex::At below = index_.around( vid.value() ).below;
   const KeyIndex::At above = index_.around( vid.value() ).above;
   if ( !below.value ) {
      return true;
   }
   RangeElement& range = rangeAt( below );
   const VlanId low = range.value().lowVid();
   const VlanId high = range.value().highVid();
   const VlanXlateMapping mapping = range.value().mapping();
   if ( !isVlanId( below.place ) ) {
      return false;
   }
   if ( high < vid ) {
      return true;
   }
   const VlanId vidBelow = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() - 1 ) );
   const VlanId vidAbove = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() + 1 ) );
   const bool isAboveFree = vid.value() < VlanId::kHighest && above.place != vidAbove.value();
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
      move( index_, below, vidAbove, high, mapping );
   } else if ( !canReplace( range ) ) {
      return false;
   } else if ( vid == high ) {
      replace( index_, range, vidBelow, mapping );
   } else {
      if ( !isAboveFree ) {
         return false;
      }
      insert( index_, vidAbove, high, mapping );
      replace( index_, range, vidBelow, mapping );
   }
   return true;
}

}   // namespace MoxVlanMapping
