// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/Complain.h"

#include <gtest/gtest.h>

#include <new>
#include <string>

#include "tests/support/OperatorNew.h"

namespace Agent {
namespace {

template < class... Args >
std::string
complaint( fmt::format_string< const Args&... > format, const Args&... args ) {
   testing::internal::CaptureStderr();
   complain( format, args... );
   return testing::internal::GetCapturedStderr();
}

template < class... Args >
std::string
complaintWithoutMemory( fmt::format_string< const Args&... > format, const Args&... args ) {
   testing::internal::CaptureStderr();
   {
      const TestSupport::OperatorNewHook hook( [] { throw std::bad_alloc(); } );
      complain( format, args... );
   }
   return testing::internal::GetCapturedStderr();
}

TEST( Complain, IsOneLine ) {
   EXPECT_EQ( complaint( "{}: {} findings", "f.json", 3 ), "f.json: 3 findings\n" );
   EXPECT_EQ( complaint( "{}", std::string( 100000, 'x' ) ), std::string( 100000, 'x' ) + "\n" );
}

TEST( Complain, NeedsNoMemoryForAnOrdinaryLine ) {
   EXPECT_EQ( complaintWithoutMemory( "{}: out of memory while {} it", "f.json", "reading" ),
              "f.json: out of memory while reading it\n" );
}

TEST( Complain, ALongLineIsCutWhereThereIsNoMemory ) {
   const std::string text( 100000, 'x' );
   EXPECT_EQ( complaintWithoutMemory( "{}", text ), std::string( 255, 'x' ) + "\n" );
}

}   // namespace
}   // namespace Agent
