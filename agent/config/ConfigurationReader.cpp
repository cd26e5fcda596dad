// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/ConfigurationReader.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <memory>
#include <span>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "agent/config/Document.h"
#include "agent/config/Ieee8021qReader.h"
#include "agent/config/Ieee8021qSchema.h"
#include "agent/config/LocatedJson.h"
#include "agent/config/OpenConfigReader.h"
#include "agent/config/OpenConfigSchema.h"

namespace Agent {

namespace {

constexpr std::size_t kMaxTextSize = std::size_t( 256 ) * 1024 * 1024;

constexpr std::string_view kOpenConfigMembers[] = { "openconfig-interfaces:interfaces" };
constexpr std::string_view kIeeeMembers[] = { "ietf-interfaces:interfaces",
                                              "ieee802-dot1q-bridge:bridges" };

struct CloseFile {
   void operator()( std::FILE* file ) const { std::fclose( file ); }
};

ReadResult
unusable( const std::string& file, std::size_t line, std::string problem, std::string allowed,
          std::size_t column = 0 ) {
   ReadResult result;
   result.unusable = true;
   result.findings.push_back(
      { file, line, column, "", "", std::move( problem ), std::move( allowed ) } );
   return result;
}

// Reads all of `input`; an error text, empty when there is none.
std::string
readAll( std::FILE* input, std::string& text, const ReadProgress& progress ) {
   constexpr std::size_t kChunk = std::size_t( 256 ) * 1024;
   for ( ;; ) {
      const std::size_t before = text.size();
      text.resize( before + kChunk );
      const std::size_t got = std::fread( text.data() + before, 1, kChunk, input );
      const int error = errno;
      text.resize( before + got );
      if ( progress ) {
         progress( text.size(), 0 );
      }
      if ( text.size() > kMaxTextSize ) {
         return "is larger than 256 MiB";
      }
      if ( got < kChunk ) {
         return std::ferror( input ) ? "cannot be read: " + std::generic_category().message( error )
                                     : std::string();
      }
   }
}

bool
hasAny( const JsonObject& object, std::span< const std::string_view > names ) {
   return std::any_of( object.begin(), object.end(), [ & ]( const JsonMember& member ) {
      return std::find( names.begin(), names.end(), member.name ) != names.end();
   } );
}

}   // namespace

ReadResult
readConfiguration( const std::string& path, std::uint64_t maxMappings,
                   const ReadProgress& progress ) {
   const bool standardInput = path == "-";
   const std::string file = standardInput ? "<stdin>" : path;
   std::unique_ptr< std::FILE, CloseFile > opened;
   if ( !standardInput ) {
      opened.reset( std::fopen( path.c_str(), "rbe" ) );
      if ( !opened ) {
         return unusable( file, 0, "cannot be opened: " + std::generic_category().message( errno ),
                          "" );
      }
   }
   std::string text;
   const std::string error = readAll( standardInput ? stdin : opened.get(), text, progress );
   if ( !error.empty() ) {
      return unusable( file, 0, error, "" );
   }
   return readConfigurationText( file, text, maxMappings, progress );
}

ReadResult
readConfigurationText( const std::string& file, std::string_view text, std::uint64_t maxMappings,
                       const ReadProgress& progress ) {
   const ParsedJson json = parseJson( text, [ & ]( std::size_t bytes ) {
      if ( progress ) {
         progress( bytes, text.size() );
      }
   } );
   if ( !json.value ) {
      return unusable( file, json.errorLine, "not valid JSON: " + json.error,
                       "JSON in UTF-8 as RFC 8259 defines it", json.errorColumn );
   }
   const JsonValue& root = *json.value;
   const std::string formats = "a top-level member openconfig-interfaces:interfaces, or "
                               "ietf-interfaces:interfaces and ieee802-dot1q-bridge:bridges";
   const JsonObject* object = root.object();
   if ( !object ) {
      return unusable( file, root.line, "unknown format: the text is " + std::string( root.kind() ),
                       "an object with " + formats );
   }
   const bool openConfig = hasAny( *object, kOpenConfigMembers );
   const bool ieee = hasAny( *object, kIeeeMembers );
   if ( openConfig == ieee ) {
      return unusable( file, root.line,
                       openConfig ? "ambiguous format: members of both formats stand at the top"
                                  : "unknown format: no known member stands at the top",
                       formats );
   }
   Document document( file );
   const Place top( root );
   checkDocument( document, openConfig ? openConfigSchema() : ieee8021qSchema(), top );
   const std::uint64_t mappings =
      openConfig ? countOpenConfigMappings( top ) : countIeee8021qMappings( top );
   Configuration configuration;
   configuration.format =
      openConfig ? ConfigurationFormat::openConfig : ConfigurationFormat::ieee8021q;
   if ( mappings > maxMappings ) {
      document.finding(
         top, "", fmt::format( "asks for {} mappings", mappings ),
         fmt::format( "at most {}; --max-mappings sets another limit", maxMappings ) );
   } else {
      configuration.ports =
         openConfig ? readOpenConfig( document, top ) : readIeee8021q( document, top );
   }
   configuration.unused = document.takeUnused();
   ReadResult result;
   result.findings = document.takeFindings();
   if ( result.findings.empty() ) {
      result.configuration = std::move( configuration );
   }
   return result;
}

}   // namespace Agent
