// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SplitImageTest: fixture of an image that crosses from one memory page into the next. Whoever
// comes to a page that is closed stops there, and what the other side would see is kept.
#pragma once

#include <algorithm>
#include <csignal>
#include <cstddef>
#include <cstdint>

#include <sys/mman.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Pelrec/Image.h"
#include "Pelrec/Trace.h"

class SplitImageTest : public testing::Test {
 protected:
   static constexpr Pelrec::Geometry kGeometry{ 1, 2 };
   static constexpr std::size_t kWords = kGeometry.imageBytes() / sizeof( std::uint64_t );

   explicit SplitImageTest( std::size_t bytesInFirstPage )
       : memory_( reinterpret_cast< std::uint64_t* >( pages_ + pageSize_ - bytesInFirstPage ) ) {
      running_ = this;
      struct sigaction action {};
      action.sa_handler = []( int ) { running_->stopped(); };
      sigaction( SIGSEGV, &action, &before_ );
   }
   ~SplitImageTest() override {
      sigaction( SIGSEGV, &before_, nullptr );
      munmap( pages_, 2 * pageSize_ );
   }

   void closeSecondPage() { mprotect( pages_ + pageSize_, pageSize_, PROT_NONE ); }
   void closeFirstPageToWriters() { mprotect( pages_, pageSize_, PROT_READ ); }

   // What happens while somebody is stopped; the pages are open again. Runs in a signal handler.
   virtual void meanwhile() {}

   Pelrec::Trace& trace() { return trace_; }

   int stops_ = 0;
   alignas( Pelrec::Slot ) std::uint64_t seenThere_[ kWords ] = {};

 private:
   void stopped() {
      mprotect( pages_, 2 * pageSize_, PROT_READ | PROT_WRITE );
      ++stops_;
      meanwhile();
      std::copy_n( memory_, kWords, seenThere_ );
   }

   static inline SplitImageTest* running_ = nullptr;

   const std::size_t pageSize_ = static_cast< std::size_t >( sysconf( _SC_PAGESIZE ) );
   std::byte* const pages_ = static_cast< std::byte* >(
      mmap( nullptr, 2 * pageSize_, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0 ) );
   std::uint64_t* const memory_;
   Pelrec::Trace trace_{ memory_, kGeometry };
   struct sigaction before_ {};
};
