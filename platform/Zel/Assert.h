// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Assert: broken invariants end the process.
//
// The assertion stays on in every build type and evaluates its expression exactly once, so an
// expression that changes something (`dir->fooDel( key )`) may stand in it.
#pragma once

#include "Zel/Export.h"

namespace Zel {

/// Writes "SOURCE:LINE: FUNCTION: Assertion `EXPRESSION' failed." to standard error and aborts.
[[noreturn]] ZEL_EXPORT void assertFail( const char* expression, const char* source, int line,
                                         const char* function ) noexcept;

}   // namespace Zel

/// Requires a constant `zelSourceTag` in scope: the source's name without extension. A macro,
/// because only the preprocessor sees the expression's text and the enclosing function.
#define ZEL_ASSERT( ... )                                                                          \
   ( static_cast< bool >( __VA_ARGS__ )                                                            \
        ? void( 0 )                                                                                \
        : ::Zel::assertFail( #__VA_ARGS__, zelSourceTag, __LINE__, __PRETTY_FUNCTION__ ) )
