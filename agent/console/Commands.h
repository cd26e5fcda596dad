// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Commands: what can be typed at the console.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>

#include "agent/console/Session.h"

namespace Agent::Console {

/// What a word of a command names; for completion.
enum class Names { Nothing, Command, Type, Path };

struct Command {
   const char* name;
   const char* arguments;   ///< as the help shows them
   const char* help;
   /// Numbers of arguments that it takes.
   std::size_t fewest;
   std::size_t most;
   /// What the first, the second and all further arguments name.
   std::array< Names, 3 > names;
   void ( *carryOut )( Session& session, std::span< const std::string > arguments );
};

std::span< const Command > commands();

/// Null when there is none.
const Command* commandNamed( std::string_view name );

/// Carries out one line; blank lines and comments, which begin with #, do nothing. Throws Error and
/// what the called operations throw.
void carryOut( Session& session, std::string_view line );

}   // namespace Agent::Console
