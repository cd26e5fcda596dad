// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Notifiee.h"

#include <algorithm>
#include <utility>

#include "Zel/Assert.h"
#include "Zel/FirstException.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/Notifiee";

}   // namespace

PtrInterface::NotifieeConst::~NotifieeConst() {
   zelNotifierIs( nullptr );
   word_.assertUnused();
}

void
PtrInterface::NotifieeConst::zelDoZombieReactors( bool zombie ) {
   word_.flagIs( ReferenceWord::kMarkedForDeletion, zombie );
}

void
PtrInterface::NotifieeConst::zelNotifierIs( const Ptr< PtrInterface >& notifier ) {
   if ( notifier == notifier_ ) {
      return;
   }
   // The new place first: it allocates, and when that fails the old one is still held.
   if ( notifier ) {
      ZEL_ASSERT( notifier->notifieeList() );
      notifier->notifieeList()->add( *this );
   }
   const Ptr< PtrInterface > previous = std::exchange( notifier_, notifier );
   if ( previous ) {
      previous->notifieeList()->remove( *this );
   }
}

void
PtrInterface::NotifieeConst::lastReferenceGone() const {
   word_.assertZero();
   // Out of the list before the destructor runs: nothing may be told to half an object.
   const_cast< NotifieeConst* >( this )->zelNotifierIs( nullptr );
   delete this;
}

// Counts the notifications that run; the outermost one closes the gaps.
class NotifieeList::DepthGuard {
 public:
   explicit DepthGuard( NotifieeList& list ) : list_( list ) { ++list_.depth_; }
   ~DepthGuard() {
      if ( --list_.depth_ == 0 ) {
         std::erase( list_.slots_, nullptr );
      }
   }
   DepthGuard( const DepthGuard& ) = delete;
   DepthGuard& operator=( const DepthGuard& ) = delete;

 private:
   NotifieeList& list_;
};

NotifieeList::~NotifieeList() {
   // Whoever watches holds the notifier, so nobody can be left when it goes.
   ZEL_ASSERT( slots_.empty() );
}

void
NotifieeList::notify( AttributeId attribute, const void* key ) {
   if ( slots_.empty() ) {
      return;
   }
   const Ptr< PtrInterface > notifier( &notifier_ );   // a reactor may drop the last other one
   const DepthGuard depth( *this );
   FirstException failed;
   const std::size_t known = slots_.size();
   for ( std::size_t i = 0; i < known && notifier->hasNotificationActive(); ++i ) {
      const Ptr< PtrInterface::NotifieeConst > reactor( slots_[ i ] );   // may remove itself
      if ( reactor && reactor->hasNotificationActive() && !reactor->zelMarkedForDeletion() ) {
         failed.run( [ & ] { reactor->onAttribute( attribute, key ); } );
      }
   }
   failed.throwOn();
}

void
NotifieeList::notifieeDelAll() {
   const Ptr< PtrInterface > notifier( slots_.empty() ? nullptr : &notifier_ );
   const DepthGuard depth( *this );
   for ( std::size_t i = 0; i < slots_.size(); ++i ) {
      if ( const Ptr< PtrInterface::NotifieeConst > notifiee{ slots_[ i ] } ) {
         notifiee->zelNotifierIs( nullptr );
      }
   }
}

std::size_t
NotifieeList::notifiees() const {
   return slots_.size() - static_cast< std::size_t >( std::ranges::count( slots_, nullptr ) );
}

void
NotifieeList::add( PtrInterface::NotifieeConst& notifiee ) {
   slots_.push_back( &notifiee );
}

void
NotifieeList::remove( PtrInterface::NotifieeConst& notifiee ) {
   const auto slot = std::ranges::find( slots_, &notifiee );
   ZEL_ASSERT( slot != slots_.end() );
   *slot = nullptr;
   if ( depth_ == 0 ) {
      slots_.erase( slot );
   }
}

}   // namespace Zel
