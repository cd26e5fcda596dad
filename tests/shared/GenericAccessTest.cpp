// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The library reached by names alone: this program is not compiled against it.
//
// It is not linked against it either. Nothing here refers to a symbol of the library, so a linker
// that is told --as-needed, as many are by default, would drop it without a word; the program opens
// it by file name, as a debugger or a script would.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <string>

#include "Zel/AllocationTracker.h"
#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"

namespace {

using Zel::OpCode;
using Zel::Value;

const char* const kLibraryTypes[] = {
   "MoxVlanMapping::ReverseStartIdVlanId",    "MoxVlanMapping::VlanRangeXlateMapping",
   "MoxVlanMapping::VlanRangeEntry",          "MoxVlanMapping::VlanRangeEntryDir",
   "MoxVlanMapping::VlanXlateScheduleDir",    "MoxVlanMapping::MoxVlanRangeMgr",
   "MoxVlanMapping::VlanMappingScaleSlaveSm", "MoxVlanMapping::VlanXlateScaleEntry",
   "MoxVlanMapping::VlanXlateScaleEntryDir",  "MoxVlanMapping::MoxVlanRangeMappingCodef",
};

std::string
libraryTypesFound() {
   std::string found;
   for ( const char* name : kLibraryTypes ) {
      found += Zel::zelTypeByName( name ) ? std::string( name ) + "\n" : "";
   }
   return found;
}

std::int64_t
liveObjects() {
   std::int64_t live = 0;
   for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
      live += count.live;
   }
   return live;
}

Value
made( const std::string& type, std::initializer_list< Value > arguments = {} ) {
   return Zel::zelConstruct( Zel::zelTypeOf( type ), arguments );
}

class NamesAlone : public testing::Test {
 protected:
   static void SetUpTestSuite() {
      if ( library ) {
         return;   // the suite is repeated
      }
      foundBefore = libraryTypesFound();
      library = dlopen( MOX_LIBRARY_FILE, RTLD_NOW | RTLD_LOCAL );
      ASSERT_NE( library, nullptr ) << dlerror();
   }
   ~NamesAlone() override { EXPECT_EQ( liveObjects(), liveBefore_ ) << "objects are left"; }

   static Value port( const std::string& number ) {
      return Zel::zelParse( "Corvel::IntfId", number );
   }
   static Value vlan( const std::string& id ) { return Zel::zelParse( "Bridging::VlanId", id ); }
   static Value translation( const std::string& id ) {
      return Zel::zelParse(
         "Bridging::VlanXlateMapping",
         "Value('Bridging::VlanXlateMapping', ** {'vlanId': " + id +
            ", 'innerVlanId': 0, 'tpid': 0, 'priority': 0, 'dropEligible': 0})" );
   }
   /// "LOW-HIGH TRANSLATED, ..." of the port's ranges.
   static std::string ranges( const Value& dir, const std::string& number ) {
      const Value entry =
         Zel::zelAttribute( dir, "vlanRangeEntry", OpCode::Get, { port( number ) } );
      std::string all;
      for ( const auto at = Zel::zelIterate( entry, "vlanIdRange" ); *at; at->advance() ) {
         const Value range = at->object();
         all += ( all.empty() ? "" : ", " ) + field( range, "lowVid" ) + "-" +
                field( range, "highVid" ) + " " +
                field( Zel::zelAttribute( range, "mapping", OpCode::Get ), "vlanId" );
      }
      return all;
   }

   static std::string foundBefore;

 private:
   static std::string field( const Value& object, const std::string& name ) {
      return Zel::zelStrep( Zel::zelAttribute( object, name, OpCode::Get ) ).str();
   }

   static void* library;
   const std::int64_t liveBefore_ = liveObjects();
};

std::string NamesAlone::foundBefore;
void* NamesAlone::library = nullptr;

TEST_F( NamesAlone, LoadingTheLibraryMakesItsTypesKnown ) {
   EXPECT_EQ( foundBefore, "" );
   std::string all;
   for ( const char* name : kLibraryTypes ) {
      all += std::string( name ) + "\n";
   }
   EXPECT_EQ( libraryTypesFound(), all );
}

TEST_F( NamesAlone, TheLibrarysModulesAreRegisteredInTheirOrder ) {
   std::string names;
   for ( const Zel::TypeModule* module : Zel::zelModules() ) {
      const std::string name = module->name;
      names += name.starts_with( "MoxVlanMapping/" ) ? name + "\n" : "";
   }
   EXPECT_EQ( names, "MoxVlanMapping/MoxVlanRangeMgr\n"
                     "MoxVlanMapping/MoxVlanMappingScaleSlaveSm\n"
                     "MoxVlanMapping/MoxVlanRangeMappingCodef\n" );
}

TEST_F( NamesAlone, ARangeManagerIsBuiltUsedAndReadBack ) {
   const Value dir = made( "MoxVlanMapping::VlanRangeEntryDir" );
   const Value mgr = made( "MoxVlanMapping::MoxVlanRangeMgr", { dir } );
   for ( const char* id : { "10", "12", "11", "30" } ) {
      Zel::zelAttribute( mgr, "addVlanToIdx", OpCode::Call,
                         { port( "7" ), vlan( id ), translation( "3001" ) } );
   }
   Zel::zelAttribute( mgr, "addVlanToIdx", OpCode::Call,
                      { port( "7" ), vlan( "31" ), translation( "3002" ) } );
   EXPECT_EQ( ranges( dir, "7" ), "10-12 3001, 30-30 3001, 31-31 3002" );
   Zel::zelAttribute( mgr, "deleteVlanFromIdx", OpCode::Call, { port( "7" ), vlan( "11" ) } );
   EXPECT_EQ( ranges( dir, "7" ), "10-10 3001, 12-12 3001, 30-30 3001, 31-31 3002" );
}

TEST_F( NamesAlone, TheLibrarysErrorsAreCaughtByType ) {
   EXPECT_THROW( made( "MoxVlanMapping::MoxVlanRangeMappingCodef" ), Zel::TypeException );
   EXPECT_THROW( Zel::zelParse( "MoxVlanMapping::ReverseStartIdVlanId", "4095" ),
                 Zel::RangeException );
   const Value schedule = made( "MoxVlanMapping::VlanXlateScheduleDir" );
   EXPECT_THROW( Zel::zelAttribute( schedule, "vlanXlateSchedule", OpCode::Set,
                                    { port( "7" ), Value::of( false ) } ),
                 Zel::SetFalseValueException );
}

TEST_F( NamesAlone, AStateMachineIsDrivenThroughTheAgentsConfiguration ) {
   const Value acsd = made( "Mox::MoxCommonSmData" );
   const Value dir = made( "MoxVlanMapping::VlanRangeEntryDir" );
   const Value schedule = made( "MoxVlanMapping::VlanXlateScheduleDir" );
   const Value sm = made( "MoxVlanMapping::VlanMappingScaleSlaveSm",
                          { acsd, made( "Zel::ManualClock" ), made( "Bridging::Config" ),
                            made( "Bridging::VlanXlateStatusDir" ), dir, schedule } );
   Zel::zelAttribute( sm, "handleInitialized", OpCode::Call );
   const Value configured = Zel::zelAttribute( acsd, "ingressConfigDir", OpCode::Get );
   for ( const char* id : { "100", "101" } ) {
      const Value key =
         made( "Mox::PortVlanKey", { port( "7" ), vlan( id ), Zel::zelParse( "uint16_t", "0" ) } );
      const Value record = made( "Mox::MoxVlanMappingConfig",
                                 { key, translation( "3001" ), Value::of( false ),
                                   Value::of( false ), Zel::zelParse( "uint8_t", "0" ) } );
      Zel::zelAttribute( configured, "config", OpCode::Set, { record } );
   }
   EXPECT_EQ( ranges( dir, "7" ), "100-101 3001" );
   EXPECT_TRUE( Zel::zelAttribute( schedule, "vlanXlateSchedule", OpCode::Has, { port( "7" ) } )
                   .as< bool >() );
}

}   // namespace
