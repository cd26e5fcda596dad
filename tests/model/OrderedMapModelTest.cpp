// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RbTreeMap and SmallKeyMap against std::map, and twins against a stable-sorted std::vector, under random
// edits with live iterators.

#include <algorithm>
#include <cstdint>
#include <functional>
#include <iterator>
#include <map>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Zel/Collections.h"
#include "tests/unit/Zel/Twins.h"

namespace {

using TestCollections::Ascending;
using TestCollections::Descending;
using TestCollections::numberOf;
using TestCollections::SmallAscending;
using TestCollections::SmallDescending;
using TestCollections::Twin;
using TestCollections::TwinMap;

constexpr int kSteps = 6000;
constexpr std::size_t kIterators = 8;

template < class MapType >
class OrderedMapModelTest : public TestSupport::NoneLeftTest {
 protected:
   using Key = typename MapType::Key;
   using Order = std::conditional_t< TestCollections::kDescending< MapType >,
                                     std::greater< std::uint32_t >, std::less< std::uint32_t > >;
   using Model = std::map< std::uint32_t, int, Order >;

   static std::string contents( const Model& model ) {
      std::string text;
      for ( const auto& [ key, value ] : model ) {
         text +=
            ( text.empty() ? "" : " " ) + std::to_string( key ) + "=" + std::to_string( value );
      }
      return text;
   }

   // An iterator, the key that it stands on, and the value it showed when that went.
   struct Live {
      typename MapType::Iterator at;
      std::uint32_t key = 0;
      int valueIfGone = 0;
      bool gone = false;
   };

   void goneFromModel( std::uint32_t key, int value ) {
      for ( Live& live : live_ ) {
         if ( live.at && !live.gone && live.key == key ) {
            live.gone = true;
            live.valueIfGone = value;
         }
      }
   }
   std::uint32_t random( std::uint32_t bound ) {
      return static_cast< std::uint32_t >( random_() % bound );
   }

   void eraseBoth( std::uint32_t key ) {
      const auto node = map_.del( Key{ key } );
      const auto inModel = model_.find( key );
      ASSERT_EQ( node != nullptr, inModel != model_.end() );
      if ( node ) {
         ASSERT_EQ( node->value(), inModel->second );
         goneFromModel( key, inModel->second );
         model_.erase( inModel );
      }
   }
   void advance( Live& live ) {
      ++live.at;
      const auto expected = model_.upper_bound( live.key );
      ASSERT_EQ( static_cast< bool >( live.at ), expected != model_.end() );
      if ( live.at ) {
         live.key = expected->first;
         live.gone = false;
      }
   }
   void check( const Live& live ) {
      if ( live.at ) {
         ASSERT_EQ( numberOf( live.at->key() ), live.key );
         ASSERT_EQ( live.at->linked(), !live.gone );
         ASSERT_EQ( live.at->value(), live.gone ? live.valueIfGone : model_.at( live.key ) );
      }
   }

   void step( std::uint32_t keys ) {
      const std::uint32_t key = random( keys );
      Live& live = live_[ random( kIterators ) ];
      switch ( random( 10 ) ) {
      case 0:
      case 1:
      case 2:
      case 3: {   // insert or overwrite
         const int value = static_cast< int >( random( 1000 ) );
         map_.is( key, value );
         model_[ key ] = value;
         break;
      }
      case 4:
      case 5:
         eraseBoth( key );
         break;
      case 6: {   // delete through an iterator
         const bool deletes = live.at && !live.gone;
         const std::uint32_t standsOn = live.key;
         ASSERT_EQ( map_.del( live.at ) != nullptr, deletes );
         if ( deletes ) {
            goneFromModel( standsOn, model_.at( standsOn ) );
            model_.erase( standsOn );
         }
         break;
      }
      case 7: {   // look up
         live.at = map_.findElementOrNext( Key{ key } );
         const auto expected = model_.lower_bound( key );
         ASSERT_EQ( static_cast< bool >( live.at ), expected != model_.end() );
         live.gone = false;
         live.key = live.at ? expected->first : 0;
         break;
      }
      default:
         if ( live.at ) {
            advance( live );
         } else {
            live.at = map_.first();
            live.gone = false;
            live.key = live.at ? model_.begin()->first : 0;
         }
      }
      if ( random( 1500 ) == 0 ) {
         map_.deleteAll();
         while ( !model_.empty() ) {
            const auto [ gone, value ] = *model_.begin();
            goneFromModel( gone, value );
            model_.erase( model_.begin() );
         }
      }
   }

   void run( std::uint32_t keys ) {
      for ( int i = 0; i < kSteps; ++i ) {
         ASSERT_NO_FATAL_FAILURE( step( keys ) ) << "step " << i;
         std::int32_t onStored = 0;
         for ( const Live& live : live_ ) {
            ASSERT_NO_FATAL_FAILURE( check( live ) ) << "step " << i;
            onStored += live.at && !live.gone;
         }
         map_.verify( onStored );
         ASSERT_EQ( map_.size(), model_.size() );
         ASSERT_EQ( map_.show(), contents( model_ ) ) << "step " << i;
      }
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   MapType map_;
   Model model_;
   std::vector< Live > live_{ kIterators };
};

using Maps = testing::Types< Ascending, Descending, SmallAscending, SmallDescending >;
TYPED_TEST_SUITE( OrderedMapModelTest, Maps );

TYPED_TEST( OrderedMapModelTest, AgreesWithStdMapOnFewKeys ) {
   SCOPED_TRACE( TestSupport::seedNote( this->seed_ ) );
   this->run( 12 );
}

TYPED_TEST( OrderedMapModelTest, AgreesWithStdMapOnManyKeys ) {
   SCOPED_TRACE( TestSupport::seedNote( this->seed_ ) );
   this->run( 400 );
}

// The model of a map with twins: its keys in order, each new one behind its twins.
class TwinModelTest : public TestSupport::NoneLeftTest {
 protected:
   struct Live {
      TwinMap::Iterator at;
      // What it must still meet, if nothing changes.
      std::vector< Twin > ahead;
   };

   std::uint32_t random( std::uint32_t bound ) {
      return static_cast< std::uint32_t >( random_() % bound );
   }
   Twin randomKey() { return { random( 4 ), static_cast< char >( 'a' + random( 10 ) ) }; }
   std::vector< Twin >::iterator inModel( Twin key ) { return std::ranges::find( model_, key ); }
   std::string contents() const {
      std::string text;
      for ( const Twin& key : model_ ) {
         text += ( text.empty() ? "" : " " ) + TwinMap::name( key );
      }
      return text;
   }

   void add( Twin key ) {
      map_.add( key );
      model_.insert( std::upper_bound( model_.begin(), model_.end(), key ), key );
      for ( Live& live : live_ ) {
         if ( live.at && !( key < live.at->key() ) ) {
            live.ahead.insert( std::upper_bound( live.ahead.begin(), live.ahead.end(), key ), key );
         }
      }
   }
   void del( Twin key ) {
      const auto gone = map_.del( key );
      ASSERT_TRUE( gone );
      ASSERT_TRUE( gone->key() == key );
      model_.erase( inModel( key ) );
      for ( Live& live : live_ ) {
         std::erase( live.ahead, key );
      }
   }
   void standOn( Live& live, const TwinMap::Iterator& at ) {
      live.at = at;
      live.ahead.clear();
      if ( at ) {
         live.ahead.assign( std::next( inModel( at->key() ) ), model_.end() );
      }
   }
   void advance( Live& live ) {
      // The key under the iterator that went and came again: passed when it comes next.
      if ( !live.ahead.empty() && live.ahead.front() == live.at->key() ) {
         live.ahead.erase( live.ahead.begin() );
      }
      ++live.at;
      ASSERT_EQ( static_cast< bool >( live.at ), !live.ahead.empty() );
      if ( live.at ) {
         ASSERT_EQ( TwinMap::name( live.at->key() ), TwinMap::name( live.ahead.front() ) );
         live.ahead.erase( live.ahead.begin() );
      }
   }
   std::string expectedElementOrNext( Twin key ) {
      auto found = inModel( key );
      if ( found == model_.end() ) {
         found = std::upper_bound( model_.begin(), model_.end(), key );
      }
      return found == model_.end() ? "end" : TwinMap::name( *found );
   }
   void checkLookUps() {
      for ( std::uint32_t number = 0; number < 5; ++number ) {
         for ( char tag = 'a'; tag <= 'k'; ++tag ) {
            const Twin key{ number, tag };
            ASSERT_EQ( map_.findNode( key ) != nullptr, inModel( key ) != model_.end() );
            const auto at = map_.findElementOrNext( key );
            ASSERT_EQ( at ? TwinMap::name( at->key() ) : "end", expectedElementOrNext( key ) );
         }
      }
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   TwinMap map_;
   std::vector< Twin > model_;
   std::vector< Live > live_{ 4 };
};

TEST_F( TwinModelTest, AgreesWithAStableSortedVector ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int i = 0; i < kSteps; ++i ) {
      SCOPED_TRACE( "step " + std::to_string( i ) );
      const Twin key = randomKey();
      Live& live = live_[ random( 4 ) ];
      switch ( random( 4 ) ) {
      case 0:
      case 1:
         if ( inModel( key ) == model_.end() ) {
            add( key );
         } else {
            ASSERT_NO_FATAL_FAILURE( del( key ) );
         }
         break;
      case 2:
         standOn( live, random( 2 ) ? map_.findElementOrNext( key ) : map_.first() );
         break;
      default:
         if ( live.at ) {
            ASSERT_NO_FATAL_FAILURE( advance( live ) );
         }
      }
      std::int32_t onStored = 0;
      for ( const Live& one : live_ ) {
         onStored += one.at && one.at->linked();
      }
      map_.verify( onStored );
      ASSERT_EQ( map_.show(), contents() );
      ASSERT_NO_FATAL_FAILURE( checkLookUps() );
   }
}

}   // namespace
