// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Mox/Delivered.h"

#include <cstdint>
#include <map>
#include <new>
#include <random>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include "Mox/MoxVlanMappingConfigDir.h"
#include "Zel/AllocationTracker.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Mox/RecordingSm.h"

namespace {

using Mox::Delivered;
using Mox::DeliveredTable;
using Mox::PortVlanKey;
using TestMox::key;

// What the walk meets, as a set of names.
std::set< std::string >
walk( const DeliveredTable& table ) {
   std::set< std::string > met;
   for ( std::uint32_t place = 0; place < table.places(); ++place ) {
      if ( const Delivered* const slot = table.at( place ) ) {
         EXPECT_TRUE( met.insert( TestMox::name( slot->record.key() ) ).second );
      }
   }
   return met;
}

TEST( DeliveredTable, IsEmptyAtFirst ) {
   DeliveredTable table( DeliveredTable::Slots::Key );
   EXPECT_EQ( table.find( key( 1, 100 ) ), nullptr );
   EXPECT_EQ( table.places(), 0u );
}

TEST( DeliveredTable, ANewSlotHasAnEmptyRecordOfItsKeyAndNothingInForce ) {
   DeliveredTable table( DeliveredTable::Slots::PortVlan );
   const Delivered& slot = table.findOrInsert( key( 1, 100, 5 ) );
   EXPECT_EQ( slot.record, Mox::MoxVlanMappingConfig( key( 1, 100, 5 ), {} ) );
   EXPECT_FALSE( slot.inForce );
   EXPECT_FALSE( slot.busy );
}

TEST( DeliveredTable, KeysOfOnePortAndVlanShareASlotForIngressAlone ) {
   DeliveredTable ingress( DeliveredTable::Slots::PortVlan );
   DeliveredTable egress( DeliveredTable::Slots::Key );
   const Delivered* const slot = &ingress.findOrInsert( key( 1, 100, 5 ) );
   EXPECT_EQ( &ingress.findOrInsert( key( 1, 100, 6 ) ), slot );
   EXPECT_EQ( ingress.find( key( 1, 100 ) ), slot );
   EXPECT_EQ( slot->record.key(), key( 1, 100, 5 ) );
   const Delivered* const other = &egress.findOrInsert( key( 1, 100, 5 ) );
   EXPECT_NE( &egress.findOrInsert( key( 1, 100, 6 ) ), other );
   EXPECT_EQ( egress.find( key( 1, 100 ) ), nullptr );
   EXPECT_EQ( egress.find( key( 1, 100, 5 ) ), other );
}

TEST( DeliveredTable, AnErasedSlotLeavesNothingToTheNextInItsPlace ) {
   DeliveredTable table( DeliveredTable::Slots::Key );
   Delivered& slot = table.findOrInsert( key( 1, 100 ) );
   slot.inDoubt();
   slot.busy = true;
   table.erase( slot );
   EXPECT_EQ( table.find( key( 1, 100 ) ), nullptr );
   EXPECT_EQ( table.at( 0 ), nullptr );
   const Delivered& next = table.findOrInsert( key( 2, 200 ) );
   EXPECT_EQ( &next, table.at( 0 ) );
   EXPECT_FALSE( next.inForce );
   EXPECT_FALSE( next.busy );
   EXPECT_EQ( table.find( key( 1, 100 ) ), nullptr );
}

TEST( DeliveredTable, WhatIsInDoubtIsInForceAndEqualsNoRecordThatIsDeliverable ) {
   DeliveredTable table( DeliveredTable::Slots::Key );
   Delivered& slot = table.findOrInsert( key( 1, 100 ) );
   slot.record = { key( 1, 100 ), Bridging::VlanXlateMapping::fromRaw( 3001 ), true, true, 9 };
   slot.inDoubt();
   EXPECT_TRUE( slot.inForce );
   EXPECT_EQ( slot.record, Mox::MoxVlanMappingConfig( key( 1, 100 ), {} ) );
}

// Against a map from name to the address of the slot, which never changes.
TEST( DeliveredTable, SlotsStayWhereTheyAreWhateverComesAndGoes ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   DeliveredTable table( DeliveredTable::Slots::Key );
   std::map< std::string, const Delivered* > model;
   for ( int step = 0; step < 20000; ++step ) {
      // Grows to some thousand slots, and shrinks again.
      const PortVlanKey at = key( 1 + random() % 8, static_cast< std::uint16_t >( random() % 400 ),
                                  static_cast< std::uint16_t >( random() % 2 ) );
      const auto known = model.find( TestMox::name( at ) );
      const Delivered* const found = table.find( at );
      ASSERT_EQ( found, known == model.end() ? nullptr : known->second ) << step;
      if ( random() % 8 < ( step < 10000 ? 2u : 6u ) && found ) {
         table.erase( *found );
         model.erase( known );
      } else if ( step < 10000 ) {
         const Delivered& slot = table.findOrInsert( at );
         ASSERT_TRUE( !found || found == &slot ) << step;
         ASSERT_EQ( slot.record.key(), at );
         model[ TestMox::name( at ) ] = &slot;
      }
   }
   std::set< std::string > names;
   for ( const auto& [ name, slot ] : model ) {
      names.insert( name );
   }
   EXPECT_EQ( walk( table ), names );
}

TEST( DeliveredTable, WithoutMemoryItStaysAsItWas ) {
   DeliveredTable table( DeliveredTable::Slots::Key );
   for ( std::uint16_t vlan = 1; vlan <= 100; ++vlan ) {
      try {
         const TestSupport::OperatorNewHook refusing( [] { throw std::bad_alloc(); } );
         table.findOrInsert( key( 1, vlan ) );
      } catch ( const std::bad_alloc& ) {
         ASSERT_EQ( table.find( key( 1, vlan ) ), nullptr );
         ASSERT_EQ( walk( table ).size(), vlan - 1u );
         table.findOrInsert( key( 1, vlan ) );
      }
   }
   EXPECT_EQ( walk( table ).size(), 100u );
}

// There is one of each for every mapping.
TEST( DeliveredTable, AMappingTakes104BytesOfConfigurationAndDelivery ) {
   const auto dir = Mox::moxVlanMappingConfigDirFactory();
   const auto bytes = [] {
      return Zel::allocationCount( "Mox::MoxVlanMappingConfigDir::ZelConfig" ).bytes;
   };
   const std::int64_t before = bytes();
   dir->configIs( { key( 1, 100 ), Bridging::VlanXlateMapping::fromRaw( 3001 ) } );
   EXPECT_LE( bytes() - before + static_cast< std::int64_t >( sizeof( Delivered ) ), 104 );
}

}   // namespace
