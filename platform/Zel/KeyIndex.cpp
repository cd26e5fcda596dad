// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/KeyIndex.h"

#include <algorithm>
#include <functional>
#include <new>
#include <span>
#include <utility>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/KeyIndex";

constexpr std::uint32_t kFirstFew = 4;

}   // namespace

SmallKeyNode::~SmallKeyNode() {
   ZEL_ASSERT( !linked() );
}

void
KeyIndex::Few::roomIs( std::uint32_t nodesInAll ) {
   auto widerPlaces = std::make_unique_for_overwrite< Place[] >( nodesInAll );
   auto widerNodes = std::make_unique_for_overwrite< SmallKeyNode*[] >( nodesInAll );
   std::copy_n( places.get(), size, widerPlaces.get() );
   std::copy_n( nodes.get(), size, widerNodes.get() );
   places = std::move( widerPlaces );
   nodes = std::move( widerNodes );
   room = nodesInAll;
}

void
KeyIndex::Few::grow() {
   roomIs( std::clamp( 2 * room, kFirstFew, kMostFew ) );
}

void
KeyIndex::Few::insertAt( std::size_t index, Place place, SmallKeyNode* node ) {
   if ( index < size ) {
      std::copy_backward( &places[ index ], &places[ size ], &places[ size + 1 ] );
      std::copy_backward( &nodes[ index ], &nodes[ size ], &nodes[ size + 1 ] );
   }
   places[ index ] = place;
   nodes[ index ] = node;
   ++size;
}

SmallKeyNode*
KeyIndex::Few::takeAt( std::size_t index ) {
   SmallKeyNode* const node = nodes[ index ];
   --size;
   if ( index < size ) {
      std::copy( &places[ index + 1 ], &places[ size + 1 ], &places[ index ] );
      std::copy( &nodes[ index + 1 ], &nodes[ size + 1 ], &nodes[ index ] );
   }
   return node;
}

void
KeyIndex::toTrie() {
   auto trie = std::make_unique< Trie >();
   for ( std::uint32_t i = 0; i < few_.size; ++i ) {
      trie->reserve( few_.places[ i ] );
      trie->insert( few_.places[ i ], few_.nodes[ i ] );
   }
   trie_ = std::move( trie );
   few_ = {};
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
      [ this ]( Place place, SmallKeyNode* node ) { few_.insertAt( few_.size, place, node ); } );
   trie_.reset();
}

SmallKeyNode&
KeyIndex::insertOrFind( Place place, SmallKeyNode& node ) {
   ZEL_ASSERT( !node.linked() );
   if ( !trie_ && size_ == kMostFew ) {
      if ( SmallKeyNode* stored = few_.find( place ) ) {
         return *stored;
      }
      toTrie();
   }
   if ( trie_ ) {
      if ( SmallKeyNode* stored = trie_->reserve( place ) ) {
         return *stored;
      }
      trie_->insert( place, &node );
   } else {
      const std::size_t index = few_.notBelow( place );
      if ( index < few_.size && few_.places[ index ] == place ) {
         return *few_.nodes[ index ];
      }
      reserve( place );
      few_.insertAt( index, place, &node );
   }
   node.zelReferenceInc();
   node.word_.flagIs( ReferenceWord::kLinked, true );
   ++size_;
   ++changes_;
   return node;
}

Ptr< SmallKeyNode >
KeyIndex::take( Place place ) {
   SmallKeyNode* node = nullptr;
   if ( trie_ ) {
      node = trie_->take( place );
   } else if ( const std::size_t index = few_.notBelow( place );
               index < few_.size && few_.places[ index ] == place ) {
      node = few_.takeAt( index );
   }
   if ( !node ) {
      return nullptr;
   }
   node->word_.flagIs( ReferenceWord::kLinked, false );
   --size_;
   ++changes_;
   if ( trie_ && size_ <= kMostFew / 2 ) {
      toFew();
   }
   return { node, adoptReference };
}

void
KeyIndex::clear() {
   // Detached as a whole first: what runs when a node goes finds an empty index.
   const Few few = std::exchange( few_, {} );
   const std::unique_ptr< Trie > trie = std::move( trie_ );
   changes_ += std::exchange( size_, 0 );
   const auto release = []( SmallKeyNode* node ) {
      node->word_.flagIs( ReferenceWord::kLinked, false );
      const Ptr< SmallKeyNode > gone( node, adoptReference );
   };
   std::for_each_n( few.nodes.get(), few.size, release );
   if ( trie ) {
      trie->each( [ & ]( Place, SmallKeyNode* node ) { release( node ); } );
   }
}

void
KeyIndex::verify( std::int32_t extraReferences ) const {
   ZEL_ASSERT( !trie_ || few_.size == 0 );
   ZEL_ASSERT( few_.size <= few_.room && few_.room <= kMostFew );
   const std::span places( few_.places.get(), few_.size );
   ZEL_ASSERT( std::ranges::adjacent_find( places, std::ranges::greater_equal() ) == places.end() );
   std::uint32_t nodes = 0;
   std::int32_t references = 0;
   const auto count = [ & ]( const SmallKeyNode* node ) {
      ZEL_ASSERT( node->linked() );
      ++nodes;
      references += node->zelReferences();
   };
   each( count );
   if ( trie_ ) {
      trie_->each( [ this ]( Place place, const SmallKeyNode* node ) {
         ZEL_ASSERT( trie_->find( place ) == node );
      } );
   }
   ZEL_ASSERT( nodes == size_ );
   ZEL_ASSERT( references == static_cast< std::int32_t >( size_ ) + extraReferences );
}

}   // namespace Zel
