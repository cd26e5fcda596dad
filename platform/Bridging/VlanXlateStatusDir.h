// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanXlateStatusDir: the interfaces on which the hardware translates VLANs now.
//
// Written by whoever programs the hardware, handed to every state machine of the agent.
#pragma once

#include "Corvel/IntfId.h"
#include "Zel/Export.h"
#include "Zel/HashMap2018.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Bridging {

class ZEL_EXPORT VlanXlateStatusDir : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Bridging::VlanXlateStatusDir";
   static Zel::Ptr< VlanXlateStatusDir > VlanXlateStatusDirIs();

   class ZelVlanXlateStatus : public Zel::HashSetNode< Corvel::IntfId > {
    public:
      static constexpr char zelTypeName[] = "Bridging::VlanXlateStatusDir::ZelVlanXlateStatus";

    protected:
      using HashSetNode::HashSetNode;
   };
   using VlanXlateStatusSet = Zel::HashMap2018< ZelVlanXlateStatus, 0x5e1d93c7 >;

   const VlanXlateStatusSet& vlanXlateStatus() const { return vlanXlateStatus_; }
   /// Adds the interface; nothing when it is there.
   void vlanXlateStatusIs( Corvel::IntfId intfId );
   /// True when it was there.
   bool vlanXlateStatusDel( Corvel::IntfId intfId );

   Zel::TypeHandle fwkType() const override;

 protected:
   VlanXlateStatusDir() = default;
   ~VlanXlateStatusDir() override;

 private:
   VlanXlateStatusSet vlanXlateStatus_;
};

ZEL_EXPORT Zel::Ptr< VlanXlateStatusDir > vlanXlateStatusDirFactory();

}   // namespace Bridging
