// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

#include "MoxVlanMapping/SizeOrder.h"
#include "Zel/Assert.h"
#include "Zel/NewEntity.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/VlanXlateScaleEntry";

// The entry and its size order in one piece, of which the header shows the entry alone.
class OrderingEntry : public VlanXlateScaleEntry {
 protected:
   explicit OrderingEntry( Corvel::IntfId intfId ) : VlanXlateScaleEntry( intfId, order_ ) {}

 private:
   SizeOrder order_;
};

}   // namespace

VlanXlateScaleEntry::~VlanXlateScaleEntry() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanXlateScaleEntry >
VlanXlateScaleEntry::VlanXlateScaleEntryIs( Corvel::IntfId intfId ) {
   return Zel::newEntity< OrderingEntry >( intfId );
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

const VlanXlateScaleEntry::VidRangeSortedMap&
VlanXlateScaleEntry::vidRangeSorted() const {
   return vidRangeSorted_;
}

bool
VlanXlateScaleEntry::vidRangeSorted( const VlanRangeXlateMapping& range ) const {
   return vidRangeSorted_.flag( range ).value_or( false );
}

void
VlanXlateScaleEntry::vidRangeSortedIs( const VlanRangeXlateMapping& range, bool value ) {
   vidRangeSorted_.is( range, value );
}

bool
VlanXlateScaleEntry::vidRangeSortedDel( const VlanRangeXlateMapping& range ) {
   return vidRangeSorted_.del( range ).value_or( false );
}

bool
VlanXlateScaleEntry::vidRangeSortedDel( const VidRangeSortedMap::Iterator& at ) {
   ZEL_ASSERT( at.walks( vidRangeSorted() ) );
   return at.linked() && vidRangeSortedDel( at->key() );
}

void
VlanXlateScaleEntry::vidRangeSortedDelAll() {
   vidRangeSorted_.deleteAll();
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
   const auto make = [ & ] {
      return Zel::newEntity< ZelVlanXlateScaleEntry >( vlanXlateScaleEntryFactory( intfId ) );
   };
   return vlanXlateScaleEntry_.findOrInsert( intfId, make ).first->entity();
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
