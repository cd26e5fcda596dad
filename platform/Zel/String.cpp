// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/String.h"

#include <charconv>
#include <ostream>
#include <system_error>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/String";

}   // namespace

std::ostream&
operator<<( std::ostream& out, const String& s ) {
   return out << s.text_;
}

String
valueToStrep( std::uint64_t value ) {
   return std::to_string( value );
}

String
valueToStrep( double value ) {
   char text[ 32 ];
   const auto [ end, error ] = std::to_chars( text, text + sizeof text, value );
   ZEL_ASSERT( error == std::errc() );
   return std::string( text, end );
}

String
valueToStrep( const String& value ) {
   return value;
}

String
valueToStrep( const char* value ) {
   return value;
}

String
formatStreps( std::string_view pattern, std::initializer_list< String > arguments ) {
   std::string text;
   auto argument = arguments.begin();
   for ( std::size_t i = 0; i < pattern.size(); ++i ) {
      if ( pattern[ i ] != '%' ) {
         text += pattern[ i ];
         continue;
      }
      ++i;
      ZEL_ASSERT( i < pattern.size() && ( pattern[ i ] == '%' || pattern[ i ] == 's' ) );
      if ( pattern[ i ] == '%' ) {
         text += '%';
         continue;
      }
      ZEL_ASSERT( argument != arguments.end() );
      text += argument->str();
      ++argument;
   }
   ZEL_ASSERT( argument == arguments.end() );
   return text;
}

}   // namespace Zel
