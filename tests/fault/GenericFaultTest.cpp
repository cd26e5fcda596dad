// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Generic access to every registered type - each operation of each attribute, iteration,
// construction, string form and comparison - with each of its requests for memory refused.
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/fault/Sweep.h"
#include "tests/support/GenericSamples.h"

namespace {

using TestSupport::sample;
using Zel::OpCode;
using Zel::Value;

struct Object {
   Fault::Parts parts() const {
      return { { "object", stepwise ? "" : TestSupport::objectText( value ) },
               { "result", resultMatters ? TestSupport::objectText( result ) : "" } };
   }
   void verify() const {}

   Value value;
   std::vector< Value > arguments;
   bool stepwise = false;        ///< a method of several steps: see RangeFaultTest, DrainFaultTest
   bool resultMatters = false;   ///< what is only asked for can be asked for again
   Value result;
   std::string textBefore;
};

using Row = Fault::Row< Object >;
using Rows = std::vector< Row >;
using Types = std::span< const char* const >;

Row::Act
given( Zel::TypeHandle type, Types arguments, unsigned number ) {
   return [ = ]( Object& o ) {
      o.value = sample( type, 1 );
      o.arguments = TestSupport::samples( arguments, number );
      o.textBefore = TestSupport::objectText( o.value );
   };
}

Row
changing( const std::string& name, const Row::Act& given, const Row::Act& act ) {
   const auto unlessDone = [ act ]( Object& o ) {
      if ( TestSupport::objectText( o.value ) == o.textBefore ) {
         act( o );
      }
   };
   return { name, given, act, unlessDone, Fault::Memory::Either };
}

Row
asking( const std::string& name, const Row::Act& given, const Row::Act& act ) {
   const auto toldOf = [ given ]( Object& o ) {
      given( o );
      o.resultMatters = true;
   };
   return { name, toldOf, act, nullptr, Fault::Memory::Either };
}

void
operate( Object& o, Zel::TypeHandle type, Zel::AttributeId id, unsigned code ) {
   const Zel::View view{ type, Zel::View( o.value ).object };
   Value result;
   EXPECT_EQ( Zel::genericIfAttributeOp( result, view, id, code, o.arguments ), Zel::kDone );
   if ( o.resultMatters ) {
      o.result = std::move( result );
   }
}

void
addAttributeRows( Rows& rows, Zel::TypeHandle type, const Zel::AttributeRecord& row ) {
   for ( const OpCode code : { OpCode::Get, OpCode::Set, OpCode::Delete, OpCode::Size,
                               OpCode::Changes, OpCode::Has, OpCode::Call } ) {
      const unsigned number = static_cast< unsigned >( code );
      const Zel::Operation& operation = Zel::zelOperation( row, number );
      if ( !operation.invoke ) {
         continue;
      }
      const std::string name = std::string( row.name ) + " code " + std::to_string( number );
      const auto act = [ type, id = row.id, number ]( Object& o ) {
         operate( o, type, id, number );
      };
      const bool changes = code == OpCode::Set || code == OpCode::Delete || code == OpCode::Call;
      const bool stepwise = code == OpCode::Call;
      // Elements that are there, 1, and those that are not, 3.
      for ( const unsigned element : { 1u, 3u } ) {
         const auto start = [ =, make = given( type, operation.types, element ) ]( Object& o ) {
            make( o );
            o.stepwise = stepwise;
         };
         rows.push_back( changes ? changing( name, start, act ) : asking( name, start, act ) );
      }
   }
   if ( row.iterate ) {
      const std::string name = row.name;
      rows.push_back( asking( name + " iterated", given( type, {}, 1 ), [ name ]( Object& o ) {
         for ( const auto at = Zel::zelIterate( o.value, name ); *at; at->advance() ) {
            at->key();
            at->object();
         }
      } ) );
      rows.push_back( changing( name + " erased", given( type, {}, 1 ), [ name ]( Object& o ) {
         Zel::zelIterate( o.value, name )->del();
      } ) );
   }
}

Rows
rowsOf( Zel::TypeHandle type ) {
   const Zel::TypeRecord& record = *type.record();
   Rows rows;
   for ( const Zel::AttributeRecord& row : record.attributes ) {
      addAttributeRows( rows, type, row );
   }
   if ( record.constructor.invoke ) {
      rows.push_back(
         asking( "constructed", given( type, record.constructor.types, 1 ),
                 [ type ]( Object& o ) { o.result = Zel::zelConstruct( type, o.arguments ); } ) );
   }
   if ( record.hooks ) {
      rows.push_back( asking( "read and written", given( type, {}, 1 ), [ type ]( Object& o ) {
         o.result = Zel::zelParse( type, Zel::zelStrep( o.value ) );
      } ) );
      rows.push_back( asking( "not set", given( type, {}, 1 ), [ type ]( Object& o ) {
         operate( o, type, 0, static_cast< unsigned >( OpCode::IsSet ) );
      } ) );
      rows.push_back(
         asking( "equal", given( type, { &record.name, 1 }, 1 ), [ type ]( Object& o ) {
            operate( o, type, 0, static_cast< unsigned >( OpCode::Equal ) );
         } ) );
   }
   return rows;
}

class GenericFaultTest : public testing::TestWithParam< std::string > {};

TEST_P( GenericFaultTest, LeavesBeforeOrAfterAndCanBeDoneAgain ) {
   for ( const Row& row : rowsOf( Zel::zelTypeOf( GetParam() ) ) ) {
      Fault::sweep( row );
   }
}

INSTANTIATE_TEST_SUITE_P( Types, GenericFaultTest, testing::ValuesIn( TestSupport::typeNames() ),
                          TestSupport::typeCaseName< testing::TestParamInfo< std::string > > );

}   // namespace
