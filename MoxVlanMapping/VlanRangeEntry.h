// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanRangeEntry, VlanRangeEntryDir: the store of the range index.
//
// Policy      None: the range manager decides what to store and keeps an entry's two collections
//             in step. Nothing here removes an entry once it is made, though it may be empty.
// Ownership   A directory holds its entries; whoever holds a removed entry keeps it alive.
// Misses      Are never errors: deletions return the type's default, ...Is() inserts or overwrites.
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

class RangeStore;

/// One interface's ranges, twice: by start id ascending with the whole range, and the start ids
/// alone descending. Elements are plain values in place; a counted one is made for whoever asks an
/// iterator for its element(). Every operation on one element is O(1) while both collections have
/// the same starts, as they have unless somebody else than the range manager changes them; while
/// they differ, searches and steps of iterators are O(n) in the starts that only the other has.
class ZEL_EXPORT VlanRangeEntry : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry";
   static Zel::Ptr< VlanRangeEntry > VlanRangeEntryIs( Corvel::IntfId intfId );

   /// Element of vlanIdRange; its key is the range's own lowVid.
   class VlanIdRange {
    public:
      VlanIdRange() = default;
      explicit VlanIdRange( const VlanRangeXlateMapping& value ) : value_( value ) {}
      Bridging::VlanId key() const { return value_.lowVid(); }
      const VlanRangeXlateMapping& value() const { return value_; }

    private:
      VlanRangeXlateMapping value_;
   };
   class ZelVlanIdRange : public Zel::RbTreeNode< VlanIdRange > {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange";

    protected:
      using RbTreeNode::RbTreeNode;
   };

   /// Element of revSortedStartVid.
   class RevSortedStartVid {
    public:
      RevSortedStartVid() = default;
      RevSortedStartVid( ReverseStartIdVlanId key, bool value ) : key_( key ), value_( value ) {}
      ReverseStartIdVlanId key() const { return key_; }
      bool value() const { return value_; }

    private:
      ReverseStartIdVlanId key_;
      bool value_ = false;
   };
   class ZelRevSortedStartVid : public Zel::RbTreeNode< RevSortedStartVid > {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry::ZelRevSortedStartVid";

    protected:
      using RbTreeNode::RbTreeNode;
   };

   using VlanIdRangeMap = Zel::RbTreeMap< ZelVlanIdRange >;
   using RevSortedStartVidMap = Zel::RbTreeMap< ZelRevSortedStartVid >;

   Corvel::IntfId intfId() const { return intfId_; }

   const VlanIdRangeMap& vlanIdRange() const;
   /// The range that starts at `lowVid`; the default range when there is none.
   VlanRangeXlateMapping vlanIdRange( Bridging::VlanId lowVid ) const;
   /// Inserts, or overwrites the range that has the same lowVid.
   void vlanIdRangeIs( const VlanRangeXlateMapping& range );
   /// Returns the removed range; the default range when there was none.
   VlanRangeXlateMapping vlanIdRangeDel( Bridging::VlanId lowVid );
   VlanRangeXlateMapping vlanIdRangeDel( const VlanIdRangeMap::Iterator& at );
   void vlanIdRangeDelAll();

   const RevSortedStartVidMap& revSortedStartVid() const;
   /// The start's flag; false when there is none.
   bool revSortedStartVid( ReverseStartIdVlanId start ) const;
   /// Inserts, or overwrites the flag.
   void revSortedStartVidIs( ReverseStartIdVlanId start, bool value );
   /// Returns the removed start's flag; false when there was none.
   bool revSortedStartVidDel( ReverseStartIdVlanId start );
   bool revSortedStartVidDel( const RevSortedStartVidMap::Iterator& at );
   void revSortedStartVidDelAll();

   /// The inside, for the library itself.
   RangeStore& store() const { return store_; }

   Zel::TypeHandle fwkType() const override;

 protected:
   /// `store` is a part of the object that derives from this.
   VlanRangeEntry( Corvel::IntfId intfId, RangeStore& store )
       : intfId_( intfId ), store_( store ) {}
   ~VlanRangeEntry() override;

 private:
   const Corvel::IntfId intfId_;
   RangeStore& store_;
};

struct VlanRangeEntryKeyFunktor {
   Corvel::IntfId operator()( const VlanRangeEntry& entry ) const { return entry.intfId(); }
};

/// The range entries of all interfaces. Tells nobody of its changes. All O(1) on average.
class ZEL_EXPORT VlanRangeEntryDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntryDir";
   static Zel::Ptr< VlanRangeEntryDir > VlanRangeEntryDirIs();

   class ZelVlanRangeEntry :
       public Zel::HashEntityNode< VlanRangeEntry, VlanRangeEntryKeyFunktor > {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntryDir::ZelVlanRangeEntry";

    protected:
      using HashEntityNode::HashEntityNode;
   };
   using VlanRangeEntryMap = Zel::HashMap2018< ZelVlanRangeEntry, 0xa570bf69 >;

   const VlanRangeEntryMap& vlanRangeEntry() const { return vlanRangeEntry_; }
   /// The interface's entry, or null; creates nothing.
   Zel::Ptr< VlanRangeEntry > vlanRangeEntry( Corvel::IntfId intfId ) const;
   /// The interface's entry; an empty one is made when there is none.
   Zel::Ptr< VlanRangeEntry > vlanRangeEntryIs( Corvel::IntfId intfId );
   /// Returns the removed entry, or null.
   Zel::Ptr< VlanRangeEntry > vlanRangeEntryDel( Corvel::IntfId intfId );
   void vlanRangeEntryDelAll() { vlanRangeEntry_.deleteAll(); }

   Zel::TypeHandle fwkType() const override;

 protected:
   VlanRangeEntryDir() = default;
   ~VlanRangeEntryDir() override;

 private:
   VlanRangeEntryMap vlanRangeEntry_;
};

ZEL_EXPORT Zel::Ptr< VlanRangeEntry > vlanRangeEntryFactory( Corvel::IntfId intfId );
ZEL_EXPORT Zel::Ptr< VlanRangeEntryDir > vlanRangeEntryDirFactory();

}   // namespace MoxVlanMapping
