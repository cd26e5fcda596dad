// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ConsoleRun: the agent's console with commands from a pipe.
#pragma once

#include <string>

#include "tests/flow/RunAgent.h"

namespace FlowTest {

/// Nobody's configuration, `commands` one a line.
inline Outcome
console( const std::string& commands ) {
   return runAgent( { "console" }, commands );
}

/// Standard output and error as they come, in one text.
inline Outcome
consoleInOneStream( const std::string& commands, const std::string& file ) {
   return runProgram( { "/bin/sh", "-c", "exec \"$0\" console \"$1\" 2>&1", MOX_AGENT, file },
                      commands );
}

/// The string forms of a mapping to `vlan`, and of a range of it.
inline std::string
mappingTo( unsigned vlan ) {
   return "Value('Bridging::VlanXlateMapping', ** {'vlanId': " + std::to_string( vlan ) +
          ", 'innerVlanId': 0, 'tpid': 0, 'priority': 0, 'dropEligible': 0})";
}
inline std::string
rangeTo( unsigned low, unsigned high, unsigned vlan ) {
   return "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': " + std::to_string( low ) +
          ", 'highVid': " + std::to_string( high ) + ", 'mapping': " + mappingTo( vlan ) + "})";
}
/// A command that puts one VLAN id into the range index.
inline std::string
addVlan( unsigned intf, unsigned vlan, unsigned to ) {
   return "call sm.vlanRangeMgr.addVlanToIdx " + std::to_string( intf ) + " " +
          std::to_string( vlan ) + " " + mappingTo( to ) + "\n";
}

}   // namespace FlowTest
