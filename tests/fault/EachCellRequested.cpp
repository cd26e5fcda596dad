// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Takes the place of the slabs of this program: each cell is a request to operator new of its own,
// which a test can refuse, and a block that it misses when it is lost.
#include <new>

#include "Zel/Slab.h"
#include "tests/support/PrivateMember.h"

namespace TestSupport {

struct SlabCellSize {
   friend auto privateMember( SlabCellSize );
};
template struct PrivateMember< SlabCellSize, &Zel::Slab::cellSize_ >;

}   // namespace TestSupport

// A member function's first argument is its object.
void* cellAllocate( Zel::Slab* slab ) __asm__( "__wrap__ZN3Zel4Slab8allocateEv" );
void cellRelease( Zel::Slab* slab, void* cell ) noexcept
   __asm__( "__wrap__ZN3Zel4Slab7releaseEPv" );

void*
cellAllocate( Zel::Slab* slab ) {
   return ::operator new( slab->*privateMember( TestSupport::SlabCellSize() ) );
}

void
cellRelease( Zel::Slab*, void* cell ) noexcept {
   ::operator delete( cell );
}
