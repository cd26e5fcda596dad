// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/GenericIf.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <limits>
#include <span>
#include <stdexcept>
#include <string>

#include "Zel/Clock.h"
#include "Zel/Exception.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/unit/Zel/Shapes.h"

namespace {

using Shapes::Point;
using Shapes::Shape;
using Shapes::Square;
using Zel::OpCode;
using Zel::Value;

class GenericIfTest : public TestSupport::NoneLeftTest {
 protected:
   ~GenericIfTest() override { EXPECT_EQ( Point::live, 0 ) << "points are left"; }

   static Zel::TypeHandle type( const char* name ) { return Zel::zelTypeOf( name ); }
   static Value number( std::uint32_t value ) { return Value::of( value ); }
   static Value square( std::uint32_t side ) {
      return Value::of( Square::SquareIs( side, Point( 1, 2 ) ) );
   }
   /// The text of the type error that `act` ends with.
   template < class Act >
   static std::string typeError( Act act ) {
      try {
         act();
      } catch ( const Zel::TypeException& error ) {
         return error.what();
      }
      return "none";
   }
   static int op( Value& result, const Value& object, Zel::AttributeId attribute, unsigned code,
                  std::initializer_list< Value > arguments = {} ) {
      return Zel::genericIfAttributeOp( result, object, attribute, code,
                                        std::span( arguments.begin(), arguments.size() ) );
   }

 private:
   const Zel::ModuleRegistration registration_{ Shapes::kModule };
};

TEST_F( GenericIfTest, AnAttributeOfExactlyTheTypeIsDone ) {
   const Value object = square( 5 );
   Value result;
   EXPECT_EQ( op( result, object, 386, 0 ), Zel::kDone );
   EXPECT_EQ( result.as< std::uint32_t >(), 5u );
   EXPECT_EQ( op( result, object, 387, 0 ), Zel::kDone );
   EXPECT_EQ( result.as< Point >(), Point( 1, 2 ) );
}

TEST_F( GenericIfTest, AnIdOfTheBaseIsNoneOfTheDerivedTypes ) {
   Value result = number( 99 );
   EXPECT_EQ( op( result, square( 5 ), 130, 0 ), Zel::kNoAttribute );
   EXPECT_EQ( op( result, square( 5 ), 385, 0 ), Zel::kNoAttribute );
   EXPECT_EQ( op( result, square( 5 ), 390, 0 ), Zel::kNoAttribute );
   EXPECT_EQ( result.as< std::uint32_t >(), 99u );
}

TEST_F( GenericIfTest, WhatIsNotThereIsATypeError ) {
   Value result;
   EXPECT_EQ( typeError( [ & ] { op( result, Value(), 130, 0 ); } ),
              "there is no object: null nothing" );
   EXPECT_EQ(
      typeError( [ & ] { op( result, Value( type( "Shapes::Square" ), nullptr ), 386, 0 ); } ),
      "there is no object: null Shapes::Square" );
   EXPECT_EQ( typeError( [ & ] { op( result, square( 5 ), 388, 10, { Value() } ); } ),
              "Shapes::Square::grow takes a uint32_t as argument 1, nothing given" );
   EXPECT_EQ( typeError( [] { Zel::zelConstruct( {}, {} ); } ), "there is no type" );
   EXPECT_EQ( typeError( [] { Zel::zelParse( Zel::TypeHandle(), "1" ); } ), "there is no type" );
}

TEST_F( GenericIfTest, WhatIsNoValueHasNoStringFormAndNoCopy ) {
   const bool yes = true;
   const Value object = square( 5 );
   EXPECT_EQ( typeError( [ & ] { Zel::zelStrep( { {}, &yes } ); } ), "there is no type" );
   EXPECT_EQ( typeError( [] {
                 Zel::zelStrep( { type( "bool" ), nullptr } );
              } ),
              "there is no value: bool" );
   EXPECT_EQ( typeError( [] { Value( Zel::View{} ); } ), "there is no type" );
   EXPECT_EQ( typeError( [ & ] { Value( Zel::View( object ) ); } ),
              "there is no value: Shapes::Square" );
   Value result;
   EXPECT_EQ( typeError( [ & ] {
                 Zel::genericIfAttributeOp( result, { {}, &yes }, 2, 0, {} );
              } ),
              "there is no object: null nothing" );
}

TEST_F( GenericIfTest, AnEntityViewedAsATypeThatItIsNotIsATypeError ) {
   const Value clock = Value::of( Zel::manualClockFactory() );
   const Zel::View base = Zel::zelViewAs( clock, type( "Zel::PtrInterface" ) );
   const Zel::View wrong = Zel::zelViewAs( base, type( "Shapes::Square" ) );
   Value result;
   EXPECT_EQ( typeError( [ & ] { Zel::genericIfAttributeOp( result, wrong, 386, 0, {} ); } ),
              "a Zel::ManualClock is no Shapes::Square" );
}

TEST_F( GenericIfTest, CodesThatMeanNothingAreUnsupported ) {
   const Value object = square( 5 );
   Value result = number( 99 );
   for ( const unsigned code : { 6u, 7u, 8u, 9u, 14u, 15u, 16u, 255u, 256u, 266u,
                                 std::numeric_limits< unsigned >::max() } ) {
      EXPECT_EQ( op( result, object, 388, code, { number( 1 ) } ), Zel::kUnsupported ) << code;
      EXPECT_EQ( op( result, Value::of( Point() ), 0, code ), Zel::kUnsupported ) << code;
   }
   EXPECT_EQ( result.as< std::uint32_t >(), 99u );
   EXPECT_EQ( object.entity< Square >()->side(), 5u );
}

TEST_F( GenericIfTest, ACallYieldsWhatTheOperationReturnsAndNothingElse ) {
   const Value object = square( 5 );
   Value result;
   EXPECT_EQ( op( result, object, 388, 10, { number( 3 ) } ), Zel::kDone );
   EXPECT_EQ( result.as< std::uint32_t >(), 8u );
   EXPECT_EQ( object.entity< Square >()->side(), 8u );
   const Value named = Value::of( Zel::String( "tile" ) );
   Zel::zelAttribute( object, "name", OpCode::Set, { named } );
   EXPECT_FALSE( Zel::zelAttribute( object, "name", OpCode::Set, { named } ) );
}

TEST_F( GenericIfTest, AnErrorOfTheCalledOperationPassesThroughUnchanged ) {
   Value result = number( 99 );
   try {
      op( result, square( 5 ), 389, 10, { number( 3 ) } );
      FAIL() << "nothing was thrown";
   } catch ( const std::out_of_range& error ) {
      EXPECT_STREQ( error.what(), "no more than 3" );
   }
   EXPECT_EQ( result.as< std::uint32_t >(), 99u );
}

TEST_F( GenericIfTest, WrongArgumentsAreNamedAndNothingIsCalled ) {
   const Value object = square( 5 );
   const auto growBy = [ & ]( std::initializer_list< Value > arguments ) {
      return typeError( [ & ] {
         Value result;
         op( result, object, 388, 10, arguments );
      } );
   };
   EXPECT_EQ( growBy( {} ), "Shapes::Square::grow takes ( uint32_t ), 0 given" );
   EXPECT_EQ( growBy( { number( 1 ), number( 2 ) } ),
              "Shapes::Square::grow takes ( uint32_t ), 2 given" );
   EXPECT_EQ( growBy( { Value::of( std::uint16_t{ 1 } ) } ),
              "Shapes::Square::grow takes a uint32_t as argument 1, uint16_t given" );
   EXPECT_NE( growBy( { Value() } ), "none" );
   EXPECT_EQ( object.entity< Square >()->side(), 5u );
}

TEST_F( GenericIfTest, ANotificationIsDescribedAndSupportsNothing ) {
   const Value object = square( 5 );
   const Zel::View base = Zel::zelViewAs( object, type( "Shapes::Shape" ) );
   Value result;
   for ( unsigned code = 0; code < 16; ++code ) {
      EXPECT_EQ( Zel::genericIfAttributeOp( result, base, 133, code, {} ), Zel::kUnsupported );
   }
}

TEST_F( GenericIfTest, AWholeValueIsComparedByItsType ) {
   const Value point = Value::of( Point( 3, 4 ) );
   Value result;
   EXPECT_EQ( op( result, point, 0, 11 ), Zel::kDone );
   EXPECT_TRUE( result.as< bool >() );
   EXPECT_EQ( op( result, Value::of( Point() ), 0, 11 ), Zel::kDone );
   EXPECT_FALSE( result.as< bool >() );
   EXPECT_EQ( op( result, point, 0, 12, { Value::of( Point( 3, 4 ) ) } ), Zel::kDone );
   EXPECT_TRUE( result.as< bool >() );
   EXPECT_EQ( op( result, point, 0, 12, { Value::of( Point( 3, 5 ) ) } ), Zel::kDone );
   EXPECT_FALSE( result.as< bool >() );
   EXPECT_EQ( op( result, point, 0, 13, { Value::of( Point( 3, 5 ) ) } ), Zel::kUnsupported );
   EXPECT_EQ( op( result, number( 3 ), 0, 13, { number( 4 ) } ), Zel::kDone );
   EXPECT_TRUE( result.as< bool >() );
   EXPECT_THROW( op( result, point, 0, 12, { number( 3 ) } ), Zel::TypeException );
   EXPECT_THROW( op( result, point, 0, 12 ), Zel::TypeException );
   EXPECT_THROW( op( result, point, 0, 11, { point } ), Zel::TypeException );
}

using GenericByNameTest = GenericIfTest;

TEST_F( GenericByNameTest, OwnAttributesAndThoseOfBasesAreFound ) {
   const Value object = square( 5 );
   EXPECT_EQ( Zel::zelAttribute( object, "side", OpCode::Get ).as< std::uint32_t >(), 5u );
   EXPECT_EQ( Zel::zelAttribute( object, "area", OpCode::Call ).as< std::uint64_t >(), 25u );
   EXPECT_STREQ( Zel::zelAttributeByName( object.type(), "area" )->name, "area" );
   EXPECT_EQ( Zel::zelAttributeByName( object.type(), "area" )->id, 132 );
   EXPECT_STREQ( Zel::zelAttributeById( object.type(), 132 )->name, "area" );
   EXPECT_STREQ( Zel::zelAttributeById( object.type(), 386 )->name, "side" );
   EXPECT_EQ( Zel::zelAttributeById( type( "Shapes::Shape" ), 386 ), nullptr );
   EXPECT_EQ( Zel::zelAttributeByName( object.type(), "absent" ), nullptr );
   EXPECT_EQ( Zel::zelAttributeByName( Zel::TypeHandle(), "side" ), nullptr );
}

TEST_F( GenericByNameTest, APointerTakesADerivedEntityAndNull ) {
   const Value object = square( 5 );
   const Value other = square( 6 );
   Zel::zelAttribute( object, "neighbour", OpCode::Set, { other } );
   EXPECT_EQ( Zel::zelAttribute( object, "neighbour", OpCode::Get ).entity(), other.entity() );
   EXPECT_EQ( other.entity()->zelReferences(), 2 );
   Zel::zelAttribute( object, "neighbour", OpCode::Set, { Value::of( Zel::Ptr< Shape >() ) } );
   EXPECT_EQ( other.entity()->zelReferences(), 1 );
   EXPECT_EQ( Zel::zelAttribute( object, "neighbour", OpCode::Get ).type(),
              type( "Shapes::Shape" ) );
}

TEST_F( GenericByNameTest, WhatCannotBeDoneIsATypeErrorThatSaysWhy ) {
   const Value object = square( 5 );
   EXPECT_EQ( typeError( [ & ] { Zel::zelAttribute( object, "radius", OpCode::Get ); } ),
              "Shapes::Square has no attribute \"radius\"" );
   EXPECT_EQ(
      typeError( [ & ] { Zel::zelAttribute( object, "side", OpCode::Set, { number( 1 ) } ); } ),
      "Shapes::Square::side does not support operation 1" );
   EXPECT_EQ( typeError( [ & ] { Zel::zelAttribute( object, "moved", OpCode::Call ); } ),
              "Shapes::Shape::moved does not support operation 10" );
   const Value none = Value::of( Zel::Ptr< Square >() );
   EXPECT_EQ( typeError( [ & ] { Zel::zelAttribute( none, "side", OpCode::Get ); } ),
              "there is no object: null Shapes::Square" );
   EXPECT_EQ( typeError( [ & ] { Zel::zelIterate( object, "side" ); } ),
              "Shapes::Square::side is no collection" );
   EXPECT_THROW( Zel::zelAttribute( Value(), "side", OpCode::Get ), Zel::TypeException );
}

TEST_F( GenericByNameTest, FieldsOfAValueAreReadByName ) {
   const Value point = Value::of( Point( 3, 4 ) );
   EXPECT_EQ( Zel::zelAttribute( point, "y", OpCode::Get ).as< std::uint16_t >(), 4 );
}

using GenericTypesTest = GenericIfTest;

TEST_F( GenericTypesTest, ConstructionPassesTheArgumentsInOrder ) {
   const Value object =
      Zel::zelConstruct( type( "Shapes::Square" ), { number( 5 ), Value::of( Point( 3, 4 ) ) } );
   EXPECT_EQ( object.type(), type( "Shapes::Square" ) );
   EXPECT_EQ( object.entity< Square >()->side(), 5u );
   EXPECT_EQ( object.entity< Square >()->corner(), Point( 3, 4 ) );
   EXPECT_TRUE( object.entity()->hasNotificationActive() );
   EXPECT_EQ( object.entity()->zelReferences(), 1 );
   const Value point =
      Zel::zelConstruct( type( "Shapes::Point" ),
                         { Value::of( std::uint16_t{ 6 } ), Value::of( std::uint16_t{ 7 } ) } );
   EXPECT_EQ( point.as< Point >(), Point( 6, 7 ) );
}

TEST_F( GenericTypesTest, ConstructionPassesErrorsOnAndRefusesAbstractTypes ) {
   EXPECT_THROW( Zel::zelConstruct( type( "Shapes::Point" ), { Value::of( std::uint16_t{ 13 } ),
                                                               Value::of( std::uint16_t{ 0 } ) } ),
                 Zel::RangeException );
   EXPECT_EQ( typeError( [] { Zel::zelConstruct( type( "Shapes::Shape" ), {} ); } ),
              "Shapes::Shape cannot be constructed: it is abstract" );
   EXPECT_EQ( typeError( [] { Zel::zelConstruct( type( "Shapes::Square" ), { number( 1 ) } ); } ),
              "Shapes::Square takes ( uint32_t, Shapes::Point ), 1 given" );
}

TEST_F( GenericTypesTest, DerivationIsReflexiveAndFollowsTheBases ) {
   const auto squareType = type( "Shapes::Square" );
   EXPECT_TRUE( Zel::zelDerives( squareType, squareType ) );
   EXPECT_TRUE( Zel::zelDerives( squareType, type( "Shapes::Shape" ) ) );
   EXPECT_TRUE( Zel::zelDerives( squareType, type( "Zel::PtrInterface" ) ) );
   EXPECT_FALSE( Zel::zelDerives( type( "Shapes::Shape" ), squareType ) );
   EXPECT_FALSE( Zel::zelDerives( type( "Shapes::Point" ), type( "Zel::PtrInterface" ) ) );
   EXPECT_FALSE( Zel::zelDerives( Zel::TypeHandle(), squareType ) );
}

TEST_F( GenericTypesTest, RequireTypeTakesTheTypeAndItsBases ) {
   const Value object = square( 5 );
   EXPECT_NO_THROW( Zel::zelRequireType( object, "Shapes::Square" ) );
   EXPECT_NO_THROW( Zel::zelRequireType( object, "Shapes::Shape" ) );
   EXPECT_EQ( typeError( [ & ] { Zel::zelRequireType( object, "Shapes::Point" ); } ),
              "a Shapes::Square is no Shapes::Point" );
   EXPECT_THROW( Zel::zelRequireType( Value(), "Shapes::Point" ), Zel::TypeException );
}

TEST_F( GenericTypesTest, StringFormsArePrintedAndTheWholeTextIsRead ) {
   EXPECT_EQ( Zel::zelStrep( Value::of( Point( 3, 4 ) ) ).str(), "3/4" );
   EXPECT_EQ( Zel::zelParse( "Shapes::Point", "3/4" ).as< Point >(), Point( 3, 4 ) );
   EXPECT_THROW( Zel::zelParse( "Shapes::Point", "3/4 " ), Zel::ParseException );
   EXPECT_THROW( Zel::zelParse( "Shapes::Point", "3" ), Zel::ParseException );
   EXPECT_EQ( typeError( [] { Zel::zelStrep( square( 5 ) ); } ),
              "there is no value: Shapes::Square" );
   EXPECT_EQ( typeError( [] { Zel::zelParse( "Shapes::Square", "5" ); } ),
              "Shapes::Square has no string form" );
   EXPECT_THROW( Zel::zelStrep( Value() ), Zel::TypeException );
   EXPECT_THROW( Zel::zelParse( "Shapes::Circle", "5" ), Zel::TypeException );
}

TEST( RequireTrue, RefusesFalseWithTheErrorOfItsOwn ) {
   EXPECT_NO_THROW( Zel::zelRequireTrue( true ) );
   EXPECT_THROW( Zel::zelRequireTrue( false ), Zel::SetFalseValueException );
}

}   // namespace
