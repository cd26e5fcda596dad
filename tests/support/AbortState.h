// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// AbortState: shows in a death test what had been changed when an assertion ended the process.
//
//   EXPECT_DEATH( { printOnAbort( [ & ] { return rangesText( entry ); } ); act(); }, ... );
//
// The text is printed as "state at abort: TEXT" behind the assertion's own line.
#pragma once

#include <csignal>
#include <cstdio>
#include <functional>
#include <string>
#include <utility>

namespace TestSupport {

namespace Detail {

inline std::function< std::string() > abortText;
inline struct sigaction abortPrevious;

inline void
printAndPassOn( int signal ) {
   std::fprintf( stderr, "state at abort: %s\n", abortText().c_str() );
   sigaction( SIGABRT, &abortPrevious, nullptr );
   raise( signal );
}

}   // namespace Detail

/// To be called in the process that is going to die. The signal comes from raise() on the
/// process's one thread, between two statements, so the text may be made in the handler.
inline void
printOnAbort( std::function< std::string() > text ) {
   Detail::abortText = std::move( text );
   struct sigaction action {};
   action.sa_handler = Detail::printAndPassOn;
   action.sa_flags = SA_NODEFER;
   sigaction( SIGABRT, &action, &Detail::abortPrevious );
}

}   // namespace TestSupport
