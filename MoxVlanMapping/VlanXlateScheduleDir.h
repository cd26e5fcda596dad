// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanXlateScheduleDir: the interfaces whose ranges changed and wait to be sorted.
//
// Iterators   Usable after any change (Zel/StdIterator.h).
// Throws      std::bad_alloc from ...Is(), with nothing changed; what a reactor throws, behind the
//             change.
// Threads     One thread, no locks.
#pragma once

#include "Corvel/IntfId.h"
#include "Zel/Export.h"
#include "Zel/HashMap2018.h"
#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace MoxVlanMapping {

/// First in, first out. All O(1) on average, not counting what the reactors do.
class ZEL_EXPORT VlanXlateScheduleDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanXlateScheduleDir";
   /// Notified with the interface (Corvel::IntfId) as key, when one is added or deleted.
   static constexpr Zel::AttributeId kAttrVlanXlateSchedule = 130;
   static Zel::Ptr< VlanXlateScheduleDir > VlanXlateScheduleDirIs();

   class ZelVlanXlateSchedule : public Zel::HashSetNode< Corvel::IntfId > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::VlanXlateScheduleDir::ZelVlanXlateSchedule";

    protected:
      using HashSetNode::HashSetNode;
   };
   using VlanXlateScheduleSet = Zel::HashMap2018< ZelVlanXlateSchedule, 0xcb5901b >;

   const VlanXlateScheduleSet& vlanXlateSchedule() const { return vlanXlateSchedule_; }
   /// Adds the interface and notifies; silent when it waits already.
   void vlanXlateScheduleIs( Corvel::IntfId intfId );
   /// The same with an element made beforehand. Adding it cannot fail for want of memory behind
   /// vlanXlateScheduleReserve(). Requires: not null, stands in no schedule.
   void vlanXlateScheduleIs( const Zel::Ptr< ZelVlanXlateSchedule >& element );
   /// Makes room for one interface; holds until another is added.
   void vlanXlateScheduleReserve() { vlanXlateSchedule_.reserveOne(); }
   /// Removes the interface and notifies; false and silent when it did not wait.
   bool vlanXlateScheduleDel( Corvel::IntfId intfId );
   /// Removes every interface that waits now, with one notification each; what a reactor marks
   /// meanwhile stays. Then throws on what the first reactor that failed threw.
   void vlanXlateScheduleDelAll();

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   VlanXlateScheduleDir() = default;
   ~VlanXlateScheduleDir() override;

 private:
   mutable Zel::NotifieeList notifieeList_{ *this };
   VlanXlateScheduleSet vlanXlateSchedule_;
};

ZEL_EXPORT Zel::Ptr< VlanXlateScheduleDir > vlanXlateScheduleDirFactory();

}   // namespace MoxVlanMapping
