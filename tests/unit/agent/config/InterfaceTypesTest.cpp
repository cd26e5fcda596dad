// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/InterfaceTypes.h"

#include <algorithm>
#include <set>
#include <string_view>

#include <gtest/gtest.h>

namespace Agent {
namespace {

bool
known( std::string_view name ) {
   return std::find( kInterfaceTypes.names.begin(), kInterfaceTypes.names.end(), name ) !=
          kInterfaceTypes.names.end();
}

TEST( InterfaceTypes, HoldTheRegistryOnceEach ) {
   const std::set< std::string_view > unique( kInterfaceTypes.names.begin(),
                                              kInterfaceTypes.names.end() );
   EXPECT_EQ( kInterfaceTypes.names.size(), 300U );
   EXPECT_EQ( unique.size(), 300U );
}

TEST( InterfaceTypes, AreSpeltAsRegistered ) {
   EXPECT_TRUE( known( "ethernetCsmacd" ) );
   EXPECT_TRUE( known( "ieee8023adLag" ) );
   EXPECT_TRUE( known( "l2vlan" ) );
   EXPECT_FALSE( known( "ethernetcsmacd" ) );
   EXPECT_FALSE( known( "" ) );
}

}   // namespace
}   // namespace Agent
