// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What two collections of small keys share: pairs, and what is remembered of the last search.

#include "Zel/KeyIndex.h"

#include <cstdint>
#include <map>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/SmallKeyMap.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/OperatorNew.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Small;
using Zel::KeyIndex;
using Zel::KeyPlace;

class MovableNode : public Zel::SmallKeyNode {
 public:
   static constexpr char zelTypeName[] = "MovableNode";
   Small key() const { return key_; }
   void keyIs( Small key ) { key_ = key; }

 protected:
   explicit MovableNode( std::uint32_t key ) : key_{ key } {}

 private:
   Small key_;
};

class KeyIndexTest : public TestSupport::NoneLeftTest {
 protected:
   using First = Zel::SmallKeyMap< MovableNode, KeyIndex::kFirst >;
   using Second = Zel::SmallKeyMap< MovableNode, KeyIndex::kSecond, Zel::KeyOrder::Descending >;

   static Zel::Ptr< MovableNode > node( std::uint32_t key ) {
      return Zel::newEntity< MovableNode >( key );
   }
   void insertPair( std::uint32_t key ) {
      index_.insertPair( static_cast< KeyPlace >( key ), *node( key ), *node( key ) );
   }
   /// Pairs enough to stand in pages, from `key` on, two apart.
   void insertMany( std::uint32_t key ) {
      for ( std::uint32_t i = 0; i <= KeyIndex::kMostFew; ++i ) {
         insertPair( key + 2 * i );
      }
   }
   static std::string text( KeyIndex::At at ) {
      return at.value ? std::to_string( at.place ) : "-";
   }
   std::string around( std::uint32_t place ) const {
      const KeyIndex::Around& around = index_.around( static_cast< KeyPlace >( place ) );
      return text( around.below ) + " " + text( around.above );
   }
   KeyIndex::At below( std::uint32_t place ) const {
      return index_.around( static_cast< KeyPlace >( place ) ).below;
   }
   void movePair( KeyIndex::At from, std::uint32_t to ) {
      const KeyIndex::Pair nodes = *from.value;
      index_.movePair( from, static_cast< KeyPlace >( to ) );
      for ( Zel::SmallKeyNode* moved : nodes ) {
         static_cast< MovableNode* >( moved )->keyIs( { to } );
      }
   }
   std::string changes() const {
      return std::to_string( first_.changes() ) + ", " + std::to_string( second_.changes() );
   }
   void verify() const {
      first_.verify();
      second_.verify();
   }

   KeyIndex index_;
   First first_{ index_ };
   Second second_{ index_ };
};
using KeyIndexDeathTest = KeyIndexTest;

TEST_F( KeyIndexTest, APairStandsInBothCollections ) {
   insertPair( 5 );
   insertPair( 9 );
   EXPECT_EQ( first_.first()->key().number, 5u );
   EXPECT_EQ( second_.first()->key().number, 9u );
   EXPECT_NE( first_.findNode( { 5 } ), second_.findNode( { 5 } ) );
   verify();
}

TEST_F( KeyIndexTest, IsPairedWhileBothCollectionsHaveTheSameKeys ) {
   EXPECT_TRUE( index_.paired() );
   first_.insert( node( 5 ) );
   EXPECT_FALSE( index_.paired() );
   second_.insert( node( 5 ) );
   EXPECT_TRUE( index_.paired() );
   first_.del( Small{ 5 } );
   EXPECT_FALSE( index_.paired() );
   second_.insert( node( 7 ) );
   second_.deleteAll();
   EXPECT_TRUE( index_.paired() );
}

TEST_F( KeyIndexTest, AWalkPassesOverWhatTheOtherCollectionAloneHolds ) {
   first_.insert( node( 10 ) );
   second_.insert( node( 20 ) );
   first_.insert( node( 30 ) );
   EXPECT_EQ( first_.findElementOrNext( { 11 } )->key().number, 30u );
   EXPECT_EQ( second_.findElementOrNext( { 40 } )->key().number, 20u );
   EXPECT_FALSE( second_.findElementOrNext( { 19 } ) );
   verify();
}

TEST_F( KeyIndexTest, AWalkDownPassesOverAllToTheLowestPlace ) {
   second_.insert( node( 0 ) );
   first_.insert( node( 1 ) );
   EXPECT_EQ( second_.findElementOrNext( { 1 } )->key().number, 0u );
   second_.del( Small{ 0 } );
   first_.insert( node( 0 ) );
   EXPECT_FALSE( second_.findElementOrNext( { 1 } ) );
   insertMany( 20000 );
   EXPECT_FALSE( second_.findElementOrNext( { 1 } ) );
}

TEST_F( KeyIndexTest, TheArrayDoublesWhenItIsFull ) {
   std::vector< Zel::Ptr< MovableNode > > nodes;
   for ( std::uint32_t i = 0; i < 2 * KeyIndex::kMostFew; ++i ) {
      nodes.push_back( node( i / 2 ) );
   }
   const std::uint64_t before = TestSupport::newRequests();
   for ( std::uint32_t i = 0; i < KeyIndex::kMostFew; ++i ) {
      index_.insertPair( static_cast< KeyPlace >( i ), *nodes[ 2 * i ], *nodes[ 2 * i + 1 ] );
   }
   EXPECT_EQ( TestSupport::newRequests() - before, 8u );   // room for 4, 8, ... 512
   first_.deleteAll();
   second_.deleteAll();
}

// The array is made anew then, and no other deletion takes memory.
TEST_F( KeyIndexTest, ThePagesGoWhenHalfOfTheMostAreLeft ) {
   insertMany( 0 );
   for ( std::uint32_t left = KeyIndex::kMostFew; left > 0; --left ) {
      const std::uint64_t before = TestSupport::newRequests();
      index_.takePair( below( 65535 ) );
      const bool asked = TestSupport::newRequests() != before;
      ASSERT_EQ( asked, left == KeyIndex::kMostFew / 2 ) << left;
   }
}

TEST_F( KeyIndexTest, AroundTellsTheNearestPlaces ) {
   EXPECT_EQ( around( 7 ), "- -" );
   insertPair( 5 );
   insertPair( 9 );
   EXPECT_EQ( around( 4 ), "- 5" );
   EXPECT_EQ( around( 5 ), "5 9" );
   EXPECT_EQ( around( 8 ), "5 9" );
   EXPECT_EQ( around( 9 ), "9 -" );
   EXPECT_EQ( around( 65535 ), "9 -" );
}

TEST_F( KeyIndexTest, AroundTellsTheNearestPlacesAcrossPages ) {
   insertMany( 20000 );
   insertPair( 0 );
   insertPair( 4095 );
   insertPair( 65535 );
   EXPECT_EQ( around( 0 ), "0 4095" );
   EXPECT_EQ( around( 63 ), "0 4095" );
   EXPECT_EQ( around( 4095 ), "4095 20000" );
   EXPECT_EQ( around( 19999 ), "4095 20000" );
   EXPECT_EQ( around( 20001 ), "20000 20002" );
   EXPECT_EQ( around( 40000 ), std::to_string( 20000 + 2 * KeyIndex::kMostFew ) + " 65535" );
   EXPECT_EQ( around( 65535 ), "65535 -" );
}

TEST_F( KeyIndexTest, TheNextPlaceIsFoundInTheFirstPageBehind4095 ) {
   insertMany( 0 );
   insertPair( 4097 );
   EXPECT_EQ( text( index_.atOrAbove( KeyIndex::kFirst, 4000 ) ), "4097" );
}

TEST_F( KeyIndexTest, AMovedPairStandsAtItsNewPlace ) {
   for ( const bool many : { false, true } ) {
      if ( many ) {
         insertMany( 20000 );
      }
      insertPair( 63 );
      movePair( below( 63 ), 64 );   // into another page
      EXPECT_EQ( index_.find( KeyIndex::kFirst, 63 ), nullptr );
      EXPECT_NE( index_.find( KeyIndex::kFirst, 64 ), nullptr );
      EXPECT_EQ( text( below( 64 ) ), "64" );
      EXPECT_EQ( text( below( 63 ) ), "-" );
      index_.takePair( below( 64 ) );
   }
}

TEST_F( KeyIndexTest, CountsAMoveAsADeletionAndAnInsertion ) {
   insertPair( 5 );
   EXPECT_EQ( changes(), "1, 1" );
   movePair( below( 5 ), 6 );
   EXPECT_EQ( changes(), "3, 3" );
   index_.replaced( KeyIndex::kFirst );
   EXPECT_EQ( changes(), "5, 3" );
   index_.takePair( below( 6 ) );
   EXPECT_EQ( changes(), "6, 4" );
}

TEST_F( KeyIndexTest, ATakenPairGoesUnlessSomebodyHoldsIt ) {
   insertPair( 5 );
   const Zel::Ptr< MovableNode > held( first_.findNode( { 5 } ) );
   index_.takePair( below( 5 ) );
   EXPECT_FALSE( held->linked() );
   EXPECT_EQ( held->zelReferences(), 1 );
   EXPECT_TRUE( first_.empty() );
   EXPECT_TRUE( second_.empty() );
}

TEST_F( KeyIndexTest, WhatStandsInItGoesWithIt ) {
   const Zel::Ptr< MovableNode > a = node( 5 );
   const Zel::Ptr< MovableNode > b = node( 5 );
   {
      KeyIndex withoutMaps;
      withoutMaps.insertPair( 5, *a, *b );
      EXPECT_EQ( a->zelReferences(), 2 );
   }
   EXPECT_FALSE( a->linked() || b->linked() );
   EXPECT_EQ( a->zelReferences(), 1 );
   EXPECT_EQ( b->zelReferences(), 1 );
}

TEST_F( KeyIndexTest, AMoveWithoutMemoryForItsPageChangesNothing ) {
   insertMany( 20000 );
   insertPair( 63 );
   const KeyIndex::At at = below( 63 );
   {
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      EXPECT_THROW( index_.movePair( at, 64 ), std::bad_alloc );
   }
   EXPECT_EQ( text( below( 64 ) ), "63" );
   verify();
}

TEST_F( KeyIndexTest, AnInsertionWithoutMemoryChangesNothing ) {
   for ( std::uint32_t key = 0; key < 2 * KeyIndex::kMostFew; ++key ) {
      const auto a = node( 100 * key );
      const auto b = node( 100 * key );
      const auto place = static_cast< KeyPlace >( 100 * key );
      try {
         const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
         index_.insertPair( place, *a, *b );
      } catch ( const std::bad_alloc& ) {
         ASSERT_FALSE( a->linked() || b->linked() );
         ASSERT_EQ( first_.size(), key );
         verify();
         index_.insertPair( place, *a, *b );
      }
   }
   EXPECT_EQ( first_.size(), 2 * KeyIndex::kMostFew );
}

TEST_F( KeyIndexDeathTest, InsertionOfAPairThatStandsElsewhereAborts ) {
   insertPair( 5 );
   const Zel::Ptr< MovableNode > stored( first_.findNode( { 5 } ) );
   EXPECT_DEATH( index_.insertPair( 6, *stored, *node( 6 ) ),
                 "Zel/KeyIndex:[0-9]+: .*insertPair.*: Assertion `!first.linked\\(\\) && "
                 "!second.linked\\(\\)' failed\\." );
}

// Every way of changing the index between searches, with few pairs and with many, against a
// std::map: what is remembered of the last search must never show.
TEST_F( KeyIndexTest, FindsWhatAMapFindsWhateverChangesBetween ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   std::map< std::uint32_t, int > stored;
   const auto expected = [ & ]( std::uint32_t place ) {
      const auto above = stored.upper_bound( place );
      return ( above == stored.begin() ? "-" : std::to_string( std::prev( above )->first ) ) + " " +
             ( above == stored.end() ? "-" : std::to_string( above->first ) );
   };
   std::uint32_t near = 0;
   bool grows = true;
   for ( int step = 0; step < 60000; ++step ) {
      grows = stored.size() > 2 * KeyIndex::kMostFew ? false : stored.empty() ? true : grows;
      near = random() % 4 == 0 ? static_cast< std::uint32_t >( random() % 4096 )
                               : ( near + static_cast< std::uint32_t >( random() % 3 ) ) % 4096;
      const auto place = static_cast< KeyPlace >( near );
      ASSERT_EQ( around( near ), expected( near ) ) << step;
      const KeyIndex::Around found = index_.around( place );
      const bool isFree = found.below.place != near;
      switch ( random() % ( grows ? 5 : 8 ) ) {
      case 0:
      case 1:
         if ( isFree ) {
            insertPair( near );
            stored[ near ] = 1;
         }
         break;
      case 2:
         if ( isFree ) {
            first_.insert( node( near ) );
            second_.insert( node( near ) );
            stored[ near ] = 1;
         }
         break;
      case 3:   // up or down to the place, where nothing stands between
         if ( isFree && found.below.value && random() % 2 == 0 ) {
            stored.erase( found.below.place );
            movePair( found.below, place );
            stored[ near ] = 1;
         } else if ( isFree && found.above.value ) {
            stored.erase( found.above.place );
            movePair( found.above, place );
            stored[ near ] = 1;
         }
         break;
      case 4:
         index_.reserve( place );
         break;
      case 5:
      case 6:
         if ( found.below.value ) {
            stored.erase( found.below.place );
            index_.takePair( found.below );
         }
         break;
      default:
         if ( found.above.value ) {
            const Small key{ found.above.place };
            stored.erase( found.above.place );
            first_.del( key );
            second_.del( key );
         }
         break;
      }
      ASSERT_TRUE( index_.paired() );
      if ( step % 64 == 0 ) {
         verify();
         ASSERT_EQ( first_.size(), stored.size() );
      }
   }
}

}   // namespace
