// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanMappingSlaveSm: turns the VLAN mapping configuration into hooks for a derived class.
//
// It watches the ingress and egress configuration directories of the common data and tells the
// derived class of mappings that come and go. The range index behind the hooks does not guard
// itself, so this class does:
//
//   - A record is refused with Zel::RangeException before any hook is called, and what is in force
//     stays: when its VLAN id is not 1 to 4094, or its translated VLAN is not; to the index no
//     translated VLAN means any mapping. The directory keeps the record.
//   - Nothing is delivered before handleInitialized(), which replays what is configured then.
//   - A changed ingress mapping is delivered as a deletion, then an addition; a changed egress
//     mapping as an addition. An unchanged one is not delivered, nor the removal of one that never
//     was.
//   - The index knows a port's VLAN but not the inner VLAN of the key. Of several ingress keys
//     that differ only there one is in force, and the next takes its slot when it goes.
//   - Whatever a hook throws reaches whoever wrote the configuration, after all that can be done is
//     done. An IngressIndex tells what a failed hook did, so that a configured VLAN is in force under
//     its old or its new mapping at any time. Without one, and for egress, what a failed hook did
//     is in doubt: the next try begins with a deletion, for egress with the addition.
//   - What could not be delivered is tried again with the next write of its key, equal or not, and by
//     handleInitialized(); undelivered() counts it.
//
// Ownership  Holds the common data, clock, bridge configuration and status directory.
// Threads    One thread, no locks.
#pragma once

#include <cstdint>
#include <memory>

#include "Bridging/Config.h"
#include "Bridging/VlanXlateStatusDir.h"
#include "Mox/MoxCommonSmData.h"
#include "Mox/MoxVlanMapping.h"
#include "Mox/PortVlanKey.h"
#include "Zel/Clock.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/Reactor.h"

namespace Zel {
class FirstException;
}

namespace Mox {

struct Delivered;

class ZEL_EXPORT VlanMappingSlaveSm : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Mox::VlanMappingSlaveSm";

   void hasNotificationActiveIs( bool active ) override;
   Zel::TypeHandle fwkType() const override;
   void zelDoZombieReactors( bool zombie ) override;

   /// Starts the delivery of hooks and delivers what is configured and was not delivered. Every
   /// record is tried; then the first exception is rethrown. An override calls this last.
   virtual void handleInitialized();
   virtual void doAddIngressVlanMapping( const PortVlanKey& pvKey ) = 0;
   virtual void doDelIngressVlanMapping( const PortVlanKey& pvKey ) = 0;
   virtual void doAddEgressVlanMapping( const PortVlanKey& pvKey ) = 0;
   virtual void doDelEgressVlanMapping( const PortVlanKey& pvKey ) = 0;

   const Zel::Ptr< MoxCommonSmData >& acsd() const { return acsd_; }
   const Zel::Ptr< const Zel::Clock >& clock() const { return clock_; }
   const Zel::Ptr< const Bridging::Config >& bridgingConfig() const { return bridgingConfig_; }
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir() const {
      return vlanXlateStatusDir_;
   }
   Zel::Ptr< MoxVlanMappingConfigDir > ingressConfigDir() const;
   Zel::Ptr< MoxVlanMappingConfigDir > egressConfigDir() const;
   const Zel::Ptr< MoxVlanMappingStatusDir >& statusDir() const { return acsd_->statusDir(); }

   /// Keys of both directions whose hooks are behind the configuration; refused records, and keys
   /// that wait for their slot, do not count. O(configured mappings).
   std::uint32_t undelivered() const;

 protected:
   /// The derived class's index of the VLANs in force, for what must hold when a hook fails.
   class IngressIndex {
    public:
      virtual ~IngressIndex() = default;
      /// Whether the key's VLAN is in force on its port, under any mapping.
      virtual bool holds( const PortVlanKey& key ) const = 0;
      /// Before the deletion of a mapping that another follows: takes the memory for its addition.
      /// Throws std::bad_alloc, with nothing changed.
      virtual void reserve( const PortVlanKey& key ) = 0;
      /// Behind the deletion, when the addition failed: puts `record` in force again, which cannot
      /// fail for want of memory behind reserve(). What reactors throw may pass.
      virtual void restore( const MoxVlanMappingConfig& record ) = 0;
      /// Gives back what was reserved and is left.
      virtual void release( const PortVlanKey& key ) noexcept = 0;
   };
   /// Requires: `acsd` is set (asserted); the others may be null.
   VlanMappingSlaveSm( const Zel::Ptr< MoxCommonSmData >& acsd,
                       const Zel::Ptr< const Zel::Clock >& clock,
                       const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                       const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir );
   ~VlanMappingSlaveSm() override;

   /// Before handleInitialized(). The derived class keeps `index` as long as itself.
   void ingressIndexIs( IngressIndex* index ) { ingressIndex_ = index; }

 private:
   class ZelIngressConfigDir : public Zel::Reactor< MoxVlanMappingConfigDir, VlanMappingSlaveSm > {
    public:
      static constexpr char zelTypeName[] = "Mox::VlanMappingSlaveSm::ZelIngressConfigDir";
      void onAttribute( Zel::AttributeId attribute, const void* key ) override;

    protected:
      using Reactor::Reactor;
   };
   class ZelEgressConfigDir : public Zel::Reactor< MoxVlanMappingConfigDir, VlanMappingSlaveSm > {
    public:
      static constexpr char zelTypeName[] = "Mox::VlanMappingSlaveSm::ZelEgressConfigDir";
      void onAttribute( Zel::AttributeId attribute, const void* key ) override;

    protected:
      using Reactor::Reactor;
   };
   /// What is in force, and what waits.
   struct Delivery;
   class Configured;

   void handleIngressConfig( const PortVlanKey& key );
   void handleEgressConfig( const PortVlanKey& key );
   const MoxVlanMappingConfig* wanted( const Delivered& slot, Configured& configured ) const;
   const MoxVlanMappingConfig* firstWaiting( const PortVlanKey& slot ) const;
   bool addIngress( Delivered& slot, const MoxVlanMappingConfig& record,
                    Zel::FirstException& failed );
   bool delIngress( Delivered& slot, Zel::FirstException& failed );
   void settleIngress( Delivered& slot, Configured& configured, Zel::FirstException& failed );
   void settleEgress( Delivered& slot, Configured& configured, Zel::FirstException& failed );

   const Zel::Ptr< MoxCommonSmData > acsd_;
   const Zel::Ptr< const Zel::Clock > clock_;
   const Zel::Ptr< const Bridging::Config > bridgingConfig_;
   const Zel::Ptr< Bridging::VlanXlateStatusDir > vlanXlateStatusDir_;
   Zel::Ptr< ZelIngressConfigDir > ingressReactor_;
   Zel::Ptr< ZelEgressConfigDir > egressReactor_;
   bool initialized_ = false;
   IngressIndex* ingressIndex_ = nullptr;
   const std::unique_ptr< Delivery > delivery_;
};

}   // namespace Mox
