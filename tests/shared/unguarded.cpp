// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// A program that could use every guard; built without any, it shows that their check can fail.
#include <array>
#include <cstddef>
#include <cstdio>

int
main( int count, char** words ) {
   std::array< char, 16 > text{};
   std::snprintf( text.data(), static_cast< std::size_t >( count ), "%s", words[ 0 ] );
   return text[ static_cast< std::size_t >( count ) ];
}
