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
   std::uint32_t upperLow( const VlanRangeEntry& entry ) const {
      if ( !upperKnown_ ) {
         upperLow_ = entry.vlanIdRange().placeOrNext( vid_ );
         upperKnown_ = true;
      }
      return upperLow_;
   }
   /// The element of that range, or null.
   RangeElement* upper( const VlanRangeEntry& entry ) const {
      const std::uint32_t low = upperLow( entry );
      return low == kNone ? nullptr
                          : entry.vlanIdRange().findNode(
                               VlanId::fromRaw( static_cast< std::uint16_t >( low ) ) );
   }

   /// The start at or below the id, which is the start of the only range that can hold it, or kNone.
   std::uint32_t lowerStart( const VlanRangeEntry& entry ) const {
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
   // What was found, once it was asked for.
   mutable bool upperKnown_ = false;
   mutable bool lowerKnown_ = false;
   mutable std::uint32_t upperLow_ = kNone;
   mutable std::uint32_t lowerStart_ = kNone;
   mutable RangeElement* lowerElement_ = nullptr;
};

// The two bound tests of one mapping. When they are traced, every test looks up and searches for
// itself: whoever reads the lines may change the index between two of them.
class BoundTests {
 public:
   BoundTests( EntryOf& entry, VlanXlateMapping mapping ) : entry_( entry ), mapping_( mapping ) {}

   /// `around`: what the index holds around the id.
   bool isVidAndDot1qInUpperBoundRange( const Surroundings& around ) {
      if ( !trace.anyEnabled() ) {
         return around.upperLow( entry_.get() ) == around.vid().value() &&
                matches( around.upper( entry_.get() )->value(), around.vid(), mapping_ );
      }
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInUpperBoundRange",
                 " intfId: ", entry_.intfId(), " inVlanId: ", around.vid(),
                 " mapping: ", mapping_ );
      const Zel::Ptr< VlanRangeEntry > present = entry_.anew();
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
      return matches( range, around.vid(), mapping_ );
   }

   bool isVidAndDot1qInLowerBoundRange( const Surroundings& around ) {
      if ( !trace.anyEnabled() ) {
         return around.lowerStart( entry_.get() ) != Surroundings::kNone &&
                matches( around.lowerRange(), around.vid(), mapping_ );
      }
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
                 " intfId: ", entry_.intfId(), " inVlanId: ", around.vid(),
                 " mapping: ", mapping_ );
      const Zel::Ptr< VlanRangeEntry > present = entry_.anew();
      const Surroundings now( around.vid() );
      if ( now.lowerStart( *present ) == Surroundings::kNone ) {
         ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange",
                    " lower bound iterator empty" );
         return false;
      }
      const VlanRangeXlateMapping range = now.lowerRange();
      ZEL_TRACE( trace, kArguments, __LINE__, "isVidAndDot1qInLowerBoundRange", " lBoundRange  ",
                 range );
      return matches( range, around.vid(), mapping_ );
   }

 private:
   EntryOf& entry_;
   const VlanXlateMapping mapping_;
};

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
   return BoundTests( vlanRangeEntry, mapping )
      .isVidAndDot1qInUpperBoundRange( Surroundings( vid ) );
}

bool
MoxVlanRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) const {
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   return BoundTests( vlanRangeEntry, mapping )
      .isVidAndDot1qInLowerBoundRange( Surroundings( vid ) );
}

// The assertions below name their variables in what they print; those names are kept on purpose.
void
MoxVlanRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
   ZEL_TRACE( trace, kArguments, __LINE__, "addVlanToIdx", " intfId: ", intfId, " vlanId: ", vid,
              " mapping: ", mapping );
   EntryOf vlanRangeEntry( *vlanRangeEntryDir_, intfId );
   vlanRangeEntry.get();   // it is there when the first test is traced
   const Surroundings here( vid );
   BoundTests tests( vlanRangeEntry, mapping );
   if ( tests.isVidAndDot1qInLowerBoundRange( here ) ||
        tests.isVidAndDot1qInUpperBoundRange( here ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "addVlanToIdx", " already present returning " );
      return;
   }
   const bool joinsUpper =
      vid.value() < VlanId::kHighest && tests.isVidAndDot1qInUpperBoundRange( here.above() );
   const bool joinsLower =
      vid.value() != VlanId::kLowest && tests.isVidAndDot1qInLowerBoundRange( here.below() );

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
   const Surroundings here( vid );
   BoundTests tests( vlanRangeEntry, any );
   const bool traced = trace.anyEnabled();
   const bool startsHere = tests.isVidAndDot1qInUpperBoundRange( here );
   if ( !startsHere && !tests.isVidAndDot1qInLowerBoundRange( here ) ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid not present in lower and upper bound range " );
      return;
   }
   if ( traced ? tests.isVidAndDot1qInUpperBoundRange( here ) : startsHere ) {
      ZEL_TRACE( trace, kDecision, __LINE__, "deleteVlanFromIdx",
                 " vid present in upper bound range " );
      const auto uBoundIter = here.upper( vlanRangeEntry.get() );
      ZEL_ASSERT( uBoundIter );
      deleteVlanFromRange( intfId, vid, uBoundIter->value() );
   } else if ( !traced || tests.isVidAndDot1qInLowerBoundRange( here ) ) {
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
