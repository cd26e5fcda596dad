// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// GenericWorld: objects of every registered type, made and found by generic access while bytes last.
//
// Ownership  Holds what it made and what operations yielded, up to a limit; then the oldest goes.
//            Of an agent, which may stand there from the beginning, it holds the parts for good.
// Index      Entries of interfaces below kFirstConfigured are changed by hand and through range
//            managers; the others belong to the state machines. Each state machine has a directory
//            of its own, for two of them do not know what the other stored.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "Zel/TypeModule.h"
#include "Zel/Value.h"
#include "tests/fuzz/Bytes.h"

namespace Fuzz {

class GenericWorld {
 public:
   static constexpr std::uint64_t kFirstConfigured = 8;

   explicit GenericWorld( Bytes& input ) : input_( input ) {}

   const std::vector< Zel::Value >& wired() const { return wired_; }
   const std::vector< Zel::Value >& objects() const { return objects_; }
   /// Keeps an entity or value, unless it is nothing or a null pointer.
   void add( const Zel::Value& object );
   /// Lets one go.
   void drop();

   /// Makes the library's parts as an agent wires them, and a range manager for calls by hand.
   void wire();
   /// Any object, made when there is none yet.
   Zel::Value any();
   /// Of the type, or of one that derives from it: a value or an entity, never a null pointer.
   Zel::Value argument( Zel::TypeHandle type );
   std::vector< Zel::Value > arguments( std::span< const char* const > types );
   /// A new one. Throws what its constructor throws.
   Zel::Value make( Zel::TypeHandle type );

 private:
   Zel::Value makeEntity( Zel::TypeHandle type );
   Zel::Value makeValue( Zel::TypeHandle type );
   const Zel::Value* known( Zel::TypeHandle type );
   std::uint16_t number16();

   Bytes& input_;
   std::vector< Zel::Value > wired_;
   std::vector< Zel::Value > objects_;
};

}   // namespace Fuzz
