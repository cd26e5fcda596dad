// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// String forms of every registered value type, printed and read by generic access.
#include <gtest/gtest.h>

#include <map>
#include <ostream>
#include <string>

#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "tests/support/GenericSamples.h"

namespace {

std::string
readBack( const std::string& type, const std::string& text ) {
   return Zel::zelStrep( Zel::zelParse( type, text ) ).str();
}

TEST( StringForm, OfEveryValueTypeIsReadBackAsAnEqualValue ) {
   unsigned types = 0;
   for ( const Zel::TypeHandle type : TestSupport::registeredTypes() ) {
      if ( type.record()->kind == Zel::TypeKind::Entity ) {
         continue;
      }
      ++types;
      for ( const unsigned number : { 1u, 2u, 77u } ) {
         const Zel::Value value = TestSupport::sample( type, number );
         const Zel::String text = Zel::zelStrep( value );
         const Zel::Value again = Zel::zelParse( type, text );
         const Zel::ValueHooks& hooks = *type.record()->hooks;
         EXPECT_TRUE( hooks.equal( Zel::View( value ).object, Zel::View( again ).object ) )
            << type.name() << " " << text;
         EXPECT_EQ( hooks.hash( Zel::View( value ).object, 5 ),
                    hooks.hash( Zel::View( again ).object, 5 ) )
            << type.name() << " " << text;
         EXPECT_EQ( Zel::zelStrep( again ).str(), text.str() ) << type.name();
      }
   }
   EXPECT_EQ( types, 19u );
}

// An equal value alone would not show a field that neither printing nor parsing knows of.
TEST( StringForm, DiffersBetweenSamplesOfEveryTypeThatHasDifferentOnes ) {
   for ( const Zel::TypeHandle type : TestSupport::registeredTypes() ) {
      const std::string name = type.name();
      if ( type.record()->kind == Zel::TypeKind::Value && name != "bool" &&
           name != "Quen::YieldPolicy" ) {
         EXPECT_NE( Zel::zelStrep( TestSupport::sample( type, 1 ) ).str(),
                    Zel::zelStrep( TestSupport::sample( type, 2 ) ).str() )
            << name;
      }
   }
}

TEST( StringForm, NamesAndFieldsOfARecordAreWrittenOut ) {
   const std::string fields =
      "', ** {'key': Value('Mox::PortVlanKey', ** {'intfId': 7, 'vlanId': 100, 'innerVlanId': "
      "9}), 'mapping': Value('Bridging::VlanXlateMapping', ** {'vlanId': 3001, 'innerVlanId': 1, "
      "'tpid': 2, 'priority': 3, 'dropEligible': 4}), 'inLag': true, 'xlateUntagged': false, "
      "'origin': 5})";
   for ( const std::string type : { "Mox::MoxVlanMappingRecord", "Mox::MoxVlanMappingConfig",
                                    "Mox::MoxVlanMappingStatus" } ) {
      const std::string text = "Value('" + type + fields;
      EXPECT_EQ( readBack( type, text ), text );
   }
}

TEST( StringForm, ARecordIsNotReadUnderAnotherRecordsName ) {
   const auto config =
      Zel::zelStrep( TestSupport::sample( Zel::zelTypeOf( "Mox::MoxVlanMappingConfig" ), 1 ) );
   EXPECT_THROW( Zel::zelParse( "Mox::MoxVlanMappingStatus", config ), Zel::ParseException );
   EXPECT_THROW( Zel::zelParse( "Mox::MoxVlanMappingRecord", config ), Zel::ParseException );
}

TEST( StringForm, OfARangeNamesItsFields ) {
   const std::string text =
      "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 10, 'highVid': 20, 'mapping': "
      "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3001, 'innerVlanId': 0, 'tpid': 0, "
      "'priority': 0, 'dropEligible': 0})})";
   EXPECT_EQ( readBack( "MoxVlanMapping::VlanRangeXlateMapping", text ), text );
}

TEST( StringForm, OfSmallTypesIsANumberOrAWord ) {
   const std::map< std::string, std::string > texts{
      { "MoxVlanMapping::ReverseStartIdVlanId", "4094" },
      { "Bridging::VlanId", "4094" },
      { "Bridging::VlanIdOrNone", "0" },
      { "Corvel::IntfId", "18446744073709551615" },
      { "Quen::TaskPriority", "255" },
      { "Zel::String", " any text, 'with' {signs}" },
      { "bool", "false" },
      { "double", "-0.1" },
      { "uint8_t", "255" },
      { "uint64_t", "18446744073709551615" },
   };
   for ( const auto& [ type, text ] : texts ) {
      EXPECT_EQ( readBack( type, text ), text ) << type;
   }
   for ( const std::string text : { "Quantum", "Always", "Never", "AfterTests" } ) {
      EXPECT_EQ( readBack( "Quen::YieldPolicy", text ), text );
   }
   EXPECT_EQ( readBack( "Zel::String", "" ), "" );
}

struct BadText {
   const char* type;
   const char* text;
   const char* message;

   friend void PrintTo( const BadText& bad, std::ostream* out ) {
      *out << bad.type << " \"" << bad.text << "\"";
   }
};

class StringFormBadText : public testing::TestWithParam< BadText > {};

TEST_P( StringFormBadText, IsAParseErrorThatSaysWhatWasExpected ) {
   const BadText& bad = GetParam();
   try {
      Zel::zelParse( bad.type, bad.text );
      FAIL() << "it was read";
   } catch ( const Zel::ParseException& error ) {
      EXPECT_STREQ( error.what(), bad.message );
   }
}

constexpr BadText kBadTexts[] = {
   { "bool", "yes", "expected false or true, found \"yes\" at offset 0" },
   { "bool", "true ", "expected the end of the text, found \" \" at offset 4" },
   { "double", "1,5", "expected the end of the text, found \",5\" at offset 1" },
   { "uint8_t", "256", "expected a number from 0 to 255, found \"256\" at offset 0" },
   { "Corvel::IntfId", "-1",
     "expected a number from 0 to 18446744073709551615, found \"-1\" at offset 0" },
   { "Bridging::VlanId", "",
     "expected a number from 0 to 65535, found the end of the text at "
     "offset 0" },
   { "Bridging::VlanId", "65536",
     "expected a number from 0 to 65535, found \"65536\" at offset 0" },
   { "Bridging::VlanIdOrNone", "none",
     "expected a number from 0 to 65535, found \"none\" at offset 0" },
   { "Quen::TaskPriority", "256", "expected a number from 0 to 255, found \"256\" at offset 0" },
   { "Quen::YieldPolicy", "never",
     "expected Quantum or Always or Never or AfterTests, found \"never\" at offset 0" },
   { "Quen::YieldPolicy", "Nevermore", "expected the end of the text, found \"more\" at offset 5" },
   { "Mox::PortVlanKey", "7/100",
     "expected \"Value('Mox::PortVlanKey', ** {'intfId': \", found \"7/100\" at offset 0" },
   { "MoxVlanMapping::ReverseStartIdVlanId", "x",
     "expected a number from 0 to 65535, found \"x\" at offset 0" },
};
INSTANTIATE_TEST_SUITE_P( Table, StringFormBadText, testing::ValuesIn( kBadTexts ) );

TEST( StringForm, ANumberOutOfItsTypesRangeIsARangeErrorWithTheAttributesName ) {
   EXPECT_THROW( Zel::zelParse( "MoxVlanMapping::ReverseStartIdVlanId", "4095" ),
                 Zel::RangeException );
   try {
      Zel::zelParse( "MoxVlanMapping::VlanRangeXlateMapping",
                     "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 10, 'highVid': "
                     "4095, 'mapping': x})" );
      FAIL() << "it was read";
   } catch ( const Zel::RangeException& error ) {
      EXPECT_EQ( error.message(), "highVid: Bridging::VlanId::value < 1 or > 4094 not allowed" );
   }
}

TEST( StringForm, AnEntityHasNone ) {
   const auto dir = TestSupport::sample( Zel::zelTypeOf( "MoxVlanMapping::VlanRangeEntryDir" ), 1 );
   EXPECT_THROW( Zel::zelStrep( dir ), Zel::TypeException );
   EXPECT_THROW( Zel::zelParse( "MoxVlanMapping::VlanRangeEntryDir", "" ), Zel::TypeException );
   EXPECT_THROW( Zel::zelParse( "MoxVlanMapping::Absent", "" ), Zel::TypeException );
}

}   // namespace
