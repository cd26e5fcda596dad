// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/VlanMappingSlaveSm.h"

#include <optional>
#include <set>

#include "Mox/Delivered.h"
#include "Zel/Assert.h"
#include "Zel/Exception.h"
#include "Zel/FirstException.h"
#include "Zel/NewEntity.h"

namespace Mox {
namespace {

constexpr char zelSourceTag[] = "Mox/VlanMappingSlaveSm";

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

// Whether the slot is as `record` says; null stands for nothing.
bool
isInForce( const Delivered& slot, const MoxVlanMappingConfig* record ) {
   return record ? slot.inForce && *record == slot.record : !slot.inForce;
}

}   // namespace

struct VlanMappingSlaveSm::Delivery {
   DeliveredTable ingress{ DeliveredTable::Slots::PortVlan };
   DeliveredTable egress{ DeliveredTable::Slots::Key };
   // Configured ingress keys whose slot another key holds, and some that went.
   std::set< PortVlanKey > ingressWaiting;

   void waitsNoMore( const PortVlanKey& key ) {
      if ( !ingressWaiting.empty() ) {   // it nearly always is
         ingressWaiting.erase( key );
      }
   }
};

// The configured record of a key, looked up again only where that may make a difference.
class VlanMappingSlaveSm::Configured {
 public:
   Configured( const MoxVlanMappingConfigDir& dir, const PortVlanKey& key )
       : config_( dir.config() ),
         key_( key ),
         changes_( config_.changes() ),
         record_( config_.record( key ) ) {}

   /// Null when there is none.
   const MoxVlanMappingConfig* record( const PortVlanKey& key ) {
      if ( changes_ != config_.changes() || !( key == key_ ) ) {
         key_ = key;
         changes_ = config_.changes();
         record_ = config_.record( key );
      }
      return record_;
   }

 private:
   const MoxVlanMappingConfigDir::ConfigMap& config_;
   PortVlanKey key_;
   std::uint32_t changes_;
   const MoxVlanMappingConfig* record_;
};

VlanMappingSlaveSm::VlanMappingSlaveSm(
   const Zel::Ptr< MoxCommonSmData >& acsd, const Zel::Ptr< const Zel::Clock >& clock,
   const Zel::Ptr< const Bridging::Config >& bridgingConfig,
   const Zel::Ptr< Bridging::VlanXlateStatusDir >& vlanXlateStatusDir )
    : acsd_( acsd ),
      clock_( clock ),
      bridgingConfig_( bridgingConfig ),
      vlanXlateStatusDir_( vlanXlateStatusDir ),
      delivery_( std::make_unique< Delivery >() ) {
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
   const auto replay = [ & ]( const DeliveredTable& delivered, const MoxVlanMappingConfigDir& dir,
                              void ( VlanMappingSlaveSm::*handle )( const PortVlanKey& ) ) {
      const std::uint32_t places = delivered.places();
      for ( std::uint32_t place = 0; place < places; ++place ) {
         if ( const Delivered* const slot = delivered.at( place ) ) {
            failed.run( [ & ] { ( this->*handle )( slot->record.key() ); } );
         }
      }
      for ( auto at = dir.config().first(); at; ++at ) {
         failed.run( [ & ] { ( this->*handle )( at->key() ); } );
      }
   };
   replay( delivery_->ingress, *ingressConfigDir(), &VlanMappingSlaveSm::handleIngressConfig );
   replay( delivery_->egress, *egressConfigDir(), &VlanMappingSlaveSm::handleEgressConfig );
   failed.throwOn();
}

std::uint32_t
VlanMappingSlaveSm::undelivered() const {
   std::uint32_t keys = 0;
   const auto count = [ & ]( const DeliveredTable& delivered, const auto& isDelivered ) {
      for ( std::uint32_t place = 0; place < delivered.places(); ++place ) {
         const Delivered* const slot = delivered.at( place );
         keys += !slot || isDelivered( *slot ) ? 0 : 1;
      }
   };
   count( delivery_->ingress, [ & ]( const Delivered& slot ) {
      Configured configured( *ingressConfigDir(), slot.record.key() );
      return isInForce( slot, wanted( slot, configured ) );
   } );
   for ( const auto& node : ingressConfigDir()->config() ) {
      const Delivered* const slot = delivery_->ingress.find( node.key() );
      const bool isNoted = slot && ( slot->record.key() == node.key() ||
                                     delivery_->ingressWaiting.contains( node.key() ) );
      keys += isNoted || !isDeliverable( node.value() ) ? 0 : 1;
   }
   count( delivery_->egress, [ & ]( const Delivered& slot ) {
      return egressConfigDir()->config().contains( slot.record.key() );
   } );
   for ( const auto& node : egressConfigDir()->config() ) {
      const Delivered* const slot = delivery_->egress.find( node.key() );
      const bool isDelivered = slot && slot->record == node.value();
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
VlanMappingSlaveSm::firstWaiting( const PortVlanKey& key ) const {
   const auto& waiting = delivery_->ingressWaiting;
   const PortVlanKey slot = delivery_->ingress.slotOf( key );
   for ( auto at = waiting.lower_bound( slot );
         at != waiting.end() && delivery_->ingress.slotOf( *at ) == slot; ++at ) {
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
VlanMappingSlaveSm::wanted( const Delivered& slot, Configured& configured ) const {
   if ( const MoxVlanMappingConfig* record = configured.record( slot.record.key() ) ) {
      if ( isDeliverable( *record ) ) {
         return record;
      }
      if ( slot.inForce ) {
         return &slot.record;
      }
   }
   return firstWaiting( slot.record.key() );
}

void
VlanMappingSlaveSm::handleIngressConfig( const PortVlanKey& changed ) {
   const PortVlanKey key = changed;   // it may go with its record inside a hook
   Zel::FirstException failed;
   Configured configured( *ingressConfigDir(), key );
   const MoxVlanMappingConfig* record = configured.record( key );
   if ( record && !failed.run( [ & ] { requireDeliverable( *record ); } ) ) {
      record = nullptr;   // what waits for the slot is none the worse for it
   }
   DeliveredTable& delivered = delivery_->ingress;
   Delivered* slot = nullptr;
   if ( record || firstWaiting( key ) ) {
      slot = &delivered.findOrInsert( key );
   } else {
      slot = delivered.find( key );
   }
   if ( !record ) {
      delivery_->waitsNoMore( key );
   } else if ( !( slot->record.key() == key ) ) {
      delivery_->ingressWaiting.insert( key );
   }
   if ( !slot || slot->busy ) {
      failed.throwOn();
      return;
   }
   slot->busy = true;
   settleIngress( *slot, configured, failed );
   slot->busy = false;
   if ( !slot->inForce && !wanted( *slot, configured ) ) {
      delivered.erase( *slot );
   }
   failed.throwOn();
}

// Looks again after each hook, inside of which the configuration may have changed.
void
VlanMappingSlaveSm::settleIngress( Delivered& slot, Configured& configured,
                                   Zel::FirstException& failed ) {
   std::optional< MoxVlanMappingConfig > earlier;
   bool reserved = false;
   for ( bool goesOn = true; goesOn; ) {
      const MoxVlanMappingConfig* const next = wanted( slot, configured );
      if ( isInForce( slot, next ) ) {
         break;
      }
      if ( slot.inForce ) {
         earlier = slot.record;
         if ( ingressIndex_ && next ) {
            if ( !failed.run( [ & ] { ingressIndex_->reserve( slot.record.key() ); } ) ) {
               break;
            }
            reserved = true;
         }
         goesOn = delIngress( slot, failed );
      } else {
         goesOn = addIngress( slot, *next, failed );
      }
   }
   if ( ingressIndex_ && earlier && !slot.inForce && wanted( slot, configured ) ) {
      failed.run( [ & ] { ingressIndex_->restore( *earlier ); } );
      slot.record = *earlier;
      slot.inForce = ingressIndex_->holds( slot.record.key() );
   }
   if ( reserved ) {
      ingressIndex_->release( slot.record.key() );
   }
}

bool
VlanMappingSlaveSm::addIngress( Delivered& slot, const MoxVlanMappingConfig& record,
                                Zel::FirstException& failed ) {
   const PortVlanKey key = record.key();
   slot.record = record;
   if ( failed.run( [ & ] { doAddIngressVlanMapping( key ); } ) ||
        ( ingressIndex_ && ingressIndex_->holds( key ) ) ) {
      slot.inForce = true;
      delivery_->waitsNoMore( key );
      return true;
   }
   if ( !ingressIndex_ ) {
      slot.inDoubt();
   }
   return false;
}

bool
VlanMappingSlaveSm::delIngress( Delivered& slot, Zel::FirstException& failed ) {
   const PortVlanKey key = slot.record.key();
   if ( failed.run( [ & ] { doDelIngressVlanMapping( key ); } ) ||
        ( ingressIndex_ && !ingressIndex_->holds( key ) ) ) {
      slot.inForce = false;
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
   Configured configured( *egressConfigDir(), key );
   const MoxVlanMappingConfig* const record = configured.record( key );
   if ( record ) {
      requireDeliverable( *record );
   }
   DeliveredTable& delivered = delivery_->egress;
   Delivered* const slot = record ? &delivered.findOrInsert( key ) : delivered.find( key );
   if ( !slot || slot->busy ) {
      return;
   }
   Zel::FirstException failed;
   slot->busy = true;
   settleEgress( *slot, configured, failed );
   slot->busy = false;
   if ( !slot->inForce ) {
      delivered.erase( *slot );
   }
   failed.throwOn();
}

void
VlanMappingSlaveSm::settleEgress( Delivered& slot, Configured& configured,
                                  Zel::FirstException& failed ) {
   const PortVlanKey key = slot.record.key();
   for ( ;; ) {
      const MoxVlanMappingConfig* const record = configured.record( key );
      if ( !record && slot.inForce ) {
         if ( !failed.run( [ & ] { doDelEgressVlanMapping( key ); } ) ) {
            slot.inDoubt();
            return;
         }
         slot.inForce = false;
      } else if ( record && isDeliverable( *record ) &&
                  !( slot.inForce && *record == slot.record ) ) {
         slot.record = *record;
         if ( !failed.run( [ & ] { doAddEgressVlanMapping( key ); } ) ) {
            slot.inDoubt();
            return;
         }
         slot.inForce = true;
      } else {
         return;
      }
   }
}

}   // namespace Mox
