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
