// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Ieee8021qSchema.h"

#include <algorithm>
#include <string>

#include <fmt/format.h>

#include "agent/config/InterfaceTypes.h"

namespace Agent {

namespace {

constexpr std::string_view kModule = "ieee802-dot1q-bridge";
constexpr std::size_t kMaxNameLength = 32;

std::size_t
characters( std::string_view utf8 ) {
   return static_cast< std::size_t >( std::count_if( utf8.begin(), utf8.end(), []( char c ) {
      return ( static_cast< unsigned char >( c ) & 0xc0 ) != 0x80;
   } ) );
}

// Ids and ranges, "1,10-100,250"; the model leaves their order and upper end open.
bool
isVidRanges( std::string_view text ) {
   bool inRange = false;
   for ( ;; ) {
      std::size_t digits = 0;
      while ( digits < text.size() && text[ digits ] >= '0' && text[ digits ] <= '9' ) {
         ++digits;
      }
      if ( digits == 0 || digits > 4 || text[ 0 ] == '0' ) {
         return false;
      }
      text.remove_prefix( digits );
      if ( text.empty() ) {
         return true;
      }
      if ( text[ 0 ] != ',' && ( text[ 0 ] != '-' || inRange ) ) {
         return false;
      }
      inRange = text[ 0 ] == '-';
      text.remove_prefix( 1 );
   }
}

constexpr LeafType
oneOf( std::span< const std::string_view > names, std::string_view allowed,
       std::string_view module = {} ) {
   return { .allowed = allowed, .names = names, .module = module };
}

constexpr std::string_view kBridgeTypeNames[] = {
   "customer-vlan-bridge", "provider-bridge", "provider-edge-bridge", "two-port-mac-relay-bridge" };
constexpr LeafType kBridgeType =
   oneOf( kBridgeTypeNames,
          "customer-vlan-bridge, provider-bridge, provider-edge-bridge, two-port-mac-relay-bridge",
          kModule );

constexpr std::string_view kComponentTypeNames[] = { "c-vlan-component", "s-vlan-component",
                                                     kDBridgeComponent, "edge-relay-component" };
constexpr LeafType kComponentType =
   oneOf( kComponentTypeNames,
          "c-vlan-component, s-vlan-component, d-bridge-component, edge-relay-component", kModule );

constexpr std::string_view kPortTypeNames[] = {
   "c-vlan-bridge-port", "provider-network-port", "customer-network-port",
   "customer-edge-port", "d-bridge-port",         "remote-customer-access-port" };
constexpr LeafType kPortType =
   oneOf( kPortTypeNames,
          "c-vlan-bridge-port, provider-network-port, customer-network-port, customer-edge-port, "
          "d-bridge-port, remote-customer-access-port",
          kModule );

constexpr std::string_view kAlgorithmNames[] = {
   "strict-priority", "credit-based-shaper", "enhanced-transmission-selection",
   "asynchronous-traffic-shaping", "vendor-specific" };
constexpr LeafType kAlgorithm =
   oneOf( kAlgorithmNames, "an identity of ieee802-dot1q-types, such as strict-priority",
          "ieee802-dot1q-types" );

constexpr std::string_view kEntryTypeNames[] = { "static", "dynamic" };
constexpr LeafType kEntryType = oneOf( kEntryTypeNames, "static, dynamic" );
constexpr std::string_view kForwardNames[] = { "forward", "filter", "forward-filter" };
constexpr LeafType kForwardFilterBoth = oneOf( kForwardNames, "forward, filter, forward-filter" );
constexpr LeafType kForwardFilter =
   oneOf( std::span( kForwardNames ).first( 2 ), "forward, filter" );
constexpr LeafType kForward = oneOf( std::span( kForwardNames ).first( 1 ), "forward" );
constexpr std::string_view kRegisteredNames[] = { "registered", "not-registered" };
constexpr LeafType kRegisteredOrNot = oneOf( kRegisteredNames, "registered, not-registered" );
constexpr LeafType kRegistered = oneOf( std::span( kRegisteredNames ).first( 1 ), "registered" );
constexpr std::string_view kRegistrarNames[] = { "fixed-new-ignored", "fixed-new-propagated",
                                                 "forbidden", "normal" };
constexpr LeafType kRegistrar =
   oneOf( kRegistrarNames, "fixed-new-ignored, fixed-new-propagated, forbidden, normal" );
constexpr std::string_view kTaggedNames[] = { "tagged", "untagged" };
constexpr LeafType kTagged = oneOf( kTaggedNames, "tagged, untagged" );
constexpr std::string_view kFrameFormatNames[] = { "Ethernet", "rfc1042", "snap8021H", "snapOther",
                                                   "llcOther" };
constexpr LeafType kFrameFormat =
   oneOf( kFrameFormatNames, "Ethernet, rfc1042, snap8021H, snapOther, llcOther" );
constexpr std::string_view kPcpNames[] = { "8P0D", "7P1D", "6P2D", "5P3D" };
constexpr LeafType kPcp = oneOf( kPcpNames, "8P0D, 7P1D, 6P2D, 5P3D" );
constexpr std::string_view kAcceptableNames[] = {
   "admit-only-VLAN-tagged-frames", "admit-only-untagged-and-priority-tagged", "admit-all-frames" };
constexpr LeafType kAcceptable =
   oneOf( kAcceptableNames, "admit-only-VLAN-tagged-frames, "
                            "admit-only-untagged-and-priority-tagged, admit-all-frames" );
constexpr std::string_view kPointToPointNames[] = { "force-true", "force-false", "auto" };
constexpr LeafType kPointToPoint = oneOf( kPointToPointNames, "force-true, force-false, auto" );
constexpr std::string_view kTrapNames[] = { "enabled", "disabled" };
constexpr LeafType kTrap = oneOf( kTrapNames, "enabled, disabled" );

constexpr NumberRange kPortNumbers[] = { { 1, 4095 } };
constexpr LeafType kPortNumber = { .allowed = "1..4095", .numbers = kPortNumbers };
constexpr NumberRange kVlanIndexes[] = { { 1, 4094 }, { 4096, 4294967295 } };
constexpr LeafType kVlanIndex = { .allowed = "1..4094, 4096..4294967295", .numbers = kVlanIndexes };
constexpr NumberRange kPriorities[] = { { 0, 7 } };
constexpr LeafType kPriority = { .allowed = "0..7", .numbers = kPriorities };
constexpr NumberRange kClassCounts[] = { { 1, 8 } };
constexpr LeafType kClassCount = { .allowed = "1..8", .numbers = kClassCounts };
constexpr NumberRange kAgingTimes[] = { { 10, 1000000 } };
constexpr LeafType kAgingTime = { .allowed = "10..1000000", .numbers = kAgingTimes };

constexpr LeafType kAddress = {
   .allowed = "six octets such as \"02-00-5E-00-53-01\"",
   .text = []( std::string_view text ) { return hasForm( text, "hh-hh-hh-hh-hh-hh" ); } };
constexpr LeafType kFiveOctets = {
   .allowed = "five octets such as \"00-00-0C-20-00\"",
   .text = []( std::string_view text ) { return hasForm( text, "hh-hh-hh-hh-hh" ); } };
constexpr LeafType kTwoOctets = {
   .allowed = "two octets such as \"08-00\"",
   .text = []( std::string_view text ) { return hasForm( text, "hh-hh" ); } };
constexpr LeafType kVids = { .allowed = "VIDs and ranges such as \"1,10-100,250\"",
                             .text = isVidRanges };
constexpr LeafType kShortText = {
   .allowed = "a string of at most 32 characters",
   .text = []( std::string_view text ) { return characters( text ) <= kMaxNameLength; } };
constexpr LeafType kBridgeName = {
   .allowed = "a name of 1..32 characters without control characters",
   .text = []( std::string_view text ) {
      return kName.text( text ) && characters( text ) <= kMaxNameLength;
   } };

// Where a map of ports stands, with the kinds of entry that exclude each other.
SchemaNode
portMap() {
   return list( "port-map", { "port-ref" },
                { leaf( "port-ref", kPortNumber ),
                  choice( container( "static-filtering-entries",
                                     { leaf( "control-element", kForwardFilterBoth ),
                                       leaf( "connection-identifier", kPortNumber ) } ) ),
                  choice( container( "static-vlan-registration-entries",
                                     { leaf( "registrar-admin-control", kRegistrar ),
                                       leaf( "vlan-transmitted", kTagged ) } ) ),
                  choice( container( "mac-address-registration-entries",
                                     { leaf( "control-element", kRegisteredOrNot ) } ) ),
                  choice( container( "dynamic-vlan-registration-entries",
                                     { leaf( "control-element", kRegistered ) } ) ),
                  choice( container( "dynamic-reservation-entries",
                                     { leaf( "control-element", kForwardFilter ) } ) ),
                  choice( container( "dynamic-filtering-entries",
                                     { leaf( "control-element", kForward ) } ) ) } );
}

constexpr std::string_view kPriorityLeaves[] = { "priority0", "priority1", "priority2",
                                                 "priority3", "priority4", "priority5",
                                                 "priority6", "priority7" };

// Eight leaves, one for each priority.
std::vector< SchemaNode >
priorities() {
   std::vector< SchemaNode > leaves;
   for ( const std::string_view name : kPriorityLeaves ) {
      leaves.push_back( leaf( name, kPriority ) );
   }
   return leaves;
}

void
checkTrafficClasses( Document& document, const Place& table ) {
   const auto leaf = table.member( "number-of-traffic-classes" );
   const std::uint64_t* number = leaf ? leaf->value().unsignedInteger() : nullptr;
   for ( const std::string_view name : kPriorityLeaves ) {
      const auto trafficClass = table.member( name );
      const std::uint64_t* value = trafficClass ? trafficClass->value().unsignedInteger() : nullptr;
      if ( value && ( !number || *value >= *number ) ) {
         document.finding( *trafficClass, "is no class of number-of-traffic-classes",
                           "less than number-of-traffic-classes" );
      }
   }
}

SchemaNode
trafficClassTable() {
   std::vector< SchemaNode > leaves = priorities();
   leaves.push_back( leaf( "number-of-traffic-classes", kClassCount ) );
   return withRule( container( "traffic-class-table", std::move( leaves ) ), checkTrafficClasses );
}

// A relay of two ports has neither VLANs nor a database.
void
checkRelay( Document& document, const Place& bridge ) {
   const auto type = bridge.member( "bridge-type" );
   const std::string* name = type ? type->value().string() : nullptr;
   const auto components = bridge.member( "component" );
   if ( !name || !components || withoutModule( *name, kModule ) != "two-port-mac-relay-bridge" ) {
      return;
   }
   forEachEntry( *components, "name", [ & ]( const Place& component ) {
      for ( const std::string_view part : { "filtering-database", "bridge-vlan", "bridge-mst" } ) {
         if ( const auto found = component.member( part ) ) {
            document.finding( *found, "", "does not go with bridge-type two-port-mac-relay-bridge",
                              "bridges of another type" );
         }
      }
   } );
}

SchemaNode
filteringDatabase() {
   return container( "filtering-database",
                     { leaf( "aging-time", kAgingTime ),
                       list( "filtering-entry", { "database-id", "vids", "address" },
                             { leaf( "database-id", kUnsigned32 ), leaf( "vids", kVids ),
                               leaf( "address", kAddress ), leaf( "entry-type", kEntryType ),
                               portMap(), state( "status" ) } ),
                       list( "vlan-registration-entry", { "database-id", "vids" },
                             { leaf( "database-id", kUnsigned32 ), leaf( "vids", kVids ),
                               leaf( "entry-type", kEntryType ), portMap() } ),
                       state( "size" ), state( "static-entries" ), state( "dynamic-entries" ),
                       state( "static-vlan-registration-entries" ),
                       state( "dynamic-vlan-registration-entries" ),
                       state( "mac-address-registration-entries" ) } );
}

SchemaNode
permanentDatabase() {
   return container( "permanent-database",
                     { list( "filtering-entry", { "database-id", "vids", "address" },
                             { leaf( "database-id", kUnsigned32 ), leaf( "vids", kVids ),
                               leaf( "address", kAddress ), portMap(), state( "status" ) } ),
                       state( "size" ), state( "static-entries" ),
                       state( "static-vlan-registration-entries" ) } );
}

SchemaNode
bridgeVlan() {
   const std::string_view format = "frame-format-type";
   return container(
      "bridge-vlan",
      { list( "vlan", { "vid" },
              { leaf( "vid", kVlanIndex ), leaf( "name", kShortText ), state( "untagged-ports" ),
                state( "egress-ports" ) } ),
        list( "protocol-group-database", { "db-index" },
              { leaf( "db-index", kUnsigned16 ), leaf( format, kFrameFormat ),
                choice( when( leaf( "ethertype", kTwoOctets ), format,
                              { "Ethernet", "rfc1042", "snap8021H" } ) ),
                choice( when( leaf( "protocol-id", kFiveOctets ), format, { "snapOther" } ) ),
                choice( when( container( "dsap-ssap-pairs", { leaf( "llc-address", kTwoOctets ) } ),
                              format, { "llcOther" } ) ),
                leaf( "group-id", kUnsigned32 ) } ),
        list( "vid-to-fid-allocation", { "vids" },
              { leaf( "vids", kVids ), state( "fid" ), state( "allocation-type" ) } ),
        list( "fid-to-vid-allocation", { "fid" },
              { leaf( "fid", kUnsigned32 ), state( "allocation-type" ), state( "vid" ) } ),
        list( "vid-to-fid", { "vid" }, { leaf( "vid", kVlanIndex ), leaf( "fid", kUnsigned32 ) } ),
        state( "version" ), state( "max-vids" ), state( "override-default-pvid" ),
        state( "protocol-template" ), state( "max-msti" ) } );
}

SchemaNode
bridgeMst() {
   return container(
      "bridge-mst",
      { leafList( "mstid", kVlanId ),
        list( "fid-to-mstid", { "fid" }, { leaf( "fid", kUnsigned32 ), leaf( "mstid", kVlanId ) } ),
        list( "fid-to-mstid-allocation", { "fids" },
              { leaf( "fids", kVids ), leaf( "mstid", kVlanId ) } ) } );
}

SchemaNode
bridges() {
   SchemaNode bridge =
      list( "bridge", { "name" },
            { leaf( "name", kBridgeName, Use::read ),
              mandatory( leaf( "address", kAddress, Use::checked ) ),
              mandatory( leaf( "bridge-type", kBridgeType, Use::checked ) ), state( "ports" ),
              state( "up-time" ), state( "components" ),
              list( "component", { "name" },
                    { leaf( "name", kName, Use::read ), leaf( "id", kUnsigned32 ),
                      mandatory( leaf( "type", kComponentType, Use::checked ) ),
                      leaf( "address", kAddress ), leaf( "traffic-class-enabled", kBoolean ),
                      state( "ports" ), state( "bridge-port" ), state( "capabilities" ),
                      filteringDatabase(), permanentDatabase(), bridgeVlan(), bridgeMst() } ) } );
   bridge.unique = "address";
   return container( "ieee802-dot1q-bridge:bridges",
                     { withRule( std::move( bridge ), checkRelay ) } );
}

SchemaNode
bridgePort() {
   return container(
      "ieee802-dot1q-bridge:bridge-port",
      { leaf( "bridge-name", kText, Use::checked ), leaf( "component-name", kText, Use::checked ),
        leaf( "port-type", kPortType, Use::checked ), leaf( "pvid", kVlanIndex ),
        leaf( "default-priority", kPriority ), container( "priority-regeneration", priorities() ),
        leaf( "pcp-selection", kPcp ),
        container(
           "pcp-decoding-table",
           { list( "pcp-decoding-map", { "pcp" },
                   { leaf( "pcp", kPcp ), list( "priority-map", { "priority-code-point" },
                                                { leaf( "priority-code-point", kPriority ),
                                                  leaf( "priority", kPriority ),
                                                  leaf( "drop-eligible", kBoolean ) } ) } ) } ),
        container( "pcp-encoding-table",
                   { list( "pcp-encoding-map", { "pcp" },
                           { leaf( "pcp", kPcp ),
                             list( "priority-map", { "priority", "dei" },
                                   { leaf( "priority", kPriority ), leaf( "dei", kBoolean ),
                                     leaf( "priority-code-point", kPriority ) } ) } ) } ),
        leaf( "use-dei", kBoolean ), leaf( "drop-encoding", kBoolean ),
        leaf( "service-access-priority-selection", kBoolean ),
        container( "service-access-priority", priorities() ),
        container( "traffic-class",
                   { list( "traffic-class-map", { "priority" },
                           { leaf( "priority", kPriority ),
                             list( "available-traffic-class", { "num-traffic-class" },
                                   { leaf( "num-traffic-class", kClassCount ),
                                     leaf( "traffic-class", kPriority ) } ) } ),
                     trafficClassTable() } ),
        container( "transmission-selection-algorithm-table",
                   { list( "transmission-selection-algorithm-map", { "traffic-class" },
                           { leaf( "traffic-class", kPriority ),
                             leaf( "transmission-selection-algorithm", kAlgorithm ) } ) } ),
        leaf( "acceptable-frame", kAcceptable ), leaf( "enable-ingress-filtering", kBoolean ),
        leaf( "enable-restricted-vlan-registration", kBoolean ),
        leaf( "enable-vid-translation-table", kBoolean, Use::read ),
        leaf( "enable-egress-vid-translation-table", kBoolean, Use::read ),
        list( "protocol-group-vid-set", { "group-id" },
              { leaf( "group-id", kUnsigned32 ), leafList( "vid", kVlanId ) } ),
        leaf( "admin-point-to-point", kPointToPoint ),
        state( "protocol-based-vlan-classification" ), state( "max-vid-set-entries" ),
        state( "port-number" ), state( "address" ), state( "capabilities" ),
        state( "type-capabilties" ), state( "external" ), state( "oper-point-to-point" ),
        state( "media-dependent-overhead" ), state( "statistics" ),
        // An entry without the other VID says nothing to a switch.
        list( "vid-translations", { "local-vid" },
              { leaf( "local-vid", kVlanId, Use::read ),
                mandatory( leaf( "relay-vid", kVlanId, Use::read ) ) } ),
        list( "egress-vid-translations", { "relay-vid" },
              { leaf( "relay-vid", kVlanId, Use::read ),
                mandatory( leaf( "local-vid", kVlanId, Use::read ) ) } ) } );
}

SchemaNode
interfaces() {
   return container(
      "ietf-interfaces:interfaces",
      { list( "interface", { "name" },
              { leaf( "name", kName, Use::read ), leaf( "description", kText ),
                mandatory( leaf( "type", kInterfaceTypes, Use::checked ) ),
                leaf( "enabled", kBoolean ), leaf( "link-up-down-trap-enable", kTrap ),
                state( "admin-status" ), state( "oper-status" ), state( "last-change" ),
                state( "if-index" ), state( "phys-address" ), state( "higher-layer-if" ),
                state( "lower-layer-if" ), state( "speed" ), state( "statistics" ),
                when( bridgePort(), "type",
                      { "bridge", "ethernetCsmacd", "ieee8023adLag", "ilan" } ) } ) } );
}

}   // namespace

const Schema&
ieee8021qSchema() {
   static const Schema kSchema = {
      .modules = { "ietf-interfaces", kModule },
      .top = { bridges(), interfaces(), state( "ietf-interfaces:interfaces-state" ) } };
   return kSchema;
}

}   // namespace Agent
