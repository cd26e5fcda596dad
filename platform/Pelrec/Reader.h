// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Reader: turns the bytes of a trace image into records with text.
//
// The image may be the running process's own, a file that another process is writing, or what a
// crashed one left behind. It is not trusted: whatever the bytes are, nothing outside of them
// is read. What makes the whole unreadable throws ImageError; a slot that is empty, damaged or
// overwritten during the read is left out.
//
// Ownership  Reader borrows the bytes. ImageFile owns its copy of them.
// Cost       O(slots) to collect, O(records log records) to order.
// Threads    Any; a trace may write to the image meanwhile. Records that are overwritten during
//            a read are missing from it, so its oldest part may have gaps.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include "Pelrec/Image.h"
#include "Zel/Export.h"

namespace Pelrec {

// The bytes are no image, or the file cannot be read; what() tells which and why.
class ZEL_EXPORT ImageError : public std::runtime_error {
 public:
   using std::runtime_error::runtime_error;
};

struct Record {
   std::uint64_t sequence;   // from 1, in order of writing
   std::uint64_t timeNs;     // since 1970-01-01 00:00 UTC
   unsigned level;
   // The format with an argument in place of each "%s". A "%s" without an argument stays, an
   // argument without "%s" follows behind a blank. A text that was cut ends in "...". Control
   // characters appear as \xNN, so that a record is one line whatever was traced.
   std::string text;
};

class ZEL_EXPORT Reader {
 public:
   // `image` starts at a multiple of 8 bytes and may be longer than the image in it. Throws
   // ImageError if it is too short or its header is not one of this version and byte order.
   explicit Reader( std::span< const std::byte > image );

   // The records of `level`, oldest first. Throws std::out_of_range unless level is 0 to 9.
   std::vector< Record > records( unsigned level ) const;
   // The records of all levels in order of writing.
   std::vector< Record > records() const;

 private:
   void append( unsigned level, std::vector< Record >& records ) const;
   std::optional< Record > record( unsigned level, const Slot& slot ) const;
   std::optional< std::string > text( const Slot& slot ) const;

   Geometry geometry_;
   const FormatEntry* formats_;
   const Slot* slots_;
};

// What an image file held when this was made; whatever happens to the file later makes no
// difference. Records that are written or overwritten during the reading are missing.
class ZEL_EXPORT ImageFile {
 public:
   // Takes memory for the image alone, not for what may stand behind it. Throws ImageError, which
   // names the file, if it cannot be read, is no plain file, does not begin with an image's header,
   // or becomes shorter meanwhile.
   explicit ImageFile( const std::string& path );

   std::span< const std::byte > bytes() const { return std::as_bytes( std::span( image_ ) ); }

 private:
   std::vector< Slot > image_;   // as slots, for each part of an image is as long as some
};

// A record's time as "2026-01-31T23:59:59.123456789Z".
ZEL_EXPORT std::string wallTime( std::uint64_t timeNs );

}   // namespace Pelrec
