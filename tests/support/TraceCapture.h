// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TraceCapture: collects the trace lines of one handle while it lives.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "Zel/Trace.h"

namespace TestSupport {

/// A line with its strings copied.
struct CapturedLine {
   std::string handle;
   unsigned level;
   std::string source;
   int line;
   std::string function;
   std::string text;
};

class TraceCapture {
 public:
   /// `levels` as in HANDLE/LEVELS: "1,9", "*".
   TraceCapture( const std::string& handle, const std::string& levels ) : handle_( handle ) {
      Zel::traceSinkIs( [ this ]( const Zel::TraceLine& line ) {
         lines_.push_back( { line.handle, line.level, line.source, line.line, line.function,
                             std::string( line.text ) } );
      } );
      Zel::traceLevelsIs( handle_ + "/" + levels );
   }
   ~TraceCapture() {
      Zel::traceLevelsIs( handle_ + "/" );
      Zel::traceSinkIs( {} );
   }
   TraceCapture( const TraceCapture& ) = delete;
   TraceCapture& operator=( const TraceCapture& ) = delete;

   const std::vector< CapturedLine >& lines() const { return lines_; }
   void clear() { lines_.clear(); }

   /// "LEVEL TEXT", one a line.
   std::string text() const {
      std::string all;
      for ( const CapturedLine& line : lines_ ) {
         all += std::to_string( line.level ) + " " + line.text + "\n";
      }
      return all;
   }

 private:
   const std::string handle_;
   std::vector< CapturedLine > lines_;
};

}   // namespace TestSupport
