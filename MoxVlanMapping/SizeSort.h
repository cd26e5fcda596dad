// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SizeSort: puts an interface's ranges in order of size, largest first.
//
// A counting sort: ranges of up to 64 ids fall into a bucket of their size, in which they keep the
// order of their ids. The few that are larger - ranges that do not overlap leave no room for 64 of
// them - and ranges whose ends are crossed are sorted by comparison.
//
// Cost     O(n), and O(k log k) for the k that are compared.
// Memory   32 bytes a range, kept for the next sort.
// Throws   std::bad_alloc.
#pragma once

#include <span>
#include <vector>

#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

namespace MoxVlanMapping {

class SizeSort {
 public:
   /// Rebuilds the size order of `scaleEntry` from `ranges`.
   void refill( VlanXlateScaleEntry& scaleEntry, const VlanRangeEntry::VlanIdRangeMap& ranges ) {
      scaleEntry.vidRangeSortedRefill( sorted( ranges ), nodes_ );
   }
   /// The ranges in the order of their type's <. Valid until the next sort.
   std::span< const VlanRangeXlateMapping > sorted( const VlanRangeEntry::VlanIdRangeMap& ranges );

 private:
   std::span< const VlanRangeXlateMapping >
   compared( const VlanRangeEntry::VlanIdRangeMap& ranges );
   std::span< const VlanRangeXlateMapping > counted( const VlanRangeEntry::VlanIdRangeMap& ranges );

   std::vector< VlanRangeXlateMapping > byId_;
   std::vector< VlanRangeXlateMapping > bySize_;
   std::vector< VlanXlateScaleEntry::ZelVidRangeSorted* > nodes_;
};

}   // namespace MoxVlanMapping
