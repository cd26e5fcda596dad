// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// JsonWriter: JSON that goes to a stream as it is made, so that no tree of a large document is
// ever held, and none has to be taken down when memory runs out.
#pragma once

#include <concepts>
#include <cstddef>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace Agent {

class JsonWriter {
 public:
   enum class Layout { Line, Indented };

   /// `out` outlives the writer.
   JsonWriter( std::ostream& out, Layout layout ) : out_( out ), layout_( layout ) {}

   /// An object of the members that `fill()` writes.
   template < class Fill >
   void object( const Fill& fill ) {
      open( '{' );
      fill();
      close( '}' );
   }
   /// An array of the values that `fill()` writes.
   template < class Fill >
   void array( const Fill& fill ) {
      open( '[' );
      fill();
      close( ']' );
   }

   /// The name of the member whose value is written next; the caller sees to the order.
   void key( std::string_view name );

   void value( std::string_view text );
   void value( const char* text ) { value( std::string_view( text ) ); }
   void value( const std::string& text ) { value( std::string_view( text ) ); }
   void value( bool flag ) { plain( flag ? "true" : "false" ); }
   void null() { plain( "null" ); }
   template < std::unsigned_integral Number >
   void value( Number number ) {
      plain( std::to_string( number ) );
   }
   /// null where there is none.
   template < class T >
   void value( const std::optional< T >& some ) {
      if ( some ) {
         value( *some );
      } else {
         null();
      }
   }

   template < class T >
   void member( std::string_view name, const T& content ) {
      key( name );
      value( content );
   }

 private:
   void open( char bracket );
   void close( char bracket );
   // What stands between the value before and what comes now.
   void separate();
   void newLine();
   void plain( std::string_view text );

   std::ostream& out_;
   const Layout layout_;
   std::size_t depth_ = 0;
   bool first_ = true;   // nothing stands in the innermost bracket yet
   bool afterKey_ = false;
};

}   // namespace Agent
