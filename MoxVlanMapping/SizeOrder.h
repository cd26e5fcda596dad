// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SizeOrder: the inside of vidRangeSorted: ranges in one array, in their type's order, twins in
// order of arrival.
//
// Position   The index in the array; of what is gone, that of the element which now follows.
// Cost       Look-up O(log n), one change O(n). refill() is O(n) while ranges do not overlap: a
//            counting sort, with a bucket for each size of up to 64 ids. Ranges that are larger, of
//            which there are few then, and ranges whose ends are crossed are compared.
// Memory     14 bytes a range.
// Throws     std::bad_alloc, with nothing changed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "MoxVlanMapping/RangeStore.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

namespace MoxVlanMapping {

class SizeOrder final : public VlanXlateScaleEntry::VidRangeSortedMap {
 public:
   using Range = VlanRangeXlateMapping;

   /// Nothing when there is no equal range.
   std::optional< bool > flag( const Range& range ) const;
   /// Inserts, or overwrites the flag of the equal range.
   void is( const Range& range, bool flag );
   /// The flag of what was deleted; nothing when there was no equal range.
   std::optional< bool > del( const Range& range );
   void deleteAll();
   /// As deleting all and inserting each range of `ranges` with the flag true.
   void refill( const RangeStore& ranges );
   void verify() const override;

 private:
   std::optional< Spot > spotAt( std::size_t index ) const;
   std::optional< Spot > firstSpot() const override { return spotAt( 0 ); }
   std::optional< Spot > spotOf( const Range& key ) const override;
   std::optional< Spot > spotOrNext( const Range& key ) const override;
   bool spotBehind( const Position& position, Spot& spot ) const override;

   /// The first element that is not less than `range`.
   std::size_t lowerBound( const Range& range ) const;
   /// The equal element; the size when there is none.
   std::size_t find( const Range& range ) const;

   std::vector< Element > elements_;
};

}   // namespace MoxVlanMapping
