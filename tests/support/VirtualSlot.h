// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VirtualSlot: the place of a virtual function in its class's table.
//
// The Itanium C++ ABI stores 1 plus the byte offset into the table in the first word of a pointer
// to a virtual member function; its variant for ARM stores the offset there and sets the lowest
// bit of the second word. A virtual destructor takes two places and has no such pointer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace TestSupport {

/// -1 for a function that is not virtual.
template < class MemberFunction >
std::ptrdiff_t
virtualSlot( MemberFunction function ) {
   static_assert( sizeof function == 2 * sizeof( std::intptr_t ) );
   std::intptr_t words[ 2 ];
   std::memcpy( words, &function, sizeof words );
   constexpr auto kEntry = static_cast< std::intptr_t >( sizeof( void* ) );
#if defined( __aarch64__ ) || defined( __arm__ )
   const bool isVirtual = words[ 1 ] % 2 != 0;
#else
   const bool isVirtual = words[ 0 ] % kEntry == 1;
#endif
   return isVirtual ? words[ 0 ] / kEntry : -1;
}

}   // namespace TestSupport
