// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/JsonWriter.h"

#include <nlohmann/json.hpp>

#include "agent/config/Escaped.h"

namespace Agent {
namespace {

// With quotes; characters that a terminal obeys or hides are escaped, other bytes than UTF-8
// replaced.
std::string
quoted( std::string_view text ) {
   return escaped(
      nlohmann::json( text ).dump( -1, ' ', false, nlohmann::json::error_handler_t::replace ) );
}

}   // namespace

void
JsonWriter::key( std::string_view name ) {
   separate();
   out_ << quoted( name ) << ( layout_ == Layout::Indented ? ": " : ":" );
   afterKey_ = true;
}

void
JsonWriter::value( std::string_view text ) {
   plain( quoted( text ) );
}

void
JsonWriter::plain( std::string_view text ) {
   separate();
   out_ << text;
}

void
JsonWriter::open( char bracket ) {
   separate();
   out_ << bracket;
   ++depth_;
   first_ = true;
}

void
JsonWriter::close( char bracket ) {
   --depth_;
   if ( !first_ ) {
      newLine();
   }
   out_ << bracket;
   first_ = false;
}

void
JsonWriter::separate() {
   if ( afterKey_ ) {
      afterKey_ = false;
      return;
   }
   if ( !first_ ) {
      out_ << ',';
   }
   if ( depth_ > 0 ) {
      newLine();
   }
   first_ = false;
}

void
JsonWriter::newLine() {
   if ( layout_ == Layout::Indented ) {
      out_ << '\n' << std::string( 2 * depth_, ' ' );
   }
}

}   // namespace Agent
