// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanMappingStatusDir: the VLAN mappings in force, by port and VLAN.
//
// Notifies    kAttrStatus with the record's key, for every insertion, change and deletion;
//             writing an equal record again is no change.
// Cost        O(1) on average.
// Threads     One thread, no locks.
#pragma once

#include "Mox/MoxVlanMapping.h"
#include "Mox/RecordMap.h"
#include "Zel/Export.h"
#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Mox {

class ZEL_EXPORT MoxVlanMappingStatusDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxVlanMappingStatusDir";
   static constexpr Zel::AttributeId kAttrStatus = 130;
   static Zel::Ptr< MoxVlanMappingStatusDir > MoxVlanMappingStatusDirIs();

   class ZelStatus : public RecordNode< MoxVlanMappingStatus > {
    public:
      static constexpr char zelTypeName[] = "Mox::MoxVlanMappingStatusDir::ZelStatus";

    protected:
      using RecordNode::RecordNode;
   };
   using StatusMap = RecordMap< ZelStatus, 0x71c6e2af >;

   const StatusMap& status() const { return status_; }
   /// Inserts or replaces the record of its key.
   void statusIs( const MoxVlanMappingStatus& record );
   /// Removes a key's record and returns it; the default record when there was none.
   MoxVlanMappingStatus statusDel( const PortVlanKey& key );

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   MoxVlanMappingStatusDir() = default;
   ~MoxVlanMappingStatusDir() override;

 private:
   mutable Zel::NotifieeList notifieeList_{ *this };
   StatusMap status_;
};

ZEL_EXPORT Zel::Ptr< MoxVlanMappingStatusDir > moxVlanMappingStatusDirFactory();

}   // namespace Mox
