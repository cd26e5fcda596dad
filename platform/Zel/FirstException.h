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
   template < class Step >
   void run( const Step& step ) {
      try {
         step();
      } catch ( ... ) {
         keep();
      }
   }
   /// Inside a handler: keeps the exception that is being handled unless one was kept before.
   void keep() noexcept {
      if ( !first_ ) {
         first_ = std::current_exception();
      }
   }
   void throwOn() const {
      if ( first_ ) {
         std::rethrow_exception( first_ );
      }
   }

 private:
   std::exception_ptr first_;
};

}   // namespace Zel
