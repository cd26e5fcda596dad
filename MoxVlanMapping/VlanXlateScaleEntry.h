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

#include <span>
#include <vector>

#include "Bridging/VlanId.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"
#include "Zel/Export.h"
#include "Zel/HashMap2018.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/RbTreeMap.h"

namespace MoxVlanMapping {

/// One interface's ranges, largest first, and a set of its VLAN ids. Operations on
/// vidRangeSorted are O(log n), those on vlanInXlateHashTable O(1) on average.
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
   class ZelVidRangeSorted : public Zel::RbTreeNode< VlanRangeXlateMapping > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::VlanXlateScaleEntry::ZelVidRangeSorted";

      const VlanRangeXlateMapping& key() const { return key_; }
      /// Requires: it stands in no map, or its map is being refilled.
      void keyIs( const VlanRangeXlateMapping& key ) { key_ = key; }
      bool value() const { return value_; }
      void valueIs( bool value ) { value_ = value; }

    protected:
      ZelVidRangeSorted( const VlanRangeXlateMapping& key, bool value )
          : key_( key ), value_( value ) {}

    private:
      VlanRangeXlateMapping key_;
      bool value_;
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

   const VidRangeSortedMap& vidRangeSorted() const { return vidRangeSorted_; }
   /// The range's flag; false when it is not there.
   bool vidRangeSorted( const VlanRangeXlateMapping& range ) const;
   /// Inserts, or overwrites the flag of the equal range.
   void vidRangeSortedIs( const VlanRangeXlateMapping& range, bool value );
   /// Returns the removed range's flag; false when there was none.
   bool vidRangeSortedDel( const VlanRangeXlateMapping& range );
   bool vidRangeSortedDel( const VidRangeSortedMap::Iterator& at );
   /// As deleting all and inserting each of `sorted` with the flag true. `nodes` is working memory.
   /// Requires: `sorted` is in order, without equal ranges. O(n); std::bad_alloc leaves everything
   /// as it was.
   void vidRangeSortedRefill( std::span< const VlanRangeXlateMapping > sorted,
                              std::vector< ZelVidRangeSorted* >& nodes );
   void vidRangeSortedDelAll() { vidRangeSorted_.deleteAll(); }

   Zel::TypeHandle fwkType() const override;

 protected:
   explicit VlanXlateScaleEntry( Corvel::IntfId intfId ) : intfId_( intfId ) {}
   ~VlanXlateScaleEntry() override;

 private:
   const Corvel::IntfId intfId_;
   VlanInXlateHashTableSet vlanInXlateHashTable_;
   VidRangeSortedMap vidRangeSorted_;
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
