// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The iterator sets of the library's collections.
#include "tests/unit/MoxVlanMapping/GenericAccess.h"

#include <string>
#include <utility>

#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"

namespace {

using Zel::Value;

class GenericIteratorTest : public GenericAccess {
 protected:
   void schedule( std::uint64_t number ) {
      done( schedule_, 130, kSet, { intf( number ), flag( true ) } );
   }
   void unschedule( std::uint64_t number ) { done( schedule_, 130, kDelete, { intf( number ) } ); }
   std::string waiting() const { return walk( schedule_, "vlanXlateSchedule" ); }

   const Value entry_ = made( "VlanRangeEntry", { intf( 7 ) } );
   Value schedule_ = made( "VlanXlateScheduleDir" );
};

TEST_F( GenericIteratorTest, AnOrderedMapIsWalkedInTheOrderOfItsKeys ) {
   for ( const unsigned low : { 30u, 10u, 20u } ) {
      done( entry_, 131, kSet, { range( low, low + 5, 'M' ) } );
   }
   EXPECT_EQ( walk( entry_, "vlanIdRange" ), "10: (10-15 M), 20: (20-25 M), 30: (30-35 M)" );
}

TEST_F( GenericIteratorTest, OrderedSetsAreWalkedInTheOrderOfTheirTypes ) {
   for ( const unsigned number : { 30u, 10u, 20u } ) {
      done( entry_, 132, kSet, { start( number ), flag( number == 10 ) } );
   }
   EXPECT_EQ( walk( entry_, "revSortedStartVid" ), "30: false, 20: false, 10: true" );
   const Value scale = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   done( scale, 132, kSet, { range( 5, 5, 'M' ), flag( true ) } );
   done( scale, 132, kSet, { range( 40, 60, 'N' ), flag( true ) } );
   EXPECT_EQ( walk( scale, "vidRangeSorted" ), "(40-60 N): true, (5-5 M): true" );
}

TEST_F( GenericIteratorTest, AHashSetIsWalkedInTheOrderOfInsertion ) {
   for ( const std::uint64_t number : { 9u, 7u, 8u } ) {
      schedule( number );
   }
   EXPECT_EQ( waiting(), "9: true, 7: true, 8: true" );
   const Value scale = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   done( scale, 131, kSet, { vlan( 6 ), flag( true ) } );
   done( scale, 131, kSet, { vlan( 5 ), flag( true ) } );
   EXPECT_EQ( walk( scale, "vlanInXlateHashTable" ), "6: true, 5: true" );
}

TEST_F( GenericIteratorTest, AnEntityMapYieldsTheEntitiesThemselves ) {
   for ( const char* const name : { "VlanRangeEntry", "VlanXlateScaleEntry" } ) {
      const std::string entryType = name;
      const Value dir = made( entryType + "Dir" );
      const Value eight = done( dir, 130, kSet, { intf( 8 ) } );
      const Value seven = done( dir, 130, kSet, { intf( 7 ) } );
      const auto at = Zel::zelIterate( dir, "v" + entryType.substr( 1 ) );
      EXPECT_EQ( text( at->key() ), "8" );
      EXPECT_EQ( at->object().entity(), eight.entity() );
      at->advance();
      EXPECT_EQ( text( at->key() ), "7" );
      EXPECT_EQ( at->object().entity(), seven.entity() );
      at->advance();
      EXPECT_FALSE( *at );
   }
}

TEST_F( GenericIteratorTest, AnEmptyCollectionIsAtItsEndAtOnce ) {
   const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" );
   EXPECT_FALSE( *at );
   EXPECT_FALSE( at->del() );
}

// Counts what it is told.
class Listener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "Listener";
   void onAttribute( Zel::AttributeId, const void* ) override { ++told; }
   unsigned told = 0;

 protected:
   explicit Listener( const Zel::Ptr< Zel::PtrInterface >& entity ) { zelNotifierIs( entity ); }
};

TEST_F( GenericIteratorTest, DeletingGoesThroughTheMutatorAndIsToldToReactors ) {
   schedule( 7 );
   schedule( 8 );
   const auto listener = Zel::newEntity< Listener >( schedule_.entity() );
   const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" );
   EXPECT_TRUE( at->del() );
   EXPECT_EQ( listener->told, 1u );
   EXPECT_EQ( waiting(), "8: true" );
   EXPECT_FALSE( at->del() );
   EXPECT_EQ( listener->told, 1u );
}

TEST_F( GenericIteratorTest, EveryCollectionDeletesWhatTheIteratorStandsOn ) {
   done( entry_, 131, kSet, { range( 10, 15, 'M' ) } );
   done( entry_, 131, kSet, { range( 20, 25, 'M' ) } );
   done( entry_, 132, kSet, { start( 10 ), flag( false ) } );
   const auto atRange = Zel::zelIterate( entry_, "vlanIdRange" );
   atRange->advance();
   EXPECT_TRUE( atRange->del() );
   EXPECT_EQ( walk( entry_, "vlanIdRange" ), "10: (10-15 M)" );
   // What it deletes is told by the place, not by the flag that stands there.
   EXPECT_TRUE( Zel::zelIterate( entry_, "revSortedStartVid" )->del() );
   EXPECT_EQ( walk( entry_, "revSortedStartVid" ), "" );

   const Value scale = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   done( scale, 131, kSet, { vlan( 5 ), flag( true ) } );
   done( scale, 132, kSet, { range( 5, 5, 'M' ), flag( false ) } );
   EXPECT_TRUE( Zel::zelIterate( scale, "vlanInXlateHashTable" )->del() );
   EXPECT_TRUE( Zel::zelIterate( scale, "vidRangeSorted" )->del() );
   EXPECT_EQ( walk( scale, "vlanInXlateHashTable" ) + walk( scale, "vidRangeSorted" ), "" );

   const Value dir = made( "VlanRangeEntryDir" );
   const Value held = done( dir, 130, kSet, { intf( 7 ) } );
   EXPECT_TRUE( Zel::zelIterate( dir, "vlanRangeEntry" )->del() );
   EXPECT_EQ( walk( dir, "vlanRangeEntry" ), "" );
   EXPECT_EQ( held.entity()->zelReferences(), 1 );
}

TEST_F( GenericIteratorTest, AnElementThatIsGoneIsStillReadAndLeftButNotDeletedAgain ) {
   for ( const unsigned low : { 10u, 20u, 30u } ) {
      done( entry_, 131, kSet, { range( low, low, 'M' ) } );
   }
   const auto at = Zel::zelIterate( entry_, "vlanIdRange" );
   at->advance();
   done( entry_, 131, kDelete, { vlan( 20 ) } );
   EXPECT_TRUE( *at );
   EXPECT_EQ( text( at->key() ), "20" );
   EXPECT_EQ( rangeText( at->object() ), "20-20 M" );
   EXPECT_FALSE( at->del() );
   done( entry_, 131, kSet, { range( 25, 25, 'N' ) } );
   at->advance();
   EXPECT_EQ( text( at->key() ), "25" );
}

TEST_F( GenericIteratorTest, AKeyThatCameAgainIsNotTheElementThatWent ) {
   schedule( 7 );
   const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" );
   unschedule( 7 );
   schedule( 7 );
   EXPECT_FALSE( at->del() );
   EXPECT_EQ( waiting(), "7: true" );
}

TEST_F( GenericIteratorTest, AWalkThatDeletesAndInsertsMeetsEachElementOnce ) {
   for ( std::uint64_t number = 1; number <= 20; ++number ) {
      schedule( number );
   }
   std::string met;
   for ( const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" ); *at; at->advance() ) {
      const auto number = at->key().as< Corvel::IntfId >().value();
      met += std::to_string( number ) + " ";
      EXPECT_TRUE( at->del() );
      unschedule( number + 2 );
      if ( number <= 5 ) {
         schedule( number + 100 );
      }
   }
   EXPECT_EQ( met, "1 2 5 6 9 10 13 14 17 18 101 102 105 " );
   EXPECT_EQ( waiting(), "" );
}

TEST_F( GenericIteratorTest, ItKeepsItsEntityAlive ) {
   schedule( 7 );
   const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" );
   EXPECT_EQ( schedule_.entity()->zelReferences(), 2 );
   schedule_ = Value();
   EXPECT_EQ( text( at->key() ), "7" );
   EXPECT_TRUE( at->del() );
   at->advance();
   EXPECT_FALSE( *at );
}

TEST_F( GenericIteratorTest, WhatIsNoCollectionIsATypeError ) {
   EXPECT_THROW( Zel::zelIterate( entry_, "intfId" ), Zel::TypeException );
   EXPECT_THROW( Zel::zelIterate( entry_, "absent" ), Zel::TypeException );
   EXPECT_THROW( Zel::zelIterate( Value( entry_.type(), nullptr ), "vlanIdRange" ),
                 Zel::TypeException );
}

using GenericIteratorDeathTest = GenericIteratorTest;

TEST_F( GenericIteratorDeathTest, ReadingAndAdvancingAtTheEndAbort ) {
   const auto at = Zel::zelIterate( schedule_, "vlanXlateSchedule" );
   EXPECT_DEATH( at->key(), "Zel/StdIterator:[0-9]+: .*Assertion `iter_' failed\\." );
   EXPECT_DEATH( at->object(), "Zel/StdIterator:[0-9]+: .*Assertion `iter_' failed\\." );
   EXPECT_DEATH( at->advance(), "Zel/StdIterator:[0-9]+: .*Assertion `iter_' failed\\." );
}

}   // namespace
