// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Reactor.h"

#include <gtest/gtest.h>

#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"

namespace {

class Lamp : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "ReactorTest::Lamp";
   void flash() { list_.notify( 130, nullptr ); }
   Zel::NotifieeList* notifieeList() const override { return &list_; }

 private:
   mutable Zel::NotifieeList list_{ *this };
};

struct Watcher {
   int flashes = 0;
};

class LampReactor : public Zel::Reactor< Lamp, Watcher > {
 public:
   static constexpr char zelTypeName[] = "ReactorTest::LampReactor";
   void onAttribute( Zel::AttributeId, const void* ) override {
      if ( owner() ) {
         ++owner()->flashes;
      }
   }

 protected:
   using Reactor::Reactor;
};

class ReactorTest : public TestSupport::NoneLeftTest {
 protected:
   Watcher watcher_;
   Zel::Ptr< Lamp > lamp_ = Zel::newEntity< Lamp >();
   Zel::Ptr< LampReactor > reactor_ = Zel::newEntity< LampReactor >( lamp_, &watcher_ );
};

TEST_F( ReactorTest, WatchesFromItsConstructionOn ) {
   lamp_->flash();
   EXPECT_EQ( watcher_.flashes, 1 );
   EXPECT_EQ( reactor_->notifier(), lamp_ );
}

TEST_F( ReactorTest, AClearedOwnerIsNotReached ) {
   reactor_->ownerIs( nullptr );
   EXPECT_EQ( reactor_->owner(), nullptr );
   lamp_->flash();
   EXPECT_EQ( watcher_.flashes, 0 );
}

// An owner that is told of something while its destructor runs, and has not cleared the way back.
class DyingOwner : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "ReactorTest::DyingOwner";
   int flashes() const { return flashes_; }

 protected:
   DyingOwner( const Zel::Ptr< Lamp >& lamp, int& heard )
       : lamp_( lamp ), heard_( heard ), watch_( Zel::newEntity< Watch >( lamp, this ) ) {}
   ~DyingOwner() override {
      lamp_->flash();
      heard_ = flashes_;
   }

 private:
   class Watch : public Zel::Reactor< Lamp, DyingOwner > {
    public:
      static constexpr char zelTypeName[] = "ReactorTest::DyingOwner::Watch";
      void onAttribute( Zel::AttributeId, const void* ) override {
         if ( const Zel::Ptr< DyingOwner > held = heldOwner() ) {
            ++held->flashes_;
         }
      }

    protected:
      using Reactor::Reactor;
   };

   const Zel::Ptr< Lamp > lamp_;
   int& heard_;
   int flashes_ = 0;
   const Zel::Ptr< Watch > watch_;
};

TEST_F( ReactorTest, AnOwnerThatIsBeingDestroyedIsNotReached ) {
   int heard = 0;
   auto owner = Zel::newEntity< DyingOwner >( lamp_, heard );
   lamp_->flash();
   EXPECT_EQ( owner->flashes(), 1 );
   owner = nullptr;
   EXPECT_EQ( heard, 1 );
}

TEST_F( ReactorTest, WatchesAnotherNotifierWhenToldTo ) {
   const auto other = Zel::newEntity< Lamp >();
   reactor_->notifierIs( other );
   lamp_->flash();
   EXPECT_EQ( watcher_.flashes, 0 );
   other->flash();
   EXPECT_EQ( watcher_.flashes, 1 );
}

TEST_F( ReactorTest, WatchesNothingWhenBuiltOverNull ) {
   const auto idle = Zel::newEntity< LampReactor >( nullptr, &watcher_ );
   EXPECT_EQ( idle->notifier(), nullptr );
}

}   // namespace
