// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PelrecMessage: one message of the binary trace, declared where it is written.
//
//    static constinit Kirlog::PelrecMessage< 5, "i" > started( "started with %s interfaces" );
//    started( count );
//
//    if ( started.enabled() ) {          // when an argument costs something
//       started( countOf( interfaces ) );
//    }
//
// Level, type string and format are checked by the compiler, and so are the arguments of every
// call; nothing is left to be refused at run time. Arguments that are text share what room the
// others leave in the record; what does not fit is cut, and shown so by the reader.
//
// Cost       Disabled: one load, one bit test. The arguments of a call are evaluated before it,
//            so costly ones go behind enabled(). Enabled: see Pelrec/Trace.h; the first call
//            enters the format into the trace's table.
// Threads    Any.
// Throws     What a converter throws; the record is then not written.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string_view>

#include "Kirlog/PelrecConverter.h"
#include "Pelrec/Image.h"
#include "Pelrec/Trace.h"
#include "Zel/Export.h"

namespace Kirlog {

// A type string as a template argument: one letter per argument, see PelrecConverter.h.
template < std::size_t size >
struct PelrecTypes {
   char text[ size ] = {};

   // Not explicit: a literal in the template argument list is meant to become one.
   consteval PelrecTypes( const char ( &literal )[ size ] ) { std::copy_n( literal, size, text ); }
   constexpr std::string_view view() const { return { text, size - 1 }; }
};

// What is wrong with a message, empty if nothing is.
constexpr std::string_view
pelrecMessageFault( unsigned level, std::string_view format, std::string_view types ) {
   if ( level >= Pelrec::kLevels ) {
      return "level is not 0 to 9";
   }
   if ( format.empty() || format.size() > Pelrec::kMaxFormatBytes ) {
      return "format is not 1 to 120 bytes long";
   }
   if ( types.size() > Pelrec::kMaxArguments ) {
      return "more than 4 arguments";
   }
   if ( types.find_first_not_of( "ids" ) != std::string_view::npos ) {
      return "type letter is not i, d or s";
   }
   std::size_t places = 0;
   for ( std::size_t at = format.find( "%s" ); at != std::string_view::npos;
         at = format.find( "%s", at + 2 ) ) {
      ++places;
   }
   return places == types.size() ? "" : "type string is not one letter for each %s";
}

// The least that the arguments of a type string take: a number, or the length of a text.
constexpr std::size_t
pelrecLeastBytes( std::string_view types ) {
   std::size_t bytes = 0;
   for ( const char letter : types ) {
      bytes += letter == 's' ? 1 : sizeof( std::uint64_t );
   }
   return bytes;
}

// Whether a message with this type string takes arguments of these types.
template < PelrecTypes types, typename... Args >
consteval bool
pelrecTypesFit() {
   std::size_t index = 0;
   return sizeof...( Args ) == types.view().size() &&
          ( pelrecLetterFits< Args >( types.text[ index++ ] ) && ... );
}

// A format and, once a record was written with it, its id in the process's trace.
class ZEL_EXPORT PelrecFormat {
 public:
   // `text` is a literal: it lives as long as the process.
   explicit consteval PelrecFormat( const char* text ) : text_( text ) {}

   std::uint32_t id() {
      const std::uint32_t id = id_.load( std::memory_order_relaxed );
      return id != kNoId ? id : enter();
   }

 private:
   static constexpr std::uint32_t kNoId = Pelrec::kMaxFormats;

   std::uint32_t enter();

   const char* text_;
   std::atomic< std::uint32_t > id_ = kNoId;
};

template < unsigned level, PelrecTypes types = "" >
class PelrecMessage {
 public:
   explicit consteval PelrecMessage( const char* format ) : format_( format ) {
      if ( !pelrecMessageFault( level, format, types.view() ).empty() ) {
         throw std::invalid_argument( "see pelrecMessageFault" );
      }
   }

   bool enabled() const { return Pelrec::trace().enabled( level ); }

   // Writes a record, if the level is enabled. One argument for each letter of the type string.
   template < typename... Args >
   void operator()( const Args&... args ) requires( pelrecTypesFit< types, Args... >() ) {
      if ( !enabled() ) {
         return;
      }
      Pelrec::Arguments record;
      [[maybe_unused]] std::size_t index = 0;
      ( put( record, ++index, PelrecConverterOf< Args >::convert( args ) ), ... );
      Pelrec::trace().write( level, format_.id(), record );
   }

 private:
   // `index` is that of the argument behind this one.
   template < typename Raw >
   static void put( Pelrec::Arguments& record, std::size_t index, const Raw& raw ) {
      if constexpr ( std::is_arithmetic_v< Raw > ) {
         record.put( raw );
      } else {
         record.put( std::string_view( raw ), pelrecLeastBytes( types.view().substr( index ) ) );
      }
   }

   PelrecFormat format_;
};

}   // namespace Kirlog
