// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Ieee8021qReader.h"

#include <string>

#include <gtest/gtest.h>

#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

const std::string kPort( kIeeePort );
const std::string kBothOn = R"("enable-vid-translation-table":true,)"
                            R"("enable-egress-vid-translation-table":true,)";
const std::string kIngressOn = R"("enable-vid-translation-table":true,)";

std::string
ports( const std::string& members ) {
   return portsOf( read( ieeePort( members ) ) );
}

// The same of a port that names its component itself, or none.
std::string
barePorts( const std::string& members ) {
   return portsOf( read( ieeeBarePort( members ) ) );
}

// An IEEE configuration with these bridges and interfaces, which start on lines 2 and 4.
std::string
ieee( const std::string& bridges, const std::string& interfaces ) {
   return "{\"ieee802-dot1q-bridge:bridges\":{\"bridge\":[\n" + bridges +
          "\n]},\"ietf-interfaces:interfaces\":{\"interface\":[\n" + interfaces + "\n]}}";
}

const std::string kBridge =
   R"({"name":"b","address":"00-00-5E-00-53-01","bridge-type":"provider-bridge"})";

// --- which table acts

TEST( Ieee8021qTables, WithBothOnEachDirectionHasItsOwnEntries ) {
   EXPECT_EQ( ports( kBothOn + R"("vid-translations":[{"local-vid":100,"relay-vid":3001},)"
                               R"({"local-vid":101,"relay-vid":3001}],)"
                               R"("egress-vid-translations":[{"relay-vid":3001,"local-vid":101},)"
                               R"({"relay-vid":7,"local-vid":8}])" ),
              "eth1: 100>3001 101>3001; 7>8 3001>101\n" );
}

TEST( Ieee8021qTables, TheIngressTableAloneActsBothWays ) {
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"local-vid":1,"relay-vid":4094},)"
                                  R"({"local-vid":4094,"relay-vid":1}])" ),
              "eth1: 1>4094 4094>1; 1>4094 4094>1\n" );
}

TEST( Ieee8021qTables, TheEgressTableAloneActsOnEgress ) {
   EXPECT_EQ( ports( R"("enable-egress-vid-translation-table":true,)"
                     R"("vid-translations":[{"local-vid":5,"relay-vid":6}],)"
                     R"("egress-vid-translations":[{"relay-vid":7,"local-vid":8}])" ),
              "eth1:; 7>8\n" );
}

TEST( Ieee8021qTables, BothFlagsDefaultToFalse ) {
   EXPECT_EQ( ports( R"("vid-translations":[{"local-vid":5,"relay-vid":6}],)"
                     R"("egress-vid-translations":[{"relay-vid":7,"local-vid":8}])" ),
              "eth1:;\n" );
}

TEST( Ieee8021qTables, EntriesOfATableThatIsOffAreReportedWithTheReason ) {
   EXPECT_EQ( unusedOf( read(
                 ieeePort( R"("enable-vid-translation-table":false,)"
                           R"("vid-translations":[{"local-vid":5,"relay-vid":6},)"
                           R"({"local-vid":6,"relay-vid":6}],)"
                           R"("egress-vid-translations":[{"relay-vid":7,"local-vid":8}])" ) ) ),
              "/ieee802-dot1q-bridge:bridges/bridge/address 1 checked, has no effect\n"
              "/ieee802-dot1q-bridge:bridges/bridge/bridge-type 1 checked, has no effect\n"
              "/ieee802-dot1q-bridge:bridges/bridge/component/type 1 checked, has no effect\n"
              "/ietf-interfaces:interfaces/interface/type 1 checked, has no effect\n"
              "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/"
              "bridge-name 1 checked, has no effect\n"
              "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/"
              "component-name 1 checked, has no effect\n"
              "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/"
              "vid-translations 2 enable-vid-translation-table is false\n"
              "/ietf-interfaces:interfaces/interface/ieee802-dot1q-bridge:bridge-port/"
              "egress-vid-translations 1 enable-egress-vid-translation-table is false\n" );
}

TEST( Ieee8021qTables, EntriesOfATableThatIsOffAreCheckedAllTheSame ) {
   EXPECT_EQ( ports( "\"vid-translations\":[{\"local-vid\":5,\"relay-vid\":4095}],\n"
                     "\"egress-vid-translations\":[{\"relay-vid\":7}]" ),
              "f.json:3: " + kPort +
                 "/vid-translations[local-vid='5']/relay-vid: value 4095 is not allowed; "
                 "allowed: 1..4094\n"
                 "f.json:4: " +
                 kPort +
                 "/egress-vid-translations[relay-vid='7']/local-vid: is missing; allowed: "
                 "1..4094\n" );
}

TEST( Ieee8021qTables, MappingsAscendWhateverTheirOrderInTheFile ) {
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"relay-vid":1,"local-vid":30},)"
                                  R"({"local-vid":10,"relay-vid":3},)"
                                  R"({"local-vid":20,"relay-vid":2}])" ),
              "eth1: 10>3 20>2 30>1; 1>30 2>20 3>10\n" );
}

TEST( Ieee8021qTables, EmptyTablesAreFine ) {
   EXPECT_EQ( ports( kBothOn + R"("vid-translations":[],"egress-vid-translations":[])" ),
              "eth1:;\n" );
}

// --- what is refused

TEST( Ieee8021qFindings, TwoLocalVidsForOneRelayVidNeedAnEgressTable ) {
   const std::string table = "\"vid-translations\":[{\"local-vid\":100,\"relay-vid\":3001},\n"
                             "{\"local-vid\":200,\"relay-vid\":3001}]";
   EXPECT_EQ( ports( kIngressOn + table ),
              "f.json:4: " + kPort +
                 "/vid-translations[local-vid='200']/relay-vid: value 3001 is already the "
                 "relay-vid of local-vid 100 on line 3; allowed: one local-vid for each "
                 "relay-vid while enable-egress-vid-translation-table is false\n" );
   EXPECT_EQ( ports( kBothOn + table ), "eth1: 100>3001 200>3001;\n" );
   EXPECT_EQ( ports( table ), "eth1:;\n" );
}

TEST( Ieee8021qFindings, AnEgressTableThatIsOffDoesNotLiftTheRule ) {
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"local-vid":1,"relay-vid":9},)"
                                  R"({"local-vid":2,"relay-vid":9}],)"
                                  R"("egress-vid-translations":[{"relay-vid":9,"local-vid":1}])" ),
              "f.json:3: " + kPort +
                 "/vid-translations[local-vid='2']/relay-vid: value 9 is already the relay-vid "
                 "of local-vid 1 on line 3; allowed: one local-vid for each relay-vid while "
                 "enable-egress-vid-translation-table is false\n" );
}

TEST( Ieee8021qFindings, ALocalVidStandsOnce ) {
   EXPECT_EQ( ports( kBothOn + "\"vid-translations\":[{\"local-vid\":100,\"relay-vid\":1},\n"
                               "{\"local-vid\":100,\"relay-vid\":2}]" ),
              "f.json:4: " + kPort +
                 "/vid-translations[local-vid='100']/local-vid: value 100 is already used on "
                 "line 3; allowed: each key once\n" );
}

TEST( Ieee8021qFindings, ARelayVidStandsOnceInTheEgressTable ) {
   EXPECT_EQ( ports( "\"egress-vid-translations\":[{\"relay-vid\":100,\"local-vid\":1},\n\n"
                     "{\"relay-vid\":100,\"local-vid\":1}]" ),
              "f.json:5: " + kPort +
                 "/egress-vid-translations[relay-vid='100']/relay-vid: value 100 is already used "
                 "on line 3; allowed: each key once\n" );
}

TEST( Ieee8021qFindings, AMappingWithoutTranslatedVlanIsRefused ) {
   EXPECT_EQ( ports( kIngressOn + "\"vid-translations\":[\n{\"local-vid\":1}]" ),
              "f.json:4: " + kPort +
                 "/vid-translations[local-vid='1']/relay-vid: is missing; allowed: 1..4094\n" );
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"local-vid":1,"relay-vid":null}])" ),
              "f.json:3: " + kPort +
                 "/vid-translations[local-vid='1']/relay-vid: value null has the wrong type, "
                 "null; allowed: 1..4094, a JSON number without fraction and exponent\n" );
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"local-vid":1,"relay-vid":0}])" ),
              "f.json:3: " + kPort +
                 "/vid-translations[local-vid='1']/relay-vid: value 0 is not allowed; allowed: "
                 "1..4094\n" );
}

TEST( Ieee8021qFindings, AnEntryWithoutKeyIsNamedByItsPosition ) {
   EXPECT_EQ( ports( kIngressOn + R"("vid-translations":[{"local-vid":1,"relay-vid":1},)"
                                  "\n{\"relay-vid\":5000}]" ),
              "f.json:4: " + kPort +
                 "/vid-translations[2]/relay-vid: value 5000 is not allowed; allowed: 1..4094\n"
                 "f.json:4: " +
                 kPort + "/vid-translations[2]/local-vid: is missing; allowed: 1..4094\n" );
}

TEST( Ieee8021qFindings, AllAreReportedNotJustTheFirst ) {
   EXPECT_EQ( barePorts( "\"enable-vid-translation-table\":\"yes\",\n"
                         "\"port-type\":\"toaster\",\n"
                         "\"vid-translations\":[{\"local-vid\":0,\"relay-vid\":1},\n"
                         "{\"local-vid\":2,\"relay-vid\":1.0}],\n"
                         "\"bridge-name\":\"x\",\"component-name\":\"c\"" ),
              "f.json:3: " + kPort +
                 "/enable-vid-translation-table: value \"yes\" has the wrong type, a string; "
                 "allowed: true or false\n"
                 "f.json:4: " +
                 kPort +
                 "/port-type: value \"toaster\" is unknown; allowed: c-vlan-bridge-port, "
                 "provider-network-port, customer-network-port, customer-edge-port, "
                 "d-bridge-port, remote-customer-access-port\n"
                 "f.json:5: " +
                 kPort +
                 "/vid-translations[local-vid='0']/local-vid: value 0 is not allowed; allowed: "
                 "1..4094\n"
                 "f.json:6: " +
                 kPort +
                 "/vid-translations[local-vid='2']/relay-vid: value 1.0 has the wrong type, a "
                 "number with fraction or exponent; allowed: 1..4094, a JSON number without "
                 "fraction and exponent\n"
                 "f.json:7: " +
                 kPort +
                 "/bridge-name: value \"x\" names no bridge of this file; allowed: \"b\"\n" );
}

TEST( Ieee8021qFindings, AMemberGivenTwiceNamesBothLines ) {
   EXPECT_EQ( ports( kIngressOn + "\"vid-translations\":[{\"local-vid\":1,\"relay-vid\":2,\n"
                                  "\"relay-vid\":3}]" ),
              "f.json:4: " + kPort +
                 "/vid-translations[local-vid='1']/relay-vid: value 3 is given twice, on lines 3 "
                 "and 4; allowed: each member once\n" );
   EXPECT_EQ( ports( "\"vid-translations\":[],\n"
                     "\"ieee802-dot1q-bridge:vid-translations\":[{}]" ),
              "f.json:4: " + kPort +
                 "/vid-translations: value [...] is given twice, on lines 3 and 4; allowed: each "
                 "member once\n" );
}

TEST( Ieee8021qFindings, ContainersAndListsHaveTheirJsonTypes ) {
   EXPECT_EQ( ports( R"("vid-translations":{"local-vid":1,"relay-vid":2})" ),
              "f.json:3: " + kPort +
                 "/vid-translations: value {...} has the wrong type, an object; allowed: an "
                 "array, one object for each entry\n" );
   EXPECT_EQ( ports( R"("egress-vid-translations":[100])" ),
              "f.json:3: " + kPort +
                 "/egress-vid-translations[1]: value 100 has the wrong type, an integer number; "
                 "allowed: an object\n" );
   EXPECT_EQ( portsOf( read( R"({"ietf-interfaces:interfaces":[]})" ) ),
              "f.json:1: /ietf-interfaces:interfaces: value [] has the wrong type, an array; "
              "allowed: an object\n" );
}

// --- names, prefixes

TEST( Ieee8021qNames, ThePrefixOfTheOwnModuleIsOptional ) {
   EXPECT_EQ(
      ports( R"("ieee802-dot1q-bridge:enable-vid-translation-table":true,)"
             R"("ieee802-dot1q-bridge:vid-translations":)"
             R"([{"ieee802-dot1q-bridge:local-vid":1,"ieee802-dot1q-bridge:relay-vid":2}])" ),
      "eth1: 1>2; 2>1\n" );
   EXPECT_EQ( ports( R"("port-type":"ieee802-dot1q-bridge:customer-network-port")" ), "eth1:;\n" );
   EXPECT_EQ( ports( R"("port-type":"customer-network-port")" ), "eth1:;\n" );
}

TEST( Ieee8021qNames, KeysWithPrefixShowInPathsWithout ) {
   EXPECT_EQ( ports( R"("vid-translations":[{"ieee802-dot1q-bridge:local-vid":1}])" ),
              "f.json:3: " + kPort +
                 "/vid-translations[local-vid='1']/relay-vid: is missing; allowed: 1..4094\n" );
}

TEST( Ieee8021qNames, ABridgePortWithoutItsModuleNameIsNotPassedOver ) {
   EXPECT_EQ( portsOf( read( ieee( "", R"({"name":"e","type":"iana-if-type:bridge",)"
                                       R"("bridge-port":{"pvid":1}})" ) ) ),
              "f.json:4: /ietf-interfaces:interfaces/interface[name='e']/bridge-port: value "
              "{...} lacks its module name; allowed: \"ieee802-dot1q-bridge:bridge-port\"\n" );
}

TEST( Ieee8021qNames, MembersOfOtherModulesAreUnused ) {
   EXPECT_EQ( unusedOf( read(
                 ieee( "", R"({"name":"e","type":"iana-if-type:bridge","description":"x",)"
                           R"("enabled":true,"acme:vid-translations":[{"relay-vid":9999}]})" ) ) ),
              "/ietf-interfaces:interfaces/interface/type 1 checked, has no effect\n"
              "/ietf-interfaces:interfaces/interface/description 1 not used by this agent\n"
              "/ietf-interfaces:interfaces/interface/enabled 1 not used by this agent\n"
              "/ietf-interfaces:interfaces/interface/acme:vid-translations/relay-vid 1 of "
              "another module\n" );
}

// --- interfaces

TEST( Ieee8021qInterfaces, KeepTheOrderOfTheFile ) {
   EXPECT_EQ( portsOf( read( ieee( kBridge, R"({"name":"z","type":"iana-if-type:bridge"},)"
                                            R"({"name":"a","type":"iana-if-type:other"})" ) ) ),
              "z:;\na:;\n" );
}

TEST( Ieee8021qInterfaces, NeedNameAndType ) {
   EXPECT_EQ( portsOf( read( ieee( kBridge, "{},\n{\"name\":\"\"}" ) ) ),
              "f.json:4: /ietf-interfaces:interfaces/interface[1]/name: is missing; allowed: a "
              "name of one or more characters without control characters\n"
              "f.json:4: /ietf-interfaces:interfaces/interface[1]/type: is missing; allowed: an "
              "identity of iana-if-type, such as \"iana-if-type:ethernetCsmacd\"\n"
              "f.json:5: /ietf-interfaces:interfaces/interface[name='']/name: value \"\" is not "
              "allowed; allowed: a name of one or more characters without control characters\n"
              "f.json:5: /ietf-interfaces:interfaces/interface[name='']/type: is missing; "
              "allowed: an identity of iana-if-type, such as \"iana-if-type:ethernetCsmacd\"\n" );
}

TEST( Ieee8021qInterfaces, HaveUniqueNames ) {
   EXPECT_EQ(
      portsOf( read( ieee( kBridge, "{\"name\":\"e\",\"type\":\"iana-if-type:other\"},\n"
                                    "{\"name\":\"e\",\"type\":\"iana-if-type:other\"}" ) ) ),
      "f.json:5: /ietf-interfaces:interfaces/interface[name='e']/name: value \"e\" is "
      "already used on line 4; allowed: each key once\n" );
}

TEST( Ieee8021qInterfaces, HaveATypeOfTheRegistryWithItsModuleName ) {
   EXPECT_EQ( portsOf( read( ieee( kBridge, "{\"name\":\"e\",\"type\":\"iana-if-type:warp\"},\n"
                                            "{\"name\":\"f\",\"type\":\"bridge\"}" ) ) ),
              "f.json:4: /ietf-interfaces:interfaces/interface[name='e']/type: value "
              "\"iana-if-type:warp\" is unknown; allowed: an identity of iana-if-type, such as "
              "\"iana-if-type:ethernetCsmacd\"\n"
              "f.json:5: /ietf-interfaces:interfaces/interface[name='f']/type: value \"bridge\" "
              "lacks its module name; allowed: \"iana-if-type:bridge\"\n" );
}

TEST( Ieee8021qInterfaces, OnlySomeTypesCanBeABridgePort ) {
   EXPECT_EQ( portsOf( read( ieee( kBridge, R"({"name":"e","type":"iana-if-type:l2vlan",)"
                                            R"("ieee802-dot1q-bridge:bridge-port":{}})" ) ) ),
              "f.json:4: /ietf-interfaces:interfaces/interface[name='e']/"
              "ieee802-dot1q-bridge:bridge-port: does not go with type l2vlan; allowed: type "
              "bridge, ethernetCsmacd, ieee8023adLag, ilan\n" );
}

// --- bridges

TEST( Ieee8021qBridges, MayStandBehindTheInterfaces ) {
   EXPECT_EQ(
      portsOf( read( R"({"ietf-interfaces:interfaces":{"interface":[{"name":"e",)"
                     R"("type":"iana-if-type:bridge","ieee802-dot1q-bridge:bridge-port":)"
                     R"({"bridge-name":"b"}}]},"ieee802-dot1q-bridge:bridges":{"bridge":[)" +
                     kBridge + "]}}" ) ),
      "e:;\n" );
}

TEST( Ieee8021qBridges, NeedTheirMandatoryLeaves ) {
   EXPECT_EQ( portsOf( read( ieee( "{\"component\":[{}]}", "" ) ) ),
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[1]/component[1]/name: is missing; "
              "allowed: a name of one or more characters without control characters\n"
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[1]/component[1]/type: is missing; "
              "allowed: c-vlan-component, s-vlan-component, d-bridge-component, "
              "edge-relay-component\n"
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[1]/name: is missing; allowed: a "
              "name of 1..32 characters without control characters\n"
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[1]/address: is missing; allowed: "
              "six octets such as \"02-00-5E-00-53-01\"\n"
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[1]/bridge-type: is missing; "
              "allowed: customer-vlan-bridge, provider-bridge, provider-edge-bridge, "
              "two-port-mac-relay-bridge\n" );
}

TEST( Ieee8021qBridges, HaveUniqueNamesAndAddresses ) {
   EXPECT_EQ(
      portsOf( read( ieee( kBridge + ",\n" + kBridge + ",\n" +
                              R"({"name":"c","address":"00-00-5e-00-53-01",)"
                              R"("bridge-type":"provider-bridge"})",
                           "" ) ) ),
      "f.json:3: /ieee802-dot1q-bridge:bridges/bridge[name='b']/name: value \"b\" is already "
      "used on line 2; allowed: each key once\n"
      "f.json:3: /ieee802-dot1q-bridge:bridges/bridge[name='b']/address: value "
      "\"00-00-5E-00-53-01\" is already used on line 2; allowed: each value once\n" );
}

TEST( Ieee8021qBridges, CheckTheFormOfAddressesAndNames ) {
   const std::string longName( 33, 'n' );
   EXPECT_EQ( portsOf( read( ieee( R"({"name":")" + longName +
                                      R"(","address":"00:00:5E:00:53:01",)"
                                      R"("bridge-type":"acme:provider-bridge"})",
                                   "" ) ) ),
              "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[name='" + longName +
                 "']/name: value \"" + longName +
                 "\" is not allowed; allowed: a name of 1..32 characters without control "
                 "characters\n"
                 "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[name='" +
                 longName +
                 "']/address: value \"00:00:5E:00:53:01\" is not allowed; allowed: six "
                 "octets such as \"02-00-5E-00-53-01\"\n"
                 "f.json:2: /ieee802-dot1q-bridge:bridges/bridge[name='" +
                 longName +
                 "']/bridge-type: value \"acme:provider-bridge\" is unknown; allowed: "
                 "customer-vlan-bridge, provider-bridge, provider-edge-bridge, "
                 "two-port-mac-relay-bridge\n" );
}

TEST( Ieee8021qBridges, ComponentsHaveUniqueNames ) {
   EXPECT_EQ( portsOf( read( ieee( R"({"name":"b","address":"00-00-5E-00-53-01",)"
                                   R"("bridge-type":"provider-bridge","component":[)"
                                   "\n"
                                   R"({"name":"c","type":"c-vlan-component"},)"
                                   "\n"
                                   R"({"name":"c","type":"c-vlan-component"}]})",
                                   "" ) ) ),
              "f.json:4: /ieee802-dot1q-bridge:bridges/bridge[name='b']/component[name='c']/name: "
              "value \"c\" is already used on line 3; allowed: each key once\n" );
}

TEST( Ieee8021qBridges, APortNamesAComponentOfItsBridge ) {
   EXPECT_EQ( barePorts( R"("bridge-name":"b","component-name":"c")" ), "eth1:;\n" );
   EXPECT_EQ( barePorts( R"("bridge-name":"b","component-name":"d")" ),
              "f.json:3: " + kPort +
                 "/component-name: value \"d\" names no component of the bridge; allowed: "
                 "\"c\"\n" );
   EXPECT_EQ( barePorts( R"("component-name":"c")" ),
              "f.json:2: " + kPort +
                 "/bridge-name: is missing; allowed: the bridge of component-name\n" );
}

TEST( Ieee8021qBridges, OnlyAPortOfAComponentHasTables ) {
   EXPECT_EQ( barePorts( R"("bridge-name":"b","use-dei":true)" ), "eth1:;\n" );
   EXPECT_EQ( barePorts( R"("bridge-name":"b","vid-translations":[])" ), "eth1:;\n" );
   for ( const std::string component : { "", R"(,"bridge-name":"b")" } ) {
      EXPECT_EQ( barePorts( R"("vid-translations":[{"local-vid":1,"relay-vid":2}])" + component ),
                 "f.json:3: " + kPort +
                    "/vid-translations: needs a component that knows VLANs; allowed: a port with "
                    "bridge-name and component-name\n" );
   }
   EXPECT_EQ( barePorts( R"("enable-vid-translation-table":true)" ),
              "f.json:3: " + kPort +
                 "/enable-vid-translation-table: needs a component that knows VLANs; allowed: a "
                 "port with bridge-name and component-name\n" );
}

TEST( Ieee8021qBridges, AFileWithoutBridgesHasNoneToName ) {
   EXPECT_EQ( portsOf( read( R"({"ietf-interfaces:interfaces":{"interface":[{"name":"e",)"
                             R"("type":"iana-if-type:bridge","ieee802-dot1q-bridge:bridge-port":)"
                             R"({"bridge-name":"b"}}]}})" ) ),
              "f.json:1: /ietf-interfaces:interfaces/interface[name='e']/"
              "ieee802-dot1q-bridge:bridge-port/bridge-name: value \"b\" names no bridge of this "
              "file; allowed: none, as there is none\n" );
}

TEST( Ieee8021qBridges, APortOfADBridgeComponentHasNoTables ) {
   EXPECT_EQ(
      portsOf( read( ieee( R"({"name":"b","address":"00-00-5E-00-53-01",)"
                           R"("bridge-type":"provider-bridge",)"
                           R"("component":[{"name":"d","type":"d-bridge-component"}]})",
                           R"({"name":"e","type":"iana-if-type:bridge",)"
                           R"("ieee802-dot1q-bridge:bridge-port":{"bridge-name":"b",)"
                           R"("component-name":"d",)"
                           "\n"
                           R"("egress-vid-translations":[{"relay-vid":1,"local-vid":1}]}})" ) ) ),
      "f.json:5: /ietf-interfaces:interfaces/interface[name='e']/"
      "ieee802-dot1q-bridge:bridge-port/egress-vid-translations: does not go with a "
      "d-bridge-component; allowed: components of another type\n" );
}

TEST( Ieee8021qBridges, ALongListOfNamesIsCutShort ) {
   std::string bridges;
   for ( char i = 'a'; i <= 'j'; ++i ) {
      bridges += std::string( bridges.empty() ? "" : "," ) + R"({"name":")" + i +
                 R"(","address":"00-00-5E-00-53-0)" + i + R"(","bridge-type":"provider-bridge"})";
   }
   // The last octet of g to j is no hexadecimal number: those are findings of their own.
   const std::string text = portsOf(
      read( ieee( bridges, R"({"name":"e","type":"iana-if-type:bridge",)"
                           R"("ieee802-dot1q-bridge:bridge-port":{"bridge-name":"zz"}})" ) ) );
   EXPECT_NE( text.find( "value \"zz\" names no bridge of this file; allowed: \"a\", \"b\", "
                         "\"c\", \"d\", \"e\", \"f\", \"g\", \"h\", ...\n" ),
              std::string::npos )
      << text;
}

}   // namespace
}   // namespace Agent
