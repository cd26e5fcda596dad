// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Document: what the readers of both formats share. It collects findings and unused members
// and knows how RFC 7951 writes the leaf types that they look at.
//
// Ownership  Findings and unused members are the document's until taken; nothing else is kept.
// Threads    One thread.
// Errors     Each check reports what is wrong as a finding and then returns nothing, so that
//            a reader can go on and find the rest.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "agent/config/Finding.h"
#include "agent/config/LocatedJson.h"
#include "agent/config/Place.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

// Reasons of unused members.
constexpr std::string_view kNotUsed = "not used by this agent";
constexpr std::string_view kCheckedOnly = "checked, has no effect";

// The identities that a leaf may name.
struct IdentitySet {
   // Defines the identities; its prefix may be left out in leaves of the same module.
   std::string_view module;
   std::span< const std::string_view > names;
   // What a finding says is allowed.
   std::string_view allowed;
};

class Document {
 public:
   // `file` is how findings name the input.
   explicit Document( std::string file ) : file_( std::move( file ) ) {}

   // --- collecting

   // The value at `where` is wrong.
   void finding( const Place& where, std::string problem, std::string_view allowed );
   // As above, and `value` says in its own words what was found.
   void finding( const Place& where, std::string value, std::string problem,
                 std::string_view allowed );
   // The object at `parent` lacks `leaf`, a member name or a path of them.
   void missing( const Place& parent, std::string_view leaf, std::string_view allowed );
   void wrongType( const Place& where, std::string_view allowed );

   // `count` members of the kind that stands at `where` have no effect.
   void unused( const Place& where, std::string_view reason, std::size_t count = 1 );
   // All leaves below `where` have no effect; an empty object or array counts as a leaf.
   void unusedBelow( const Place& where );

   // --- leaves

   // 1..4094, a JSON number; 0 after a finding.
   std::uint16_t vlanId( const Place& leaf );
   // The same of a leaf that need not be there; 0 then.
   std::uint16_t vlanId( const std::optional< Place >& leaf ) {
      return leaf ? vlanId( *leaf ) : std::uint16_t( 0 );
   }
   // 0..4294967295, a JSON number.
   std::optional< std::uint32_t > unsigned32( const Place& leaf );
   std::optional< bool > boolean( const Place& leaf );
   std::optional< std::string > string( const Place& leaf );
   // A string that can name something in a line of output: not empty, no control characters.
   std::optional< std::string > name( const Place& leaf );
   // One of `names`, or nothing.
   std::optional< std::string_view > enumeration( const Place& leaf,
                                                  std::span< const std::string_view > names );
   // The identity without prefix.
   std::optional< std::string_view > identity( const Place& leaf, const IdentitySet& identities );

   // --- results

   // Ascending by line.
   std::vector< Finding > takeFindings();
   std::vector< UnusedMember > takeUnused() { return std::move( unused_ ); }

 private:
   std::string file_;
   std::vector< Finding > findings_;
   std::vector< UnusedMember > unused_;
   std::map< std::pair< std::string, std::string_view >, std::size_t > unusedAt_;
};

// The members of one object, each to be taken by the reader or left over. What finish() finds
// left over counts as unused, so nothing goes by unseen.
class Members {
 public:
   // Reports a value that is no object, and members that stand twice. Keeps `place`.
   Members( Document& document, const Place& place );

   // The member, or nothing. Plain names are of the place's own module and are found with
   // its prefix too; a name of another module is given, and must stand, with its prefix.
   std::optional< Place > take( std::string_view name );
   // As take(); its absence is a finding.
   std::optional< Place > require( std::string_view name, std::string_view allowed );

   void finish();

   bool isObject() const { return object_ != nullptr; }
   const Place& place() const { return place_; }

 private:
   Document& document_;
   const Place& place_;
   const JsonObject* object_;
   std::vector< bool > taken_;
};

// Where each key of a list stood first.
class KeyRegister {
 public:
   // Whether `key`, read from `leaf`, is the first of its kind; a finding when it is not.
   bool add( Document& document, const Place& leaf, const std::string& key );

 private:
   std::map< std::string, std::size_t > lines_;
};

// The value of the leaf `keyName` of a list entry, null where there is no scalar of that name.
const JsonValue* keyOfEntry( const JsonValue& entry, std::string_view module,
                             std::string_view keyName );

// The entries of the list at `list`, each as a place that is named by the leaf `keyName`.
// Reports a value that is no array and calls `each( Place )`.
template < typename Each >
void
forEachEntry( Document& document, const Place& list, std::string_view keyName, const Each& each ) {
   const JsonArray* entries = list.value().array();
   if ( !entries ) {
      document.wrongType( list, "an array, one object for each entry" );
      return;
   }
   for ( std::size_t i = 0; i < entries->size(); ++i ) {
      const JsonValue& entry = ( *entries )[ i ];
      each( Place( list, i, entry, keyName, keyOfEntry( entry, list.module(), keyName ) ) );
   }
}

}   // namespace Agent
