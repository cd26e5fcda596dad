// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanMappingConfigDir: the VLAN mappings of one direction as configured, by port and VLAN.
//
// Notifies    kAttrConfig with the key, for every write and every deletion, whether or not they change
//             something: a reactor that failed before gets another try.
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

class ZEL_EXPORT MoxVlanMappingConfigDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxVlanMappingConfigDir";
   static constexpr Zel::AttributeId kAttrConfig = 130;
   static Zel::Ptr< MoxVlanMappingConfigDir > MoxVlanMappingConfigDirIs();

   class ZelConfig : public RecordNode< MoxVlanMappingConfig > {
    public:
      static constexpr char zelTypeName[] = "Mox::MoxVlanMappingConfigDir::ZelConfig";

    protected:
      using RecordNode::RecordNode;
   };
   using ConfigMap = RecordMap< ZelConfig, 0x3fd90b25 >;

   const ConfigMap& config() const { return config_; }
   /// Inserts or replaces the record of its key.
   void configIs( const MoxVlanMappingConfig& record );
   /// Removes a key's record and returns it; the default record when there was none.
   MoxVlanMappingConfig configDel( const PortVlanKey& key );

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   MoxVlanMappingConfigDir() = default;
   ~MoxVlanMappingConfigDir() override;

 private:
   mutable Zel::NotifieeList notifieeList_{ *this };
   ConfigMap config_;
};

ZEL_EXPORT Zel::Ptr< MoxVlanMappingConfigDir > moxVlanMappingConfigDirFactory();

}   // namespace Mox
