// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Commands: what vlan-scale-agent does, one function per command. Each returns the exit code.
#pragma once

#include <cstddef>
#include <cstdint>
#include <new>
#include <optional>
#include <string>

#include "agent/Report.h"
#include "agent/ScaleAgent.h"
#include "agent/config/ConfigurationReader.h"

namespace Agent {

constexpr int kExitClean = 0;
constexpr int kExitFindings = 1;
constexpr int kExitUnusable = 2;

struct Options {
   std::string file;   ///< "-" for standard input; empty for none
   std::size_t rangeEntries = ScaleAgent::kDefaultRangeEntries;
   std::uint64_t maxMappings = kDefaultMaxMappings;
   bool verbose = false;
   bool json = false;
   bool markdown = false;
   RangeOrder order = RangeOrder::Size;
   std::string port;
   std::optional< std::string > vlans;   ///< a VLAN list, such as "1,10-100"
};

/// The file as messages name it.
std::string shownFile( const Options& options );

/// Memory ran out in a command. Asks for none itself.
class OutOfMemory : public std::bad_alloc {
 public:
   /// `doing` is what was being done to the file, a literal: "reading".
   explicit OutOfMemory( const char* doing ) : doing_( doing ) {}
   const char* what() const noexcept override { return doing_; }

 private:
   const char* doing_;
};

// The commands themselves. Output goes to std::cout, whose state the caller looks at.

int runCommand( const Options& options );
int checkCommand( const Options& options );
int showRangesCommand( const Options& options );
int showSummaryCommand( const Options& options );
int showPortCommand( const Options& options );
int replayCommand( const Options& options );
/// Prints the messages of a ring file, oldest first.
int ringsCommand( const Options& options );
/// Commands on the agent's objects, from a terminal or a pipe; applies the file first, if any.
int consoleCommand( const Options& options );
/// Lists the registered types.
int typesCommand( const Options& options );

}   // namespace Agent
