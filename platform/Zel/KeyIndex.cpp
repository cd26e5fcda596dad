// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/KeyIndex.h"

#include <new>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/KeyIndex";

}   // namespace

KeyIndex::~KeyIndex() {
   clear( kSecond );
   clear( kFirst );
}

// A place where the other collection alone has a node is passed over.
KeyIndex::At
KeyIndex::atOrAbove( Lane lane, KeyPlace place ) const {
   At found = atOrAbove( place );
   while ( found.value && !( *found.value )[ lane ] ) {
      found = atOrAbove( found.place + 1 );
   }
   return found;
}

KeyIndex::At
KeyIndex::atOrBelow( Lane lane, KeyPlace place ) const {
   At found = atOrBelow( place );
   while ( found.value && !( *found.value )[ lane ] ) {
      found = found.place > 0 ? atOrBelow( found.place - 1 ) : At{};
   }
   return found;
}

void
KeyIndex::search( KeyPlace place ) const {
   if ( trie_ ) {
      trie_->around( place, last_ );
   } else {
      few_.around( place, last_ );
   }
}

void
KeyIndex::toTrie() {
   auto trie = std::make_unique< Trie >();
   few_.each( [ & ]( KeyPlace place, const Pair& pair ) {
      trie->reserve( place );
      trie->insert( place, pair );
   } );
   trie_ = std::move( trie );
   few_.trim();
   last_ = {};
}

// Keeps the trie when there is no memory for the array.
void
KeyIndex::toFew() noexcept {
   try {
      few_.roomIs( kMostFew );
   } catch ( const std::bad_alloc& ) {
      return;
   }
   trie_->each(
      [ this ]( KeyPlace place, const Pair& pair ) { few_.insertAt( few_.size(), place, pair ); } );
   trie_.reset();
}

void
KeyIndex::link( Lane lane, SmallKeyNode& node ) {
   node.zelReferenceInc();
   node.word_.flagIs( ReferenceWord::kLinked, true );
   ++size_[ lane ];
   ++changes_[ lane ];
}

Ptr< SmallKeyNode >
KeyIndex::unlink( Lane lane, SmallKeyNode* node ) {
   node->word_.flagIs( ReferenceWord::kLinked, false );
   --size_[ lane ];
   ++changes_[ lane ];
   return { node, adoptReference };
}

void
KeyIndex::erase( At at ) {
   last_ = {};
   --places_;
   if ( !trie_ ) {
      few_.eraseAt( few_.indexOf( *at.value ) );
      return;
   }
   trie_->erase( static_cast< KeyPlace >( at.place ) );
   if ( places_ <= kMostFew / 2 ) {
      toFew();
   }
}

SmallKeyNode&
KeyIndex::insertOrFind( Lane lane, KeyPlace place, SmallKeyNode& node ) {
   ZEL_ASSERT( !node.linked() );
   Pair* pair = find( place );
   if ( !pair ) {
      reserve( place );
      last_ = {};
      pair =
         trie_ ? &trie_->insert( place, {} ) : &few_.insertAt( few_.notBelow( place ), place, {} );
      ++places_;
      ++unpaired_;
   } else if ( SmallKeyNode* stored = ( *pair )[ lane ] ) {
      return *stored;
   } else {
      --unpaired_;
   }
   ( *pair )[ lane ] = &node;
   link( lane, node );
   return node;
}

Ptr< SmallKeyNode >
KeyIndex::take( Lane lane, KeyPlace place ) {
   Pair* const pair = find( place );
   SmallKeyNode* const node = pair ? ( *pair )[ lane ] : nullptr;
   if ( !node ) {
      return nullptr;
   }
   ( *pair )[ lane ] = nullptr;
   if ( ( *pair )[ kFirst ] || ( *pair )[ kSecond ] ) {
      ++unpaired_;
   } else {
      --unpaired_;
      erase( { place, pair } );
   }
   return unlink( lane, node );
}

// One by one, for what runs when a node goes may look others up; downwards, so that an array moves
// nothing, and once, so that it ends whatever is inserted meanwhile.
void
KeyIndex::clear( Lane lane ) {
   At at = atOrBelow( lane, kHighest );
   while ( at.value ) {
      const auto place = static_cast< KeyPlace >( at.place );
      take( lane, place );
      at = place > 0 ? atOrBelow( lane, static_cast< KeyPlace >( place - 1 ) ) : At{};
   }
}

void
KeyIndex::insertPair( KeyPlace place, SmallKeyNode& first, SmallKeyNode& second ) {
   ZEL_ASSERT( !first.linked() && !second.linked() );
   reserve( place );
   around( place );
   const Pair pair{ &first, &second };
   if ( trie_ ) {
      last_.below = { place, &trie_->insert( place, pair ) };
   } else {
      Pair*& above = last_.above.value;
      const std::size_t index = above ? few_.indexOf( *above ) : few_.size();
      last_.below = { place, &few_.insertAt( index, place, pair ) };
      above += above ? 1 : 0;
   }
   ++places_;
   link( kFirst, first );
   link( kSecond, second );
}

void
KeyIndex::takePair( At at ) {
   const Pair pair = *at.value;
   erase( at );
   unlink( kFirst, pair[ kFirst ] );
   unlink( kSecond, pair[ kSecond ] );
}

KeyIndex::Pair*
KeyIndex::moveInTrie( At from, KeyPlace to ) {
   trie_->reserve( to );
   const Pair pair = *from.value;
   trie_->erase( static_cast< KeyPlace >( from.place ) );
   return &trie_->insert( to, pair );
}

void
KeyIndex::verify( Lane lane, std::int32_t extraReferences ) const {
   std::uint32_t places = 0;
   std::uint32_t unpaired = 0;
   std::uint32_t nodes = 0;
   std::int32_t references = 0;
   std::uint32_t lowest = 0;
   eachPair( [ & ]( KeyPlace place, const Pair& pair ) {
      ZEL_ASSERT( place >= lowest );
      lowest = place + 1u;
      ZEL_ASSERT( find( place ) == &pair );
      ZEL_ASSERT( pair[ kFirst ] || pair[ kSecond ] );
      ++places;
      unpaired += pair[ kFirst ] && pair[ kSecond ] ? 0 : 1;
      if ( const SmallKeyNode* node = pair[ lane ] ) {
         ZEL_ASSERT( node->linked() );
         ++nodes;
         references += node->zelReferences();
      }
   } );
   ZEL_ASSERT( places == places_ );
   ZEL_ASSERT( unpaired == unpaired_ );
   ZEL_ASSERT( nodes == size_[ lane ] );
   ZEL_ASSERT( references == static_cast< std::int32_t >( nodes ) + extraReferences );
   if ( last_.below.value ) {
      const At below = atOrBelow( last_.below.place );
      const At above = atOrAbove( last_.below.place + 1 );
      ZEL_ASSERT( below.place == last_.below.place && below.value == last_.below.value );
      ZEL_ASSERT( above.place == last_.above.place && above.value == last_.above.value );
   }
}

}   // namespace Zel
