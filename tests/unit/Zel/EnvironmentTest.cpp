// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Which processes listen to the ZEL_ variables. Each is started anew, as threadsafe death tests are.
#include <cstdio>
#include <cstdlib>

#include <sys/auxv.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Zel/Hash.h"
#include "Zel/SharedCount.h"
#include "Zel/Trace.h"

namespace {

constinit Zel::TraceHandle handle( "EnvironmentTest", false );

class EnvironmentDeathTest : public testing::Test {
 protected:
   EnvironmentDeathTest() {
      testing::FLAGS_gtest_death_test_style = "threadsafe";
      ::setenv( "ZEL_HASH_SEED", "7", 1 );
      ::setenv( "ZEL_THREAD_SAFE_PTR", "1", 1 );
      ::setenv( "ZEL_TRACE", "EnvironmentTest/3", 1 );
   }
   ~EnvironmentDeathTest() override {
      ::unsetenv( "ZEL_HASH_SEED" );
      ::unsetenv( "ZEL_THREAD_SAFE_PTR" );
      ::unsetenv( "ZEL_TRACE" );
   }

   static void reportAndExit() {
      std::fprintf( stderr, "secure %lu: seed %s, counts %s, trace %s", ::getauxval( AT_SECURE ),
                    Zel::hashSeed() == 7 ? "fixed" : "drawn",
                    Zel::threadSafePtr() ? "atomic" : "plain", handle.enabled( 3 ) ? "on" : "off" );
      std::exit( 0 );
   }
};

TEST_F( EnvironmentDeathTest, AProcessWithItsCallersRightsTakesItsSettings ) {
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ),
                "^secure 0: seed fixed, counts atomic, trace on$" );
}

// What is started with an effective user other than the real one counts as set-user-id.
TEST_F( EnvironmentDeathTest, AProcessWithMoreRightsThanItsCallerIgnoresItsSettings ) {
   const uid_t caller = ::getuid();
   if ( ::setreuid( caller + 1, static_cast< uid_t >( -1 ) ) != 0 ) {
      GTEST_SKIP() << "only root can have another real user";
   }
   EXPECT_EXIT( reportAndExit(), testing::ExitedWithCode( 0 ),
                "^secure 1: seed drawn, counts plain, trace off$" );
   ASSERT_EQ( ::setreuid( caller, static_cast< uid_t >( -1 ) ), 0 );
}

}   // namespace
