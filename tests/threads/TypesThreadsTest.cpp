// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The type registry and the hash seed while threads use and change them.
#include <array>
#include <cstdint>

#include <gtest/gtest.h>

#include "Zel/Hash.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"
#include "tests/support/InThreads.h"

namespace {

using Zel::TypeKind;

constexpr int kThreads = 4;
constexpr int kRounds = 500;

constexpr std::array kFirstTypes{ Zel::TypeRecord{ "TypesThreadsTest::A", TypeKind::Value, 2 },
                                  Zel::TypeRecord{ "TypesThreadsTest::B", TypeKind::Value, 2 } };
constexpr std::array kSecondTypes{ Zel::TypeRecord{ "TypesThreadsTest::C", TypeKind::Value, 2 } };
constexpr Zel::TypeModule kModules[] = { { "TypesThreadsTest/First", kFirstTypes },
                                         { "TypesThreadsTest/Second", kSecondTypes } };

// As libraries do that are loaded and unloaded while others look types up.
TEST( TypesThreadsTest, TypesAreFoundWhileModulesComeAndGo ) {
   const auto before = Zel::zelModules().size();
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      for ( int round = 0; round < kRounds; ++round ) {
         if ( thread < 2 ) {
            const Zel::TypeModule& module = kModules[ thread ];
            const Zel::ModuleRegistration registration( module );
            const Zel::TypeHandle type = Zel::zelTypeByName( module.types[ 0 ].name );
            EXPECT_EQ( type.module, &module );
         } else {
            EXPECT_TRUE( Zel::zelTypeByName( "MoxVlanMapping::VlanRangeEntry" ) );
            EXPECT_EQ( Zel::Value::of( std::uint16_t{ 7 } ).as< std::uint16_t >(), 7u );
            const auto modules = Zel::zelModules().size();
            EXPECT_TRUE( modules >= before && modules <= before + 2 );
            Zel::zelTypeByName( "TypesThreadsTest::B" );
         }
      }
   } );
   EXPECT_EQ( Zel::zelModules().size(), before );
   EXPECT_FALSE( Zel::zelTypeByName( "TypesThreadsTest::A" ) );
}

TEST( TypesThreadsTest, TheHashSeedMayBeReadAndSetAtOnce ) {
   const std::uint32_t seed = Zel::hashSeed();
   TestSupport::inThreads( kThreads, [ & ]( int thread ) {
      for ( int round = 0; round < kRounds; ++round ) {
         if ( thread == 0 ) {
            Zel::hashSeedIs( round % 2 == 0 ? 1 : seed );
         } else {
            const std::uint32_t seen = Zel::hashSeed();
            EXPECT_TRUE( seen == 1 || seen == seed );
         }
      }
   } );
   Zel::hashSeedIs( seed );
}

}   // namespace
