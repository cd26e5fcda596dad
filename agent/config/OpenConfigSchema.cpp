// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/OpenConfigSchema.h"

#include <algorithm>
#include <iterator>

#include "agent/config/InterfaceTypes.h"
#include "agent/config/VlanList.h"

namespace Agent {

namespace {

constexpr std::string_view kEthernet = "openconfig-if-ethernet";

bool
isVlan( std::string_view text ) {
   const ParsedVlanList list = parseVlanList( text );
   return list.ids.size() == 1 && text.find( '-' ) == std::string_view::npos;
}

// LOW..HIGH; the model leaves open which of the two is higher.
bool
isVlanRange( std::string_view text ) {
   const std::size_t dots = text.find( ".." );
   return dots != std::string_view::npos && isVlan( text.substr( 0, dots ) ) &&
          isVlan( text.substr( dots + 2 ) );
}

// OUTER.INNER or OUTER.*
bool
isStackedVlan( std::string_view text ) {
   const std::size_t dot = text.find( '.' );
   return dot != std::string_view::npos && isVlan( text.substr( 0, dot ) ) &&
          ( text.substr( dot + 1 ) == "*" || isVlan( text.substr( dot + 1 ) ) );
}

constexpr NumberRange kVlanIds[] = { { kMinVlanId, kMaxVlanId } };
constexpr NumberRange kNumbers16[] = { { 0, 65535 } };
constexpr LeafType kVlanOrRange = {
   .allowed = "1..4094, or a range such as \"10..20\"", .numbers = kVlanIds, .text = isVlanRange };
constexpr LeafType kVlanOrStack = { .allowed = "1..4094, or two such as \"10.20\" and \"10.*\"",
                                    .numbers = kVlanIds,
                                    .text = isStackedVlan };
constexpr LeafType kVlanOrName = { .allowed = "0..65535, or a JSON string",
                                   .numbers = kNumbers16,
                                   .text = []( std::string_view ) { return true; } };
constexpr LeafType kAddress = {
   .allowed = "six octets such as \"02:00:5E:00:53:01\"",
   .text = []( std::string_view text ) { return hasForm( text, "hh:hh:hh:hh:hh:hh" ); } };

constexpr std::string_view kStackActionNames[] = { "PUSH", "POP", "SWAP" };
constexpr LeafType kStackAction = { .allowed = "PUSH, POP, SWAP", .names = kStackActionNames };
constexpr std::string_view kModeNames[] = { "ACCESS", "TRUNK" };
constexpr LeafType kMode = { .allowed = "ACCESS, TRUNK", .names = kModeNames };
constexpr std::string_view kLagTypeNames[] = { "LACP", "STATIC" };
constexpr LeafType kLagType = { .allowed = "LACP, STATIC", .names = kLagTypeNames };
constexpr std::string_view kDuplexNames[] = { "FULL", "HALF" };
constexpr LeafType kDuplex = { .allowed = "FULL, HALF", .names = kDuplexNames };
constexpr std::string_view kLoopbackNames[] = {
   "NONE",           "FACILITY",       "TERMINAL", "ASIC_PHY_LOCAL", "ASIC_PHY_REMOTE",
   "ASIC_MAC_LOCAL", "ASIC_MAC_REMOTE" };
constexpr LeafType kLoopback = {
   .allowed = "NONE, FACILITY, TERMINAL, ASIC_PHY_LOCAL, ASIC_PHY_REMOTE, ASIC_MAC_LOCAL, "
              "ASIC_MAC_REMOTE",
   .names = kLoopbackNames };
constexpr std::string_view kTpidNames[] = { "TPID_0X8100", "TPID_0X88A8", "TPID_0X9100",
                                            "TPID_0X9200", "TPID_ANY" };
constexpr LeafType kTpid = {
   .allowed = "an identity of openconfig-vlan-types: TPID_0X8100, TPID_0X88A8, TPID_0X9100, "
              "TPID_0X9200, TPID_ANY",
   .names = kTpidNames,
   .module = "openconfig-vlan-types" };
constexpr std::string_view kSpeedNames[] = {
   "SPEED_10MB",  "SPEED_100MB", "SPEED_1GB",    "SPEED_2500MB", "SPEED_5GB",   "SPEED_10GB",
   "SPEED_25GB",  "SPEED_40GB",  "SPEED_50GB",   "SPEED_100GB",  "SPEED_200GB", "SPEED_400GB",
   "SPEED_600GB", "SPEED_800GB", "SPEED_1600GB", "SPEED_UNKNOWN" };
constexpr LeafType kSpeed = { .allowed =
                                 "an identity of openconfig-if-ethernet, such as SPEED_10GB",
                              .names = kSpeedNames,
                              .module = kEthernet };
constexpr std::string_view kFecNames[] = { "FEC_FC",
                                           "FEC_RS528",
                                           "FEC_RS544",
                                           "FEC_RS544_LOW_LATENCY",
                                           "FEC_RS544_2X_INTERLEAVE",
                                           "FEC_RS544_2X_INTERLEAVE_CL172",
                                           "FEC_RS544_2X_INTERLEAVE_ETC",
                                           "FEC_DISABLED" };
constexpr LeafType kFec = { .allowed = "an identity of openconfig-if-ethernet, such as FEC_RS544",
                            .names = kFecNames,
                            .module = kEthernet };

// A container as this family of models lays it out: what is asked for, and what is.
SchemaNode
configured( std::string_view name, std::vector< SchemaNode > config,
            std::vector< SchemaNode > others = {} ) {
   std::vector< SchemaNode > children = { container( "config", std::move( config ) ),
                                          state( "state" ) };
   std::move( others.begin(), others.end(), std::back_inserter( children ) );
   return container( name, std::move( children ) );
}

// A list entry whose key stands in its config once more.
SchemaNode
configuredList( std::string_view name, std::string_view key, const LeafType& type,
                std::vector< SchemaNode > config, std::vector< SchemaNode > others ) {
   config.push_back( mandatory( leaf( key, type, Use::read ) ) );
   std::vector< SchemaNode > children = {
      leaf( key, type, Use::read ), container( "config", std::move( config ) ), state( "state" ) };
   std::move( others.begin(), others.end(), std::back_inserter( children ) );
   SchemaNode node = list( name, { key }, std::move( children ) );
   node.keyInConfig = true;
   return node;
}

SchemaNode
mapping( std::string_view name ) {
   return configured( name, { leaf( "vlan-stack-action", kStackAction, Use::read ),
                              leaf( "vlan-id", kVlanId, Use::read ),
                              leaf( "tpid", kTpid, Use::checked ) } );
}

SchemaNode
matches() {
   return container(
      "match",
      { configured( "single-tagged", { leaf( "vlan-id", kVlanId, Use::read ) } ),
        configured( "single-tagged-list", { leafList( "vlan-ids", kVlanId, Use::read ) } ),
        configured( "single-tagged-range", { leaf( "low-vlan-id", kVlanId, Use::read ),
                                             leaf( "high-vlan-id", kVlanId, Use::read ) } ),
        configured( "double-tagged",
                    { leaf( "inner-vlan-id", kVlanId ), leaf( "outer-vlan-id", kVlanId ) } ),
        configured( "double-tagged-inner-list",
                    { leafList( "inner-vlan-ids", kVlanId ), leaf( "outer-vlan-id", kVlanId ) } ),
        configured( "double-tagged-outer-list",
                    { leaf( "inner-vlan-id", kVlanId ), leafList( "outer-vlan-ids", kVlanId ) } ),
        configured( "double-tagged-inner-range",
                    { leaf( "inner-low-vlan-id", kVlanId ), leaf( "inner-high-vlan-id", kVlanId ),
                      leafList( "outer-vlan-id", kVlanId ) } ),
        configured( "double-tagged-outer-range",
                    { leaf( "inner-vlan-id", kVlanId ), leaf( "outer-low-vlan-id", kVlanId ),
                      leaf( "outer-high-vlan-id", kVlanId ) } ),
        configured( "double-tagged-inner-outer-range",
                    { leaf( "inner-low-vlan-id", kVlanId ), leaf( "inner-high-vlan-id", kVlanId ),
                      leaf( "outer-low-vlan-id", kVlanId ),
                      leaf( "outer-high-vlan-id", kVlanId ) } ) } );
}

SchemaNode
subinterfaces() {
   return container(
      "subinterfaces",
      { configuredList( "subinterface", "index", kUnsigned32,
                        { leaf( "description", kText ), leaf( "enabled", kBoolean ) },
                        { configured( "openconfig-vlan:vlan", { leaf( "vlan-id", kVlanOrStack ) },
                                      { matches(), mapping( "ingress-mapping" ),
                                        mapping( "egress-mapping" ) } ) } ) } );
}

SchemaNode
switchedVlan() {
   const std::string_view mode = "interface-mode";
   return configured( "openconfig-vlan:switched-vlan",
                      { leaf( mode, kMode ),
                        when( leaf( "native-vlan", kVlanId ), mode, { "TRUNK" } ),
                        when( leaf( "access-vlan", kVlanId ), mode, { "ACCESS" } ),
                        when( leafList( "trunk-vlans", kVlanOrRange ), mode, { "TRUNK" } ) } );
}

// Damping and a hold time exclude each other.
void
checkHoldTime( Document& document, const Place& interface ) {
   const auto set = [ & ]( const char* leaf ) {
      const JsonValue* value = interface.valueBelow( leaf );
      const std::uint64_t* number = value ? value->unsignedInteger() : nullptr;
      return number && *number != 0;
   };
   const auto holdTime = interface.member( "hold-time" );
   if ( holdTime && set( "penalty-based-aied/config/suppress-threshold" ) &&
        set( "penalty-based-aied/config/reuse-threshold" ) &&
        set( "penalty-based-aied/config/flap-penalty" ) ) {
      document.finding( *holdTime, "", "does not go with penalty-based-aied", "one of the two" );
   }
}

SchemaNode
interfaces() {
   SchemaNode interface = configuredList(
      "interface", "name", kName,
      { mandatory( leaf( "type", kInterfaceTypes, Use::checked ) ), leaf( "mtu", kUnsigned16 ),
        leaf( "loopback-mode", kLoopback ), leaf( "description", kText ),
        leaf( "enabled", kBoolean ), leaf( "openconfig-vlan:tpid", kTpid ) },
      { configured( "hold-time", { leaf( "up", kUnsigned32 ), leaf( "down", kUnsigned32 ) } ),
        configured( "penalty-based-aied", { leaf( "max-suppress-time", kUnsigned32 ),
                                            leaf( "decay-half-life", kUnsigned32 ),
                                            leaf( "suppress-threshold", kUnsigned32 ),
                                            leaf( "reuse-threshold", kUnsigned32 ),
                                            leaf( "flap-penalty", kUnsigned32 ) } ),
        subinterfaces(),
        when( configured(
                 "openconfig-if-ethernet:ethernet",
                 { leaf( "mac-address", kAddress ), leaf( "enable-flow-control", kBoolean ),
                   leaf( "auto-negotiate", kBoolean ), leaf( "standalone-link-training", kBoolean ),
                   leaf( "duplex-mode", kDuplex ), leaf( "port-speed", kSpeed ),
                   leaf( "fec-mode", kFec ),
                   leaf( "openconfig-if-aggregate:aggregate-id", kText, Use::read ) },
                 { switchedVlan() } ),
              "config/type", { "ethernetCsmacd", "ieee8023adLag" } ),
        when( configured( "openconfig-if-aggregate:aggregation",
                          { leaf( "lag-type", kLagType ), leaf( "min-links", kUnsigned16 ) },
                          { switchedVlan() } ),
              "config/type", { "ieee8023adLag" } ),
        when( configured( "openconfig-vlan:routed-vlan", { leaf( "vlan", kVlanOrName ) } ),
              "config/type", { "l3ipvlan" } ) } );
   return container( "openconfig-interfaces:interfaces",
                     { withRule( std::move( interface ), checkHoldTime ) } );
}

}   // namespace

const Schema&
openConfigSchema() {
   static const Schema kSchema = { .modules = { "openconfig-interfaces", kEthernet,
                                                "openconfig-if-aggregate", "openconfig-vlan" },
                                   .top = { interfaces() } };
   return kSchema;
}

}   // namespace Agent
