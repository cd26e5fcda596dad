// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/console/Completion.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "Zel/GenericIf.h"

namespace Agent::Console {
namespace {

class ConsoleCompletion : public testing::Test {
 protected:
   ConsoleCompletion() {
      const Zel::Value ranges =
         Zel::zelConstruct( Zel::zelTypeOf( "MoxVlanMapping::VlanRangeEntryDir" ), {} );
      Zel::zelAttribute( ranges, "vlanRangeEntry", Zel::OpCode::Set,
                         { Zel::zelParse( "Corvel::IntfId", "7" ) } );
      session_.roots = {
         { "ranges", ranges },
         { "range", Zel::zelConstruct( Zel::zelTypeOf( "Bridging::Config" ), {} ) },
         { "acsd", Zel::zelConstruct( Zel::zelTypeOf( "Mox::MoxCommonSmData" ), {} ) } };
   }

   // Where the last word begins and what may stand there.
   std::string words( const std::string& line ) const {
      const Completions found = complete( session_, line );
      std::string text = std::to_string( found.at );
      for ( const std::string& word : found.words ) {
         text += " " + word;
      }
      return text;
   }

   std::ostringstream out_;
   Session session_{ {}, out_ };
};

TEST_F( ConsoleCompletion, theFirstWordIsACommand ) {
   EXPECT_EQ( words( "t" ), "0 trace tracker type types" );
   EXPECT_EQ( words( "  un" ), "2 unwatch" );
   EXPECT_EQ( words( "frob" ), "0" );
}

TEST_F( ConsoleCompletion, helpTakesACommand ) {
   EXPECT_EQ( words( "help wa" ), "5 watch" );
   EXPECT_EQ( words( "help boo" ), "5" );   // a type
}

TEST_F( ConsoleCompletion, typeNamesComeFromTheRegistry ) {
   EXPECT_EQ( words( "type Bridging::Vlan" ), "5 Bridging::VlanId Bridging::VlanIdOrNone "
                                              "Bridging::VlanXlateMapping "
                                              "Bridging::VlanXlateStatusDir" );
   EXPECT_EQ( words( "new x Bridging::C" ), "6 Bridging::Config" );
   EXPECT_EQ( words( "type ran" ), "5" );   // a root
}

TEST_F( ConsoleCompletion, aNewNameIsNotGuessed ) {
   EXPECT_EQ( words( "new r" ), "4" );
}

TEST_F( ConsoleCompletion, aPathBeginsWithARoot ) {
   EXPECT_EQ( words( "get " ), "4 acsd range ranges" );
   EXPECT_EQ( words( "get ran" ), "4 range ranges" );
}

TEST_F( ConsoleCompletion, aPathGoesOnWithAnAttributeOfTheObject ) {
   EXPECT_EQ( words( "ls ranges." ), "3 ranges.vlanRangeEntry" );
   EXPECT_EQ( words( "ls acsd.ingressConfigDir.c" ), "3 acsd.ingressConfigDir.config" );
   EXPECT_EQ( words( "get ranges.vlanRangeEntry[7].in" ), "4 ranges.vlanRangeEntry[7].intfId" );
}

TEST_F( ConsoleCompletion, aNullPointerStillHasItsType ) {
   EXPECT_EQ( words( "get ranges.vlanRangeEntry[8].in" ), "4 ranges.vlanRangeEntry[8].intfId" );
}

TEST_F( ConsoleCompletion, keysMayHoldBlanksAndDots ) {
   const std::string path = "acsd.ingressConfigDir.config[Value('Mox::PortVlanKey', ** "
                            "{'intfId': 1, 'vlanId': 2, 'innerVlanId': 0})].";
   EXPECT_EQ( words( "get " + path + "or" ), "4 " + path + "origin" );
}

TEST_F( ConsoleCompletion, argumentsBehindTheFirstMayBePathsWithADollar ) {
   EXPECT_EQ( words( "set range.bridgeName $range.b" ), "21 $range.bridgeName" );
   EXPECT_EQ( words( "call a b c rang" ), "11 range ranges" );
   EXPECT_EQ( words( "new x Some::Type rang" ), "17 range ranges" );
   EXPECT_EQ( words( "new x Some::Type a rang" ), "19 range ranges" );
}

TEST_F( ConsoleCompletion, nothingFollowsTheLastArgument ) {
   EXPECT_EQ( words( "get ranges ran" ), "11" );
   EXPECT_EQ( words( "step " ), "5" );
}

TEST_F( ConsoleCompletion, whatLeadsNowhereHasNone ) {
   EXPECT_EQ( words( "get frob." ), "0" );
   EXPECT_EQ( words( "get ranges.vlanRangeEntry[" ), "0" );
   EXPECT_EQ( words( "get ranges.vlanRangeEntry[x]." ), "0" );
   EXPECT_EQ( words( "get ranges.vlanRangeEntry[8].intfId." ), "0" );
   EXPECT_EQ( words( "frob ran" ), "5" );
}

TEST_F( ConsoleCompletion, onlyPathsMayGoOn ) {
   EXPECT_TRUE( complete( session_, "get ran" ).mayGoOn );
   EXPECT_FALSE( complete( session_, "type Bri" ).mayGoOn );
   EXPECT_FALSE( complete( session_, "ge" ).mayGoOn );
}

}   // namespace
}   // namespace Agent::Console
