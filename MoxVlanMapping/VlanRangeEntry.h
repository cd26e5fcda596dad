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
#include "Zel/SmallKeyMap.h"

namespace MoxVlanMapping {

/// One interface's ranges, twice: by start id ascending with the whole range, and the start ids
/// alone descending. Every operation on one element is O(1) while both have the same starts, as
/// they have unless somebody else than the range manager changes them. While they differ, a search
/// for the first element or the one at or behind a key (findElementOrNext), and each step of an
/// iterator, pass over the starts that only the other collection has, one by one: O(n) in these.
class ZEL_EXPORT VlanRangeEntry : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry";
   static Zel::Ptr< VlanRangeEntry > VlanRangeEntryIs( Corvel::IntfId intfId );

   /// Element of vlanIdRange; its key is the range's own lowVid.
   class ZelVlanIdRange : public Zel::SmallKeyNode {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange";

      Bridging::VlanId key() const { return value_.lowVid(); }
      const VlanRangeXlateMapping& value() const { return value_; }
      /// Requires: the same lowVid while it stands in its map.
      void valueIs( const VlanRangeXlateMapping& value ) { value_ = value; }

    protected:
      explicit ZelVlanIdRange( const VlanRangeXlateMapping& value ) : value_( value ) {}

    private:
      VlanRangeXlateMapping value_;
   };

   /// Element of revSortedStartVid.
   class ZelRevSortedStartVid : public Zel::SmallKeyNode {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeEntry::ZelRevSortedStartVid";

      ReverseStartIdVlanId key() const { return key_; }
      /// Requires: it stands in no map.
      void keyIs( ReverseStartIdVlanId key ) { key_ = key; }
      bool value() const { return value_; }
      void valueIs( bool value ) { value_ = value; }

    protected:
      ZelRevSortedStartVid( ReverseStartIdVlanId key, bool value ) : key_( key ), value_( value ) {}

    private:
      ReverseStartIdVlanId key_;
      bool value_;
   };

   using VlanIdRangeMap = Zel::SmallKeyMap< ZelVlanIdRange, Zel::KeyIndex::kFirst >;
   using RevSortedStartVidMap =
      Zel::SmallKeyMap< ZelRevSortedStartVid, Zel::KeyIndex::kSecond, Zel::KeyOrder::Descending >;

   Corvel::IntfId intfId() const { return intfId_; }

   const VlanIdRangeMap& vlanIdRange() const { return vlanIdRange_; }
   /// The range that starts at `lowVid`; the default range when there is none.
   VlanRangeXlateMapping vlanIdRange( Bridging::VlanId lowVid ) const;
   /// Inserts, or overwrites the range that has the same lowVid.
   void vlanIdRangeIs( const VlanRangeXlateMapping& range );
   /// The same with an element made beforehand. Cannot fail for want of memory behind
   /// reserve() of its key.
   void vlanIdRangeIs( const Zel::Ptr< ZelVlanIdRange >& element );
   /// Returns the removed range; the default range when there was none.
   VlanRangeXlateMapping vlanIdRangeDel( Bridging::VlanId lowVid );
   VlanRangeXlateMapping vlanIdRangeDel( const VlanIdRangeMap::Iterator& at );
   void vlanIdRangeDelAll() { vlanIdRange_.deleteAll(); }

   const RevSortedStartVidMap& revSortedStartVid() const { return revSortedStartVid_; }
   /// The start's flag; false when there is none.
   bool revSortedStartVid( ReverseStartIdVlanId start ) const;
   /// Inserts, or overwrites the flag.
   void revSortedStartVidIs( ReverseStartIdVlanId start, bool value );
   /// The same with an element made beforehand. Cannot fail for want of memory behind
   /// revSortedStartVidReserve() of its key.
   void revSortedStartVidIs( const Zel::Ptr< ZelRevSortedStartVid >& element );
   /// Makes room for one start; holds until another is inserted.
   void revSortedStartVidReserve( ReverseStartIdVlanId start ) {
      revSortedStartVid_.reserve( start );
   }
   /// Returns the removed start's flag; false when there was none.
   bool revSortedStartVidDel( ReverseStartIdVlanId start );
   bool revSortedStartVidDel( const RevSortedStartVidMap::Iterator& at );
   void revSortedStartVidDelAll() { revSortedStartVid_.deleteAll(); }

   /// Makes room for up to so many new ranges, the last of which starts at `lowVid`.
   void reserve( Bridging::VlanId lowVid, std::uint32_t ranges ) {
      index_.reserve( lowVid.value(), ranges );
   }
   /// Gives the memory of empty collections back, and what was reserved in them.
   void trim() { index_.trim(); }

   Zel::TypeHandle fwkType() const override;

 protected:
   explicit VlanRangeEntry( Corvel::IntfId intfId ) : intfId_( intfId ) {}
   ~VlanRangeEntry() override;

 private:
   friend class PairedRanges;

   const Corvel::IntfId intfId_;
   Zel::KeyIndex index_;
   VlanIdRangeMap vlanIdRange_{ index_ };
   RevSortedStartVidMap revSortedStartVid_{ index_ };
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
