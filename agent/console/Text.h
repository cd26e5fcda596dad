// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Text: pieces of what the console says.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace Agent::Console {

/// The text, or as much of it as an error may show.
inline std::string
clipped( std::string_view text ) {
   constexpr std::size_t kMost = 60;
   return text.size() > kMost ? std::string( text.substr( 0, kMost ) ) + "..."
                              : std::string( text );
}

/// What `textOf` gives for each element, with commas between; "none" for no element.
template < class Range, class TextOf >
std::string
joined( const Range& range, const TextOf& textOf ) {
   std::string text;
   for ( const auto& element : range ) {
      text += text.empty() ? "" : ", ";
      text += std::invoke( textOf, element );
   }
   return text.empty() ? "none" : text;
}

}   // namespace Agent::Console
