// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/VlanMappingSlaveSm.h"

#include <optional>

#include "Zel/Assert.h"
#include "Zel/Exception.h"
#include "Zel/FirstException.h"
#include "Zel/NewEntity.h"

namespace Mox {
namespace {

constexpr char zelSourceTag[] = "Mox/VlanMappingSlaveSm";

// All that the range index knows of a key.
PortVlanKey
slotOf( const PortVlanKey& key ) {
   return { key.intfId(), key.vlanId() };
}

bool
isVlanId( std::uint16_t number ) {
   return Bridging::VlanId::kLowest <= number && number <= Bridging::VlanId::kHighest;
}

bool
isDeliverable( const MoxVlanMappingConfig& record ) {
   return isVlanId( record.key().vlanId().value() ) && isVlanId( record.mapping().rawVlanId() );
}

void
requireDeliverable( const MoxVlanMappingConfig& record ) {
   if ( isDeliverable( record ) ) {
      return;
   }
   static_cast< void >( Bridging::VlanId( record.key().vlanId().value() ) );
   static_cast< void >( record.mapping().vlanId() );
   Zel::throwRangeException(
      "Mox::MoxVlanMappingConfig::mapping without translated VLAN not allowed; "
      "allowed: 1 to 4094" );
}

}   // namespace

VlanMappingSlaveSm::VlanMappingSlaveSm(
   const Zel::Ptr< MoxCommonSmData >& acsd, const Zel::Ptr< const Zel::Clock >& clock,
   const Zel::Ptr< const Bridging::Config >& bridgingConfig,
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir )
    : acsd_( acsd ),
      clock_( clock ),
      bridgingConfig_( bridgingConfig ),
      vlanXlateStatusDir_( vlanXlateStatusDir ) {
   ZEL_ASSERT( acsd_ );
   ingressReactor_ = Zel::newEntity< ZelIngressConfigDir >( acsd_->ingressConfigDir(), this );
   egressReactor_ = Zel::newEntity< ZelEgressConfigDir >( acsd_->egressConfigDir(), this );
}

VlanMappingSlaveSm::~VlanMappingSlaveSm() {
   VlanMappingSlaveSm::zelDoZombieReactors( true );
   ingressReactor_->ownerIs( nullptr );
   egressReactor_->ownerIs( nullptr );
}

void
VlanMappingSlaveSm::hasNotificationActiveIs( bool active ) {
   PtrInterface::hasNotificationActiveIs( active );
   ingressReactor_->hasNotificationActiveIs( active );
   egressReactor_->hasNotificationActiveIs( active );
}

void
VlanMappingSlaveSm::zelDoZombieReactors( bool zombie ) {
   ingressReactor_->zelDoZombieReactors( zombie );
   egressReactor_->zelDoZombieReactors( zombie );
   zelMarkedForDeletionIs( zombie );
}

Zel::Ptr< MoxVlanMappingConfigDir >
VlanMappingSlaveSm::ingressConfigDir() const {
   return ingressReactor_->notifier();
}

Zel::Ptr< MoxVlanMappingConfigDir >
VlanMappingSlaveSm::egressConfigDir() const {
   return egressReactor_->notifier();
}

void
VlanMappingSlaveSm::handleInitialized() {
   const Zel::Ptr< VlanMappingSlaveSm > self( this );   // a reactor may drop the last other one
   initialized_ = true;
   Zel::FirstException failed;
   // What is delivered, too, for its deletion may have failed; but not what hooks add at the end.
   const auto replay = [ & ]( const DeliveredMap& delivered, const MoxVlanMappingConfigDir& dir,
                              void ( VlanMappingSlaveSm::*handle )( const PortVlanKey& ) ) {
      auto rest = delivered.size();
      for ( auto at = delivered.first(); at && rest != 0; ++at, --rest ) {
         failed.run( [ & ] { ( this->*handle )( at->value().key() ); } );
      }
      for ( auto at = dir.config().first(); at; ++at ) {
         failed.run( [ & ] { ( this->*handle )( at->key() ); } );
      }
   };
   replay( ingressDelivered_, *ingressConfigDir(), &VlanMappingSlaveSm::handleIngressConfig );
   replay( egressDelivered_, *egressConfigDir(), &VlanMappingSlaveSm::handleEgressConfig );
   failed.throwOn();
}

std::uint32_t
VlanMappingSlaveSm::undelivered() const {
   std::uint32_t keys = 0;
   for ( const ZelDelivered& slot : ingressDelivered_ ) {
      keys += isInForce( slot, wanted( slot ) ) ? 0 : 1;
   }
   for ( const auto& node : ingressConfigDir()->config() ) {
      const ZelDelivered* const slot = ingressDelivered_.findNode( slotOf( node.key() ) );
      const bool isNoted =
         slot && ( slot->value().key() == node.key() || ingressWaiting_.contains( node.key() ) );
      keys += isNoted || !isDeliverable( node.value() ) ? 0 : 1;
   }
   for ( const ZelDelivered& slot : egressDelivered_ ) {
      keys += egressConfigDir()->config().contains( slot.key() ) ? 0 : 1;
   }
   for ( const auto& node : egressConfigDir()->config() ) {
      const MoxVlanMappingConfig* const delivered = egressDelivered_.record( node.key() );
      const bool isDelivered = delivered && *delivered == node.value();
      keys += isDelivered || !isDeliverable( node.value() ) ? 0 : 1;
   }
   return keys;
}

void
VlanMappingSlaveSm::ZelIngressConfigDir::onAttribute( Zel::AttributeId attribute,
                                                      const void* key ) {
   if ( attribute != MoxVlanMappingConfigDir::kAttrConfig || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< VlanMappingSlaveSm > sm = heldOwner(); sm && sm->initialized_ ) {
      sm->handleIngressConfig( *static_cast< const PortVlanKey* >( key ) );
   }
}

void
VlanMappingSlaveSm::ZelEgressConfigDir::onAttribute( Zel::AttributeId attribute, const void* key ) {
   if ( attribute != MoxVlanMappingConfigDir::kAttrConfig || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< VlanMappingSlaveSm > sm = heldOwner(); sm && sm->initialized_ ) {
      sm->handleEgressConfig( *static_cast< const PortVlanKey* >( key ) );
   }
}

// The first that may take over a slot which comes free; null when none waits.
const MoxVlanMappingConfig*
VlanMappingSlaveSm::firstWaiting( const PortVlanKey& slot ) const {
   for ( auto at = ingressWaiting_.lower_bound( slot );
         at != ingressWaiting_.end() && slotOf( *at ) == slot; ++at ) {
      const MoxVlanMappingConfig* const record = ingressConfigDir()->config().record( *at );
      if ( record && isDeliverable( *record ) ) {
         return record;
      }
   }
   return nullptr;
}

// What is to be in force in an ingress slot: the record of the key that holds it, or what it stands
// for while that record is refused; the first that waits when the key is gone; null for nothing.
const MoxVlanMappingConfig*
VlanMappingSlaveSm::wanted( const ZelDelivered& slot ) const {
   const PortVlanKey& key = slot.value().key();
   if ( const MoxVlanMappingConfig* record = ingressConfigDir()->config().record( key ) ) {
      if ( isDeliverable( *record ) ) {
         return record;
      }
      if ( slot.inForce() ) {
         return &slot.value();
      }
   }
   return firstWaiting( slot.key() );
}

bool
VlanMappingSlaveSm::isInForce( const ZelDelivered& slot, const MoxVlanMappingConfig* record ) {
   return record ? slot.inForce() && *record == slot.value() : !slot.inForce();
}

void
VlanMappingSlaveSm::handleIngressConfig( const PortVlanKey& changed ) {
   const PortVlanKey key = changed;   // it may go with its record inside a hook
   Zel::FirstException failed;
   const MoxVlanMappingConfig* configured = ingressConfigDir()->config().record( key );
   if ( configured && !failed.run( [ & ] { requireDeliverable( *configured ); } ) ) {
      configured = nullptr;   // what waits for the slot is none the worse for it
   }
   Zel::Ptr< ZelDelivered > slot = ingressDelivered_.findNode( slotOf( key ) );
   if ( !configured ) {
      ingressWaiting_.erase( key );
   } else if ( slot && !( slot->value().key() == key ) ) {
      ingressWaiting_.insert( key );
   }
   if ( !slot ) {
      if ( !configured && !firstWaiting( slotOf( key ) ) ) {
         failed.throwOn();
         return;
      }
      slot = Zel::newEntity< ZelDelivered >( slotOf( key ), MoxVlanMappingConfig( key, {} ) );
      ingressDelivered_.insert( slot );
   }
   if ( slot->busy() ) {
      failed.throwOn();
      return;
   }
   slot->busyIs( true );
   settleIngress( *slot, failed );
   slot->busyIs( false );
   if ( !slot->inForce() && !wanted( *slot ) ) {
      ingressDelivered_.unlink( *slot );
   }
   failed.throwOn();
}

// Looks again after each hook, inside of which the configuration may have changed.
void
VlanMappingSlaveSm::settleIngress( ZelDelivered& slot, Zel::FirstException& failed ) {
   std::optional< MoxVlanMappingConfig > earlier;
   bool reserved = false;
   for ( bool goesOn = true; goesOn; ) {
      const MoxVlanMappingConfig* const next = wanted( slot );
      if ( isInForce( slot, next ) ) {
         break;
      }
      if ( slot.inForce() ) {
         earlier = slot.value();
         if ( ingressIndex_ && next ) {
            if ( !failed.run( [ & ] { ingressIndex_->reserve( slot.value().key() ); } ) ) {
               break;
            }
            reserved = true;
         }
         goesOn = delIngress( slot, failed );
      } else {
         goesOn = addIngress( slot, *next, failed );
      }
   }
   if ( ingressIndex_ && earlier && !slot.inForce() && wanted( slot ) ) {
      failed.run( [ & ] { ingressIndex_->restore( *earlier ); } );
      slot.valueIs( *earlier );
      slot.inForceIs( ingressIndex_->holds( slot.key() ) );
   }
   if ( reserved ) {
      ingressIndex_->release( slot.key() );
   }
}

bool
VlanMappingSlaveSm::addIngress( ZelDelivered& slot, const MoxVlanMappingConfig& record,
                                Zel::FirstException& failed ) {
   const PortVlanKey key = record.key();
   slot.valueIs( record );
   if ( failed.run( [ & ] { doAddIngressVlanMapping( key ); } ) ||
        ( ingressIndex_ && ingressIndex_->holds( key ) ) ) {
      slot.inForceIs( true );
      ingressWaiting_.erase( key );
      return true;
   }
   if ( !ingressIndex_ ) {
      slot.inDoubt();
   }
   return false;
}

bool
VlanMappingSlaveSm::delIngress( ZelDelivered& slot, Zel::FirstException& failed ) {
   const PortVlanKey key = slot.value().key();
   if ( failed.run( [ & ] { doDelIngressVlanMapping( key ); } ) ||
        ( ingressIndex_ && !ingressIndex_->holds( key ) ) ) {
      slot.inForceIs( false );
      return true;
   }
   if ( !ingressIndex_ ) {
      slot.inDoubt();
   }
   return false;
}

void
VlanMappingSlaveSm::handleEgressConfig( const PortVlanKey& changed ) {
   const PortVlanKey key = changed;
   const MoxVlanMappingConfig* const configured = egressConfigDir()->config().record( key );
   if ( configured ) {
      requireDeliverable( *configured );
   }
   Zel::Ptr< ZelDelivered > slot = egressDelivered_.findNode( key );
   if ( !slot ) {
      if ( !configured ) {
         return;
      }
      slot = Zel::newEntity< ZelDelivered >( key, MoxVlanMappingConfig( key, {} ) );
      egressDelivered_.insert( slot );
   }
   if ( slot->busy() ) {
      return;
   }
   Zel::FirstException failed;
   slot->busyIs( true );
   settleEgress( *slot, failed );
   slot->busyIs( false );
   if ( !slot->inForce() ) {
      egressDelivered_.unlink( *slot );
   }
   failed.throwOn();
}

void
VlanMappingSlaveSm::settleEgress( ZelDelivered& slot, Zel::FirstException& failed ) {
   const PortVlanKey& key = slot.key();
   for ( ;; ) {
      const MoxVlanMappingConfig* const record = egressConfigDir()->config().record( key );
      if ( !record && slot.inForce() ) {
         if ( !failed.run( [ & ] { doDelEgressVlanMapping( key ); } ) ) {
            slot.inDoubt();
            return;
         }
         slot.inForceIs( false );
      } else if ( record && isDeliverable( *record ) &&
                  !( slot.inForce() && *record == slot.value() ) ) {
         slot.valueIs( *record );
         if ( !failed.run( [ & ] { doAddEgressVlanMapping( key ); } ) ) {
            slot.inDoubt();
            return;
         }
         slot.inForceIs( true );
      } else {
         return;
      }
   }
}

}   // namespace Mox
