// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Config: the settings of the bridge as a whole, handed to every state machine of the agent.
#pragma once

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/String.h"

namespace Bridging {

class ZEL_EXPORT Config : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Bridging::Config";
   static Zel::Ptr< Config > ConfigIs();

   /// The bridge's name; empty until it is set.
   const Zel::String& bridgeName() const { return bridgeName_; }
   void bridgeNameIs( const Zel::String& name ) { bridgeName_ = name; }

   Zel::TypeHandle fwkType() const override;

 protected:
   Config() = default;
   ~Config() override;

 private:
   Zel::String bridgeName_;
};

ZEL_EXPORT Zel::Ptr< Config > configFactory();

}   // namespace Bridging
