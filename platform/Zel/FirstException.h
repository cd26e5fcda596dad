// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// FirstException: tries each of several steps, then throws on what the first failing one threw.
//
// Cost   Nothing while nothing is thrown.
#pragma once

#include <exception>

namespace Zel {

class FirstException {
 public:
   /// Whether the step threw nothing.
   template < class Step >
   bool run( const Step& step ) {
      try {
         step();
         return true;
      } catch ( ... ) {
         if ( !first_ ) {
            first_ = std::current_exception();
         }
         return false;
      }
   }
   /// Whether there is one.
   explicit operator bool() const { return first_ != nullptr; }
   void throwOn() const {
      if ( first_ ) {
         std::rethrow_exception( first_ );
      }
   }

 private:
   std::exception_ptr first_;
};

}   // namespace Zel
