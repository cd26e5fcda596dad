// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// HashMap2018 against std::unordered_map and the list of its keys in order of insertion, under
// random edits with live iterators.

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <list>
#include <random>
#include <string>
#include <unordered_map>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Hashed;

constexpr int kSteps = 8000;
constexpr std::size_t kIterators = 8;

class HashMapModelTest : public TestSupport::NoneLeftTest {
 protected:
   // An iterator and what it must still meet, if nothing changes.
   struct Live {
      Hashed::Iterator at;
      std::uint32_t key = 0;
      bool gone = false;
      int valueIfGone = 0;
      std::vector< std::uint32_t > ahead;
   };

   std::uint32_t random( std::uint32_t bound ) {
      return static_cast< std::uint32_t >( random_() % bound );
   }
   std::string contents() const {
      std::string text;
      for ( const std::uint32_t key : order_ ) {
         text += ( text.empty() ? "" : " " ) + std::to_string( key ) + "=" +
                 std::to_string( model_.at( key ) );
      }
      return text;
   }

   void is( std::uint32_t key, int value ) {
      map_.is( key, value );
      if ( !model_.contains( key ) ) {
         order_.push_back( key );
         for ( Live& live : live_ ) {
            if ( live.at ) {
               live.ahead.push_back( key );
            }
         }
      }
      model_[ key ] = value;
   }
   void forget( std::uint32_t key ) {
      for ( Live& live : live_ ) {
         std::erase( live.ahead, key );
         if ( live.at && !live.gone && live.key == key ) {
            live.gone = true;
            live.valueIfGone = model_.at( key );
         }
      }
      model_.erase( key );
      order_.remove( key );
   }
   void del( std::uint32_t key ) {
      const auto node = map_.del( key );
      ASSERT_EQ( node != nullptr, model_.contains( key ) );
      if ( node ) {
         ASSERT_EQ( node->value(), model_.at( key ) );
         forget( key );
      }
   }
   void standOn( Live& live, const Hashed::Iterator& at ) {
      live.at = at;
      live.gone = false;
      live.ahead.clear();
      if ( at ) {
         live.key = at->key();
         live.ahead.assign( std::next( std::ranges::find( order_, live.key ) ), order_.end() );
      }
   }
   void advance( Live& live ) {
      ++live.at;
      ASSERT_EQ( static_cast< bool >( live.at ), !live.ahead.empty() );
      if ( live.at ) {
         live.key = live.ahead.front();
         live.gone = false;
         live.ahead.erase( live.ahead.begin() );
      }
   }
   void check( const Live& live ) {
      if ( live.at ) {
         ASSERT_EQ( live.at->key(), live.key );
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
      case 3:
         is( key, static_cast< int >( random( 1000 ) ) );
         break;
      case 4:
      case 5:
         del( key );
         break;
      case 6: {   // delete through an iterator
         const bool deletes = live.at && !live.gone;
         const std::uint32_t standsOn = live.key;
         ASSERT_EQ( map_.del( live.at ) != nullptr, deletes );
         if ( deletes ) {
            forget( standsOn );
         }
         break;
      }
      case 7:
         standOn( live, map_.findElement( key ) );
         ASSERT_EQ( static_cast< bool >( live.at ), model_.contains( key ) );
         break;
      default:
         if ( live.at ) {
            advance( live );
         } else {
            standOn( live, map_.first() );
         }
      }
      if ( random( 1500 ) == 0 ) {
         map_.deleteAll();
         while ( !order_.empty() ) {
            forget( order_.front() );
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
         ASSERT_EQ( map_.show(), contents() ) << "step " << i;
      }
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   Hashed map_;
   std::unordered_map< std::uint32_t, int > model_;
   std::list< std::uint32_t > order_;
   std::vector< Live > live_{ kIterators };
};

TEST_F( HashMapModelTest, AgreesWithItsModelOnFewKeys ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   run( 12 );
}

TEST_F( HashMapModelTest, AgreesWithItsModelOnManyKeys ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   run( 400 );
}

}   // namespace
