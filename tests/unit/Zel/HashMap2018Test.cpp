// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/HashMap2018.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <new>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/NoneLeftTest.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Hashed;

class Member : public Zel::HashSetNode< std::uint64_t > {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::Member";

 protected:
   using HashSetNode::HashSetNode;
};

struct Alike {
   int number = 0;
   friend bool operator==( Alike, Alike ) = default;
};
std::uint32_t
zelHash( Alike, std::uint32_t ) {
   return 7;
}

// Counts how often it is hashed.
struct Counting {
   std::uint32_t number = 0;
   static inline int hashed = 0;
   friend bool operator==( Counting, Counting ) = default;
};
std::uint32_t
zelHash( Counting key, std::uint32_t seed ) {
   ++Counting::hashed;
   return Zel::singleAttrHash( key.number, seed );
}

class CountingMember : public Zel::HashSetNode< Counting > {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::CountingMember";

 protected:
   using HashSetNode::HashSetNode;
};

class AlikeMember : public Zel::HashSetNode< Alike > {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::AlikeMember";

 protected:
   using HashSetNode::HashSetNode;
};
using Set = Zel::HashMap2018< Member, 0xcb5901b >;
using OtherSet = Zel::HashMap2018< Member, 0xa570bf69 >;

class HashMap2018Test : public TestSupport::NoneLeftTest {
 protected:
   ~HashMap2018Test() override { Zel::hashSeedIs( processSeed_ ); }

   std::string walk() const {
      std::string text;
      for ( const auto& node : map_ ) {
         text += ( text.empty() ? "" : " " ) + std::to_string( node.key() );
      }
      return text;
   }

   const std::uint32_t processSeed_ = Zel::hashSeed();
   Hashed map_;
};
using HashMap2018DeathTest = HashMap2018Test;

TEST_F( HashMap2018Test, IsEmptyAtFirst ) {
   EXPECT_TRUE( map_.empty() );
   EXPECT_EQ( map_.size(), 0u );
   EXPECT_FALSE( map_.first() );
   EXPECT_FALSE( map_.contains( 1 ) );
   EXPECT_FALSE( map_.del( 1u ) );
   map_.verify();
}

// A look-up tries it first; it would find all the same without.
TEST_F( HashMap2018Test, TheFollowerIsTheNodeBehindOrNone ) {
   Zel::HashTable table( 1 );
   const auto first = Zel::newEntity< Member >( 10u );
   const auto second = Zel::newEntity< Member >( 20u );
   table.link( first, 10 );
   table.link( second, 20 );
   EXPECT_EQ( table.follower( *first ), second.get() );
   EXPECT_EQ( table.follower( *second ), nullptr );
   table.clear();
}

TEST_F( HashMap2018Test, KeysOfOneHashAreToldApart ) {
   Zel::HashMap2018< AlikeMember, 1 > set;
   set.insert( Zel::newEntity< AlikeMember >( Alike{ 10 } ) );
   EXPECT_FALSE( set.contains( { 20 } ) );
   set.insert( Zel::newEntity< AlikeMember >( Alike{ 20 } ) );
   EXPECT_EQ( set.findNode( { 10 } )->key().number, 10 );
   EXPECT_EQ( set.findNode( { 20 } )->key().number, 20 );
   set.verify();
}

TEST_F( HashMap2018Test, NoOperationHashesItsKeyTwice ) {
   Zel::HashMap2018< CountingMember, 1 > set;
   const auto hashes = [ & ]( auto operation ) {
      Counting::hashed = 0;
      operation();
      return Counting::hashed;
   };
   const auto member = []( std::uint32_t number ) {
      return Zel::newEntity< CountingMember >( Counting{ number } );
   };
   EXPECT_EQ( hashes( [ & ] { set.insert( member( 1 ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { set.insert( member( 2 ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { set.insert( member( 3 ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { EXPECT_TRUE( set.contains( { 1 } ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { EXPECT_FALSE( set.contains( { 4 } ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { EXPECT_TRUE( set.del( Counting{ 3 } ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] { EXPECT_FALSE( set.del( Counting{ 3 } ) ); } ), 1 );
   EXPECT_EQ( hashes( [ & ] {
                 const auto make = [ & ] { return member( 3 ); };
                 EXPECT_TRUE( set.findOrInsert( { 3 }, make ).second );
              } ),
              1 );
}

TEST_F( HashMap2018Test, WhatIsFoundIsNotMadeAgain ) {
   Set set;
   const auto member = Zel::newEntity< Member >( 77u );
   const auto made = set.findOrInsert( 77, [ & ] { return member; } );
   EXPECT_EQ( made.first, member.get() );
   EXPECT_TRUE( made.second );
   for ( const std::uint64_t other : { 78u, 77u } ) {   // a hit at once, and one by search
      set.findOrInsert( other, [ & ] { return Zel::newEntity< Member >( other ); } );
      const auto found = set.findOrInsert( 77, []() -> Zel::Ptr< Member > { std::abort(); } );
      EXPECT_EQ( found.first, member.get() );
      EXPECT_FALSE( found.second );
   }
   EXPECT_EQ( set.size(), 2u );
   set.verify( 1 );
}

TEST_F( HashMap2018Test, ANodeThatCannotBeMadeLeavesTheCollectionAsItWas ) {
   Set set;
   const auto failing = []() -> Zel::Ptr< Member > { throw std::bad_alloc(); };
   EXPECT_THROW( set.findOrInsert( 77, failing ), std::bad_alloc );
   EXPECT_TRUE( set.empty() );
   EXPECT_EQ( set.changes(), 0u );
   EXPECT_FALSE( set.contains( 77 ) );
   set.verify();
}

TEST_F( HashMap2018Test, AnInsertionBehindItsReservationAsksForNoMemory ) {
   Set set;
   const auto member = Zel::newEntity< Member >( 77u );
   set.reserveOne();
   const std::uint64_t before = TestSupport::newRequests();
   set.insert( member );
   EXPECT_EQ( TestSupport::newRequests(), before );
}

TEST_F( HashMap2018Test, ItsSeedIsTheProcesssXoredWithItsConstant ) {
   Zel::hashSeedIs( 0x12345678 );
   EXPECT_EQ( Set().seed(), 0x12345678u ^ 0xcb5901bu );
   EXPECT_EQ( OtherSet().seed(), 0x12345678u ^ 0xa570bf69u );
}

TEST_F( HashMap2018Test, KeepsTheSeedThatWasInForceWhenItWasMade ) {
   Zel::hashSeedIs( 1 );
   Set set;
   set.insert( Zel::newEntity< Member >( 77u ) );
   Zel::hashSeedIs( 2 );
   EXPECT_EQ( set.seed(), 1u ^ 0xcb5901bu );
   EXPECT_TRUE( set.contains( 77 ) );
}

TEST_F( HashMap2018Test, NodesKeepTheirKeysHash ) {
   Set set;
   set.insert( Zel::newEntity< Member >( 77u ) );
   EXPECT_EQ( set.findNode( 77 )->zelStoredHash(), Zel::singleAttrHash( 77, set.seed() ) );
}

TEST_F( HashMap2018Test, FindsWhatIsStoredAndNothingElse ) {
   for ( std::uint32_t key = 0; key < 2000; key += 2 ) {
      map_.is( key, static_cast< int >( key ) );
   }
   for ( std::uint32_t key = 0; key < 2000; ++key ) {
      ASSERT_EQ( map_.contains( key ), key % 2 == 0 ) << key;
   }
   EXPECT_EQ( map_.findNode( 1998 )->value(), 1998 );
   EXPECT_EQ( map_.findElement( 4 )->value(), 4 );
   EXPECT_FALSE( map_.findElement( 5 ) );
   map_.verify();
}

TEST_F( HashMap2018Test, WalksInOrderOfInsertion ) {
   for ( const std::uint32_t key : { 7u, 1000u, 3u, 99u, 0u, 8u } ) {
      map_.is( key, 1 );
   }
   EXPECT_EQ( walk(), "7 1000 3 99 0 8" );
}

TEST_F( HashMap2018Test, TheOrderOfAWalkDoesNotDependOnTheSeed ) {
   for ( std::uint32_t seed = 0; seed < 20; ++seed ) {
      Zel::hashSeedIs( seed );
      Hashed map;
      for ( std::uint32_t i = 0; i < 10; ++i ) {
         map.is( i * i, 1 );
      }
      EXPECT_EQ( map.show(), "0=1 1=1 4=1 9=1 16=1 25=1 36=1 49=1 64=1 81=1" );
   }
}

TEST_F( HashMap2018Test, OverwritingKeepsThePlaceInTheWalk ) {
   for ( const std::uint32_t key : { 1u, 2u, 3u } ) {
      map_.is( key, 1 );
   }
   map_.is( 1, 9 );
   EXPECT_EQ( map_.show(), "1=9 2=1 3=1" );
}

TEST_F( HashMap2018Test, AKeyThatComesAgainComesLast ) {
   for ( const std::uint32_t key : { 1u, 2u, 3u } ) {
      map_.is( key, 1 );
   }
   map_.erase( 1 );
   map_.is( 1, 1 );
   EXPECT_EQ( walk(), "2 3 1" );
}

TEST_F( HashMap2018Test, AKeyThatComesAgainUnderItsIteratorIsMetOnceMore ) {
   for ( const std::uint32_t key : { 1u, 2u } ) {
      map_.is( key, 1 );
   }
   std::string met;
   for ( auto it = map_.first(); it; ++it ) {
      met += std::to_string( it->key() );
      if ( met == "1" ) {
         map_.erase( 1 );
         map_.is( 1, 1 );
      }
   }
   EXPECT_EQ( met, "121" );
}

TEST_F( HashMap2018Test, DeletionReturnsTheNodeAndLeavesItToTheCaller ) {
   map_.is( 5, 50 );
   const auto gone = map_.del( 5u );
   ASSERT_TRUE( gone );
   EXPECT_EQ( gone->value(), 50 );
   EXPECT_EQ( gone->zelReferences(), 1 );
   EXPECT_FALSE( gone->linked() );
   EXPECT_FALSE( map_.contains( 5 ) );
}

TEST_F( HashMap2018Test, CountsItsChanges ) {
   map_.is( 1, 1 );
   map_.is( 2, 1 );
   map_.is( 2, 2 );
   map_.erase( 1 );
   map_.erase( 1 );
   EXPECT_EQ( map_.changes(), 3u );
   map_.deleteAll();
   EXPECT_EQ( map_.changes(), 4u );
}

TEST_F( HashMap2018Test, DeletingAllLeavesNothingAndTheMapUsable ) {
   for ( std::uint32_t key = 0; key < 1000; ++key ) {
      map_.is( key, 1 );
   }
   map_.deleteAll();
   EXPECT_TRUE( map_.empty() );
   EXPECT_EQ( Zel::allocationCount( "TestCollections::KeyedNode" ).live, 0 );
   map_.is( 3, 30 );
   EXPECT_EQ( map_.show(), "3=30" );
   map_.verify();
}

TEST_F( HashMap2018Test, ManyGoneElementsHeldByIteratorsStayOutOfTheWalk ) {
   std::vector< Hashed::Iterator > held;
   for ( std::uint32_t key = 0; key < 100; ++key ) {
      map_.is( key, 1 );
      held.push_back( map_.findElement( key ) );
   }
   for ( std::uint32_t key = 0; key < 100; ++key ) {
      if ( key != 42 ) {
         map_.erase( key );
      }
   }
   EXPECT_EQ( walk(), "42" );
   map_.verify( 1 );
   EXPECT_EQ( ( ++held[ 7 ] )->key(), 42u );
   EXPECT_FALSE( ++held[ 99 ] );
   held.clear();
   EXPECT_EQ( Zel::allocationCount( "TestCollections::KeyedNode" ).live, 1 );
}

TEST_F( HashMap2018Test, AnElementPresentDuringTheWholeWalkIsMetOnceWhateverElseHappens ) {
   for ( std::uint32_t key = 0; key < 64; ++key ) {
      map_.is( key, 0 );
   }
   std::uint32_t next = 1000;
   for ( auto it = map_.first(); it; ++it ) {
      Hashed::Node* const node = map_.findNode( it->key() );
      ASSERT_NE( node, nullptr );
      node->valueIs( node->value() + 1 );
      // Ten newcomers for every lasting element, which go again at once or a little later.
      if ( it->key() < 64 ) {
         for ( int i = 0; i < 10; ++i ) {
            map_.is( next++, 0 );
         }
         for ( std::uint32_t key = next - 10; key < next - 1; ++key ) {
            map_.erase( key );
         }
      }
      map_.verify( 1 );
   }
   for ( std::uint32_t key = 0; key < 64; ++key ) {
      EXPECT_EQ( map_.findNode( key )->value(), 1 ) << key;
   }
}

class Port : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::Port";
   explicit Port( std::uint64_t id ) : id_( id ) {}
   std::uint64_t id() const { return id_; }

 private:
   const std::uint64_t id_;
};
struct PortKeyFunktor {
   std::uint64_t operator()( const Port& port ) const { return port.id(); }
};
class PortNode : public Zel::HashEntityNode< Port, PortKeyFunktor > {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::PortNode";

 protected:
   using HashEntityNode::HashEntityNode;
};

TEST_F( HashMap2018Test, AMapOfEntitiesReadsTheKeyFromTheEntityAndOwnsAReference ) {
   Zel::HashMap2018< PortNode, 1 > ports;
   const auto port = Zel::newEntity< Port >( 7u );
   ports.insert( Zel::newEntity< PortNode >( port ) );
   ASSERT_TRUE( ports.contains( 7 ) );
   EXPECT_EQ( ports.findNode( 7 )->entity(), port );
   EXPECT_EQ( port->zelReferences(), 2 );
   ports.del( std::uint64_t{ 7 } );
   EXPECT_EQ( port->zelReferences(), 1 );
}

// Looks its neighbour up when it goes.
class CuriousNode : public Zel::HashNode {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::CuriousNode";
   using Map = Zel::HashMap2018< CuriousNode, 1 >;
   const std::uint32_t& key() const { return key_; }

 protected:
   CuriousNode( std::uint32_t key, const Map& map ) : key_( key ), map_( map ) {}
   ~CuriousNode() override { map_.contains( key_ + 1 ); }

 private:
   const std::uint32_t key_;
   const Map& map_;
};

TEST_F( HashMap2018Test, RemembersNoElementThatWentWhileAllWereDeleted ) {
   CuriousNode::Map map;
   for ( std::uint32_t key = 1; key <= 3; ++key ) {
      map.insert( Zel::newEntity< CuriousNode >( key, map ) );
   }
   map.deleteAll();
   for ( std::uint32_t key = 1; key <= 4; ++key ) {
      EXPECT_FALSE( map.contains( key ) ) << key;
   }
}

// Puts one like itself into its place when it goes, while `lives` last.
class ComingAgain : public Zel::HashSetNode< std::uint32_t > {
 public:
   static constexpr char zelTypeName[] = "HashMap2018Test::ComingAgain";
   using Set = Zel::HashMap2018< ComingAgain, 1 >;

 protected:
   ComingAgain( std::uint32_t key, Set& set, int& lives )
       : HashSetNode( key ), set_( set ), lives_( lives ) {}
   ~ComingAgain() override {
      if ( lives_ > 0 ) {
         --lives_;
         set_.insert( Zel::newEntity< ComingAgain >( key(), set_, lives_ ) );
      }
   }

 private:
   Set& set_;
   int& lives_;
};

TEST_F( HashMap2018Test, DeletingAllLeavesWhatComesMeanwhile ) {
   int lives = 100;
   ComingAgain::Set set;
   for ( std::uint32_t key = 1; key <= 3; ++key ) {
      set.insert( Zel::newEntity< ComingAgain >( key, set, lives ) );
   }
   set.deleteAll();
   EXPECT_EQ( lives, 97 );
   EXPECT_EQ( set.size(), 3u );
   set.verify();
   lives = 0;
}

TEST_F( HashMap2018Test, TheLastElementIsTheOneThatCameLast ) {
   EXPECT_FALSE( map_.last() );
   map_.is( 7, 1 );
   map_.is( 3, 1 );
   const auto held = map_.last();
   EXPECT_EQ( held->key(), 3u );
   map_.erase( 3 );
   EXPECT_EQ( map_.last()->key(), 7u );
}

TEST_F( HashMap2018Test, RemembersNoElementThatWasDeleted ) {
   map_.is( 5, 50 );
   EXPECT_TRUE( map_.contains( 5 ) );
   map_.del( 5u );
   EXPECT_FALSE( map_.contains( 5 ) );
   map_.is( 5, 51 );
   EXPECT_EQ( map_.findNode( 5 )->value(), 51 );
}

TEST_F( HashMap2018Test, AnElementThatOutlivesItsCollectionCanBeStoredInAnother ) {
   const auto held = Zel::newEntity< Member >( 77u );
   Set().insert( held );
   Set other;
   other.insert( held );
   EXPECT_TRUE( other.contains( 77 ) );
   other.verify( 1 );
}

// A bucket for each node at least: hashes in a row share none.
TEST_F( HashMap2018Test, BucketsGrowWithTheNodes ) {
   Zel::HashTable table( 0 );
   for ( std::uint32_t nodes = 1; nodes <= 300; ++nodes ) {
      table.link( Zel::newEntity< Member >( nodes ), nodes );
      for ( std::uint32_t hash = 1; hash <= nodes; ++hash ) {
         const Zel::HashNode* const node = table.bucket( hash );
         ASSERT_TRUE( node && node->zelStoredHash() == hash && !table.bucketNext( *node ) ) << hash;
      }
   }
}

TEST_F( HashMap2018DeathTest, InsertionOfAStoredKeyAborts ) {
   map_.is( 5, 50 );
   EXPECT_DEATH( map_.insert( Zel::newEntity< Hashed::Node >( 5u, 51 ) ),
                 "Zel/HashMap2018:[0-9]+: .*insert.*: Assertion "
                 "`isNew' failed\\." );
}

TEST_F( HashMap2018DeathTest, ANodeThatLosesTheMapsReferenceAborts ) {
   map_.is( 5, 50 );
   EXPECT_DEATH( map_.findNode( 5 )->zelReferenceDec(),
                 "Zel/HashTable:[0-9]+: .*~HashNode.*: Assertion `!linked\\(\\)' failed\\." );
}

TEST_F( HashMap2018DeathTest, UnlinkingANodeThatIsGoneAborts ) {
   map_.is( 5, 50 );
   const auto gone = map_.del( 5u );
   EXPECT_DEATH( map_.unlink( *gone ),
                 "Zel/HashTable:[0-9]+: .*unlink.*: Assertion `node.linked\\(\\)' failed\\." );
}

// It still marks its old place in the walk.
TEST_F( HashMap2018DeathTest, InsertionOfANodeThatWasTakenOutAborts ) {
   map_.is( 5, 50 );
   const auto gone = map_.del( 5u );
   EXPECT_DEATH( map_.insert( gone ), "Zel/HashTable:[0-9]+: .*link.*: Assertion "
                                      "`!node->linked\\(\\) && !node->prev' failed\\." );
}

TEST_F( HashMap2018DeathTest, VerifyTellsAReferenceTooMany ) {
   map_.is( 5, 50 );
   const Zel::Ptr< Hashed::Node > held( map_.findNode( 5 ) );
   EXPECT_DEATH( map_.verify(), "Zel/HashTable:[0-9]+: .*verify.*: Assertion `references == " );
}

}   // namespace
