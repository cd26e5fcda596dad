// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// A configuration file, from the start of the agent to its end, and the library's share of it:
// milliseconds.
//
// The share is measured here, from ranges in memory: records written, hooks, index, schedule,
// drain.
#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "bench/LibraryIndex.h"
#include "bench/Report.h"
#include "bench/World.h"

extern char** environ;

namespace {

using namespace Bench;

constexpr double kMillisecond = 1e6;   // nanoseconds
const std::string kSamples = BENCH_SAMPLES;

/// One run of the agent that reads the file, applies it, drains and reports to nobody.
void
runAgent( const std::string& file ) {
   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   posix_spawn_file_actions_addopen( &actions, 1, "/dev/null", O_WRONLY, 0 );
   std::vector< std::string > words{ BENCH_AGENT, "show", "summary", file };
   std::vector< char* > arguments;
   for ( std::string& word : words ) {
      arguments.push_back( word.data() );
   }
   arguments.push_back( nullptr );
   pid_t child = 0;
   const int fault =
      posix_spawn( &child, BENCH_AGENT, &actions, nullptr, arguments.data(), environ );
   posix_spawn_file_actions_destroy( &actions );
   if ( fault != 0 ) {
      throw std::system_error( fault, std::generic_category(), BENCH_AGENT );
   }
   int status = 0;
   if ( waitpid( child, &status, 0 ) != child || status != 0 ) {
      throw std::runtime_error( "the agent failed on " + file );
   }
}

void
addAgentRow( const std::string& file, const std::vector< Goal >& goals ) {
   measure( { "Load: ms from file to drained", "agent, " + file, goals }, kLibrary,
            [ file ]( benchmark::State& state ) {
               return nanosecondsPerOperation( state,
                                               [ & ] {
                                                  return [ & ] {
                                                     runAgent( kSamples + "/" + file );
                                                     return 1u;
                                                  };
                                               } ) /
                      kMillisecond;
            } );
}

/// The ranges that a sample is known to become: port, rank, low, high, size, relay VID.
std::vector< StoredRange >
expectedRanges( const std::string& file ) {
   std::ifstream table( kSamples + "/" + file );
   std::map< std::string, std::uint64_t > ports;
   std::vector< StoredRange > ranges;
   for ( std::string line; std::getline( table, line ); ) {
      if ( line.starts_with( '#' ) ) {
         continue;
      }
      std::istringstream fields( line );
      std::string port;
      unsigned rank = 0;
      unsigned size = 0;
      Vid low = 0;
      Vid high = 0;
      Vid relay = 0;
      if ( !( fields >> port >> rank >> low >> high >> size >> relay ) ) {
         throw std::runtime_error( file + ": cannot be read: " + line );
      }
      const auto number = ports.try_emplace( port, ports.size() + 1 ).first->second;
      ranges.push_back( { number, low, high, bitsOf( Mapping::fromRaw( relay ) ) } );
   }
   if ( ranges.empty() ) {
      throw std::runtime_error( file + ": no ranges there" );
   }
   std::ranges::sort( ranges );
   return ranges;
}

struct Load {
   const std::vector< StoredRange >& ranges;
   World world{};

   std::size_t operator()() {
      world.stateMachine->handleInitialized();
      for ( const StoredRange& range : ranges ) {
         for ( std::uint32_t vid = range.low; vid <= range.high; ++vid ) {
            world.acsd->ingressConfigDir()->configIs(
               Mox::MoxVlanMappingConfig( { Corvel::IntfId( range.intf ), Bridging::VlanId( vid ) },
                                          std::bit_cast< Mapping >( range.mapping ) ) );
         }
      }
      world.scheduler->runUntilIdle();
      return 1;
   }
};

void
addLibraryRow( const std::string& file, double limit ) {
   const std::vector< StoredRange > ranges = expectedRanges( file );
   Load load{ ranges };
   load();
   if ( rangesOf( *load.world.ranges ) != ranges || load.world.codef->handed == 0 ) {
      throw std::runtime_error( file + ": the library made other ranges of it" );
   }
   measure(
      { "Load: ms from file to drained", "the library's share, " + file, { atMost( limit ) } },
      kLibrary, [ ranges ]( benchmark::State& state ) {
         return nanosecondsPerOperation( state, [ & ] { return Load{ ranges }; } ) / kMillisecond;
      } );
}

}   // namespace

void
Bench::addRows() {
   addAgentRow( "switch-52port.json", { atMost( 150 ) } );
   addAgentRow( "small-ieee.json", {} );
   addLibraryRow( "expected-52port.tsv", 15 );
}
