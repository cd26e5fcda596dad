// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxCommonSmData: what the forwarding agent's state machines share.
//
// Holds the VLAN mapping directories (made with it, never replaced) and which port is a member
// of which link aggregate.
//
// Notifies    kAttrPortToLag with the port's Corvel::IntfId, for every insertion, change and
//             deletion.
// Threads     One thread, no locks.
#pragma once

#include "Corvel/IntfId.h"
#include "Mox/MoxVlanMappingConfigDir.h"
#include "Mox/MoxVlanMappingStatusDir.h"
#include "Zel/Export.h"
#include "Zel/HashMap2018.h"
#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Mox {

class ZEL_EXPORT MoxCommonSmData : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Mox::MoxCommonSmData";
   static constexpr Zel::AttributeId kAttrPortToLag = 133;
   static Zel::Ptr< MoxCommonSmData > MoxCommonSmDataIs();

   class ZelPortToLag : public Zel::HashNode {
    public:
      static constexpr char zelTypeName[] = "Mox::MoxCommonSmData::ZelPortToLag";

      const Corvel::IntfId& key() const { return port_; }
      /// The link aggregate.
      Corvel::IntfId value() const { return lag_; }
      void valueIs( Corvel::IntfId lag ) { lag_ = lag; }

    protected:
      ZelPortToLag( Corvel::IntfId port, Corvel::IntfId lag ) : port_( port ), lag_( lag ) {}

    private:
      const Corvel::IntfId port_;
      Corvel::IntfId lag_;
   };
   using PortToLagMap = Zel::HashMap2018< ZelPortToLag, 0x1b84f06d >;

   /// Mappings applied to frames that enter a port: VLAN id on the wire to VLAN id inside.
   const Zel::Ptr< MoxVlanMappingConfigDir >& ingressConfigDir() const { return ingressConfigDir_; }
   /// Mappings applied to frames that leave a port: VLAN id inside to VLAN id on the wire.
   const Zel::Ptr< MoxVlanMappingConfigDir >& egressConfigDir() const { return egressConfigDir_; }
   const Zel::Ptr< MoxVlanMappingStatusDir >& statusDir() const { return statusDir_; }

   /// The ports that are members of a link aggregate.
   const PortToLagMap& portToLag() const { return portToLag_; }
   /// Silent when the port is a member of that aggregate already.
   void portToLagIs( Corvel::IntfId port, Corvel::IntfId lag );
   /// Returns the aggregate that the port was a member of; the empty id when of none.
   Corvel::IntfId portToLagDel( Corvel::IntfId port );

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   MoxCommonSmData();
   ~MoxCommonSmData() override;

 private:
   mutable Zel::NotifieeList notifieeList_{ *this };
   const Zel::Ptr< MoxVlanMappingConfigDir > ingressConfigDir_;
   const Zel::Ptr< MoxVlanMappingConfigDir > egressConfigDir_;
   const Zel::Ptr< MoxVlanMappingStatusDir > statusDir_;
   PortToLagMap portToLag_;
};

ZEL_EXPORT Zel::Ptr< MoxCommonSmData > moxCommonSmDataFactory();

}   // namespace Mox
