// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ConfigurationReader: a configuration file of either format, read and checked as a whole. The
// format shows in the top-level members.
//
// Cost       Linear in the text, which is held in memory together with its tree.
// Threads    No shared state, apart from standard input.
// Errors     Whatever the input holds comes back in the result; only memory exhaustion throws.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "agent/config/Finding.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

struct ReadResult {
   // Present exactly when there is no finding.
   std::optional< Configuration > configuration;
   // All that is wrong, ascending by line.
   std::vector< Finding > findings;
   // The input was not looked into: it cannot be read, is no JSON, or is of no known format.
   // The one finding says which.
   bool unusable = false;
};

// Every VID of 1,024 ports. A short text can ask for more than a machine has memory for.
constexpr std::uint64_t kDefaultMaxMappings = std::uint64_t( kMaxVlanId ) * 1024;
constexpr std::uint64_t kHighestMaxMappings = 4294967295;

// Told now and then how many bytes are behind, and of how many; 0 while that is not known.
using ReadProgress = std::function< void( std::size_t bytes, std::size_t ofBytes ) >;

// Reads the file `path`, "-" for standard input up to its end. At most 256 MiB. A text that asks
// for more than `maxMappings` ingress mappings is refused before any is made.
ReadResult readConfiguration( const std::string& path,
                              std::uint64_t maxMappings = kDefaultMaxMappings,
                              const ReadProgress& progress = {} );

// As above from memory. `file` is how findings name the text.
ReadResult readConfigurationText( const std::string& file, std::string_view text,
                                  std::uint64_t maxMappings = kDefaultMaxMappings,
                                  const ReadProgress& progress = {} );

}   // namespace Agent
