// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The rows of the table in Zel/StdIterator.h, on an ordered collection and a hashed one.

#include "Zel/StdIterator.h"

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeCollections.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Hashed;
using TestCollections::Ranges;

// Speaks of elements by their place in the walk, 0 first, whatever key stands for a place.
template < class CollectionType >
class StdIteratorTest : public TestSupport::NoneLeftTest {
 protected:
   using Iterator = typename CollectionType::Iterator;
   using Key = typename CollectionType::Key;

   static std::uint32_t keyOf( std::uint32_t place ) { return 1000 + place; }
   static std::uint32_t placeOf( Key key ) { return CollectionType::numberOf( key ) - 1000; }

   // Elements at places 0 to count-1, with their tenfold as value.
   void fill( std::uint32_t count ) {
      for ( std::uint32_t place = 0; place < count; ++place ) {
         add( place );
      }
   }
   void add( std::uint32_t place ) {
      collection_.is( keyOf( place ), static_cast< int >( 10 * place ) );
   }
   void del( std::uint32_t place ) {
      ASSERT_TRUE( collection_.erase( keyOf( place ) ).has_value() );
   }
   Iterator at( std::uint32_t place ) const {
      return collection_.findElement( CollectionType::keyOf( keyOf( place ) ) );
   }

   // "PLACE=VALUE", or "end".
   static std::string shown( const Iterator& it ) {
      return it ? std::to_string( placeOf( it->key() ) ) + "=" +
                     std::to_string( CollectionType::valueIn( it->value() ) )
                : "end";
   }

   CollectionType collection_;
};

using AllCollections = testing::Types< Ranges, Hashed >;
TYPED_TEST_SUITE( StdIteratorTest, AllCollections );

TYPED_TEST( StdIteratorTest, OnAStoredElementGivesTheElement ) {
   this->fill( 3 );
   const auto it = this->at( 1 );
   EXPECT_TRUE( it );
   EXPECT_EQ( this->placeOf( ( *it ).key() ), 1u );
   EXPECT_EQ( TypeParam::valueIn( it->value() ), 10 );
}

TYPED_TEST( StdIteratorTest, OnAStoredElementAdvancesToTheNext ) {
   this->fill( 3 );
   auto it = this->collection_.first();
   EXPECT_EQ( this->shown( it ), "0=0" );
   EXPECT_EQ( this->shown( ++it ), "1=10" );
   EXPECT_EQ( this->shown( ++it ), "2=20" );
   EXPECT_EQ( this->shown( ++it ), "end" );
}

TYPED_TEST( StdIteratorTest, OnAStoredElementAdvancesToOneThatCameBehindIt ) {
   this->fill( 2 );
   auto it = this->at( 1 );
   this->add( 2 );
   EXPECT_EQ( this->shown( ++it ), "2=20" );
}

TYPED_TEST( StdIteratorTest, OnAStoredElementAdvancesOverOnesThatWentBehindIt ) {
   this->fill( 5 );
   auto it = this->at( 1 );
   this->del( 2 );
   this->del( 3 );
   EXPECT_EQ( this->shown( ++it ), "4=40" );
}

TYPED_TEST( StdIteratorTest, OnAStoredElementIsUnmovedByTheDeletionOfEarlierOnes ) {
   this->fill( 5 );
   auto it = this->at( 3 );
   this->del( 0 );
   this->del( 2 );
   EXPECT_EQ( this->shown( it ), "3=30" );
   EXPECT_EQ( this->shown( ++it ), "4=40" );
}

TYPED_TEST( StdIteratorTest, OnAStoredElementShowsAValueWrittenLater ) {
   this->fill( 3 );
   const auto it = this->at( 1 );
   this->collection_.is( this->keyOf( 1 ), 77 );
   EXPECT_EQ( this->shown( it ), "1=77" );
}

TYPED_TEST( StdIteratorTest, OnTheLastElementAdvancesToTheEnd ) {
   this->fill( 2 );
   auto it = this->at( 1 );
   ++it;
   EXPECT_FALSE( it );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementGivesTheElementAsItWas ) {
   this->fill( 3 );
   const auto it = this->at( 1 );
   this->del( 1 );
   EXPECT_TRUE( it );
   EXPECT_FALSE( it.linked() );
   EXPECT_EQ( this->shown( it ), "1=10" );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementAdvancesToWhatFollowsWhereItStood ) {
   this->fill( 4 );
   auto it = this->at( 1 );
   this->del( 1 );
   EXPECT_EQ( this->shown( ++it ), "2=20" );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementAdvancesOverOthersThatAreGone ) {
   this->fill( 6 );
   auto it = this->at( 1 );
   this->del( 2 );
   this->del( 1 );
   this->del( 4 );
   this->del( 3 );
   EXPECT_EQ( this->shown( ++it ), "5=50" );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementAdvancesToTheEndWhenNothingFollows ) {
   this->fill( 3 );
   auto it = this->at( 2 );
   this->del( 2 );
   EXPECT_EQ( this->shown( ++it ), "end" );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementAdvancesToOneThatCameBehindIt ) {
   this->fill( 2 );
   auto it = this->at( 1 );
   this->del( 1 );
   this->add( 5 );
   EXPECT_EQ( this->shown( ++it ), "5=50" );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementKeepsTheOldOneWhenItsKeyComesAgain ) {
   this->fill( 3 );
   const auto it = this->at( 1 );
   this->del( 1 );
   this->collection_.is( this->keyOf( 1 ), 77 );
   EXPECT_EQ( this->shown( it ), "1=10" );
   EXPECT_FALSE( it == this->at( 1 ) );
}

TYPED_TEST( StdIteratorTest, OnAGoneElementOfAnEmptiedCollectionAdvancesToTheEnd ) {
   this->fill( 5 );
   auto it = this->at( 2 );
   this->collection_.deleteAll();
   EXPECT_EQ( this->shown( it ), "2=20" );
   EXPECT_EQ( this->shown( ++it ), "end" );
}

TYPED_TEST( StdIteratorTest, AtTheEndIsFalseAndEqualsTheSentinel ) {
   const typename TypeParam::Iterator fromNothing;
   EXPECT_FALSE( fromNothing );
   EXPECT_TRUE( fromNothing == this->collection_.end() );
   EXPECT_TRUE( fromNothing == this->collection_.first() );
   this->fill( 1 );
   EXPECT_FALSE( this->collection_.first() == this->collection_.end() );
   EXPECT_FALSE( this->at( 7 ) );
}

TYPED_TEST( StdIteratorTest, EqualsAnotherOnTheSameElementOnly ) {
   this->fill( 2 );
   EXPECT_TRUE( this->at( 0 ) == this->at( 0 ) );
   EXPECT_FALSE( this->at( 0 ) == this->at( 1 ) );
   EXPECT_FALSE( this->at( 0 ) == typename TypeParam::Iterator() );
}

TYPED_TEST( StdIteratorTest, ACopyWalksOnItsOwn ) {
   this->fill( 3 );
   auto it = this->at( 0 );
   const auto copy = it;
   ++it;
   EXPECT_EQ( this->shown( copy ), "0=0" );
   EXPECT_EQ( this->shown( it ), "1=10" );
}

TYPED_TEST( StdIteratorTest, SeveralMayStandOnOneGoneElement ) {
   this->fill( 4 );
   auto one = this->at( 1 );
   auto other = this->at( 1 );
   this->del( 1 );
   EXPECT_EQ( this->shown( ++one ), "2=20" );
   this->del( 2 );
   EXPECT_EQ( this->shown( ++other ), "3=30" );
   EXPECT_EQ( this->shown( ++one ), "3=30" );
}

TYPED_TEST( StdIteratorTest, SeveralMayStandOnNeighboursThatAreAllGone ) {
   this->fill( 5 );
   auto a = this->at( 1 );
   auto b = this->at( 2 );
   auto c = this->at( 3 );
   this->del( 2 );
   this->del( 3 );
   this->del( 1 );
   b = typename TypeParam::Iterator();
   EXPECT_EQ( this->shown( ++a ), "4=40" );
   EXPECT_EQ( this->shown( ++c ), "4=40" );
}

TYPED_TEST( StdIteratorTest, DeletionThroughItReturnsTheElementOnce ) {
   this->fill( 3 );
   const auto it = this->at( 1 );
   const auto gone = this->collection_.del( it );
   EXPECT_EQ( gone, 10 );
   EXPECT_FALSE( this->collection_.del( it ) );
   EXPECT_EQ( this->collection_.size(), 2u );
}

TYPED_TEST( StdIteratorTest, DeletionThroughItAtTheEndDeletesNothing ) {
   this->fill( 3 );
   EXPECT_FALSE( this->collection_.del( typename TypeParam::Iterator() ) );
   EXPECT_EQ( this->collection_.size(), 3u );
}

TYPED_TEST( StdIteratorTest, DeletionOfEachElementDuringTheWalkMeetsEveryOne ) {
   this->fill( 100 );
   std::uint32_t met = 0;
   for ( auto it = this->collection_.first(); it; ++it ) {
      EXPECT_EQ( this->placeOf( it->key() ), met++ );
      this->collection_.del( it );
      this->collection_.verify();
   }
   EXPECT_EQ( met, 100u );
   EXPECT_TRUE( this->collection_.empty() );
}

TYPED_TEST( StdIteratorTest, DeletionOfTheNextElementEachTimeMeetsEveryOther ) {
   this->fill( 100 );
   std::vector< std::uint32_t > met;
   for ( auto it = this->collection_.first(); it; ++it ) {
      met.push_back( this->placeOf( it->key() ) );
      this->del( met.back() + 1 );
   }
   ASSERT_EQ( met.size(), 50u );
   for ( std::uint32_t i = 0; i < 50; ++i ) {
      EXPECT_EQ( met[ i ], 2 * i );
   }
}

// Enough to rotate a tree and to rehash a hash map many times over.
TYPED_TEST( StdIteratorTest, GrowthDuringTheWalkMeetsEveryElementOnce ) {
   this->fill( 3 );
   std::uint32_t met = 0;
   for ( auto it = this->collection_.first(); it; ++it ) {
      EXPECT_EQ( this->placeOf( it->key() ), met++ );
      if ( this->collection_.size() < 3000 ) {
         const std::uint32_t size = this->collection_.size();
         for ( std::uint32_t place = size; place < 2 * size; ++place ) {
            this->add( place );
         }
      }
   }
   EXPECT_EQ( met, this->collection_.size() );
   EXPECT_GE( met, 3000u );
}

TYPED_TEST( StdIteratorTest, ShrinkageAndGrowthUnderAGoneElementKeepItsPlace ) {
   this->fill( 500 );
   auto it = this->at( 250 );
   for ( std::uint32_t place = 0; place < 400; ++place ) {
      this->del( place );
   }
   for ( std::uint32_t place = 500; place < 3000; ++place ) {
      this->add( place );
   }
   EXPECT_EQ( this->shown( it ), "250=2500" );
   EXPECT_EQ( this->shown( ++it ), "400=4000" );
}

TYPED_TEST( StdIteratorTest, WalksInARangeFor ) {
   this->fill( 3 );
   std::string met;
   for ( const auto& node : this->collection_ ) {
      met += std::to_string( this->placeOf( node.key() ) );
   }
   EXPECT_EQ( met, "012" );
}

TYPED_TEST( StdIteratorTest, MayOutliveTheCollectionAsLongAsItIsNotAdvanced ) {
   typename TypeParam::Iterator it;
   {
      TypeParam collection;
      collection.is( this->keyOf( 4 ), 40 );
      it = collection.first();
   }
   EXPECT_EQ( this->shown( it ), "4=40" );
   EXPECT_FALSE( it.linked() );
}

template < class CollectionType >
class StdIteratorDeathTest : public StdIteratorTest< CollectionType > {};
TYPED_TEST_SUITE( StdIteratorDeathTest, AllCollections );

TYPED_TEST( StdIteratorDeathTest, DereferencingAtTheEndAborts ) {
   const typename TypeParam::Iterator end;
   EXPECT_DEATH( static_cast< void >( *end ),
                 "Zel/StdIterator:[0-9]+: .*operator\\*.*: Assertion `iter_' failed\\." );
}

TYPED_TEST( StdIteratorDeathTest, TheArrowAtTheEndAborts ) {
   const typename TypeParam::Iterator end;
   EXPECT_DEATH( static_cast< void >( end->value() ),
                 "Zel/StdIterator:[0-9]+: .*: Assertion `iter_' failed\\." );
}

TYPED_TEST( StdIteratorDeathTest, DeletionThroughAnIteratorOfAnotherCollectionAborts ) {
   this->fill( 1 );
   TypeParam other;
   EXPECT_DEATH( other.del( this->collection_.first() ),
                 "Assertion `at.walks\\( .*\\)' failed\\." );
}

TYPED_TEST( StdIteratorDeathTest, AdvancingFromTheEndAborts ) {
   this->fill( 1 );
   auto it = this->collection_.first();
   ++it;
   EXPECT_DEATH( ++it, "Zel/StdIterator:[0-9]+: .*operator\\+\\+.*: Assertion `iter_' failed\\." );
}

}   // namespace
