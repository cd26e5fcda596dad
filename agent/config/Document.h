// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Document: collects what is wrong with a configuration, and which of its members have no effect.
//
// Ownership  Findings and unused members are the document's until taken; nothing else is kept.
// Threads    One thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/config/Finding.h"
#include "agent/config/LocatedJson.h"
#include "agent/config/Place.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

// Why a member has no effect.
struct UnusedReason {
   std::string_view text;
   UnusedKind kind;
};
constexpr UnusedReason kNotUsed = { "not used by this agent", UnusedKind::known };
constexpr UnusedReason kCheckedOnly = { "checked, has no effect", UnusedKind::known };
constexpr UnusedReason kOtherModule = { "of another module", UnusedKind::otherModule };

class Document {
 public:
   // `file` is how findings name the input.
   explicit Document( std::string file ) : file_( std::move( file ) ) {}

   // --- collecting

   // The value at `where` is wrong.
   void finding( const Place& where, std::string problem, std::string_view allowed );
   // As above, and `value` says in its own words what was found.
   void finding( const Place& where, std::string value, std::string problem,
                 std::string_view allowed );
   // The object at `parent` lacks `leaf`, a member name or a path of them.
   void missing( const Place& parent, std::string_view leaf, std::string_view allowed );
   void wrongType( const Place& where, std::string_view allowed );

   // `count` members of the kind that stands at `where` have no effect.
   void unused( const Place& where, const UnusedReason& reason, std::size_t count = 1 );

   // --- results

   // Ascending by line.
   std::vector< Finding > takeFindings();
   std::vector< UnusedMember > takeUnused() { return std::move( unused_ ); }

 private:
   std::string file_;
   std::vector< Finding > findings_;
   std::vector< UnusedMember > unused_;
   std::map< std::pair< std::string, std::string_view >, std::size_t > unusedAt_;
};

// --- what a reader makes of places that have been checked; what is wrong has been reported

// 1..4094, 0 where there is no such number.
std::uint16_t vlanIdOf( const JsonValue* value );
inline std::uint16_t
vlanIdOf( const std::optional< Place >& leaf ) {
   return vlanIdOf( leaf ? &leaf->value() : nullptr );
}
// Empty where there is no string.
std::string textOf( const std::optional< Place >& leaf );
bool isTrue( const std::optional< Place >& leaf );

// Calls `each( Place )` for the entries of a list that are objects, each named by its leaf
// `keyName`.
template < typename Each >
void
forEachEntry( const std::optional< Place >& list, std::string_view keyName, const Each& each ) {
   const JsonArray* entries = list ? list->value().array() : nullptr;
   for ( std::size_t i = 0; entries && i < entries->size(); ++i ) {
      if ( ( *entries )[ i ].object() ) {
         each( Place( *list, i, ( *entries )[ i ], keyName ) );
      }
   }
}

}   // namespace Agent
