// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

#include "Zel/NewEntity.h"

namespace MoxVlanMapping {

VlanXlateScaleEntry::~VlanXlateScaleEntry() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanXlateScaleEntry >
VlanXlateScaleEntry::VlanXlateScaleEntryIs( Corvel::IntfId intfId ) {
   return Zel::newEntity< VlanXlateScaleEntry >( intfId );
}

void
VlanXlateScaleEntry::vlanInXlateHashTableIs( Bridging::VlanId vlanId ) {
   if ( !vlanInXlateHashTable_.contains( vlanId ) ) {
      vlanInXlateHashTable_.insert( Zel::newEntity< ZelVlanInXlateHashTable >( vlanId ) );
   }
}

bool
VlanXlateScaleEntry::vlanInXlateHashTableDel( Bridging::VlanId vlanId ) {
   return static_cast< bool >( vlanInXlateHashTable_.del( vlanId ) );
}

bool
VlanXlateScaleEntry::vidRangeSorted( const VlanRangeXlateMapping& range ) const {
   const ZelVidRangeSorted* node = vidRangeSorted_.findNode( range );
   return node && node->value();
}

void
VlanXlateScaleEntry::vidRangeSortedIs( const VlanRangeXlateMapping& range, bool value ) {
   if ( ZelVidRangeSorted* node = vidRangeSorted_.findNode( range ) ) {
      node->valueIs( value );
   } else {
      vidRangeSorted_.insert( Zel::newEntity< ZelVidRangeSorted >( range, value ) );
   }
}

void
VlanXlateScaleEntry::vidRangeSortedRefill( std::span< const VlanRangeXlateMapping > sorted,
                                           std::vector< ZelVidRangeSorted* >& nodes ) {
   vidRangeSorted_.refill(
      sorted, nodes,
      [] { return Zel::newEntity< ZelVidRangeSorted >( VlanRangeXlateMapping(), true ); },
      []( ZelVidRangeSorted& element, const VlanRangeXlateMapping& range ) {
         element.keyIs( range );
         element.valueIs( true );
      } );
}

bool
VlanXlateScaleEntry::vidRangeSortedDel( const VlanRangeXlateMapping& range ) {
   const Zel::Ptr< ZelVidRangeSorted > gone = vidRangeSorted_.del( range );
   return gone && gone->value();
}

bool
VlanXlateScaleEntry::vidRangeSortedDel( const VidRangeSortedMap::Iterator& at ) {
   const Zel::Ptr< ZelVidRangeSorted > gone = vidRangeSorted_.del( at );
   return gone && gone->value();
}

VlanXlateScaleEntryDir::~VlanXlateScaleEntryDir() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanXlateScaleEntryDir >
VlanXlateScaleEntryDir::VlanXlateScaleEntryDirIs() {
   return Zel::newEntity< VlanXlateScaleEntryDir >();
}

Zel::Ptr< VlanXlateScaleEntry >
VlanXlateScaleEntryDir::vlanXlateScaleEntry( Corvel::IntfId intfId ) const {
   const ZelVlanXlateScaleEntry* node = vlanXlateScaleEntry_.findNode( intfId );
   return node ? node->entity() : nullptr;
}

Zel::Ptr< VlanXlateScaleEntry >
VlanXlateScaleEntryDir::vlanXlateScaleEntryIs( Corvel::IntfId intfId ) {
   if ( const ZelVlanXlateScaleEntry* node = vlanXlateScaleEntry_.findNode( intfId ) ) {
      return node->entity();
   }
   Zel::Ptr< VlanXlateScaleEntry > entry = vlanXlateScaleEntryFactory( intfId );
   vlanXlateScaleEntry_.insert( Zel::newEntity< ZelVlanXlateScaleEntry >( entry ) );
   return entry;
}

Zel::Ptr< VlanXlateScaleEntry >
VlanXlateScaleEntryDir::vlanXlateScaleEntryDel( Corvel::IntfId intfId ) {
   const Zel::Ptr< ZelVlanXlateScaleEntry > gone = vlanXlateScaleEntry_.del( intfId );
   return gone ? gone->entity() : nullptr;
}

Zel::Ptr< VlanXlateScaleEntry >
vlanXlateScaleEntryFactory( Corvel::IntfId intfId ) {
   return VlanXlateScaleEntry::VlanXlateScaleEntryIs( intfId );
}

Zel::Ptr< VlanXlateScaleEntryDir >
vlanXlateScaleEntryDirFactory() {
   return VlanXlateScaleEntryDir::VlanXlateScaleEntryDirIs();
}

}   // namespace MoxVlanMapping
