// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <utility>

#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

namespace {

using Corvel::IntfId;
using MoxVlanMapping::VlanXlateScheduleDir;

// Writes down what it is told, with the schedule as it stands then.
class Listener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "Listener";

   void onAttribute( Zel::AttributeId attribute, const void* key ) override {
      const auto& dir = static_cast< const VlanXlateScheduleDir& >( *zelNotifier() );
      heard_ += std::to_string( attribute ) + ": " +
                std::to_string( static_cast< const IntfId* >( key )->value() ) + " of {" +
                TestSupport::interfacesText( dir.vlanXlateSchedule() ) + "}\n";
      if ( const auto react = react_ ) {   // a copy: it may replace itself
         react();
      }
   }

   std::string heard() { return std::exchange( heard_, "" ); }
   void reactIs( std::function< void() > react ) { react_ = std::move( react ); }

 protected:
   explicit Listener( const Zel::Ptr< VlanXlateScheduleDir >& dir ) { zelNotifierIs( dir ); }

 private:
   std::string heard_;
   std::function< void() > react_;
};

class VlanXlateScheduleDirTest : public TestSupport::NoneLeftTest {
 protected:
   std::string schedule() const { return TestSupport::interfacesText( dir_->vlanXlateSchedule() ); }

   Zel::Ptr< VlanXlateScheduleDir > dir_ = MoxVlanMapping::vlanXlateScheduleDirFactory();
   Zel::Ptr< Listener > listener_ = Zel::newEntity< Listener >( dir_ );
};

TEST_F( VlanXlateScheduleDirTest, StartsEmptyAndActive ) {
   EXPECT_TRUE( dir_->hasNotificationActive() );
   EXPECT_EQ( schedule(), "" );
   const auto made = VlanXlateScheduleDir::VlanXlateScheduleDirIs();
   EXPECT_TRUE( made->hasNotificationActive() );
   EXPECT_EQ( made->vlanXlateSchedule().size(), 0u );
   EXPECT_EQ( made->notifieeList()->notifiees(), 0u );
}

TEST_F( VlanXlateScheduleDirTest, AddingNotifiesOnce ) {
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   EXPECT_EQ( listener_->heard(), "130: 7 of {7}\n" );
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   EXPECT_EQ( listener_->heard(), "" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( VlanXlateScheduleDirTest, AddingAnElementOfAnInterfaceThatWaitsIsSilent ) {
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   listener_->heard();
   const auto element = Zel::newEntity< VlanXlateScheduleDir::ZelVlanXlateSchedule >( IntfId( 7 ) );
   dir_->vlanXlateScheduleIs( element );
   EXPECT_EQ( listener_->heard(), "" );
   EXPECT_EQ( schedule(), "7" );
   EXPECT_EQ( element->zelReferences(), 1 );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAMemberNotifiesAndReturnsTrue ) {
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   dir_->vlanXlateScheduleIs( IntfId( 8 ) );
   listener_->heard();
   EXPECT_TRUE( dir_->vlanXlateScheduleDel( IntfId( 7 ) ) );
   EXPECT_EQ( listener_->heard(), "130: 7 of {8}\n" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingANonMemberIsSilentAndReturnsFalse ) {
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   listener_->heard();
   EXPECT_FALSE( dir_->vlanXlateScheduleDel( IntfId( 8 ) ) );
   EXPECT_EQ( listener_->heard(), "" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAllNotifiesOncePerMember ) {
   for ( const unsigned intf : { 1u, 2u, 3u } ) {
      dir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   listener_->heard();
   dir_->vlanXlateScheduleDelAll();
   EXPECT_EQ( listener_->heard(), "130: 1 of {2, 3}\n130: 2 of {3}\n130: 3 of {}\n" );
   EXPECT_EQ( schedule(), "" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAllOfNoneIsSilent ) {
   dir_->vlanXlateScheduleDelAll();
   EXPECT_EQ( listener_->heard(), "" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAllBearsAReactorThatDeletesTheNext ) {
   for ( const unsigned intf : { 1u, 2u, 3u } ) {
      dir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   listener_->heard();
   listener_->reactIs( [ this ] {
      listener_->reactIs( {} );
      dir_->vlanXlateScheduleDel( IntfId( 2 ) );
   } );
   dir_->vlanXlateScheduleDelAll();
   EXPECT_EQ( listener_->heard(), "130: 1 of {2, 3}\n130: 2 of {3}\n130: 3 of {}\n" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAllEndsThoughAReactorMarksAgainWhatItIsToldOf ) {
   for ( const unsigned intf : { 1u, 2u } ) {
      dir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   listener_->heard();
   int marks = 0;
   listener_->reactIs( [ & ] {
      ASSERT_LE( ++marks, 4 ) << "it deletes what came meanwhile";
      for ( const unsigned intf : { 1u, 2u } ) {
         dir_->vlanXlateScheduleIs( IntfId( intf ) );
      }
   } );
   dir_->vlanXlateScheduleDelAll();
   listener_->reactIs( {} );
   EXPECT_EQ( listener_->heard(), "130: 1 of {2}\n130: 1 of {2, 1}\n"
                                  "130: 2 of {1}\n130: 2 of {1, 2}\n" );
   EXPECT_EQ( schedule(), "1, 2" );
}

// The reactor takes away the last member, at which deleting all was to stop, before its turn.
TEST_F( VlanXlateScheduleDirTest, DeletingAllLeavesNewcomersThoughTheLastMemberWentEarly ) {
   for ( const unsigned intf : { 1u, 2u, 3u } ) {
      dir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   listener_->heard();
   listener_->reactIs( [ this ] {
      listener_->reactIs( {} );
      dir_->vlanXlateScheduleDel( IntfId( 3 ) );
      dir_->vlanXlateScheduleIs( IntfId( 3 ) );
      dir_->vlanXlateScheduleIs( IntfId( 4 ) );
   } );
   dir_->vlanXlateScheduleDelAll();
   EXPECT_EQ( schedule(), "3, 4" );
   EXPECT_EQ( listener_->heard(), "130: 1 of {2, 3}\n130: 3 of {2}\n130: 3 of {2, 3}\n"
                                  "130: 4 of {2, 3, 4}\n130: 2 of {3, 4}\n" );
}

TEST_F( VlanXlateScheduleDirTest, DeletingAllBearsAReactorThatDropsTheDirectory ) {
   dir_->vlanXlateScheduleIs( IntfId( 1 ) );
   dir_->vlanXlateScheduleIs( IntfId( 2 ) );
   listener_->heard();
   VlanXlateScheduleDir& dir = *dir_;
   std::string heard;
   listener_->reactIs( [ & ] {
      heard = listener_->heard();
      dir_ = nullptr;
      listener_ = nullptr;
   } );
   dir.vlanXlateScheduleDelAll();
   EXPECT_EQ( heard, "130: 1 of {2}\n" );
}

TEST_F( VlanXlateScheduleDirTest, InterfacesWaitInOrderOfTheirComing ) {
   for ( const unsigned intf : { 30u, 10u, 20u } ) {
      dir_->vlanXlateScheduleIs( IntfId( intf ) );
   }
   EXPECT_EQ( schedule(), "30, 10, 20" );
   dir_->vlanXlateScheduleDel( IntfId( 30 ) );
   dir_->vlanXlateScheduleIs( IntfId( 30 ) );
   EXPECT_EQ( schedule(), "10, 20, 30" );
}

TEST_F( VlanXlateScheduleDirTest, HashesUnderItsOwnSeed ) {
   EXPECT_EQ( dir_->vlanXlateSchedule().seed(), Zel::hashSeed() ^ 0xcb5901bu );
}

TEST_F( VlanXlateScheduleDirTest, AnInactiveDirectoryTellsNobody ) {
   dir_->hasNotificationActiveIs( false );
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   EXPECT_EQ( listener_->heard(), "" );
   EXPECT_EQ( schedule(), "7" );
}

TEST_F( VlanXlateScheduleDirTest, NobodyHearsOfMembersThatVanishWithIt ) {
   dir_->vlanXlateScheduleIs( IntfId( 7 ) );
   listener_->heard();
   dir_ = nullptr;
   // The listener held the directory; letting go of it is what destroys it.
   listener_->zelNotifierIs( nullptr );
   EXPECT_EQ( listener_->heard(), "" );
}

}   // namespace
