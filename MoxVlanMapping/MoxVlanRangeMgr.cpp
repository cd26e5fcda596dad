// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanRangeMgr.h"

#include <algorithm>
#include <cstdint>
#include <optional>
#include <utility>

#include "MoxVlanMapping/PairedRanges.h"
#include "Zel/Assert.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"

namespace MoxVlanMapping {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;

constexpr char zelSourceTag[] = "MoxVlanMapping/MoxVlanRangeMgr";
constinit Zel::TraceHandle trace( "MoxVlanRangeMgr", false );

constexpr unsigned kDecision = 1;
constexpr unsigned kArguments = 9;

using RangeElement = VlanRangeEntry::ZelVlanIdRange;
using StartElement = VlanRangeEntry::ZelRevSortedStartVid;

// Throws the range exception for what fromRaw() let pass.
void
requireVlanId( VlanId id ) {
   static_cast< void >( VlanId( id.value() ) );
}

bool
isIn( const VlanRangeXlateMapping& range, VlanId vid ) {
   return !( vid < range.lowVid() ) && !( range.highVid() < vid );
}

bool
matches( const VlanRangeXlateMapping& range, VlanId vid, VlanXlateMapping mapping ) {
   return ( mapping == VlanXlateMapping() || mapping == range.mapping() ) && isIn( range, vid );
}

// The range of the start at or below the id, the only one that can hold it; the default range when
// the start has none. Nothing when there is no such start.
std::optional< VlanRangeXlateMapping >
lowerBoundRange( const VlanRangeEntry& entry, VlanId vid ) {
   const StartElement* start = entry.revSortedStartVid().findNodeOrNext( vid.value() );
   if ( !start ) {
      return std::nullopt;
   }
   return entry.vlanIdRange( VlanId( start->key().value() ) );
}

// Elements are made, and room for them, before the first change of a call: when memory runs out,
// the index is as it was.
Zel::Ptr< RangeElement >
rangeElement( VlanRangeEntry& entry, VlanId lowVid, VlanId highVid, VlanXlateMapping mapping,
              std::uint32_t room ) {
   entry.reserve( lowVid, room );
   return Zel::newEntity< RangeElement >( VlanRangeXlateMapping( lowVid, highVid, mapping ) );
}

Zel::Ptr< StartElement >
startElement( VlanRangeEntry& entry, VlanId lowVid ) {
   const ReverseStartIdVlanId start( lowVid.value() );
   entry.revSortedStartVidReserve( start );
   return Zel::newEntity< StartElement >( start, true );
}

}   // namespace

MoxVlanRangeMgr::~MoxVlanRangeMgr() {
   zelDoZombieReactors( true );
}

Zel::Ptr< MoxVlanRangeMgr >
MoxVlanRangeMgr::MoxVlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return Zel::newEntity< MoxVlanRangeMgr >( vlanRangeEntryDir );
}

// The entry that PairedRanges may change. None when there is none yet, while changes have something
// reserved, and for whoever reads the traces, who is to see every search and change by itself.
[[gnu::always_inline]] inline VlanRangeEntry*
MoxVlanRangeMgr::pairedEntry( IntfId intfId ) const {
   const auto* node = trace.anyEnabled() || !changes_.empty()
                       ? nullptr
                       : vlanRangeEntryDir_->vlanRangeEntry().findNode( intfId );
   return node ? node->entity().get() : nullptr;
}

MoxVlanRangeMgr::Change*
MoxVlanRangeMgr::changeOf( IntfId intfId, VlanId vid ) {
   const auto found = std::ranges::find_if( changes_, [ & ]( const Change& change ) {
      return change.intfId == intfId && change.vid == vid;
   } );
   return found == changes_.end() ? nullptr : &*found;
}

void
MoxVlanRangeMgr::changeReserve( IntfId intfId, VlanId vid ) {
   // Room for the addition, and for what the deletion may split off.
   vlanRangeEntryDir_->vlanRangeEntryIs( intfId )->reserve( vid, room() + 1 );
   auto range = Zel::newEntity< RangeElement >( VlanRangeXlateMapping() );
   auto start = Zel::newEntity< StartElement >( ReverseStartIdVlanId(), true );
   if ( Change* const change = changeOf( intfId, vid ) ) {
      change->range = std::move( range );
      change->start = std::move( start );
   } else {
      changes_.push_back( { intfId, vid, std::move( range ), std::move( start ) } );
   }
}

void
MoxVlanRangeMgr::changeRelease( IntfId intfId, VlanId vid ) noexcept {
   if ( const Change* const change = changeOf( intfId, vid ) ) {
      changes_.erase( changes_.begin() + ( change - changes_.data() ) );
   }
   const auto entry = vlanRangeEntryDir_->vlanRangeEntry( intfId );
   if ( entry && changes_.empty() ) {
      entry->trim();
   }
}

bool
MoxVlanRangeMgr::isVidInRange( const VlanRangeXlateMapping& range, VlanId vid ) const {
   return isIn( range, vid );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInUpperBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange", " intfId: ", intfId,
              " inVlanId: ", vid, " mapping: ", mapping );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const RangeElement* found = vlanRangeEntry->vlanIdRange().findNodeOrNext( vid );
   if ( !found ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
                 " upper bound iterator empty" );
      return false;
   }
   const VlanRangeXlateMapping range = found->value();
   // "uppper" is kept on purpose: the text is matched by those who read the traces.
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
              " uppper bound Range: ", range );
   return matches( range, vid, mapping );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " intfId: ", intfId,
              " inVlanId: ", vid, " mapping: ", mapping );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const auto range = lowerBoundRange( *vlanRangeEntry, vid );
   if ( !range ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
                 " lower bound iterator empty" );
      return false;
   }
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " lBoundRange  ",
              *range );
   return matches( *range, vid, mapping );
}

// The assertions below name their variables in what they print; those names are kept on purpose.
// This and the deletion have no guard of the stack: they hold no array, and it would cost a twentieth
// of the most frequent changes.
__attribute__( ( no_stack_protector ) ) void
MoxVlanRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
   if ( VlanRangeEntry* entry = pairedEntry( intfId );
        entry && PairedRanges( *entry ).add( vid, mapping ) ) {
      return;
   }
   ZEL_TRACE( trace, kArguments, __LINE__, "addVlanToIdx", " intfId: ", intfId, " vlanId: ", vid,
              " mapping: ", mapping );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   if ( isVidAndDot1qInLowerBoundRange( intfId, vid, mapping ) ||
        isVidAndDot1qInUpperBoundRange( intfId, vid, mapping ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " already present returning " );
      return;
   }
   const bool joinsUpper =
      vid.value() < VlanId::kHighest &&
      isVidAndDot1qInUpperBoundRange( intfId, VlanId( vid.value() + 1u ), mapping );
   const bool joinsLower =
      vid.value() != VlanId::kLowest &&
      isVidAndDot1qInLowerBoundRange( intfId, VlanId( vid.value() - 1u ), mapping );

   VlanId lowVid = vid;
   VlanId highVid = vid;
   Change* const change = changeOf( intfId, vid );
   const auto makeRange = [ & ] {
      if ( !change || !change->range ) {
         return rangeElement( *vlanRangeEntry, lowVid, highVid, mapping, room() );
      }
      change->range->valueIs( { lowVid, highVid, mapping } );
      return std::move( change->range );
   };
   const auto makeStart = [ & ] {
      if ( !change || !change->start ) {
         return startElement( *vlanRangeEntry, lowVid );
      }
      change->start->keyIs( lowVid.value() );
      return std::move( change->start );
   };
   Zel::Ptr< RangeElement > newRange;
   if ( joinsLower && joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " merge 2 ranges " );
      const RangeElement* uBoundIter = vlanRangeEntry->vlanIdRange().findNodeOrNext( vid );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      const auto lBoundIter = lowerBoundRange( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = *lBoundIter;
      lowVid = lBoundRange.lowVid();
      highVid = uBoundRange.highVid();
      newRange = makeRange();
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
   } else if ( joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to start of curRange " );
      const RangeElement* uBoundIter = vlanRangeEntry->vlanIdRange().findNodeOrNext( vid );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      highVid = uBoundRange.highVid();
      newRange = makeRange();
      const auto newStart = makeStart();
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
      vlanRangeEntry->revSortedStartVidIs( newStart );
   } else if ( joinsLower ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to end of prev range" );
      const auto lBoundIter = lowerBoundRange( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = *lBoundIter;
      lowVid = lBoundRange.lowVid();
      newRange = makeRange();
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
   } else {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " vid not present in prev and cur: " );
      newRange = makeRange();
      vlanRangeEntry->revSortedStartVidIs( makeStart() );
   }
   vlanRangeEntry->vlanIdRangeIs( newRange );
   ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx",
              " adding new Range: ", newRange->value() );
}

__attribute__( ( no_stack_protector ) ) void
MoxVlanRangeMgr::deleteVlanFromIdx( IntfId intfId, VlanId vid ) {
   if ( VlanRangeEntry* entry = pairedEntry( intfId );
        entry && PairedRanges( *entry ).del( vid ) ) {
      return;
   }
   ZEL_TRACE( trace, kArguments, __LINE__, "deleteVlanFromIdx", " intfId: ", intfId,
              " vlanId: ", vid );
   const VlanXlateMapping any;
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   if ( !isVidAndDot1qInUpperBoundRange( intfId, vid, any ) &&
        !isVidAndDot1qInLowerBoundRange( intfId, vid, any ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid not present in lower and upper bound range " );
      return;
   }
   if ( isVidAndDot1qInUpperBoundRange( intfId, vid, any ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in upper bound range " );
      const RangeElement* uBoundIter = vlanRangeEntry->vlanIdRange().findNodeOrNext( vid );
      ZEL_ASSERT( uBoundIter );
      deleteVlanFromRange( intfId, vid, uBoundIter->value() );
   } else if ( isVidAndDot1qInLowerBoundRange( intfId, vid, any ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in lower bound range " );
      const auto lBoundIter = lowerBoundRange( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      deleteVlanFromRange( intfId, vid, *lBoundIter );
   }
}

void
MoxVlanRangeMgr::deleteVlanFromRange( IntfId intfId, VlanId vid,
                                      const VlanRangeXlateMapping& storedRange ) {
   // A copy: what is passed may be the stored element itself, which goes below.
   const VlanRangeXlateMapping vidRange = storedRange;
   ZEL_TRACE( trace, kArguments, __LINE__, "deleteVlanFromRange", " intfId: ", intfId,
              " vlanId: ", vid, " vidRange: ", vidRange );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const bool isOnly = vidRange.lowVid() == vidRange.highVid();
   const bool isFirst = vid == vidRange.lowVid();
   const bool isLast = vid == vidRange.highVid();
   // Not checked yet: an id without a neighbour is refused where the neighbour is stored.
   const VlanId vidBelow = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() - 1 ) );
   const VlanId vidAbove = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() + 1 ) );
   const bool keepsBelow = !isOnly && !isFirst;
   const bool keepsAbove = !isOnly && ( isFirst || !isLast ) && vid.value() < VlanId::kHighest;
   Zel::Ptr< RangeElement > rangeBelow;
   Zel::Ptr< RangeElement > rangeAbove;
   Zel::Ptr< StartElement > startAbove;
   if ( keepsBelow ) {
      rangeBelow =
         rangeElement( *vlanRangeEntry, vidRange.lowVid(), vidBelow, vidRange.mapping(), room() );
   }
   if ( keepsAbove ) {
      rangeAbove =
         rangeElement( *vlanRangeEntry, vidAbove, vidRange.highVid(), vidRange.mapping(), room() );
      startAbove = startElement( *vlanRangeEntry, vidAbove );
   }
   ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() ) );
   if ( isOnly ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " removing size 1 Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      if ( changes_.empty() ) {
         vlanRangeEntry->trim();
      }
   } else if ( isFirst ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove lowVid from Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( rangeAbove );
      vlanRangeEntry->revSortedStartVidIs( startAbove );
   } else if ( isLast ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove highVid from Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( rangeBelow );
   } else {
      // One "t" and two blanks are kept on purpose: this text is matched, too.
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " spliting  Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( rangeBelow );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( rangeAbove );
      vlanRangeEntry->revSortedStartVidIs( startAbove );
   }
}

Zel::Ptr< MoxVlanRangeMgr >
moxVlanRangeMgrFactory( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return MoxVlanRangeMgr::MoxVlanRangeMgrIs( vlanRangeEntryDir );
}

}   // namespace MoxVlanMapping
