// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include <cstdint>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Mox/MoxCommonSmData.h"
#include "Mox/MoxVlanMappingConfigDir.h"
#include "Mox/MoxVlanMappingStatusDir.h"
#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/NoneLeftTest.h"

namespace {

using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using Mox::MoxVlanMappingConfig;
using Mox::MoxVlanMappingStatus;
using Mox::PortVlanKey;

// Logs "ATTRIBUTE:PORT/VLAN" or "ATTRIBUTE:PORT" for each change.
class ChangeLog : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "DirectoriesTest::ChangeLog";
   enum class Keys { PortVlan, Port };
   ChangeLog( const Zel::Ptr< Zel::PtrInterface >& entity, Keys keys ) : keys_( keys ) {
      zelNotifierIs( entity );
   }
   void onAttribute( Zel::AttributeId attribute, const void* key ) override {
      text_ += ( text_.empty() ? "" : " " ) + std::to_string( attribute ) + ":";
      if ( keys_ == Keys::Port ) {
         text_ += std::to_string( static_cast< const IntfId* >( key )->value() );
      } else {
         const auto& portVlan = *static_cast< const PortVlanKey* >( key );
         text_ += std::to_string( portVlan.intfId().value() ) + "/" +
                  std::to_string( portVlan.vlanId().value() );
      }
   }
   std::string take() { return std::exchange( text_, "" ); }

 private:
   const Keys keys_;
   std::string text_;
};

PortVlanKey
key( std::uint64_t port, std::uint16_t vlan ) {
   return { IntfId( port ), Bridging::VlanId::fromRaw( vlan ) };
}
VlanXlateMapping
to( std::uint16_t vlan ) {
   return VlanXlateMapping::fromRaw( vlan );
}

class MoxVlanMappingConfigDirTest : public TestSupport::NoneLeftTest {
 protected:
   Zel::Ptr< Mox::MoxVlanMappingConfigDir > dir_ = Mox::moxVlanMappingConfigDirFactory();
   Zel::Ptr< ChangeLog > changes_ = Zel::newEntity< ChangeLog >( dir_, ChangeLog::Keys::PortVlan );
};

TEST_F( MoxVlanMappingConfigDirTest, InsertionIsTold ) {
   dir_->configIs( { key( 7, 100 ), to( 3001 ) } );
   EXPECT_EQ( changes_->take(), "130:7/100" );
   ASSERT_NE( dir_->config().record( key( 7, 100 ) ), nullptr );
   EXPECT_EQ( dir_->config().record( key( 7, 100 ) )->mapping(), to( 3001 ) );
}

TEST_F( MoxVlanMappingConfigDirTest, ReplacementIsTold ) {
   dir_->configIs( { key( 7, 100 ), to( 3001 ) } );
   changes_->take();
   dir_->configIs( { key( 7, 100 ), to( 3002 ) } );
   EXPECT_EQ( changes_->take(), "130:7/100" );
   EXPECT_EQ( dir_->config().size(), 1u );
   EXPECT_EQ( dir_->config().record( key( 7, 100 ) )->mapping(), to( 3002 ) );
}

// Who could not act on it before gets another try.
TEST_F( MoxVlanMappingConfigDirTest, AnEqualRecordIsTold ) {
   dir_->configIs( { key( 7, 100 ), to( 3001 ) } );
   changes_->take();
   dir_->configIs( { key( 7, 100 ), to( 3001 ) } );
   EXPECT_EQ( changes_->take(), "130:7/100" );
}

TEST_F( MoxVlanMappingConfigDirTest, DeletionIsToldAndReturnsTheRecord ) {
   const MoxVlanMappingConfig record( key( 7, 100 ), to( 3001 ), true );
   dir_->configIs( record );
   changes_->take();
   EXPECT_TRUE( dir_->configDel( key( 7, 100 ) ) == record );
   EXPECT_EQ( changes_->take(), "130:7/100" );
   EXPECT_EQ( dir_->config().record( key( 7, 100 ) ), nullptr );
}

TEST_F( MoxVlanMappingConfigDirTest, DeletionOfAnAbsentKeyIsToldAndReturnsTheDefault ) {
   EXPECT_TRUE( dir_->configDel( key( 7, 100 ) ) == MoxVlanMappingConfig() );
   EXPECT_EQ( changes_->take(), "130:7/100" );
}

TEST_F( MoxVlanMappingConfigDirTest, HoldsKeysWithUncheckedVlans ) {
   dir_->configIs( { key( 7, 0 ), to( 3001 ) } );
   dir_->configIs( { key( 7, 4095 ), to( 4095 ) } );
   EXPECT_EQ( changes_->take(), "130:7/0 130:7/4095" );
   EXPECT_TRUE( dir_->config().contains( key( 7, 4095 ) ) );
}

class MoxVlanMappingStatusDirTest : public TestSupport::NoneLeftTest {
 protected:
   Zel::Ptr< Mox::MoxVlanMappingStatusDir > dir_ = Mox::moxVlanMappingStatusDirFactory();
   Zel::Ptr< ChangeLog > changes_ = Zel::newEntity< ChangeLog >( dir_, ChangeLog::Keys::PortVlan );
};

TEST_F( MoxVlanMappingStatusDirTest, InsertionAndReplacementAreTold ) {
   dir_->statusIs( { key( 7, 100 ), to( 3001 ) } );
   dir_->statusIs( { key( 7, 100 ), to( 3002 ) } );
   EXPECT_EQ( changes_->take(), "130:7/100 130:7/100" );
   EXPECT_EQ( dir_->status().record( key( 7, 100 ) )->mapping(), to( 3002 ) );
}

TEST_F( MoxVlanMappingStatusDirTest, AnEqualRecordIsNoChange ) {
   dir_->statusIs( { key( 7, 100 ), to( 3001 ) } );
   changes_->take();
   dir_->statusIs( { key( 7, 100 ), to( 3001 ) } );
   EXPECT_EQ( changes_->take(), "" );
}

TEST_F( MoxVlanMappingStatusDirTest, DeletionIsToldAndReturnsTheRecord ) {
   const MoxVlanMappingStatus record( key( 7, 100 ), to( 3001 ), true );
   dir_->statusIs( record );
   changes_->take();
   EXPECT_TRUE( dir_->statusDel( key( 7, 100 ) ) == record );
   EXPECT_EQ( changes_->take(), "130:7/100" );
   EXPECT_TRUE( dir_->status().empty() );
}

TEST_F( MoxVlanMappingStatusDirTest, DeletionOfAnAbsentKeyIsSilentAndReturnsTheDefault ) {
   EXPECT_TRUE( dir_->statusDel( key( 7, 100 ) ) == MoxVlanMappingStatus() );
   EXPECT_EQ( changes_->take(), "" );
}

class MoxCommonSmDataTest : public TestSupport::NoneLeftTest {
 protected:
   std::string lagOf( std::uint64_t port ) const {
      const auto* const member = data_->portToLag().findNode( IntfId( port ) );
      return member ? std::to_string( member->value().value() ) : "none";
   }

   Zel::Ptr< Mox::MoxCommonSmData > data_ = Mox::moxCommonSmDataFactory();
   Zel::Ptr< ChangeLog > changes_ = Zel::newEntity< ChangeLog >( data_, ChangeLog::Keys::Port );
};

TEST_F( MoxCommonSmDataTest, IsMadeWithEmptyDirectories ) {
   EXPECT_TRUE( data_->ingressConfigDir()->config().empty() );
   EXPECT_TRUE( data_->egressConfigDir()->config().empty() );
   EXPECT_TRUE( data_->statusDir()->status().empty() );
   EXPECT_FALSE( data_->ingressConfigDir() == data_->egressConfigDir() );
}

TEST_F( MoxCommonSmDataTest, JoiningALagIsTold ) {
   data_->portToLagIs( IntfId( 7 ), IntfId( 1000 ) );
   EXPECT_EQ( changes_->take(), "133:7" );
   EXPECT_EQ( lagOf( 7 ), "1000" );
   EXPECT_EQ( lagOf( 8 ), "none" );
}

TEST_F( MoxCommonSmDataTest, MovingToAnotherLagIsTold ) {
   data_->portToLagIs( IntfId( 7 ), IntfId( 1000 ) );
   changes_->take();
   data_->portToLagIs( IntfId( 7 ), IntfId( 1001 ) );
   EXPECT_EQ( changes_->take(), "133:7" );
   EXPECT_EQ( lagOf( 7 ), "1001" );
   EXPECT_EQ( data_->portToLag().size(), 1u );
}

TEST_F( MoxCommonSmDataTest, JoiningTheSameLagAgainIsNoChange ) {
   data_->portToLagIs( IntfId( 7 ), IntfId( 1000 ) );
   changes_->take();
   data_->portToLagIs( IntfId( 7 ), IntfId( 1000 ) );
   EXPECT_EQ( changes_->take(), "" );
}

TEST_F( MoxCommonSmDataTest, LeavingALagIsToldAndReturnsIt ) {
   data_->portToLagIs( IntfId( 7 ), IntfId( 1000 ) );
   changes_->take();
   EXPECT_EQ( data_->portToLagDel( IntfId( 7 ) ), IntfId( 1000 ) );
   EXPECT_EQ( changes_->take(), "133:7" );
   EXPECT_EQ( lagOf( 7 ), "none" );
}

TEST_F( MoxCommonSmDataTest, LeavingWithoutMembershipIsSilentAndReturnsTheEmptyId ) {
   EXPECT_EQ( data_->portToLagDel( IntfId( 7 ) ), IntfId() );
   EXPECT_EQ( changes_->take(), "" );
}

}   // namespace
