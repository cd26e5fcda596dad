// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanRangeMgr: keeps each interface's VLAN ids merged into maximal ranges of one mapping.
//
// Holds no data of its own: all ranges live in the entries of the shared directory. After every
// operation each range is stored under its lowVid, the start ids are exactly the lowVids, and two
// ranges of one mapping never touch - unless an id is added while another mapping holds it, which
// is the caller's to prevent: remove the old mapping first.
//
// Empty mapping  As argument of the bound tests it matches a range of any mapping. A range [1..1]
//                with the empty mapping cannot be told from "no range"; do not store it.
// Entries        Every operation makes the interface's entry when there is none.
// Cost           O(1), whatever the number of ranges, while nobody else changes the collections
//                (VlanRangeEntry.h); at most four changes of them.
// Memory         std::bad_alloc leaves the index as it was; changeReserve() extends that over a deletion
//                and the addition behind it.
// Throws         Zel::RangeException for ids that are not VLAN ids (VlanId::fromRaw); adding and
//                deleting such a one change nothing before it but the empty entry. A deletion may
//                meet a range or start stored by hand with one, of which some may have gone then.
// Asserts        That the two collections agree, where it relies on it.
// Threads        One thread per directory, no locks.
// Trace          "MoxVlanRangeMgr": arguments at level 9, decisions at level 1.
#pragma once

#include <cstdint>
#include <vector>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace MoxVlanMapping {

class ZEL_EXPORT MoxVlanRangeMgr : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::MoxVlanRangeMgr";
   /// `vlanRangeEntryDir` may be null; then no operation but vlanRangeEntryDir() may be called.
   static Zel::Ptr< MoxVlanRangeMgr >
   MoxVlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir );

   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir() const { return vlanRangeEntryDir_; }

   /// Whether lowVid <= vid <= highVid; the mapping does not matter.
   bool isVidInRange( const VlanRangeXlateMapping& range, Bridging::VlanId vid ) const;
   /// Whether a range with a matching mapping starts at `vid`.
   bool isVidAndDot1qInUpperBoundRange( Corvel::IntfId intfId, Bridging::VlanId vid,
                                        Bridging::VlanXlateMapping mapping ) const;
   /// Whether `vid` lies in a range with a matching mapping.
   bool isVidAndDot1qInLowerBoundRange( Corvel::IntfId intfId, Bridging::VlanId vid,
                                        Bridging::VlanXlateMapping mapping ) const;

   /// Puts `vid` into the index: joins the ranges beside it that have the same mapping, or
   /// starts a range of its own. Nothing when a range with a matching mapping holds it.
   void addVlanToIdx( Corvel::IntfId intfId, Bridging::VlanId vid,
                      Bridging::VlanXlateMapping mapping );
   /// Takes `vid` out of the index, whatever its mapping. Nothing when no range holds it.
   void deleteVlanFromIdx( Corvel::IntfId intfId, Bridging::VlanId vid );
   /// Takes `vid` out of the stored range `vidRange`, which holds it (not checked). With an id that
   /// has no neighbour to shrink to, a range exception comes after the range was taken out.
   void deleteVlanFromRange( Corvel::IntfId intfId, Bridging::VlanId vid,
                             const VlanRangeXlateMapping& vidRange );

   /// Before an id is deleted and added again under another mapping: takes the memory for the
   /// addition, which then cannot fail for want of it, whatever else is added or changed between.
   void changeReserve( Corvel::IntfId intfId, Bridging::VlanId vid );
   /// Gives back what the change of this id has not used.
   void changeRelease( Corvel::IntfId intfId, Bridging::VlanId vid ) noexcept;

   Zel::TypeHandle fwkType() const override;

 protected:
   explicit MoxVlanRangeMgr( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir )
       : vlanRangeEntryDir_( vlanRangeEntryDir ) {}
   ~MoxVlanRangeMgr() override;

 private:
   /// An id that is deleted and will be added again.
   struct Change {
      Corvel::IntfId intfId;
      Bridging::VlanId vid;

      friend bool operator==( const Change&, const Change& ) = default;
   };

   RangeStore* untracedStore( Corvel::IntfId intfId ) const;
   void keepRoom( RangeStore& store, Corvel::IntfId intfId, Bridging::VlanId vid ) const;

   const Zel::Ptr< VlanRangeEntryDir > vlanRangeEntryDir_;
   // Most often none; several when a reactor of one change makes another.
   std::vector< Change > changes_;
};

ZEL_EXPORT Zel::Ptr< MoxVlanRangeMgr >
moxVlanRangeMgrFactory( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir );

}   // namespace MoxVlanMapping
