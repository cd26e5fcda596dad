// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanMappingScaleSlaveSm: fills the VLAN mapping hooks for the scale mode.
//
// Ingress mappings go into the range index, and their interface is marked in the schedule. Egress
// mappings are written straight to the mapping status; index and schedule do not know of them.
//
// Lifecycle   The range manager is made by handleInitialized(); the ingress hooks need it.
// Ownership   Holds the two directories, the range manager, and what the base class holds.
// Throws      Zel::RangeException for ids out of range, and from the ingress hooks Zel::Exception
//             when there is no manager, before anything is changed; std::bad_alloc with nothing
//             changed; what a reactor throws, behind the change; Zel::RangeException from a deletion
//             that meets a range or start stored by hand with an id out of range, of which some may
//             have gone, the interface not marked.
// Threads     One thread, no locks.
// Trace       "MoxVlanMappingScaleSm", level 5.
#pragma once

#include "Bridging/Config.h"
#include "Bridging/VlanXlateStatusDir.h"
#include "Mox/MoxCommonSmData.h"
#include "Mox/PortVlanKey.h"
#include "Mox/VlanMappingSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Zel/Clock.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"

namespace MoxVlanMapping {

class ZEL_EXPORT VlanMappingScaleSlaveSm : public Mox::VlanMappingSlaveSm {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanMappingScaleSlaveSm";
   /// Requires: `acsd`, `vlanRangeEntryDir` and `vlanXlateScheduleDir` are set.
   static Zel::Ptr< VlanMappingScaleSlaveSm >
   VlanMappingScaleSlaveSmIs( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                              const Zel::Ptr< const Zel::Clock >& clock,
                              const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                              const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
                              const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
                              const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir );

   void hasNotificationActiveIs( bool active ) override;
   Zel::TypeHandle fwkType() const override;
   void zelDoZombieReactors( bool zombie ) override;
   /// Makes the range manager, once, and starts the delivery of hooks.
   void handleInitialized() override;
   /// Adds the key's VLAN under its configured mapping, or the empty one when none is configured.
   void doAddIngressVlanMapping( const Mox::PortVlanKey& pvKey ) override;
   /// Takes the key's VLAN out. Throws Zel::RangeException for VLAN 0 and above 4094.
   void doDelIngressVlanMapping( const Mox::PortVlanKey& pvKey ) override;
   /// Publishes the key's configured mapping, or the default record when none is configured.
   void doAddEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override;
   /// Withdraws what is published under the key.
   void doDelEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override;

   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir() const { return vlanRangeEntryDir_; }
   const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir() const {
      return vlanXlateScheduleDir_;
   }

   /// Null before handleInitialized() and after vlanRangeMgrDel().
   const Zel::Ptr< MoxVlanRangeMgr >& vlanRangeMgr() const { return vlanRangeMgr_; }
   /// The manager over `vlanRangeEntryDir`: the present one if it stands over it, else a new one.
   Zel::Ptr< MoxVlanRangeMgr >
   vlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir );
   /// Takes the manager out and hands it over.
   Zel::Ptr< MoxVlanRangeMgr > vlanRangeMgrDel();

 protected:
   VlanMappingScaleSlaveSm( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                            const Zel::Ptr< const Zel::Clock >& clock,
                            const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                            const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
                            const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
                            const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir );
   ~VlanMappingScaleSlaveSm() override;

 private:
   /// What the base class asks when a hook fails.
   class RangeIndex final : public IngressIndex {
    public:
      explicit RangeIndex( VlanMappingScaleSlaveSm& sm ) : sm_( sm ) {}
      bool holds( const Mox::PortVlanKey& key ) const override;
      void reserve( const Mox::PortVlanKey& key ) override;
      void restore( const Mox::MoxVlanMappingConfig& record ) override;
      void release( const Mox::PortVlanKey& key ) noexcept override;

    private:
      VlanMappingScaleSlaveSm& sm_;
   };

   Zel::Ptr< MoxVlanRangeMgr > presentManager() const;

   RangeIndex rangeIndex_{ *this };
   // Emptied by the destructor alone.
   Zel::Ptr< VlanRangeEntryDir > vlanRangeEntryDir_;
   Zel::Ptr< VlanXlateScheduleDir > vlanXlateScheduleDir_;
   Zel::Ptr< MoxVlanRangeMgr > vlanRangeMgr_;
};

ZEL_EXPORT Zel::Ptr< VlanMappingScaleSlaveSm >
vlanMappingScaleSlaveSmFactory( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                                const Zel::Ptr< const Zel::Clock >& clock,
                                const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                                const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
                                const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
                                const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir );

}   // namespace MoxVlanMapping
