// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Document.h"

#include <algorithm>
#include <limits>

#include <fmt/format.h>

#include "agent/config/Escaped.h"

namespace Agent {

namespace {

constexpr std::string_view kVlanIds = "1..4094";

std::string
joined( std::span< const std::string_view > names ) {
   std::string out;
   for ( const std::string_view name : names ) {
      out += ( out.empty() ? "" : ", " ) + std::string( name );
   }
   return out;
}

}   // namespace

void
Document::finding( const Place& where, std::string problem, std::string_view allowed ) {
   finding( where, where.value().shown(), std::move( problem ), allowed );
}

void
Document::finding( const Place& where, std::string value, std::string problem,
                   std::string_view allowed ) {
   findings_.push_back( { file_, where.value().line, where.path(), std::move( value ),
                          std::move( problem ), std::string( allowed ) } );
}

void
Document::missing( const Place& parent, std::string_view leaf, std::string_view allowed ) {
   std::string path = parent.path() + '/' + std::string( leaf );
   findings_.push_back(
      { file_, parent.value().line, std::move( path ), "", "is missing", std::string( allowed ) } );
}

void
Document::wrongType( const Place& where, std::string_view allowed ) {
   finding( where, fmt::format( "has the wrong type, {}", where.value().kind() ), allowed );
}

void
Document::unused( const Place& where, std::string_view reason, std::size_t count ) {
   if ( count == 0 ) {
      return;
   }
   const auto [ at, fresh ] = unusedAt_.try_emplace( { where.pattern(), reason }, unused_.size() );
   if ( fresh ) {
      unused_.push_back( { at->first.first, 0, std::string( reason ) } );
   }
   unused_[ at->second ].count += count;
}

void
Document::unusedBelow( const Place& where ) {
   if ( const JsonObject* object = where.value().object(); object && !object->empty() ) {
      Members( *this, where ).finish();
      return;
   }
   const JsonArray* array = where.value().array();
   if ( !array || std::all_of( array->begin(), array->end(),
                               []( const JsonValue& item ) { return item.isScalar(); } ) ) {
      unused( where, kNotUsed );
      return;
   }
   for ( std::size_t i = 0; i < array->size(); ++i ) {
      unusedBelow( Place( where, i, ( *array )[ i ] ) );
   }
}

std::uint16_t
Document::vlanId( const Place& leaf ) {
   if ( !leaf.value().isInteger() ) {
      wrongType( leaf, "1..4094, a JSON number without fraction and exponent" );
      return 0;
   }
   const std::uint64_t* number = leaf.value().unsignedInteger();
   if ( !number || *number < kMinVlanId || *number > kMaxVlanId ) {
      finding( leaf, "is not allowed", kVlanIds );
      return 0;
   }
   return static_cast< std::uint16_t >( *number );
}

std::optional< std::uint32_t >
Document::unsigned32( const Place& leaf ) {
   if ( !leaf.value().isInteger() ) {
      wrongType( leaf, "0..4294967295, a JSON number without fraction and exponent" );
      return std::nullopt;
   }
   const std::uint64_t* number = leaf.value().unsignedInteger();
   if ( !number || *number > std::numeric_limits< std::uint32_t >::max() ) {
      finding( leaf, "is not allowed", "0..4294967295" );
      return std::nullopt;
   }
   return static_cast< std::uint32_t >( *number );
}

std::optional< bool >
Document::boolean( const Place& leaf ) {
   if ( const bool* value = leaf.value().boolean() ) {
      return *value;
   }
   wrongType( leaf, "true or false" );
   return std::nullopt;
}

std::optional< std::string >
Document::string( const Place& leaf ) {
   if ( const std::string* value = leaf.value().string() ) {
      return *value;
   }
   wrongType( leaf, "a JSON string" );
   return std::nullopt;
}

std::optional< std::string >
Document::name( const Place& leaf ) {
   std::optional< std::string > value = string( leaf );
   if ( value && ( value->empty() || hasControls( *value ) ) ) {
      finding( leaf, "is not allowed",
               "a name of one or more characters without control characters" );
      return std::nullopt;
   }
   return value;
}

std::optional< std::string_view >
Document::enumeration( const Place& leaf, std::span< const std::string_view > names ) {
   const std::string* value = leaf.value().string();
   if ( !value ) {
      wrongType( leaf, joined( names ) );
      return std::nullopt;
   }
   const auto at = std::find( names.begin(), names.end(), *value );
   if ( at == names.end() ) {
      finding( leaf, "is unknown", joined( names ) );
      return std::nullopt;
   }
   return *at;
}

std::optional< std::string_view >
Document::identity( const Place& leaf, const IdentitySet& identities ) {
   const std::string* value = leaf.value().string();
   if ( !value ) {
      wrongType( leaf, identities.allowed );
      return std::nullopt;
   }
   const std::string_view name = withoutModule( *value, identities.module );
   const bool hasPrefix = name.size() != value->size();
   const auto at = std::find( identities.names.begin(), identities.names.end(), name );
   if ( at == identities.names.end() ) {
      finding( leaf, "is unknown", identities.allowed );
      return std::nullopt;
   }
   if ( !hasPrefix && leaf.module() != identities.module ) {
      finding( leaf, "lacks its module name", fmt::format( "\"{}:{}\"", identities.module, name ) );
      return std::nullopt;
   }
   return *at;
}

std::vector< Finding >
Document::takeFindings() {
   std::stable_sort( findings_.begin(), findings_.end(),
                     []( const Finding& a, const Finding& b ) { return a.line < b.line; } );
   return std::move( findings_ );
}

Members::Members( Document& document, const Place& place )
    : document_( document ), place_( place ), object_( place.value().object() ) {
   if ( !object_ ) {
      document.wrongType( place, "an object" );
      return;
   }
   taken_.resize( object_->size() );
   for ( const auto& [ first, again ] : duplicateMembers( *object_, place.module() ) ) {
      document.finding(
         Place( place, *again ),
         fmt::format( "is given twice, on lines {} and {}", first->line, again->line ),
         "each member once" );
      taken_[ static_cast< std::size_t >( again - object_->data() ) ] = true;
   }
}

std::optional< Place >
Members::take( std::string_view name ) {
   if ( !object_ ) {
      return std::nullopt;
   }
   const std::size_t colon = name.find( ':' );
   for ( std::size_t i = 0; i < object_->size(); ++i ) {
      const JsonMember& member = ( *object_ )[ i ];
      if ( withoutModule( member.name, place_.module() ) == name ) {
         taken_[ i ] = true;
         return Place( place_, member );
      }
      // Taken for an unknown member it would be passed over, and its tables with it.
      if ( colon != std::string_view::npos && !place_.module().empty() &&
           member.name == name.substr( colon + 1 ) ) {
         taken_[ i ] = true;
         document_.finding( Place( place_, member ), "lacks its module name",
                            fmt::format( "\"{}\"", name ) );
      }
   }
   return std::nullopt;
}

std::optional< Place >
Members::require( std::string_view name, std::string_view allowed ) {
   std::optional< Place > member = take( name );
   if ( !member && object_ ) {
      document_.missing( place_, name, allowed );
   }
   return member;
}

void
Members::finish() {
   for ( std::size_t i = 0; object_ && i < object_->size(); ++i ) {
      if ( !taken_[ i ] ) {
         document_.unusedBelow( Place( place_, ( *object_ )[ i ] ) );
      }
   }
}

bool
KeyRegister::add( Document& document, const Place& leaf, const std::string& key ) {
   const auto [ at, fresh ] = lines_.try_emplace( key, leaf.value().line );
   if ( !fresh ) {
      document.finding( leaf, fmt::format( "is already used on line {}", at->second ),
                        "each key once" );
   }
   return fresh;
}

const JsonValue*
keyOfEntry( const JsonValue& entry, std::string_view module, std::string_view keyName ) {
   const JsonObject* object = entry.object();
   if ( !object ) {
      return nullptr;
   }
   const auto at = std::find_if( object->begin(), object->end(), [ & ]( const JsonMember& member ) {
      return withoutModule( member.name, module ) == keyName;
   } );
   return at != object->end() && at->value.isScalar() ? &at->value : nullptr;
}

}   // namespace Agent
