// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// A configuration file, from the start of the agent to its end, and the library's share of it:
// milliseconds; and the memory that another mapping takes: bytes.
//
// The share is measured here, from ranges in memory: records written, hooks, index, schedule,
// drain.
#include <fcntl.h>
#include <spawn.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <filesystem>
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
constexpr unsigned kVids = 4094;

/// One run of the agent that tells nobody; yields the most memory that it had, in bytes.
double
runAgent( const std::vector< std::string >& command, const std::string& file ) {
   posix_spawn_file_actions_t actions;
   posix_spawn_file_actions_init( &actions );
   for ( const int output : { 1, 2 } ) {
      posix_spawn_file_actions_addopen( &actions, output, "/dev/null", O_WRONLY, 0 );
   }
   std::vector< std::string > words{ BENCH_AGENT };
   words.insert( words.end(), command.begin(), command.end() );
   words.push_back( file );
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
   rusage usage{};
   if ( wait4( child, &status, 0, &usage ) != child || status != 0 ) {
      throw std::runtime_error( "the agent failed on " + file );
   }
   return 1024.0 * static_cast< double >( usage.ru_maxrss );
}

void
addAgentRow( const std::string& file, const std::vector< Goal >& goals ) {
   measure( { "Load: ms from file to drained", "agent, " + file, goals }, kLibrary,
            [ file ]( benchmark::State& state ) {
               return nanosecondsPerOperation(
                         state,
                         [ & ] {
                            return [ & ] {
                               runAgent( { "show", "summary" }, kSamples + "/" + file );
                               return 1u;
                            };
                         } ) /
                      kMillisecond;
            } );
}

/// Every VID of each port to one relay VID, as one range.
std::string
rangesText( unsigned ports ) {
   std::ostringstream text;
   text << R"({"openconfig-interfaces:interfaces":{"interface":[)";
   for ( unsigned port = 0; port < ports; ++port ) {
      text << ( port == 0 ? "" : "," ) << R"({"name":"p)" << port << R"(","config":{"name":"p)"
           << port << R"(","type":"iana-if-type:ethernetCsmacd"},"subinterfaces":{"subinterface":[)"
           << R"({"index":1,"config":{"index":1},"openconfig-vlan:vlan":{"match":)"
           << R"({"single-tagged-range":{"config":{"low-vlan-id":1,"high-vlan-id":4094}}},)"
           << R"("ingress-mapping":{"config":{"vlan-stack-action":"SWAP","vlan-id":7}}}}]}})";
   }
   text << "]}}";
   return text.str();
}

/// Every VID of each port to one of its own, both ways.
std::string
tablesText( unsigned ports ) {
   std::ostringstream text;
   text << R"({"ieee802-dot1q-bridge:bridges":{"bridge":[{"name":"b","address":)"
        << R"("00-00-5E-00-53-01","bridge-type":"provider-bridge","component":[{"name":"c",)"
        << R"("type":"s-vlan-component"}]}]},"ietf-interfaces:interfaces":{"interface":[)";
   for ( unsigned port = 0; port < ports; ++port ) {
      text << ( port == 0 ? "" : "," ) << R"({"name":"p)" << port
           << R"(","type":"iana-if-type:ethernetCsmacd","ieee802-dot1q-bridge:bridge-port":)"
           << R"({"bridge-name":"b","component-name":"c","enable-vid-translation-table":true,)"
           << R"("vid-translations":[)";
      for ( unsigned vid = 1; vid <= kVids; ++vid ) {
         text << ( vid == 1 ? "" : "," ) << R"({"local-vid":)" << vid << R"(,"relay-vid":)"
              << vid * 2 % ( kVids + 1 ) << '}';
      }
      text << "]}}";
   }
   text << "]}}";
   return text.str();
}

/// What one more mapping takes, from two numbers of ports. With the smaller one the agent has to need
/// more memory than this process, which the system counts as the child's own until it is the agent.
void
addMemoryRow( const std::string& command, const std::string& what,
              std::string ( *text )( unsigned ports ), unsigned few, unsigned many ) {
   measureOnce( { "Load: bytes per mapping, at most", command + ", " + what, {} }, kLibrary, [ = ] {
      const std::string file = std::filesystem::temp_directory_path() /
                               ( "load-bench-" + std::to_string( getpid() ) + ".json" );
      const auto bytes = [ & ]( unsigned ports ) {
         std::ofstream( file ) << text( ports );
         const double most = runAgent( { command }, file );
         std::filesystem::remove( file );
         return most;
      };
      return tinyRun() ? bytes( 1 ) : ( bytes( many ) - bytes( few ) ) / ( ( many - few ) * kVids );
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
   addMemoryRow( "check", "a range of all ids for each port", rangesText, 512, 1024 );
   addMemoryRow( "check", "a table of own mappings for each port", tablesText, 32, 96 );
   addMemoryRow( "run", "a range of all ids for each port", rangesText, 32, 96 );
   addMemoryRow( "run", "a table of own mappings for each port", tablesText, 32, 96 );
}
