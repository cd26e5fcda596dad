// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/SmallKeyMap.h"

#include <cstdint>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Small;
using TestCollections::SmallAscending;
using TestCollections::SmallDescending;

constexpr std::uint32_t kPlaces = 0x10000;
// Leads through every page in an order of its own.
constexpr std::uint32_t kStride = 40503;

template < class Iterator >
std::string
shown( const Iterator& it ) {
   return it ? std::to_string( it->key().number ) : "end";
}

class SmallKeyMapTest : public TestSupport::NoneLeftTest {
 protected:
   void fill( std::uint32_t keys ) {
      for ( std::uint32_t i = 0; i < keys; ++i ) {
         ascending_.is( i * kStride % kPlaces, 1 );
      }
   }

   SmallAscending ascending_;
   SmallDescending descending_;
};
using SmallKeyMapDeathTest = SmallKeyMapTest;

TEST_F( SmallKeyMapTest, IsEmptyAtFirst ) {
   EXPECT_TRUE( ascending_.empty() );
   EXPECT_FALSE( ascending_.first() );
   EXPECT_FALSE( ascending_.findElementOrNext( { 0 } ) );
   EXPECT_EQ( ascending_.findNode( { 0 } ), nullptr );
   ascending_.verify();
}

TEST_F( SmallKeyMapTest, WalksInTheOrderOfItsPlaces ) {
   for ( const std::uint32_t key : { 100u, 5u, 65535u, 0u } ) {
      ascending_.is( key, 1 );
      descending_.is( key, 1 );
   }
   EXPECT_EQ( ascending_.show(), "0=1 5=1 100=1 65535=1" );
   EXPECT_EQ( descending_.show(), "65535=1 100=1 5=1 0=1" );
}

TEST_F( SmallKeyMapTest, CountsItsChanges ) {
   ascending_.is( 1, 1 );
   ascending_.is( 1, 2 );
   ascending_.is( 2, 1 );
   ascending_.erase( 1 );
   EXPECT_FALSE( ascending_.erase( 1 ) );
   EXPECT_EQ( ascending_.changes(), 3u );
   ascending_.deleteAll();
   EXPECT_EQ( ascending_.changes(), 4u );
}

// One key at each edge of a page of 64 and of a block of 4096, beside enough others that the keys
// stand in pages.
TEST_F( SmallKeyMapTest, FindsTheNextKeyAcrossPages ) {
   for ( std::uint32_t key = 20000; key < 20100; ++key ) {
      ascending_.is( key, 1 );
   }
   for ( const std::uint32_t key : { 0u, 63u, 64u, 4095u, 4096u, 8192u, 65535u } ) {
      ascending_.is( key, 1 );
   }
   const auto next = [ & ]( std::uint32_t key ) {
      return shown( ascending_.findElementOrNext( { key } ) );
   };
   EXPECT_EQ( next( 0 ), "0" );
   EXPECT_EQ( next( 1 ), "63" );
   EXPECT_EQ( next( 64 ), "64" );
   EXPECT_EQ( next( 65 ), "4095" );
   EXPECT_EQ( next( 128 ), "4095" );
   EXPECT_EQ( next( 4096 ), "4096" );
   EXPECT_EQ( next( 4097 ), "8192" );
   EXPECT_EQ( next( 8193 ), "20000" );
   EXPECT_EQ( next( 20099 ), "20099" );
   EXPECT_EQ( next( 20100 ), "65535" );
   EXPECT_EQ( next( 65535 ), "65535" );
   EXPECT_EQ( shown( ++ascending_.findElement( { 65535 } ) ), "end" );
   ascending_.verify();
}

TEST_F( SmallKeyMapTest, StaysWholeWhileItGrowsAndShrinks ) {
   for ( std::uint32_t i = 0; i < 200; ++i ) {
      ascending_.is( i * kStride % kPlaces, 1 );
      ascending_.verify();
   }
   for ( std::uint32_t i = 0; i < 200; ++i ) {
      ASSERT_TRUE( ascending_.erase( i * kStride % kPlaces ) );
      ascending_.verify();
   }
   EXPECT_TRUE( ascending_.empty() );
}

TEST_F( SmallKeyMapTest, HoldsEveryPlace ) {
   fill( kPlaces );
   EXPECT_EQ( ascending_.size(), kPlaces );
   ascending_.verify();
   std::uint32_t expected = 0;
   for ( const auto& node : ascending_ ) {
      ASSERT_EQ( node.key().number, expected );
      ++expected;
   }
   EXPECT_EQ( expected, kPlaces );
   ascending_.deleteAll();
   ascending_.verify();
}

TEST_F( SmallKeyMapTest, ANodeThatOutlivesDeletingAllStandsAlone ) {
   fill( 100 );
   const Zel::Ptr< SmallAscending::Node > held( ascending_.findNode( { 0 } ) );
   ascending_.deleteAll();
   EXPECT_FALSE( held->linked() );
   ascending_.insert( held );
   ascending_.verify( 1 );
}

// Runs `act` with every request for memory refused; false when it threw.
template < class Act >
bool
doneWithoutMemory( const Act& act ) {
   const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
   try {
      act();
      return true;
   } catch ( const std::bad_alloc& ) {
      return false;
   }
}

// Puts one like itself into its place when it goes, while `lives` last.
class ComingAgain : public Zel::SmallKeyNode {
 public:
   static constexpr char zelTypeName[] = "SmallKeyMapTest::ComingAgain";
   using Map = Zel::SmallKeyMap< ComingAgain, Zel::KeyIndex::kFirst >;
   const Small& key() const { return key_; }

 protected:
   ComingAgain( Small key, Map& map, int& lives ) : key_( key ), map_( map ), lives_( lives ) {}
   ~ComingAgain() override {
      if ( lives_ > 0 ) {
         --lives_;
         map_.insert( Zel::newEntity< ComingAgain >( key_, map_, lives_ ) );
      }
   }

 private:
   const Small key_;
   Map& map_;
   int& lives_;
};

TEST_F( SmallKeyMapTest, DeletingAllLeavesWhatComesMeanwhile ) {
   int lives = 100;
   Zel::KeyIndex index;
   ComingAgain::Map map( index );
   for ( const std::uint32_t key : { 0u, 5u, 65535u } ) {
      map.insert( Zel::newEntity< ComingAgain >( Small{ key }, map, lives ) );
   }
   map.deleteAll();
   EXPECT_EQ( lives, 97 );
   EXPECT_EQ( map.size(), 3u );
   map.verify();
   lives = 0;
}

TEST_F( SmallKeyMapTest, InsertionWithoutMemoryChangesNothing ) {
   for ( std::uint32_t keys = 0; keys <= 2 * Zel::KeyIndex::kMostFew; ++keys ) {
      const std::string before = ascending_.show();
      const auto node =
         Zel::newEntity< SmallAscending::Node >( Small{ keys * kStride % kPlaces }, 1 );
      if ( !doneWithoutMemory( [ & ] { ascending_.insert( node ); } ) ) {
         ASSERT_EQ( ascending_.show(), before );
         ascending_.verify();
         ascending_.insert( node );
      }
   }
   EXPECT_EQ( ascending_.size(), 2 * Zel::KeyIndex::kMostFew + 1 );
}

TEST_F( SmallKeyMapTest, InsertionAtAReservedPlaceNeedsNoMemory ) {
   for ( std::uint32_t i = 0; i < 2 * Zel::KeyIndex::kMostFew; ++i ) {
      const Small key{ i * kStride % kPlaces };
      const auto node = Zel::newEntity< SmallAscending::Node >( key, 1 );
      ascending_.reserve( key );
      ASSERT_TRUE( doneWithoutMemory( [ & ] { ascending_.insert( node ); } ) );
   }
   ascending_.verify();
}

TEST_F( SmallKeyMapTest, APlaceStaysReservedWhileOthersAreDeleted ) {
   const std::uint32_t keys = Zel::KeyIndex::kMostFew + 1;
   fill( keys );
   const Small last{ 60000 };
   const auto node = Zel::newEntity< SmallAscending::Node >( last, 1 );
   ascending_.reserve( last );
   for ( std::uint32_t i = 0; i < keys; ++i ) {
      ascending_.erase( i * kStride % kPlaces );
   }
   EXPECT_TRUE( doneWithoutMemory( [ & ] { ascending_.insert( node ); } ) );
   EXPECT_EQ( ascending_.show(), "60000=1" );
}

TEST_F( SmallKeyMapTest, TrimmingGivesTheMemoryOfAnEmptyMapBackAndNoOther ) {
   ascending_.is( 5, 1 );
   ascending_.trim();
   EXPECT_EQ( ascending_.show(), "5=1" );
   ascending_.erase( 5 );
   ascending_.trim();
   const auto node = Zel::newEntity< SmallAscending::Node >( Small{ 5 }, 2 );
   EXPECT_FALSE( doneWithoutMemory( [ & ] { ascending_.insert( node ); } ) );
   ascending_.insert( node );
   EXPECT_EQ( ascending_.show(), "5=2" );
}

TEST_F( SmallKeyMapTest, DeletionNeedsNoMemory ) {
   const std::uint32_t keys = Zel::KeyIndex::kMostFew + 1;
   fill( keys );
   EXPECT_TRUE( doneWithoutMemory( [ & ] {
      for ( std::uint32_t i = 1; i < keys; ++i ) {
         ascending_.erase( i * kStride % kPlaces );
         ascending_.verify();
      }
   } ) );
   EXPECT_EQ( ascending_.show(), "0=1" );
}

TEST_F( SmallKeyMapDeathTest, InsertionOfAStoredKeyAborts ) {
   ascending_.is( 5, 50 );
   EXPECT_DEATH( ascending_.insert( Zel::newEntity< SmallAscending::Node >( Small{ 5 }, 51 ) ),
                 "Zel/SmallKeyMap:[0-9]+: .*insert.*: Assertion "
                 "`&stored == node.get\\(\\)' failed\\." );
}

TEST_F( SmallKeyMapDeathTest, ANodeThatLosesTheMapsReferenceAborts ) {
   ascending_.is( 5, 1 );
   EXPECT_DEATH( ascending_.findNode( { 5 } )->zelReferenceDec(),
                 "Zel/KeyIndex:[0-9]+: .*~SmallKeyNode.*: Assertion `!linked\\(\\)' failed\\." );
}

TEST_F( SmallKeyMapDeathTest, InsertionOfANodeThatStandsInAnotherMapAborts ) {
   SmallAscending other;
   other.is( 5, 50 );
   const Zel::Ptr< SmallAscending::Node > stored( other.findNode( { 5 } ) );
   EXPECT_DEATH( ascending_.insert( stored ), "Zel/KeyIndex:[0-9]+: .*insertOrFind.*: Assertion "
                                              "`!node.linked\\(\\)' failed\\." );
}

TEST_F( SmallKeyMapDeathTest, VerifyTellsAReferenceTooMany ) {
   ascending_.is( 5, 50 );
   const Zel::Ptr< SmallAscending::Node > held( ascending_.findNode( { 5 } ) );
   EXPECT_DEATH( ascending_.verify(),
                 "Zel/KeyIndex:[0-9]+: .*verify.*: Assertion `references == " );
}

}   // namespace
