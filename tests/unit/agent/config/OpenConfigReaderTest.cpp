// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/OpenConfigReader.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

const std::string kPort = "/openconfig-interfaces:interfaces/interface[name='eth1']";

// The path of a member of a subinterface's openconfig-vlan:vlan.
std::string
vlanPath( int index, const std::string& member ) {
   return kPort + "/subinterfaces/subinterface[index='" + std::to_string( index ) +
          "']/openconfig-vlan:vlan" + member;
}

// Port eth1 with subinterfaces 1, 2, ..., one a line, the first on line 3.
std::string
ports( std::initializer_list< std::string > vlans ) {
   std::string subinterfaces;
   int index = 0;
   for ( const std::string& vlan : vlans ) {
      subinterfaces += ( index == 0 ? "" : ",\n" ) + subinterface( index + 1, vlan );
      ++index;
   }
   return portsOf( read( openConfig( openConfigPort( "eth1", subinterfaces ) ) ) );
}

std::string
tagged( const std::string& vlan ) {
   return R"("match":{"single-tagged":{"config":{"vlan-id":)" + vlan + "}}}";
}

std::string
taggedList( const std::string& vlans ) {
   return R"("match":{"single-tagged-list":{"config":{"vlan-ids":[)" + vlans + "]}}}";
}

std::string
taggedRange( const std::string& low, const std::string& high ) {
   return R"("match":{"single-tagged-range":{"config":{"low-vlan-id":)" + low +
          R"(,"high-vlan-id":)" + high + "}}}";
}

std::string
in( int relay ) {
   return ',' + swapMapping( "ingress", relay );
}

std::string
out( int vlan ) {
   return ',' + swapMapping( "egress", vlan );
}

// --- matches

TEST( OpenConfigMatch, OneVid ) {
   EXPECT_EQ( ports( { tagged( "4094" ) + in( 7 ) + out( 4094 ) } ), "eth1: 4094>7; 7>4094\n" );
}

TEST( OpenConfigMatch, AListOfVids ) {
   EXPECT_EQ( ports( { taggedList( "5, 3, 9" ) + in( 7 ) } ), "eth1: 3>7 5>7 9>7;\n" );
}

TEST( OpenConfigMatch, ARangeHoldsBothItsEnds ) {
   EXPECT_EQ( ports( { taggedRange( "1", "3" ) + in( 7 ) } ), "eth1: 1>7 2>7 3>7;\n" );
   EXPECT_EQ( ports( { taggedRange( "4094", "4094" ) + in( 7 ) } ), "eth1: 4094>7;\n" );
}

TEST( OpenConfigMatch, RangesInPiecesAddUp ) {
   EXPECT_EQ( ports( { taggedRange( "12", "13" ) + in( 7 ), taggedRange( "10", "11" ) + in( 7 ) } ),
              "eth1: 10>7 11>7 12>7 13>7;\n" );
}

TEST( OpenConfigMatch, AnUpsideDownRangeWithoutAMappingHasNoEffect ) {
   EXPECT_EQ( ports( { taggedRange( "20", "10" ) } ), "eth1:;\n" );
}

TEST( OpenConfigMatch, AMappingWithMatchesOfOtherModulesAloneIsRefused ) {
   EXPECT_EQ( ports( { R"("match":{"acme:any":3})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match" ) +
                 ": has no kind of match; allowed: single-tagged, single-tagged-list, "
                 "single-tagged-range\n" );
}

TEST( OpenConfigMatch, AnUpsideDownRangeIsRefused ) {
   EXPECT_EQ( ports( { taggedRange( "20", "10" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-range/config/high-vlan-id" ) +
                 ": value 10 is below low-vlan-id 20; allowed: 20..4094\n" );
   EXPECT_EQ( ports( { taggedRange( "11", "10" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-range/config/high-vlan-id" ) +
                 ": value 10 is below low-vlan-id 11; allowed: 11..4094\n" );
}

TEST( OpenConfigMatch, VidsAreNumbersFrom1To4094 ) {
   EXPECT_EQ( ports( { tagged( "4095" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged/config/vlan-id" ) +
                 ": value 4095 is not allowed; allowed: 1..4094\n" );
   EXPECT_EQ( ports( { taggedList( "1, 0, \"2\"" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-list/config/vlan-ids[2]" ) +
                 ": value 0 is not allowed; allowed: 1..4094\n"
                 "f.json:3: " +
                 vlanPath( 1, "/match/single-tagged-list/config/vlan-ids[3]" ) +
                 ": value \"2\" has the wrong type, a string; allowed: 1..4094, a JSON number "
                 "without fraction and exponent\n" );
   EXPECT_EQ( ports( { taggedRange( "0", "4095" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-range/config/low-vlan-id" ) +
                 ": value 0 is not allowed; allowed: 1..4094\n"
                 "f.json:3: " +
                 vlanPath( 1, "/match/single-tagged-range/config/high-vlan-id" ) +
                 ": value 4095 is not allowed; allowed: 1..4094\n" );
}

TEST( OpenConfigMatch, TheLeavesOfAKindMustBeThere ) {
   EXPECT_EQ( ports( { R"("match":{"single-tagged":{"config":{}}})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged/config/vlan-id" ) +
                 ": is missing; allowed: 1..4094\n" );
   EXPECT_EQ( ports( { R"("match":{"single-tagged":{}})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged/config/vlan-id" ) +
                 ": is missing; allowed: 1..4094\n" );
   EXPECT_EQ( ports( { R"("match":{"single-tagged":{"config":7}})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged/config" ) +
                 ": value 7 has the wrong type, an integer number; allowed: an object\n" );
   EXPECT_EQ(
      ports( { R"("match":{"single-tagged-range":{"config":{"low-vlan-id":5}}})" + in( 7 ) } ),
      "f.json:3: " + vlanPath( 1, "/match/single-tagged-range/config/high-vlan-id" ) +
         ": is missing; allowed: 1..4094\n" );
   EXPECT_EQ( ports( { taggedList( "" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-list/config/vlan-ids" ) +
                 ": value [] is empty; allowed: an array of one or more VIDs 1..4094\n" );
   EXPECT_EQ( ports( { R"("match":{"single-tagged-list":{"config":{"vlan-ids":5}}})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-list/config/vlan-ids" ) +
                 ": value 5 has the wrong type, an integer number; allowed: an array, each item "
                 "1..4094\n" );
}

TEST( OpenConfigMatch, OneSubinterfaceHasOneKind ) {
   EXPECT_EQ( ports( { R"("match":{"single-tagged":{"config":{"vlan-id":5}},)"
                       R"("single-tagged-list":{"config":{"vlan-ids":[6]}}})" +
                       in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match" ) +
                 ": has 2 kinds of match; allowed: one kind in each subinterface\n" );
}

TEST( OpenConfigMatch, AMappingNeedsAKindOfMatch ) {
   EXPECT_EQ( ports( { R"("match":{})" + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match" ) +
                 ": has no kind of match; allowed: single-tagged, single-tagged-list, "
                 "single-tagged-range\n" );
   EXPECT_EQ( ports( { swapMapping( "ingress", 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match" ) +
                 ": is missing; allowed: single-tagged, single-tagged-list, "
                 "single-tagged-range\n" );
}

TEST( OpenConfigMatch, DoubleTagsAreRefusedWhereTheyAreMapped ) {
   const std::string match =
      R"("match":{"double-tagged":{"config":{"inner-vlan-id":1,"outer-vlan-id":2}}})";
   EXPECT_EQ( ports( { match + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/double-tagged" ) +
                 ": value {...} is not supported by this agent; allowed: single-tagged, "
                 "single-tagged-list, single-tagged-range\n" );
   EXPECT_EQ( ports( { match } ), "eth1:;\n" );
}

TEST( OpenConfigMatch, AVidBelongsToOneSubinterfaceOfAPort ) {
   EXPECT_EQ( ports( { taggedRange( "10", "20" ) + in( 7 ), tagged( "30" ) + in( 8 ),
                       taggedRange( "19", "31" ) + in( 9 ) } ),
              "f.json:5: " + vlanPath( 3, "/match/single-tagged-range/config" ) +
                 ": value 19-20,30 is already matched in subinterface 1 on line 3 and in others; "
                 "allowed: each VID once on one port\n" );
}

TEST( OpenConfigMatch, AVidStandsOnceInAList ) {
   EXPECT_EQ( ports( { taggedList( "5, 6, 5" ) + in( 7 ) } ),
              "f.json:3: " + vlanPath( 1, "/match/single-tagged-list/config/vlan-ids[3]" ) +
                 ": value 5 is already used on line 3; allowed: each value once\n" );
}

TEST( OpenConfigMatch, AVidMatchedWithoutMappingCountsAsMatched ) {
   EXPECT_EQ( ports( { tagged( "5" ), tagged( "5" ) + in( 7 ) } ),
              "f.json:4: " + vlanPath( 2, "/match/single-tagged/config/vlan-id" ) +
                 ": value 5 is already matched in subinterface 1 on line 3; allowed: each VID "
                 "once on one port\n" );
}

TEST( OpenConfigMatch, PortsDoNotShareTheirVids ) {
   EXPECT_EQ(
      portsOf( read( openConfig(
         openConfigPort( "a", subinterface( 1, tagged( "5" ) + in( 7 ) + out( 5 ) ) ) + ',' +
         openConfigPort( "b", subinterface( 1, tagged( "5" ) + in( 7 ) + out( 6 ) ) ) ) ) ),
      "a: 5>7; 7>5\nb: 5>7; 7>6\n" );
}

TEST( OpenConfigMatch, WithoutMappingItIsReportedAsUnused ) {
   EXPECT_EQ( unusedOf( read( openConfig(
                 openConfigPort( "a", subinterface( 1, taggedRange( "5", "6" ) ) ) ) ) ),
              "/openconfig-interfaces:interfaces/interface/config/type 1 checked, has no effect\n"
              "/openconfig-interfaces:interfaces/interface/subinterfaces/subinterface/"
              "openconfig-vlan:vlan/match/single-tagged-range/config 1 matched without an "
              "ingress-mapping\n" );
}

// --- mappings

struct Action {
   const char* mapping;
   const char* path;
   const char* finding;
};

TEST( OpenConfigMapping, OnlySwapIsCarriedOut ) {
   for ( const Action& action : {
            Action{ R"("config":{"vlan-stack-action":"PUSH","vlan-id":7})",
                    "/config/vlan-stack-action",
                    "value \"PUSH\" is not supported by this agent; allowed: SWAP" },
            Action{ R"("config":{"vlan-stack-action":"POP"})", "/config/vlan-stack-action",
                    "value \"POP\" is not supported by this agent; allowed: SWAP" },
            Action{ R"("config":{"vlan-stack-action":"TWIST","vlan-id":7})",
                    "/config/vlan-stack-action",
                    "value \"TWIST\" is unknown; allowed: PUSH, POP, SWAP" },
            Action{ R"("config":{"vlan-stack-action":3,"vlan-id":7})", "/config/vlan-stack-action",
                    "value 3 has the wrong type, an integer number; allowed: PUSH, POP, SWAP" },
            Action{ R"("config":{"vlan-id":7})", "/config/vlan-stack-action",
                    "is missing; allowed: SWAP" },
            Action{ "", "/config/vlan-stack-action", "is missing; allowed: SWAP" },
            Action{ R"("config":{"vlan-stack-action":"SWAP"})", "/config/vlan-id",
                    "is missing; allowed: 1..4094" },
            Action{ R"("config":{"vlan-stack-action":"SWAP","vlan-id":4095})", "/config/vlan-id",
                    "value 4095 is not allowed; allowed: 1..4094" },
            Action{ R"("config":{"vlan-stack-action":"SWAP","vlan-id":7,"tpid":"TPID_0X88A8"})",
                    "/config/tpid",
                    "value \"TPID_0X88A8\" lacks its module name; allowed: "
                    "\"openconfig-vlan-types:TPID_0X88A8\"" },
            Action{ R"("config":7)", "/config",
                    "value 7 has the wrong type, an integer number; allowed: an object" },
         } ) {
      const std::string where = "f.json:3: ";
      EXPECT_EQ( ports( { tagged( "5" ) + R"(,"ingress-mapping":{)" + action.mapping + "}" } ),
                 where + vlanPath( 1, std::string( "/ingress-mapping" ) + action.path ) + ": " +
                    action.finding + '\n' );
      EXPECT_EQ(
         ports( { tagged( "5" ) + in( 9 ) + R"(,"egress-mapping":{)" + action.mapping + "}" } ),
         where + vlanPath( 1, std::string( "/egress-mapping" ) + action.path ) + ": " +
            action.finding + '\n' );
   }
}

TEST( OpenConfigMapping, ATpidOfTheModelIsCheckedAndHasNoEffect ) {
   const ReadResult result = read( openConfig( openConfigPort(
      "a",
      subinterface( 1, tagged( "5" ) +
                          R"(,"ingress-mapping":{"config":{"vlan-stack-action":"SWAP",)"
                          R"("vlan-id":7,"tpid":"openconfig-vlan-types:TPID_0X88A8"}})" ) ) ) );
   EXPECT_EQ( portsOf( result ), "a: 5>7;\n" );
   EXPECT_NE( unusedOf( result ).find( "/ingress-mapping/config/tpid 1 checked, has no effect\n" ),
              std::string::npos );
}

TEST( OpenConfigMapping, SubinterfacesOfOneRelayAgreeOnTheEgressVid ) {
   EXPECT_EQ( ports( { tagged( "5" ) + in( 7 ) + out( 5 ), tagged( "6" ) + in( 7 ) + out( 5 ),
                       tagged( "8" ) + in( 7 ) } ),
              "eth1: 5>7 6>7 8>7; 7>5\n" );
   EXPECT_EQ( ports( { tagged( "5" ) + in( 7 ) + out( 5 ), tagged( "6" ) + in( 7 ) + out( 6 ) } ),
              "f.json:4: " + vlanPath( 2, "/egress-mapping/config/vlan-id" ) +
                 ": value 6 conflicts with 5 for relay VID 7 in subinterface 1 on line 3; "
                 "allowed: one egress VID for each relay VID of a port\n" );
}

TEST( OpenConfigMapping, AnEgressMappingNeedsAnIngressMapping ) {
   EXPECT_EQ( ports( { tagged( "5" ) + out( 5 ) } ),
              "f.json:3: " + vlanPath( 1, "/ingress-mapping" ) +
                 ": is missing; allowed: a SWAP, which tells the relay VID of the "
                 "egress-mapping\n" );
}

// --- interfaces and subinterfaces

TEST( OpenConfigInterfaces, NeedNameAndType ) {
   EXPECT_EQ( portsOf( read( openConfig( "{},\n{\"name\":\"e\",\"config\":{\"name\":\"e\"}}" ) ) ),
              "f.json:2: /openconfig-interfaces:interfaces/interface[1]/name: is missing; "
              "allowed: a name of one or more characters without control characters\n"
              "f.json:2: /openconfig-interfaces:interfaces/interface[1]/config/type: is missing; "
              "allowed: an identity of iana-if-type, such as \"iana-if-type:ethernetCsmacd\"\n"
              "f.json:2: /openconfig-interfaces:interfaces/interface[1]/config/name: is missing; "
              "allowed: a name of one or more characters without control characters\n"
              "f.json:3: /openconfig-interfaces:interfaces/interface[name='e']/config/type: is "
              "missing; allowed: an identity of iana-if-type, such as "
              "\"iana-if-type:ethernetCsmacd\"\n" );
}

TEST( OpenConfigInterfaces, HaveUniqueNames ) {
   EXPECT_EQ( portsOf( read( openConfig( openConfigPort( "eth1", "" ) + ",\n" +
                                         openConfigPort( "eth1", "" ) ) ) ),
              "f.json:5: " + kPort +
                 "/name: value \"eth1\" is already used on line 2; allowed: each key once\n" );
}

TEST( OpenConfigInterfaces, TheNameInConfigEqualsTheKey ) {
   EXPECT_EQ( portsOf( read( openConfig( R"({"name":"eth1","config":{"name":"eth2",)"
                                         R"("type":"iana-if-type:other"}})" ) ) ),
              "f.json:2: " + kPort +
                 "/config/name: value \"eth2\" differs from the key of its list entry; allowed: "
                 "\"eth1\"\n" );
}

TEST( OpenConfigInterfaces, HaveATypeOfTheRegistry ) {
   EXPECT_EQ( portsOf( read( openConfig( R"({"name":"eth1","config":{)"
                                         R"("name":"eth1","type":"iana-if-type:warp"}})" ) ) ),
              "f.json:2: " + kPort +
                 "/config/type: value \"iana-if-type:warp\" is unknown; allowed: an identity of "
                 "iana-if-type, such as \"iana-if-type:ethernetCsmacd\"\n" );
}

TEST( OpenConfigSubinterfaces, AreNumberedOnceEach ) {
   EXPECT_EQ( portsOf( read( openConfig( openConfigPort(
                 "eth1", subinterface( 1, "" ) + ",\n" + subinterface( 1, "" ) +
                            ",\n{\"config\":{\"index\":0}},\n" + subinterface( -1, "" ) ) ) ) ),
              "f.json:4: " + kPort +
                 "/subinterfaces/subinterface[index='1']/index: value 1 is already used on line "
                 "3; allowed: each key once\n"
                 "f.json:5: " +
                 kPort +
                 "/subinterfaces/subinterface[3]/index: is missing; allowed: 0..4294967295\n"
                 "f.json:6: " +
                 kPort +
                 "/subinterfaces/subinterface[index='-1']/index: value -1 is not allowed; "
                 "allowed: 0..4294967295\n"
                 "f.json:6: " +
                 kPort +
                 "/subinterfaces/subinterface[index='-1']/config/index: value -1 is not allowed; "
                 "allowed: 0..4294967295\n" );
}

TEST( OpenConfigSubinterfaces, TheIndexInConfigEqualsTheKey ) {
   EXPECT_EQ(
      portsOf( read( openConfig( openConfigPort(
         "eth1", R"({"index":0,"config":{"index":0}},{"index":1,"config":{"index":2}})" ) ) ) ),
      "f.json:3: " + kPort +
         "/subinterfaces/subinterface[index='1']/config/index: value 2 differs from the "
         "key of its list entry; allowed: 1\n" );
}

TEST( OpenConfigSubinterfaces, WithoutVlanAreUnused ) {
   EXPECT_EQ(
      unusedOf( read( openConfig( openConfigPort(
         "eth1", R"({"index":0,"config":{"index":0,"enabled":false},)"
                 R"("openconfig-if-ip:ipv4":{"unnumbered":{"config":{"enabled":true}}}})" ) ) ) ),
      "/openconfig-interfaces:interfaces/interface/config/type 1 checked, has no effect\n"
      "/openconfig-interfaces:interfaces/interface/subinterfaces/subinterface/config/"
      "enabled 1 not used by this agent\n"
      "/openconfig-interfaces:interfaces/interface/subinterfaces/subinterface/"
      "openconfig-if-ip:ipv4/unnumbered/config/enabled 1 of another module\n" );
}

TEST( OpenConfigSubinterfaces, AVlanWithoutItsModuleNameIsNotPassedOver ) {
   EXPECT_EQ( portsOf( read( openConfig(
                 openConfigPort( "eth1", R"({"index":1,"config":{"index":1},"vlan":{}})" ) ) ) ),
              "f.json:3: " + kPort +
                 "/subinterfaces/subinterface[index='1']/vlan: value {} lacks its module name; "
                 "allowed: \"openconfig-vlan:vlan\"\n" );
}

TEST( OpenConfigSubinterfaces, ThePrefixOfTheOwnModuleIsOptional ) {
   EXPECT_EQ(
      portsOf( read( openConfig(
         R"({"openconfig-interfaces:name":"e","openconfig-interfaces:config":)"
         R"({"openconfig-interfaces:name":"e","openconfig-interfaces:type":"iana-if-type:other"},)"
         R"("openconfig-interfaces:subinterfaces":{"openconfig-interfaces:subinterface":[)"
         R"({"openconfig-interfaces:index":1,"config":{"openconfig-interfaces:index":1},)"
         R"("openconfig-vlan:vlan":{"openconfig-vlan:match":)"
         R"({"openconfig-vlan:single-tagged":{"config":{"openconfig-vlan:vlan-id":5}}},)"
         R"("openconfig-vlan:ingress-mapping":{"config":{"vlan-stack-action":"SWAP",)"
         R"("openconfig-vlan:vlan-id":7}}}}]}})" ) ) ),
      "e: 5>7;\n" );
}

// --- aggregates

std::string
member( const std::string& name, const std::string& aggregate ) {
   return R"({"name":")" + name + R"(","config":{"name":")" + name +
          R"(","type":"iana-if-type:ethernetCsmacd"},)"
          R"("openconfig-if-ethernet:ethernet":{"config":{)" +
          aggregate + "}}}";
}

TEST( OpenConfigAggregates, AMemberMayStandBeforeOrBehindItsAggregate ) {
   const std::string id = R"("openconfig-if-aggregate:aggregate-id":"lag")";
   EXPECT_EQ( portsOf( read( openConfig( member( "a", id ) + ',' + openConfigPort( "lag", "" ) +
                                         ',' + member( "z", id ) ) ) ),
              "a:;; in lag\nlag:;\nz:;; in lag\n" );
}

TEST( OpenConfigAggregates, AMemberNamesAnInterfaceOfTheFile ) {
   const std::string path = kPort + "/openconfig-if-ethernet:ethernet/config/";
   EXPECT_EQ( portsOf( read( openConfig(
                 member( "eth1", R"("openconfig-if-aggregate:aggregate-id":"lag")" ) ) ) ),
              "f.json:2: " + path +
                 "openconfig-if-aggregate:aggregate-id: value \"lag\" names no interface of this "
                 "file; allowed: the name of an interface of this file\n" );
   EXPECT_EQ( portsOf( read( openConfig(
                 member( "eth1", R"("openconfig-if-aggregate:aggregate-id":"eth1")" ) ) ) ),
              "f.json:2: " + path +
                 "openconfig-if-aggregate:aggregate-id: value \"eth1\" is the interface itself; "
                 "allowed: the name of another interface\n" );
   EXPECT_EQ( portsOf( read(
                 openConfig( member( "eth1", R"("openconfig-if-aggregate:aggregate-id":1)" ) ) ) ),
              "f.json:2: " + path +
                 "openconfig-if-aggregate:aggregate-id: value 1 has the wrong type, an integer "
                 "number; allowed: a JSON string\n" );
   EXPECT_EQ( portsOf( read( openConfig( member( "eth1", R"("aggregate-id":"eth1")" ) ) ) ),
              "f.json:2: " + path +
                 "aggregate-id: value \"eth1\" lacks its module name; allowed: "
                 "\"openconfig-if-aggregate:aggregate-id\"\n" );
}

}   // namespace
}   // namespace Agent
