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
// Cost       O(1), see Zel/KeyIndex.h.
// Throws     std::bad_alloc, with nothing changed.
#pragma once

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "MoxVlanMapping/VlanRangeEntry.h"

namespace MoxVlanMapping {

class PairedRanges {
 public:
   explicit PairedRanges( VlanRangeEntry& entry ) : index_( entry.index_ ) {}

   /// False when it declines: nothing is changed then.
   bool add( Bridging::VlanId vid, Bridging::VlanXlateMapping mapping );
   bool del( Bridging::VlanId vid );

 private:
   Zel::KeyIndex& index_;
};

}   // namespace MoxVlanMapping
