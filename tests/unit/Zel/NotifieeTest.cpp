// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Notifiee.h"

#include <functional>
#include <map>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"

namespace {

constexpr Zel::AttributeId kNumber = 130;

// An entity with one attribute.
class Subject : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Subject";
   void numberIs( int number ) {
      number_ = number;
      list_.notify( kNumber, &number_ );
   }
   int number() const { return number_; }
   Zel::NotifieeList* notifieeList() const override { return &list_; }

 private:
   mutable Zel::NotifieeList list_{ *this };
   int number_ = 0;
};

// Logs what it is told as "NAME=NUMBER", then does what the test wants.
class Probe : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Probe";
   Probe( std::string name, std::string& log ) : name_( std::move( name ) ), log_( log ) {}

   void onAttribute( Zel::AttributeId attribute, const void* key ) override {
      EXPECT_EQ( attribute, kNumber );
      log_ += ( log_.empty() ? "" : " " ) + name_ + "=" +
              std::to_string( *static_cast< const int* >( key ) );
      if ( action ) {
         action();
      }
   }

   std::function< void() > action;

 private:
   const std::string name_;
   std::string& log_;
};

class NotifieeTest : public TestSupport::NoneLeftTest {
 protected:
   NotifieeTest() {
      for ( const char* name : { "a", "b", "c" } ) {
         probe( name );
      }
   }
   ~NotifieeTest() override {
      for ( auto& [ name, probe ] : probes_ ) {
         probe->action = {};
      }
   }

   Probe& probe( const std::string& name ) {
      Zel::Ptr< Probe >& place = probes_[ name ];
      if ( !place ) {
         place = Zel::newEntity< Probe >( name, log_ );
         place->zelNotifierIs( subject_ );
      }
      return *place;
   }
   void forget( const std::string& name ) { probes_.erase( name ); }
   // Writes the attribute and returns what was told meanwhile.
   std::string change( int number ) {
      log_.clear();
      const Zel::Ptr< Subject > subject( subject_ );
      subject->numberIs( number );
      return log_;
   }
   std::size_t watching() const { return subject_->notifieeList()->notifiees(); }

   std::string log_;
   Zel::Ptr< Subject > subject_ = Zel::newEntity< Subject >();
   std::map< std::string, Zel::Ptr< Probe > > probes_;
};

TEST_F( NotifieeTest, AreToldInOrderOfRegistration ) {
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
}

TEST_F( NotifieeTest, ANotifieeHoldsItsNotifier ) {
   EXPECT_EQ( subject_->zelReferences(), 4 );
   EXPECT_EQ( probe( "a" ).zelNotifier(), subject_ );
   EXPECT_EQ( watching(), 3u );
}

TEST_F( NotifieeTest, TheListDoesNotHoldItsNotifiees ) {
   EXPECT_EQ( probe( "a" ).zelReferences(), 1 );
   forget( "a" );
   EXPECT_EQ( watching(), 2u );
   EXPECT_EQ( change( 1 ), "b=1 c=1" );
}

TEST_F( NotifieeTest, NobodyWatchingIsNoNotification ) {
   probes_.clear();
   EXPECT_EQ( change( 1 ), "" );
   EXPECT_EQ( subject_->number(), 1 );
}

TEST_F( NotifieeTest, OneThatRemovesItselfIsToldOnceAndTheOthersAreToldAll ) {
   probe( "b" ).action = [ & ] { probe( "b" ).zelNotifierIs( nullptr ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "a=2 c=2" );
   EXPECT_EQ( watching(), 2u );
}

TEST_F( NotifieeTest, OneThatIsRemovedIsNotCountedFromThenOn ) {
   std::size_t counted = 0;
   probe( "b" ).action = [ & ] {
      probe( "a" ).zelNotifierIs( nullptr );
      counted = watching();
   };
   change( 1 );
   EXPECT_EQ( counted, 2u );
}

TEST_F( NotifieeTest, OneThatRemovesAnEarlierOneSkipsNobody ) {
   probe( "b" ).action = [ & ] { probe( "a" ).zelNotifierIs( nullptr ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "b=2 c=2" );
}

TEST_F( NotifieeTest, ALaterOneThatIsRemovedIsNotTold ) {
   probe( "a" ).action = [ & ] { probe( "b" ).zelNotifierIs( nullptr ); };
   EXPECT_EQ( change( 1 ), "a=1 c=1" );
   EXPECT_EQ( change( 2 ), "a=2 c=2" );
}

TEST_F( NotifieeTest, OneThatDestroysItselfIsToldOnce ) {
   probe( "b" ).action = [ & ] { forget( "b" ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "a=2 c=2" );
}

TEST_F( NotifieeTest, AnEarlierOneMayBeDestroyedByALaterOne ) {
   probe( "b" ).action = [ & ] { forget( "a" ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "b=2 c=2" );
}

TEST_F( NotifieeTest, ALaterOneThatIsDestroyedIsNotTold ) {
   probe( "a" ).action = [ & ] { forget( "b" ); };
   EXPECT_EQ( change( 1 ), "a=1 c=1" );
}

TEST_F( NotifieeTest, AllMayBeDestroyedByTheFirst ) {
   probe( "a" ).action = [ & ] { probes_.clear(); };
   EXPECT_EQ( change( 1 ), "a=1" );
   EXPECT_EQ( watching(), 0u );
}

TEST_F( NotifieeTest, ANewcomerHearsOfTheNextChange ) {
   probe( "a" ).action = [ & ] { probe( "d" ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "a=2 b=2 c=2 d=2" );
}

// More newcomers than the list had room for, so that its memory moves.
TEST_F( NotifieeTest, ManyNewcomersDuringANotificationDisturbNobody ) {
   probe( "a" ).action = [ & ] {
      for ( char name = 'd'; name <= 'z'; ++name ) {
         probe( std::string( 1, name ) );
      }
   };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( watching(), 26u );
}

TEST_F( NotifieeTest, OneThatLeavesAndComesBackIsInLastPlaceFromTheNextChangeOn ) {
   probe( "a" ).action = [ & ] {
      probe( "a" ).zelNotifierIs( nullptr );
      probe( "a" ).zelNotifierIs( subject_ );
   };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "b=2 c=2 a=2" );
}

TEST_F( NotifieeTest, ALaterOneThatLeavesAndComesBackHearsOfTheNextChange ) {
   probe( "a" ).action = [ & ] {
      probe( "c" ).zelNotifierIs( nullptr );
      probe( "c" ).zelNotifierIs( subject_ );
   };
   EXPECT_EQ( change( 1 ), "a=1 b=1" );
   EXPECT_EQ( change( 2 ), "a=2 b=2" );
   probe( "a" ).action = {};
   EXPECT_EQ( change( 3 ), "a=3 b=3 c=3" );
}

// The mutator runs through a plain pointer here: only the list itself keeps the notifier alive.
TEST_F( NotifieeTest, TheNotifierMayLoseItsLastReferenceInside ) {
   probe( "b" ).action = [ & ] {
      subject_ = nullptr;
      probes_.clear();
   };
   Subject* const raw = subject_.get();
   raw->numberIs( 1 );
   EXPECT_EQ( log_, "a=1 b=1" );
   EXPECT_EQ( Zel::allocationCount( "NotifieeTest::Subject" ).live, 0 );
}

TEST_F( NotifieeTest, AMutatorEnteredAgainTellsTheInnerChangeFirst ) {
   probe( "b" ).action = [ & ] {
      if ( subject_->number() == 1 ) {
         subject_->numberIs( 2 );
      }
   };
   EXPECT_EQ( change( 1 ), "a=1 b=1 a=2 b=2 c=2 c=2" );
}

TEST_F( NotifieeTest, RemovalInsideANestedNotificationHoldsForTheOuterOne ) {
   probe( "a" ).action = [ & ] {
      if ( subject_->number() == 1 ) {
         subject_->numberIs( 2 );
      }
   };
   probe( "b" ).action = [ & ] {
      forget( "b" );
      forget( "c" );
   };
   EXPECT_EQ( change( 1 ), "a=1 a=2 b=2" );
   EXPECT_EQ( watching(), 1u );
   EXPECT_EQ( change( 3 ), "a=3" );
}

TEST_F( NotifieeTest, ANewcomerOfANestedNotificationHearsOfNeither ) {
   probe( "a" ).action = [ & ] {
      if ( subject_->number() == 1 ) {
         subject_->numberIs( 2 );
      }
      probe( "d" );
   };
   EXPECT_EQ( change( 1 ), "a=1 a=2 b=2 c=2 b=2 c=2" );
}

TEST_F( NotifieeTest, OneThatIsPointedElsewhereHearsOfTheNewNotifierOnly ) {
   const auto other = Zel::newEntity< Subject >();
   probe( "a" ).action = [ & ] { probe( "b" ).zelNotifierIs( other ); };
   EXPECT_EQ( change( 1 ), "a=1 c=1" );
   log_.clear();
   other->numberIs( 5 );
   EXPECT_EQ( log_, "b=5" );
   EXPECT_EQ( subject_->zelReferences(), 3 );
   EXPECT_EQ( other->zelReferences(), 2 );
}

TEST_F( NotifieeTest, OneThatPointsItselfElsewhereHearsOfTheNewNotifierOnly ) {
   const auto other = Zel::newEntity< Subject >();
   probe( "b" ).action = [ & ] { probe( "b" ).zelNotifierIs( other ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( change( 2 ), "a=2 c=2" );
   log_.clear();
   other->numberIs( 5 );
   EXPECT_EQ( log_, "b=5" );
}

TEST_F( NotifieeTest, PointingAtTheSameNotifierKeepsThePlace ) {
   probe( "a" ).zelNotifierIs( subject_ );
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
   EXPECT_EQ( watching(), 3u );
}

TEST_F( NotifieeTest, AZombieIsNotTold ) {
   probe( "b" ).zelDoZombieReactors( true );
   EXPECT_TRUE( probe( "b" ).zelMarkedForDeletion() );
   EXPECT_EQ( change( 1 ), "a=1 c=1" );
   probe( "b" ).zelDoZombieReactors( false );
   EXPECT_EQ( change( 2 ), "a=2 b=2 c=2" );
}

TEST_F( NotifieeTest, OneThatBecomesAZombieHalfWayIsNotTold ) {
   probe( "a" ).action = [ & ] { probe( "c" ).zelDoZombieReactors( true ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1" );
}

TEST_F( NotifieeTest, AnInactiveOneIsNotTold ) {
   probe( "b" ).hasNotificationActiveIs( false );
   EXPECT_FALSE( probe( "b" ).hasNotificationActive() );
   EXPECT_EQ( change( 1 ), "a=1 c=1" );
   probe( "b" ).hasNotificationActiveIs( true );
   EXPECT_EQ( change( 2 ), "a=2 b=2 c=2" );
}

TEST_F( NotifieeTest, OneThatIsSwitchedOffHalfWayIsNotTold ) {
   probe( "a" ).action = [ & ] { probe( "c" ).hasNotificationActiveIs( false ); };
   EXPECT_EQ( change( 1 ), "a=1 b=1" );
}

TEST_F( NotifieeTest, AnInactiveNotifierTellsNobody ) {
   subject_->hasNotificationActiveIs( false );
   EXPECT_EQ( change( 1 ), "" );
   subject_->hasNotificationActiveIs( true );
   EXPECT_EQ( change( 2 ), "a=2 b=2 c=2" );
}

TEST_F( NotifieeTest, ANotifierSwitchedOffHalfWayTellsNobodyElse ) {
   probe( "a" ).action = [ & ] { subject_->hasNotificationActiveIs( false ); };
   EXPECT_EQ( change( 1 ), "a=1" );
}

TEST_F( NotifieeTest, AnExceptionReachesTheMutatorsCallerWhenAllWereTold ) {
   probe( "b" ).action = [] { throw std::runtime_error( "from b" ); };
   EXPECT_THROW( change( 1 ), std::runtime_error );
   EXPECT_EQ( log_, "a=1 b=1 c=1" );
   probe( "b" ).action = {};
   EXPECT_EQ( change( 2 ), "a=2 b=2 c=2" );
}

TEST_F( NotifieeTest, RemovalBeforeAnExceptionIsTidiedUp ) {
   probe( "b" ).action = [ & ] {
      forget( "a" );
      forget( "b" );
      throw std::runtime_error( "from b" );
   };
   EXPECT_THROW( change( 1 ), std::runtime_error );
   EXPECT_EQ( watching(), 1u );
   EXPECT_EQ( change( 2 ), "c=2" );
}

TEST_F( NotifieeTest, AnExceptionFromANestedNotificationLeavesTheOuterListUsable ) {
   probe( "a" ).action = [ & ] {
      if ( subject_->number() == 1 ) {
         forget( "b" );
         EXPECT_THROW( subject_->numberIs( 2 ), std::runtime_error );
      }
   };
   probe( "c" ).action = [ & ] {
      if ( subject_->number() == 2 && log_.ends_with( "a=2 c=2" ) ) {
         throw std::runtime_error( "from c" );
      }
   };
   EXPECT_EQ( change( 1 ), "a=1 a=2 c=2 c=2" );
   EXPECT_EQ( watching(), 2u );
}

TEST_F( NotifieeTest, DeletingAllLeavesNobodyWatching ) {
   subject_->notifieeList()->notifieeDelAll();
   EXPECT_EQ( watching(), 0u );
   EXPECT_EQ( subject_->zelReferences(), 1 );
   EXPECT_EQ( probe( "a" ).zelNotifier(), nullptr );
   EXPECT_EQ( change( 1 ), "" );
}

TEST_F( NotifieeTest, DeletingAllOfNobodyDoesNothing ) {
   probes_.clear();
   subject_->notifieeList()->notifieeDelAll();
   EXPECT_EQ( watching(), 0u );
}

TEST_F( NotifieeTest, DeletingAllHalfWayTellsNobodyElse ) {
   probe( "b" ).action = [ & ] { subject_->notifieeList()->notifieeDelAll(); };
   EXPECT_EQ( change( 1 ), "a=1 b=1" );
   EXPECT_EQ( watching(), 0u );
}

TEST_F( NotifieeTest, DeletingAllMayTakeTheLastReferencesToTheNotifier ) {
   Zel::NotifieeList* const list = subject_->notifieeList();
   subject_ = nullptr;
   list->notifieeDelAll();
   EXPECT_EQ( Zel::allocationCount( "NotifieeTest::Subject" ).live, 0 );
}

TEST_F( NotifieeTest, ANotifieeMayHoldTheLastReferenceToItsNotifier ) {
   subject_ = nullptr;
   forget( "a" );
   forget( "b" );
   EXPECT_EQ( Zel::allocationCount( "NotifieeTest::Subject" ).live, 1 );
   forget( "c" );
   EXPECT_EQ( Zel::allocationCount( "NotifieeTest::Subject" ).live, 0 );
}

class Throwing : public Probe {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Throwing";
   Throwing( const Zel::Ptr< Subject >& subject, std::string& log ) : Probe( "t", log ) {
      zelNotifierIs( subject );
      throw std::runtime_error( "no" );
   }
};

TEST_F( NotifieeTest, ANotifieeWhoseConstructorThrowsLeavesTheList ) {
   EXPECT_THROW( Zel::newEntity< Throwing >( subject_, log_ ), std::runtime_error );
   EXPECT_EQ( watching(), 3u );
   EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" );
}

using NotifieeDeathTest = NotifieeTest;

class Mute : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Mute";
};

TEST_F( NotifieeDeathTest, WatchingAnEntityWithoutAListAborts ) {
   EXPECT_DEATH( probe( "a" ).zelNotifierIs( Zel::newEntity< Mute >() ),
                 "Zel/Notifiee:[0-9]+: .*zelNotifierIs.*: Assertion "
                 "`notifier->notifieeList\\(\\)' failed\\." );
}

class Elsewhere : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Elsewhere";
   explicit Elsewhere( Zel::NotifieeList* l ) : list_( l ) {}
   Zel::NotifieeList* notifieeList() const override { return list_; }

 private:
   Zel::NotifieeList* list_;
};

// Destroyed by force, as no counted pointer can: its list still knows its notifiees.
TEST_F( NotifieeDeathTest, AListThatGoesBeforeItsNotifieesAborts ) {
   const auto destroyTheListAlone = [ & ] {
      auto* const list = new Zel::NotifieeList( *subject_ );
      probe( "a" ).zelNotifierIs( Zel::newEntity< Elsewhere >( list ) );
      delete list;
   };
   EXPECT_DEATH( destroyTheListAlone(), "Zel/Notifiee:[0-9]+: .*~NotifieeList.*: Assertion "
                                        "`slots_.empty\\(\\)' failed\\." );
}

class Clinging : public Probe {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Clinging";
   explicit Clinging( std::string& log ) : Probe( "x", log ) {}

 protected:
   ~Clinging() override { const Zel::Ptr< Zel::PtrInterface::NotifieeConst > mine( this ); }
};

TEST_F( NotifieeDeathTest, ANotifieesReferenceGivenBackTwiceAborts ) {
   const auto dropInDestructor = [ & ] { Zel::newEntity< Clinging >( log_ ); };
   EXPECT_DEATH( dropInDestructor(), "Zel/PtrInterface:[0-9]+: .*assertZero.*: Assertion "
                                     "`!flag\\( kDestroying \\)' failed\\." );
}

// Does in its destructor what a test wants.
class Dying : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "NotifieeTest::Dying";
   void onAttribute( Zel::AttributeId, const void* ) override { ADD_FAILURE() << "half an object"; }

   std::function< void() > lastAct;

 protected:
   Dying() = default;
   ~Dying() override { lastAct(); }
};

TEST_F( NotifieeTest, OneThatIsBeingDestroyedIsToldOfNothing ) {
   auto dying = Zel::newEntity< Dying >();
   dying->zelNotifierIs( subject_ );
   dying->lastAct = [ & ] { EXPECT_EQ( change( 1 ), "a=1 b=1 c=1" ); };
   dying = nullptr;
}

TEST_F( NotifieeDeathTest, OneThatIsHeldInItsDestructorAborts ) {
   auto dying = Zel::newEntity< Dying >();
   dying->lastAct = [ held = dying.get() ] { held->zelReferenceInc(); };
   EXPECT_DEATH( dying = nullptr, "Zel/PtrInterface:[0-9]+: .*assertUnused.*: Assertion `" );
   dying->lastAct = [] {};
}

}   // namespace
