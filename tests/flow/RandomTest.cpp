// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// Random configurations and scripts against what brute force makes of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "tests/flow/Script.h"
#include "tests/support/TestSeed.h"

namespace FlowTest {
namespace {

using nlohmann::json;

constexpr unsigned kLowestVlan = 1;
constexpr unsigned kHighestVlan = 4094;

// One port: VLAN to relay.
using Table = std::map< unsigned, unsigned >;

struct Range {
   unsigned low;
   unsigned high;
   unsigned relay;
};

// Maximal runs, ascending. Asks for every VLAN there is, one by one.
std::vector< Range >
rangesOf( const Table& table ) {
   std::vector< Range > ranges;
   unsigned before = 0;   // the relay of the VLAN below; 0 for none
   for ( unsigned vlan = kLowestVlan; vlan <= kHighestVlan; ++vlan ) {
      const auto entry = table.find( vlan );
      const unsigned relay = entry == table.end() ? 0 : entry->second;
      if ( relay != 0 && relay == before ) {
         ranges.back().high = vlan;
      } else if ( relay != 0 ) {
         ranges.push_back( { vlan, vlan, relay } );
      }
      before = relay;
   }
   return ranges;
}

std::vector< Range >
bySize( std::vector< Range > ranges ) {
   std::ranges::sort( ranges, {}, []( const Range& range ) {
      return std::tuple( kHighestVlan - ( range.high - range.low ), range.low );
   } );
   return ranges;
}

json
triples( const std::vector< Range >& ranges ) {
   json list = json::array();
   for ( const Range& range : ranges ) {
      list.push_back( { range.low, range.high, range.relay } );
   }
   return list;
}

json
startsOf( const Table& table ) {
   json starts = json::array();
   for ( const Range& range : rangesOf( table ) ) {
      starts.insert( starts.begin(), range.low );
   }
   return starts;
}

// The VLANs of all ranges but the `entries` largest.
json
exactOf( const Table& table, std::size_t entries ) {
   std::vector< unsigned > vlans;
   const std::vector< Range > ranges = bySize( rangesOf( table ) );
   for ( std::size_t rank = entries; rank < ranges.size(); ++rank ) {
      for ( unsigned vlan = ranges[ rank ].low; vlan <= ranges[ rank ].high; ++vlan ) {
         vlans.push_back( vlan );
      }
   }
   std::ranges::sort( vlans );
   return vlans;
}

class Dice {
 public:
   explicit Dice( std::uint64_t seed ) : engine_( seed ) {}
   // lowest..highest
   unsigned roll( unsigned lowest, unsigned highest ) {
      return std::uniform_int_distribution< unsigned >( lowest, highest )( engine_ );
   }
   // Near either end of the VLANs, so that ranges meet, split and touch the ends.
   unsigned vlan( unsigned width ) {
      return roll( 0, 1 ) == 0 ? roll( kLowestVlan, width )
                               : roll( kHighestVlan - width + 1, kHighestVlan );
   }
   // Few, so that neighbours often agree.
   unsigned relay() { return std::vector{ 1u, 2u, 3001u, 4094u }[ roll( 0, 3 ) ]; }

 private:
   std::mt19937_64 engine_;
};

// An IEEE configuration with entries in random order.
std::string
configurationOf( const std::map< std::string, Table >& ports, Dice& dice ) {
   json interfaces = json::array();
   for ( const auto& [ name, table ] : ports ) {
      std::vector< json > entries;
      for ( const auto& [ vlan, relay ] : table ) {
         entries.insert( entries.begin() +
                            dice.roll( 0, static_cast< unsigned >( entries.size() ) ),
                         json{ { "local-vid", vlan }, { "relay-vid", relay } } );
      }
      interfaces.push_back( { { "name", name },
                              { "type", "iana-if-type:ethernetCsmacd" },
                              { "ieee802-dot1q-bridge:bridge-port",
                                { { "bridge-name", "b" },
                                  { "component-name", "c" },
                                  { "enable-vid-translation-table", true },
                                  { "enable-egress-vid-translation-table", true },
                                  { "vid-translations", entries } } } } );
   }
   const json component{ { "name", "c" }, { "type", "s-vlan-component" } };
   const json bridge{ { "name", "b" },
                      { "address", "00-00-5E-00-53-01" },
                      { "bridge-type", "provider-bridge" },
                      { "component", json::array( { component } ) } };
   return json{ { "ieee802-dot1q-bridge:bridges", { { "bridge", json::array( { bridge } ) } } },
                { "ietf-interfaces:interfaces", { { "interface", interfaces } } } }
      .dump( 1 );
}

TEST( AgentRandom, configurationsBecomeTheRangesOfBruteForce ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   Dice dice( seed );
   for ( int round = 0; round < 40; ++round ) {
      std::map< std::string, Table > ports;
      for ( unsigned port = dice.roll( 1, 4 ); port > 0; --port ) {
         Table& table = ports[ "eth" + std::to_string( port ) ];
         const unsigned width = dice.roll( 1, 4 ) == 1 ? kHighestVlan : 60;
         for ( unsigned count = dice.roll( 0, 150 ); count > 0; --count ) {
            table[ dice.vlan( width ) ] = dice.relay();
         }
      }
      const unsigned entries = dice.roll( 0, 10 );
      json expected = json::object();
      for ( const auto& [ name, table ] : ports ) {
         json& list = expected[ name ] = json::array();
         unsigned rank = 0;
         for ( const Range& range : bySize( rangesOf( table ) ) ) {
            ++rank;
            list.push_back( { { "low", range.low },
                              { "high", range.high },
                              { "relay", range.relay },
                              { "ids", range.high - range.low + 1 },
                              { "rank", rank },
                              { "rangeEntry", rank <= entries ? json( rank ) : json() } } );
         }
      }
      const Outcome outcome = runAgent(
         { "show", "ranges", "--json", "--range-entries", std::to_string( entries ), "-" },
         configurationOf( ports, dice ) );
      ASSERT_EQ( outcome.text(), exited( 0, expected.dump( 2 ) + "\n", "" ) ) << "round " << round;
   }
}

// What a script should come to, followed event by event.
class Model {
 public:
   explicit Model( std::size_t entries ) : entries_( entries ) {}

   void set( const std::string& port, unsigned vlan, unsigned relay ) {
      const auto [ entry, isNew ] = tables_[ port ].try_emplace( vlan, relay );
      if ( isNew || entry->second != relay ) {
         entry->second = relay;
         schedule( port );
      }
   }
   void del( const std::string& port, unsigned vlan ) {
      const auto table = tables_.find( port );
      if ( table != tables_.end() && table->second.erase( vlan ) != 0 ) {
         schedule( port );
      }
   }
   void schedule( const std::string& port ) {
      runnable_ = true;
      if ( std::ranges::find( waiting_, port ) == waiting_.end() ) {
         waiting_.push_back( port );
      }
   }
   // One step under the policy "always": the first that waits, or the end of the work.
   void step() {
      if ( !runnable_ ) {
         return;
      }
      if ( waiting_.empty() ) {
         ++completed_;
         runnable_ = false;
         return;
      }
      const std::string port = waiting_.front();
      waiting_.erase( waiting_.begin() );
      handed_.push_back( port );
      ++work_;
      sorted_[ port ] = tables_[ port ];
      pending_ = waiting_.size();
   }
   void run() {
      while ( runnable_ ) {
         step();
      }
   }
   // The line that "state" prints.
   std::string state() {
      json ports = json::object();
      for ( const auto& [ port, table ] : tables_ ) {
         const auto sorted = sorted_.find( port );
         const bool isSorted = sorted != sorted_.end();
         ports[ port ] = {
            { "exact", isSorted ? exactOf( sorted->second, entries_ ) : json::array() },
            { "ranges", triples( rangesOf( table ) ) },
            { "sorted", isSorted ? triples( bySize( rangesOf( sorted->second ) ) ) : json() },
            { "starts", startsOf( table ) } };
      }
      const json line{
         { "codef", { { "completed", completed_ }, { "handed", handed_ } } },
         { "ports", ports },
         { "schedule", waiting_ },
         { "status", json::array() },
         { "task", { { "pending", pending_ }, { "scheduled", runnable_ }, { "work", work_ } } } };
      completed_ = 0;
      handed_.clear();
      return line.dump() + "\n";
   }

 private:
   const std::size_t entries_;
   std::map< std::string, Table > tables_;   // every port that ever had an entry
   std::map< std::string, Table > sorted_;   // as each was when it was last handed over
   std::vector< std::string > waiting_;
   std::vector< std::string > handed_;
   bool runnable_ = true;
   std::size_t pending_ = 0;
   unsigned work_ = 0;
   unsigned completed_ = 0;
};

TEST( AgentRandom, scriptsComeToTheStateOfBruteForce ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   Dice dice( seed + 1 );
   for ( int round = 0; round < 40; ++round ) {
      const unsigned entries = dice.roll( 0, 6 );
      const unsigned width = dice.roll( 2, 30 );
      Model model( entries );
      Script script;
      std::string expected;
      script.yield( "always" );
      for ( unsigned event = dice.roll( 50, 400 ); event > 0; --event ) {
         const std::string port = "eth" + std::to_string( dice.roll( 1, 4 ) );
         const unsigned vlan = dice.vlan( width );
         const unsigned kind = dice.roll( 1, 100 );
         if ( kind <= 55 ) {
            const unsigned relay = dice.relay();
            script.op( "ingress-set", port, vlan, relay );
            model.set( port, vlan, relay );
         } else if ( kind <= 85 ) {
            script.op( "ingress-del", port, vlan );
            model.del( port, vlan );
         } else if ( kind <= 92 ) {
            script.op( "step" );
            model.step();
         } else if ( kind <= 95 ) {
            script.op( "run" );
            model.run();
         } else {
            script.op( "state" );
            expected += model.state();
         }
      }
      script.op( "run" ).op( "state" );
      model.run();
      expected += model.state();
      ASSERT_EQ( script.replay( std::to_string( entries ) ).text(), exited( 0, expected, "" ) )
         << "round " << round << ", script:\n"
         << script.text();
   }
}

}   // namespace
}   // namespace FlowTest
