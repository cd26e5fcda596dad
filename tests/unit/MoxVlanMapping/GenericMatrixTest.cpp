// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Every operation code on every attribute of every registered type.
//
// A type's answers stand one line for each attribute, one digit for each code from 0 to 15:
// 0 done, 1 not supported, 2 no such attribute.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "tests/support/GenericSamples.h"
#include "tests/support/NoneLeftTest.h"

namespace {

using TestSupport::sample;
using TestSupport::samples;
using Zel::AttributeKind;
using Zel::Value;

using Codes = std::set< unsigned >;
constexpr unsigned kCodes = 16;

const std::map< AttributeKind, Codes > kDoneOfKind{
   { AttributeKind::Field, { 0 } },
   { AttributeKind::Pointer, { 0 } },
   { AttributeKind::InstantiatingPointer, { 0, 1, 2 } },
   { AttributeKind::SettablePointer, { 0, 1 } },
   { AttributeKind::SettableValue, { 0, 1 } },
   { AttributeKind::OrderedMap, { 0, 1, 2, 3, 4, 5 } },
   { AttributeKind::OrderedSet, { 0, 1, 2, 3, 4, 5 } },
   { AttributeKind::HashMap, { 0, 1, 2, 3, 4, 5 } },
   { AttributeKind::HashSet, { 0, 1, 2, 3, 4, 5 } },
   { AttributeKind::EntityMap, { 0, 1, 2, 3, 4, 5 } },
   { AttributeKind::Method, {} },
   { AttributeKind::CallableMethod, { 10 } },
};

// Value types without an order of their own.
const std::set< std::string > kUnordered{ "Bridging::VlanXlateMapping", "Mox::MoxVlanMappingRecord",
                                          "Mox::MoxVlanMappingConfig",
                                          "Mox::MoxVlanMappingStatus" };

const Zel::AttributeRecord*
rowOf( Zel::TypeHandle type, Zel::AttributeId id ) {
   const auto rows = type.record()->attributes;
   const auto row = std::ranges::find( rows, id, &Zel::AttributeRecord::id );
   return row == rows.end() ? nullptr : &*row;
}

/// The type's own attributes and its bases', the whole value, and the ids beside all of these.
std::set< Zel::AttributeId >
idsOf( Zel::TypeHandle type ) {
   std::set< Zel::AttributeId > ids{ 0, 1, 2, 130, 386 };
   for ( const Zel::TypeHandle at : TestSupport::typeAndBases( type ) ) {
      for ( const Zel::AttributeRecord& row : at.record()->attributes ) {
         for ( const int step : { -1, 0, 1 } ) {
            ids.insert( static_cast< Zel::AttributeId >( row.id + step ) );
         }
      }
   }
   return ids;
}

std::string
expectedLine( Zel::TypeHandle type, Zel::AttributeId id ) {
   const bool wholeValue = id == 0 && type.record()->kind == Zel::TypeKind::Value;
   const Zel::AttributeRecord* row = rowOf( type, id );
   if ( !row && !wholeValue ) {
      return std::string( kCodes, '2' );
   }
   const std::string name = type.name();
   Codes done;
   if ( wholeValue ) {
      done = kUnordered.contains( name ) ? Codes{ 11, 12 } : Codes{ 11, 12, 13 };
   } else if ( name == "MoxVlanMapping::MoxVlanRangeMappingCodef" && id == 135 ) {
      done = { 0 };   // the directory that it makes by itself
   } else {
      done = kDoneOfKind.at( row->kind );
   }
   std::string line( kCodes, '1' );
   for ( const unsigned code : done ) {
      line[ code ] = '0';
   }
   return line;
}

/// Types of the arguments that an operation takes; for one that is refused, of any of the row's.
std::vector< const char* >
argumentTypes( Zel::TypeHandle type, Zel::AttributeId id, unsigned code ) {
   const Zel::AttributeRecord* row = rowOf( type, id );
   if ( !row ) {
      return code == 12 || code == 13 ? std::vector{ type.name() } : std::vector< const char* >();
   }
   const std::map< unsigned, Zel::Operation > operations{
      { 0, row->get },     { 1, row->set }, { 2, row->del },   { 3, row->size },
      { 4, row->changes }, { 5, row->has }, { 10, row->call },
   };
   const auto found = operations.find( code );
   const auto types =
      found != operations.end() && found->second.invoke ? found->second.types : row->argumentTypes;
   return { types.begin(), types.end() };
}

/// What an operation that is refused must leave as it is.
struct State {
   explicit State( const Value& object )
       : text( TestSupport::objectText( object ) ), live( TestSupport::liveObjects() ) {}
   bool operator==( const State& ) const = default;

   std::string text;
   std::map< std::string, std::int64_t > live;
};

class GenericMatrixTest :
    public TestSupport::NoneLeftTest,
    public testing::WithParamInterface< std::string > {
 protected:
   const Zel::TypeHandle type_ = Zel::zelTypeOf( GetParam() );

   /// The result of one operation on an object of its own, as a digit.
   char answer( Zel::AttributeId id, unsigned code ) const {
      SCOPED_TRACE( "attribute " + std::to_string( id ) + ", code " + std::to_string( code ) );
      const Value object = sample( type_, 1 );
      const auto arguments = samples( argumentTypes( type_, id, code ), 1 );
      if ( expectedLine( type_, id )[ code ] == '0' ) {
         checkWrongArguments( object, id, code, arguments );
         return outcome( object, id, code, arguments, nullptr );
      }
      const State before( object );
      const Value untouched = Value::of( Zel::String( "untouched" ) );
      Value result = untouched;
      const char digit = outcome( object, id, code, arguments, &result );
      EXPECT_EQ( outcome( object, id, code, {}, &result ), digit );
      EXPECT_EQ( TestSupport::objectText( result ), "untouched" );
      expectSame( before, object );
      return digit;
   }

 private:
   char outcome( const Value& object, Zel::AttributeId id, unsigned code,
                 const std::vector< Value >& arguments, Value* result ) const {
      Value dropped;
      const Zel::View view{ type_, Zel::View( object ).object };
      const int answered =
         Zel::genericIfAttributeOp( result ? *result : dropped, view, id, code, arguments );
      return static_cast< char >( '0' + answered );
   }

   static void expectSame( const State& before, const Value& object ) {
      const State after( object );
      EXPECT_EQ( before.text, after.text );
      EXPECT_EQ( before.live, after.live );
   }

   /// One too many, one too few, and each of a wrong type in turn.
   void checkWrongArguments( const Value& object, Zel::AttributeId id, unsigned code,
                             const std::vector< Value >& right ) const {
      std::vector< std::vector< Value > > all{ right };
      all.back().push_back( Value::of( true ) );
      if ( !right.empty() ) {
         all.push_back( right );
         all.back().pop_back();
      }
      for ( std::size_t i = 0; i < right.size(); ++i ) {
         const bool text = right[ i ].type() == Zel::zelTypeOf( "Zel::String" );
         all.push_back( right );
         all.back()[ i ] = text ? Value::of( true ) : Value::of( Zel::String( "1" ) );
         all.push_back( right );
         all.back()[ i ] = Value();
      }
      const State before( object );
      for ( const std::vector< Value >& wrong : all ) {
         const State made( object );
         EXPECT_THROW( outcome( object, id, code, wrong, nullptr ), Zel::TypeException );
         EXPECT_EQ( made.live, TestSupport::liveObjects() );
      }
      expectSame( before, object );
   }
};

INSTANTIATE_TEST_SUITE_P( Types, GenericMatrixTest, testing::ValuesIn( TestSupport::typeNames() ),
                          TestSupport::typeCaseName< testing::TestParamInfo< std::string > > );

TEST_P( GenericMatrixTest, EveryCodeIsDoneOrRefusedAsTheKindSays ) {
   std::string expected;
   std::string answers;
   for ( const Zel::AttributeId id : idsOf( type_ ) ) {
      const std::string head = std::to_string( id ) + " ";
      expected += head + expectedLine( type_, id ) + "\n";
      answers += head;
      for ( unsigned code = 0; code < kCodes; ++code ) {
         answers += answer( id, code );
      }
      answers += "\n";
   }
   EXPECT_EQ( answers, expected );
}

// A type that is not there would not fail above.
TEST( GenericMatrix, CoversTheTypesOfLibraryAndPlatform ) {
   const auto names = TestSupport::typeNames();
   EXPECT_EQ( std::ranges::count_if(
                 names, []( const std::string& name ) { return name.starts_with( "MoxVlanM" ); } ),
              10 );
   EXPECT_EQ( names.size(), 39u );
}

}   // namespace
