// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "tests/support/LiteralRangeMgr.h"

#include <optional>

#include "Zel/Trace.h"

namespace TestSupport {
namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using MoxVlanMapping::ReverseStartIdVlanId;
using Range = LiteralRangeMgr::Range;

void
literalAssert( bool holds, const char* expression ) {
   if ( !holds ) {
      throw AssertionFailed( expression );
   }
}

std::optional< Range >
upperBound( const LiteralRangeEntry& entry, VlanId vid ) {
   const auto at = entry.ranges.elements().lower_bound( vid.value() );
   return at == entry.ranges.elements().end() ? std::nullopt : std::optional( *at->second );
}

std::optional< std::uint16_t >
lowerBound( const LiteralRangeEntry& entry, VlanId vid ) {
   const ReverseStartIdVlanId start( vid.value() );
   const auto at = entry.starts.elements().lower_bound( start.value() );
   return at == entry.starts.elements().end() ? std::nullopt : std::optional( at->first );
}

Range
rangeAt( const LiteralRangeEntry& entry, std::uint16_t start ) {
   return entry.range( VlanId( start ) );
}

bool
matches( VlanXlateMapping mapping, const Range& range ) {
   return mapping == VlanXlateMapping() || mapping == range.mapping();
}

}   // namespace

Range
LiteralRangeEntry::range( VlanId lowVid ) const {
   const auto stored = ranges.find( lowVid.value() );
   return stored ? *stored : Range();
}

template < class... Pieces >
void
LiteralRangeMgr::trace( const char* level, const Pieces&... pieces ) {
   lines.push_back( Zel::traceText( level, " ", pieces... ) );
   onLine();
}

bool
LiteralRangeMgr::isVidInRange( const Range& range, VlanId vid ) const {
   return range.lowVid().value() <= vid.value() && vid.value() <= range.highVid().value();
}

bool
LiteralRangeMgr::isVidAndDot1qInUpperBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) {
   trace( "9", "isVidAndDot1qInUpperBoundRange", " intfId: ", intfId, " inVlanId: ", vid,
          " mapping: ", mapping );
   const auto range = upperBound( entry( intfId ), vid );
   if ( !range ) {
      trace( "9", "isVidAndDot1qInUpperBoundRange", " upper bound iterator empty" );
      return false;
   }
   trace( "9", "isVidAndDot1qInUpperBoundRange", " uppper bound Range: ", *range );
   return matches( mapping, *range ) && isVidInRange( *range, vid );
}

bool
LiteralRangeMgr::isVidAndDot1qInLowerBoundRange( IntfId intfId, VlanId vid,
                                                 VlanXlateMapping mapping ) {
   trace( "9", "isVidAndDot1qInLowerBoundRange", " intfId: ", intfId, " inVlanId: ", vid,
          " mapping: ", mapping );
   const auto start = lowerBound( entry( intfId ), vid );
   if ( !start ) {
      trace( "9", "isVidAndDot1qInLowerBoundRange", " lower bound iterator empty" );
      return false;
   }
   const Range range = rangeAt( entry( intfId ), *start );
   trace( "9", "isVidAndDot1qInLowerBoundRange", " lBoundRange  ", range );
   return matches( mapping, range ) && isVidInRange( range, vid );
}

void
LiteralRangeMgr::addVlanToIdx( IntfId intfId, VlanId vid, VlanXlateMapping mapping ) {
   trace( "9", "addVlanToIdx", " intfId: ", intfId, " vlanId: ", vid, " mapping: ", mapping );
   LiteralRangeEntry& vlanRangeEntry = entry( intfId );
   if ( isVidAndDot1qInLowerBoundRange( intfId, vid, mapping ) ||
        isVidAndDot1qInUpperBoundRange( intfId, vid, mapping ) ) {
      trace( "1", "addVlanToIdx", " already present returning " );
      return;
   }
   bool joinsUpper = false;
   if ( vid.value() < 4094 ) {
      joinsUpper = isVidAndDot1qInUpperBoundRange( intfId, VlanId( vid.value() + 1u ), mapping );
   }
   bool joinsLower = false;
   if ( vid.value() != 1 ) {
      joinsLower = isVidAndDot1qInLowerBoundRange( intfId, VlanId( vid.value() - 1u ), mapping );
   }
   if ( joinsLower && joinsUpper ) {
      trace( "1", "addVlanToIdx", " merge 2 ranges " );
      merge( vlanRangeEntry, vid, mapping );
   } else if ( joinsLower ) {
      trace( "1", "addVlanToIdx", " append to end of prev range" );
      extendBack( vlanRangeEntry, vid, mapping );
   } else if ( joinsUpper ) {
      trace( "1", "addVlanToIdx", " append to start of curRange " );
      extendFront( vlanRangeEntry, vid, mapping );
   } else {
      trace( "1", "addVlanToIdx", " vid not present in prev and cur: " );
      vlanRangeEntry.startIs( vid.value(), true );
      insertNew( vlanRangeEntry, { vid, vid, mapping } );
   }
}

void
LiteralRangeMgr::merge( LiteralRangeEntry& vlanRangeEntry, VlanId vid, VlanXlateMapping mapping ) {
   const auto upper = upperBound( vlanRangeEntry, vid );
   literalAssert( upper.has_value(), "uBoundIter" );
   const auto start = lowerBound( vlanRangeEntry, vid );
   literalAssert( start.has_value(), "lBoundIter" );
   const Range lower = rangeAt( vlanRangeEntry, *start );
   literalAssert( static_cast< bool >( vlanRangeEntry.rangeDel( upper->lowVid() ) ),
                  "vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() )" );
   literalAssert( static_cast< bool >( vlanRangeEntry.rangeDel( lower.lowVid() ) ),
                  "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )" );
   literalAssert( vlanRangeEntry.startDel( upper->lowVid().value() ),
                  "vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() )" );
   insertNew( vlanRangeEntry, { lower.lowVid(), upper->highVid(), mapping } );
}

void
LiteralRangeMgr::extendFront( LiteralRangeEntry& vlanRangeEntry, VlanId vid,
                              VlanXlateMapping mapping ) {
   const auto upper = upperBound( vlanRangeEntry, vid );
   literalAssert( upper.has_value(), "uBoundIter" );
   literalAssert( static_cast< bool >( vlanRangeEntry.rangeDel( upper->lowVid() ) ),
                  "vlanRangeEntry->vlanIdRangeDel( uBoundRange.lowVid() )" );
   literalAssert( vlanRangeEntry.startDel( upper->lowVid().value() ),
                  "vlanRangeEntry->revSortedStartVidDel( uBoundRange.lowVid().value() )" );
   vlanRangeEntry.startIs( vid.value(), true );
   insertNew( vlanRangeEntry, { vid, upper->highVid(), mapping } );
}

void
LiteralRangeMgr::extendBack( LiteralRangeEntry& vlanRangeEntry, VlanId vid,
                             VlanXlateMapping mapping ) {
   const auto start = lowerBound( vlanRangeEntry, vid );
   literalAssert( start.has_value(), "lBoundIter" );
   const Range lower = rangeAt( vlanRangeEntry, *start );
   literalAssert( static_cast< bool >( vlanRangeEntry.rangeDel( lower.lowVid() ) ),
                  "vlanRangeEntry->vlanIdRangeDel( lBoundRange.lowVid() )" );
   insertNew( vlanRangeEntry, { lower.lowVid(), vid, mapping } );
}

void
LiteralRangeMgr::insertNew( LiteralRangeEntry& vlanRangeEntry, const Range& range ) {
   vlanRangeEntry.rangeIs( range );
   trace( "1", "addVlanToIdx", " adding new Range: ", range );
}

void
LiteralRangeMgr::deleteVlanFromIdx( IntfId intfId, VlanId vid ) {
   trace( "9", "deleteVlanFromIdx", " intfId: ", intfId, " vlanId: ", vid );
   const VlanXlateMapping any;
   LiteralRangeEntry& vlanRangeEntry = entry( intfId );
   if ( !isVidAndDot1qInUpperBoundRange( intfId, vid, any ) &&
        !isVidAndDot1qInLowerBoundRange( intfId, vid, any ) ) {
      trace( "1", "deleteVlanFromIdx", " vid not present in lower and upper bound range " );
      return;
   }
   if ( isVidAndDot1qInUpperBoundRange( intfId, vid, any ) ) {
      trace( "1", "deleteVlanFromIdx", " vid present in upper bound range " );
      const auto upper = upperBound( vlanRangeEntry, vid );
      literalAssert( upper.has_value(), "uBoundIter" );
      deleteVlanFromRange( intfId, vid, *upper );
   } else if ( isVidAndDot1qInLowerBoundRange( intfId, vid, any ) ) {
      trace( "1", "deleteVlanFromIdx", " vid present in lower bound range " );
      const auto start = lowerBound( vlanRangeEntry, vid );
      literalAssert( start.has_value(), "lBoundIter" );
      deleteVlanFromRange( intfId, vid, rangeAt( vlanRangeEntry, *start ) );
   }
}

void
LiteralRangeMgr::deleteVlanFromRange( IntfId intfId, VlanId vid, const Range& vidRange ) {
   trace( "9", "deleteVlanFromRange", " intfId: ", intfId, " vlanId: ", vid,
          " vidRange: ", vidRange );
   LiteralRangeEntry& vlanRangeEntry = entry( intfId );
   const VlanId lowVid = vidRange.lowVid();
   const VlanId highVid = vidRange.highVid();
   literalAssert( static_cast< bool >( vlanRangeEntry.rangeDel( lowVid ) ),
                  "vlanRangeEntry->vlanIdRangeDel( vidRange.lowVid() )" );
   if ( lowVid == highVid ) {
      trace( "1", "deleteVlanFromRange", " removing size 1 Range " );
      literalAssert( vlanRangeEntry.startDel( lowVid.value() ),
                     "vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() )" );
   } else if ( vid == lowVid ) {
      trace( "1", "deleteVlanFromRange", " remove lowVid from Range " );
      literalAssert( vlanRangeEntry.startDel( lowVid.value() ),
                     "vlanRangeEntry->revSortedStartVidDel( vidRange.lowVid().value() )" );
      const VlanId above( vid.value() + 1u );
      vlanRangeEntry.rangeIs( { above, highVid, vidRange.mapping() } );
      vlanRangeEntry.startIs( above.value(), true );
   } else if ( vid == highVid ) {
      trace( "1", "deleteVlanFromRange", " remove highVid from Range " );
      const VlanId below( vid.value() - 1u );
      vlanRangeEntry.rangeIs( { lowVid, below, vidRange.mapping() } );
   } else {
      trace( "1", "deleteVlanFromRange", " spliting  Range " );
      const VlanId below( vid.value() - 1u );
      vlanRangeEntry.rangeIs( { lowVid, below, vidRange.mapping() } );
      const VlanId above( vid.value() + 1u );
      vlanRangeEntry.rangeIs( { above, highVid, vidRange.mapping() } );
      vlanRangeEntry.startIs( above.value(), true );
   }
}

}   // namespace TestSupport
