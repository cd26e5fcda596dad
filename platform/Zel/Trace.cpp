// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Trace.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <utility>

#include "Zel/Environment.h"
#include "Zel/Parse.h"
#include "Zel/String.h"

namespace Zel {

// Everything the process knows of tracing. Built on first use and never destroyed, for lines are
// traced from destructors that run while the process ends.
struct TraceRegistry {
   struct Setting {
      std::string handle;
      std::uint32_t mask;
   };

   std::mutex lock;   // of handles and settings; nothing foreign is called under it
   std::vector< TraceHandle* > handles;
   std::vector< Setting > settings;   // in the order given; the last that fits holds

   // Held while the sink runs, which may trace, or replace itself.
   std::recursive_mutex sinkLock;
   TraceSink sink;

   static TraceRegistry& instance();

   // The setting that holds for the handle; null when none names it.
   const Setting* settingOf( const TraceHandle& handle ) const {
      for ( auto setting = settings.rbegin(); setting != settings.rend(); ++setting ) {
         if ( setting->handle == "*" || setting->handle == handle.name_ ) {
            return &*setting;
         }
      }
      return nullptr;
   }

   void settingsAdd( std::vector< Setting > more ) {
      settings.reserve( settings.size() + more.size() );
      // What they replace goes, so that an agent may change levels for ever.
      for ( const Setting& setting : more ) {
         std::erase_if( settings, [ & ]( const Setting& old ) {
            return setting.handle == "*" || old.handle == setting.handle;
         } );
      }
      settings.insert( settings.end(), std::make_move_iterator( more.begin() ),
                       std::make_move_iterator( more.end() ) );
      for ( TraceHandle* handle : handles ) {
         if ( const Setting* setting = settingOf( *handle ) ) {
            handle->mask_.store( setting->mask, std::memory_order_relaxed );
         }
      }
   }
};

namespace {

constexpr unsigned kHighestLevel = 31;

unsigned
parseLevel( StringIterator& current, StringIterator end ) {
   return static_cast< unsigned >( parseUnsigned( current, end, kHighestLevel ) );
}

std::uint32_t
levelsFromTo( unsigned from, unsigned to ) {
   std::uint32_t mask = 0;
   for ( unsigned level = from; level <= to; ++level ) {
      mask |= 1u << level;
   }
   return mask;
}

// "1,9", "5-7", "*", or nothing
std::uint32_t
parseLevels( StringIterator& current, StringIterator end ) {
   if ( current == end || *current == ';' ) {
      return 0;
   }
   if ( *current == '*' ) {
      ++current;
      return ~0u;
   }
   std::uint32_t mask = 0;
   while ( true ) {
      const unsigned from = parseLevel( current, end );
      unsigned to = from;
      if ( !( current == end ) && *current == '-' ) {
         ++current;
         const StringIterator second = current;
         to = parseLevel( current, end );
         if ( to < from ) {
            throw ParseException( "expected a level from " + std::to_string( from ) + " to " +
                                     std::to_string( kHighestLevel ) + ", found " +
                                     std::to_string( to ) + " at offset " +
                                     std::to_string( second.offset() ),
                                  second.offset() );
         }
      }
      mask |= levelsFromTo( from, to );
      if ( current == end || *current != ',' ) {
         return mask;
      }
      ++current;
   }
}

std::vector< TraceRegistry::Setting >
parseSettings( std::string_view list ) {
   const String text( list );
   const StringIterator end = text.end();
   std::vector< TraceRegistry::Setting > settings;
   for ( StringIterator current = text.begin(); !( current == end ); ) {
      std::string handle;
      while ( !( current == end ) && *current != '/' && *current != ';' ) {
         handle += *current;
         ++current;
      }
      if ( handle.empty() ) {
         parseLiteral( current, end, "HANDLE/LEVELS" );
      }
      parseLiteral( current, end, "/" );
      settings.push_back( { handle, parseLevels( current, end ) } );
      if ( !( current == end ) ) {
         parseLiteral( current, end, ";" );
      }
   }
   return settings;
}

void
writeToStandardError( const TraceLine& line ) {
   std::fprintf( stderr, "%s/%u %s:%d %.*s\n", line.handle, line.level, line.source, line.line,
                 static_cast< int >( line.text.size() ), line.text.data() );
}

}   // namespace

TraceRegistry&
TraceRegistry::instance() {
   static auto* registry = [] {
      auto made = std::make_unique< TraceRegistry >();
      made->sink = writeToStandardError;
      if ( const char* list = environmentVariable( "ZEL_TRACE" ) ) {
         try {
            made->settings = parseSettings( list );
         } catch ( const ParseException& error ) {
            // Nobody is there to catch it; a misspelt variable must not stop a switch agent.
            std::fprintf( stderr, "ZEL_TRACE is ignored: %s\n", error.what() );
         }
      }
      return made.release();
   }();
   return *registry;
}

TraceHandle::~TraceHandle() {
   if ( joined_.load( std::memory_order_relaxed ) ) {
      TraceRegistry& registry = TraceRegistry::instance();
      const std::lock_guard guard( registry.lock );
      std::erase( registry.handles, this );
   }
}

void
TraceHandle::join() {
   if ( joined_.load( std::memory_order_acquire ) ) {
      return;
   }
   TraceRegistry& registry = TraceRegistry::instance();
   const std::lock_guard guard( registry.lock );
   if ( !joined_.load( std::memory_order_relaxed ) ) {
      registry.handles.push_back( this );
      const TraceRegistry::Setting* setting = registry.settingOf( *this );
      mask_.store( setting ? setting->mask : allLevels_ ? ~0u : 0u, std::memory_order_relaxed );
      joined_.store( true, std::memory_order_release );
   }
}

bool
TraceHandle::enabledForSure( unsigned level ) {
   try {
      join();
   } catch ( const std::bad_alloc& ) {
      return false;   // the next use tries again
   }
   return ( mask_.load( std::memory_order_relaxed ) >> level & 1 ) != 0;
}

std::uint32_t
TraceHandle::mask() {
   join();
   return mask_.load( std::memory_order_relaxed );
}

void
TraceHandle::maskIs( std::uint32_t mask ) {
   join();
   mask_.store( mask, std::memory_order_relaxed );
}

void
traceSinkIs( TraceSink sink ) {
   TraceRegistry& registry = TraceRegistry::instance();
   const std::lock_guard guard( registry.sinkLock );
   registry.sink = sink ? std::move( sink ) : writeToStandardError;
}

void
traceEmit( const TraceLine& line ) {
   TraceRegistry& registry = TraceRegistry::instance();
   const std::lock_guard guard( registry.sinkLock );
   const TraceSink sink = registry.sink;   // a sink may replace itself
   sink( line );
}

void
traceLevelsIs( std::string_view list ) {
   auto settings = parseSettings( list );
   TraceRegistry& registry = TraceRegistry::instance();
   const std::lock_guard guard( registry.lock );
   registry.settingsAdd( std::move( settings ) );
}

std::vector< std::string >
traceHandles() {
   TraceRegistry& registry = TraceRegistry::instance();
   std::vector< std::string > names;
   {
      const std::lock_guard guard( registry.lock );
      for ( const TraceHandle* handle : registry.handles ) {
         names.emplace_back( handle->name() );
      }
   }
   std::ranges::sort( names );
   return names;
}

}   // namespace Zel
