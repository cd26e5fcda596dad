// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanRangeEntry.h"

#include "MoxVlanMapping/RangeStore.h"
#include "Zel/Assert.h"
#include "Zel/NewEntity.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/VlanRangeEntry";

// The entry and its store in one piece, of which the header shows the entry alone.
class StoringEntry : public VlanRangeEntry {
 protected:
   explicit StoringEntry( Corvel::IntfId intfId ) : VlanRangeEntry( intfId, ranges_ ) {}

 private:
   RangeStore ranges_;
};

}   // namespace

VlanRangeEntry::~VlanRangeEntry() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanRangeEntry >
VlanRangeEntry::VlanRangeEntryIs( Corvel::IntfId intfId ) {
   return Zel::newEntity< StoringEntry >( intfId );
}

const VlanRangeEntry::VlanIdRangeMap&
VlanRangeEntry::vlanIdRange() const {
   return store_.vlanIdRange();
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRange( Bridging::VlanId lowVid ) const {
   const auto found = store_.range( lowVid );
   return found ? found.value() : VlanRangeXlateMapping();
}

void
VlanRangeEntry::vlanIdRangeIs( const VlanRangeXlateMapping& range ) {
   store_.reserve( range.lowVid() );
   store_.vlanIdRangeIs( range );
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRangeDel( Bridging::VlanId lowVid ) {
   const VlanRangeXlateMapping gone = vlanIdRange( lowVid );
   store_.vlanIdRangeDel( lowVid );
   store_.trim();
   return gone;
}

VlanRangeXlateMapping
VlanRangeEntry::vlanIdRangeDel( const VlanIdRangeMap::Iterator& at ) {
   ZEL_ASSERT( at.walks( vlanIdRange() ) );
   return at.linked() ? vlanIdRangeDel( at->key() ) : VlanRangeXlateMapping();
}

void
VlanRangeEntry::vlanIdRangeDelAll() {
   store_.vlanIdRangeDelAll();
}

const VlanRangeEntry::RevSortedStartVidMap&
VlanRangeEntry::revSortedStartVid() const {
   return store_.revSortedStartVid();
}

bool
VlanRangeEntry::revSortedStartVid( ReverseStartIdVlanId start ) const {
   return store_.revSortedStartVid( start );
}

void
VlanRangeEntry::revSortedStartVidIs( ReverseStartIdVlanId start, bool value ) {
   store_.reserve( Bridging::VlanId::fromRaw( start.value() ) );
   store_.revSortedStartVidIs( start, value );
}

bool
VlanRangeEntry::revSortedStartVidDel( ReverseStartIdVlanId start ) {
   const bool flag = store_.revSortedStartVidDel( start );
   store_.trim();
   return flag;
}

bool
VlanRangeEntry::revSortedStartVidDel( const RevSortedStartVidMap::Iterator& at ) {
   ZEL_ASSERT( at.walks( revSortedStartVid() ) );
   return at.linked() && revSortedStartVidDel( at->key() );
}

void
VlanRangeEntry::revSortedStartVidDelAll() {
   store_.revSortedStartVidDelAll();
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
   const auto make = [ & ] {
      return Zel::newEntity< ZelVlanRangeEntry >( vlanRangeEntryFactory( intfId ) );
   };
   return vlanRangeEntry_.findOrInsert( intfId, make ).first->entity();
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
