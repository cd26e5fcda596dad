// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What all traces of the process share grows now and then only: refused when it does.
#include <list>
#include <new>
#include <string>

#include <gtest/gtest.h>

#include "Zel/Trace.h"
#include "tests/fault/Sweep.h"

namespace {

TEST( TraceFaultTest, LevelsThatCannotBeSetLeaveThoseOfBefore ) {
   Zel::traceLevelsIs( "TraceFaultTest/1" );
   // One handle more each time, for what they are kept in seldom has to grow.
   for ( unsigned more = 0; more < 20; ++more ) {
      const std::string list = "TraceFaultTest/1;TraceFaultTest." + std::to_string( more ) + "/1";
      bool fired = true;
      for ( unsigned refused = 0; fired; ++refused ) {
         fired = false;
         try {
            unsigned request = 0;
            const TestSupport::OperatorNewHook refuse( [ & ] {
               if ( request++ == refused ) {
                  fired = true;
                  throw std::bad_alloc();
               }
            } );
            Zel::traceLevelsIs( list );
         } catch ( const std::bad_alloc& ) {}
         Zel::TraceHandle later( "TraceFaultTest", true );
         EXPECT_EQ( later.mask(), 1u << 1 ) << "request " << refused;
      }
   }
   Zel::traceLevelsIs( "*/" );
}

TEST( TraceFaultTest, AHandleThatThereIsNoMemoryToKnowIsNotEnabledYet ) {
   const Fault::TraceSwitch traces( true );
   std::list< Zel::TraceHandle > handles;
   for ( bool fired = false; !fired; ) {
      Zel::TraceHandle& fresh = handles.emplace_back( "TraceFaultTest", true );
      const TestSupport::OperatorNewHook refuse( [ & ] {
         fired = true;
         throw std::bad_alloc();
      } );
      bool enabled = false;
      EXPECT_NO_THROW( enabled = fresh.enabled( 3 ) );
      EXPECT_EQ( enabled, !fired );
   }
   EXPECT_TRUE( handles.back().enabled( 3 ) );
}

}   // namespace
