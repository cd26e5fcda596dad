// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The library's types as the framework's registry knows them.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "MoxVlanMapping/VlanXlateScaleEntry.h"
#include "Zel/TypeModule.h"
#include "tests/unit/MoxVlanMapping/CodefTest.h"
#include "tests/unit/MoxVlanMapping/ScaleSlaveSmTest.h"

namespace {

std::string
nameOf( const Zel::PtrInterface& entity ) {
   const Zel::TypeHandle type = entity.fwkType();
   return type ? std::string( type.module->name ) + ": " + type.record()->name : "none";
}

std::string
typesOf( const std::string& module ) {
   const auto modules = Zel::zelModules();
   const auto found = std::ranges::find_if(
      modules, [ & ]( const Zel::TypeModule* candidate ) { return candidate->name == module; } );
   if ( found == modules.end() ) {
      return "no such module";
   }
   std::string all;
   for ( const Zel::TypeRecord& type : ( *found )->types ) {
      all += std::string( type.name ) +
             ( type.kind == Zel::TypeKind::Value ? " value\n" : " entity\n" );
   }
   return all;
}

TEST( LibraryTypes, AreRegisteredByTheModuleOfTheirSource ) {
   EXPECT_EQ( typesOf( "MoxVlanMapping/MoxVlanRangeMgr" ),
              "MoxVlanMapping::ReverseStartIdVlanId value\n"
              "MoxVlanMapping::VlanRangeXlateMapping value\n"
              "MoxVlanMapping::VlanRangeEntry entity\n"
              "MoxVlanMapping::VlanRangeEntryDir entity\n"
              "MoxVlanMapping::VlanXlateScheduleDir entity\n"
              "MoxVlanMapping::MoxVlanRangeMgr entity\n" );
   EXPECT_EQ( typesOf( "MoxVlanMapping/MoxVlanMappingScaleSlaveSm" ),
              "MoxVlanMapping::VlanMappingScaleSlaveSm entity\n" );
   EXPECT_EQ( typesOf( "MoxVlanMapping/MoxVlanRangeMappingCodef" ),
              "MoxVlanMapping::VlanXlateScaleEntry entity\n"
              "MoxVlanMapping::VlanXlateScaleEntryDir entity\n"
              "MoxVlanMapping::MoxVlanRangeMappingCodef entity\n" );
}

class RangeTypesTest : public CodefTest {};

TEST_F( RangeTypesTest, EntitiesKnowTheirType ) {
   const Corvel::IntfId intf( 7 );
   EXPECT_EQ( nameOf( *rangeDir_ ),
              "MoxVlanMapping/MoxVlanRangeMgr: MoxVlanMapping::VlanRangeEntryDir" );
   EXPECT_EQ( nameOf( *rangeDir_->vlanRangeEntryIs( intf ) ),
              "MoxVlanMapping/MoxVlanRangeMgr: MoxVlanMapping::VlanRangeEntry" );
   EXPECT_EQ( nameOf( *scheduleDir_ ),
              "MoxVlanMapping/MoxVlanRangeMgr: MoxVlanMapping::VlanXlateScheduleDir" );
   EXPECT_EQ( nameOf( *mgr_ ), "MoxVlanMapping/MoxVlanRangeMgr: MoxVlanMapping::MoxVlanRangeMgr" );
   EXPECT_EQ( nameOf( *codef_ ), "MoxVlanMapping/MoxVlanRangeMappingCodef: "
                                 "MoxVlanMapping::MoxVlanRangeMappingCodef" );
   const auto& scaleDir = *codef_->vlanXlateScaleEntryDir();
   EXPECT_EQ( nameOf( scaleDir ), "MoxVlanMapping/MoxVlanRangeMappingCodef: "
                                  "MoxVlanMapping::VlanXlateScaleEntryDir" );
   EXPECT_EQ( nameOf( *codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intf ) ),
              "MoxVlanMapping/MoxVlanRangeMappingCodef: MoxVlanMapping::VlanXlateScaleEntry" );
}

class StateMachineTypeTest : public ScaleSlaveSmTest {};

TEST_F( StateMachineTypeTest, TheStateMachineKnowsItsType ) {
   EXPECT_EQ( nameOf( *sm_ ), "MoxVlanMapping/MoxVlanMappingScaleSlaveSm: "
                              "MoxVlanMapping::VlanMappingScaleSlaveSm" );
}

TEST( LibraryTypes, SizesAreThoseOfTheClasses ) {
   EXPECT_EQ( Zel::zelTypeByName( "MoxVlanMapping::VlanRangeXlateMapping" ).record()->size,
              sizeof( MoxVlanMapping::VlanRangeXlateMapping ) );
   EXPECT_EQ( Zel::zelTypeByName( "MoxVlanMapping::MoxVlanRangeMgr" ).record()->size,
              sizeof( MoxVlanMapping::MoxVlanRangeMgr ) );
}

}   // namespace
