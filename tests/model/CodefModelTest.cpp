// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Codef, and state machine with codef, against plain lists and tables under random schedules,
// hooks that meddle and throw, yield policies and configuration writes.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Corvel::IntfId;
using MoxVlanMapping::VlanRangeXlateMapping;

// The order that the sort must arrive at, written down once more.
std::string
bruteForceSorted( const MoxVlanMapping::VlanRangeEntry& entry ) {
   std::vector< VlanRangeXlateMapping > ranges;
   for ( const auto& element : entry.vlanIdRange() ) {
      ranges.push_back( element.value() );
   }
   std::ranges::sort( ranges, []( const auto& a, const auto& b ) {
      const int sizeOfA = a.highVid().value() - a.lowVid().value();
      const int sizeOfB = b.highVid().value() - b.lowVid().value();
      return sizeOfA != sizeOfB ? sizeOfA > sizeOfB : a.lowVid().value() < b.lowVid().value();
   } );
   return TestSupport::joined(
      ranges, []( const auto& range ) { return TestSupport::rangeText( range ); } );
}

class HookedCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr const char* zelTypeName = "HookedCodef";

   void processSortedVlanRange( IntfId intfId ) override { process( intfId ); }
   void vlanXlateCodefComplete() override { complete(); }

   std::function< void( IntfId ) > process;
   std::function< void() > complete;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
};

class CodefModelTest : public TestSupport::NoneLeftTest {
 protected:
   CodefModelTest() {
      codef_->process = [ this ]( IntfId intfId ) { processed( intfId.value() ); };
      codef_->complete = [ this ] {
         EXPECT_TRUE( waiting_.empty() );
         ++completions_;
      };
   }

   unsigned random( unsigned low, unsigned high ) {
      return std::uniform_int_distribution< unsigned >( low, high )( engine_ );
   }
   bool chance( unsigned percent ) { return random( 0, 99 ) < percent; }
   std::uint64_t randomInterface() { return random( 1, 12 ); }

   void schedule( std::uint64_t intf ) {
      if ( std::ranges::find( waiting_, intf ) == waiting_.end() ) {
         waiting_.push_back( intf );
      }
      scheduleDir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   void unschedule( std::uint64_t intf ) {
      std::erase( waiting_, intf );
      scheduleDir_->vlanXlateScheduleDel( IntfId( intf ) );
   }
   void randomRangeEdit() {
      const IntfId intf( randomInterface() );
      const VlanId vid( random( 1, 40 ) );
      mgr_->deleteVlanFromIdx( intf, vid );
      if ( chance( 60 ) ) {
         mgr_->addVlanToIdx( intf, vid, TestSupport::mappingOf( chance( 80 ) ? 'A' : 'B' ) );
      }
   }
   void randomPolicy() {
      constexpr std::array kPolicies{ Quen::YieldPolicy::Quantum, Quen::YieldPolicy::Always,
                                      Quen::YieldPolicy::Never, Quen::YieldPolicy::AfterTests };
      scheduler_->yieldPolicyIs( kPolicies[ random( 0, 3 ) ], random( 0, 4 ) );
   }

   // What the derived class sees, and what it does to the state around it.
   void processed( std::uint64_t intf ) {
      ASSERT_FALSE( waiting_.empty() );
      EXPECT_EQ( intf, waiting_.front() );
      const auto ranges = rangeDir_->vlanRangeEntry( IntfId( intf ) );
      const auto scale = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( intf ) );
      ASSERT_TRUE( ranges && scale );
      EXPECT_EQ( TestSupport::sortedText( *scale ), bruteForceSorted( *ranges ) );
      scale->vidRangeSorted().verify();
      clock_->advance( 0.03 );
      if ( meddles_ ) {
         meddle( intf );
      }
      std::erase( waiting_, intf );
      ++done_;
   }
   void meddle( std::uint64_t intf ) {
      while ( chance( 30 ) ) {
         schedule( randomInterface() );
      }
      while ( chance( 20 ) ) {
         unschedule( randomInterface() );
      }
      if ( chance( 10 ) ) {
         unschedule( intf );
      }
      while ( chance( 20 ) ) {
         randomRangeEdit();
      }
      if ( chance( 5 ) ) {
         rangeDir_->vlanRangeEntryDel( IntfId( randomInterface() ) );
      }
      if ( chance( 5 ) ) {
         codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDel( IntfId( randomInterface() ) );
      }
      if ( chance( 10 ) ) {
         throw std::runtime_error( "hardware" );
      }
   }
   void run() {
      try {
         scheduler_->runOnce();
      } catch ( const std::runtime_error& ) {}
      EXPECT_EQ( codef_->task()->taskWorkCount(), done_ );
   }
   void compare() {
      ASSERT_EQ( TestSupport::interfacesText( scheduleDir_->vlanXlateSchedule() ),
                 TestSupport::joined(
                    waiting_, []( std::uint64_t intf ) { return std::to_string( intf ); } ) );
      scheduleDir_->vlanXlateSchedule().verify();
      // Whoever waits will be seen to.
      ASSERT_TRUE( waiting_.empty() || codef_->task()->scheduled() );
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 engine_{ seed_ };
   const Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   const Zel::Ptr< Quen::TaskScheduler > scheduler_ = Quen::taskSchedulerFactory( clock_ );
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > scheduleDir_ =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   const Zel::Ptr< HookedCodef > codef_ = Zel::newEntity< HookedCodef >(
      Mox::moxCommonSmDataFactory(), scheduler_, rangeDir_, scheduleDir_ );

   bool meddles_ = false;
   std::deque< std::uint64_t > waiting_;
   std::uint64_t done_ = 0;
   int completions_ = 0;
};

TEST_F( CodefModelTest, DrainsFirstInFirstOutUnderAnyPolicy ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int step = 0; step < 5000 && !HasFailure(); ++step ) {
      SCOPED_TRACE( "step " + std::to_string( step ) );
      switch ( random( 0, 5 ) ) {
      case 0:
         schedule( randomInterface() );
         break;
      case 1:
         unschedule( randomInterface() );
         break;
      case 2:
         randomPolicy();
         break;
      case 3:
         run();
         EXPECT_TRUE( done_ == 0 || codef_->task()->taskWorkPending() <= 12 );
         break;
      default:
         randomRangeEdit();
      }
      ASSERT_NO_FATAL_FAILURE( compare() );
   }
}

TEST_F( CodefModelTest, BearsHooksThatMeddleAndThrow ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   meddles_ = true;
   for ( int step = 0; step < 5000 && !HasFailure(); ++step ) {
      SCOPED_TRACE( "step " + std::to_string( step ) );
      switch ( random( 0, 3 ) ) {
      case 0:
         schedule( randomInterface() );
         break;
      case 1:
         randomPolicy();
         break;
      case 2:
         run();
         break;
      default:
         randomRangeEdit();
      }
      ASSERT_NO_FATAL_FAILURE( compare() );
   }
}

TEST_F( CodefModelTest, EachDrainEndsInOneCompletion ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   scheduler_->runUntilIdle();
   for ( int drain = 0; drain < 300 && !HasFailure(); ++drain ) {
      randomPolicy();
      for ( unsigned i = random( 1, 10 ); i > 0; --i ) {
         randomRangeEdit();
         schedule( randomInterface() );
      }
      completions_ = 0;
      scheduler_->runUntilIdle();
      EXPECT_EQ( completions_, 1 );
      EXPECT_TRUE( waiting_.empty() );
      EXPECT_EQ( codef_->task()->taskWorkPending(), 0u );
   }
}

// The whole road: configuration, hooks, index, schedule, task, sorted ranges; and status.
class RoadModelTest : public TestSupport::NoneLeftTest {
 protected:
   using Key = std::pair< std::uint64_t, unsigned >;   // port, VLAN

   RoadModelTest() {
      codef_->process = [ this ]( IntfId ) { clock_->advance( 0.03 ); };
      codef_->complete = [] {};
   }

   unsigned random( unsigned low, unsigned high ) {
      return std::uniform_int_distribution< unsigned >( low, high )( engine_ );
   }

   static Mox::PortVlanKey keyOf( const Key& key ) {
      return { IntfId( key.first ), VlanId::fromRaw( static_cast< std::uint16_t >( key.second ) ) };
   }
   // 1 to 30, rarely a number that is no VLAN id.
   Key randomKey() {
      constexpr std::array< unsigned, 3 > kNoVlan{ 0, 4095, 65535 };
      return { random( 1, 4 ), random( 0, 49 ) == 0 ? kNoVlan[ random( 0, 2 ) ] : random( 1, 30 ) };
   }
   // Translated VLANs 1 to 3, rarely one that is none.
   unsigned randomTranslation() { return random( 0, 19 ) == 0 ? 4095 : random( 1, 3 ); }
   static bool acceptable( const Key& key, unsigned translation ) {
      return key.second >= 1 && key.second <= 4094 && translation <= 4094;
   }

   void randomWrite() {
      const Key key = randomKey();
      const unsigned translation = randomTranslation();
      const Mox::MoxVlanMappingConfig config(
         keyOf( key ),
         Bridging::VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( translation ) ),
         random( 0, 1 ) == 1, random( 0, 1 ) == 1 );
      switch ( random( 0, 4 ) ) {
      case 0:
      case 1:
         ingressIs( key, translation, config );
         break;
      case 2:
         ingress_.erase( key );
         acsd_->ingressConfigDir()->configDel( keyOf( key ) );
         break;
      case 3:
         egress_[ key ] = translation;
         acsd_->egressConfigDir()->configIs( config );
         break;
      default:
         egress_.erase( key );
         acsd_->egressConfigDir()->configDel( keyOf( key ) );
      }
   }
   void ingressIs( const Key& key, unsigned translation, const Mox::MoxVlanMappingConfig& config ) {
      ingress_[ key ] = translation;
      try {
         acsd_->ingressConfigDir()->configIs( config );
      } catch ( const Zel::RangeException& ) {
         EXPECT_TRUE( initialized_ );
         EXPECT_FALSE( acceptable( key, translation ) );
      }
   }
   void initialise() {
      initialized_ = true;
      const bool refused = std::ranges::any_of(
         ingress_, []( const auto& entry ) { return !acceptable( entry.first, entry.second ); } );
      if ( refused ) {
         EXPECT_THROW( sm_->handleInitialized(), Zel::RangeException );
      } else {
         sm_->handleInitialized();
      }
   }

   // The ranges that the configuration stands for, as "LOW-HIGH->TRANSLATION" per port.
   std::string expectedRanges( std::uint64_t port ) const {
      std::map< unsigned, unsigned > byVlan;
      for ( const auto& [ key, translation ] : ingress_ ) {
         if ( initialized_ && key.first == port && acceptable( key, translation ) ) {
            byVlan[ key.second ] = translation;
         }
      }
      std::string all;
      for ( auto at = byVlan.begin(); at != byVlan.end(); ) {
         const auto [ low, translation ] = *at;
         unsigned high = low;
         while ( ++at != byVlan.end() && at->first == high + 1 && at->second == translation ) {
            ++high;
         }
         all += std::to_string( low ) + "-" + std::to_string( high ) + "->" +
                std::to_string( translation ) + " ";
      }
      return all;
   }
   std::string ranges( std::uint64_t port ) const {
      std::string all;
      if ( const auto entry = rangeDir_->vlanRangeEntry( IntfId( port ) ) ) {
         for ( const auto& element : entry->vlanIdRange() ) {
            const VlanRangeXlateMapping& range = element.value();
            all += std::to_string( range.lowVid().value() ) + "-" +
                   std::to_string( range.highVid().value() ) + "->" +
                   std::to_string( range.mapping().rawVlanId() ) + " ";
         }
      }
      return all;
   }
   void compare() const {
      for ( std::uint64_t port = 1; port <= 4; ++port ) {
         ASSERT_EQ( ranges( port ), expectedRanges( port ) ) << "port " << port;
      }
      std::map< Key, unsigned > status;
      for ( const auto& node : acsd_->statusDir()->status() ) {
         const auto& record = node.value();
         ASSERT_FALSE( record.xlateUntagged() );
         status[ { record.key().intfId().value(), record.key().vlanId().value() } ] =
            record.mapping().rawVlanId();
      }
      ASSERT_EQ( status, initialized_ ? egress_ : ( std::map< Key, unsigned >() ) );
   }
   void compareSorted() const {
      ASSERT_TRUE( scheduleDir_->vlanXlateSchedule().empty() );
      for ( const auto& node : rangeDir_->vlanRangeEntry() ) {
         const auto scale = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( node.key() );
         const std::string expected = bruteForceSorted( *node.entity() );
         ASSERT_EQ( scale ? TestSupport::sortedText( *scale ) : "", expected );
      }
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 engine_{ seed_ };
   const Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   const Zel::Ptr< Quen::TaskScheduler > scheduler_ = Quen::taskSchedulerFactory( clock_ );
   const Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanXlateScheduleDir > scheduleDir_ =
      MoxVlanMapping::vlanXlateScheduleDirFactory();
   const Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > sm_ =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd_, clock_, nullptr, nullptr, rangeDir_,
                                                      scheduleDir_ );
   const Zel::Ptr< HookedCodef > codef_ =
      Zel::newEntity< HookedCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );

   bool initialized_ = false;
   std::map< Key, unsigned > ingress_;
   std::map< Key, unsigned > egress_;
};

TEST_F( RoadModelTest, AnyConfigurationWritesLeaveTheIndexEqualToTheConfiguration ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int step = 0; step < 6000; ++step ) {
      SCOPED_TRACE( "step " + std::to_string( step ) );
      if ( step == 100 ) {
         initialise();
      }
      randomWrite();
      if ( random( 0, 9 ) == 0 ) {
         const IntfId port( random( 1, 4 ) );
         acsd_->portToLagIs( port, IntfId( 100 ) );
         if ( random( 0, 1 ) == 0 ) {
            acsd_->portToLagDel( port );
         }
      }
      ASSERT_NO_FATAL_FAILURE( compare() );
      if ( random( 0, 4 ) == 0 ) {
         scheduler_->yieldPolicyIs( random( 0, 1 ) == 0 ? Quen::YieldPolicy::Always
                                                        : Quen::YieldPolicy::Quantum );
         scheduler_->runOnce();
      }
      if ( random( 0, 49 ) == 0 ) {
         scheduler_->runUntilIdle();
         ASSERT_NO_FATAL_FAILURE( compareSorted() );
      }
   }
}

}   // namespace
