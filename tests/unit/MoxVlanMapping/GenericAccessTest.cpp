// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What each kind of attribute does under each operation code, on the library's types.
#include "tests/unit/MoxVlanMapping/GenericAccess.h"

#include <array>
#include <new>
#include <string>
#include <typeinfo>
#include <utility>
#include <vector>

#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/OperatorNew.h"

namespace {

using Zel::Value;

class GenericFieldTest : public GenericAccess {};

TEST_F( GenericFieldTest, AFieldOfAValueAnswersGet ) {
   const Value ten = range( 10, 20, 'M' );
   EXPECT_EQ( text( done( ten, 2, kGet ) ), "10" );
   EXPECT_EQ( text( done( ten, 3, kGet ) ), "20" );
   EXPECT_EQ( done( ten, 4, kGet ).as< Bridging::VlanXlateMapping >(),
              TestSupport::mappingOf( 'M' ) );
   EXPECT_EQ( text( done( start( 77 ), 2, kGet ) ), "77" );
}

TEST_F( GenericFieldTest, AFieldOfAnEntityAnswersGet ) {
   EXPECT_EQ( text( done( made( "VlanRangeEntry", { intf( 7 ) } ), 130, kGet ) ), "7" );
   EXPECT_EQ( text( done( made( "VlanXlateScaleEntry", { intf( 8 ) } ), 130, kGet ) ), "8" );
}

class GenericPointerTest : public GenericAccess {
 protected:
   /// A state machine over the fixture's directories.
   Value machine() const {
      return made( "VlanMappingScaleSlaveSm",
                   { acsd_, clock_, config_, statusDir_, rangeDir_, scheduleDir_ } );
   }

   const Value rangeDir_ = made( "VlanRangeEntryDir" );
   const Value scheduleDir_ = made( "VlanXlateScheduleDir" );
   const Value acsd_ = Zel::zelConstruct( Zel::zelTypeOf( "Mox::MoxCommonSmData" ), {} );
   const Value clock_ = Zel::zelConstruct( Zel::zelTypeOf( "Zel::ManualClock" ), {} );
   const Value config_ = Zel::zelConstruct( Zel::zelTypeOf( "Bridging::Config" ), {} );
   const Value statusDir_ =
      Zel::zelConstruct( Zel::zelTypeOf( "Bridging::VlanXlateStatusDir" ), {} );
};

TEST_F( GenericPointerTest, APointerAnswersTheEntityThatTheConstructorWasGiven ) {
   const Value mgr = made( "MoxVlanRangeMgr", { rangeDir_ } );
   EXPECT_EQ( done( mgr, 130, kGet ).entity(), rangeDir_.entity() );
   const Value sm = machine();
   EXPECT_EQ( done( sm, 386, kGet ).entity(), rangeDir_.entity() );
   EXPECT_EQ( done( sm, 387, kGet ).entity(), scheduleDir_.entity() );
}

TEST_F( GenericPointerTest, ANullPointerAnswersNullOfItsDeclaredType ) {
   const Value none( Zel::zelTypeOf( "MoxVlanMapping::VlanRangeEntryDir" ), nullptr );
   const Value mgr = made( "MoxVlanRangeMgr", { none } );
   EXPECT_EQ( text( done( mgr, 130, kGet ) ), "null MoxVlanMapping::VlanRangeEntryDir" );
}

TEST_F( GenericPointerTest, TheRangeManagerIsNullUntilItIsMade ) {
   EXPECT_EQ( text( done( machine(), 388, kGet ) ), "null MoxVlanMapping::MoxVlanRangeMgr" );
}

TEST_F( GenericPointerTest, InstantiatingMakesTheRangeManagerOverTheArgumentAndAnswersIt ) {
   const Value sm = machine();
   const Value other = made( "VlanRangeEntryDir" );
   const Value mgr = done( sm, 388, kSet, { other } );
   EXPECT_EQ( text( mgr ), "MoxVlanMapping::MoxVlanRangeMgr" );
   EXPECT_EQ( done( mgr, 130, kGet ).entity(), other.entity() );
   EXPECT_EQ( done( sm, 388, kGet ).entity(), mgr.entity() );
   EXPECT_EQ( done( sm, 388, kSet, { other } ).entity(), mgr.entity() );
   EXPECT_FALSE( done( sm, 388, kSet, { rangeDir_ } ).entity() == mgr.entity() );
}

TEST_F( GenericPointerTest, DeletingDetachesTheRangeManagerAndAnswersIt ) {
   const Value sm = machine();
   const Value mgr = done( sm, 388, kSet, { rangeDir_ } );
   EXPECT_EQ( done( sm, 388, kDelete ).entity(), mgr.entity() );
   EXPECT_EQ( text( done( sm, 388, kGet ) ), "null MoxVlanMapping::MoxVlanRangeMgr" );
   EXPECT_EQ( text( done( sm, 388, kDelete ) ), "null MoxVlanMapping::MoxVlanRangeMgr" );
   EXPECT_EQ( mgr.entity()->zelReferences(), 1 );
}

TEST_F( GenericPointerTest, TheBasesAttributesAreReachedByNameAndByTheBasesType ) {
   const Value sm = machine();
   EXPECT_EQ( Zel::zelAttribute( sm, "acsd", Zel::OpCode::Get ).entity(), acsd_.entity() );
   EXPECT_EQ( Zel::zelAttribute( sm, "clock", Zel::OpCode::Get ).entity(), clock_.entity() );
   Value result;
   EXPECT_EQ( op( result, sm, 130, kGet ), Zel::kNoAttribute );
   const Zel::View base = Zel::zelViewAs( sm, Zel::zelTypeOf( "Mox::VlanMappingSlaveSm" ) );
   EXPECT_EQ( Zel::genericIfAttributeOp( result, base, 130, kGet, {} ), Zel::kDone );
   EXPECT_EQ( result.entity(), acsd_.entity() );
}

TEST_F( GenericPointerTest, TheBasesOperationsReachTheDerivedClass ) {
   const Value sm = machine();
   Zel::zelAttribute( sm, "handleInitialized", Zel::OpCode::Call );
   EXPECT_EQ( text( done( sm, 388, kGet ) ), "MoxVlanMapping::MoxVlanRangeMgr" );
}

class GenericCollectionTest : public GenericAccess {
 protected:
   /// Absent key: the default, not there, nothing to delete, and nothing created by asking.
   void expectAbsent( const Value& object, Zel::AttributeId attribute, const Value& key,
                      const std::string& defaultText ) {
      const std::string before = TestSupport::objectText( object );
      EXPECT_EQ( text( done( object, attribute, kGet, { key } ) ), defaultText );
      EXPECT_EQ( text( done( object, attribute, kHas, { key } ) ), "false" );
      EXPECT_EQ( text( done( object, attribute, kDelete, { key } ) ), "false" );
      EXPECT_EQ( TestSupport::objectText( object ), before );
   }
   /// The two counters as "SIZE/CHANGES".
   static std::string counters( const Value& object, Zel::AttributeId attribute ) {
      return text( done( object, attribute, kSize ) ) + "/" +
             text( done( object, attribute, kChanges ) );
   }

   const Value entry_ = made( "VlanRangeEntry", { intf( 7 ) } );
   const Value rangeDir_ = made( "VlanRangeEntryDir" );
   const Value scale_ = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   const Value scaleDir_ = made( "VlanXlateScaleEntryDir" );
   const Value schedule_ = made( "VlanXlateScheduleDir" );
};

TEST_F( GenericCollectionTest, AnAbsentKeyGivesTheDefaultAndCreatesNothing ) {
   expectAbsent( entry_, 131, vlan( 10 ), text( range( 1, 1, '-' ) ) );
   expectAbsent( entry_, 132, start( 10 ), "false" );
   expectAbsent( rangeDir_, 130, intf( 7 ), "null MoxVlanMapping::VlanRangeEntry" );
   expectAbsent( scale_, 131, vlan( 10 ), "false" );
   expectAbsent( scale_, 132, range( 10, 20, 'M' ), "false" );
   expectAbsent( scaleDir_, 130, intf( 7 ), "null MoxVlanMapping::VlanXlateScaleEntry" );
   expectAbsent( schedule_, 130, intf( 7 ), "false" );
}

TEST_F( GenericCollectionTest, AnOrderedMapTakesAValueUnderItsOwnKeyAndOverwritesIt ) {
   EXPECT_EQ( text( done( entry_, 131, kSet, { range( 10, 20, 'M' ) } ) ), "nothing" );
   done( entry_, 131, kSet, { range( 30, 30, 'N' ) } );
   EXPECT_EQ( rangeText( done( entry_, 131, kGet, { vlan( 10 ) } ) ), "10-20 M" );
   EXPECT_EQ( counters( entry_, 131 ), "2/2" );
   done( entry_, 131, kSet, { range( 10, 12, 'P' ) } );
   EXPECT_EQ( rangeText( done( entry_, 131, kGet, { vlan( 10 ) } ) ), "10-12 P" );
   EXPECT_EQ( counters( entry_, 131 ), "2/2" );
}

TEST_F( GenericCollectionTest, AnOrderedSetKeepsTheFlagThatItIsGiven ) {
   done( entry_, 132, kSet, { start( 10 ), flag( false ) } );
   done( entry_, 132, kSet, { start( 20 ), flag( true ) } );
   EXPECT_EQ( walk( entry_, "revSortedStartVid" ), "20: true, 10: false" );
   EXPECT_EQ( text( done( entry_, 132, kGet, { start( 10 ) } ) ), "false" );
   EXPECT_EQ( text( done( entry_, 132, kHas, { start( 10 ) } ) ), "true" );
   done( entry_, 132, kSet, { start( 20 ), flag( false ) } );
   EXPECT_EQ( walk( entry_, "revSortedStartVid" ), "20: false, 10: false" );

   done( scale_, 132, kSet, { range( 10, 20, 'M' ), flag( false ) } );
   EXPECT_EQ( text( done( scale_, 132, kGet, { range( 10, 20, 'M' ) } ) ), "false" );
   EXPECT_EQ( text( done( scale_, 132, kHas, { range( 10, 20, 'M' ) } ) ), "true" );
}

TEST_F( GenericCollectionTest, DeleteTellsWhetherTheKeyWasThereWhateverItsFlag ) {
   done( entry_, 132, kSet, { start( 10 ), flag( false ) } );
   EXPECT_EQ( text( done( entry_, 132, kDelete, { start( 10 ) } ) ), "true" );
   EXPECT_EQ( text( done( entry_, 132, kDelete, { start( 10 ) } ) ), "false" );

   done( scale_, 132, kSet, { range( 10, 20, 'M' ), flag( false ) } );
   EXPECT_EQ( text( done( scale_, 132, kDelete, { range( 10, 20, 'N' ) } ) ), "false" );
   EXPECT_EQ( text( done( scale_, 132, kDelete, { range( 10, 20, 'M' ) } ) ), "true" );

   done( entry_, 131, kSet, { range( 1, 1, '-' ) } );
   EXPECT_EQ( text( done( entry_, 131, kDelete, { vlan( 1 ) } ) ), "true" );
   EXPECT_EQ( text( done( entry_, 131, kDelete, { vlan( 1 ) } ) ), "false" );
}

TEST_F( GenericCollectionTest, TheCountersAreTheContainersOwn ) {
   for ( const unsigned id : { 5u, 6u, 7u } ) {
      done( scale_, 131, kSet, { vlan( id ), flag( true ) } );
   }
   done( scale_, 131, kSet, { vlan( 7 ), flag( true ) } );
   EXPECT_EQ( counters( scale_, 131 ), "3/3" );
   done( scale_, 131, kDelete, { vlan( 6 ) } );
   done( scale_, 131, kDelete, { vlan( 6 ) } );
   EXPECT_EQ( counters( scale_, 131 ), "2/4" );
   const auto entity = scale_.entity< MoxVlanMapping::VlanXlateScaleEntry >();
   EXPECT_EQ( entity->vlanInXlateHashTable().size(), 2u );
   EXPECT_EQ( entity->vlanInXlateHashTable().changes(), 4u );
}

TEST_F( GenericCollectionTest, AnEntityMapMakesItsEntityOnceAndAnswersIt ) {
   const Value entry = done( rangeDir_, 130, kSet, { intf( 7 ) } );
   EXPECT_EQ( text( entry ), "MoxVlanMapping::VlanRangeEntry" );
   EXPECT_EQ( text( done( entry, 130, kGet ) ), "7" );
   EXPECT_EQ( done( rangeDir_, 130, kSet, { intf( 7 ) } ).entity(), entry.entity() );
   EXPECT_EQ( done( rangeDir_, 130, kGet, { intf( 7 ) } ).entity(), entry.entity() );
   EXPECT_EQ( text( done( rangeDir_, 130, kHas, { intf( 7 ) } ) ), "true" );
   EXPECT_EQ( counters( rangeDir_, 130 ), "1/1" );
   EXPECT_EQ( text( done( rangeDir_, 130, kDelete, { intf( 7 ) } ) ), "true" );
   EXPECT_EQ( counters( rangeDir_, 130 ), "0/2" );
   EXPECT_EQ( text( done( scaleDir_, 130, kSet, { intf( 8 ) } ) ),
              "MoxVlanMapping::VlanXlateScaleEntry" );
   EXPECT_EQ( counters( scaleDir_, 130 ), "1/1" );
}

// Writes down the interfaces that it is told of.
class Listener : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "Listener";
   void onAttribute( Zel::AttributeId attribute, const void* key ) override {
      heard_ += std::to_string( attribute ) + ": " +
                std::to_string( static_cast< const Corvel::IntfId* >( key )->value() ) + "\n";
   }
   std::string heard() { return std::exchange( heard_, "" ); }

 protected:
   explicit Listener( const Zel::Ptr< Zel::PtrInterface >& entity ) { zelNotifierIs( entity ); }

 private:
   std::string heard_;
};

class GenericHashSetTest : public GenericAccess {
 protected:
   const Value schedule_ = made( "VlanXlateScheduleDir" );
   const Zel::Ptr< Listener > listener_ = Zel::newEntity< Listener >( schedule_.entity() );
};

TEST_F( GenericHashSetTest, SettingTrueInsertsTheKeyAndNotifies ) {
   done( schedule_, 130, kSet, { intf( 7 ), flag( true ) } );
   EXPECT_EQ( listener_->heard(), "130: 7\n" );
   EXPECT_EQ( text( done( schedule_, 130, kGet, { intf( 7 ) } ) ), "true" );
   EXPECT_EQ( text( done( schedule_, 130, kHas, { intf( 7 ) } ) ), "true" );
   done( schedule_, 130, kSet, { intf( 7 ), flag( true ) } );
   EXPECT_EQ( listener_->heard(), "" );
}

TEST_F( GenericHashSetTest, DeletingTheKeyNotifies ) {
   done( schedule_, 130, kSet, { intf( 7 ), flag( true ) } );
   listener_->heard();
   EXPECT_EQ( text( done( schedule_, 130, kDelete, { intf( 7 ) } ) ), "true" );
   EXPECT_EQ( listener_->heard(), "130: 7\n" );
   EXPECT_EQ( text( done( schedule_, 130, kDelete, { intf( 7 ) } ) ), "false" );
   EXPECT_EQ( listener_->heard(), "" );
}

TEST_F( GenericHashSetTest, SettingFalseIsAnErrorThatChangesNothing ) {
   done( schedule_, 130, kSet, { intf( 7 ), flag( true ) } );
   listener_->heard();
   const std::string before = TestSupport::objectText( schedule_ );
   Value result;
   EXPECT_THROW( op( result, schedule_, 130, kSet, { intf( 7 ), flag( false ) } ),
                 Zel::SetFalseValueException );
   EXPECT_THROW( op( result, schedule_, 130, kSet, { intf( 8 ), flag( false ) } ),
                 Zel::SetFalseValueException );
   EXPECT_EQ( text( result ), "nothing" );
   EXPECT_EQ( TestSupport::objectText( schedule_ ), before );
   EXPECT_EQ( listener_->heard(), "" );

   const Value scale = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   EXPECT_THROW( op( result, scale, 131, kSet, { vlan( 5 ), flag( false ) } ),
                 Zel::SetFalseValueException );
   EXPECT_EQ( walk( scale, "vlanInXlateHashTable" ), "" );
}

class GenericWholeValueTest : public GenericAccess {};

TEST_F( GenericWholeValueTest, IsSetAnswersFalseForTheDefaultAlone ) {
   EXPECT_EQ( text( done( range( 1, 1, '-' ), 0, kIsSet ) ), "false" );
   EXPECT_EQ( text( done( range( 1, 2, '-' ), 0, kIsSet ) ), "true" );
   EXPECT_EQ( text( done( range( 1, 1, 'M' ), 0, kIsSet ) ), "true" );
   EXPECT_EQ( text( done( start( 0 ), 0, kIsSet ) ), "false" );
   EXPECT_EQ( text( done( start( 1 ), 0, kIsSet ) ), "true" );
}

TEST_F( GenericWholeValueTest, EqualAndLessAreTheTypesOwn ) {
   EXPECT_EQ( text( done( range( 10, 20, 'M' ), 0, kEqual, { range( 10, 20, 'M' ) } ) ), "true" );
   EXPECT_EQ( text( done( range( 10, 20, 'M' ), 0, kEqual, { range( 10, 20, 'N' ) } ) ), "false" );
   // The larger range comes first, then the lower start, then the lower translated VLAN.
   EXPECT_EQ( text( done( range( 30, 40, 'M' ), 0, kLess, { range( 1, 5, 'M' ) } ) ), "true" );
   EXPECT_EQ( text( done( range( 1, 5, 'M' ), 0, kLess, { range( 30, 40, 'M' ) } ) ), "false" );
   EXPECT_EQ( text( done( range( 1, 5, 'N' ), 0, kLess, { range( 2, 6, 'M' ) } ) ), "true" );
   EXPECT_EQ( text( done( range( 1, 5, 'M' ), 0, kLess, { range( 1, 5, 'N' ) } ) ), "true" );
   // Starts count downward.
   EXPECT_EQ( text( done( start( 20 ), 0, kLess, { start( 10 ) } ) ), "true" );
   EXPECT_EQ( text( done( start( 10 ), 0, kLess, { start( 20 ) } ) ), "false" );
   EXPECT_EQ( text( done( start( 10 ), 0, kEqual, { start( 10 ) } ) ), "true" );
}

TEST_F( GenericWholeValueTest, TwinsAreNeitherEqualNorLess ) {
   const auto twin = []( std::uint16_t inner ) {
      return Value::of( MoxVlanMapping::VlanRangeXlateMapping(
         Bridging::VlanId( 10 ), Bridging::VlanId( 20 ),
         Bridging::VlanXlateMapping::fromRaw( 100, inner ) ) );
   };
   EXPECT_EQ( text( done( twin( 1 ), 0, kEqual, { twin( 2 ) } ) ), "false" );
   EXPECT_EQ( text( done( twin( 1 ), 0, kLess, { twin( 2 ) } ) ), "false" );
   EXPECT_EQ( text( done( twin( 2 ), 0, kLess, { twin( 1 ) } ) ), "false" );
   const Value scale = made( "VlanXlateScaleEntry", { intf( 7 ) } );
   done( scale, 132, kSet, { twin( 1 ), flag( true ) } );
   done( scale, 132, kSet, { twin( 2 ), flag( false ) } );
   EXPECT_EQ( text( done( scale, 132, kGet, { twin( 1 ) } ) ), "true" );
   EXPECT_EQ( text( done( scale, 132, kGet, { twin( 2 ) } ) ), "false" );
   EXPECT_EQ( text( done( scale, 132, kHas, { twin( 3 ) } ) ), "false" );
}

TEST_F( GenericWholeValueTest, AnEntityHasNone ) {
   Value result;
   for ( const unsigned code : { kIsSet, kEqual, kLess } ) {
      EXPECT_EQ( op( result, made( "VlanRangeEntryDir" ), 0, code ), Zel::kNoAttribute );
   }
}

class GenericCallTest : public GenericAccess {
 protected:
   std::string state() const {
      return TestSupport::stateText( *dir_.entity< MoxVlanMapping::VlanRangeEntryDir >() );
   }
   void add( unsigned id, char letter ) {
      done( mgr_, 134, kCall, { intf( 7 ), vlan( id ), mapping( letter ) } );
   }
   /// Type and text of what a call throws.
   std::string thrownBy( Zel::AttributeId attribute, Arguments arguments ) {
      try {
         Value result;
         op( result, mgr_, attribute, kCall, arguments );
      } catch ( const Zel::Exception& error ) {
         const bool range = typeid( error ) == typeid( Zel::RangeException );
         return ( range ? "range: " : "other: " ) + error.message();
      }
      return "nothing";
   }

   const Value dir_ = made( "VlanRangeEntryDir" );
   const Value mgr_ = made( "MoxVlanRangeMgr", { dir_ } );
};

TEST_F( GenericCallTest, AddingAndDeletingUnpackTheirArgumentsInOrder ) {
   EXPECT_EQ( text( done( mgr_, 134, kCall, { intf( 7 ), vlan( 10 ), mapping( 'M' ) } ) ),
              "nothing" );
   add( 11, 'M' );
   add( 12, 'M' );
   EXPECT_EQ( state(), "7: 10-12 M / 10\n" );
   EXPECT_EQ( text( done( mgr_, 135, kCall, { intf( 7 ), vlan( 11 ) } ) ), "nothing" );
   EXPECT_EQ( state(), "7: 10-10 M, 12-12 M / 12, 10\n" );
}

TEST_F( GenericCallTest, TheErrorsOfTheCalledOperationPassThroughUnchanged ) {
   add( 10, 'M' );
   EXPECT_EQ( thrownBy( 134, { intf( 7 ), vlan( 0 ), mapping( 'M' ) } ),
              "range: Bridging::VlanId::value < 1 or > 4094 not allowed" );
   EXPECT_EQ( thrownBy( 134, { intf( 7 ), vlan( 4095 ), mapping( 'M' ) } ),
              "range: MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
   EXPECT_EQ( thrownBy( 135, { intf( 7 ), vlan( 4095 ) } ),
              "range: MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
   EXPECT_EQ( state(), "7: 10-10 M / 10\n" );
}

TEST_F( GenericCallTest, WrongArgumentsAreATypeErrorAndNothingIsCalled ) {
   EXPECT_EQ( thrownBy( 135, { intf( 7 ) } ), "other: MoxVlanMapping::MoxVlanRangeMgr::"
                                              "deleteVlanFromIdx takes ( Corvel::IntfId, "
                                              "Bridging::VlanId ), 1 given" );
   EXPECT_EQ( thrownBy( 134, { vlan( 10 ), intf( 7 ), mapping( 'M' ) } ),
              "other: MoxVlanMapping::MoxVlanRangeMgr::addVlanToIdx takes a Corvel::IntfId as "
              "argument 1, Bridging::VlanId given" );
   EXPECT_TRUE( thrownBy( 134, { intf( 7 ), vlan( 10 ), Value() } ).starts_with( "other: " ) );
   EXPECT_EQ( state(), "" );
}

// The answer's memory is asked for before the member is gone.
TEST_F( GenericAccess, ADeletionWhoseAnswerHasNoRoomIsNotMade ) {
   const Value schedule = made( "VlanXlateScheduleDir" );
   done( schedule, 130, kSet, { intf( 7 ), flag( true ) } );
   const std::array< Value, 1 > key{ intf( 7 ) };
   Value result;
   try {
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      Zel::genericIfAttributeOp( result, schedule, 130, kDelete, key );
      FAIL() << "no memory was asked for";
   } catch ( const std::bad_alloc& ) {
      EXPECT_FALSE( result );
   }
   EXPECT_EQ( walk( schedule, "vlanXlateSchedule" ), "7: true" );
   EXPECT_EQ( text( done( schedule, 130, kDelete, { intf( 7 ) } ) ), "true" );
   EXPECT_EQ( walk( schedule, "vlanXlateSchedule" ), "" );
}

// Calls succeed while there are elements that were paid for before; the first that asks for memory
// fails and leaves the index as the calls before it made it.
TEST_F( GenericCallTest, ShortageOfMemoryPassesThroughWithTheIndexAsItWas ) {
   std::vector< std::array< Value, 3 > > calls;
   for ( unsigned id = 2; id <= 4094; id += 2 ) {
      calls.push_back( { intf( 7 ), vlan( id ), mapping( 'N' ) } );
   }
   add( 1, 'M' );
   std::size_t made = 0;
   bool refused = false;
   try {
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      Value result;
      for ( ; made < calls.size(); ++made ) {
         Zel::genericIfAttributeOp( result, mgr_, 134, kCall, calls[ made ] );
      }
   } catch ( const std::bad_alloc& ) {
      refused = true;
   }
   EXPECT_TRUE( refused );
   const auto entry =
      dir_.entity< MoxVlanMapping::VlanRangeEntryDir >()->vlanRangeEntry( Corvel::IntfId( 7 ) );
   EXPECT_EQ( entry->vlanIdRange().size(), made + 1 );
   EXPECT_EQ( entry->revSortedStartVid().size(), made + 1 );
   for ( ; made < calls.size(); ++made ) {
      done( mgr_, 134, kCall, { calls[ made ][ 0 ], calls[ made ][ 1 ], calls[ made ][ 2 ] } );
   }
   EXPECT_EQ( entry->vlanIdRange().size(), calls.size() + 1 );
}

}   // namespace
