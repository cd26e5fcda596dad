// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// newEntity: the one way in which entities, nodes and notifiees come into being.
//
// Takes the memory from the type's slab, which counts it under T::zelTypeName, constructs, and
// switches notification on. If the constructor throws, all of it is undone and the exception
// passes on. When the last reference goes, the memory returns to the slab.
//
// Threads  Any; objects of one type may be made and dropped by several at once.
#pragma once

#include <cstddef>
#include <new>
#include <utility>

#include "Zel/Ptr.h"
#include "Zel/Slab.h"

namespace Zel {

/// Says that an object is to stand in the slab of its type.
struct InSlab {};
inline constexpr InSlab inSlab{};

/// A T that knows where its memory came from. Adds nothing to T but its operators new and
/// delete; the virtual destructor finds the right delete through the object's own vtable.
template < class T >
class Allocated final : public T {
 public:
   template < class... Args >
   explicit Allocated( Args&&... args ) : T( std::forward< Args >( args )... ) {}

   static void* operator new( std::size_t, InSlab ) { return slab().allocate(); }
   static void operator delete( void* cell ) noexcept { slab().release( cell ); }
   /// What the language calls for the operator new above when the constructor throws.
   static void operator delete( void* cell, InSlab ) noexcept { slab().abandon( cell ); }

 private:
   static_assert( alignof( T ) <= __STDCPP_DEFAULT_NEW_ALIGNMENT__ );

   static Slab& slab() {
      static constinit Slab slab( T::zelTypeName, sizeof( Allocated ) );
      return slab;
   }
};

template < class T, class... Args >
Ptr< T >
newEntity( Args&&... args ) {
   // By its final type: nothing is called through the vtable.
   auto* const made = new ( inSlab ) Allocated< T >( std::forward< Args >( args )... );
   Ptr< T > entity( made, adoptReference );
   made->zelConstructed();
   made->hasNotificationActiveIs( true );
   return entity;
}

}   // namespace Zel
