// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The road from configuration to sorted ranges against a table of every VLAN id of every port.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <tuple>
#include <vector>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;

constexpr std::uint64_t kPorts = 4;

struct Range {
   std::uint16_t low;
   std::uint16_t high;
   std::uint16_t relay;
   friend bool operator==( const Range&, const Range& ) = default;
};

void
PrintTo( const Range& range, std::ostream* out ) {
   *out << range.low << "-" << range.high << "->" << range.relay;
}

// What each VLAN id of a port is translated to; 0: not at all.
using VlanTable = std::array< std::uint16_t, VlanId::kHighest + 2 >;

std::vector< Range >
maximalRuns( const VlanTable& table ) {
   std::vector< Range > runs;
   for ( std::uint16_t vid = VlanId::kLowest; vid <= VlanId::kHighest; ++vid ) {
      if ( table[ vid ] == 0 ) {
         continue;
      }
      if ( !runs.empty() && runs.back().high + 1 == vid && runs.back().relay == table[ vid ] ) {
         runs.back().high = vid;
      } else {
         runs.push_back( { vid, vid, table[ vid ] } );
      }
   }
   return runs;
}

std::vector< Range >
bySize( std::vector< Range > runs ) {
   std::ranges::sort( runs, {}, []( const Range& run ) {
      return std::tuple( run.low - run.high, run.low, run.relay );
   } );
   return runs;
}

Range
plain( const MoxVlanMapping::VlanRangeXlateMapping& range ) {
   return { range.lowVid().value(), range.highVid().value(), range.mapping().rawVlanId() };
}

class CountingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr const char* zelTypeName = "CountingCodef";
   void processSortedVlanRange( IntfId intfId ) override { ++handed[ intfId.value() ]; }
   std::map< std::uint64_t, int > handed;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~CountingCodef() override { zelDoZombieReactors( true ); }
};

class RangeModelTest : public TestSupport::NoneLeftTest {
 protected:
   // Ids near each other and near the ends, so that neighbours meet often.
   std::uint16_t anyVid() {
      static constexpr std::array< std::uint16_t, 3 > kFirst{ 1, 2000, 4060 };
      return static_cast< std::uint16_t >( kFirst[ any( 3 ) ] + any( 35 ) );
   }
   std::uint64_t any( std::uint64_t below ) { return random_() % below; }

   void expectIndex( std::uint64_t port ) {
      const auto entry = rangeDir_->vlanRangeEntryIs( IntfId( port ) );
      const std::vector< Range > runs = maximalRuns( model_[ port ] );
      std::vector< Range > stored;
      for ( const auto& element : entry->vlanIdRange() ) {
         ASSERT_EQ( element.key(), element.value().lowVid() );
         stored.push_back( plain( element.value() ) );
      }
      ASSERT_EQ( stored, runs );
      std::vector< std::uint16_t > starts;
      for ( const auto& element : entry->revSortedStartVid() ) {
         ASSERT_TRUE( element.value() );
         starts.push_back( element.key().value() );
      }
      std::vector< std::uint16_t > lows;
      std::ranges::transform( runs, std::back_inserter( lows ), &Range::low );
      std::ranges::reverse( lows );
      ASSERT_EQ( starts, lows );
      entry->vlanIdRange().verify();
      entry->revSortedStartVid().verify();
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   std::array< VlanTable, kPorts > model_{};
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
};

TEST_F( RangeModelTest, TheIndexHoldsTheMaximalRunsAfterEveryAddAndDelete ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   for ( int step = 0; step < 20000; ++step ) {
      const std::uint64_t port = any( kPorts );
      const std::uint16_t vid = anyVid();
      const auto relay = static_cast< std::uint16_t >( any( 3 ) );
      std::uint16_t& modelled = model_[ port ][ vid ];
      if ( modelled != relay ) {
         mgr->deleteVlanFromIdx( IntfId( port ), VlanId( vid ) );
      }
      if ( relay != 0 ) {
         mgr->addVlanToIdx( IntfId( port ), VlanId( vid ), VlanXlateMapping::fromRaw( relay ) );
      }
      modelled = relay;
      ASSERT_NO_FATAL_FAILURE( expectIndex( port ) ) << "step " << step;
   }
}

TEST_F( RangeModelTest, TheBoundTestsAnswerLikeTheTable ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   const IntfId port( 0 );
   VlanTable& table = model_[ 0 ];
   for ( int step = 0; step < 20000; ++step ) {
      const VlanId changed( anyVid() );
      table[ changed.value() ] = static_cast< std::uint16_t >( any( 3 ) );
      mgr->deleteVlanFromIdx( port, changed );
      if ( const std::uint16_t relay = table[ changed.value() ] ) {
         mgr->addVlanToIdx( port, changed, VlanXlateMapping::fromRaw( relay ) );
      }
      const VlanId vid( anyVid() );
      const std::uint16_t held = table[ vid.value() ];
      const bool starts = held != 0 && table[ vid.value() - 1 ] != held;
      for ( const std::uint16_t relay : std::array< std::uint16_t, 3 >{ 0, 1, 2 } ) {
         const auto mapping = VlanXlateMapping::fromRaw( relay );   // 0: any
         const bool matches = held != 0 && ( relay == 0 || relay == held );
         ASSERT_EQ( mgr->isVidAndDot1qInLowerBoundRange( port, vid, mapping ), matches )
            << "step " << step << " vlan " << vid << " relay " << relay;
         ASSERT_EQ( mgr->isVidAndDot1qInUpperBoundRange( port, vid, mapping ), matches && starts )
            << "step " << step << " vlan " << vid << " relay " << relay;
      }
   }
}

TEST_F( RangeModelTest, ConfigurationWritesArriveSortedUnderEveryYieldPolicy ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   const auto acsd = Mox::moxCommonSmDataFactory();
   const auto clock = Zel::manualClockFactory();
   const auto scheduler = Quen::taskSchedulerFactory( clock );
   const auto schedule = MoxVlanMapping::vlanXlateScheduleDirFactory();
   const auto sm = MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd, clock, nullptr, nullptr,
                                                                   rangeDir_, schedule );
   const auto codef = Zel::newEntity< CountingCodef >( acsd, scheduler, rangeDir_, schedule );
   for ( int step = 0; step < 6000; ++step ) {
      if ( step == 100 ) {
         sm->handleInitialized();   // what was written before is replayed
      }
      scheduler->yieldPolicyIs( static_cast< Quen::YieldPolicy >( any( 4 ) ), any( 3 ) );
      const std::uint64_t port = any( kPorts );
      const std::uint16_t vid = anyVid();
      const auto relay = static_cast< std::uint16_t >( any( 3 ) );
      const Mox::PortVlanKey key{ IntfId( port ), VlanId( vid ) };
      if ( relay == 0 ) {
         acsd->ingressConfigDir()->configDel( key );
      } else {
         acsd->ingressConfigDir()->configIs(
            Mox::MoxVlanMappingConfig( key, VlanXlateMapping::fromRaw( relay ) ) );
      }
      model_[ port ][ vid ] = relay;
      if ( any( 3 ) == 0 ) {
         scheduler->runOnce();
      }
      if ( step < 100 || any( 10 ) != 0 ) {
         continue;
      }
      scheduler->runUntilIdle();
      ASSERT_EQ( schedule->vlanXlateSchedule().size(), 0u );
      for ( std::uint64_t each = 0; each < kPorts; ++each ) {
         ASSERT_NO_FATAL_FAILURE( expectIndex( each ) ) << "step " << step;
         const auto scaleEntry =
            codef->vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( IntfId( each ) );
         std::vector< Range > sorted;
         for ( const auto& element : scaleEntry->vidRangeSorted() ) {
            sorted.push_back( plain( element.key() ) );
         }
         ASSERT_EQ( sorted, bySize( maximalRuns( model_[ each ] ) ) ) << "step " << step;
         scaleEntry->vidRangeSorted().verify();
      }
   }
   EXPECT_EQ( codef->handed.size(), kPorts );
}

}   // namespace
