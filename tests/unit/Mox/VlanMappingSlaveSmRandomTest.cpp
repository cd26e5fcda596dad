// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Random configuration writes, some of them from inside the hooks, against brute force: what the
// index holds must follow from the configuration alone.

#include <cstdint>
#include <map>
#include <random>
#include <set>
#include <stdexcept>
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

template < class Sm >
class RandomTest : public TestSupport::NoneLeftTest {
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
            noteEmptied( dir, at );
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

   // The place that loses its last key.
   void noteEmptied( const Mox::MoxVlanMappingConfigDir& dir, const PortVlanKey& gone ) {
      bool anyOther = false;
      for ( const auto& node : dir.config() ) {
         anyOther = anyOther || ( node.key().intfId() == gone.intfId() &&
                                  node.key().vlanId() == gone.vlanId() && !( node.key() == gone ) );
      }
      if ( !anyOther ) {
         emptied_.emplace( gone.intfId().value(), gone.vlanId().value() );
      }
   }

   using Place = std::pair< std::uint64_t, std::uint16_t >;
   // By place, the translated VLANs of its keys, "3000 3001 ".
   std::map< Place, std::string > configured() const {
      std::map< Place, std::string > vlans;
      for ( const auto& node : acsd_->ingressConfigDir()->config() ) {
         vlans[ { node.key().intfId().value(), node.key().vlanId().value() } ] +=
            std::to_string( node.value().mapping().rawVlanId() ) + " ";
      }
      return vlans;
   }
   // Every place with a key holds one of its keys, no other place anything.
   void checkIndex() {
      const auto allowed = configured();
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

   std::set< Place > emptied_;   // ingress or egress, which makes no difference here
   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   TestMox::Record record_;
   Zel::Ptr< Mox::MoxCommonSmData > acsd_ = Mox::moxCommonSmDataFactory();
   Zel::Ptr< Sm > sm_ = Zel::newEntity< Sm >( acsd_, record_ );
};
using VlanMappingSlaveSmRandomTest = RandomTest< TestMox::RecordingSm >;
using IndexedSlaveSmRandomTest = RandomTest< TestMox::IndexedSm >;

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

// A refused record changes nothing, so those of a place with one that is not refused stand for it.
TEST_F( VlanMappingSlaveSmRandomTest, RefusedMappingsLeaveEveryOtherInForce ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   sm_->handleInitialized();
   for ( int i = 0; i < kSteps && !HasFailure(); ++i ) {
      record_.take();
      write( true );
      SCOPED_TRACE( "step " + std::to_string( i ) + ": " + record_.log );
      const auto places = configured();
      for ( const auto& [ place, vlans ] : places ) {
         const bool anyAccepted = vlans.find( '3' ) != std::string::npos;
         ASSERT_TRUE( !anyAccepted || record_.index.contains( place ) )
            << place.first << "/" << place.second << " is missing, configured: " << vlans;
      }
      for ( const auto& [ place, vlan ] : record_.index ) {
         ASSERT_TRUE( places.contains( place ) ) << record_.shownIndex();
         ASSERT_NE( vlan, kUnrepresentable );
      }
   }
}

// Hooks that throw at random, before and after their work: what was in force and is configured still
// is at any time, and all of it is once nothing fails.
TEST_F( IndexedSlaveSmRandomTest, WhateverFailsNoConfiguredVlanGoesOutOfForce ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   sm_->handleInitialized();
   bool failing = true;
   int depth = 0;
   const auto fail = [ & ]( const std::string& what ) {
      if ( failing && what.front() != '<' && random( 4 ) == 0 ) {
         throw std::runtime_error( what );
      }
   };
   record_.before = fail;
   record_.after = [ & ]( const std::string& what ) {
      if ( depth == 0 && random( 3 ) == 0 ) {
         ++depth;
         try {
            write( false );
         } catch ( const std::runtime_error& ) {}
         --depth;
      }
      fail( what );
   };
   for ( int i = 0; i < kSteps && !HasFailure(); ++i ) {
      record_.take();
      emptied_.clear();
      const auto heldBefore = record_.index;
      try {
         write( false );
      } catch ( const std::runtime_error& ) {}
      SCOPED_TRACE( "step " + std::to_string( i ) + ": " + record_.log );
      for ( const auto& [ place, vlans ] : configured() ) {
         if ( heldBefore.contains( place ) && !emptied_.contains( place ) ) {
            ASSERT_TRUE( record_.index.contains( place ) )
               << place.first << "/" << place.second << " was lost, configured: " << vlans;
         }
      }
      if ( random( 50 ) == 0 ) {
         failing = false;
         sm_->handleInitialized();
         EXPECT_EQ( sm_->undelivered(), 0u );
         checkIndex();
         checkEgress();
         failing = true;
      }
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
