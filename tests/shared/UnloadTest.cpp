// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Plug-in and library are loaded, used and closed; what they left with the platform must not lead
// back to where they were. This program is linked against the platform alone.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <map>
#include <semaphore>
#include <string>
#include <thread>

#include "Zel/AllocationTracker.h"
#include "Zel/GenericIf.h"
#include "Zel/Slab.h"
#include "Zel/Trace.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"
#include "tests/support/LiveObjects.h"
#include "tests/support/TraceCapture.h"

namespace {

constexpr char kProgrammer[] = "PlugIn::Programmer";
constexpr char kRangeDir[] = "MoxVlanMapping::VlanRangeEntryDir";

class Loaded {
 public:
   explicit Loaded( const char* file )
       : file_( file ), handle_( dlopen( file, RTLD_NOW | RTLD_LOCAL ) ) {
      EXPECT_NE( handle_, nullptr ) << dlerror();
   }
   /// Fails the test when something keeps the file loaded.
   ~Loaded() {
      EXPECT_EQ( dlclose( handle_ ), 0 ) << dlerror();
      EXPECT_FALSE( isLoaded( file_ ) ) << file_ << " cannot be unloaded";
   }
   Loaded( const Loaded& ) = delete;
   Loaded& operator=( const Loaded& ) = delete;

   static bool isLoaded( const char* file ) {
      void* const handle = dlopen( file, RTLD_NOW | RTLD_NOLOAD );
      return handle && dlclose( handle ) == 0;
   }

   int plugInRanges() const {
      const auto function = reinterpret_cast< int ( * )() >( dlsym( handle_, "plugInRanges" ) );
      EXPECT_NE( function, nullptr ) << dlerror();
      return function ? function() : 0;
   }

 private:
   const char* const file_;
   void* const handle_;
};

// What the platform keeps of libraries, loaded or not.
struct Kept {
   std::size_t modules = Zel::zelModules().size();
   std::size_t handles = Zel::traceHandles().size();
   std::size_t slabs = Zel::Slab::counts().size();
   friend bool operator==( const Kept&, const Kept& ) = default;
};

class UnloadTest : public testing::Test {
 protected:
   static std::int64_t total( const char* name ) { return Zel::allocationCount( name ).total; }

   ~UnloadTest() override {
      EXPECT_FALSE( Loaded::isLoaded( MOX_PLUG_IN_FILE ) );
      EXPECT_FALSE( Loaded::isLoaded( MOX_LIBRARY_FILE ) ) << "it came with the plug-in";
      EXPECT_EQ( TestSupport::liveObjects(), before_ );
   }

 private:
   const std::map< std::string, std::int64_t > before_ = TestSupport::liveObjects();
};

TEST_F( UnloadTest, CountsOfAPlugInStayAndGoOn ) {
   const std::int64_t before = total( kProgrammer );
   for ( int times = 1; times <= 3; ++times ) {
      {
         const Loaded plugIn( MOX_PLUG_IN_FILE );
         EXPECT_EQ( plugIn.plugInRanges(), 2 );
         EXPECT_EQ( total( kProgrammer ), before + times );
      }
      EXPECT_EQ( total( kProgrammer ), before + times );
      EXPECT_EQ( std::ranges::count( Zel::allocationCounts(), kProgrammer,
                                     &Zel::AllocationCount::typeName ),
                 1 );
   }
}

TEST_F( UnloadTest, CountsOfTheLibraryStayAndGoOn ) {
   const std::int64_t before = total( kRangeDir );
   for ( int times = 1; times <= 3; ++times ) {
      {
         const Loaded library( MOX_LIBRARY_FILE );
         EXPECT_TRUE( Zel::zelConstruct( Zel::zelTypeOf( kRangeDir ), {} ) );
         EXPECT_EQ( total( kRangeDir ), before + times );
      }
      EXPECT_EQ( total( kRangeDir ), before + times );
      EXPECT_FALSE( Zel::allocationCounts().empty() );
   }
}

TEST_F( UnloadTest, TypesAndTraceHandlesGoWithTheirLibrary ) {
   const Kept before;
   {
      const TestSupport::TraceCapture lines( "PlugIn", "1" );
      const Loaded plugIn( MOX_PLUG_IN_FILE );
      plugIn.plugInRanges();
      EXPECT_EQ( lines.text(), "1 ranges: 2\n" );
      EXPECT_TRUE( Zel::zelTypeByName( kProgrammer ) );
      EXPECT_TRUE( Zel::zelTypeByName( kRangeDir ) );
      EXPECT_EQ( std::ranges::count( Zel::traceHandles(), "PlugIn" ), 1 );
   }
   EXPECT_FALSE( Zel::zelTypeByName( kProgrammer ) );
   EXPECT_FALSE( Zel::zelTypeByName( kRangeDir ) );
   EXPECT_EQ( Kept().modules, before.modules );
   EXPECT_EQ( Kept().handles, before.handles );
   Zel::traceLevelsIs( "*/" );   // of all handles that there are
}

TEST_F( UnloadTest, LoadingAgainLeavesNothingMore ) {
   const auto once = [] { Loaded( MOX_PLUG_IN_FILE ).plugInRanges(); };
   once();
   const Kept before;
   for ( int i = 0; i < 20; ++i ) {
      once();
   }
   EXPECT_EQ( Kept(), before );
}

TEST_F( UnloadTest, AThreadMayOutliveThePlugInThatItUsed ) {
   const std::int64_t before = total( kProgrammer );
   std::binary_semaphore mayUse( 0 );
   std::binary_semaphore used( 0 );
   const Loaded* plugIn = nullptr;
   std::thread user( [ & ] {
      for ( int times = 0; times < 2; ++times ) {
         mayUse.acquire();
         plugIn->plugInRanges();
         used.release();
      }
   } );
   for ( int times = 1; times <= 2; ++times ) {
      const Loaded loaded( MOX_PLUG_IN_FILE );
      plugIn = &loaded;
      mayUse.release();
      used.acquire();
      EXPECT_EQ( total( kProgrammer ), before + times );
   }
   user.join();
   EXPECT_EQ( total( kProgrammer ), before + 2 );
}

}   // namespace
