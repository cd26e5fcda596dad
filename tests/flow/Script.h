// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Script: writes replay scripts, one event a call.
#pragma once

#include <fmt/format.h>

#include <string>

#include "tests/flow/RunAgent.h"

namespace FlowTest {

class Script {
 public:
   Script& line( const std::string& text ) {
      text_ += text + "\n";
      return *this;
   }
   /// An event without members: state, run, step, initialize, manual.
   Script& op( const std::string& name ) { return line( fmt::format( R"({{"op":"{}"}})", name ) ); }
   /// An event with a port: schedule, lag-del.
   Script& op( const std::string& name, const std::string& port ) {
      return line( fmt::format( R"({{"op":"{}","port":"{}"}})", name, port ) );
   }
   Script& op( const std::string& name, const std::string& port, unsigned vlan ) {
      return line( fmt::format( R"({{"op":"{}","port":"{}","vlan":{}}})", name, port, vlan ) );
   }
   Script& op( const std::string& name, const std::string& port, unsigned vlan, unsigned relay ) {
      return line( fmt::format( R"({{"op":"{}","port":"{}","vlan":{},"relay":{}}})", name, port,
                                vlan, relay ) );
   }
   Script& lagSet( const std::string& port, const std::string& lag ) {
      return line( fmt::format( R"({{"op":"lag-set","port":"{}","lag":"{}"}})", port, lag ) );
   }
   Script& yield( const std::string& policy ) {
      return line( fmt::format( R"({{"op":"yield","policy":"{}"}})", policy ) );
   }

   const std::string& text() const { return text_; }
   /// Carried out from standard input.
   Outcome replay( const std::string& rangeEntries = "8" ) const {
      return runAgent( { "replay", "--range-entries", rangeEntries, "-" }, text_ );
   }

 private:
   std::string text_;
};

}   // namespace FlowTest
