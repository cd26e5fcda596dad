// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/VlanMappingSlaveSm.h"

#include "Zel/Assert.h"
#include "Zel/Exception.h"
#include "Zel/FirstException.h"
#include "Zel/NewEntity.h"

namespace Mox {
namespace {

constexpr char zelSourceTag[] = "Mox/VlanMappingSlaveSm";

// All that the range index knows of a key.
PortVlanKey
placeOf( const PortVlanKey& key ) {
   return { key.intfId(), key.vlanId() };
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
   const auto ingress = [ & ]( PortVlanKey key ) {
      failed.run( [ & ] { handleIngressConfig( key ); } );
   };
   const auto egress = [ & ]( PortVlanKey key ) {
      failed.run( [ & ] { handleEgressConfig( key ); } );
   };
   // What is delivered, too, for its deletion may have failed; but not what comes behind it now.
   auto rest = ingressDelivered_.size();
   for ( auto at = ingressDelivered_.first(); at && rest != 0; ++at, --rest ) {
      ingress( at->value().key() );
   }
   for ( auto at = ingressConfigDir()->config().first(); at; ++at ) {
      ingress( at->key() );
   }
   rest = egressDelivered_.size();
   for ( auto at = egressDelivered_.first(); at && rest != 0; ++at, --rest ) {
      egress( at->key() );
   }
   for ( auto at = egressConfigDir()->config().first(); at; ++at ) {
      egress( at->key() );
   }
   failed.throwOn();
}

void
VlanMappingSlaveSm::ZelIngressConfigDir::onAttribute( Zel::AttributeId attribute,
                                                      const void* key ) {
   if ( attribute != MoxVlanMappingConfigDir::kAttrConfig || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< VlanMappingSlaveSm > sm{ owner() }; sm && sm->initialized_ ) {
      sm->handleIngressConfig( *static_cast< const PortVlanKey* >( key ) );
   }
}

void
VlanMappingSlaveSm::ZelEgressConfigDir::onAttribute( Zel::AttributeId attribute, const void* key ) {
   if ( attribute != MoxVlanMappingConfigDir::kAttrConfig || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< VlanMappingSlaveSm > sm{ owner() }; sm && sm->initialized_ ) {
      sm->handleEgressConfig( *static_cast< const PortVlanKey* >( key ) );
   }
}

// Brings the hooks' knowledge of one ingress key into line with the configuration. Looks again
// after each hook, inside of which the configuration and what is delivered may have changed.
void
VlanMappingSlaveSm::handleIngressConfig( const PortVlanKey& changed ) {
   PortVlanKey key = changed;
   const PortVlanKey place = placeOf( key );
   const Zel::Ptr< MoxVlanMappingConfigDir > dir = ingressConfigDir();
   if ( const ZelDelivered* delivered = inForce( ingressDelivered_, place ) ) {
      const MoxVlanMappingConfig* configured = dir->config().record( key );
      if ( !( delivered->value().key() == key ) ) {
         if ( configured ) {
            ingressWaiting_.insert( key );
         } else {
            ingressWaiting_.erase( key );
         }
         return;
      }
      if ( configured && *configured == delivered->value() &&
           delivered->state() == ZelDelivered::State::Told ) {
         return;
      }
      deliverDel( ingressDelivered_, place, &VlanMappingSlaveSm::doDelIngressVlanMapping );
   }
   ingressWaiting_.erase( key );
   Zel::FirstException refused;
   bool candidate = dir->config().contains( key ) || takeWaiting( place, key );
   while ( candidate ) {
      if ( const ZelDelivered* quicker = inForce( ingressDelivered_, place ) ) {
         if ( !( quicker->value().key() == key ) ) {
            ingressWaiting_.insert( key );
         }
         break;
      }
      try {
         deliverAdd( ingressDelivered_, place, *dir->config().record( key ),
                     &VlanMappingSlaveSm::doAddIngressVlanMapping );
         break;
      } catch ( const Zel::RangeException& ) {
         refused.keep();
         candidate = takeWaiting( place, key );
      }
   }
   refused.throwOn();
}

// The configured key that takes over a place which came free; false when none waits for it.
bool
VlanMappingSlaveSm::takeWaiting( const PortVlanKey& place, PortVlanKey& key ) {
   auto next = ingressWaiting_.lower_bound( place );
   while ( next != ingressWaiting_.end() && placeOf( *next ) == place ) {
      key = *next;
      next = ingressWaiting_.erase( next );
      if ( ingressConfigDir()->config().contains( key ) ) {
         return true;
      }
   }
   return false;
}

const VlanMappingSlaveSm::ZelDelivered*
VlanMappingSlaveSm::inForce( const DeliveredMap& delivered, const PortVlanKey& place ) {
   const ZelDelivered* node = delivered.findNode( place );
   return node && node->state() != ZelDelivered::State::Leaving ? node : nullptr;
}

void
VlanMappingSlaveSm::deliverAdd( DeliveredMap& delivered, const PortVlanKey& place,
                                const MoxVlanMappingConfig& config, Hook hook ) {
   using State = ZelDelivered::State;
   const PortVlanKey key = config.key();
   Zel::Ptr< ZelDelivered > node = delivered.findNode( place );
   const bool isNew = !node;
   if ( isNew ) {
      node = Zel::newEntity< ZelDelivered >( place, config );
      delivered.insert( node );
   }
   const MoxVlanMappingConfig before = node->value();
   const State stateBefore = node->state();
   node->valueIs( config );
   node->stateIs( State::Told );
   try {
      ( this->*hook )( key );
   } catch ( const Zel::RangeException& ) {
      // Refused before anything was changed.
      node->valueIs( before );
      node->stateIs( stateBefore );
      if ( isNew && node->linked() ) {
         delivered.unlink( *node );
      }
      throw;
   } catch ( ... ) {
      if ( node->state() == State::Told ) {
         node->stateIs( State::Unsure );
      }
      throw;
   }
}

// The node stays until the hook has done its work, for there may be no memory for another when it
// fails. An addition that comes inside the hook takes it over.
void
VlanMappingSlaveSm::deliverDel( DeliveredMap& delivered, const PortVlanKey& place, Hook hook ) {
   using State = ZelDelivered::State;
   const Zel::Ptr< ZelDelivered > node = delivered.findNode( place );
   const PortVlanKey key = node->value().key();
   node->stateIs( State::Leaving );
   try {
      ( this->*hook )( key );
   } catch ( const Zel::RangeException& ) {
      // Refused, like its addition, which failed before it came to that.
   } catch ( ... ) {
      if ( node->state() == State::Leaving ) {
         node->stateIs( State::Unsure );
      }
      throw;
   }
   if ( node->linked() && node->state() == State::Leaving ) {
      delivered.unlink( *node );
   }
}

void
VlanMappingSlaveSm::handleEgressConfig( const PortVlanKey& changed ) {
   const PortVlanKey key = changed;
   const Zel::Ptr< MoxVlanMappingConfigDir > dir = egressConfigDir();
   const ZelDelivered* delivered = inForce( egressDelivered_, key );
   if ( const MoxVlanMappingConfig* configured = dir->config().record( key ) ) {
      if ( !delivered || delivered->state() != ZelDelivered::State::Told ||
           !( delivered->value() == *configured ) ) {
         deliverAdd( egressDelivered_, key, *configured,
                     &VlanMappingSlaveSm::doAddEgressVlanMapping );
      }
   } else if ( delivered ) {
      deliverDel( egressDelivered_, key, &VlanMappingSlaveSm::doDelEgressVlanMapping );
   }
}

}   // namespace Mox
