// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"

#include <utility>

#include "Zel/Exception.h"
#include "Zel/FirstException.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/MoxVlanMappingScaleSlaveSm";
constinit Zel::TraceHandle trace( "MoxVlanMappingScaleSm", false );
constexpr unsigned kHooks = 5;

// The mark of an interface whose ranges are going to change. Its memory is taken first: an index
// that has changed is never left unmarked.
class ScheduleMark {
 public:
   ScheduleMark( const Zel::Ptr< VlanXlateScheduleDir >& dir, Corvel::IntfId intfId )
       : dir_( dir ), intfId_( intfId ) {
      if ( !dir_->vlanXlateSchedule().contains( intfId ) ) {
         dir_->vlanXlateScheduleReserve();
         element_ = Zel::newEntity< VlanXlateScheduleDir::ZelVlanXlateSchedule >( intfId );
      }
   }
   void set() const {
      if ( element_ ) {
         dir_->vlanXlateScheduleIs( element_ );
      } else {
         dir_->vlanXlateScheduleIs( intfId_ );
      }
   }

 private:
   const Zel::Ptr< VlanXlateScheduleDir > dir_;
   const Corvel::IntfId intfId_;
   Zel::Ptr< VlanXlateScheduleDir::ZelVlanXlateSchedule > element_;   // null: it waits already
};

// To the base class a range exception says that the hook changed nothing, so none may come from
// where something may have changed.
template < class Act >
void
withoutRefusal( const Act& act ) {
   try {
      act();
   } catch ( const Zel::RangeException& error ) {
      throw Zel::Exception( error.what() );
   }
}

}   // namespace

VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSm(
   const Zel::Ptr< Mox::MoxCommonSmData >& acsd, const Zel::Ptr< const Zel::Clock >& clock,
   const Zel::Ptr< const Bridging::Config >& bridgingConfig,
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
   const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir )
    : VlanMappingSlaveSm( acsd, clock, bridgingConfig, vlanXlateStatusDir ),
      vlanRangeEntryDir_( vlanRangeEntryDir ),
      vlanXlateScheduleDir_( vlanXlateScheduleDir ) {}

VlanMappingScaleSlaveSm::~VlanMappingScaleSlaveSm() {
   zelDoZombieReactors( true );
   vlanRangeMgrDel();
   vlanXlateScheduleDir_ = nullptr;
   vlanRangeEntryDir_ = nullptr;
}

Zel::Ptr< VlanMappingScaleSlaveSm >
VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSmIs(
   const Zel::Ptr< Mox::MoxCommonSmData >& acsd, const Zel::Ptr< const Zel::Clock >& clock,
   const Zel::Ptr< const Bridging::Config >& bridgingConfig,
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
   const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir ) {
   return Zel::newEntity< VlanMappingScaleSlaveSm >(
      acsd, clock, bridgingConfig, vlanXlateStatusDir, vlanRangeEntryDir, vlanXlateScheduleDir );
}

void
VlanMappingScaleSlaveSm::hasNotificationActiveIs( bool active ) {
   if ( hasNotificationActive() != active ) {
      VlanMappingSlaveSm::hasNotificationActiveIs( active );
   }
}

void
VlanMappingScaleSlaveSm::zelDoZombieReactors( bool zombie ) {
   if ( zelMarkedForDeletion() != zombie ) {
      VlanMappingSlaveSm::zelDoZombieReactors( zombie );
      zelMarkedForDeletionIs( zombie );
   }
}

void
VlanMappingScaleSlaveSm::handleInitialized() {
   ZEL_TRACE( trace, kHooks, __LINE__, "handleInitialized" );
   vlanRangeMgrIs( vlanRangeEntryDir_ );
   VlanMappingSlaveSm::handleInitialized();
}

Zel::Ptr< MoxVlanRangeMgr >
VlanMappingScaleSlaveSm::vlanRangeMgrIs( const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir ) {
   if ( !vlanRangeMgr_ || !( vlanRangeMgr_->vlanRangeEntryDir() == vlanRangeEntryDir ) ) {
      vlanRangeMgr_ = moxVlanRangeMgrFactory( vlanRangeEntryDir );
   }
   return vlanRangeMgr_;
}

Zel::Ptr< MoxVlanRangeMgr >
VlanMappingScaleSlaveSm::vlanRangeMgrDel() {
   return std::move( vlanRangeMgr_ );
}

Zel::Ptr< MoxVlanRangeMgr >
VlanMappingScaleSlaveSm::presentManager() const {
   if ( !vlanRangeMgr_ ) {
      throw Zel::Exception( "VlanMappingScaleSlaveSm has no vlanRangeMgr" );
   }
   return vlanRangeMgr_;
}

void
VlanMappingScaleSlaveSm::doAddIngressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doAddIngressVlanMapping", " pvKey: ", pvKey );
   Mox::MoxVlanMappingConfig config;
   if ( const auto* configured = ingressConfigDir()->config().record( pvKey ) ) {
      config = *configured;
   }
   const Bridging::VlanIdOrNone translatedVlan = config.mapping().vlanId();
   ZEL_TRACE( trace, kHooks, __LINE__, "doAddIngressVlanMapping", " ", pvKey.intfId(),
              " : Adding mapping ", pvKey.vlanId(), " to ", translatedVlan, " inLag ",
              config.inLag(), " xlateUntagged ", config.xlateUntagged() );
   const Zel::Ptr< MoxVlanRangeMgr > mgr = presentManager();
   const ScheduleMark mark( vlanXlateScheduleDir_, pvKey.intfId() );
   mgr->addVlanToIdx( pvKey.intfId(), pvKey.vlanId(), config.mapping() );
   withoutRefusal( [ & ] { mark.set(); } );
}

void
VlanMappingScaleSlaveSm::doDelIngressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doDelIngressVlanMapping", " pvKey: ", pvKey );
   const Bridging::VlanId vlanId( pvKey.vlanId().value() );
   const Zel::Ptr< MoxVlanRangeMgr > mgr = presentManager();
   const ScheduleMark mark( vlanXlateScheduleDir_, pvKey.intfId() );
   withoutRefusal( [ & ] {
      Zel::FirstException failed;
      try {
         mgr->deleteVlanFromIdx( pvKey.intfId(), vlanId );
      } catch ( const Zel::RangeException& ) {
         failed.keep();   // ranges stored by hand with ids out of range: one may have gone already
      }
      failed.run( [ & ] { mark.set(); } );
      failed.throwOn();
   } );
}

void
VlanMappingScaleSlaveSm::doAddEgressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doAddEgressVlanMapping", " pvKey: ", pvKey );
   // A key without configuration publishes the default record under the default key, on purpose.
   Mox::MoxVlanMappingConfig config;
   if ( const auto* configured = egressConfigDir()->config().record( pvKey ) ) {
      config = *configured;
   }
   const Zel::Ptr< Mox::MoxVlanMappingStatusDir > status = statusDir();
   const Mox::MoxVlanMappingStatus record( config.key(), config.mapping(), config.inLag(),
                                           /* xlateUntagged */ false, config.origin() );
   withoutRefusal( [ & ] { status->statusIs( record ); } );
}

void
VlanMappingScaleSlaveSm::doDelEgressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doDelEgressVlanMapping", " pvKey: ", pvKey );
   const Zel::Ptr< Mox::MoxVlanMappingStatusDir > status = statusDir();
   withoutRefusal( [ & ] { status->statusDel( pvKey ); } );
}

Zel::Ptr< VlanMappingScaleSlaveSm >
vlanMappingScaleSlaveSmFactory( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                                const Zel::Ptr< const Zel::Clock >& clock,
                                const Zel::Ptr< const Bridging::Config >& bridgingConfig,
                                const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
                                const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
                                const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir ) {
   return VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSmIs(
      acsd, clock, bridgingConfig, vlanXlateStatusDir, vlanRangeEntryDir, vlanXlateScheduleDir );
}

}   // namespace MoxVlanMapping
