// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "tests/unit/MoxVlanMapping/ChangeLog.h"

#include <utility>

#include "MoxVlanMapping/VlanRangeEntry.h"

namespace {

using MoxVlanMapping::ReverseStartIdVlanId;
using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanRangeXlateMapping;
using RangeElement = Zel::Ptr< VlanRangeEntry::ZelVlanIdRange >;
using StartElement = Zel::Ptr< VlanRangeEntry::ZelRevSortedStartVid >;

bool active = false;
std::string lines;

// Takes memory only while active: other tests of this program count the requests for it.
void
note( const char* what, unsigned id, const std::string& more = "" ) {
   if ( active ) {
      lines += what + std::to_string( id ) + more + "\n";
   }
}

}   // namespace

// A member function's first argument is its object.
#define WRAP( name ) __asm__( "__wrap__ZN14MoxVlanMapping14VlanRangeEntry" name )
#define REAL( name ) __asm__( "__real__ZN14MoxVlanMapping14VlanRangeEntry" name )
#define RANGE_IS "13vlanIdRangeIsERKN3Zel3PtrINS0_14ZelVlanIdRangeEEE"
#define RANGE_DEL "14vlanIdRangeDelEN8Bridging6VlanIdE"
#define START_IS "19revSortedStartVidIsERKN3Zel3PtrINS0_20ZelRevSortedStartVidEEE"
#define START_DEL "20revSortedStartVidDelENS_20ReverseStartIdVlanIdE"

void realRangeIs( VlanRangeEntry* entry, const RangeElement& element ) REAL( RANGE_IS );
void wrapRangeIs( VlanRangeEntry* entry, const RangeElement& element ) WRAP( RANGE_IS );
VlanRangeXlateMapping realRangeDel( VlanRangeEntry* entry, Bridging::VlanId low ) REAL( RANGE_DEL );
VlanRangeXlateMapping wrapRangeDel( VlanRangeEntry* entry, Bridging::VlanId low ) WRAP( RANGE_DEL );
void realStartIs( VlanRangeEntry* entry, const StartElement& element ) REAL( START_IS );
void wrapStartIs( VlanRangeEntry* entry, const StartElement& element ) WRAP( START_IS );
bool realStartDel( VlanRangeEntry* entry, ReverseStartIdVlanId start ) REAL( START_DEL );
bool wrapStartDel( VlanRangeEntry* entry, ReverseStartIdVlanId start ) WRAP( START_DEL );

void
wrapRangeIs( VlanRangeEntry* entry, const RangeElement& element ) {
   const VlanRangeXlateMapping& range = element->value();
   note( "insert range ", range.lowVid().value(), "-" + std::to_string( range.highVid().value() ) );
   realRangeIs( entry, element );
}

VlanRangeXlateMapping
wrapRangeDel( VlanRangeEntry* entry, Bridging::VlanId low ) {
   note( "delete range ", low.value() );
   return realRangeDel( entry, low );
}

void
wrapStartIs( VlanRangeEntry* entry, const StartElement& element ) {
   note( "insert start ", element->key().value() );
   realStartIs( entry, element );
}

bool
wrapStartDel( VlanRangeEntry* entry, ReverseStartIdVlanId start ) {
   note( "delete start ", start.value() );
   return realStartDel( entry, start );
}

namespace TestSupport {

void
changeLogStart() {
   active = true;
   lines.clear();
}

std::string
changeLogEnd() {
   active = false;
   return std::exchange( lines, {} );
}

}   // namespace TestSupport
