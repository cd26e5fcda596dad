// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Threads with directories, state machine, codef and scheduler of their own, without switch or lock.
#include <array>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <random>
#include <string>

#include <gtest/gtest.h>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "Zel/SharedCount.h"
#include "tests/support/InThreads.h"
#include "tests/support/NoneLeftTest.h"

namespace {

constexpr int kThreads = 4;
constexpr int kRounds = 4;
constexpr int kWrites = 1500;
constexpr unsigned kPorts = 3;
constexpr unsigned kVlans = 64;
constexpr unsigned kTranslations = 3;

std::string
textOf( unsigned low, unsigned high, unsigned translated ) {
   return std::to_string( low ) + "-" + std::to_string( high ) + ">" +
          std::to_string( translated ) + " ";
}

/// Keeps what it was last handed of each port, in order of the ids.
class Collector : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "WorldsThreadsTest::Collector";
   std::map< std::uint64_t, std::string > handed;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~Collector() override { zelDoZombieReactors( true ); }

   void processSortedVlanRange( Corvel::IntfId intfId ) override {
      const auto entry = vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intfId );
      std::map< unsigned, std::string > byLowest;
      for ( const auto& element : entry->vidRangeSorted() ) {
         const auto& range = element.key();
         byLowest[ range.lowVid().value() ] = textOf(
            range.lowVid().value(), range.highVid().value(), range.mapping().vlanId().value() );
      }
      std::string& all = handed[ intfId.value() ];
      all.clear();
      for ( const auto& [ lowest, text ] : byLowest ) {
         all += text;
      }
   }
};

/// All that one thread works with, and a plain table of what it wrote.
class World {
 public:
   explicit World( std::uint32_t seed ) : random_( seed ) { stateMachine_->handleInitialized(); }

   void writeAndDrain( int writes ) {
      for ( int i = 0; i < writes; ++i ) {
         write( number( kPorts ), 1 + number( kVlans ), number( kTranslations + 1 ) );
         if ( number( 50 ) == 0 ) {
            scheduler_->runUntilIdle();
         }
      }
      scheduler_->runUntilIdle();
   }

   std::string handed( unsigned port ) const { return codef_->handed[ port ]; }
   std::string expected( unsigned port ) const {
      const auto& table = tables_.at( port );
      std::string all;
      for ( unsigned vlan = 1; vlan <= kVlans; ++vlan ) {
         const unsigned low = vlan;
         while ( vlan < kVlans && table.at( vlan + 1 ) == table.at( low ) ) {
            ++vlan;
         }
         all += table.at( low ) == 0 ? "" : textOf( low, vlan, table.at( low ) );
      }
      return all;
   }

 private:
   unsigned number( unsigned below ) { return static_cast< unsigned >( random_() ) % below; }

   /// Translation 0 takes the record away.
   void write( unsigned port, unsigned vlan, unsigned translated ) {
      tables_.at( port ).at( vlan ) = translated;
      const Mox::PortVlanKey key{ Corvel::IntfId( port ), Bridging::VlanId( vlan ) };
      if ( translated == 0 ) {
         acsd_->ingressConfigDir()->configDel( key );
      } else {
         acsd_->ingressConfigDir()->configIs( Mox::MoxVlanMappingConfig(
            key, Bridging::VlanXlateMapping( Bridging::VlanIdOrNone( translated ) ) ) );
      }
   }

   const Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   const Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   const Zel::Ptr< Quen::TaskScheduler > scheduler_ = Quen::taskSchedulerFactory( clock_ );
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > ranges_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > schedule_ =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > stateMachine_ =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd_, clock_, nullptr, nullptr, ranges_,
                                                      schedule_ );
   const Zel::Ptr< Collector > codef_ =
      Zel::newEntity< Collector >( acsd_, scheduler_, ranges_, schedule_ );
   std::mt19937 random_;
   std::array< std::array< unsigned, kVlans + 1 >, kPorts > tables_{};
};

std::string
differences( const World& world ) {
   std::string all;
   for ( unsigned port = 0; port < kPorts; ++port ) {
      if ( world.handed( port ) != world.expected( port ) ) {
         all += "port " + std::to_string( port ) + " has " + world.handed( port ) + "and not " +
                world.expected( port ) + "\n";
      }
   }
   return all;
}

using WorldsThreadsTest = TestSupport::NoneLeftTest;

TEST_F( WorldsThreadsTest, ThreadsThatShareNothingNeedNoSwitch ) {
   ASSERT_FALSE( Zel::threadSafePtr() );
   std::array< std::string, kThreads > found;
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      for ( int round = 0; round < kRounds; ++round ) {
         World world( static_cast< std::uint32_t >( 1 + thread * kRounds + round ) );
         world.writeAndDrain( kWrites );
         found.at( static_cast< std::size_t >( thread ) ) += differences( world );
      }
   } );
   for ( const std::string& each : found ) {
      EXPECT_EQ( each, "" );
   }
}

TEST_F( WorldsThreadsTest, AWorldMayBeHandedOnFromThreadToThread ) {
   std::array< std::unique_ptr< World >, kThreads > worlds;
   for ( std::uint32_t seed = 1; auto& world : worlds ) {
      world = std::make_unique< World >( seed++ );
      world->writeAndDrain( kWrites );
   }
   std::array< std::string, kThreads > found;
   for ( const std::size_t shift : { 0u, 1u } ) {
      TestSupport::inThreads( kThreads, [ & ]( int thread ) {
         const auto mine = ( static_cast< std::size_t >( thread ) + shift ) % kThreads;
         worlds.at( mine )->writeAndDrain( kWrites );
         found.at( mine ) += differences( *worlds.at( mine ) );
      } );
   }
   // Each goes in a thread that did not make it, beside one that makes a new one.
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      worlds.at( static_cast< std::size_t >( thread ) ) =
         std::make_unique< World >( static_cast< std::uint32_t >( 100 + thread ) );
   } );
   for ( const std::string& each : found ) {
      EXPECT_EQ( each, "" );
   }
}

}   // namespace
