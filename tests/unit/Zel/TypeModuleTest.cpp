// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Zel/TypeModule.h"

#include <algorithm>
#include <array>

#include <gtest/gtest.h>

namespace {

using Zel::TypeKind;

constexpr std::array kColours{ Zel::TypeRecord{ "Test::Red", TypeKind::Value, 2 },
                               Zel::TypeRecord{ "Test::Green", TypeKind::Entity, 64 } };
constexpr std::array kShapes{ Zel::TypeRecord{ "Test::Circle", TypeKind::Entity, 32 } };
constexpr Zel::TypeModule colours{ "Test/Colours", kColours };
constexpr Zel::TypeModule shapes{ "Test/Shapes", kShapes };

TEST( TypeModule, ATypeIsFoundByNameWhileItsModuleIsRegistered ) {
   EXPECT_FALSE( Zel::zelTypeByName( "Test::Green" ) );
   {
      const Zel::ModuleRegistration registration( colours );
      const Zel::TypeHandle green = Zel::zelTypeByName( "Test::Green" );
      ASSERT_TRUE( green );
      EXPECT_EQ( green.module, &colours );
      EXPECT_EQ( green.index, 1u );
      EXPECT_STREQ( green.record()->name, "Test::Green" );
      EXPECT_EQ( green.record()->kind, TypeKind::Entity );
      EXPECT_EQ( green.record()->size, 64u );
   }
   EXPECT_FALSE( Zel::zelTypeByName( "Test::Green" ) );
}

TEST( TypeModule, AnUnknownNameGivesANullHandle ) {
   const Zel::ModuleRegistration registration( colours );
   const Zel::TypeHandle none = Zel::zelTypeByName( "Test::Blue" );
   EXPECT_FALSE( none );
   EXPECT_EQ( none.record(), nullptr );
   EXPECT_EQ( none, Zel::TypeHandle{} );
}

TEST( TypeModule, HandlesCompareByModuleAndIndex ) {
   const Zel::ModuleRegistration registration( colours );
   EXPECT_EQ( Zel::zelTypeByName( "Test::Red" ), ( Zel::TypeHandle{ &colours, 0 } ) );
   EXPECT_FALSE( Zel::zelTypeByName( "Test::Red" ) == Zel::zelTypeByName( "Test::Green" ) );
}

TEST( TypeModule, ModulesStandInOrderOfRegistration ) {
   const std::size_t before = Zel::zelModules().size();
   const Zel::ModuleRegistration first( shapes );
   const Zel::ModuleRegistration second( colours );
   const auto modules = Zel::zelModules();
   ASSERT_EQ( modules.size(), before + 2 );
   EXPECT_EQ( modules[ before ], &shapes );
   EXPECT_EQ( modules[ before + 1 ], &colours );
}

TEST( TypeModule, AnEarlierModuleMayGoFirst ) {
   Zel::zelModuleIs( shapes );
   Zel::zelModuleIs( colours );
   Zel::zelModuleDel( shapes );
   EXPECT_FALSE( Zel::zelTypeByName( "Test::Circle" ) );
   EXPECT_TRUE( Zel::zelTypeByName( "Test::Red" ) );
   Zel::zelModuleDel( colours );
}

TEST( TypeModuleDeathTest, ATypeNameRegisteredTwiceAborts ) {
   const Zel::ModuleRegistration registration( colours );
   constexpr Zel::TypeModule again{ "Test/Again", kColours };
   EXPECT_DEATH( Zel::zelModuleIs( again ),
                 "Zel/TypeModule:[0-9]+: .*zelModuleIs.*: Assertion `isNew' failed\\." );
}

}   // namespace
