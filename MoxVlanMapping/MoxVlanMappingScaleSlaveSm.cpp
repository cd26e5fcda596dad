// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"

#include <utility>

#include "Zel/Exception.h"
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
       : dir_( dir ), element_( dir->vlanXlateSchedule().findNode( intfId ) ), isNew_( !element_ ) {
      if ( isNew_ ) {
         dir_->vlanXlateScheduleReserve();
         element_ = Zel::newEntity< VlanXlateScheduleDir::ZelVlanXlateSchedule >( intfId );
      }
   }
   void set() const {
      if ( isNew_ ) {
         dir_->vlanXlateScheduleIs( element_ );
      } else if ( !element_->linked() ) {   // unmarked meanwhile
         dir_->vlanXlateScheduleIs( element_->key() );
      }
   }

 private:
   const Zel::Ptr< VlanXlateScheduleDir > dir_;
   Zel::Ptr< VlanXlateScheduleDir::ZelVlanXlateSchedule > element_;
   const bool isNew_;
};

}   // namespace

VlanMappingScaleSlaveSm::VlanMappingScaleSlaveSm(
   const Zel::Ptr< Mox::MoxCommonSmData >& acsd, const Zel::Ptr< const Zel::Clock >& clock,
   const Zel::Ptr< const Bridging::Config >& bridgingConfig,
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir,
   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
   const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir )
    : VlanMappingSlaveSm( acsd, clock, bridgingConfig, vlanXlateStatusDir ),
      vlanRangeEntryDir_( vlanRangeEntryDir ),
      vlanXlateScheduleDir_( vlanXlateScheduleDir ) {
   ingressIndexIs( &rangeIndex_ );
}

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
   mark.set();
}

void
VlanMappingScaleSlaveSm::doDelIngressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doDelIngressVlanMapping", " pvKey: ", pvKey );
   const Bridging::VlanId vlanId( pvKey.vlanId().value() );
   const Zel::Ptr< MoxVlanRangeMgr > mgr = presentManager();
   const ScheduleMark mark( vlanXlateScheduleDir_, pvKey.intfId() );
   mgr->deleteVlanFromIdx( pvKey.intfId(), vlanId );
   mark.set();
}

// Throws nothing: an id or a start that is none is not held.
bool
VlanMappingScaleSlaveSm::RangeIndex::holds( const Mox::PortVlanKey& key ) const {
   const Bridging::VlanId vid = key.vlanId();
   const auto& dir =
      sm_.vlanRangeMgr_ ? sm_.vlanRangeMgr_->vlanRangeEntryDir() : sm_.vlanRangeEntryDir_;
   const auto entry = dir->vlanRangeEntry( key.intfId() );
   if ( !entry || vid.value() > Bridging::VlanId::kHighest ) {
      return false;
   }
   const auto start = entry->revSortedStartVid().findElementOrNext( vid.value() );
   if ( !start ) {
      return false;
   }
   const auto low = Bridging::VlanId::fromRaw( start->key().value() );
   const auto range = entry->vlanIdRange().findElement( low );
   return range && !( range->value().highVid() < vid );
}

void
VlanMappingScaleSlaveSm::RangeIndex::reserve( const Mox::PortVlanKey& key ) {
   sm_.presentManager()->changeReserve( key.intfId(), key.vlanId() );
}

void
VlanMappingScaleSlaveSm::RangeIndex::restore( const Mox::MoxVlanMappingConfig& record ) {
   const Mox::PortVlanKey& key = record.key();
   sm_.presentManager()->addVlanToIdx( key.intfId(), key.vlanId(), record.mapping() );
   sm_.vlanXlateScheduleDir_->vlanXlateScheduleIs( key.intfId() );
}

void
VlanMappingScaleSlaveSm::RangeIndex::release( const Mox::PortVlanKey& key ) noexcept {
   if ( sm_.vlanRangeMgr_ ) {
      sm_.vlanRangeMgr_->changeRelease( key.intfId(), key.vlanId() );
   }
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
   status->statusIs( record );
}

void
VlanMappingScaleSlaveSm::doDelEgressVlanMapping( const Mox::PortVlanKey& pvKey ) {
   ZEL_TRACE( trace, kHooks, __LINE__, "doDelEgressVlanMapping", " pvKey: ", pvKey );
   const Zel::Ptr< Mox::MoxVlanMappingStatusDir > status = statusDir();
   status->statusDel( pvKey );
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
