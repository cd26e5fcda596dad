// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Notifiee: who is told of an entity's changes, and the list that tells them.
//
// Delivery   Synchronous: every reactor has been told when the mutator returns. Told only while
//            the notifier's notification is active and the notifiee is active and no zombie.
// Ownership  A notifiee holds a counted reference to its notifier; the list keeps plain pointers
//            and a notifiee leaves it before it dies.
// Reentrancy A reactor may remove, add, re-point or destroy any notifiee (itself included), drop
//            the notifier, and change the notifier again. Removal only empties a slot while a
//            notification runs; the outermost one compacts. Newcomers hear of the next change.
// Throws     What a reactor throws keeps nobody from being told: the mutator's caller gets what the
//            first one threw when all have been.
// Threads    One thread, no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"

namespace Zel {

class ZEL_EXPORT PtrInterface::NotifieeConst {
 protected:
   NotifieeConst() = default;
   /// Leaves the notifier's list, then drops the notifier.
   virtual ~NotifieeConst();

 public:
   /// A change of attribute `attribute`; `key` points to the changed member's key, or is null.
   virtual void onAttribute( AttributeId attribute, const void* key ) = 0;
   /// A zombie is not told of anything.
   virtual void zelDoZombieReactors( bool zombie );

   NotifieeConst( const NotifieeConst& ) = delete;
   NotifieeConst& operator=( const NotifieeConst& ) = delete;

   const Ptr< PtrInterface >& zelNotifier() const { return notifier_; }
   /// Watches `notifier` from now on, in last place; null watches nothing. Nothing happens when
   /// it is watched already. Requires: `notifier` has a notifiee list.
   void zelNotifierIs( const Ptr< PtrInterface >& notifier );

   bool hasNotificationActive() const { return word_.flag( ReferenceWord::kNotificationActive ); }
   void hasNotificationActiveIs( bool active ) {
      word_.flagIs( ReferenceWord::kNotificationActive, active );
   }
   bool zelMarkedForDeletion() const { return word_.flag( ReferenceWord::kMarkedForDeletion ); }

   std::int32_t zelReferences() const { return word_.references(); }
   void zelReferenceInc() const { word_.referenceInc(); }
   void zelReferenceDec() const {
      if ( word_.referenceDec() ) [[unlikely]] {
         lastReferenceGone();
      }
   }
   void zelConstructed() { word_.constructed(); }

 private:
   void lastReferenceGone() const;

   mutable ReferenceWord word_;
   Ptr< PtrInterface > notifier_;
};

class ZEL_EXPORT NotifieeList {
 public:
   /// `notifier` owns the list.
   explicit NotifieeList( PtrInterface& notifier ) : notifier_( notifier ) {}
   ~NotifieeList();
   NotifieeList( const NotifieeList& ) = delete;
   NotifieeList& operator=( const NotifieeList& ) = delete;

   /// Tells every reactor of a change, for a change that one of them did not hear of would be lost
   /// to it; then throws on what the first one threw. Nothing when the notifier's notification is
   /// off.
   void notify( AttributeId attribute, const void* key );

   /// Every notifiee watches nothing from now on.
   void notifieeDelAll();

   /// Notifiees that stand in the list now.
   std::size_t notifiees() const;

 private:
   friend class PtrInterface::NotifieeConst;
   class DepthGuard;

   void add( PtrInterface::NotifieeConst& notifiee );
   void remove( PtrInterface::NotifieeConst& notifiee );

   PtrInterface& notifier_;
   // A slot is null when its notifiee left during a notification that still runs.
   std::vector< PtrInterface::NotifieeConst* > slots_;
   std::uint32_t depth_ = 0;
};

}   // namespace Zel
