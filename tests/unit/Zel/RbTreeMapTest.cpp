// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/RbTreeMap.h"

#include <cstdint>
#include <new>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Zel/Collections.h"
#include "tests/unit/Zel/Twins.h"

namespace {

using TestCollections::Ascending;
using TestCollections::Backward;
using TestCollections::Descending;
using TestCollections::numberOf;

template < class Iterator >
std::string
shown( const Iterator& it ) {
   return it ? std::to_string( numberOf( it->key() ) ) : "end";
}

class RbTreeMapTest : public TestSupport::NoneLeftTest {
 protected:
   Ascending ascending_;
   Descending descending_;
};
using RbTreeMapDeathTest = RbTreeMapTest;

TEST_F( RbTreeMapTest, IsEmptyAtFirst ) {
   EXPECT_TRUE( ascending_.empty() );
   EXPECT_EQ( ascending_.size(), 0u );
   EXPECT_FALSE( ascending_.first() );
   EXPECT_FALSE( ascending_.findElementOrNext( 0 ) );
   ascending_.verify();
}

TEST_F( RbTreeMapTest, WalksInTheOrderOfItsKeys ) {
   for ( const std::uint32_t key : { 100u, 5u, 4000u } ) {
      ascending_.is( key, 1 );
      descending_.is( key, 1 );
   }
   EXPECT_EQ( ascending_.show(), "5=1 100=1 4000=1" );
   EXPECT_EQ( descending_.show(), "4000=1 100=1 5=1" );
}

TEST_F( RbTreeMapTest, OverwritingKeepsTheNodeAndTheSize ) {
   ascending_.is( 5, 1 );
   const auto* const node = ascending_.findNode( 5 );
   ascending_.is( 5, 2 );
   EXPECT_EQ( ascending_.findNode( 5 ), node );
   EXPECT_EQ( ascending_.show(), "5=2" );
   EXPECT_EQ( ascending_.changes(), 1u );
}

TEST_F( RbTreeMapTest, FindsWhatIsStoredAndNothingElse ) {
   ascending_.is( 5, 50 );
   ascending_.is( 7, 70 );
   EXPECT_EQ( ascending_.findNode( 7 )->value(), 70 );
   EXPECT_EQ( ascending_.findNode( 6 ), nullptr );
   EXPECT_EQ( shown( ascending_.findElement( 5 ) ), "5" );
   EXPECT_EQ( shown( ascending_.findElement( 8 ) ), "end" );
}

TEST_F( RbTreeMapTest, FindElementOrNextFollowsTheOrderOfTheCollection ) {
   for ( const std::uint32_t key : { 10u, 20u, 30u } ) {
      ascending_.is( key, 1 );
      descending_.is( key, 1 );
   }
   EXPECT_EQ( shown( ascending_.findElementOrNext( 20 ) ), "20" );
   EXPECT_EQ( shown( ascending_.findElementOrNext( 21 ) ), "30" );
   EXPECT_EQ( shown( ascending_.findElementOrNext( 1 ) ), "10" );
   EXPECT_EQ( shown( ascending_.findElementOrNext( 31 ) ), "end" );
   EXPECT_EQ( shown( descending_.findElementOrNext( Backward{ 20 } ) ), "20" );
   EXPECT_EQ( shown( descending_.findElementOrNext( Backward{ 19 } ) ), "10" );
   EXPECT_EQ( shown( descending_.findElementOrNext( Backward{ 99 } ) ), "30" );
   EXPECT_EQ( shown( descending_.findElementOrNext( Backward{ 9 } ) ), "end" );
}

TEST_F( RbTreeMapTest, DeletionReturnsTheNodeAndLeavesItToTheCaller ) {
   ascending_.is( 5, 50 );
   const auto gone = ascending_.del( 5u );
   ASSERT_TRUE( gone );
   EXPECT_EQ( gone->value(), 50 );
   EXPECT_EQ( gone->zelReferences(), 1 );
   EXPECT_FALSE( gone->linked() );
   EXPECT_TRUE( ascending_.empty() );
}

TEST_F( RbTreeMapTest, DeletionOfAnAbsentKeyReturnsNull ) {
   ascending_.is( 5, 50 );
   EXPECT_FALSE( ascending_.del( 6u ) );
   EXPECT_EQ( ascending_.size(), 1u );
   EXPECT_EQ( ascending_.changes(), 1u );
}

TEST_F( RbTreeMapTest, ANodeTakenOutMayBeInsertedAgain ) {
   ascending_.is( 5, 50 );
   ascending_.is( 6, 60 );
   ascending_.insert( ascending_.del( 5u ) );
   EXPECT_EQ( ascending_.show(), "5=50 6=60" );
   ascending_.verify();
}

TEST_F( RbTreeMapTest, CountsItsChanges ) {
   ascending_.is( 1, 1 );
   ascending_.is( 2, 1 );
   ascending_.erase( 1 );
   EXPECT_EQ( ascending_.changes(), 3u );
   ascending_.is( 3, 1 );
   ascending_.deleteAll();
   EXPECT_EQ( ascending_.changes(), 6u );
}

TEST_F( RbTreeMapTest, DeletingAllLeavesNothingAndTheMapUsable ) {
   for ( std::uint32_t key = 0; key < 1000; ++key ) {
      ascending_.is( key * 7919 % 1000, 1 );
   }
   ascending_.deleteAll();
   EXPECT_TRUE( ascending_.empty() );
   ascending_.verify();
   EXPECT_EQ( Zel::allocationCount( "TestCollections::KeyedNode" ).live, 0 );
   ascending_.is( 3, 30 );
   EXPECT_EQ( ascending_.show(), "3=30" );
}

TEST_F( RbTreeMapTest, ANodeThatOutlivesDeletingAllStandsAlone ) {
   for ( std::uint32_t key = 0; key < 50; ++key ) {
      ascending_.is( key, 1 );
   }
   const Zel::Ptr< Ascending::Node > held( ascending_.findNode( 25 ) );
   ascending_.deleteAll();
   EXPECT_FALSE( held->linked() );
   EXPECT_EQ( Zel::allocationCount( "TestCollections::KeyedNode" ).live, 1 );
   ascending_.insert( held );
   ascending_.verify( 1 );
}

// A long chain of nodes must not be released by a long chain of calls.
TEST_F( RbTreeMapTest, HoldsAndReleasesAHundredThousandElements ) {
   for ( std::uint32_t key = 0; key < 100000; ++key ) {
      ascending_.is( key, 1 );
   }
   ascending_.verify();
   EXPECT_EQ( ascending_.size(), 100000u );
   ascending_.deleteAll();
}

TEST_F( RbTreeMapTest, StaysBalancedWhenBuiltAndTakenDownInOrder ) {
   for ( std::uint32_t key = 0; key < 300; ++key ) {
      ascending_.is( key, 1 );
      ascending_.verify();
   }
   for ( std::uint32_t key = 0; key < 300; ++key ) {
      ascending_.erase( key );
      ascending_.verify();
   }
   for ( std::uint32_t key = 300; key-- > 0; ) {
      ascending_.is( key, 1 );
      ascending_.verify();
   }
   for ( std::uint32_t key = 300; key-- > 0; ) {
      ascending_.erase( key );
      ascending_.verify();
   }
}

TEST_F( RbTreeMapTest, StaysWholeUnderRandomEdits ) {
   const std::uint64_t seed = TestSupport::testSeed();
   SCOPED_TRACE( TestSupport::seedNote( seed ) );
   std::mt19937_64 random( seed );
   for ( int step = 0; step < 3000; ++step ) {
      const auto key = static_cast< std::uint32_t >( random() % 100 );
      if ( random() % 2 == 0 ) {
         ascending_.is( key, step );
      } else {
         ascending_.erase( key );
      }
      ascending_.verify();
   }
}

// Refilling: as deleting everything and inserting the keys in order.
class RbTreeMapRefillTest : public TestSupport::NoneLeftTest {
 protected:
   struct Map : Zel::RbTreeMap< TestCollections::RefillNode > {
      void fill( const std::vector< std::uint32_t >& keys ) {
         refill(
            keys, nodes, [] { return Zel::newEntity< TestCollections::RefillNode >( 0u ); },
            []( TestCollections::RefillNode& node, std::uint32_t key ) { node.keyIs( key ); } );
         verify();
      }
      std::string show() const {
         std::string text;
         for ( const auto& node : *this ) {
            text += ( text.empty() ? "" : " " ) + std::to_string( node.key() );
         }
         return text;
      }

      std::vector< Node* > nodes;
   };

   static std::vector< std::uint32_t > upTo( std::uint32_t count ) {
      std::vector< std::uint32_t > keys( count );
      std::iota( keys.begin(), keys.end(), 0u );
      return keys;
   }
   static std::int64_t made() {
      return Zel::allocationCount( "TestCollections::RefillNode" ).total;
   }

   Map map_;
};

TEST_F( RbTreeMapRefillTest, GrowsShrinksAndStaysBalanced ) {
   for ( const std::uint32_t count : { 0u, 1u, 2u, 7u, 300u, 299u, 5u, 301u, 0u, 64u } ) {
      map_.fill( upTo( count ) );
      ASSERT_EQ( map_.size(), count );
      for ( std::uint32_t key = 0; key < count; ++key ) {
         ASSERT_NE( map_.findNode( key ), nullptr ) << key;
      }
   }
}

TEST_F( RbTreeMapRefillTest, UsesTheElementsThatNobodyElseHolds ) {
   map_.fill( { 1, 2, 3 } );
   const std::int64_t before = made();
   map_.fill( { 4, 5, 6 } );
   EXPECT_EQ( map_.show(), "4 5 6" );
   EXPECT_EQ( made(), before );
}

TEST_F( RbTreeMapRefillTest, LeavesAHeldElementWhatItWas ) {
   map_.fill( { 1, 2, 3 } );
   const auto it = map_.findElement( 2 );
   map_.fill( { 4, 5, 6, 7 } );
   EXPECT_EQ( map_.show(), "4 5 6 7" );
   EXPECT_EQ( it->key(), 2u );
   EXPECT_FALSE( it->linked() );
}

TEST_F( RbTreeMapRefillTest, AnIteratorThatStoodOnAnElementGoesOnBehindItsKey ) {
   map_.fill( { 1, 2, 3 } );
   auto it = map_.findElement( 2 );
   map_.fill( { 1, 2, 5 } );
   EXPECT_EQ( ( ++it )->key(), 5u );
   EXPECT_FALSE( ++it );
}

TEST_F( RbTreeMapRefillTest, CountsEveryElementAsDeletedAndInserted ) {
   map_.fill( { 1, 2, 3 } );
   EXPECT_EQ( map_.changes(), 3u );
   const auto held = map_.findElement( 1 );
   map_.refill(
      std::vector< std::uint32_t >{ 1, 2 }, map_.nodes,
      [] { return Zel::newEntity< TestCollections::RefillNode >( 0u ); },
      []( TestCollections::RefillNode& node, std::uint32_t key ) { node.keyIs( key ); } );
   EXPECT_EQ( map_.changes(), 3u + 3u + 2u );
}

TEST_F( RbTreeMapRefillTest, ChangesNothingWhenAnElementCannotBeMade ) {
   map_.fill( { 1, 2, 3 } );
   const std::uint32_t changes = map_.changes();
   int left = 1;
   EXPECT_THROW(
      map_.refill(
         upTo( 10 ), map_.nodes,
         [ &left ] {
            if ( left-- == 0 ) {
               throw std::bad_alloc();
            }
            return Zel::newEntity< TestCollections::RefillNode >( 0u );
         },
         []( TestCollections::RefillNode& node, std::uint32_t key ) { node.keyIs( key ); } ),
      std::bad_alloc );
   EXPECT_EQ( map_.show(), "1 2 3" );
   EXPECT_EQ( map_.changes(), changes );
   map_.verify();
}

TEST_F( RbTreeMapDeathTest, ANodeThatLosesTheMapsReferenceAborts ) {
   ascending_.is( 5, 1 );
   EXPECT_DEATH( ascending_.first()->zelReferenceDec(),
                 "Zel/RbTree:[0-9]+: .*~RbNode.*: Assertion `!linked\\(\\)' failed\\." );
}

TEST_F( RbTreeMapDeathTest, InsertionOfAStoredKeyAborts ) {
   ascending_.is( 5, 50 );
   EXPECT_DEATH( ascending_.insert( Zel::newEntity< Ascending::Node >( 5u, 51 ) ),
                 "Zel/RbTreeMap:[0-9]+: .*insert.*: Assertion "
                 "`!\\( node->key\\(\\) == stored \\)' failed\\." );
}

TEST_F( RbTreeMapDeathTest, LinkingAtATakenPlaceAborts ) {
   using Zel::RbTree;
   RbTree tree;
   const auto link = [ &tree ] {
      tree.linkAt( nullptr, RbTree::Side::Left,
                   Zel::newEntity< TestCollections::RefillNode >( 1u ) );
   };
   link();
   EXPECT_DEATH( link(), "Zel/RbTree:[0-9]+: .*linkAt.*: Assertion `!place' failed\\." );
   tree.clear();
}

TEST_F( RbTreeMapDeathTest, UnlinkingANodeThatIsGoneAborts ) {
   ascending_.is( 5, 50 );
   const auto gone = ascending_.del( 5u );
   EXPECT_DEATH( ascending_.unlink( *gone ),
                 "Zel/RbTree:[0-9]+: .*unlink.*: Assertion `node.linked\\(\\)' failed\\." );
}

TEST_F( RbTreeMapDeathTest, InsertionOfANodeThatStandsInAnotherMapAborts ) {
   Ascending other;
   other.is( 5, 50 );
   const Zel::Ptr< Ascending::Node > stored( other.findNode( 5 ) );
   EXPECT_DEATH( ascending_.insert( stored ),
                 "Zel/RbTree:[0-9]+: .*linkAt.*: Assertion `!node->linked\\(\\)' failed\\." );
}

TEST_F( RbTreeMapDeathTest, VerifyTellsAReferenceTooMany ) {
   ascending_.is( 5, 50 );
   const Zel::Ptr< Ascending::Node > held( ascending_.findNode( 5 ) );
   EXPECT_DEATH( ascending_.verify(), "Zel/RbTree:[0-9]+: .*verify.*: Assertion "
                                      "`walk.references == " );
}

using TestCollections::Twin;
using TestCollections::TwinMap;

class TwinTest : public TestSupport::NoneLeftTest {
 protected:
   // "5a 5b 7x": adds one key after the other.
   void given( const std::string& keys ) {
      for ( std::size_t i = 0; i < keys.size(); i += 3 ) {
         map_.add( key( keys.substr( i, 2 ) ) );
      }
      map_.verify();
   }
   static Twin key( const std::string& name ) {
      return { static_cast< std::uint32_t >( name[ 0 ] - '0' ), name[ 1 ] };
   }
   TwinMap::Iterator at( const std::string& name ) const { return map_.findElement( key( name ) ); }
   static std::string shown( const TwinMap::Iterator& it ) {
      return it ? TwinMap::name( it->key() ) : "end";
   }

   TwinMap map_;
};
using TwinDeathTest = TwinTest;

TEST_F( TwinTest, StandTogetherInOrderOfInsertion ) {
   given( "5b 7x 5a 3z 5c" );
   EXPECT_EQ( map_.show(), "3z 5b 5a 5c 7x" );
}

TEST_F( TwinTest, AreToldApartByEquality ) {
   given( "5a 5b" );
   EXPECT_EQ( shown( at( "5a" ) ), "5a" );
   EXPECT_EQ( shown( at( "5b" ) ), "5b" );
   EXPECT_EQ( shown( at( "5c" ) ), "end" );
}

TEST_F( TwinTest, AreDeletedExactly ) {
   given( "5a 5b 5c" );
   EXPECT_TRUE( map_.del( key( "5b" ) ) );
   EXPECT_FALSE( map_.del( key( "5b" ) ) );
   EXPECT_EQ( map_.show(), "5a 5c" );
}

TEST_F( TwinTest, FindElementOrNextGivesTheEqualOne ) {
   given( "5a 5b 7x" );
   EXPECT_EQ( shown( map_.findElementOrNext( key( "5b" ) ) ), "5b" );
}

TEST_F( TwinTest, FindElementOrNextPassesTheTwinsOfAnAbsentKey ) {
   given( "5a 5b 7x" );
   EXPECT_EQ( shown( map_.findElementOrNext( key( "5z" ) ) ), "7x" );
   EXPECT_EQ( shown( map_.findElementOrNext( key( "7z" ) ) ), "end" );
   EXPECT_EQ( shown( map_.findElementOrNext( key( "4z" ) ) ), "5a" );
}

TEST_F( TwinTest, AreFoundAndVisitedHoweverTheTreeTurns ) {
   for ( std::uint32_t number = 0; number < 10; ++number ) {
      for ( char tag = 'a'; tag <= 'z'; ++tag ) {
         map_.add( { ( number * 7 + static_cast< std::uint32_t >( tag ) ) % 10, tag } );
         map_.verify();
      }
   }
   EXPECT_EQ( map_.size(), 260u );
}

TEST_F( TwinTest, AnIteratorOnADeletedTwinAdvancesToTheNextTwin ) {
   given( "5a 5b 5c 7x" );
   auto it = at( "5b" );
   map_.del( it );
   EXPECT_EQ( shown( it ), "5b" );
   EXPECT_EQ( shown( ++it ), "5c" );
   EXPECT_EQ( shown( ++it ), "7x" );
}

TEST_F( TwinTest, AnIteratorOnADeletedTwinDoesNotGoBackToEarlierTwins ) {
   given( "5a 5b 7x" );
   auto it = at( "5b" );
   map_.del( it );
   EXPECT_EQ( shown( ++it ), "7x" );
}

TEST_F( TwinTest, AnIteratorOnADeletedTwinMeetsATwinThatCameLater ) {
   given( "5a 5b" );
   auto it = at( "5a" );
   map_.del( it );
   given( "5c" );
   EXPECT_EQ( shown( ++it ), "5b" );
   EXPECT_EQ( shown( ++it ), "5c" );
}

TEST_F( TwinTest, AnIteratorOnADeletedTwinAdvancesToALargerKeyThatCameEarlier ) {
   given( "7x 5a" );
   auto it = at( "5a" );
   map_.del( it );
   EXPECT_EQ( shown( ++it ), "7x" );
}

TEST_F( TwinTest, ARefillMakesItsTwinsArriveInItsOrder ) {
   given( "5a 5b" );
   map_.fill( { key( "5c" ), key( "5d" ), key( "5e" ) } );
   auto it = at( "5c" );
   map_.del( it );
   EXPECT_EQ( shown( ++it ), "5d" );
   map_.del( it );
   EXPECT_EQ( shown( ++it ), "5e" );
}

TEST_F( TwinTest, DeletingEachTwinDuringTheWalkMeetsEveryOne ) {
   given( "5a 5b 5c 5d 5e" );
   std::string met;
   for ( auto it = map_.first(); it; ++it ) {
      met += TwinMap::name( it->key() );
      map_.del( it );
   }
   EXPECT_EQ( met, "5a5b5c5d5e" );
   EXPECT_TRUE( map_.empty() );
}

TEST_F( TwinTest, ATwinThatComesAgainStandsBehindTheOthers ) {
   given( "5a 5b 5c" );
   map_.del( key( "5a" ) );
   given( "5a" );
   EXPECT_EQ( map_.show(), "5b 5c 5a" );
}

// A walk that replaces the element it stands on would not end otherwise.
TEST_F( TwinTest, AKeyThatComesAgainUnderItsIteratorIsNotMetTwice ) {
   given( "5a 7x" );
   auto it = at( "5a" );
   map_.del( it );
   given( "5a" );
   EXPECT_EQ( shown( ++it ), "7x" );
}

TEST_F( TwinDeathTest, InsertionOfAStoredTwinOnTheWayDownAborts ) {
   given( "5a" );
   EXPECT_DEATH( map_.add( key( "5a" ) ), "Zel/RbTreeMap:[0-9]+: .*insert.*: Assertion" );
}

// The first of three twins stands to the left of the root, where the way to the place behind
// them does not lead.
TEST_F( TwinDeathTest, InsertionOfAStoredTwinOffTheWayDownAborts ) {
   given( "5a 5b 5c" );
   EXPECT_DEATH( map_.add( key( "5a" ) ), "Zel/RbTreeMap:[0-9]+: .*insert.*: Assertion" );
}

}   // namespace
