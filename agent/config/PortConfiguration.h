// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PortConfiguration: what a configuration file says about VLAN translation, in the same shape
// whatever format it came in. Plain values without behaviour.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace Agent {

constexpr std::uint16_t kMinVlanId = 1;
constexpr std::uint16_t kMaxVlanId = 4094;

// A frame that enters with `vlan` is `relay` inside the switch. Both 1..4094.
struct IngressMapping {
   std::uint16_t vlan;
   std::uint16_t relay;
};

// A frame that is `relay` inside the switch leaves with `vlan`. Both 1..4094.
struct EgressMapping {
   std::uint16_t relay;
   std::uint16_t vlan;
};

struct Port {
   std::string name;
   // Ascending by vlan, each at most once.
   std::vector< IngressMapping > ingress;
   // Ascending by relay, each at most once.
   std::vector< EgressMapping > egress;
   // Name of the aggregate that this port is a member of; it is one of the ports.
   std::optional< std::string > lag;
};

enum class UnusedKind {
   known,         // of the model, without a use here
   otherModule,   // not looked at
   tableOff,      // an entry of a translation table that is not enabled
};

// Members of the file that have no effect on the ports.
struct UnusedMember {
   // Path without keys: /ietf-interfaces:interfaces/interface/enabled
   std::string path;
   std::size_t count;
   std::string reason;
   UnusedKind kind = UnusedKind::known;
};

enum class ConfigurationFormat { ieee8021q, openConfig };

struct Configuration {
   ConfigurationFormat format;
   // In file order, names unique.
   std::vector< Port > ports;
   // In order of first appearance, one for each path and reason.
   std::vector< UnusedMember > unused;
};

}   // namespace Agent
