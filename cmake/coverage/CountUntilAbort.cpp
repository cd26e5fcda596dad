// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// CountUntilAbort: keeps the line counts of a process that ends in abort().
//
// Only in coverage builds. The counts are written when a process exits; one that a failed
// assertion aborts does not get there, and the lines that death tests run would look untested.
// Each shared library counts for itself, so each carries a copy of this file, and a handler
// passes the signal on to the one installed before it.
#include <csignal>

extern "C" void __gcov_dump( void );

namespace {

struct sigaction previous;

void
dumpAndPassOn( int signal ) {
   __gcov_dump();
   sigaction( SIGABRT, &previous, nullptr );
   raise( signal );
}

struct Installer {
   Installer() {
      struct sigaction action {};
      action.sa_handler = dumpAndPassOn;
      action.sa_flags = SA_NODEFER;
      sigaction( SIGABRT, &action, &previous );
   }
} const installer;

}   // namespace
