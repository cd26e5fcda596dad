// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Mox/MoxVlanMapping.h"

#include <array>
#include <cstdint>
#include <set>

#include <gtest/gtest.h>

namespace {

using Bridging::VlanXlateMapping;
using Mox::MoxVlanMappingConfig;
using Mox::MoxVlanMappingStatus;
using Mox::PortVlanKey;

const PortVlanKey kKey( Corvel::IntfId( 7 ), Bridging::VlanId( 100 ) );
const VlanXlateMapping kTo3001( Bridging::VlanIdOrNone( 3001 ) );

template < class Record >
class MoxVlanMappingTest : public testing::Test {};
using Records = testing::Types< MoxVlanMappingConfig, MoxVlanMappingStatus >;
TYPED_TEST_SUITE( MoxVlanMappingTest, Records );

TYPED_TEST( MoxVlanMappingTest, DefaultHasTheDefaultKeyTheEmptyMappingAndNoFlags ) {
   const TypeParam record;
   EXPECT_EQ( record.key(), PortVlanKey() );
   EXPECT_EQ( record.mapping(), VlanXlateMapping() );
   EXPECT_FALSE( record.inLag() );
   EXPECT_FALSE( record.xlateUntagged() );
   EXPECT_EQ( record.origin(), 0u );
}

// One stands for each mapping in each directory.
TYPED_TEST( MoxVlanMappingTest, HasNoRoomThatNoFieldUses ) {
   EXPECT_EQ( sizeof( TypeParam ), 22u );
   EXPECT_EQ( sizeof( PortVlanKey ), 12u );
}

TYPED_TEST( MoxVlanMappingTest, ShowsItsFields ) {
   const TypeParam inLag( kKey, kTo3001, true, false, 9 );
   EXPECT_EQ( inLag.key(), kKey );
   EXPECT_EQ( inLag.mapping(), kTo3001 );
   EXPECT_TRUE( inLag.inLag() );
   EXPECT_FALSE( inLag.xlateUntagged() );
   EXPECT_EQ( inLag.origin(), 9u );
   EXPECT_TRUE( TypeParam( kKey, kTo3001, false, true ).xlateUntagged() );
}

TYPED_TEST( MoxVlanMappingTest, EveryFieldCountsInEquality ) {
   const TypeParam record( kKey, kTo3001, true, true, 9 );
   EXPECT_TRUE( record == TypeParam( kKey, kTo3001, true, true, 9 ) );
   const std::array others{ TypeParam( PortVlanKey(), kTo3001, true, true, 9 ),
                            TypeParam( kKey, VlanXlateMapping(), true, true, 9 ),
                            TypeParam( kKey, kTo3001, false, true, 9 ),
                            TypeParam( kKey, kTo3001, true, false, 9 ),
                            TypeParam( kKey, kTo3001, true, true, 8 ) };
   for ( const TypeParam& other : others ) {
      EXPECT_FALSE( record == other );
   }
}

TYPED_TEST( MoxVlanMappingTest, EveryFieldAndTheSeedCountInTheHash ) {
   std::set< std::uint32_t > hashes;
   for ( const bool inLag : { false, true } ) {
      for ( const bool xlateUntagged : { false, true } ) {
         for ( const std::uint8_t origin : std::array< std::uint8_t, 3 >{ 0, 1, 255 } ) {
            hashes.insert( TypeParam( kKey, kTo3001, inLag, xlateUntagged, origin ).hash( 3 ) );
         }
      }
   }
   hashes.insert( TypeParam( PortVlanKey(), kTo3001 ).hash( 3 ) );
   hashes.insert( TypeParam( kKey, VlanXlateMapping() ).hash( 3 ) );
   hashes.insert( TypeParam( kKey, kTo3001 ).hash( 4 ) );
   EXPECT_EQ( hashes.size(), 15u );
   EXPECT_EQ( TypeParam( kKey, kTo3001 ).hash( 3 ), TypeParam( kKey, kTo3001 ).hash( 3 ) );
}

}   // namespace
