// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Trace: rings of binary records, one ring per level, the oldest record overwritten.
//
// A record is its time, a format's id and raw arguments; the text is made by the Reader alone.
// The process has one trace, `trace()`. Its image lies in ordinary memory until `fileIs` moves
// it into a mapped file; from then on the last records survive the end of the process, an abort
// included. Messages with typed arguments are written through Kirlog::PelrecMessage.
//
// Ownership  The memory handed to the constructor is borrowed. A mapped file stays mapped after
//            the Trace is gone: the destructors that run last may still be traced.
// Cost       A disabled level: one load, one bit test. A record: no allocation, no system call but
//            the clock's once per millisecond or two, and the lock that nobody else holds.
// Threads    Any; writers take turns. Readers may be anywhere and read at any time, see Image.h, but
//            not from an image that a later fileIs replaced. A forked child shares a mapped file
//            with its parent and needs a fileIs of its own; one of a process with threads may only
//            exec, for a lock may be held.
// Throws     Only fileIs.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <mutex>
#include <span>
#include <string>
#include <string_view>

#include "Pelrec/Clock.h"
#include "Pelrec/Image.h"
#include "Zel/Export.h"

namespace Pelrec {

// The arguments of one record, packed as the image wants them.
// Requires: at most kMaxArguments calls of the put functions, kPayloadBytes bytes in total.
class Arguments {
 public:
   void put( std::int64_t value ) { putNumber( 'i', value ); }
   void put( std::uint64_t value ) { putNumber( 'u', value ); }
   void put( double value ) { putNumber( 'd', value ); }

   // Cuts `text` so that `laterBytes` bytes stay free for the arguments behind it.
   // Requires: a byte more than that is free.
   void put( std::string_view text, std::size_t laterBytes ) {
      const std::size_t room = kPayloadBytes - laterBytes - used_ - 1;
      const std::size_t length = text.size() < room ? text.size() : room;
      const unsigned cut = length < text.size() ? kTextCut : 0;
      addCode( 's' );
      payload_[ used_ ] = static_cast< unsigned char >( length | cut );
      std::memcpy( payload_ + used_ + 1, text.data(), length );
      used_ += length + 1;
   }

 private:
   friend class Trace;

   template < typename Number >
   void putNumber( char code, Number value ) {
      addCode( code );
      std::memcpy( payload_ + used_, &value, sizeof value );
      used_ += sizeof value;
   }

   void addCode( char code ) { codes_[ count_++ ] = code; }

   std::size_t used_ = 0;
   std::size_t count_ = 0;
   char codes_[ kMaxArguments ] = {};
   unsigned char payload_[ kPayloadBytes ] = {};
};

class ZEL_EXPORT Trace {
 public:
   // The id that stands for every format that found the table full.
   static constexpr std::uint32_t kNoRoomFormat = 0;

   // A trace whose image lies in `memory`: geometry.imageBytes() bytes, all of them
   // zero, that start at a multiple of 8.
   constexpr Trace( std::uint64_t* memory, Geometry geometry )
       : geometry_( geometry ), memory_( memory ) {}
   Trace( const Trace& ) = delete;
   Trace& operator=( const Trace& ) = delete;

   // Whether `level` (0 to 9) is recorded. All levels are, at first.
   bool enabled( unsigned level ) const {
      return ( ( levelMask_.load( std::memory_order_relaxed ) >> level ) & 1u ) != 0;
   }
   // Bit n stands for level n; bits above 9 mean nothing.
   std::uint32_t levelMask() const { return levelMask_.load( std::memory_order_relaxed ); }
   void levelMaskIs( std::uint32_t mask ) { levelMask_.store( mask, std::memory_order_relaxed ); }

   // The id of `format`, 1 to kMaxFormatBytes bytes long; the same text gets the same id.
   // kNoRoomFormat when the table is full.
   std::uint32_t formatIs( std::string_view format );

   // Writes a record, whether the level is enabled or not.
   // Requires: level within 0 to 9, format given by formatIs() of this trace.
   void write( unsigned level, std::uint32_t format, const Arguments& arguments );

   // Moves the image, with the records and formats it has, into a new file at `path`, which its
   // owner alone may read and write. A ring file that stands there is renamed to `path` +
   // ".previous", in the place of an earlier one: it may hold the last messages of a process that
   // has just crashed. Whatever else stands at either name is refused, an empty file or a link
   // included. Throws std::system_error, which names step and file; then the trace goes on where
   // it was. Spans that image() gave for an earlier file end here. The owner must not shorten
   // the file while the trace writes to it: the system ends a process that reaches into the
   // missing part.
   void fileIs( const std::string& path );

   // The image as it stands, to be read by a Reader in any thread.
   std::span< const std::byte > image();

 private:
   friend Trace& trace();
   static Trace process_;

   // Makes an image of the zero memory, at the first use.
   void start();
   std::uint32_t addFormat( std::string_view format );
   // The part of the image that starts `offset` bytes behind its start.
   template < typename Part >
   Part* part( std::size_t offset ) const {
      return reinterpret_cast< Part* >( memory_ + offset / sizeof( *memory_ ) );
   }
   FormatEntry& formatEntry( std::uint32_t id ) const {
      return part< FormatEntry >( sizeof( ImageHeader ) )[ id ];
   }

   const Geometry geometry_;
   std::atomic< std::uint32_t > levelMask_{ ( 1u << kLevels ) - 1 };
   std::mutex lock_;
   // All that follows, and the image, is written under the lock.
   std::uint64_t* memory_;
   std::uint32_t formatsUsed_ = 0;   // 0: not started
   bool mapped_ = false;
   Clock clock_;
   std::uint64_t sequence_ = 0;
   std::uint64_t written_[ kLevels ] = {};
};

// The process's trace.
inline Trace&
trace() {
   return Trace::process_;
}

}   // namespace Pelrec
