// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Reactor: a notifiee with a typed notifier and a plain way back to its owner.
//
// The owner holds the reactor, the reactor holds the notifier, and the pointer back to the owner
// is plain: the owner clears it (ownerIs( nullptr )) before it goes. A reactor whose owner is
// cleared reacts to nothing.
#pragma once

#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"

namespace Zel {

template < class Notifier, class Owner >
class Reactor : public PtrInterface::NotifieeConst {
 public:
   Ptr< Notifier > notifier() const { return static_cast< Notifier* >( zelNotifier().get() ); }
   void notifierIs( const Ptr< Notifier >& notifier ) { zelNotifierIs( notifier ); }

   /// Null after the owner cleared it.
   Owner* owner() const { return owner_; }
   void ownerIs( Owner* owner ) { owner_ = owner; }

 protected:
   Reactor( const Ptr< Notifier >& notifier, Owner* owner ) : owner_( owner ) {
      zelNotifierIs( notifier );
   }

 private:
   Owner* owner_;
};

}   // namespace Zel
