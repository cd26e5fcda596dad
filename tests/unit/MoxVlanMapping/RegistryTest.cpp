// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The library's types as the framework's registry knows them, against a list written by hand.
//
//   INDEX TYPE KIND of BASE ( constructor arguments )
//      ID ATTRIBUTE KIND VALUE-TYPE by KEY-TYPE ( arguments of creator or method )
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "Mox/VlanMappingSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRange.h"
#include "Zel/NewEntity.h"
#include "Zel/TypeModule.h"
#include "tests/support/GenericSamples.h"
#include "tests/support/NoneLeftTest.h"

namespace {

using Zel::AttributeKind;

const std::map< AttributeKind, std::string > kKinds{
   { AttributeKind::Field, "field" },
   { AttributeKind::Pointer, "pointer" },
   { AttributeKind::InstantiatingPointer, "instantiating pointer" },
   { AttributeKind::SettablePointer, "settable pointer" },
   { AttributeKind::SettableValue, "settable value" },
   { AttributeKind::OrderedMap, "ordered map" },
   { AttributeKind::OrderedSet, "ordered set" },
   { AttributeKind::HashMap, "hash map" },
   { AttributeKind::HashSet, "hash set" },
   { AttributeKind::EntityMap, "entity map" },
   { AttributeKind::Method, "method" },
   { AttributeKind::CallableMethod, "callable method" },
};

std::string
argumentsText( const Zel::ArgumentNames& names, std::span< const char* const > types ) {
   std::string text;
   for ( std::size_t i = 0; i < Zel::ArgumentNames::kMost; ++i ) {
      const char* name = names.names[ i ];
      if ( name || i < types.size() ) {
         text += text.empty() ? " ( " : ", ";
         text += name ? name : "unnamed";
         text += ": " + std::string( i < types.size() ? types[ i ] : "untyped" );
      }
   }
   return text.empty() ? text : text + " )";
}

std::string
attributeText( const Zel::AttributeRecord& row ) {
   std::string text =
      "   " + std::to_string( row.id ) + " " + row.name + " " + kKinds.at( row.kind );
   text += *row.valueType ? std::string( " " ) + row.valueType : "";
   text += *row.keyType ? std::string( " by " ) + row.keyType : "";
   return text + argumentsText( row.argumentNames, row.argumentTypes ) + "\n";
}

std::string
moduleText( const std::string& name ) {
   std::string text;
   for ( const Zel::TypeModule* module : Zel::zelModules() ) {
      for ( std::size_t i = 0; name == module->name && i < module->types.size(); ++i ) {
         const Zel::TypeRecord& type = module->types[ i ];
         text += std::to_string( i ) + " " + type.name;
         text += type.kind == Zel::TypeKind::Value ? " value" : " entity";
         text += *type.base ? std::string( " of " ) + type.base : "";
         text += argumentsText( type.constructorNames, type.constructor.types ) + "\n";
         for ( const Zel::AttributeRecord& row : type.attributes ) {
            text += attributeText( row );
         }
      }
   }
   return text;
}

TEST( Registry, HoldsTheTypesOfTheRangeManager ) {
   EXPECT_EQ(
      moduleText( "MoxVlanMapping/MoxVlanRangeMgr" ),
      "0 MoxVlanMapping::ReverseStartIdVlanId value ( value: uint16_t )\n"
      "   2 value field uint16_t\n"
      "1 MoxVlanMapping::VlanRangeXlateMapping value ( lowVid: Bridging::VlanId, "
      "highVid: Bridging::VlanId, mapping: Bridging::VlanXlateMapping )\n"
      "   2 lowVid field Bridging::VlanId\n"
      "   3 highVid field Bridging::VlanId\n"
      "   4 mapping field Bridging::VlanXlateMapping\n"
      "2 MoxVlanMapping::VlanRangeEntry entity of Zel::PtrInterface ( intfId: Corvel::IntfId )\n"
      "   130 intfId field Corvel::IntfId\n"
      "   131 vlanIdRange ordered map MoxVlanMapping::VlanRangeXlateMapping by Bridging::VlanId\n"
      "   132 revSortedStartVid ordered set bool by MoxVlanMapping::ReverseStartIdVlanId\n"
      "3 MoxVlanMapping::VlanRangeEntryDir entity of Zel::PtrInterface\n"
      "   130 vlanRangeEntry entity map MoxVlanMapping::VlanRangeEntry by Corvel::IntfId "
      "( intfId: Corvel::IntfId )\n"
      "4 MoxVlanMapping::VlanXlateScheduleDir entity of Zel::PtrInterface\n"
      "   130 vlanXlateSchedule hash set bool by Corvel::IntfId\n"
      "5 MoxVlanMapping::MoxVlanRangeMgr entity of Zel::PtrInterface "
      "( vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir )\n"
      "   130 vlanRangeEntryDir pointer MoxVlanMapping::VlanRangeEntryDir\n"
      "   131 isVidInRange method bool "
      "( vidRange: MoxVlanMapping::VlanRangeXlateMapping, inVlanId: Bridging::VlanId )\n"
      "   132 isVidAndDot1qInLowerBoundRange method bool ( intfId: Corvel::IntfId, "
      "inVlanId: Bridging::VlanId, mapping: Bridging::VlanXlateMapping )\n"
      "   133 isVidAndDot1qInUpperBoundRange method bool ( intfId: Corvel::IntfId, "
      "inVlanId: Bridging::VlanId, mapping: Bridging::VlanXlateMapping )\n"
      "   134 addVlanToIdx callable method ( intfId: Corvel::IntfId, "
      "vlanId: Bridging::VlanId, mapping: Bridging::VlanXlateMapping )\n"
      "   135 deleteVlanFromIdx callable method ( intfId: Corvel::IntfId, "
      "vlanId: Bridging::VlanId )\n"
      "   136 deleteVlanFromRange method ( intfId: Corvel::IntfId, vlanId: Bridging::VlanId, "
      "vidRange: MoxVlanMapping::VlanRangeXlateMapping )\n" );
}

TEST( Registry, HoldsTheTypeOfTheScaleStateMachine ) {
   EXPECT_EQ( moduleText( "MoxVlanMapping/MoxVlanMappingScaleSlaveSm" ),
              "0 MoxVlanMapping::VlanMappingScaleSlaveSm entity of Mox::VlanMappingSlaveSm "
              "( acsd: Mox::MoxCommonSmData, clock: Zel::Clock, bridgingConfig: Bridging::Config, "
              "vlanXlateStatusDir: Bridging::VlanXlateStatusDir, "
              "vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir, "
              "vlanXlateScheduleDir: MoxVlanMapping::VlanXlateScheduleDir )\n"
              "   386 vlanRangeEntryDir pointer MoxVlanMapping::VlanRangeEntryDir\n"
              "   387 vlanXlateScheduleDir pointer MoxVlanMapping::VlanXlateScheduleDir\n"
              "   388 vlanRangeMgr instantiating pointer MoxVlanMapping::MoxVlanRangeMgr "
              "( vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir )\n" );
}

TEST( Registry, HoldsTheTypesOfTheRangeScaleTask ) {
   EXPECT_EQ(
      moduleText( "MoxVlanMapping/MoxVlanRangeMappingCodef" ),
      "0 MoxVlanMapping::VlanXlateScaleEntry entity of Zel::PtrInterface "
      "( intfId: Corvel::IntfId )\n"
      "   130 intfId field Corvel::IntfId\n"
      "   131 vlanInXlateHashTable hash set bool by Bridging::VlanId\n"
      "   132 vidRangeSorted ordered set bool by MoxVlanMapping::VlanRangeXlateMapping\n"
      "1 MoxVlanMapping::VlanXlateScaleEntryDir entity of Zel::PtrInterface\n"
      "   130 vlanXlateScaleEntry entity map MoxVlanMapping::VlanXlateScaleEntry "
      "by Corvel::IntfId ( intfId: Corvel::IntfId )\n"
      "2 MoxVlanMapping::MoxVlanRangeMappingCodef entity of Zel::PtrInterface "
      "( acsd: Mox::MoxCommonSmData, scheduler: Quen::TaskScheduler, "
      "vlanRangeEntryDir: MoxVlanMapping::VlanRangeEntryDir, "
      "vlanXlateScheduleDir: MoxVlanMapping::VlanXlateScheduleDir )\n"
      "   130 acsd pointer Mox::MoxCommonSmData\n"
      "   131 scheduler pointer Quen::TaskScheduler\n"
      "   132 vlanRangeEntryDir pointer MoxVlanMapping::VlanRangeEntryDir\n"
      "   133 vlanXlateScheduleDir pointer MoxVlanMapping::VlanXlateScheduleDir\n"
      "   134 task settable pointer Quen::Task\n"
      "   135 vlanXlateScaleEntryDir instantiating pointer MoxVlanMapping::VlanXlateScaleEntryDir\n"
      "   136 drainBacklog callable method\n"
      "   137 vlanXlateCodefComplete callable method\n"
      "   138 handlePortToLag callable method ( intf: Corvel::IntfId )\n"
      "   139 sortVlanRangeBySize method ( intfId: Corvel::IntfId )\n"
      "   140 processVlanRange method ( intfId: Corvel::IntfId )\n"
      "   141 processSortedVlanRange callable method ( intfId: Corvel::IntfId )\n"
      "   142 initialized settable value bool\n"
      "   143 handleInitialized callable method\n" );
}

TEST( Registry, HoldsTheLibrarysModulesInTheirOrder ) {
   std::string names;
   for ( const Zel::TypeModule* module : Zel::zelModules() ) {
      const std::string name = module->name;
      names += name.starts_with( "MoxVlanMapping/" ) ? name + "\n" : "";
   }
   EXPECT_EQ( names, "MoxVlanMapping/MoxVlanRangeMgr\n"
                     "MoxVlanMapping/MoxVlanMappingScaleSlaveSm\n"
                     "MoxVlanMapping/MoxVlanRangeMappingCodef\n" );
}

// A platform type that is missing would make some attribute unreadable.
TEST( Registry, HoldsEveryTypeThatATypeMentions ) {
   std::set< std::string > mentioned;
   for ( const Zel::TypeHandle handle : TestSupport::registeredTypes() ) {
      const Zel::TypeRecord& type = *handle.record();
      mentioned.insert( type.base );
      mentioned.insert( type.constructor.types.begin(), type.constructor.types.end() );
      for ( const Zel::AttributeRecord& row : type.attributes ) {
         mentioned.insert( { row.valueType, row.keyType } );
         mentioned.insert( row.argumentTypes.begin(), row.argumentTypes.end() );
         for ( const Zel::Operation& operation :
               { row.get, row.set, row.del, row.size, row.changes, row.has, row.call } ) {
            mentioned.insert( operation.types.begin(), operation.types.end() );
         }
      }
   }
   EXPECT_EQ( mentioned.erase( "" ), 1u );
   EXPECT_TRUE( mentioned.contains( "Quen::YieldPolicy" ) );
   for ( const std::string& name : mentioned ) {
      EXPECT_TRUE( Zel::zelTypeByName( name ) ) << name;
   }
}

TEST( Registry, NumbersTheAttributesOfATypeUpwardWithoutGaps ) {
   for ( const Zel::TypeHandle handle : TestSupport::registeredTypes() ) {
      const Zel::TypeRecord& type = *handle.record();
      const bool derivedEntity =
         type.kind == Zel::TypeKind::Entity && std::string( type.base ) != "Zel::PtrInterface";
      unsigned next = type.kind == Zel::TypeKind::Value ? 2 : derivedEntity ? 386 : 130;
      for ( const Zel::AttributeRecord& row : type.attributes ) {
         EXPECT_EQ( row.id, next++ ) << type.name << "::" << row.name;
      }
   }
}

TEST( Registry, SizesAreThoseOfTheClasses ) {
   EXPECT_EQ( Zel::zelTypeByName( "MoxVlanMapping::VlanRangeXlateMapping" ).record()->size,
              sizeof( MoxVlanMapping::VlanRangeXlateMapping ) );
   EXPECT_EQ( Zel::zelTypeByName( "MoxVlanMapping::MoxVlanRangeMgr" ).record()->size,
              sizeof( MoxVlanMapping::MoxVlanRangeMgr ) );
}

class EntityTypeTest : public TestSupport::NoneLeftTest {};

std::string
typeText( const Zel::PtrInterface& entity ) {
   const Zel::TypeHandle type = entity.fwkType();
   return type ? std::string( type.module->name ) + " " + std::to_string( type.index ) : "none";
}

TEST_F( EntityTypeTest, EveryEntityAnswersItsModuleAndIndex ) {
   const std::map< std::string, std::string > expected{
      { "MoxVlanMapping::VlanRangeEntry", "MoxVlanMapping/MoxVlanRangeMgr 2" },
      { "MoxVlanMapping::VlanRangeEntryDir", "MoxVlanMapping/MoxVlanRangeMgr 3" },
      { "MoxVlanMapping::VlanXlateScheduleDir", "MoxVlanMapping/MoxVlanRangeMgr 4" },
      { "MoxVlanMapping::MoxVlanRangeMgr", "MoxVlanMapping/MoxVlanRangeMgr 5" },
      { "MoxVlanMapping::VlanMappingScaleSlaveSm", "MoxVlanMapping/MoxVlanMappingScaleSlaveSm 0" },
      { "MoxVlanMapping::VlanXlateScaleEntry", "MoxVlanMapping/MoxVlanRangeMappingCodef 0" },
      { "MoxVlanMapping::VlanXlateScaleEntryDir", "MoxVlanMapping/MoxVlanRangeMappingCodef 1" },
      { "MoxVlanMapping::MoxVlanRangeMappingCodef", "MoxVlanMapping/MoxVlanRangeMappingCodef 2" },
   };
   for ( const auto& [ name, type ] : expected ) {
      const Zel::Value entity = TestSupport::sample( Zel::zelTypeOf( name ), 1 );
      EXPECT_EQ( typeText( *entity.entity() ), type ) << name;
   }
}

TEST_F( EntityTypeTest, EveryConstructibleEntityAnswersTheTypeItWasConstructedAs ) {
   unsigned checked = 0;
   for ( const Zel::TypeHandle type : TestSupport::registeredTypes() ) {
      if ( type.record()->kind == Zel::TypeKind::Entity && type.record()->constructor.invoke ) {
         const Zel::Value entity = TestSupport::sample( type, 1 );
         EXPECT_EQ( entity.entity()->fwkType(), type ) << type.name();
         ++checked;
      }
   }
   EXPECT_EQ( checked, 16u );
}

class QuietSm : public Mox::VlanMappingSlaveSm {
 public:
   static constexpr char zelTypeName[] = "QuietSm";
   void doAddIngressVlanMapping( const Mox::PortVlanKey& ) override {}
   void doDelIngressVlanMapping( const Mox::PortVlanKey& ) override {}
   void doAddEgressVlanMapping( const Mox::PortVlanKey& ) override {}
   void doDelEgressVlanMapping( const Mox::PortVlanKey& ) override {}

 protected:
   using VlanMappingSlaveSm::VlanMappingSlaveSm;
   ~QuietSm() override { zelDoZombieReactors( true ); }
};

TEST_F( EntityTypeTest, AnUnregisteredDerivedClassAnswersItsBasesType ) {
   const auto sm =
      Zel::newEntity< QuietSm >( Mox::moxCommonSmDataFactory(), nullptr, nullptr, nullptr );
   EXPECT_EQ( sm->fwkType(), Zel::zelTypeOf( "Mox::VlanMappingSlaveSm" ) );
}

}   // namespace
