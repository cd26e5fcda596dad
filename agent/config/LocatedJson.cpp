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

// What the lexer has taken of the text. A number that is larger than a double ends the lexer's
// work; when `shortened`, digits that would make one are kept from it. What stands in the text is
// known here.
class Feed {
 public:
   Feed( std::string_view text, bool shortened )
       : begin_( text.data() ),
         at_( text.data() ),
         end_( text.data() + text.size() ),
         shortened_( shortened ) {}

   const char* at() const { return at_; }

   static bool isOfNumber( char c ) {
      return isDigit( c ) || c == '+' || c == '-' || c == '.' || c == 'e' || c == 'E';
   }

   // Goes on from `at` and gives the next character.
   const char* next( const char* at ) {
      at_ = at + 1;
      if ( shortened_ ) {
         shorten( *at );
      }
      return at_;
   }

   // The number that the lexer has just taken, as it stands in the text. Unless that is the end of
   // the text, the lexer has taken one character more.
   std::string number() const {
      const char* end = at_ != begin_ && isOfNumber( at_[ -1 ] ) ? at_ : at_ - 1;
      const char* begin = end;
      while ( begin != begin_ && isOfNumber( begin[ -1 ] ) ) {
         --begin;
      }
      return std::string( begin, end );
   }

 private:
   static constexpr std::size_t kMostDigits = 200;

   static bool isDigit( char c ) { return c >= '0' && c <= '9'; }

   // Passes over digits behind `c`.
   void shorten( char c ) {
      if ( inString_ ) {
         inString_ = escaped_ || c != '"';
         escaped_ = !escaped_ && c == '\\';
         return;
      }
      inString_ = c == '"';
      exponent_ = c == 'e' || c == 'E' || ( exponent_ && ( isDigit( c ) || c == '+' || c == '-' ) );
      digits_ = isDigit( c ) ? digits_ + 1 : 0;
      while ( digits_ >= ( exponent_ ? 1 : kMostDigits ) && at_ != end_ && isDigit( *at_ ) ) {
         ++at_;
      }
   }

   const char* begin_;
   const char* at_;
   const char* end_;
   bool shortened_;
   bool inString_ = false;
   bool escaped_ = false;
   bool exponent_ = false;
   // Digits of the current run.
   std::size_t digits_ = 0;
};

// Feeds the lexer, through every copy that it makes.
class TextIterator {
 public:
   using iterator_category = std::input_iterator_tag;
   using value_type = char;
   using difference_type = std::ptrdiff_t;
   using pointer = const char*;
   using reference = const char&;

   TextIterator( const char* at, Feed& feed ) : at_( at ), feed_( &feed ) {}

   reference operator*() const { return *at_; }
   TextIterator& operator++() {
      at_ = feed_->next( at_ );
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
   Feed* feed_;
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

ParsedJson
refused( std::string_view text, std::size_t offset, std::string error ) {
   ParsedJson parsed;
   parsed.error = std::move( error );
   const std::string_view before = text.substr( 0, offset );
   parsed.errorLine =
      1 + static_cast< std::size_t >( std::count( before.begin(), before.end(), '\n' ) );
   const std::size_t newline = before.rfind( '\n' );
   const std::string_view line =
      before.substr( newline == std::string_view::npos ? 0 : newline + 1 );
   parsed.errorColumn =
      1 + static_cast< std::size_t >( std::count_if(
             line.begin(), line.end(), []( char c ) { return !continuesCharacter( c ); } ) );
   return parsed;
}

class TreeBuilder : public nlohmann::json_sax< nlohmann::json > {
 public:
   TreeBuilder( std::string_view text, const Feed& feed, const JsonProgress& progress )
       : text_( text ),
         counted_( text.data() ),
         told_( text.data() ),
         feed_( feed ),
         progress_( progress ) {}

   bool null() override { return scalar( std::monostate() ); }
   bool boolean( bool val ) override { return scalar( val ); }
   bool number_integer( number_integer_t val ) override { return scalar( val ); }
   bool number_unsigned( number_unsigned_t val ) override { return scalar( val ); }
   bool number_float( number_float_t, const string_t& ) override {
      return scalar( JsonDecimal{ feed_.number() } );
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
      constexpr int kNumberOverflow = 406;
      overflow_ = ex.id == kNumberOverflow;
      const std::string message = asciiMessage( withoutPreamble( ex.what() ) );
      // The number itself, not what the lexer had to look at to find its end.
      const bool number = message.find( "unexpected number literal" ) != std::string::npos;
      return refuse( message, number && !Feed::isOfNumber( text_[ last() ] ) ? 1 : 0 );
   }

   // Whether a number was larger than a double.
   bool overflow() const { return overflow_; }

   ParsedJson result() && {
      ParsedJson parsed;
      if ( error_.empty() ) {
         parsed.value = std::move( root_ );
      } else {
         parsed = refused( text_, errorAt_, std::move( error_ ) );
      }
      return parsed;
   }

 private:
   // Offset of the last character that the lexer took.
   std::size_t last() const {
      const auto taken = static_cast< std::size_t >( feed_.at() - text_.data() );
      return taken == 0 ? 0 : taken - 1;
   }

   // Line of that character. The lexer reads one character past a number; a newline there still
   // belongs to the line that it ends.
   std::size_t line() {
      const char* const at = text_.data() + last();
      line_ += static_cast< std::size_t >( std::count( counted_, at, '\n' ) );
      counted_ = at;
      return line_;
   }

   // The error is `back` characters before the last one.
   bool refuse( std::string message, std::size_t back = 0 ) {
      error_ = std::move( message );
      errorAt_ = last() - back;
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
      if ( progress_ && feed_.at() - told_ >= kBytesPerLook ) {
         told_ = feed_.at();
         progress_( static_cast< std::size_t >( told_ - text_.data() ) );
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

   std::string_view text_;
   const char* counted_;
   const char* told_;
   const Feed& feed_;
   const JsonProgress& progress_;
   std::size_t line_ = 1;
   JsonValue root_;
   // The containers being filled, outermost first. Each is the last child of the one before,
   // which takes no other child meanwhile, so the addresses hold.
   std::vector< JsonValue* > open_;
   std::string error_;
   std::size_t errorAt_ = 0;
   bool overflow_ = false;
};

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
   for ( const bool shortened : { false, true } ) {
      Feed feed( text, shortened );
      TreeBuilder builder( text, feed, progress );
      nlohmann::json::sax_parse( TextIterator( text.data(), feed ),
                                 TextIterator( text.data() + text.size(), feed ), &builder );
      if ( !builder.overflow() ) {
         return std::move( builder ).result();
      }
   }
   return refused( text, 0, "a number is too large" );
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
