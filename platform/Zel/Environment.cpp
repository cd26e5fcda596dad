// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Environment.h"

#include <cstdlib>

#include <unistd.h>

namespace Zel {

const char*
environmentVariable( const char* name ) {
#ifdef __linux__
   return secure_getenv( name );
#else
   // POSIX knows ids, but neither capabilities nor rights that were given back since the start.
   return getuid() == geteuid() && getgid() == getegid() ? std::getenv( name ) : nullptr;
#endif
}

}   // namespace Zel
