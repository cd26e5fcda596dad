// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Ptr.h"

#include <memory>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "Zel/NewEntity.h"
#include "Zel/PtrInterface.h"
#include "tests/support/NoneLeftTest.h"

namespace {

class Animal : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Animal";
   int legs = 4;
};

class Bird : public Animal {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Bird";
   Bird() { legs = 2; }
};

class PtrTest : public TestSupport::NoneLeftTest {
 protected:
   Zel::Ptr< Animal > animal_ = Zel::newEntity< Animal >();
};

using PtrDeathTest = PtrTest;

TEST_F( PtrTest, IsOnePointerWide ) {
   static_assert( sizeof( Zel::Ptr< Animal > ) == sizeof( Animal* ) );
   static_assert( std::is_nothrow_move_constructible_v< Zel::Ptr< Animal > > );
}

TEST_F( PtrTest, DefaultIsNull ) {
   const Zel::Ptr< Animal > null;
   EXPECT_FALSE( null );
   EXPECT_EQ( null.get(), nullptr );
   EXPECT_TRUE( null == nullptr );
}

TEST_F( PtrTest, NullPointerConstructsNull ) {
   const Zel::Ptr< Animal > fromLiteral( nullptr );
   const Zel::Ptr< Animal > fromPointer( static_cast< Animal* >( nullptr ) );
   EXPECT_FALSE( fromLiteral );
   EXPECT_FALSE( fromPointer );
}

TEST_F( PtrTest, TheFactoryHandsOutTheOnlyReference ) {
   EXPECT_EQ( animal_->zelReferences(), 1 );
}

TEST_F( PtrTest, CopyTakesAReferenceAndGivesItBack ) {
   {
      const Zel::Ptr< Animal > copy( animal_ );
      EXPECT_EQ( copy.get(), animal_.get() );
      EXPECT_EQ( animal_->zelReferences(), 2 );
   }
   EXPECT_EQ( animal_->zelReferences(), 1 );
}

TEST_F( PtrTest, ARawPointerTakesAReferenceOfItsOwn ) {
   const Zel::Ptr< Animal > own( animal_.get() );
   EXPECT_EQ( animal_->zelReferences(), 2 );
}

TEST_F( PtrTest, MoveHandsTheReferenceOver ) {
   Zel::Ptr< Animal > source( animal_ );
   const Zel::Ptr< Animal > target( std::move( source ) );
   EXPECT_FALSE( source );   // NOLINT(bugprone-use-after-move): null is promised
   EXPECT_EQ( target, animal_ );
   EXPECT_EQ( animal_->zelReferences(), 2 );
}

TEST_F( PtrTest, CopyOfADerivedTypeTakesAReference ) {
   const Zel::Ptr< Bird > bird = Zel::newEntity< Bird >();
   const Zel::Ptr< Animal > copy( bird );
   EXPECT_EQ( copy->legs, 2 );
   EXPECT_EQ( bird->zelReferences(), 2 );
}

TEST_F( PtrTest, MoveOfADerivedTypeHandsTheReferenceOver ) {
   Zel::Ptr< Bird > bird = Zel::newEntity< Bird >();
   const Zel::Ptr< Animal > moved( std::move( bird ) );
   EXPECT_FALSE( bird );   // NOLINT(bugprone-use-after-move): null is promised
   EXPECT_EQ( moved->zelReferences(), 1 );
}

TEST_F( PtrTest, ConvertsToConstButNotBack ) {
   const Zel::Ptr< const Animal > toConst( animal_ );
   EXPECT_EQ( toConst, animal_ );
   static_assert( !std::is_convertible_v< Zel::Ptr< const Animal >, Zel::Ptr< Animal > > );
   static_assert( !std::is_convertible_v< Zel::Ptr< Animal >, Zel::Ptr< Bird > > );
}

TEST_F( PtrTest, AssignmentDropsTheOldObjectAndSharesTheNew ) {
   Zel::Ptr< Animal > target = Zel::newEntity< Animal >();
   target = animal_;
   EXPECT_EQ( animal_->zelReferences(), 2 );
   EXPECT_EQ( Zel::allocationCount( "PtrTest::Animal" ).live, 1 );
}

TEST_F( PtrTest, MoveAssignmentDropsTheOldObjectAndTakesTheNew ) {
   Zel::Ptr< Animal > target = Zel::newEntity< Animal >();
   Zel::Ptr< Animal > source( animal_ );
   target = std::move( source );
   EXPECT_FALSE( source );   // NOLINT(bugprone-use-after-move): null is promised
   EXPECT_EQ( animal_->zelReferences(), 2 );
   EXPECT_EQ( Zel::allocationCount( "PtrTest::Animal" ).live, 1 );
}

TEST_F( PtrTest, AssignmentOfNullDropsTheObject ) {
   animal_ = nullptr;
   EXPECT_FALSE( animal_ );
   EXPECT_EQ( Zel::allocationCount( "PtrTest::Animal" ).live, 0 );
}

TEST_F( PtrTest, AssignmentToItselfKeepsTheObject ) {
   const Zel::Ptr< Animal >& same = animal_;
   animal_ = same;
   EXPECT_EQ( animal_->zelReferences(), 1 );
}

TEST_F( PtrTest, MoveAssignmentToItselfKeepsTheObject ) {
   Zel::Ptr< Animal >& same = animal_;
   animal_ = std::move( same );
   ASSERT_TRUE( animal_ );
   EXPECT_EQ( animal_->zelReferences(), 1 );
}

TEST_F( PtrTest, AssignmentFromADerivedTypeTakesAReference ) {
   const Zel::Ptr< Bird > bird = Zel::newEntity< Bird >();
   animal_ = bird;
   EXPECT_EQ( bird->zelReferences(), 2 );
}

TEST_F( PtrTest, ReleaseHandsTheReferenceToTheCallerAndAdoptTakesItBack ) {
   Animal* const raw = animal_.release();
   EXPECT_FALSE( animal_ );
   EXPECT_EQ( raw->zelReferences(), 1 );
   const Zel::Ptr< Animal > adopted( raw, Zel::adoptReference );
   EXPECT_EQ( raw->zelReferences(), 1 );
}

TEST_F( PtrTest, ReleaseOfNullIsNull ) {
   Zel::Ptr< Animal > null;
   EXPECT_EQ( null.release(), nullptr );
}

TEST_F( PtrTest, ComparesByObject ) {
   const Zel::Ptr< Animal > other = Zel::newEntity< Animal >();
   const Zel::Ptr< const Animal > same( animal_ );
   EXPECT_TRUE( animal_ == same );
   EXPECT_FALSE( animal_ == other );
   EXPECT_TRUE( animal_ != other );
   EXPECT_FALSE( animal_ == nullptr );
}

TEST_F( PtrTest, DereferencesToTheObject ) {
   animal_->legs = 3;
   EXPECT_EQ( ( *animal_ ).legs, 3 );
}

// An object whose destructor looks at the pointer that held it.
class Witness : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Witness";
   Zel::Ptr< Witness >* holder = nullptr;
   bool* holderWasEmpty = nullptr;

 protected:
   ~Witness() override {
      if ( holder ) {
         *holderWasEmpty = !*holder;
      }
   }
};

TEST_F( PtrTest, AMemberEmptiedFirstIsSeenEmptyFromTheDestructor ) {
   bool wasEmpty = false;
   Zel::Ptr< Witness > member = Zel::newEntity< Witness >();
   member->holder = &member;
   member->holderWasEmpty = &wasEmpty;
   { const auto gone = std::move( member ); }
   EXPECT_TRUE( wasEmpty );
}

TEST_F( PtrTest, AnAssignedPointerHoldsTheNewObjectBeforeTheOldOneGoes ) {
   bool wasEmpty = true;
   Zel::Ptr< Witness > member = Zel::newEntity< Witness >();
   member->holder = &member;
   member->holderWasEmpty = &wasEmpty;
   member = Zel::newEntity< Witness >();
   EXPECT_FALSE( wasEmpty );
}

class Node : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Node";
   Zel::Ptr< Node > next;
};

TEST_F( PtrTest, AnObjectThatOwnsItsSuccessorMayBeReplacedByIt ) {
   Zel::Ptr< Node > list = Zel::newEntity< Node >();
   list->next = Zel::newEntity< Node >();
   list = list->next;
   EXPECT_EQ( list->zelReferences(), 1 );
   EXPECT_EQ( Zel::allocationCount( "PtrTest::Node" ).live, 1 );
}

// What a destructor does that keeps, or makes and drops, a pointer to its own object.
class Clinging : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Clinging";
   enum class Sin { KeepAReference, DropAReference } sin;
   Zel::Ptr< Zel::PtrInterface >* kept = nullptr;
   explicit Clinging( Sin s ) : sin( s ) {}

 protected:
   ~Clinging() override {
      const Zel::Ptr< Zel::PtrInterface > mine( this );
      if ( sin == Sin::KeepAReference ) {
         *kept = mine;
      }
   }
};

TEST_F( PtrDeathTest, AReferenceKeptFromADestructorAborts ) {
   const auto keepFromDestructor = [] {
      static Zel::Ptr< Zel::PtrInterface > kept;
      const auto clinging = Zel::newEntity< Clinging >( Clinging::Sin::KeepAReference );
      clinging->kept = &kept;
   };
   EXPECT_DEATH( keepFromDestructor(),
                 "Zel/PtrInterface:[0-9]+: .*assertUnused.*: Assertion "
                 "`references\\(\\) == \\( flag\\( kConstructing \\) \\? 1 : 0 "
                 "\\)' failed\\." );
}

TEST_F( PtrDeathTest, AReferenceMadeAndDroppedInADestructorAborts ) {
   EXPECT_DEATH( Zel::newEntity< Clinging >( Clinging::Sin::DropAReference ),
                 "Zel/PtrInterface:[0-9]+: .*assertZero.*: Assertion "
                 "`!flag\\( kDestroying \\)' failed\\." );
}

// Stays in memory when its last reference goes, so that a test can go on below zero.
class Undying : public Animal {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Undying";
   void zeroReferencesIs( bool ) override {}
};

TEST_F( PtrDeathTest, AReferenceGivenBackTwiceAborts ) {
   const auto dropTwice = [] {
      Undying* const undying = Zel::newEntity< Undying >().release();
      undying->zelReferenceDec();
      undying->zelReferenceDec();
   };
   EXPECT_DEATH( dropTwice(), "Zel/PtrInterface:[0-9]+: .*assertZero.*: Assertion "
                              "`references\\(\\) == 0' failed\\." );
}

class Abandoned : public Animal {
 public:
   static constexpr char zelTypeName[] = "PtrTest::Abandoned";
   void destroyWhileReferenced() { Zel::PtrInterface::zeroReferencesIs( true ); }
};

TEST_F( PtrDeathTest, DestructionWhileReferencedAborts ) {
   EXPECT_DEATH( Zel::newEntity< Abandoned >()->destroyWhileReferenced(),
                 "Zel/PtrInterface:[0-9]+: .*assertUnused.*: Assertion "
                 "`references\\(\\) == \\( flag\\( kConstructing \\) \\? 1 : 0 "
                 "\\)' failed\\." );
}

}   // namespace
