// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Image: the memory layout that the trace writes and the reader decodes.
//
// An image is self-contained: it holds the texts as well as the records, so a copy of the
// memory, or the file it was mapped to, is all a decoder needs.
//
//    0            64                         64 + 128 f                             bytes
//    +------------+--------------------------+-----------+-----------+-----+-----------+
//    | header     | format table             | ring 0    | ring 1    | ... | ring 9    |
//    | 64 bytes   | f entries of 128 bytes   | n slots   | n slots   |     | n slots   |
//    +------------+--------------------------+-----------+-----------+-----+-----------+
//
//    entry   0 length (0: unused)         8 text, 120 bytes
//    slot    0 sequence (0: not valid)    8 time, ns since the epoch
//           16 format id, 32 bits        20 type codes, 4 characters, 0 behind the last
//           24 raw arguments, 40 bytes, packed without gaps:
//              i signed, u unsigned, d double: 8 bytes; s text: 1 byte of length, with
//              kTextCut added when the text was cut, then its bytes
//
// Numbers are in the writer's byte order; the magic number tells it. Each ring has n slots and
// its record number r (from 0) stands in slot r modulo n. Sequence numbers start at 1 and run
// through all rings, so they give the order of writing across levels.
//
// Threads    One writer. It stores 0 as sequence, then the other words, then the sequence, each
//            with release order; a reader loads with acquire order and looks at the sequence
//            again at the end, so what was overwritten meanwhile is noticed. A format's length
//            is stored after its text, and the magic number after the rest of the header.
#pragma once

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace Pelrec {

constexpr unsigned kLevels = 10;
constexpr std::size_t kMaxArguments = 4;
constexpr std::size_t kPayloadBytes = 40;
constexpr std::size_t kMaxFormatBytes = 120;
constexpr unsigned kTextCut = 0x80;

constexpr std::uint64_t kMagic = 0x50454c5245430a01;
constexpr std::uint32_t kVersion = 1;

// Limits that a reader accepts; far above what a trace uses.
constexpr std::uint32_t kMaxSlotsPerRing = 1u << 20;
constexpr std::uint32_t kMaxFormats = 1u << 16;

struct ImageHeader {
   std::uint64_t magic;
   std::uint32_t version;
   std::uint32_t levels;
   std::uint32_t slotsPerRing;
   std::uint32_t formats;
   std::uint64_t bytes;
   std::uint64_t unused[ 4 ];
};

struct FormatEntry {
   std::uint64_t length;
   char text[ kMaxFormatBytes ];
};

enum SlotWord : std::size_t { kSequence, kTime, kFormatAndCodes, kPayload, kSlotWords = 8 };

struct Slot {
   // Atomic access needs the 8 bytes also where a number of 64 bits is content with 4.
   alignas( 8 ) std::uint64_t words[ kSlotWords ];
};

static_assert( sizeof( ImageHeader ) == 64 );
static_assert( sizeof( FormatEntry ) == 128 );
static_assert( sizeof( Slot ) == 64 );
static_assert( sizeof( Slot ) == kPayload * sizeof( std::uint64_t ) + kPayloadBytes );
static_assert( std::is_trivial_v< ImageHeader > && std::is_trivial_v< FormatEntry > );

// Sizes of an image. `slotsPerRing` is a power of two up to kMaxSlotsPerRing, `formats` is 1 up
// to kMaxFormats.
struct Geometry {
   std::uint32_t slotsPerRing;
   std::uint32_t formats;

   constexpr std::size_t ringsOffset() const {
      return sizeof( ImageHeader ) + formats * sizeof( FormatEntry );
   }
   constexpr std::size_t imageBytes() const {
      return ringsOffset() + std::size_t{ kLevels } * slotsPerRing * sizeof( Slot );
   }
};

inline void
storeRelease( std::uint64_t& word, std::uint64_t value ) {
   std::atomic_ref< std::uint64_t >( word ).store( value, std::memory_order_release );
}

inline std::uint64_t
loadAcquire( const std::uint64_t& word ) {
   // An atomic reference wants a mutable object, but a load leaves even read-only memory alone.
   return std::atomic_ref< std::uint64_t >( const_cast< std::uint64_t& >( word ) )
      .load( std::memory_order_acquire );
}

}   // namespace Pelrec
