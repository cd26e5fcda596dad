// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Fuzz: what the fuzz targets share. Each is a function from bytes to "nothing is wrong".
//
// A target calls require() for what must hold whatever the input is, and lets nothing but the
// declared exceptions be caught. With MOX_FUZZ_PLANT in the environment it damages one result
// before it checks it, in a rare case that no file of its corpus holds: whether the driver then
// comes to a finding shows that the target can fail.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Fuzz {

/// Prints what is wrong and ends the process; the driver keeps the input.
[[noreturn]] inline void
finding( const std::string& what ) {
   std::fprintf( stderr, "finding: %s\n", what.c_str() );
   std::abort();
}

inline void
require( bool holds, const char* what ) {
   if ( !holds ) {
      finding( what );
   }
}

inline bool
planted() {
   static const bool set = std::getenv( "MOX_FUZZ_PLANT" ) != nullptr;
   return set;
}

}   // namespace Fuzz
