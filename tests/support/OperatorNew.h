// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// OperatorNew: lets a test watch and refuse the requests for memory of its own process.
//
// OperatorNew.cpp replaces the global operator new and delete of the program that it is a source
// of. Threads: requests and blocks count in all; while there is a hook, only one may run.
#pragma once

#include <cstdint>
#include <functional>

namespace TestSupport {

/// Requests that came so far.
std::uint64_t newRequests();

/// Blocks of memory that were given out and not yet back.
std::int64_t newBlocks();

/// While it lives, `request` runs before each request for memory, but not for those that it makes
/// itself; what it throws refuses the request.
class OperatorNewHook {
 public:
   explicit OperatorNewHook( std::function< void() > request );
   ~OperatorNewHook();
   OperatorNewHook( const OperatorNewHook& ) = delete;
   OperatorNewHook& operator=( const OperatorNewHook& ) = delete;
};

}   // namespace TestSupport
