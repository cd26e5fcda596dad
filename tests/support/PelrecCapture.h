// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PelrecCapture: the records that were written to the process's binary trace since it was made.
#pragma once

#include <cstdint>
#include <string>

#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"

namespace TestSupport {

class PelrecCapture {
 public:
   PelrecCapture() {
      const auto records = Pelrec::Reader( Pelrec::trace().image() ).records();
      before_ = records.empty() ? 0 : records.back().sequence;
   }

   /// "LEVEL TEXT", one a line, in order of writing.
   std::string text() const {
      std::string all;
      for ( const auto& record : Pelrec::Reader( Pelrec::trace().image() ).records() ) {
         if ( record.sequence > before_ ) {
            all += std::to_string( record.level ) + " " + record.text + "\n";
         }
      }
      return all;
   }

 private:
   std::uint64_t before_ = 0;
};

}   // namespace TestSupport
