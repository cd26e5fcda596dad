// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Place.h"

namespace Agent {

namespace {

std::string
keyText( const JsonValue& key ) {
   const std::string text = key.string() ? shownText( *key.string() ) : key.shown();
   const char quote = text.find( '\'' ) == std::string::npos ? '\'' : '"';
   return quote + text + quote;
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
              std::string_view keyName, const JsonValue* key )
    : value_( &entry ),
      parent_( &parent ),
      module_( parent.module_ ),
      isEntry_( true ),
      keyName_( keyName ),
      key_( key ),
      position_( position ) {}

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
   } else if ( withKeys && key_ ) {
      out += '[' + std::string( keyName_ ) + '=' + keyText( *key_ ) + ']';
   } else if ( withKeys ) {
      out += '[' + std::to_string( position_ + 1 ) + ']';
   }
}

}   // namespace Agent
