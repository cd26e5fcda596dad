// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// `show`: lines and documents of the small samples.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

std::string
ieee() {
   return sample( "small-ieee.json" );
}

std::string
openConfig() {
   return sample( "small-openconfig.json" );
}

// Lines of `text` that start with `begin`.
std::string
linesWith( const std::string& text, const std::string& begin ) {
   std::string found;
   for ( const std::string& line : linesOf( text ) ) {
      if ( line.starts_with( begin ) ) {
         found += line + "\n";
      }
   }
   return found;
}

TEST( AgentShowRanges, aRangeIsALine ) {
   const Outcome outcome = runAgent( { "show", "ranges", sample( "switch-52port.json" ) } );
   EXPECT_EQ( outcome.exitCode, 0 );
   EXPECT_EQ( linesOf( outcome.out ).size(), 4092u );
   EXPECT_EQ( linesWith( outcome.out, "eth1  1010-1137 " ),
              "eth1  1010-1137  -> 3001  128 ids  range entry 2\n" );
}

TEST( AgentShowRanges, linesStandBySizeAndThenByVid ) {
   EXPECT_EQ( linesWith( runAgent( { "show", "ranges", ieee() } ).out, "uplink1" ),
              "uplink1  20-29  -> 2100  10 ids  range entry 1\n"
              "uplink1  31-39  -> 2100  9 ids  range entry 2\n"
              "uplink1  30  -> 2101  1 id  range entry 3\n" );
}

TEST( AgentShowRanges, rangesWithoutRangeEntryNameTheirExactEntries ) {
   EXPECT_EQ(
      linesWith( runAgent( { "show", "ranges", "--range-entries", "1", ieee() } ).out, "uplink1" ),
      "uplink1  20-29  -> 2100  10 ids  range entry 1\n"
      "uplink1  31-39  -> 2100  9 ids  9 exact entries\n"
      "uplink1  30  -> 2101  1 id  1 exact entry\n" );
}

TEST( AgentShowRanges, sortedByVidTheyKeepTheirEntries ) {
   EXPECT_EQ( linesWith( runAgent( { "show", "ranges", "--sort", "vid", ieee() } ).out, "uplink1" ),
              "uplink1  20-29  -> 2100  10 ids  range entry 1\n"
              "uplink1  30  -> 2101  1 id  range entry 3\n"
              "uplink1  31-39  -> 2100  9 ids  range entry 2\n" );
}

TEST( AgentShowRanges, sortedBySizeIsTheDefault ) {
   EXPECT_EQ( runAgent( { "show", "ranges", "--sort", "size", ieee() } ).text(),
              runAgent( { "show", "ranges", ieee() } ).text() );
}

TEST( AgentShowRanges, vlansLeavesTheRangesThatHoldOneOfThem ) {
   EXPECT_EQ( runAgent( { "show", "ranges", "--vlans", "1,30-31,60,725-740,4094", ieee() } ).text(),
              exited( 0,
                      "uplink1  31-39  -> 2100  9 ids  range entry 2\n"
                      "uplink1  30  -> 2101  1 id  range entry 3\n"
                      "access1  700-731  -> 2200  32 ids  range entry 1\n"
                      "access1  740  -> 2200  1 id  range entry 2\n"
                      "access2  60  -> 1560  1 id  range entry 1\n"
                      "edge1  1  -> 2300  1 id  range entry 1\n"
                      "edge1  4094  -> 2300  1 id  range entry 4\n",
                      tableOffNote() ) );
}

TEST( AgentShowRanges, vlansThatNoPortTranslatesLeaveNothing ) {
   EXPECT_EQ( runAgent( { "show", "ranges", "--vlans", "741,4000", ieee() } ).text(),
              exited( 0, "", tableOffNote() ) );
}

TEST( AgentShowRanges, aBadListOfVlansNamesThePlace ) {
   const std::vector< std::vector< std::string > > lists{
      { "", "offset 0: expected a VLAN id 1..4094, found the end" },
      { "0", "offset 0: expected a VLAN id 1..4094, found \"0\"" },
      { "4095", "offset 0: expected a VLAN id 1..4094, found \"4095\"" },
      { "a", "offset 0: expected a VLAN id 1..4094, found \"a\"" },
      { "5-1", "offset 2: expected a VLAN id of at least 5, found \"1\"" },
      { "1,1", "offset 2: expected a VLAN id above 1, found \"1\"" } };
   for ( const auto& list : lists ) {
      EXPECT_EQ(
         runAgent( { "show", "ranges", "--vlans", list[ 0 ], ieee() } ).text(),
         exited( 2, "", tableOffNote() + "--vlans " + list[ 0 ] + ": " + list[ 1 ] + "\n" ) );
   }
}

TEST( AgentShowRanges, theDocumentIsStable ) {
   EXPECT_EQ( runAgent( { "show", "ranges", "--json", "--range-entries", "1", "--vlans",
                          "331-332,900", openConfig() } )
                 .text(),
              exited( 0, R"({
  "bundle1": [
    {
      "high": 939,
      "ids": 40,
      "low": 900,
      "rangeEntry": null,
      "rank": 3,
      "relay": 2801
    }
  ],
  "leaf1": [
    {
      "high": 331,
      "ids": 32,
      "low": 300,
      "rangeEntry": 1,
      "rank": 1,
      "relay": 2600
    },
    {
      "high": 332,
      "ids": 1,
      "low": 332,
      "rangeEntry": null,
      "rank": 2,
      "relay": 2601
    }
  ],
  "leaf2": [],
  "leaf3": [],
  "leaf4": [],
  "member1": [],
  "member2": []
}
)",
                      "" ) );
}

TEST( AgentShowSummary, isWhatRunShows ) {
   EXPECT_EQ( runAgent( { "show", "summary", ieee() } ).text(),
              runAgent( { "run", ieee() } ).text() );
   EXPECT_EQ( runAgent( { "show", "summary", "--json", ieee() } ).text(),
              runAgent( { "run", "--json", ieee() } ).text() );
}

TEST( AgentShowSummary, theDocumentIsStable ) {
   const std::string text = R"({"ieee802-dot1q-bridge:bridges":{"bridge":[
      {"name":"x","address":"00-00-5E-00-53-01","bridge-type":"provider-bridge",
       "component":[{"name":"y","type":"s-vlan-component"}]}]},
    "ietf-interfaces:interfaces":{"interface":[
      {"name":"b","type":"iana-if-type:ethernetCsmacd","ieee802-dot1q-bridge:bridge-port":
        {"bridge-name":"x","component-name":"y",
         "enable-vid-translation-table":true,"enable-egress-vid-translation-table":true,
         "vid-translations":[{"local-vid":5,"relay-vid":9},{"local-vid":6,"relay-vid":9},
                             {"local-vid":9,"relay-vid":9},{"local-vid":11,"relay-vid":9}]}},
      {"name":"a","type":"iana-if-type:ethernetCsmacd"}]}})";
   EXPECT_EQ( runAgent( { "show", "summary", "--json", "--range-entries", "1", "-" }, text ).text(),
              exited( 0, R"({
  "ports": {
    "a": {
      "exactEntries": 0,
      "lag": null,
      "mappings": 0,
      "rangeEntries": 0,
      "ranges": 0
    },
    "b": {
      "exactEntries": 2,
      "lag": null,
      "mappings": 4,
      "rangeEntries": 1,
      "ranges": 3
    }
  },
  "rangeEntriesPerPort": 1,
  "total": {
    "exactEntries": 2,
    "mappings": 4,
    "rangeEntries": 1,
    "ranges": 3
  }
}
)",
                      "" ) );
}

TEST( AgentShowPort, showsNumbersVlansAndRanges ) {
   EXPECT_EQ( runAgent( { "show", "port", "bundle1", openConfig() } ).text(),
              exited( 0,
                      "bundle1: 200 mappings -> 3 ranges -> 3 range entries + 0 exact entries\n"
                      "to 2800: 800-899,940-999\n"
                      "to 2801: 900-939\n"
                      "bundle1  800-899  -> 2800  100 ids  range entry 1\n"
                      "bundle1  940-999  -> 2800  60 ids  range entry 2\n"
                      "bundle1  900-939  -> 2801  40 ids  range entry 3\n",
                      "" ) );
}

TEST( AgentShowPort, sortsByVid ) {
   EXPECT_EQ(
      linesWith( runAgent( { "show", "port", "bundle1", "--sort", "vid", openConfig() } ).out,
                 "bundle1  " ),
      "bundle1  800-899  -> 2800  100 ids  range entry 1\n"
      "bundle1  900-939  -> 2801  40 ids  range entry 3\n"
      "bundle1  940-999  -> 2800  60 ids  range entry 2\n" );
}

TEST( AgentShowPort, namesTheAggregateOfAMember ) {
   EXPECT_EQ( runAgent( { "show", "port", "member1", openConfig() } ).text(),
              exited( 0,
                      "member1: 0 mappings -> 0 ranges -> 0 range entries + 0 exact entries\n"
                      "member of bundle1\n",
                      "" ) );
}

TEST( AgentShowPort, theDocumentIsStable ) {
   EXPECT_EQ(
      runAgent( { "show", "port", "leaf3", "--json", "--range-entries", "1", openConfig() } )
         .text(),
      exited( 0, R"({
  "exactEntries": 2,
  "lag": null,
  "mappings": 4,
  "name": "leaf3",
  "rangeEntries": 1,
  "ranges": [
    {
      "high": 2,
      "ids": 2,
      "low": 1,
      "rangeEntry": 1,
      "rank": 1,
      "relay": 2700
    },
    {
      "high": 4093,
      "ids": 1,
      "low": 4093,
      "rangeEntry": null,
      "rank": 2,
      "relay": 2701
    },
    {
      "high": 4094,
      "ids": 1,
      "low": 4094,
      "rangeEntry": null,
      "rank": 3,
      "relay": 2700
    }
  ],
  "vlans": {
    "2700": "1-2,4094",
    "2701": "4093"
  }
}
)",
              "" ) );
}

TEST( AgentShowPort, anUnknownPortIsRefused ) {
   EXPECT_EQ( runAgent( { "show", "port", "nope", ieee() } ).text(),
              exited( 2, "", tableOffNote() + ieee() + ": there is no port \"nope\"\n" ) );
}

// A port and its aggregate whose names look like others: "eth2" from right to left, "lag" with a
// character that is not seen.
constexpr const char* kTricky = R"({"openconfig-interfaces:interfaces": {"interface": [
{"name": "\u202e2hte", "config": {"name": "\u202e2hte", "type": "iana-if-type:ethernetCsmacd"},
 "openconfig-if-ethernet:ethernet": {
  "config": {"openconfig-if-aggregate:aggregate-id": "la\u200bg"}}},
{"name": "la\u200bg", "config": {"name": "la\u200bg", "type": "iana-if-type:ieee8023adLag"},
 "openconfig-if-aggregate:aggregation": {"openconfig-vlan:switched-vlan": {}},
 "subinterfaces": {"subinterface": [
  {"index": 1, "config": {"index": 1}, "openconfig-vlan:vlan": {
   "match": {"single-tagged": {"config": {"vlan-id": 7}}},
   "ingress-mapping": {"config": {"vlan-stack-action": "SWAP", "vlan-id": 9}},
   "egress-mapping": {"config": {"vlan-stack-action": "SWAP", "vlan-id": 7}}}}]}}]}})";

TEST( AgentNames, thatLookLikeOthersAreShownEscaped ) {
   using Words = std::vector< std::string >;
   for ( const Words& command :
         { Words{ "run" }, Words{ "run", "--json" }, Words{ "show", "ranges" },
           Words{ "show", "ranges", "--json" }, Words{ "show", "port", "la\u200bg" },
           Words{ "show", "port", "\u202e2hte", "--json" }, Words{ "check", "-v" } } ) {
      Words words = command;
      words.push_back( "-" );
      const Outcome outcome = runAgent( words, kTricky );
      EXPECT_EQ( outcome.exitCode, 0 ) << outcome.text();
      const std::string all = outcome.out + outcome.err;
      EXPECT_EQ( all.find( "\u202e" ), std::string::npos ) << all;
      EXPECT_EQ( all.find( "\u200b" ), std::string::npos ) << all;
   }
   EXPECT_EQ( runAgent( { "show", "ranges", "-" }, kTricky ).out,
              "la\\u200bg  7  -> 9  1 id  range entry 1\n" );
   EXPECT_EQ( linesWith( runAgent( { "show", "port", "\u202e2hte", "-" }, kTricky ).out, "member" ),
              "member of la\\u200bg\n" );
   EXPECT_EQ( runAgent( { "show", "port", "\u202eno", "-" }, kTricky ).text(),
              exited( 2, "", "<stdin>: there is no port \"\\u202eno\"\n" ) );
   // The summary's columns stay below each other.
   for ( const std::string& line : linesOf( runAgent( { "run", "-" }, kTricky ).out ) ) {
      EXPECT_TRUE( line.empty() || line.find( "->" ) != std::string::npos || line.size() == 58 )
         << line;
   }
}

TEST( AgentNames, areTheSameToAReaderOfJson ) {
   const Outcome outcome = runAgent( { "run", "--json", "-" }, kTricky );
   const auto ports = nlohmann::json::parse( outcome.out ).at( "ports" );
   EXPECT_EQ( ports.at( "\u202e2hte" ).at( "lag" ), "la\u200bg" );
   EXPECT_EQ( ports.at( "la\u200bg" ).at( "mappings" ), 1 );
}

TEST( AgentNames, areShownEscapedInFindings ) {
   std::string text = kTricky;
   text.replace( text.find( "\"vlan-id\": 7" ), 12, "\"vlan-id\": 0" );
   const Outcome outcome = runAgent( { "check", "-" }, text );
   EXPECT_EQ( outcome.exitCode, 1 ) << outcome.text();
   EXPECT_NE( outcome.out.find( "interface[name='la\\u200bg']" ), std::string::npos )
      << outcome.out;
}

}   // namespace
}   // namespace FlowTest
