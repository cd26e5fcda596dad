// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Assert.h"

#include <cstdio>
#include <cstdlib>

namespace Zel {

void
assertFail( const char* expression, const char* source, int line, const char* function ) noexcept {
   std::fprintf( stderr, "%s:%d: %s: Assertion `%s' failed.\n", source, line, function,
                 expression );
   std::abort();
}

}   // namespace Zel
