// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Error: a command line of the console that cannot be carried out. Its text names what was wrong
// and the allowed form; nothing was changed.
#pragma once

#include <fmt/format.h>

#include <stdexcept>
#include <string_view>

#include "Zel/Exception.h"

namespace Agent::Console {

struct Error : std::runtime_error {
   using std::runtime_error::runtime_error;
};

/// Runs `work` and returns its result; what it cannot do turns into an Error about `what`.
template < class Work >
auto
withName( std::string_view what, Work&& work ) {
   try {
      return work();
   } catch ( const Zel::Exception& error ) {
      throw Error( fmt::format( "{}: {}", what, error.message() ) );
   } catch ( const Error& error ) {
      throw Error( fmt::format( "{}: {}", what, error.what() ) );
   }
}

}   // namespace Agent::Console
