// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/Exception.h"

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace {

using Names = std::vector< std::string >;

TEST( Exception, TextsAreReadByWhat ) {
   EXPECT_STREQ( Zel::Exception( "a" ).what(), "a" );
   EXPECT_STREQ( Zel::RangeException( "b" ).what(), "b" );
   EXPECT_STREQ( Zel::ParseException( "c", 5 ).what(), "c" );
   EXPECT_STREQ( Zel::TypeException( "d" ).what(), "d" );
   EXPECT_STREQ( Zel::SetFalseValueException( "e" ).what(), "e" );
}

TEST( Exception, AParseExceptionKnowsItsOffset ) {
   EXPECT_EQ( Zel::ParseException( "c", 5 ).offset(), 5u );
}

template < class T >
bool
isCaughtAsBase( const T& error ) {
   try {
      throw error;
   } catch ( const Zel::Exception& base ) {
      const std::exception& standard = base;
      return std::string( standard.what() ) == error.what();
   }
}

TEST( Exception, EveryKindIsCaughtAsZelExceptionAndStandardException ) {
   EXPECT_TRUE( isCaughtAsBase( Zel::RangeException( "b" ) ) );
   EXPECT_TRUE( isCaughtAsBase( Zel::ParseException( "c", 5 ) ) );
   EXPECT_TRUE( isCaughtAsBase( Zel::TypeException( "d" ) ) );
   EXPECT_TRUE( isCaughtAsBase( Zel::SetFalseValueException( "e" ) ) );
}

TEST( Exception, KindsAreToldApart ) {
   EXPECT_THROW( Zel::throwRangeException( "x" ), Zel::RangeException );
   const std::exception_ptr type = std::make_exception_ptr( Zel::TypeException( "d" ) );
   EXPECT_THROW(
      try { std::rethrow_exception( type ); } catch ( const Zel::RangeException& ){},
      Zel::TypeException );
}

TEST( Exception, HasNoAttributesAtFirst ) {
   const Zel::RangeException error( "text" );
   EXPECT_EQ( error.attributes(), Names{} );
   EXPECT_EQ( error.message(), "text" );
}

TEST( Exception, AttributesStandOutermostFirstInTheMessageAndNotInWhat ) {
   Zel::RangeException error( "text" );
   error.attributeIs( "vlan" );
   error.attributeIs( "mapping" );
   EXPECT_EQ( error.attributes(), ( Names{ "mapping", "vlan" } ) );
   EXPECT_EQ( error.message(), "mapping: vlan: text" );
   EXPECT_STREQ( error.what(), "text" );
}

TEST( RethrowWithAttribute, ReturnsTheResult ) {
   EXPECT_EQ( Zel::rethrowWithAttribute( "vlan", [] { return 7; } ), 7 );
}

TEST( RethrowWithAttribute, AddsTheNameOnTheWay ) {
   try {
      Zel::rethrowWithAttribute( "mapping", [] {
         Zel::rethrowWithAttribute( "vlan", [] { Zel::throwRangeException( "too large" ); } );
      } );
      FAIL() << "nothing was thrown";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_EQ( error.message(), "mapping: vlan: too large" );
      EXPECT_STREQ( error.what(), "too large" );
   }
}

TEST( RethrowWithAttribute, LeavesOtherExceptionsAsTheyAre ) {
   EXPECT_THROW(
      Zel::rethrowWithAttribute( "vlan", []() -> int { throw std::out_of_range( "other" ); } ),
      std::out_of_range );
}

}   // namespace
