// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/MemoryDataPlane.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "tests/unit/agent/ProgramText.h"

namespace Agent {
namespace {

TEST( MemoryDataPlane, aPortThatWasNeverProgrammedHasNoEntries ) {
   const MemoryDataPlane plane( 2 );
   EXPECT_EQ( textOf( plane.portProgram( Corvel::IntfId( 1 ) ) ), "ranges: exact:" );
}

TEST( MemoryDataPlane, remembersWhatEachPortWasGivenLast ) {
   MemoryDataPlane plane( 2 );
   plane.portProgramIs( Corvel::IntfId( 1 ), { { { 10, 20, 5 } }, { { 30, 6 } } } );
   plane.portProgramIs( Corvel::IntfId( 2 ), { { { 7, 8, 9 } }, {} } );
   plane.portProgramIs( Corvel::IntfId( 1 ), { {}, { { 40, 6 } } } );
   EXPECT_EQ( textOf( plane.portProgram( Corvel::IntfId( 1 ) ) ), "ranges: exact: 40>6" );
   EXPECT_EQ( textOf( plane.portProgram( Corvel::IntfId( 2 ) ) ), "ranges: 7-8>9 exact:" );
}

TEST( MemoryDataPlane, takesAsManyRangesAsItHasEntries ) {
   MemoryDataPlane plane( 2 );
   EXPECT_EQ( plane.rangeEntriesPerPort(), 2u );
   plane.portProgramIs( Corvel::IntfId( 1 ), { { { 10, 20, 5 }, { 30, 40, 5 } }, {} } );
   EXPECT_EQ( textOf( plane.portProgram( Corvel::IntfId( 1 ) ) ),
              "ranges: 10-20>5 30-40>5 exact:" );
}

TEST( MemoryDataPlane, refusesMoreRangesThanEntriesAndKeepsWhatItHad ) {
   MemoryDataPlane plane( 1 );
   plane.portProgramIs( Corvel::IntfId( 3 ), { { { 10, 20, 5 } }, {} } );
   std::string error;
   try {
      plane.portProgramIs( Corvel::IntfId( 3 ), { { { 1, 2, 5 }, { 4, 5, 5 } }, {} } );
   } catch ( const std::length_error& refused ) {
      error = refused.what();
   }
   EXPECT_EQ( error, "port 3: 2 ranges do not fit into 1 range entries" );
   EXPECT_EQ( textOf( plane.portProgram( Corvel::IntfId( 3 ) ) ), "ranges: 10-20>5 exact:" );
}

}   // namespace
}   // namespace Agent
