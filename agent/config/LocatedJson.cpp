// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/LocatedJson.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>
#include <nlohmann/json.hpp>

#include "agent/config/Escaped.h"

namespace Agent {

namespace {

// Longest piece of the input that an error line repeats, in bytes.
constexpr std::size_t kShownLength = 80;
constexpr std::size_t kShownEnd = 24;
// Up to here all names of an object are compared with each other, beyond they are hashed.
constexpr std::size_t kFewMembers = 16;
// How far progress is apart.
constexpr std::ptrdiff_t kBytesPerLook = 64 * std::ptrdiff_t( 1024 );

bool
continuesCharacter( char c ) {
   return ( static_cast< unsigned char >( c ) & 0xc0 ) == 0x80;
}

// Walks the text and leaves its position where the handler below can see it, through every
// copy that the lexer makes.
class TextIterator {
 public:
   using iterator_category = std::input_iterator_tag;
   using value_type = char;
   using difference_type = std::ptrdiff_t;
   using pointer = const char*;
   using reference = const char&;

   TextIterator( const char* at, const char** consumed ) : at_( at ), consumed_( consumed ) {}

   reference operator*() const { return *at_; }
   TextIterator& operator++() {
      *consumed_ = ++at_;
      return *this;
   }
   TextIterator operator++( int ) {
      TextIterator before( *this );
      ++*this;
      return before;
   }
   bool operator==( const TextIterator& other ) const { return at_ == other.at_; }
   bool operator!=( const TextIterator& other ) const { return at_ != other.at_; }

 private:
   const char* at_;
   const char** consumed_;
};

// Plain ASCII of bounded length, for messages that quote bytes of a text that is broken.
std::string
asciiMessage( std::string_view message ) {
   std::string out;
   for ( const char c : message ) {
      const auto byte = static_cast< unsigned char >( c );
      if ( byte >= 0x20 && byte < 0x7f ) {
         out += c;
      } else {
         fmt::format_to( std::back_inserter( out ), "\\x{:02x}", byte );
      }
   }
   constexpr std::size_t kFront = 140;
   constexpr std::size_t kBack = 60;
   if ( out.size() > kFront + kBack ) {
      out = out.substr( 0, kFront ) + "..." + out.substr( out.size() - kBack );
   }
   return out;
}

// The parser's text without the name of its exception and its own idea of the position.
std::string_view
withoutPreamble( std::string_view what ) {
   const std::size_t position = what.find( "parse error at " );
   const std::size_t from = what.find( position == std::string_view::npos ? "] " : ": ",
                                       position == std::string_view::npos ? 0 : position );
   return from == std::string_view::npos ? what : what.substr( from + 2 );
}

class TreeBuilder : public nlohmann::json_sax< nlohmann::json > {
 public:
   TreeBuilder( std::string_view text, const char* const* consumed, const JsonProgress& progress )
       : begin_( text.data() ),
         counted_( text.data() ),
         told_( text.data() ),
         consumed_( consumed ),
         progress_( progress ) {}

   bool null() override { return scalar( std::monostate() ); }
   bool boolean( bool val ) override { return scalar( val ); }
   bool number_integer( number_integer_t val ) override { return scalar( val ); }
   bool number_unsigned( number_unsigned_t val ) override { return scalar( val ); }
   bool number_float( number_float_t, const string_t& s ) override {
      return scalar( JsonDecimal{ s } );
   }
   bool string( string_t& val ) override { return scalar( std::string( val ) ); }
   bool binary( binary_t& ) override { return false; }
   bool start_object( std::size_t ) override { return open( JsonObject() ); }
   bool start_array( std::size_t ) override { return open( JsonArray() ); }
   bool end_object() override { return close(); }
   bool end_array() override { return close(); }
   bool key( string_t& val ) override {
      std::get< JsonObject >( open_.back()->data ).push_back( { val, JsonValue(), line() } );
      return true;
   }
   bool parse_error( std::size_t, const std::string&,
                     const nlohmann::json::exception& ex ) override {
      return refuse( asciiMessage( withoutPreamble( ex.what() ) ) );
   }

   ParsedJson result() && {
      ParsedJson parsed;
      if ( error_.empty() ) {
         parsed.value = std::move( root_ );
      } else {
         parsed.error = std::move( error_ );
         parsed.errorLine = errorLine_;
      }
      return parsed;
   }

 private:
   // Line of the last character the lexer took. It reads one character past a number; a
   // newline there still belongs to the line that it ends.
   std::size_t line() {
      const char* last = *consumed_ == begin_ ? begin_ : *consumed_ - 1;
      line_ += static_cast< std::size_t >( std::count( counted_, last, '\n' ) );
      counted_ = last;
      return line_;
   }

   bool refuse( std::string message ) {
      error_ = std::move( message );
      errorLine_ = line();
      return false;
   }

   template < typename T >
   JsonValue& place( T&& data ) {
      JsonValue* at = &root_;
      if ( !open_.empty() ) {
         if ( auto* array = std::get_if< JsonArray >( &open_.back()->data ) ) {
            at = &array->emplace_back();
         } else {
            at = &std::get< JsonObject >( open_.back()->data ).back().value;
         }
      }
      at->data = std::forward< T >( data );
      at->line = line();
      if ( progress_ && *consumed_ - told_ >= kBytesPerLook ) {
         told_ = *consumed_;
         progress_( static_cast< std::size_t >( told_ - begin_ ) );
      }
      return *at;
   }

   template < typename T >
   bool scalar( T&& data ) {
      place( std::forward< T >( data ) );
      return true;
   }

   template < typename T >
   bool open( T&& data ) {
      if ( open_.size() == kMaxJsonDepth ) {
         return refuse( fmt::format( "nesting is deeper than {} levels", kMaxJsonDepth ) );
      }
      open_.push_back( &place( std::forward< T >( data ) ) );
      return true;
   }

   bool close() {
      open_.pop_back();
      return true;
   }

   const char* begin_;
   const char* counted_;
   const char* told_;
   const char* const* consumed_;
   const JsonProgress& progress_;
   std::size_t line_ = 1;
   JsonValue root_;
   // The containers being filled, outermost first. Each is the last child of the one before,
   // which takes no other child meanwhile, so the addresses hold.
   std::vector< JsonValue* > open_;
   std::string error_;
   std::size_t errorLine_ = 0;
};

ParsedJson
refused( std::string_view text, std::size_t offset, std::string error ) {
   ParsedJson parsed;
   parsed.error = std::move( error );
   parsed.errorLine =
      1 + static_cast< std::size_t >( std::count( text.data(), text.data() + offset, '\n' ) );
   return parsed;
}

bool
isIntegral( const JsonDecimal& decimal ) {
   return decimal.text.find_first_of( ".eE" ) == std::string::npos;
}

struct KindVisitor {
   std::string_view operator()( std::monostate ) const { return "null"; }
   std::string_view operator()( bool ) const { return "a boolean"; }
   std::string_view operator()( std::int64_t ) const { return "an integer number"; }
   std::string_view operator()( std::uint64_t ) const { return "an integer number"; }
   std::string_view operator()( const JsonDecimal& decimal ) const {
      return isIntegral( decimal ) ? "an integer number" : "a number with fraction or exponent";
   }
   std::string_view operator()( const std::string& ) const { return "a string"; }
   std::string_view operator()( const JsonArray& ) const { return "an array"; }
   std::string_view operator()( const JsonObject& ) const { return "an object"; }
};

struct ShownVisitor {
   std::string operator()( std::monostate ) const { return "null"; }
   std::string operator()( bool value ) const { return value ? "true" : "false"; }
   std::string operator()( std::int64_t value ) const { return std::to_string( value ); }
   std::string operator()( std::uint64_t value ) const { return std::to_string( value ); }
   std::string operator()( const JsonDecimal& decimal ) const { return shownText( decimal.text ); }
   std::string operator()( const std::string& text ) const {
      return fmt::format( "\"{}\"", shownText( text ) );
   }
   std::string operator()( const JsonArray& array ) const { return array.empty() ? "[]" : "[...]"; }
   std::string operator()( const JsonObject& object ) const {
      return object.empty() ? "{}" : "{...}";
   }
};

}   // namespace

bool
JsonValue::isInteger() const {
   const auto* decimal = std::get_if< JsonDecimal >( &data );
   return std::holds_alternative< std::uint64_t >( data ) ||
          std::holds_alternative< std::int64_t >( data ) || ( decimal && isIntegral( *decimal ) );
}

std::string_view
JsonValue::kind() const {
   return std::visit( KindVisitor(), data );
}

std::string
JsonValue::shown() const {
   return std::visit( ShownVisitor(), data );
}

ParsedJson
parseJson( std::string_view text, const JsonProgress& progress ) {
   if ( text.empty() ) {
      return refused( text, 0, "the text is empty" );
   }
   if ( text.substr( 0, 3 ) == "\xef\xbb\xbf" ) {
      return refused( text, 0, "the text starts with a byte order mark" );
   }
   // The lexer takes NUL for the end of its input and would not look at what follows.
   if ( const std::size_t nul = text.find( '\0' ); nul != std::string_view::npos ) {
      return refused( text, nul, "the text contains a NUL byte" );
   }
   const char* consumed = text.data();
   TreeBuilder builder( text, &consumed, progress );
   nlohmann::json::sax_parse( TextIterator( text.data(), &consumed ),
                              TextIterator( text.data() + text.size(), &consumed ), &builder );
   return std::move( builder ).result();
}

std::string_view
withoutModule( std::string_view name, std::string_view module ) {
   const bool qualified = !module.empty() && name.size() > module.size() &&
                          name[ module.size() ] == ':' && name.substr( 0, module.size() ) == module;
   return qualified ? name.substr( module.size() + 1 ) : name;
}

std::vector< DuplicateMember >
duplicateMembers( const JsonObject& object, std::string_view module ) {
   std::vector< DuplicateMember > duplicates;
   if ( object.size() <= kFewMembers ) {
      for ( std::size_t i = 1; i < object.size(); ++i ) {
         const std::string_view name = withoutModule( object[ i ].name, module );
         for ( std::size_t j = 0; j < i; ++j ) {
            if ( withoutModule( object[ j ].name, module ) == name ) {
               duplicates.push_back( { &object[ j ], &object[ i ] } );
               break;
            }
         }
      }
      return duplicates;
   }
   std::unordered_map< std::string_view, const JsonMember* > seen;
   for ( const JsonMember& member : object ) {
      const auto [ at, fresh ] = seen.emplace( withoutModule( member.name, module ), &member );
      if ( !fresh ) {
         duplicates.push_back( { at->second, &member } );
      }
   }
   return duplicates;
}

std::string
shownText( std::string_view text ) {
   if ( text.size() <= kShownLength ) {
      return escaped( text );
   }
   std::size_t front = kShownLength - kShownEnd;
   while ( front > 0 && continuesCharacter( text[ front ] ) ) {
      --front;
   }
   std::size_t back = text.size() - kShownEnd;
   while ( back < text.size() && continuesCharacter( text[ back ] ) ) {
      ++back;
   }
   return escaped( text.substr( 0, front ) ) + "..." + escaped( text.substr( back ) );
}

}   // namespace Agent
