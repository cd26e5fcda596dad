// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Value.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <utility>

#include "Zel/Exception.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/unit/Zel/Shapes.h"

namespace {

using Shapes::Point;
using Shapes::Shape;
using Shapes::Square;
using Zel::Value;

class ValueTest : public TestSupport::NoneLeftTest {
 protected:
   ~ValueTest() override { EXPECT_EQ( Point::live, 0 ) << "points are left"; }

   static Zel::TypeHandle type( const char* name ) { return Zel::zelTypeOf( name ); }
   static Zel::Ptr< Square > square( std::uint32_t side ) {
      return Square::SquareIs( side, Point( 1, 2 ) );
   }

 private:
   const Zel::ModuleRegistration registration_{ Shapes::kModule };
};

TEST_F( ValueTest, TheDefaultIsEmptyAndHasNoType ) {
   const Value empty;
   EXPECT_FALSE( empty );
   EXPECT_FALSE( empty.type() );
   EXPECT_EQ( Zel::View( empty ).object, nullptr );
   EXPECT_FALSE( empty.entity() );
   EXPECT_THROW( empty.as< Point >(), Zel::TypeException );
}

TEST_F( ValueTest, HoldsACopyOfItsOwn ) {
   Value held;
   {
      const Point point( 3, 4 );
      held = Value::of( point );
      EXPECT_EQ( Point::live, 2 );
   }
   EXPECT_EQ( Point::live, 1 );
   EXPECT_TRUE( held );
   EXPECT_EQ( held.type(), type( "Shapes::Point" ) );
   EXPECT_EQ( held.as< Point >(), Point( 3, 4 ) );
}

TEST_F( ValueTest, ACopyIsAnotherValueAndAMoveIsNot ) {
   Value first = Value::of( Point( 3, 4 ) );
   const Value second = first;
   EXPECT_EQ( Point::live, 2 );
   EXPECT_NE( Zel::View( first ).object, Zel::View( second ).object );
   const void* storage = Zel::View( first ).object;
   const Value third = std::move( first );
   EXPECT_EQ( Point::live, 2 );
   EXPECT_EQ( Zel::View( third ).object, storage );
   EXPECT_EQ( second.as< Point >(), Point( 3, 4 ) );
}

TEST_F( ValueTest, AssignmentReplacesWhateverItHeld ) {
   const auto entity = square( 5 );
   Value value = Value::of( Point( 3, 4 ) );
   const Value& same = value;
   value = same;
   EXPECT_EQ( value.as< Point >(), Point( 3, 4 ) );
   value = Value::of( entity );
   EXPECT_EQ( Point::live, 1 );   // the corner
   EXPECT_EQ( entity->zelReferences(), 2 );
   value = Value::of( std::uint32_t{ 7 } );
   EXPECT_EQ( entity->zelReferences(), 1 );
   EXPECT_EQ( value.as< std::uint32_t >(), 7u );
   value = Value();
   EXPECT_FALSE( value );
}

TEST_F( ValueTest, TakesOverStorageThatTheHooksMade ) {
   const Zel::TypeHandle point = type( "Shapes::Point" );
   const Point original( 3, 4 );
   void* storage = point.record()->hooks->copy( &original );
   {
      const Value value = Value::adopt( point, storage );
      EXPECT_EQ( Zel::View( value ).object, storage );
      EXPECT_EQ( Point::live, 2 );
   }
   EXPECT_EQ( Point::live, 1 );
}

TEST_F( ValueTest, IsReadAsItsTypeAlone ) {
   const Value number = Value::of( std::uint16_t{ 7 } );
   EXPECT_EQ( number.as< std::uint16_t >(), 7 );
   EXPECT_THROW( number.as< std::uint32_t >(), Zel::TypeException );
   EXPECT_THROW( number.as< Point >(), Zel::TypeException );
   EXPECT_EQ( Value::of( true ).as< bool >(), true );
   EXPECT_EQ( Value::of( 1.5 ).as< double >(), 1.5 );
   EXPECT_EQ( Value::of( Zel::String( "a" ) ).as< Zel::String >().str(), "a" );
}

TEST_F( ValueTest, HoldsOneReferenceToAnEntity ) {
   const auto entity = square( 5 );
   {
      const Value value = Value::of( entity );
      EXPECT_EQ( entity->zelReferences(), 2 );
      const Value copy = value;
      EXPECT_EQ( entity->zelReferences(), 3 );
      EXPECT_EQ( copy.entity(), entity );
   }
   EXPECT_EQ( entity->zelReferences(), 1 );
}

TEST_F( ValueTest, AnEntityGoesByItsOwnTypeWhateverThePointersTypeIs ) {
   const Zel::Ptr< Shape > shape = square( 5 );
   EXPECT_EQ( Value::of( shape ).type(), type( "Shapes::Square" ) );
   const Zel::Ptr< const Shape > constant = shape;
   EXPECT_EQ( Value::of( constant ).type(), type( "Shapes::Square" ) );
   EXPECT_EQ( Value::of( constant ).entity(), shape );
}

TEST_F( ValueTest, ANullPointerGoesByThePointersType ) {
   const Value none = Value::of( Zel::Ptr< Square >() );
   EXPECT_TRUE( none );
   EXPECT_EQ( none.type(), type( "Shapes::Square" ) );
   EXPECT_FALSE( none.entity() );
   EXPECT_FALSE( none.entity< Shape >() );
}

TEST_F( ValueTest, AnEntityOfAnUnregisteredClassGoesByItsNearestRegisteredBase ) {
   const Zel::Ptr< Square > tile = Zel::newEntity< Shapes::Tile >();
   EXPECT_EQ( Value::of( tile ).type(), type( "Shapes::Square" ) );
   const Zel::Ptr< Zel::PtrInterface > stranger = Zel::newEntity< Shapes::Stranger >();
   EXPECT_EQ( Value::of( stranger ).type(), type( "Zel::PtrInterface" ) );
}

TEST_F( ValueTest, APointerToAnUnregisteredClassGoesByItsNearestRegisteredBase ) {
   const auto tile = Zel::newEntity< Shapes::Tile >();
   EXPECT_EQ( Value::of( tile ).type(), type( "Shapes::Square" ) );
   EXPECT_EQ( Value::of( tile ).entity< Square >(), tile );
   const Zel::Ptr< const Shapes::Tile > constant = tile;
   EXPECT_EQ( Value::of( constant ).type(), type( "Shapes::Square" ) );
   const auto stranger = Zel::newEntity< Shapes::Stranger >();
   EXPECT_EQ( Value::of( stranger ).type(), type( "Zel::PtrInterface" ) );
}

TEST_F( ValueTest, ANullPointerToAnUnregisteredClassGoesByTheSameBase ) {
   EXPECT_EQ( Value::of( Zel::Ptr< Shapes::Tile >() ).type(), type( "Shapes::Square" ) );
   EXPECT_EQ( Value::of( Zel::Ptr< Shapes::Stranger >() ).type(), type( "Zel::PtrInterface" ) );
}

TEST_F( ValueTest, AnEntityIsReadAsItsTypeOrABase ) {
   const auto entity = square( 5 );
   const Value value = Value::of( entity );
   EXPECT_EQ( value.entity< Square >(), entity );
   EXPECT_EQ( value.entity< Shape >(), entity );
   EXPECT_EQ( value.entity< Zel::PtrInterface >(), entity );
   const Value base = Value::of( Zel::Ptr< Shape >() );
   EXPECT_THROW( base.entity< Square >(), Zel::TypeException );
}

TEST_F( ValueTest, ANameThatNobodyRegisteredIsATypeErrorThatNamesIt ) {
   EXPECT_FALSE( Zel::zelTypeByName( "Shapes::Circle" ) );
   try {
      Zel::zelTypeOf( "Shapes::Circle" );
      FAIL() << "it was found";
   } catch ( const Zel::TypeException& error ) {
      EXPECT_STREQ( error.what(), "no type is registered as \"Shapes::Circle\"" );
   }
}

}   // namespace
