// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanRangeMgr.h"

#include <algorithm>
#include <cstddef>

#include "MoxVlanMapping/RangeRules.h"
#include "MoxVlanMapping/RangeStore.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"

namespace MoxVlanMapping {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;

using Rules = RangeRules< RangeStore, false >;
using TracedRules = RangeRules< RangeStore, true >;
using Lines = RangeTrace< true >;

constinit Zel::TraceHandle trace( "MoxVlanRangeMgr", false );

}   // namespace

MoxVlanRangeMgr::~MoxVlanRangeMgr() {
   zelDoZombieReactors( true );
}

Zel::Ptr< MoxVlanRangeMgr >
MoxVlanRangeMgr::MoxVlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return Zel::newEntity< MoxVlanRangeMgr >( vlanRangeEntryDir );
}

// The interface's ranges while nobody reads the traces, and so nothing can drop the entry meanwhile.
// None while changes are open, whose room is to be kept.
[[gnu::always_inline]] inline RangeStore*
MoxVlanRangeMgr::untracedStore( IntfId intfId ) const {
   if ( trace.anyEnabled() || !changes_.empty() ) [[unlikely]] {
      return nullptr;
   }
   const auto* node = vlanRangeEntryDir_->vlanRangeEntry().findNode( intfId );
   return node ? &node->entity()->store() : nullptr;
}

// Before `vid` is added or deleted: what open changes of other ids have reserved is not for it.
void
MoxVlanRangeMgr::keepRoom( RangeStore& store, IntfId intfId, VlanId vid ) const {
   std::size_t open = 0;
   std::size_t others = 0;
   for ( const Change& change : changes_ ) {
      open += change.intfId == intfId;
      others += change.intfId == intfId && !( change.vid == vid );
   }
   store.changesAre( open, others );
}

bool
MoxVlanRangeMgr::isVidInRange( const VlanRangeXlateMapping& range, VlanId vid ) const {
   return Rules::isIn( range, vid );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInUpperBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   const Lines say( trace, intfId, vlanRangeEntryDir_.get() );
   say.test( Lines::kUpperTest, vid, mapping );
   const auto entry = say.entry();
   return TracedRules( say, entry->store() ).isInUpperBound( vid, mapping );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   const Lines say( trace, intfId, vlanRangeEntryDir_.get() );
   say.test( Lines::kLowerTest, vid, mapping );
   const auto entry = say.entry();
   return TracedRules( say, entry->store() ).isInLowerBound( vid, mapping );
}

// This and the deletion have no guard of the stack: they hold no array, and it would cost a twentieth
// of the most frequent changes.
__attribute__( ( no_stack_protector ) ) void
MoxVlanRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
   if ( RangeStore* const store = untracedStore( intfId ) ) [[likely]] {
      Rules( { trace, intfId, nullptr }, *store ).addVlanToIdx( vid, mapping );
      return;
   }
   const Lines say( trace, intfId, vlanRangeEntryDir_.get() );
   say.addition( vid, mapping );
   const auto entry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   keepRoom( entry->store(), intfId, vid );
   TracedRules( say, entry->store() ).addVlanToIdx( vid, mapping );
}

__attribute__( ( no_stack_protector ) ) void
MoxVlanRangeMgr::deleteVlanFromIdx( IntfId intfId, VlanId vid ) {
   if ( RangeStore* const store = untracedStore( intfId ) ) [[likely]] {
      Rules( { trace, intfId, nullptr }, *store ).deleteVlanFromIdx( vid );
      return;
   }
   const Lines say( trace, intfId, vlanRangeEntryDir_.get() );
   say.deletion( vid );
   const auto entry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   keepRoom( entry->store(), intfId, vid );
   TracedRules( say, entry->store() ).deleteVlanFromIdx( vid );
}

void
MoxVlanRangeMgr::deleteVlanFromRange( IntfId intfId, VlanId vid,
                                      const VlanRangeXlateMapping& vidRange ) {
   const Lines say( trace, intfId, vlanRangeEntryDir_.get() );
   say.deletionFrom( vid, vidRange );
   const auto entry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   keepRoom( entry->store(), intfId, vid );
   TracedRules( say, entry->store() ).deleteVlanFromRange( vid, vidRange );
}

void
MoxVlanRangeMgr::changeReserve( IntfId intfId, VlanId vid ) {
   const auto entry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   changes_.reserve( changes_.size() + 1 );
   keepRoom( entry->store(), intfId, vid );
   entry->store().reserveChange( vid );
   if ( std::ranges::count( changes_, Change{ intfId, vid } ) == 0 ) {
      changes_.push_back( { intfId, vid } );
   }
   keepRoom( entry->store(), intfId, vid );
}

void
MoxVlanRangeMgr::changeRelease( IntfId intfId, VlanId vid ) noexcept {
   std::erase( changes_, Change{ intfId, vid } );
   if ( const auto entry = vlanRangeEntryDir_->vlanRangeEntry( intfId ) ) {
      keepRoom( entry->store(), intfId, vid );
      entry->store().trim();
   }
}

Zel::Ptr< MoxVlanRangeMgr >
moxVlanRangeMgrFactory( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return MoxVlanRangeMgr::MoxVlanRangeMgrIs( vlanRangeEntryDir );
}

}   // namespace MoxVlanMapping
