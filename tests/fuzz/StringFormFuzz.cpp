// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// String forms: a text that a registered value type takes is printed and read back as the same
// value; all others are refused with the declared errors. Every text is given to every type.
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/support/GenericSamples.h"

namespace {

using Fuzz::require;
using Zel::Value;

std::string
printed( const Value& value ) {
   std::string text = Zel::zelStrep( value ).str();
   if ( Fuzz::planted() && text.size() > 2 && text.ends_with( "77" ) ) {
      text.pop_back();
   }
   return text;
}

std::optional< Value >
parsed( Zel::TypeHandle type, std::string_view text ) {
   try {
      return Zel::zelParse( type, text );
   } catch ( const Zel::ParseException& error ) {
      require( error.offset() <= text.size(), "an offset behind the text" );
   } catch ( const Zel::RangeException& error ) {
      require( !std::string_view( error.what() ).empty(), "a range error without a text" );
   }
   return std::nullopt;
}

void
checkSame( const Value& first, const Value& second ) {
   const Zel::ValueHooks& hooks = *first.type().record()->hooks;
   const void* const a = Zel::View( first ).object;
   const void* const b = Zel::View( second ).object;
   require( hooks.equal( a, b ), "what was read back differs" );
   require( hooks.hash( a, 5 ) == hooks.hash( b, 5 ), "equal values, unequal hashes" );
   require( hooks.isDefault( a ) == hooks.isDefault( b ), "equal values, one of them default" );
   require( !hooks.less || ( !hooks.less( a, b ) && !hooks.less( b, a ) ),
            "equal values, one of them less" );
}

void
check( Zel::TypeHandle type, std::string_view text ) {
   const std::optional< Value > first = parsed( type, text );
   if ( !first ) {
      return;
   }
   const std::string form = printed( *first );
   const std::optional< Value > second = parsed( type, form );
   require( second.has_value(), "what was printed is not read" );
   checkSame( *first, *second );
   require( printed( *second ) == form, "equal values are printed differently" );
}

}   // namespace

extern "C" int
LLVMFuzzerTestOneInput( const std::uint8_t* data, std::size_t size ) {
   const std::string_view text( reinterpret_cast< const char* >( data ), size );
   static const std::vector< Zel::TypeHandle > types = TestSupport::registeredTypes();
   for ( const Zel::TypeHandle type : types ) {
      if ( type.record()->hooks ) {
         check( type, text );
      }
   }
   return 0;
}
