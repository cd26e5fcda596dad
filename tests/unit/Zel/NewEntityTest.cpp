// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/NewEntity.h"

#include <algorithm>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/AllocationTracker.h"
#include "Zel/PtrInterface.h"
#include "tests/support/NoneLeftTest.h"

namespace {

class Thing : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NewEntityTest::Thing";
   explicit Thing( int n = 0 ) : number( n ) {}
   int number;
};

// Shares a pointer to itself with a visitor while it is being constructed.
class SelfSharing : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NewEntityTest::SelfSharing";
   SelfSharing() {
      const Zel::Ptr< SelfSharing > me( this );
      referencesInside = zelReferences();
   }
   int referencesInside = 0;
};

class Throwing : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NewEntityTest::Throwing";
   Throwing() {
      const Zel::Ptr< Throwing > me( this );
      throw std::runtime_error( "no" );
   }
};

class NewEntityTest : public TestSupport::NoneLeftTest {
 protected:
   static std::string counts( const char* typeName ) {
      const Zel::AllocationCount count = Zel::allocationCount( typeName );
      return std::to_string( count.live ) + " live, " + std::to_string( count.total ) + " ever, " +
             std::to_string( count.bytes ) + " bytes";
   }
};

TEST_F( NewEntityTest, PassesTheArgumentsToTheConstructor ) {
   EXPECT_EQ( Zel::newEntity< Thing >( 7 )->number, 7 );
}

TEST_F( NewEntityTest, SwitchesNotificationOn ) {
   EXPECT_TRUE( Zel::newEntity< Thing >()->hasNotificationActive() );
}

TEST_F( NewEntityTest, APointerMadeAndDroppedInsideTheConstructorDestroysNothing ) {
   const auto thing = Zel::newEntity< SelfSharing >();
   EXPECT_EQ( thing->referencesInside, 2 );
   EXPECT_EQ( thing->zelReferences(), 1 );
}

TEST_F( NewEntityTest, AThrowingConstructorLeavesNothingTracked ) {
   EXPECT_THROW( Zel::newEntity< Throwing >(), std::runtime_error );
   EXPECT_EQ( counts( "NewEntityTest::Throwing" ), "0 live, 0 ever, 0 bytes" );
}

TEST_F( NewEntityTest, TheTrackerCountsLiveTotalAndBytesByName ) {
   const std::int64_t before = Zel::allocationCount( "NewEntityTest::Thing" ).total;
   const auto one = Zel::newEntity< Thing >();
   auto two = Zel::newEntity< Thing >();
   two = nullptr;
   const Zel::AllocationCount count = Zel::allocationCount( "NewEntityTest::Thing" );
   EXPECT_EQ( count.typeName, "NewEntityTest::Thing" );
   EXPECT_EQ( count.live, 1 );
   EXPECT_EQ( count.total, before + 2 );
   EXPECT_EQ( count.bytes, static_cast< std::int64_t >( sizeof( Thing ) ) );
}

TEST_F( NewEntityTest, ANameThatWasNeverAllocatedCountsNothing ) {
   EXPECT_EQ( counts( "NewEntityTest::Never" ), "0 live, 0 ever, 0 bytes" );
}

TEST_F( NewEntityTest, AllCountsComeByNameEachOnce ) {
   const auto thing = Zel::newEntity< Thing >();
   const auto sharing = Zel::newEntity< SelfSharing >();
   std::vector< std::string > names;
   for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
      names.push_back( count.typeName );
   }
   EXPECT_TRUE( std::ranges::is_sorted( names ) );
   EXPECT_EQ( std::ranges::count( names, "NewEntityTest::Thing" ), 1 );
   EXPECT_EQ( std::ranges::count( names, "NewEntityTest::SelfSharing" ), 1 );
   EXPECT_EQ( std::ranges::adjacent_find( names ), names.end() );
}

}   // namespace
