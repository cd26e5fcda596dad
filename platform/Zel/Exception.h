// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Exception: what the framework throws.
//
// RangeException          a value outside its type's range; what() is the type's fixed text
// ParseException          a text that is not the string form asked for
// TypeException           a value or entity of the wrong type
// SetFalseValueException  "false" written to a member of a hash set, which only holds true
//
// All are exported, so a caller outside the library can catch them by type. A bad value throws
// before anything is changed; a broken invariant is not an exception but an assertion.
#pragma once

#include <cstddef>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "Zel/Export.h"
#include "Zel/String.h"

namespace Zel {

class ZEL_EXPORT Exception : public std::runtime_error {
 public:
   explicit Exception( const std::string& text ) : std::runtime_error( text ) {}
   ~Exception() override;

   /// Names of the attributes that the exception passed through, outermost first.
   const std::vector< std::string >& attributes() const { return attributes_; }
   void attributeIs( std::string_view name );

   /// what(), behind the attribute names: "mapping: vlan: TEXT".
   std::string message() const;

 private:
   std::vector< std::string > attributes_;
};

class ZEL_EXPORT RangeException : public Exception {
 public:
   explicit RangeException( const char* text ) : Exception( text ) {}
   ~RangeException() override;
};

class ZEL_EXPORT ParseException : public Exception {
 public:
   ParseException( const std::string& text, std::size_t offset )
       : Exception( text ), offset_( offset ) {}
   ~ParseException() override;

   /// Characters from the beginning of the parsed text to where it went wrong.
   std::size_t offset() const { return offset_; }

 private:
   std::size_t offset_;
};

class ZEL_EXPORT TypeException : public Exception {
 public:
   using Exception::Exception;
   ~TypeException() override;
};

class ZEL_EXPORT SetFalseValueException : public Exception {
 public:
   using Exception::Exception;
   ~SetFalseValueException() override;
};

/// Throws a RangeException with the fixed text of a type's range check.
[[noreturn]] ZEL_EXPORT void throwRangeException( const char* text );

/// Runs `parse` and returns its result; a RangeException passes on with `name` added.
template < class Parse >
auto
rethrowWithAttribute( std::string_view name, Parse&& parse ) {
   try {
      return parse();
   } catch ( RangeException& error ) {
      error.attributeIs( name );
      throw;
   }
}

}   // namespace Zel
