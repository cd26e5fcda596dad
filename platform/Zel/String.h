// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// String: the framework's text value, and printf-style formatting of values.
//
// String       A thin value over std::string. Copying copies the text.
// Iterator     A position inside a text that knows its offset; parsing takes (current, end)
//              and advances current past what it consumed. It does not own the text.
// Strep        "string representation": valueToStrep( value ) gives the form that parses back.
// Threads      Values; no shared state.
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <iosfwd>
#include <string>
#include <string_view>
#include <utility>

#include "Zel/Export.h"

namespace Zel {

class StringIterator {
 public:
   StringIterator( const char* begin, const char* at ) : begin_( begin ), at_( at ) {}

   char operator*() const { return *at_; }
   StringIterator& operator++() {
      ++at_;
      return *this;
   }
   StringIterator& operator+=( std::size_t n ) {
      at_ += n;
      return *this;
   }
   bool operator==( const StringIterator& other ) const { return at_ == other.at_; }

   const char* base() const { return at_; }
   /// Characters from the beginning of the text to here.
   std::size_t offset() const { return static_cast< std::size_t >( at_ - begin_ ); }

 private:
   const char* begin_;
   const char* at_;
};

class String {
 public:
   String() = default;
   /// Requires: `text` is not null.
   String( const char* text ) : text_( text ) {}
   String( std::string text ) : text_( std::move( text ) ) {}
   String( std::string_view text ) : text_( text ) {}

   const char* c_str() const { return text_.c_str(); }
   const std::string& str() const { return text_; }
   operator std::string_view() const { return text_; }
   std::size_t size() const { return text_.size(); }
   bool empty() const { return text_.empty(); }
   explicit operator bool() const { return !text_.empty(); }

   StringIterator begin() const { return { text_.data(), text_.data() }; }
   StringIterator end() const { return { text_.data(), text_.data() + text_.size() }; }

   String& operator+=( std::string_view more ) {
      text_ += more;
      return *this;
   }
   friend bool operator==( const String& a, const String& b ) { return a.text_ == b.text_; }
   friend bool operator<( const String& a, const String& b ) { return a.text_ < b.text_; }
   ZEL_EXPORT friend std::ostream& operator<<( std::ostream& out, const String& s );

 private:
   std::string text_;
};

ZEL_EXPORT String valueToStrep( std::uint64_t value );
/// The shortest decimal form that is read back as the same number.
ZEL_EXPORT String valueToStrep( double value );
ZEL_EXPORT String valueToStrep( const String& value );
ZEL_EXPORT String valueToStrep( const char* value );
/// A number, or "true" and "false". A template, so that no pointer turns into a bool.
template < std::unsigned_integral T >
String
valueToStrep( T value ) {
   if constexpr ( std::same_as< T, bool > ) {
      return value ? "true" : "false";
   } else {
      return valueToStrep( std::uint64_t{ value } );
   }
}

/// Replaces each "%s" of `pattern` by the next argument and "%%" by a percent sign. Asserts
/// that the pattern has exactly as many "%s" as there are arguments and no other conversion.
ZEL_EXPORT String formatStreps( std::string_view pattern,
                                std::initializer_list< String > arguments );

/// As formatStreps; each argument stands as its own string form.
template < class... Values >
String
format( std::string_view pattern, const Values&... values ) {
   return formatStreps( pattern, { valueToStrep( values )... } );
}

}   // namespace Zel
