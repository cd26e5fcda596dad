// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanXlateScaleEntry, VlanXlateScaleEntryDir: the ranges of each interface in order of size.
//
// Policy      None: the size sort fills vidRangeSorted; whoever programs the hardware may keep
//             VLAN ids in vlanInXlateHashTable. Nobody is told of changes.
// Ownership   The directory holds its entries; whoever holds a removed entry keeps it alive.
// Misses      Are never errors: deletions return false or null, ...Is() inserts or overwrites.
// Iterators   Usable after any change (Zel/StdIterator.h).
// Throws      std::bad_alloc from ...Is(), with nothing changed.
// Threads     One thread, no locks.
#pragma once

#include "Bridging/VlanId.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"
#include "Zel/Export.h"
#include "Zel/HashMap2018.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/RbTreeMap.h"

namespace MoxVlanMapping {

class SizeOrder;

/// One interface's ranges, largest first, and a set of its VLAN ids. A look-up in vidRangeSorted is
/// O(log n), a step of an iterator O(1), a single change O(n); all on vlanInXlateHashTable is O(1)
/// on average.
class ZEL_EXPORT VlanXlateScaleEntry : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanXlateScaleEntry";
   static Zel::Ptr< VlanXlateScaleEntry > VlanXlateScaleEntryIs( Corvel::IntfId intfId );

   class ZelVlanInXlateHashTable : public Zel::HashSetNode< Bridging::VlanId > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::VlanXlateScaleEntry::ZelVlanInXlateHashTable";

    protected:
      using HashSetNode::HashSetNode;
   };

   /// Element of vidRangeSorted: the whole range is the key.
   class VidRangeSorted {
    public:
      VidRangeSorted() = default;
      VidRangeSorted( const VlanRangeXlateMapping& key, bool value )
          : key_( key ), value_( value ) {}
      const VlanRangeXlateMapping& key() const { return key_; }
      bool value() const { return value_; }

    private:
      VlanRangeXlateMapping key_;
      bool value_ = false;
   };
   class ZelVidRangeSorted : public Zel::RbTreeNode< VidRangeSorted > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::VlanXlateScaleEntry::ZelVidRangeSorted";

    protected:
      using RbTreeNode::RbTreeNode;
   };

   using VlanInXlateHashTableSet = Zel::HashMap2018< ZelVlanInXlateHashTable, 0x21981069 >;
   using VidRangeSortedMap = Zel::RbTreeMap< ZelVidRangeSorted >;

   Corvel::IntfId intfId() const { return intfId_; }

   const VlanInXlateHashTableSet& vlanInXlateHashTable() const { return vlanInXlateHashTable_; }
   /// Adds the id; nothing when it is a member.
   void vlanInXlateHashTableIs( Bridging::VlanId vlanId );
   /// True when it was a member.
   bool vlanInXlateHashTableDel( Bridging::VlanId vlanId );
   void vlanInXlateHashTableDelAll() { vlanInXlateHashTable_.deleteAll(); }

   const VidRangeSortedMap& vidRangeSorted() const;
   /// The range's flag; false when it is not there.
   bool vidRangeSorted( const VlanRangeXlateMapping& range ) const;
   /// Inserts, or overwrites the flag of the equal range.
   void vidRangeSortedIs( const VlanRangeXlateMapping& range, bool value );
   /// Returns the removed range's flag; false when there was none.
   bool vidRangeSortedDel( const VlanRangeXlateMapping& range );
   bool vidRangeSortedDel( const VidRangeSortedMap::Iterator& at );
   void vidRangeSortedDelAll();

   /// The inside of vidRangeSorted, for the library itself.
   SizeOrder& sizeOrder() const { return vidRangeSorted_; }

   Zel::TypeHandle fwkType() const override;

 protected:
   /// `order` is a part of the object that derives from this.
   VlanXlateScaleEntry( Corvel::IntfId intfId, SizeOrder& order )
       : intfId_( intfId ), vidRangeSorted_( order ) {}
   ~VlanXlateScaleEntry() override;

 private:
   const Corvel::IntfId intfId_;
   VlanInXlateHashTableSet vlanInXlateHashTable_;
   SizeOrder& vidRangeSorted_;
};

struct VlanXlateScaleEntryKeyFunktor {
   Corvel::IntfId operator()( const VlanXlateScaleEntry& entry ) const { return entry.intfId(); }
};

/// The scale entries of all interfaces that were sorted. All O(1) on average.
class ZEL_EXPORT VlanXlateScaleEntryDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanXlateScaleEntryDir";
   static Zel::Ptr< VlanXlateScaleEntryDir > VlanXlateScaleEntryDirIs();

   class ZelVlanXlateScaleEntry :
       public Zel::HashEntityNode< VlanXlateScaleEntry, VlanXlateScaleEntryKeyFunktor > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::VlanXlateScaleEntryDir::ZelVlanXlateScaleEntry";

    protected:
      using HashEntityNode::HashEntityNode;
   };
   using VlanXlateScaleEntryMap = Zel::HashMap2018< ZelVlanXlateScaleEntry, 0x9ca56a83 >;

   const VlanXlateScaleEntryMap& vlanXlateScaleEntry() const { return vlanXlateScaleEntry_; }
   /// The interface's entry, or null; creates nothing.
   Zel::Ptr< VlanXlateScaleEntry > vlanXlateScaleEntry( Corvel::IntfId intfId ) const;
   /// The interface's entry; an empty one is made when there is none.
   Zel::Ptr< VlanXlateScaleEntry > vlanXlateScaleEntryIs( Corvel::IntfId intfId );
   /// Returns the removed entry, or null.
   Zel::Ptr< VlanXlateScaleEntry > vlanXlateScaleEntryDel( Corvel::IntfId intfId );
   void vlanXlateScaleEntryDelAll() { vlanXlateScaleEntry_.deleteAll(); }

   Zel::TypeHandle fwkType() const override;

 protected:
   VlanXlateScaleEntryDir() = default;
   ~VlanXlateScaleEntryDir() override;

 private:
   VlanXlateScaleEntryMap vlanXlateScaleEntry_;
};

ZEL_EXPORT Zel::Ptr< VlanXlateScaleEntry > vlanXlateScaleEntryFactory( Corvel::IntfId intfId );
ZEL_EXPORT Zel::Ptr< VlanXlateScaleEntryDir > vlanXlateScaleEntryDirFactory();

}   // namespace MoxVlanMapping
