// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/PtrInterface.h"

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/PtrInterface";

}   // namespace

void
ReferenceWord::assertUnused() const {
   ZEL_ASSERT( references() == ( flag( kConstructing ) ? 1 : 0 ) );
}

void
ReferenceWord::assertZero() {
   ZEL_ASSERT( references() == 0 );
   ZEL_ASSERT( !flag( kDestroying ) );
   flagIs( kDestroying, true );
}

NotifieeList*
PtrInterface::notifieeList() const {
   return nullptr;
}

void
PtrInterface::hasNotificationActiveIs( bool active ) {
   word_.flagIs( ReferenceWord::kNotificationActive, active );
}

void
PtrInterface::zeroReferencesIs( bool zero ) {
   if ( zero ) {
      delete this;
   }
}

TypeHandle
PtrInterface::fwkType() const {
   return {};
}

PtrInterface::~PtrInterface() {
   word_.assertUnused();
}

void
PtrInterface::zelDoZombieReactors( bool zombie ) {
   zelMarkedForDeletionIs( zombie );
}

void
PtrInterface::lastReferenceGone() const {
   word_.assertZero();
   const_cast< PtrInterface* >( this )->zeroReferencesIs( true );
}

}   // namespace Zel
