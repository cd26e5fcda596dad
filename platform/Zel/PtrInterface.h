// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PtrInterface: base of every entity and every collection node.
//
// Header     16 bytes: the vtable pointer, then a reference count and flags in one 8-byte word.
// Ownership  Held through Ptr; made by newEntity(), which is what the exported factories and the
//            static FooIs() creators call. The constructor runs with one reference of its own,
//            so a Ptr to an object under construction may be made and dropped.
// Slots      notifieeList, hasNotificationActiveIs, zeroReferencesIs, fwkType, destructor,
//            zelDoZombieReactors: in this order, derived classes add theirs behind.
// Asserts    The count is never below zero, is zero at destruction, and an object that is being
//            destroyed takes no new reference.
// Threads    One thread, but for reference counts under the thread-safe switch.
#pragma once

#include <cstddef>
#include <cstdint>

#include "Zel/Assert.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/SharedCount.h"
#include "Zel/TypeModule.h"

namespace Zel {

class NotifieeList;

/// The reference count of one object and its flags.
class ReferenceWord {
 public:
   enum Flag : std::uint32_t {
      kConstructing = 1,
      kDestroying = 2,
      kNotificationActive = 4,
      kMarkedForDeletion = 8,
      kLinked = 16,   // a node that stands in its collection
   };

   std::int32_t references() const { return references_.value(); }
   void referenceInc() { references_.add( 1 ); }
   /// True when none is left. One signed test also catches a count that went below zero.
   bool referenceDec() { return references_.subtract( 1 ) <= 0; }

   bool flag( Flag f ) const { return ( flags_ & f ) != 0; }
   void flagIs( Flag f, bool on ) {
      flags_ = on ? flags_ | f : flags_ & ~static_cast< std::uint32_t >( f );
   }

   /// The constructor's own reference ends; the pointer that newEntity() returns takes it over.
   void constructed() { flagIs( kConstructing, false ); }
   /// Asserts that the object may go now: unused, or abandoned by its own constructor.
   void assertUnused() const { ZEL_ASSERT( references() == ( flag( kConstructing ) ? 1 : 0 ) ); }
   /// Asserts that the last reference went just now, and only once.
   void assertZero() {
      ZEL_ASSERT( references() == 0 );
      ZEL_ASSERT( !flag( kDestroying ) );
      flagIs( kDestroying, true );
   }

 private:
   static constexpr char zelSourceTag[] = "Zel/PtrInterface";

   SharedCount references_{ 1 };
   std::uint32_t flags_ = kConstructing;
};

class ZEL_EXPORT PtrInterface {
 public:
   class NotifieeConst;

   static constexpr char zelTypeName[] = "Zel::PtrInterface";

   /// The reactors of this entity; null when it tells nobody of its changes.
   virtual NotifieeList* notifieeList() const;
   /// Whether changes of this entity are told to its reactors.
   virtual void hasNotificationActiveIs( bool active ) {
      word_.flagIs( ReferenceWord::kNotificationActive, active );
   }
   /// `true` says that the last reference is gone: destroys the object. `false` does nothing.
   virtual void zeroReferencesIs( bool zero );
   /// The registered type; a null handle for nodes and unregistered types.
   virtual TypeHandle fwkType() const;

 protected:
   PtrInterface() = default;
   virtual ~PtrInterface() { word_.assertUnused(); }

 public:
   /// Stops (true) or resumes (false) the reactions of this entity's own notifiees; the first
   /// step of every destructor.
   virtual void zelDoZombieReactors( bool zombie );

   PtrInterface( const PtrInterface& ) = delete;
   PtrInterface& operator=( const PtrInterface& ) = delete;

   bool hasNotificationActive() const { return word_.flag( ReferenceWord::kNotificationActive ); }
   /// Whether the last reference went and a destructor runs.
   bool zelDestroying() const { return word_.flag( ReferenceWord::kDestroying ); }
   bool zelMarkedForDeletion() const { return word_.flag( ReferenceWord::kMarkedForDeletion ); }
   void zelMarkedForDeletionIs( bool marked ) {
      word_.flagIs( ReferenceWord::kMarkedForDeletion, marked );
   }

   /// References held now; for tests and status displays.
   std::int32_t zelReferences() const { return word_.references(); }
   void zelReferenceInc() const { word_.referenceInc(); }
   void zelReferenceDec() const {
      if ( word_.referenceDec() ) [[unlikely]] {
         lastReferenceGone();
      }
   }
   void zelConstructed() { word_.constructed(); }

 protected:
   mutable ReferenceWord word_;

 private:
   // Out of line: keeps the destruction out of every place that drops a pointer.
   void lastReferenceGone() const;
};

static_assert( sizeof( void* ) != 8 || sizeof( PtrInterface ) == 16 );

}   // namespace Zel
