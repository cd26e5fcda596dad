// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Document.h"

#include <algorithm>

#include <fmt/format.h>

#include "agent/config/Escaped.h"

namespace Agent {

void
Document::finding( const Place& where, std::string problem, std::string_view allowed ) {
   finding( where, where.value().shown(), std::move( problem ), allowed );
}

void
Document::finding( const Place& where, std::string value, std::string problem,
                   std::string_view allowed ) {
   findings_.push_back( { file_, where.value().line, 0, where.path(), std::move( value ),
                          std::move( problem ), std::string( allowed ) } );
}

void
Document::missing( const Place& parent, std::string_view leaf, std::string_view allowed ) {
   std::string path = parent.path() + '/' + std::string( leaf );
   findings_.push_back( { file_, parent.value().line, 0, std::move( path ), "", "is missing",
                          std::string( allowed ) } );
}

void
Document::wrongType( const Place& where, std::string_view allowed ) {
   finding( where, fmt::format( "has the wrong type, {}", where.value().kind() ), allowed );
}

void
Document::unused( const Place& where, const UnusedReason& reason, std::size_t count ) {
   if ( count == 0 ) {
      return;
   }
   const auto [ at, fresh ] =
      unusedAt_.try_emplace( { where.pattern(), reason.text }, unused_.size() );
   if ( fresh ) {
      unused_.push_back( { at->first.first, 0, std::string( reason.text ), reason.kind } );
   }
   unused_[ at->second ].count += count;
}

std::vector< Finding >
Document::takeFindings() {
   std::stable_sort( findings_.begin(), findings_.end(),
                     []( const Finding& a, const Finding& b ) { return a.line < b.line; } );
   return std::move( findings_ );
}

std::uint16_t
vlanIdOf( const JsonValue* value ) {
   const std::uint64_t* number = value ? value->unsignedInteger() : nullptr;
   return number && *number <= kMaxVlanId ? static_cast< std::uint16_t >( *number )
                                          : std::uint16_t( 0 );
}

std::string
textOf( const std::optional< Place >& leaf ) {
   const std::string* text = leaf ? leaf->value().string() : nullptr;
   return text ? *text : std::string();
}

bool
isTrue( const std::optional< Place >& leaf ) {
   const bool* value = leaf ? leaf->value().boolean() : nullptr;
   return value && *value;
}

}   // namespace Agent
