// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/PtrInterface.h"

namespace Zel {

NotifieeList*
PtrInterface::notifieeList() const {
   return nullptr;
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
