// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Place.h"

#include <algorithm>

namespace Agent {

namespace {

std::string
keyText( const JsonValue& key ) {
   const std::string text = key.string() ? shownText( *key.string() ) : key.shown();
   const char quote = text.find( '\'' ) == std::string::npos ? '\'' : '"';
   return quote + text + quote;
}

const JsonMember*
memberOf( const JsonValue& value, std::string_view module, std::string_view name ) {
   const JsonObject* object = value.object();
   if ( !object ) {
      return nullptr;
   }
   const auto at = std::find_if( object->begin(), object->end(), [ & ]( const JsonMember& member ) {
      return member.name == name || withoutModule( member.name, module ) == name;
   } );
   return at == object->end() ? nullptr : &*at;
}

}   // namespace

Place::Place( const Place& parent, const JsonMember& member )
    : value_( &member.value ), parent_( &parent ), module_( parent.module_ ) {
   // In paths, as in the text, a module is named where it differs from the one above.
   name_ = withoutModule( member.name, parent.module_ );
   const std::size_t colon = name_.find( ':' );
   if ( colon != std::string_view::npos ) {
      module_ = name_.substr( 0, colon );
   }
}

Place::Place( const Place& parent, std::size_t position, const JsonValue& entry,
              std::string_view keyName )
    : value_( &entry ),
      parent_( &parent ),
      module_( parent.module_ ),
      isEntry_( true ),
      keyName_( keyName ),
      position_( position ) {}

std::optional< Place >
Place::member( std::string_view name ) const {
   const JsonMember* found = memberOf( *value_, module_, name );
   return found ? std::optional< Place >( Place( *this, *found ) ) : std::nullopt;
}

const JsonValue*
Place::valueBelow( std::string_view path ) const {
   const std::size_t slash = path.find( '/' );
   const std::optional< Place > next = member( path.substr( 0, slash ) );
   if ( !next || slash == std::string_view::npos ) {
      return next ? &next->value() : nullptr;
   }
   return next->valueBelow( path.substr( slash + 1 ) );
}

std::string
Place::path() const {
   std::string out;
   append( out, true );
   return out.empty() ? "/" : out;
}

std::string
Place::pattern() const {
   std::string out;
   append( out, false );
   return out.empty() ? "/" : out;
}

void
Place::append( std::string& out, bool withKeys ) const {
   if ( !parent_ ) {
      return;
   }
   parent_->append( out, withKeys );
   if ( !isEntry_ ) {
      out += '/' + shownText( name_ );
      return;
   }
   if ( !withKeys ) {
      return;
   }
   const JsonMember* key = memberOf( *value_, module_, keyName_ );
   if ( key && key->value.isScalar() ) {
      out += '[' + std::string( keyName_ ) + '=' + keyText( key->value ) + ']';
   } else {
      out += '[' + std::to_string( position_ + 1 ) + ']';
   }
}

}   // namespace Agent
