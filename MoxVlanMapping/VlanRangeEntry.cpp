// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanRangeEntry.h"

#include "Zel/NewEntity.h"

namespace MoxVlanMapping {

VlanRangeEntry::~VlanRangeEntry() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanRangeEntry >
VlanRangeEntry::VlanRangeEntryIs( Corvel::IntfId intfId ) {
   return Zel::newEntity< VlanRangeEntry >( intfId );
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRange( Bridging::VlanId lowVid ) const {
   const ZelVlanIdRange* node = vlanIdRange_.findNode( lowVid );
   return node ? node->value() : VlanRangeXlateMapping();
}

void
VlanRangeEntry::vlanIdRangeIs( const VlanRangeXlateMapping& range ) {
   if ( ZelVlanIdRange* node = vlanIdRange_.findNode( range.lowVid() ) ) {
      node->valueIs( range );
   } else {
      vlanIdRange_.insert( Zel::newEntity< ZelVlanIdRange >( range ) );
   }
}

void
VlanRangeEntry::vlanIdRangeIs( const Zel::Ptr< ZelVlanIdRange >& element ) {
   ZelVlanIdRange& stored = vlanIdRange_.insertOrFind( element );
   if ( &stored != element.get() ) {
      stored.valueIs( element->value() );
   }
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRangeDel( Bridging::VlanId lowVid ) {
   const Zel::Ptr< ZelVlanIdRange > gone = vlanIdRange_.del( lowVid );
   return gone ? gone->value() : VlanRangeXlateMapping();
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRangeDel( const VlanIdRangeMap::Iterator& at ) {
   const Zel::Ptr< ZelVlanIdRange > gone = vlanIdRange_.del( at );
   return gone ? gone->value() : VlanRangeXlateMapping();
}

bool
VlanRangeEntry::revSortedStartVid( ReverseStartIdVlanId start ) const {
   const ZelRevSortedStartVid* node = revSortedStartVid_.findNode( start );
   return node && node->value();
}

void
VlanRangeEntry::revSortedStartVidIs( ReverseStartIdVlanId start, bool value ) {
   if ( ZelRevSortedStartVid* node = revSortedStartVid_.findNode( start ) ) {
      node->valueIs( value );
   } else {
      revSortedStartVid_.insert( Zel::newEntity< ZelRevSortedStartVid >( start, value ) );
   }
}

void
VlanRangeEntry::revSortedStartVidIs( const Zel::Ptr< ZelRevSortedStartVid >& element ) {
   ZelRevSortedStartVid& stored = revSortedStartVid_.insertOrFind( element );
   if ( &stored != element.get() ) {
      stored.valueIs( element->value() );
   }
}

bool
VlanRangeEntry::revSortedStartVidDel( ReverseStartIdVlanId start ) {
   const Zel::Ptr< ZelRevSortedStartVid > gone = revSortedStartVid_.del( start );
   return gone && gone->value();
}

bool
VlanRangeEntry::revSortedStartVidDel( const RevSortedStartVidMap::Iterator& at ) {
   const Zel::Ptr< ZelRevSortedStartVid > gone = revSortedStartVid_.del( at );
   return gone && gone->value();
}

VlanRangeEntryDir::~VlanRangeEntryDir() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanRangeEntryDir >
VlanRangeEntryDir::VlanRangeEntryDirIs() {
   return Zel::newEntity< VlanRangeEntryDir >();
}

Zel::Ptr< VlanRangeEntry >
VlanRangeEntryDir::vlanRangeEntry( Corvel::IntfId intfId ) const {
   const ZelVlanRangeEntry* node = vlanRangeEntry_.findNode( intfId );
   return node ? node->entity() : nullptr;
}

Zel::Ptr< VlanRangeEntry >
VlanRangeEntryDir::vlanRangeEntryIs( Corvel::IntfId intfId ) {
   if ( const ZelVlanRangeEntry* node = vlanRangeEntry_.findNode( intfId ) ) {
      return node->entity();
   }
   Zel::Ptr< VlanRangeEntry > entry = vlanRangeEntryFactory( intfId );
   vlanRangeEntry_.insert( Zel::newEntity< ZelVlanRangeEntry >( entry ) );
   return entry;
}

Zel::Ptr< VlanRangeEntry >
VlanRangeEntryDir::vlanRangeEntryDel( Corvel::IntfId intfId ) {
   const Zel::Ptr< ZelVlanRangeEntry > gone = vlanRangeEntry_.del( intfId );
   return gone ? gone->entity() : nullptr;
}

Zel::Ptr< VlanRangeEntry >
vlanRangeEntryFactory( Corvel::IntfId intfId ) {
   return VlanRangeEntry::VlanRangeEntryIs( intfId );
}

Zel::Ptr< VlanRangeEntryDir >
vlanRangeEntryDirFactory() {
   return VlanRangeEntryDir::VlanRangeEntryDirIs();
}

}   // namespace MoxVlanMapping
