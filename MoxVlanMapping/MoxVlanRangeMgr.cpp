// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanRangeMgr.h"

#include <cstdint>

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

// The range that starts at or above `vid`.
VlanRangeEntry::VlanIdRangeMap::Iterator
upperBound( const VlanRangeEntry& entry, VlanId vid ) {
   return entry.vlanIdRange().findElementOrNext( vid );
}

// The start at or below `vid`, which is the start of the only range that can hold it.
VlanRangeEntry::RevSortedStartVidMap::Iterator
lowerBound( const VlanRangeEntry& entry, VlanId vid ) {
   return entry.revSortedStartVid().findElementOrNext( ReverseStartIdVlanId( vid.value() ) );
}

VlanRangeXlateMapping
rangeOf( const VlanRangeEntry& entry,
         const VlanRangeEntry::RevSortedStartVidMap::Iterator& start ) {
   return entry.vlanIdRange( VlanId( start->key().value() ) );
}

// Elements are made, and room for them, before the first change of a call: when memory runs out,
// the index is as it was.
Zel::Ptr< VlanRangeEntry::ZelVlanIdRange >
newRangeElement( VlanRangeEntry& entry, VlanId lowVid, VlanId highVid, VlanXlateMapping mapping ) {
   entry.vlanIdRangeReserve( lowVid );
   return Zel::newEntity< VlanRangeEntry::ZelVlanIdRange >(
      VlanRangeXlateMapping( lowVid, highVid, mapping ) );
}

Zel::Ptr< VlanRangeEntry::ZelRevSortedStartVid >
newStartElement( VlanRangeEntry& entry, VlanId start ) {
   const ReverseStartIdVlanId key( start.value() );
   entry.revSortedStartVidReserve( key );
   return Zel::newEntity< VlanRangeEntry::ZelRevSortedStartVid >( key, true );
}

// Throws the range exception for what fromRaw() let pass.
void
requireVlanId( VlanId id ) {
   static_cast< void >( VlanId( id.value() ) );
}

bool
mappingMatches( VlanXlateMapping wanted, const VlanRangeXlateMapping& range ) {
   return wanted == VlanXlateMapping() || wanted == range.mapping();
}

}   // namespace

MoxVlanRangeMgr::~MoxVlanRangeMgr() {
   zelDoZombieReactors( true );
}

Zel::Ptr< MoxVlanRangeMgr >
MoxVlanRangeMgr::MoxVlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return Zel::newEntity< MoxVlanRangeMgr >( vlanRangeEntryDir );
}

bool
MoxVlanRangeMgr::isVidInRange( const VlanRangeXlateMapping& range, VlanId vid ) const {
   return !( vid < range.lowVid() ) && !( range.highVid() < vid );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInUpperBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange", " intfId: ", intfId,
              " inVlanId: ", vid, " mapping: ", mapping );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const auto uBoundIter = upperBound( *vlanRangeEntry, vid );
   if ( !uBoundIter ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
                 " upper bound iterator empty" );
      return false;
   }
   const VlanRangeXlateMapping range = uBoundIter->value();
   // "uppper" is kept on purpose: the text is matched by those who read the traces.
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
              " uppper bound Range: ", range );
   return mappingMatches( mapping, range ) && isVidInRange( range, vid );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " intfId: ", intfId,
              " inVlanId: ", vid, " mapping: ", mapping );
   const auto vlanRangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const auto lBoundIter = lowerBound( *vlanRangeEntry, vid );
   if ( !lBoundIter ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
                 " lower bound iterator empty" );
      return false;
   }
   const VlanRangeXlateMapping range = rangeOf( *vlanRangeEntry, lBoundIter );
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " lBoundRange  ",
              range );
   return mappingMatches( mapping, range ) && isVidInRange( range, vid );
}

// The assertions below name their variables in what they print; those names are kept on purpose.
void
MoxVlanRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
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

   Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > newRange;
   if ( joinsLower && joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " merge 2 ranges " );
      const auto uBoundIter = upperBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      const auto lBoundIter = lowerBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = rangeOf( *vlanRangeEntry, lBoundIter );
      newRange =
         newRangeElement( *vlanRangeEntry, lBoundRange.lowVid(), uBoundRange.highVid(), mapping );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
   } else if ( joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to start of curRange " );
      const auto uBoundIter = upperBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      newRange = newRangeElement( *vlanRangeEntry, vid, uBoundRange.highVid(), mapping );
      const auto newStart = newStartElement( *vlanRangeEntry, vid );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
      vlanRangeEntry->revSortedStartVidIs( newStart );
   } else if ( joinsLower ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to end of prev range" );
      const auto lBoundIter = lowerBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = rangeOf( *vlanRangeEntry, lBoundIter );
      newRange = newRangeElement( *vlanRangeEntry, lBoundRange.lowVid(), vid, mapping );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
   } else {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " vid not present in prev and cur: " );
      newRange = newRangeElement( *vlanRangeEntry, vid, vid, mapping );
      vlanRangeEntry->revSortedStartVidIs( newStartElement( *vlanRangeEntry, vid ) );
   }
   vlanRangeEntry->vlanIdRangeIs( newRange );
   ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx",
              " adding new Range: ", newRange->value() );
}

// Each test is asked again where its answer is acted upon: traced, it shows what was seen then.
void
MoxVlanRangeMgr::deleteVlanFromIdx( IntfId intfId, VlanId vid ) {
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
      const auto uBoundIter = upperBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      deleteVlanFromRange( intfId, vid, uBoundRange );
   } else if ( isVidAndDot1qInLowerBoundRange( intfId, vid, any ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in lower bound range " );
      const auto lBoundIter = lowerBound( *vlanRangeEntry, vid );
      ZEL_ASSERT( lBoundIter );
      deleteVlanFromRange( intfId, vid, rangeOf( *vlanRangeEntry, lBoundIter ) );
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
   Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > below;
   Zel::Ptr< VlanRangeEntry::ZelVlanIdRange > above;
   Zel::Ptr< VlanRangeEntry::ZelRevSortedStartVid > startAbove;
   if ( !isOnly && !isFirst ) {
      below = newRangeElement( *vlanRangeEntry, vidRange.lowVid(), vidBelow, vidRange.mapping() );
   }
   if ( !isOnly && ( isFirst || !isLast ) && vid.value() < VlanId::kHighest ) {
      above = newRangeElement( *vlanRangeEntry, vidAbove, vidRange.highVid(), vidRange.mapping() );
      startAbove = newStartElement( *vlanRangeEntry, vidAbove );
   }
   ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() ) );
   if ( isOnly ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " removing size 1 Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
   } else if ( isFirst ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove lowVid from Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( above );
      vlanRangeEntry->revSortedStartVidIs( startAbove );
   } else if ( isLast ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove highVid from Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( below );
   } else {
      // One "t" and two blanks are kept on purpose: this text is matched, too.
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " spliting  Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( below );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( above );
      vlanRangeEntry->revSortedStartVidIs( startAbove );
   }
}

Zel::Ptr< MoxVlanRangeMgr >
moxVlanRangeMgrFactory( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return MoxVlanRangeMgr::MoxVlanRangeMgrIs( vlanRangeEntryDir );
}

}   // namespace MoxVlanMapping
