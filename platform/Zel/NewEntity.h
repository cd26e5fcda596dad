// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// newEntity: the one way in which entities, nodes and notifiees come into being.
//
// Tracks the allocation under T::zelTypeName, takes the memory from the type's slab, constructs,
// and switches notification on. If the constructor throws, all of it is undone and the exception
// passes on. When the last reference goes, the memory returns to the slab and the tracker's
// count goes down.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "Zel/AllocationTracker.h"
#include "Zel/Ptr.h"
#include "Zel/Slab.h"

namespace Zel {

/// A T that knows where its memory came from. Adds nothing to T but its operators new and
/// delete; the virtual destructor finds the right delete through the object's own vtable.
template < class T >
class Allocated final : public T {
 public:
   template < class... Args >
   explicit Allocated( Args&&... args ) : T( std::forward< Args >( args )... ) {
      record().constructed();
   }

   static void* operator new( std::size_t ) {
      void* cell = slab().allocate();
      record().allocated();
      return cell;
   }
   static void operator delete( void* cell ) noexcept {
      record().released();
      slab().release( cell );
   }

 private:
   static_assert( alignof( T ) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__ );

   static Slab& slab() {
      static constinit Slab slab( sizeof( Allocated ), alignof( Allocated ) );
      return slab;
   }
   static AllocationRecord& record() {
      static constinit AllocationRecord record( T::zelTypeName, sizeof( Allocated ) );
      return record;
   }
};

template < class T, class... Args >
Ptr< T >
newEntity( Args&&... args ) {
   // By its final type: nothing is called through the vtable.
   auto* const made = new Allocated< T >( std::forward< Args >( args )... );
   Ptr< T > entity( made, adoptReference );
   made->zelConstructed();
   made->hasNotificationActiveIs( true );
   return entity;
}

}   // namespace Zel
