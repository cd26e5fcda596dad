// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeRules: what adding and deleting a VLAN id does to the ranges of one interface.
//
// Store      The interface's ranges: RangeStore, or one that looks on in a test. It has upperBound(),
//            lowerBound(), reserve(), trim() and the mutators of VlanRangeEntry.
// Traced     The same text with the trace lines and without them, for even a line that is switched
//            off costs, and without readers searches can be shared.
// Memory     Is taken before the first change: when it runs out, the index is as it was.
#pragma once

#include <cstdint>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/Assert.h"
#include "Zel/Trace.h"

namespace MoxVlanMapping {

/// The trace lines of one operation on one interface; none when not `kTraced`.
template < bool kTraced >
class RangeTrace {
 public:
   static constexpr unsigned kDecision = 1;
   static constexpr unsigned kArguments = 9;
   static constexpr char kUpperTest[] = "isVidAndDot1qInUpperBoundRange";
   static constexpr char kLowerTest[] = "isVidAndDot1qInLowerBoundRange";
   static constexpr char kAdd[] = "addVlanToIdx";
   static constexpr char kDelete[] = "deleteVlanFromIdx";
   static constexpr char kDeleteFrom[] = "deleteVlanFromRange";

   /// `dir` is used when `kTraced` alone.
   RangeTrace( Zel::TraceHandle& handle, Corvel::IntfId intfId, VlanRangeEntryDir* dir )
       : handle_( handle ), intfId_( intfId ), dir_( dir ) {}

   /// The interface's entry, which the reader of the trace may have replaced.
   Zel::Ptr< VlanRangeEntry > entry() const { return dir_->vlanRangeEntryIs( intfId_ ); }

   template < class... Pieces >
   void operator()( unsigned level, int line, const char* function,
                    const Pieces&... pieces ) const {
      if constexpr ( kTraced ) {
         if ( handle_.enabled( level ) ) [[unlikely]] {
            Zel::traceLine( handle_, level, "MoxVlanMapping/MoxVlanRangeMgr", line, function,
                            [ & ] { return Zel::traceText( function, pieces... ); } );
         }
      }
   }
   // The first line of each operation, which comes before the interface's entry is made.
   void test( const char* function, Bridging::VlanId vid,
              Bridging::VlanXlateMapping mapping ) const {
      ( *this )( kArguments, __LINE__, function, " intfId: ", intfId_, " inVlanId: ", vid,
                 " mapping: ", mapping );
   }
   void addition( Bridging::VlanId vid, Bridging::VlanXlateMapping mapping ) const {
      ( *this )( kArguments, __LINE__, kAdd, " intfId: ", intfId_, " vlanId: ", vid,
                 " mapping: ", mapping );
   }
   void deletion( Bridging::VlanId vid ) const {
      ( *this )( kArguments, __LINE__, kDelete, " intfId: ", intfId_, " vlanId: ", vid );
   }
   void deletionFrom( Bridging::VlanId vid, const VlanRangeXlateMapping& vidRange ) const {
      ( *this )( kArguments, __LINE__, kDeleteFrom, " intfId: ", intfId_, " vlanId: ", vid,
                 " vidRange: ", vidRange );
   }

 private:
   Zel::TraceHandle& handle_;
   const Corvel::IntfId intfId_;
   VlanRangeEntryDir* const dir_;
};

/// Each operation comes behind its first trace line.
template < class Store, bool kTraced >
class RangeRules {
 public:
   using VlanId = Bridging::VlanId;
   using Mapping = Bridging::VlanXlateMapping;
   using Range = VlanRangeXlateMapping;
   using Trace = RangeTrace< kTraced >;
   using Found = typename Store::Found;

   RangeRules( const Trace& trace, Store& store ) : say( trace ), vlanRangeEntry( &store ) {}

   [[gnu::always_inline]] bool isInUpperBound( VlanId vid, Mapping mapping ) {
      const Found found = testedUpper( vid );
      if ( !found ) {
         say( Trace::kArguments, __LINE__, Trace::kUpperTest, " upper bound iterator empty" );
         return false;
      }
      const Range range = found.value();
      // "uppper" is kept on purpose: the text is matched by those who read the traces.
      say( Trace::kArguments, __LINE__, Trace::kUpperTest, " uppper bound Range: ", range );
      return matches( range, vid, mapping );
   }
   [[gnu::always_inline]] bool isInLowerBound( VlanId vid, Mapping mapping ) {
      const Found found = testedLower( vid );
      if ( !found ) {
         say( Trace::kArguments, __LINE__, Trace::kLowerTest, " lower bound iterator empty" );
         return false;
      }
      const Range range = found.value();
      say( Trace::kArguments, __LINE__, Trace::kLowerTest, " lBoundRange  ", range );
      return matches( range, vid, mapping );
   }

   void addVlanToIdx( VlanId vid, Mapping mapping );
   void deleteVlanFromIdx( VlanId vid );
   void deleteVlanFromRange( VlanId vid, Range vidRange );

   static bool isIn( const Range& range, VlanId vid ) {
      return !( vid < range.lowVid() ) && !( range.highVid() < vid );
   }

 private:
   static constexpr char zelSourceTag[] = "MoxVlanMapping/MoxVlanRangeMgr";

   // While nobody reads the trace nothing changes between two searches, and an id between the one
   // that was asked for and the one that was found finds the same.
   [[gnu::always_inline]] Found upper( VlanId vid ) {
      const bool isKnown =
         upperAsked_ <= vid.value() && ( !upper_ || vid.value() <= upper_.start() );
      if ( kTraced || !isKnown ) {
         upper_ = vlanRangeEntry->upperBound( vid );
         upperAsked_ = vid.value();
      }
      return upper_;
   }
   [[gnu::always_inline]] Found lower( VlanId vid ) {
      const bool isKnown =
         vid.value() <= lowerAsked_ && ( !lower_ || lower_.start() <= vid.value() );
      if ( kTraced || !isKnown ) {
         lower_ = vlanRangeEntry->lowerBound( vid.value() );
         lowerAsked_ = vid.value();
      }
      return lower_;
   }
   // Each traced test looks the entry up for itself.
   [[gnu::always_inline]] Found testedUpper( VlanId vid ) {
      if constexpr ( kTraced ) {
         return say.entry()->store().upperBound( vid );
      } else {
         return upper( vid );
      }
   }
   [[gnu::always_inline]] Found testedLower( VlanId vid ) {
      if constexpr ( kTraced ) {
         return say.entry()->store().lowerBound( vid.value() );
      } else {
         return lower( vid );
      }
   }
   [[gnu::always_inline]] bool testUpper( VlanId vid, Mapping mapping ) {
      say.test( Trace::kUpperTest, vid, mapping );
      return isInUpperBound( vid, mapping );
   }
   [[gnu::always_inline]] bool testLower( VlanId vid, Mapping mapping ) {
      say.test( Trace::kLowerTest, vid, mapping );
      return isInLowerBound( vid, mapping );
   }
   static bool matches( const Range& range, VlanId vid, Mapping mapping ) {
      return ( mapping == Mapping() || mapping == range.mapping() ) && isIn( range, vid );
   }
   // Throws the range exception for what fromRaw() let pass.
   static void requireVlanId( VlanId id ) { static_cast< void >( VlanId( id.value() ) ); }

   const Trace say;
   // The assertions below name their variables in what they print; those names are kept on purpose.
   Store* const vlanRangeEntry;
   Found upper_;
   Found lower_;
   std::uint32_t upperAsked_ = ~0u;
   std::int32_t lowerAsked_ = -1;
};

template < class Store, bool kTraced >
[[gnu::always_inline]] inline void
RangeRules< Store, kTraced >::addVlanToIdx( VlanId vid, Mapping mapping ) {
   if ( testLower( vid, mapping ) || testUpper( vid, mapping ) ) {
      say( Trace::kDecision, __LINE__, Trace::kAdd, " already present returning " );
      return;
   }
   const bool joinsUpper =
      vid.value() < VlanId::kHighest && testUpper( VlanId( vid.value() + 1u ), mapping );
   const bool joinsLower =
      vid.value() != VlanId::kLowest && testLower( VlanId( vid.value() - 1u ), mapping );

   VlanId lowVid = vid;
   VlanId highVid = vid;
   if ( joinsLower && joinsUpper ) {
      say( Trace::kDecision, __LINE__, Trace::kAdd, " merge 2 ranges " );
      const auto uBoundIter = upper( vid );
      ZEL_ASSERT( uBoundIter );
      const Range uBoundRange = uBoundIter.value();
      const auto lBoundIter = lower( vid );
      ZEL_ASSERT( lBoundIter );
      const Range lBoundRange = lBoundIter.value();
      lowVid = lBoundRange.lowVid();
      highVid = uBoundRange.highVid();
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
   } else if ( joinsUpper ) {
      say( Trace::kDecision, __LINE__, Trace::kAdd, " append to start of curRange " );
      const auto uBoundIter = upper( vid );
      ZEL_ASSERT( uBoundIter );
      const Range uBoundRange = uBoundIter.value();
      highVid = uBoundRange.highVid();
      const ReverseStartIdVlanId start( lowVid.value() );
      vlanRangeEntry->reserve( lowVid );
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() ) );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() ) );
      vlanRangeEntry->revSortedStartVidIs( start, true );
   } else if ( joinsLower ) {
      say( Trace::kDecision, __LINE__, Trace::kAdd, " append to end of prev range" );
      const auto lBoundIter = lower( vid );
      ZEL_ASSERT( lBoundIter );
      const Range lBoundRange = lBoundIter.value();
      lowVid = lBoundRange.lowVid();   // has its slot: the start stays
      ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() ) );
   } else {
      say( Trace::kDecision, __LINE__, Trace::kAdd, " vid not present in prev and cur: " );
      const ReverseStartIdVlanId start( lowVid.value() );
      vlanRangeEntry->reserve( lowVid );
      vlanRangeEntry->revSortedStartVidIs( start, true );
   }
   const Range newRange( lowVid, highVid, mapping );
   vlanRangeEntry->vlanIdRangeIs( newRange );
   say( Trace::kDecision, __LINE__, Trace::kAdd, " adding new Range: ", newRange );
}

template < class Store, bool kTraced >
[[gnu::always_inline]] inline void
RangeRules< Store, kTraced >::deleteVlanFromIdx( VlanId vid ) {
   const Mapping any;
   if ( !testUpper( vid, any ) && !testLower( vid, any ) ) {
      say( Trace::kDecision, __LINE__, Trace::kDelete,
           " vid not present in lower and upper bound range " );
      return;
   }
   if ( testUpper( vid, any ) ) {
      say( Trace::kDecision, __LINE__, Trace::kDelete, " vid present in upper bound range " );
      const auto uBoundIter = upper( vid );
      ZEL_ASSERT( uBoundIter );
      const Range uBoundRange = uBoundIter.value();
      say.deletionFrom( vid, uBoundRange );
      deleteVlanFromRange( vid, uBoundRange );
   } else if ( testLower( vid, any ) ) {
      say( Trace::kDecision, __LINE__, Trace::kDelete, " vid present in lower bound range " );
      const auto lBoundIter = lower( vid );
      ZEL_ASSERT( lBoundIter );
      const Range lBoundRange = lBoundIter.value();
      say.deletionFrom( vid, lBoundRange );
      deleteVlanFromRange( vid, lBoundRange );
   }
}

// A copy of the range: what is passed may be the stored element itself, which goes below.
template < class Store, bool kTraced >
[[gnu::always_inline]] inline void
RangeRules< Store, kTraced >::deleteVlanFromRange( VlanId vid, const Range vidRange ) {
   const bool isOnly = vidRange.lowVid() == vidRange.highVid();
   const bool isFirst = vid == vidRange.lowVid();
   const bool isLast = vid == vidRange.highVid();
   // Not checked yet: an id without a neighbour is refused where the neighbour is stored.
   const VlanId vidBelow = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() - 1 ) );
   const VlanId vidAbove = VlanId::fromRaw( static_cast< std::uint16_t >( vid.value() + 1 ) );
   const Range rangeBelow( vidRange.lowVid(), vidBelow, vidRange.mapping() );
   const Range rangeAbove( vidAbove, vidRange.highVid(), vidRange.mapping() );
   if ( !isOnly ) {
      vlanRangeEntry->reserve( isFirst || !isLast ? vidAbove : vidRange.lowVid() );
   }
   ZEL_ASSERT( vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() ) );
   if ( isOnly ) {
      say( Trace::kDecision, __LINE__, Trace::kDeleteFrom, " removing size 1 Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      vlanRangeEntry->trim();
   } else if ( isFirst ) {
      say( Trace::kDecision, __LINE__, Trace::kDeleteFrom, " remove lowVid from Range " );
      ZEL_ASSERT( vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() ) );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( rangeAbove );
      vlanRangeEntry->revSortedStartVidIs( vidAbove.value(), true );
   } else if ( isLast ) {
      say( Trace::kDecision, __LINE__, Trace::kDeleteFrom, " remove highVid from Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( rangeBelow );
   } else {
      // One "t" and two blanks are kept on purpose: this text is matched, too.
      say( Trace::kDecision, __LINE__, Trace::kDeleteFrom, " spliting  Range " );
      requireVlanId( vidBelow );
      vlanRangeEntry->vlanIdRangeIs( rangeBelow );
      requireVlanId( vidAbove );
      vlanRangeEntry->vlanIdRangeIs( rangeAbove );
      vlanRangeEntry->revSortedStartVidIs( vidAbove.value(), true );
   }
}

}   // namespace MoxVlanMapping
