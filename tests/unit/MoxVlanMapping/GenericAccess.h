// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// GenericAccess: fixture of the tests that reach the library's types by generic access alone.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <span>
#include <string>

#include "Bridging/VlanId.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"
#include "Zel/GenericIf.h"
#include "tests/support/GenericSamples.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

class GenericAccess : public TestSupport::NoneLeftTest {
 protected:
   using Value = Zel::Value;
   using Arguments = std::initializer_list< Value >;

   // Operation codes.
   static constexpr unsigned kGet = 0;
   static constexpr unsigned kSet = 1;
   static constexpr unsigned kDelete = 2;
   static constexpr unsigned kSize = 3;
   static constexpr unsigned kChanges = 4;
   static constexpr unsigned kHas = 5;
   static constexpr unsigned kCall = 10;
   static constexpr unsigned kIsSet = 11;
   static constexpr unsigned kEqual = 12;
   static constexpr unsigned kLess = 13;

   static Value intf( std::uint64_t number ) { return Value::of( Corvel::IntfId( number ) ); }
   /// Ids are taken unchecked, here and below.
   static Value vlan( unsigned number ) {
      return Value::of( Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( number ) ) );
   }
   static Value start( unsigned number ) {
      return Value::of(
         MoxVlanMapping::ReverseStartIdVlanId( static_cast< std::uint16_t >( number ) ) );
   }
   static Value range( unsigned low, unsigned high, char letter ) {
      return Value::of( TestSupport::rangeOf( low, high, letter ) );
   }
   static Value mapping( char letter ) { return Value::of( TestSupport::mappingOf( letter ) ); }
   static Value flag( bool value ) { return Value::of( value ); }

   /// An object of the library.
   static Value made( const std::string& type, Arguments arguments = {} ) {
      return Zel::zelConstruct( Zel::zelTypeOf( "MoxVlanMapping::" + type ), arguments );
   }

   /// The operation's result code; what it yields goes into `result`.
   static int op( Value& result, const Value& object, Zel::AttributeId attribute, unsigned code,
                  Arguments arguments = {} ) {
      return Zel::genericIfAttributeOp( result, object, attribute, code,
                                        std::span( arguments.begin(), arguments.size() ) );
   }
   /// What an operation yields that is to be done.
   static Value done( const Value& object, Zel::AttributeId attribute, unsigned code,
                      Arguments arguments = {} ) {
      Value result;
      EXPECT_EQ( op( result, object, attribute, code, arguments ), Zel::kDone );
      return result;
   }
   /// A value's string form; "nothing"; of an entity, its type's name, behind "null" for none.
   static std::string text( const Value& value ) {
      if ( value && !value.type().record()->hooks ) {
         return ( value.entity() ? "" : "null " ) + std::string( value.type().name() );
      }
      return TestSupport::objectText( value );
   }
   static std::string rangeText( const Value& value ) {
      return TestSupport::rangeText( value.as< MoxVlanMapping::VlanRangeXlateMapping >() );
   }

   /// "KEY: OBJECT, ..." of a collection, in the order of its walk.
   static std::string walk( const Value& object, const std::string& attribute ) {
      std::string all;
      for ( const auto at = Zel::zelIterate( object, attribute ); *at; at->advance() ) {
         all += ( all.empty() ? "" : ", " ) + shown( at->key() ) + ": " + shown( at->object() );
      }
      return all;
   }
   static std::string shown( const Value& value ) {
      return value.type() == Zel::zelTypeOf( "MoxVlanMapping::VlanRangeXlateMapping" )
              ? "(" + rangeText( value ) + ")"
              : text( value );
   }
};
