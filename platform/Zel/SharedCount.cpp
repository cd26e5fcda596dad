// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/SharedCount.h"

#include <string_view>

#include "Zel/Environment.h"

namespace Zel {
namespace {

bool
switchedOnByEnvironment() {
   const char* value = environmentVariable( "ZEL_THREAD_SAFE_PTR" );
   return value != nullptr && std::string_view( value ) == "1";
}

}   // namespace

namespace Detail {

std::atomic< bool > threadSafePtrSwitch = switchedOnByEnvironment();

}   // namespace Detail
}   // namespace Zel
