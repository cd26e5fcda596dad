// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Trace: lines of text by handle and level.
//
// A source has one TraceHandle, a constant-initialised object that joins the process's registry
// when it is first used. Level n is bit n of its mask. A disabled line costs one load and one bit
// test; nothing of it is evaluated. An enabled line goes to the process's one sink.
//
// Failure    A line that cannot be made or written (no memory, a sink that throws) is left out, so
//            that nothing is kept from its end by its trace.
// Levels     Set by traceLevelsIs(), or at start by the environment variable ZEL_TRACE; both also
//            hold for handles that are first used later. Form: HANDLE/LEVELS, several separated
//            by ";" - "MoxVlanRangeMgr/1,9;MoxVlanMappingScaleSm/5", levels 0 to 31, "5-7" for a
//            span, "*" for all, nothing for none; "*" as handle means every handle.
// Threads    Any. The sink is called on the tracing thread, for one line at a time, so it needs no
//            lock of its own and must not wait for a thread that traces. Whoever replaces the sink
//            waits for a line that is being written: the old one is not called any more behind it.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Export.h"

namespace Zel {

class ZEL_EXPORT TraceHandle {
 public:
   /// `name` lives as long as the process. `allLevels` says whether every level starts enabled.
   constexpr TraceHandle( const char* name, bool allLevels )
       : name_( name ), allLevels_( allLevels ) {}
   ~TraceHandle();
   TraceHandle( const TraceHandle& ) = delete;
   TraceHandle& operator=( const TraceHandle& ) = delete;

   const char* name() const { return name_; }

   bool enabled( unsigned level ) {
      return ( mask_.load( std::memory_order_relaxed ) >> level & 1 ) != 0 &&
             enabledForSure( level );
   }

   /// Whether any level is enabled: whether somebody reads along.
   bool anyEnabled() { return mask_.load( std::memory_order_relaxed ) != 0 && mask() != 0; }

   /// Bit n enables level n.
   std::uint32_t mask();
   void maskIs( std::uint32_t mask );

 private:
   friend struct TraceRegistry;
   bool enabledForSure( unsigned level );
   void join();

   const char* const name_;
   const bool allLevels_;
   std::atomic< bool > joined_ = false;
   // Until the handle has joined the registry every level seems enabled, so that its first use
   // comes by enabledForSure() without a second test on the way of the later ones.
   std::atomic< std::uint32_t > mask_{ ~0u };
};

struct TraceLine {
   const char* handle;
   unsigned level;
   const char* source;   ///< source tag, such as "MoxVlanMapping/MoxVlanRangeMgr"
   int line;
   const char* function;
   std::string_view text;   ///< the pieces, joined
};

using TraceSink = std::function< void( const TraceLine& ) >;

/// Where lines go; an empty function restores the default, which writes
/// "HANDLE/LEVEL SOURCE:LINE TEXT" to standard error.
ZEL_EXPORT void traceSinkIs( TraceSink sink );
ZEL_EXPORT void traceEmit( const TraceLine& line );

/// Applies a list of HANDLE/LEVELS; each named handle gets exactly the levels listed for it.
/// Throws ParseException, with nothing applied, when the list is not of the form above.
ZEL_EXPORT void traceLevelsIs( std::string_view list );

/// Names of the handles that were used so far, sorted.
ZEL_EXPORT std::vector< std::string > traceHandles();

/// The pieces of a line, written one after the other by their own operator<<. Cold: its code stays
/// out of the functions that trace.
template < class... Pieces >
[[gnu::cold, gnu::noinline]] std::string
traceText( const Pieces&... pieces ) {
   std::ostringstream text;
   text << std::boolalpha;
   ( text << ... << pieces );
   return text.str();
}

/// Emits the line whose text `make()` returns, or leaves it out when that fails.
template < class Make >
[[gnu::cold, gnu::noinline]] void
traceLine( const TraceHandle& handle, unsigned level, const char* source, int line,
           const char* function, const Make& make ) noexcept {
   try {
      const auto text = make();
      traceEmit( { handle.name(), level, source, line, function, text } );
   } catch ( ... ) {
      // Left out.
   }
}

}   // namespace Zel

/// Traces the pieces that follow the line number when `level` is enabled on `handle`. Requires a
/// constant `zelSourceTag` in scope. A macro, because a function's arguments are always evaluated.
#define ZEL_TRACE( handle, level, sourceLine, ... )                                                \
   do {                                                                                            \
      if ( ( handle ).enabled( level ) ) [[unlikely]] {                                            \
         ::Zel::traceLine( handle, level, zelSourceTag, sourceLine, __func__,                      \
                           [ & ] { return ::Zel::traceText( __VA_ARGS__ ); } );                    \
      }                                                                                            \
   } while ( false )
