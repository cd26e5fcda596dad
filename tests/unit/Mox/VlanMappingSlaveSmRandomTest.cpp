// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Random configuration writes, some of them from inside the hooks, against brute force: what the
// index holds must follow from the configuration alone.

#include <cstdint>
#include <map>
#include <random>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Zel/Exception.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Mox/RecordingSm.h"

namespace {

using Mox::PortVlanKey;
using TestMox::key;

constexpr int kSteps = 20000;
constexpr std::uint16_t kUnrepresentable = 4095;

class VlanMappingSlaveSmRandomTest : public TestSupport::NoneLeftTest {
 protected:
   std::uint16_t random( std::uint16_t bound ) {
      return static_cast< std::uint16_t >( random_() % bound );
   }
   PortVlanKey randomKey() {
      return key( 1 + random( 2 ), static_cast< std::uint16_t >( 100 + random( 4 ) ), random( 3 ) );
   }
   // One write; refused mappings among them when `withRefusals`.
   void write( bool withRefusals ) {
      Mox::MoxVlanMappingConfigDir& dir =
         random( 3 ) == 0 ? *acsd_->egressConfigDir() : *acsd_->ingressConfigDir();
      const PortVlanKey at = randomKey();
      try {
         if ( random( 2 ) == 0 ) {
            dir.configDel( at );
         } else {
            const std::uint16_t vlan = withRefusals && random( 6 ) == 0
                                        ? kUnrepresentable
                                        : static_cast< std::uint16_t >( 3000 + random( 3 ) );
            dir.configIs( { at, Bridging::VlanXlateMapping::fromRaw( vlan ) } );
         }
      } catch ( const Zel::RangeException& ) {
         EXPECT_TRUE( withRefusals );
      }
   }

   // Every place with a key that can be in force holds one of its keys, no other place anything.
   void checkIndex() {
      std::map< std::pair< std::uint64_t, std::uint16_t >, std::string > allowed;
      for ( const auto& node : acsd_->ingressConfigDir()->config() ) {
         const std::uint16_t vlan = node.value().mapping().rawVlanId();
         if ( vlan != kUnrepresentable ) {
            allowed[ { node.key().intfId().value(), node.key().vlanId().value() } ] +=
               std::to_string( vlan ) + " ";
         }
      }
      for ( const auto& [ place, vlans ] : allowed ) {
         const auto held = record_.index.find( place );
         ASSERT_NE( held, record_.index.end() )
            << place.first << "/" << place.second << " is missing, configured: " << vlans;
         EXPECT_NE( vlans.find( std::to_string( held->second ) + " " ), std::string::npos )
            << place.first << "/" << place.second << " holds " << held->second
            << ", configured: " << vlans;
      }
      ASSERT_EQ( record_.index.size(), allowed.size() ) << record_.shownIndex();
   }
   void checkEgress() {
      TestMox::Record expected;
      for ( const auto& node : acsd_->egressConfigDir()->config() ) {
         const std::uint16_t vlan = node.value().mapping().rawVlanId();
         expected.egress[ TestMox::name( node.key() ) ] = vlan;
      }
      ASSERT_EQ( record_.shownEgress(), expected.shownEgress() );
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   TestMox::Record record_;
   Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   Zel::Ptr< TestMox::RecordingSm > sm_ = Zel::newEntity< TestMox::RecordingSm >( acsd_, record_ );
};

TEST_F( VlanMappingSlaveSmRandomTest, TheIndexFollowsTheConfiguration ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int i = 0; i < 50; ++i ) {
      write( false );
   }
   sm_->handleInitialized();
   for ( int i = 0; i < kSteps && !HasFailure(); ++i ) {
      SCOPED_TRACE( "step " + std::to_string( i ) + ": " + record_.take() );
      write( false );
      checkIndex();
      checkEgress();
   }
}

TEST_F( VlanMappingSlaveSmRandomTest, TheIndexFollowsTheConfigurationWrittenInsideHooksToo ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   sm_->handleInitialized();
   int depth = 0;
   record_.after = [ & ]( const std::string& ) {
      if ( depth < 3 && random( 3 ) == 0 ) {
         ++depth;
         write( false );
         --depth;
      }
   };
   for ( int i = 0; i < kSteps && !HasFailure(); ++i ) {
      record_.take();
      write( false );
      SCOPED_TRACE( "step " + std::to_string( i ) + ": " + record_.log );
      checkIndex();
      checkEgress();
   }
}

TEST_F( VlanMappingSlaveSmRandomTest, RefusedMappingsLeaveEveryOtherInForce ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   sm_->handleInitialized();
   for ( int i = 0; i < kSteps && !HasFailure(); ++i ) {
      record_.take();
      write( true );
      SCOPED_TRACE( "step " + std::to_string( i ) + ": " + record_.log );
      checkIndex();
   }
}

TEST_F( VlanMappingSlaveSmRandomTest, WhenAllConfigurationIsGoneSoIsTheIndex ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   sm_->handleInitialized();
   for ( int i = 0; i < 1000; ++i ) {
      write( false );
   }
   for ( auto at = acsd_->ingressConfigDir()->config().first(); at; ++at ) {
      acsd_->ingressConfigDir()->configDel( at->key() );
   }
   EXPECT_EQ( record_.shownIndex(), "" );
}

}   // namespace
