// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Reactor: a notifiee with a typed notifier and a plain way back to its owner.
//
// The owner holds the reactor, the reactor holds the notifier, and the pointer back to the owner
// is plain: the owner clears it (ownerIs( nullptr )) before it goes. A reactor whose owner is
// cleared reacts to nothing. Nor does one whose owner is being destroyed, if it goes by
// heldOwner(): what fires inside the destructor of a derived class would find half an object.
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
   /// The owner, an entity, for the length of a reaction; null, too, while it is being destroyed.
   Ptr< Owner > heldOwner() const { return owner_ && !owner_->zelDestroying() ? owner_ : nullptr; }
   void ownerIs( Owner* owner ) { owner_ = owner; }

 protected:
   Reactor( const Ptr< Notifier >& notifier, Owner* owner ) : owner_( owner ) {
      zelNotifierIs( notifier );
   }

 private:
   Owner* owner_;
};

}   // namespace Zel
