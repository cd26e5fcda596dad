// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/VlanMappingSlaveSm.h"

#include <optional>
#include <utility>

#include "Zel/Assert.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"

namespace Mox {
namespace {

constexpr char zelSourceTag[] = "Mox/VlanMappingSlaveSm";

// All that the range index knows of a key.
PortVlanKey
placeOf( const PortVlanKey& key ) {
   return { key.intfId(), key.vlanId() };
}

// Runs every delivery of a replay; one that throws does not keep the others from running.
class Replay {
 public:
   template < class Handle >
   void run( const MoxVlanMappingConfigDir& dir, Handle handle ) {
      for ( auto at = dir.config().first(); at; ++at ) {
         try {
            handle( at->key() );
         } catch ( ... ) {
            if ( !first_ ) {
               first_ = std::current_exception();
            }
         }
      }
   }
   void throwFirst() const {
      if ( first_ ) {
         std::rethrow_exception( first_ );
      }
   }

 private:
   std::exception_ptr first_;
};

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
   Replay replay;
   replay.run( *ingressConfigDir(),
               [ this ]( const PortVlanKey& key ) { handleIngressConfig( key ); } );
   replay.run( *egressConfigDir(),
               [ this ]( const PortVlanKey& key ) { handleEgressConfig( key ); } );
   replay.throwFirst();
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
   ingressWaiting_.erase( key );
   if ( const MoxVlanMappingConfig* delivered = ingressDelivered_.record( place ) ) {
      const MoxVlanMappingConfig* configured = dir->config().record( key );
      if ( !( delivered->key() == key ) ) {
         if ( configured ) {
            ingressWaiting_.insert( key );
         }
         return;
      }
      if ( configured && *configured == *delivered ) {
         return;
      }
      deliverIngressDel( place );
   }
   std::exception_ptr refused;
   bool candidate = dir->config().contains( key ) || takeWaiting( place, key );
   while ( candidate ) {
      if ( const MoxVlanMappingConfig* quicker = ingressDelivered_.record( place ) ) {
         if ( !( quicker->key() == key ) ) {
            ingressWaiting_.insert( key );
         }
         break;
      }
      try {
         deliverIngressAdd( place, *dir->config().record( key ) );
         break;
      } catch ( const Zel::RangeException& ) {
         if ( !refused ) {
            refused = std::current_exception();
         }
         candidate = takeWaiting( place, key );
      }
   }
   if ( refused ) {
      std::rethrow_exception( refused );
   }
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

void
VlanMappingSlaveSm::deliverIngressDel( const PortVlanKey& place ) {
   Zel::Ptr< ZelDelivered > delivered = ingressDelivered_.del( place );
   try {
      doDelIngressVlanMapping( delivered->value().key() );
   } catch ( ... ) {
      // Whether the index still has it is not known; deleting it once more does no harm.
      if ( !ingressDelivered_.contains( place ) ) {
         ingressDelivered_.recordIs( place, delivered->value() );
      }
      throw;
   }
}

void
VlanMappingSlaveSm::deliverIngressAdd( const PortVlanKey& place,
                                       const MoxVlanMappingConfig& config ) {
   const PortVlanKey key = config.key();
   ingressDelivered_.recordIs( place, config );
   try {
      doAddIngressVlanMapping( key );
   } catch ( const Zel::RangeException& ) {
      ingressDelivered_.del( place );   // refused before anything was changed
      throw;
   }
}

void
VlanMappingSlaveSm::handleEgressConfig( const PortVlanKey& changed ) {
   const PortVlanKey key = changed;
   const Zel::Ptr< MoxVlanMappingConfigDir > dir = egressConfigDir();
   if ( const MoxVlanMappingConfig* configured = dir->config().record( key ) ) {
      const MoxVlanMappingConfig* const known = egressDelivered_.record( key );
      const auto before = known ? std::optional( *known ) : std::nullopt;
      if ( !egressDelivered_.recordIs( key, *configured ) ) {
         return;
      }
      try {
         doAddEgressVlanMapping( key );
      } catch ( const Zel::RangeException& ) {
         // Refused before anything was changed.
         if ( before ) {
            egressDelivered_.recordIs( key, *before );
         } else {
            egressDelivered_.del( key );
         }
         throw;
      }
   } else if ( egressDelivered_.del( key ) ) {
      doDelEgressVlanMapping( key );
   }
}

}   // namespace Mox
