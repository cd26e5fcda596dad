// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanMappingSlaveSm: turns the VLAN mapping configuration into hooks for a derived class.
//
// It watches the ingress and egress configuration directories of the common data and tells the
// derived class of mappings that come and go. The range index behind the hooks does not guard
// itself, so this class does:
//
//   - Nothing is delivered before handleInitialized(), which replays what is configured then.
//   - A changed ingress mapping is delivered as a deletion, then an addition; a changed egress
//     mapping as an addition. An unchanged one is not delivered, nor the removal of one that never
//     was.
//   - The index knows a port's VLAN but not the inner VLAN of the key. Of several ingress keys
//     that differ only there one is in force, and the next takes its place when it goes.
//   - A record without a translated VLAN is delivered like any other; whoever writes the
//     configuration keeps it out, for to the index the empty mapping means any mapping.
//   - A range exception says that the hook refused before it changed anything: an addition then
//     counts as not delivered, and what a deletion refuses never was in force. What an addition
//     throws reaches whoever wrote the configuration, which keeps the record.
//   - Behind any other exception it is not known what the hook did. The next change of that key,
//     and every handleInitialized(), delivers it once more: an ingress addition with the deletion
//     before it, which does the index no harm when there is nothing to delete.
//
// Ownership  Holds the common data, clock, bridge configuration and status directory.
// Threads    One thread, no locks.
#pragma once

#include <set>

#include "Bridging/Config.h"
#include "Bridging/VlanXlateStatusDir.h"
#include "Mox/MoxCommonSmData.h"
#include "Mox/MoxVlanMapping.h"
#include "Mox/PortVlanKey.h"
#include "Mox/RecordMap.h"
#include "Zel/Clock.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/Reactor.h"

namespace Mox {

class ZEL_EXPORT VlanMappingSlaveSm : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Mox::VlanMappingSlaveSm";

   void hasNotificationActiveIs( bool active ) override;
   Zel::TypeHandle fwkType() const override;
   void zelDoZombieReactors( bool zombie ) override;

   /// Starts the delivery of hooks and replays what is configured and was not delivered. Every
   /// record is tried; then the first exception that one raised is thrown on. Called again, it
   /// delivers what failed before. An override calls this last.
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

 protected:
   /// Requires: `acsd` is set (asserted); the others may be null.
   VlanMappingSlaveSm( const Zel::Ptr< MoxCommonSmData >& acsd,
                       const Zel::Ptr< const Zel::Clock >& clock,
                       const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                       const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir );
   ~VlanMappingSlaveSm() override;

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
   class ZelDelivered : public RecordNode< MoxVlanMappingConfig > {
    public:
      static constexpr char zelTypeName[] = "Mox::VlanMappingSlaveSm::ZelDelivered";

      enum class State {
         Told,      ///< the addition was delivered
         Unsure,    ///< a hook failed: it may be in force or not
         Leaving,   ///< the deletion is being delivered: counts as gone
      };
      State state() const { return state_; }
      void stateIs( State state ) { state_ = state; }

    protected:
      using RecordNode::RecordNode;

    private:
      State state_ = State::Told;
   };
   using DeliveredMap = RecordMap< ZelDelivered, 0x66a3d15b >;

   void handleIngressConfig( const PortVlanKey& key );
   void handleEgressConfig( const PortVlanKey& key );
   /// The hooks take the full key of what is delivered.
   using Hook = void ( VlanMappingSlaveSm::* )( const PortVlanKey& );
   static const ZelDelivered* inForce( const DeliveredMap& delivered, const PortVlanKey& place );
   void deliverAdd( DeliveredMap& delivered, const PortVlanKey& place,
                    const MoxVlanMappingConfig& config, Hook hook );
   void deliverDel( DeliveredMap& delivered, const PortVlanKey& place, Hook hook );

   bool takeWaiting( const PortVlanKey& place, PortVlanKey& key );

   const Zel::Ptr< MoxCommonSmData > acsd_;
   const Zel::Ptr< const Zel::Clock > clock_;
   const Zel::Ptr< const Bridging::Config > bridgingConfig_;
   const Zel::Ptr< Bridging::VlanXlateStatusDir > vlanXlateStatusDir_;
   Zel::Ptr< ZelIngressConfigDir > ingressReactor_;
   Zel::Ptr< ZelEgressConfigDir > egressReactor_;
   bool initialized_ = false;
   // What the hooks have been told, by (port, VLAN, 0) for ingress and by full key for egress.
   DeliveredMap ingressDelivered_;
   DeliveredMap egressDelivered_;
   // Configured ingress keys whose place another key holds.
   std::set< PortVlanKey > ingressWaiting_;
};

}   // namespace Mox
