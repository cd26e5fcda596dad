// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/PtrInterface.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/VirtualSlot.h"

namespace {

using Zel::PtrInterface;
using Zel::ReferenceWord;
using Notifiee = PtrInterface::NotifieeConst;
using Slots = std::vector< std::ptrdiff_t >;
using TestSupport::virtualSlot;

class Plain : public PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrInterfaceTest::Plain";
};

class PtrInterfaceTest : public TestSupport::NoneLeftTest {};

// Sixteen bytes where a pointer has eight.
TEST_F( PtrInterfaceTest, HeaderIsAPointerAndEightBytes ) {
   static_assert( sizeof( PtrInterface ) == sizeof( void* ) + 8 );
   static_assert( sizeof( ReferenceWord ) == 8 );
   static_assert( sizeof( Plain ) == sizeof( PtrInterface ) );
}

TEST_F( PtrInterfaceTest, TellsNobodyUnlessItHasAList ) {
   EXPECT_EQ( Zel::newEntity< Plain >()->notifieeList(), nullptr );
}

TEST_F( PtrInterfaceTest, HasNoTypeUnlessRegistered ) {
   const Zel::TypeHandle type = Zel::newEntity< Plain >()->fwkType();
   EXPECT_FALSE( type );
   EXPECT_EQ( type.record(), nullptr );
}

TEST_F( PtrInterfaceTest, NotificationIsSwitchedOnAfterConstruction ) {
   const auto plain = Zel::newEntity< Plain >();
   EXPECT_TRUE( plain->hasNotificationActive() );
   plain->hasNotificationActiveIs( false );
   EXPECT_FALSE( plain->hasNotificationActive() );
   plain->hasNotificationActiveIs( true );
   EXPECT_TRUE( plain->hasNotificationActive() );
}

TEST_F( PtrInterfaceTest, TheZombieStepMarksForDeletionAndBack ) {
   const auto plain = Zel::newEntity< Plain >();
   EXPECT_FALSE( plain->zelMarkedForDeletion() );
   plain->zelDoZombieReactors( true );
   EXPECT_TRUE( plain->zelMarkedForDeletion() );
   plain->zelDoZombieReactors( false );
   EXPECT_FALSE( plain->zelMarkedForDeletion() );
}

TEST_F( PtrInterfaceTest, ZeroReferencesFalseDestroysNothing ) {
   const auto plain = Zel::newEntity< Plain >();
   plain->zeroReferencesIs( false );
   EXPECT_EQ( Zel::allocationCount( "PtrInterfaceTest::Plain" ).live, 1 );
}

// Goes to a shelf instead of its grave.
class Shelved : public PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrInterfaceTest::Shelved";
   explicit Shelved( std::vector< Shelved* >& shelf ) : shelf_( shelf ) {}
   void zeroReferencesIs( bool zero ) override {
      if ( zero && !done_ ) {
         done_ = true;
         shelf_.push_back( this );
         return;
      }
      PtrInterface::zeroReferencesIs( zero );
   }

 private:
   std::vector< Shelved* >& shelf_;
   bool done_ = false;
};

TEST_F( PtrInterfaceTest, AnOverrideDecidesWhatTheLastReferenceDoes ) {
   std::vector< Shelved* > shelf;
   Zel::newEntity< Shelved >( shelf );
   ASSERT_EQ( shelf.size(), 1u );
   EXPECT_EQ( Zel::allocationCount( "PtrInterfaceTest::Shelved" ).live, 1 );
   shelf[ 0 ]->zeroReferencesIs( true );
   EXPECT_EQ( Zel::allocationCount( "PtrInterfaceTest::Shelved" ).live, 0 );
}

class ReferenceWordTest : public testing::Test {
 protected:
   ReferenceWord word_;
};

TEST_F( ReferenceWordTest, StartsWithTheConstructorsReference ) {
   EXPECT_EQ( word_.references(), 1 );
   EXPECT_TRUE( word_.flag( ReferenceWord::kConstructing ) );
   word_.constructed();
   EXPECT_EQ( word_.references(), 1 );
   EXPECT_FALSE( word_.flag( ReferenceWord::kConstructing ) );
}

TEST_F( ReferenceWordTest, SaysWhenTheLastReferenceGoes ) {
   word_.referenceInc();
   EXPECT_FALSE( word_.referenceDec() );
   EXPECT_TRUE( word_.referenceDec() );
}

TEST_F( ReferenceWordTest, KeepsItsFlagsApart ) {
   constexpr std::array flags{ ReferenceWord::kConstructing, ReferenceWord::kDestroying,
                               ReferenceWord::kNotificationActive,
                               ReferenceWord::kMarkedForDeletion, ReferenceWord::kLinked };
   word_.constructed();
   for ( const auto one : flags ) {
      word_.flagIs( one, true );
      for ( const auto other : flags ) {
         EXPECT_EQ( word_.flag( other ), other == one ) << one << " shows in " << other;
      }
      word_.flagIs( one, false );
   }
   EXPECT_EQ( word_.references(), 1 );
}

// Slots below `count` in which the virtual tables of two objects differ.
Slots
differingSlots( const void* a, const void* b, std::ptrdiff_t count ) {
   const void* const* tableA = nullptr;
   const void* const* tableB = nullptr;
   std::memcpy( &tableA, a, sizeof tableA );
   std::memcpy( &tableB, b, sizeof tableB );
   Slots differing;
   for ( std::ptrdiff_t slot = 0; slot < count; ++slot ) {
      if ( tableA[ slot ] != tableB[ slot ] ) {
         differing.push_back( slot );
      }
   }
   return differing;
}

// These two differ from their bases in the destructor alone, and are never deleted by it.
class BareEntity : public PtrInterface {
 public:
   ~BareEntity() override { ++destroyed; }
   static inline int destroyed = 0;
};
class OtherEntity : public PtrInterface {
 public:
   ~OtherEntity() override { --destroyed; }
   static inline int destroyed = 0;
};
class BareNotifiee : public Notifiee {
 public:
   ~BareNotifiee() override { ++destroyed; }
   void onAttribute( Zel::AttributeId, const void* ) override {}
   static inline int destroyed = 0;
};
class OtherNotifiee : public BareNotifiee {
 public:
   ~OtherNotifiee() override { --destroyed; }
};

TEST( VirtualTable, OfAnEntityHasItsSixFunctionsInOrder ) {
   EXPECT_EQ( ( Slots{ virtualSlot( &PtrInterface::notifieeList ),
                       virtualSlot( &PtrInterface::hasNotificationActiveIs ),
                       virtualSlot( &PtrInterface::zeroReferencesIs ),
                       virtualSlot( &PtrInterface::fwkType ),
                       virtualSlot( &PtrInterface::zelDoZombieReactors ) } ),
              ( Slots{ 0, 1, 2, 3, 6 } ) );
}

TEST( VirtualTable, OfAnEntityHasItsDestructorBetweenTypeAndZombieStep ) {
   const BareEntity one;
   const OtherEntity other;
   EXPECT_EQ( differingSlots( &one, &other, 7 ), ( Slots{ 4, 5 } ) );
}

TEST( VirtualTable, OfANotifieeHasItsFunctionsInOrder ) {
   EXPECT_EQ( ( Slots{ virtualSlot( &Notifiee::onAttribute ),
                       virtualSlot( &Notifiee::zelDoZombieReactors ) } ),
              ( Slots{ 2, 3 } ) );
}

TEST( VirtualTable, OfANotifieeBeginsWithItsDestructor ) {
   const BareNotifiee one;
   const OtherNotifiee other;
   EXPECT_EQ( differingSlots( &one, &other, 4 ), ( Slots{ 0, 1 } ) );
}

class Derived : public PtrInterface {
 public:
   virtual void first() {}
   virtual void second() {}
};

TEST( VirtualTable, OfADerivedTypeHasItsOwnFunctionsBehindTheEntitys ) {
   EXPECT_EQ( virtualSlot( &Derived::first ), 7u );
   EXPECT_EQ( virtualSlot( &Derived::second ), 8u );
}

}   // namespace
