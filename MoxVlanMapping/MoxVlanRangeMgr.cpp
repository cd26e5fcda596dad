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

using RangeElement = VlanRangeEntry::ZelVlanIdRange;
using StartElement = VlanRangeEntry::ZelRevSortedStartVid;

bool
isVlanId( VlanId id ) {
   return VlanId::kLowest <= id.value() && id.value() <= VlanId::kHighest;
}

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

// An interface's entry, looked up when it is first asked for and made when there is none.
class EntryOf {
 public:
   EntryOf( VlanRangeEntryDir& dir, IntfId intfId ) : dir_( dir ), intfId_( intfId ) {}

   IntfId intfId() const { return intfId_; }
   VlanRangeEntry& get() {
      if ( !entry_ ) {
         entry_ = anew();
      }
      return *entry_;
   }
   VlanRangeEntry* operator->() { return &get(); }
   /// What the directory holds now.
   Zel::Ptr< VlanRangeEntry > anew() { return dir_.vlanRangeEntryIs( intfId_ ); }

 private:
   VlanRangeEntryDir& dir_;
   const IntfId intfId_;
   Zel::Ptr< VlanRangeEntry > entry_;
};

// What the index holds around one id. Each collection is searched once, when it is first asked.
class Surroundings {
 public:
   static constexpr std::uint32_t kNone = VlanRangeEntry::VlanIdRangeMap::kNoPlace;

   explicit Surroundings( VlanId vid ) : vid_( vid ) {}

   VlanId vid() const { return vid_; }

   /// The lowest id of the range that starts at or above the id, or kNone.
   std::uint32_t upperLow( const VlanRangeEntry& entry ) {
      if ( !upperKnown_ ) {
         upperLow_ = entry.vlanIdRange().placeOrNext( vid_ );
         upperKnown_ = true;
      }
      return upperLow_;
   }
   /// The element of that range, or null.
   RangeElement* upper( const VlanRangeEntry& entry ) {
      const std::uint32_t low = upperLow( entry );
      return low == kNone ? nullptr
                          : entry.vlanIdRange().findNode(
                               VlanId::fromRaw( static_cast< std::uint16_t >( low ) ) );
   }

   /// The start at or below the id, which is the start of the only range that can hold it, or kNone.
   std::uint32_t lowerStart( const VlanRangeEntry& entry ) {
      if ( !lowerKnown_ ) {
         const auto& starts = entry.revSortedStartVid();
         const std::uint32_t place = starts.placeOrNext( ReverseStartIdVlanId( vid_.value() ) );
         lowerStart_ = place == starts.kNoPlace ? kNone : 0xffff - place;
         lowerElement_ =
            lowerStart_ == kNone ? nullptr : entry.vlanIdRange().findNode( VlanId( lowerStart_ ) );
         lowerKnown_ = true;
      }
      return lowerStart_;
   }
   /// The element of that start's range, or null. Behind lowerStart().
   RangeElement* lowerElement() const { return lowerElement_; }
   /// That range; the default range when there is none. Behind lowerStart().
   const VlanRangeXlateMapping& lowerRange() const {
      return lowerElement_ ? lowerElement_->value() : kNoRange;
   }

   /// Around the id above: the same, but for what starts at this id.
   Surroundings above() const {
      Surroundings there( VlanId( vid_.value() + 1u ) );
      if ( upperKnown_ && upperLow_ != vid_.value() ) {
         there.upperLow_ = upperLow_;
         there.upperKnown_ = true;
      }
      return there;
   }
   /// Around the id below.
   Surroundings below() const {
      Surroundings there( VlanId( vid_.value() - 1u ) );
      if ( lowerKnown_ && lowerStart_ != vid_.value() ) {
         there.lowerStart_ = lowerStart_;
         there.lowerElement_ = lowerElement_;
         there.lowerKnown_ = true;
      }
      return there;
   }

 private:
   static constexpr VlanRangeXlateMapping kNoRange{};

   const VlanId vid_;
   bool upperKnown_ = false;
   bool lowerKnown_ = false;
   std::uint32_t upperLow_ = kNone;
   std::uint32_t lowerStart_ = kNone;
   RangeElement* lowerElement_ = nullptr;
};

// The two bound tests. When they are traced, every test looks up and searches for itself: whoever
// reads the lines may change the index between two of them.
bool
isVidAndDot1qInUpperBoundRange( EntryOf& entry, Surroundings& around, VlanXlateMapping mapping ) {
   if ( !trace.anyEnabled() ) {
      return around.upperLow( entry.get() ) == around.vid().value() &&
             matches( around.upper( entry.get() )->value(), around.vid(), mapping );
   }
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
              " intfId: ", entry.intfId(), " inVlanId: ", around.vid(), " mapping: ", mapping );
   const Zel::Ptr< VlanRangeEntry > present = entry.anew();
   const RangeElement* element = Surroundings( around.vid() ).upper( *present );
   if ( !element ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
                 " upper bound iterator empty" );
      return false;
   }
   const VlanRangeXlateMapping range = element->value();
   // "uppper" is kept on purpose: the text is matched by those who read the traces.
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
              " uppper bound Range: ", range );
   return matches( range, around.vid(), mapping );
}

bool
isVidAndDot1qInLowerBoundRange( EntryOf& entry, Surroundings& around, VlanXlateMapping mapping ) {
   if ( !trace.anyEnabled() ) {
      return around.lowerStart( entry.get() ) != Surroundings::kNone &&
             matches( around.lowerRange(), around.vid(), mapping );
   }
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
              " intfId: ", entry.intfId(), " inVlanId: ", around.vid(), " mapping: ", mapping );
   const Zel::Ptr< VlanRangeEntry > present = entry.anew();
   Surroundings now( around.vid() );
   if ( now.lowerStart( *present ) == Surroundings::kNone ) {
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
                 " lower bound iterator empty" );
      return false;
   }
   const VlanRangeXlateMapping range = now.lowerRange();
   ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " lBoundRange  ",
              range );
   return matches( range, around.vid(), mapping );
}

// Whether an element that a call deletes may be used again: nobody else may still look at it.
bool
isReusable( const Zel::PtrInterface* deleted ) {
   return deleted && deleted->zelReferences() == 1;
}

// Whether what a call deletes and inserts under the same key can be replaced where it stands: not
// under the eyes of one who reads the trace, nor where the deletion is going to abort.
bool
isReplaceable( const RangeElement* deleted ) {
   return isReusable( deleted ) && deleted->value() && !trace.anyEnabled();
}

// Elements are found or made, and room for them, before the first change of a call: when memory
// runs out, the index is as it was.
Zel::Ptr< RangeElement >
rangeElement( EntryOf& entry, VlanId insertAt, RangeElement* deleted = nullptr ) {
   entry->vlanIdRangeReserve( insertAt );
   return isReusable( deleted ) ? deleted
                                : Zel::newEntity< RangeElement >( VlanRangeXlateMapping() );
}

Zel::Ptr< StartElement >
startElement( EntryOf& entry, VlanId insertAt, StartElement* deleted = nullptr ) {
   const ReverseStartIdVlanId start( insertAt.value() );
   entry->revSortedStartVidReserve( start );
   return isReusable( deleted ) ? deleted : Zel::newEntity< StartElement >( start, true );
}

void
insertRange( EntryOf& entry, const Zel::Ptr< RangeElement >& element, VlanId lowVid, VlanId highVid,
             VlanXlateMapping mapping ) {
   element->valueIs( { lowVid, highVid, mapping } );
   entry->vlanIdRangeIs( element );
}

void
insertStart( EntryOf& entry, const Zel::Ptr< StartElement >& element, VlanId start ) {
   element->keyIs( start.value() );
   entry->revSortedStartVidIs( element );
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
   return isIn( range, vid );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInUpperBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   Surroundings around( vid );
   return MoxVlanMapping::isVidAndDot1qInUpperBoundRange( vlanRangeEntry, around, mapping );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   Surroundings around( vid );
   return MoxVlanMapping::isVidAndDot1qInLowerBoundRange( vlanRangeEntry, around, mapping );
}

// The assertions below name their variables in what they print; those names are kept on purpose.
void
MoxVlanRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
   ZEL_TRACE( trace, kArguments, __LINE__, "addVlanToIdx", " intfId: ", intfId, " vlanId: ", vid,
              " mapping: ", mapping );
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   vlanRangeEntry.get();   // it is there when the first test is traced
   Surroundings here( vid );
   const auto inUpper = [ & ]( auto&& around ) {
      return MoxVlanMapping::isVidAndDot1qInUpperBoundRange( vlanRangeEntry, around, mapping );
   };
   const auto inLower = [ & ]( auto&& around ) {
      return MoxVlanMapping::isVidAndDot1qInLowerBoundRange( vlanRangeEntry, around, mapping );
   };
   if ( inLower( here ) || inUpper( here ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " already present returning " );
      return;
   }
   const bool joinsUpper = vid.value() < VlanId::kHighest && inUpper( here.above() );
   const bool joinsLower = vid.value() != VlanId::kLowest && inLower( here.below() );

   VlanId lowVid = vid;
   VlanId highVid = vid;
   Zel::Ptr< RangeElement > newElement;
   if ( joinsLower && joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " merge 2 ranges " );
      const auto uBoundIter = here.upper( vlanRangeEntry.get() );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      const bool lBoundIter = here.lowerStart( vlanRangeEntry.get() ) != Surroundings::kNone;
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = here.lowerRange();
      lowVid = lBoundRange.lowVid();
      highVid = uBoundRange.highVid();
      newElement = rangeElement( vlanRangeEntry, lowVid, here.lowerElement() );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
   } else if ( joinsUpper ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to start of curRange " );
      const auto uBoundIter = here.upper( vlanRangeEntry.get() );
      ZEL_ASSERT( uBoundIter );
      const VlanRangeXlateMapping uBoundRange = uBoundIter->value();
      highVid = uBoundRange.highVid();
      newElement = rangeElement( vlanRangeEntry, vid, uBoundIter );
      const auto newStart = startElement(
         vlanRangeEntry, vid,
         vlanRangeEntry->revSortedStartVid().findNode( uBoundRange.lowVid().value() ) );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
      insertStart( vlanRangeEntry, newStart, vid );
   } else if ( joinsLower ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " append to end of prev range" );
      const bool lBoundIter = here.lowerStart( vlanRangeEntry.get() ) != Surroundings::kNone;
      ZEL_ASSERT( lBoundIter );
      const VlanRangeXlateMapping lBoundRange = here.lowerRange();
      lowVid = lBoundRange.lowVid();
      if ( isReplaceable( here.lowerElement() ) ) {
         vlanRangeEntry->vlanIdRangeReplace( *here.lowerElement(), vid, mapping );
         return;
      }
      newElement = rangeElement( vlanRangeEntry, lowVid, here.lowerElement() );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
   } else {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " vid not present in prev and cur: " );
      newElement = rangeElement( vlanRangeEntry, vid );
      insertStart( vlanRangeEntry, startElement( vlanRangeEntry, vid ), vid );
   }
   insertRange( vlanRangeEntry, newElement, lowVid, highVid, mapping );
   ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx",
              " adding new Range: ", VlanRangeXlateMapping( lowVid, highVid, mapping ) );
}

// When it is traced, each test is asked again where its answer is acted upon.
void
MoxVlanRangeMgr::deleteVlanFromIdx( IntfId intfId, VlanId vid ) {
   ZEL_TRACE( trace, kArguments, __LINE__, "deleteVlanFromIdx", " intfId: ", intfId,
              " vlanId: ", vid );
   const VlanXlateMapping any;
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   vlanRangeEntry.get();   // it is there when the first test is traced
   Surroundings here( vid );
   const auto inUpper = [ & ]( auto&& around ) {
      return MoxVlanMapping::isVidAndDot1qInUpperBoundRange( vlanRangeEntry, around, any );
   };
   const auto inLower = [ & ]( auto&& around ) {
      return MoxVlanMapping::isVidAndDot1qInLowerBoundRange( vlanRangeEntry, around, any );
   };
   const bool traced = trace.anyEnabled();
   const bool startsHere = inUpper( here );
   if ( !startsHere && !inLower( here ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid not present in lower and upper bound range " );
      return;
   }
   if ( traced ? inUpper( here ) : startsHere ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in upper bound range " );
      const auto uBoundIter = here.upper( vlanRangeEntry.get() );
      ZEL_ASSERT( uBoundIter );
      deleteVlanFromRange( intfId, vid, uBoundIter->value() );
   } else if ( !traced || inLower( here ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in lower bound range " );
      const bool lBoundIter = here.lowerStart( vlanRangeEntry.get() ) != Surroundings::kNone;
      ZEL_ASSERT( lBoundIter );
      deleteVlanFromRange( intfId, vid, here.lowerRange() );
   }
}

void
MoxVlanRangeMgr::deleteVlanFromRange( IntfId intfId, VlanId vid,
                                      const VlanRangeXlateMapping& storedRange ) {
   // A copy: what is passed may be the stored element itself, which goes below.
   const VlanRangeXlateMapping vidRange = storedRange;
   ZEL_TRACE( trace, kArguments, __LINE__, "deleteVlanFromRange", " intfId: ", intfId,
              " vlanId: ", vid, " vidRange: ", vidRange );
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   const bool isOnly = vidRange.lowVid() == vidRange.highVid();
   const bool isFirst = vid == vidRange.lowVid();
   const bool isLast = vid == vidRange.highVid();
   // Not checked yet: an id without a neighbour is refused where the neighbour is stored.
   const VlanId vidBelow = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() - 1 ) );
   const VlanId vidAbove = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() + 1 ) );
   const bool keepsBelow = !isOnly && !isFirst;
   const bool keepsAbove = !isOnly && ( isFirst || !isLast ) && vid.value() < VlanId::kHighest;
   const auto deletedRange = vlanRangeEntry->vlanIdRange().findNode( vidRange.lowVid() );
   if ( isLast && keepsBelow && isVlanId( vidBelow ) && isReplaceable( deletedRange ) ) {
      vlanRangeEntry->vlanIdRangeReplace( *deletedRange, vidBelow, vidRange.mapping() );
      return;
   }
   Zel::Ptr< RangeElement > below;
   Zel::Ptr< RangeElement > above;
   Zel::Ptr< StartElement > startAbove;
   if ( keepsBelow ) {
      below = rangeElement( vlanRangeEntry, vidRange.lowVid(), deletedRange );
   }
   if ( keepsAbove ) {
      const auto deletedStart =
         isFirst ? vlanRangeEntry->revSortedStartVid().findNode( vid.value() ) : nullptr;
      above = rangeElement( vlanRangeEntry, vidAbove, keepsBelow ? nullptr : deletedRange );
      startAbove = startElement( vlanRangeEntry, vidAbove, deletedStart );
   }
   ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() ) );
   if ( isOnly ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " removing size 1 Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      vlanRangeEntry->trim();
   } else if ( isFirst ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove lowVid from Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      requireVlanId( vidAbove );
      insertRange( vlanRangeEntry, above, vidAbove, vidRange.highVid(), vidRange.mapping() );
      insertStart( vlanRangeEntry, startAbove, vidAbove );
   } else if ( isLast ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " remove highVid from Range " );
      requireVlanId( vidBelow );
      insertRange( vlanRangeEntry, below, vidRange.lowVid(), vidBelow, vidRange.mapping() );
   } else {
      // One "t" and two blanks are kept on purpose: this text is matched, too.
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromRange", " spliting  Range " );
      requireVlanId( vidBelow );
      insertRange( vlanRangeEntry, below, vidRange.lowVid(), vidBelow, vidRange.mapping() );
      requireVlanId( vidAbove );
      insertRange( vlanRangeEntry, above, vidAbove, vidRange.highVid(), vidRange.mapping() );
      insertStart( vlanRangeEntry, startAbove, vidAbove );
   }
}

Zel::Ptr< MoxVlanRangeMgr >
moxVlanRangeMgrFactory( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   return MoxVlanRangeMgr::MoxVlanRangeMgrIs( vlanRangeEntryDir );
}

}   // namespace MoxVlanMapping
