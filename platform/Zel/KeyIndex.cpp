// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/KeyIndex.h"

#include <algorithm>
#include <array>
#include <bit>
#include <functional>
#include <new>
#include <utility>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/KeyIndex";

constexpr unsigned kSlots = 64;

// The first set bit at or behind `from`, which may be kSlots; kSlots when there is none.
unsigned
bitFrom( std::uint64_t bits, unsigned from ) {
   const std::uint64_t rest = from < kSlots ? bits >> from : 0;
   return rest != 0 ? from + static_cast< unsigned >( std::countr_zero( rest ) ) : kSlots;
}

constexpr std::uint64_t
bit( unsigned slot ) {
   return std::uint64_t{ 1 } << slot;
}

// One page: which of its slots lead to a node, and where to. A page above may be allocated though
// its bit is clear.
template < class Slot >
struct Page {
   std::uint64_t used = 0;
   std::array< Slot, kSlots > slots{};
};
using Leaf = Page< SmallKeyNode* >;
using Middle = Page< std::unique_ptr< Leaf > >;

}   // namespace

SmallKeyNode::~SmallKeyNode() {
   ZEL_ASSERT( !linked() );
}

std::size_t
KeyIndex::Few::notBelow( std::uint32_t place ) const {
   // Steps by a mask, for no branch predictor knows the way down.
   const Place* at = places.data();
   std::size_t rest = places.size();
   while ( rest > 1 ) {
      const std::size_t half = rest / 2;
      at += half & ( std::size_t{ 0 } - std::size_t{ at[ half - 1 ] < place } );
      rest -= half;
   }
   const auto index = static_cast< std::size_t >( at - places.data() );
   return rest == 1 && *at < place ? index + 1 : index;
}

SmallKeyNode*
KeyIndex::Few::find( Place place ) const {
   const std::size_t index = notBelow( place );
   return index < places.size() && places[ index ] == place ? nodes[ index ] : nullptr;
}

void
KeyIndex::Few::reserve( std::size_t nodesInAll ) {
   if ( nodesInAll > places.capacity() || nodesInAll > nodes.capacity() ) {
      const std::size_t wider =
         std::max( nodesInAll, std::min< std::size_t >( 2 * nodes.size(), kMostFew ) );
      places.reserve( wider );
      nodes.reserve( wider );
   }
}

void
KeyIndex::Few::insert( Place place, SmallKeyNode* node ) {
   const auto index = static_cast< std::ptrdiff_t >( notBelow( place ) );
   places.insert( places.begin() + index, place );
   nodes.insert( nodes.begin() + index, node );
}

SmallKeyNode*
KeyIndex::Few::remove( Place place ) {
   const auto index = static_cast< std::ptrdiff_t >( notBelow( place ) );
   SmallKeyNode* const node = nodes[ static_cast< std::size_t >( index ) ];
   places.erase( places.begin() + index );
   nodes.erase( nodes.begin() + index );
   return node;
}

// 16 bits of a place: 4 for the root's slot, 6 for the middle page's, 6 for the leaf's.
struct KeyIndex::Trie {
   Page< std::unique_ptr< Middle > > root;

   static unsigned rootSlot( std::uint32_t place ) { return place >> 12; }
   static unsigned middleSlot( std::uint32_t place ) { return place >> 6 & ( kSlots - 1 ); }
   static unsigned leafSlot( std::uint32_t place ) { return place & ( kSlots - 1 ); }

   Middle* middle( std::uint32_t place ) const { return root.slots[ rootSlot( place ) ].get(); }
   Leaf* leaf( std::uint32_t place ) const {
      const Middle* above = middle( place );
      return above ? above->slots[ middleSlot( place ) ].get() : nullptr;
   }

   SmallKeyNode* find( Place place ) const {
      const Leaf* page = leaf( place );
      return page ? page->slots[ leafSlot( place ) ] : nullptr;
   }

   SmallKeyNode* findOrNext( std::uint32_t place ) const {
      if ( const Leaf* page = leaf( place ) ) {
         if ( const unsigned slot = bitFrom( page->used, leafSlot( place ) ); slot < kSlots ) {
            return page->slots[ slot ];
         }
      }
      if ( const Middle* page = middle( place ) ) {
         const unsigned slot = bitFrom( page->used, middleSlot( place ) + 1 );
         if ( slot < kSlots ) {
            return first( *page->slots[ slot ] );
         }
      }
      const unsigned slot = bitFrom( root.used, rootSlot( place ) + 1 );
      return slot < kSlots ? first( *root.slots[ slot ] ) : nullptr;
   }

   void reserve( Place place ) {
      std::unique_ptr< Middle >& above = root.slots[ rootSlot( place ) ];
      if ( !above ) {
         above = std::make_unique< Middle >();
      }
      std::unique_ptr< Leaf >& page = above->slots[ middleSlot( place ) ];
      if ( !page ) {
         page = std::make_unique< Leaf >();
      }
   }

   void insert( Place place, SmallKeyNode* node ) {
      Leaf& page = *leaf( place );
      page.slots[ leafSlot( place ) ] = node;
      page.used |= bit( leafSlot( place ) );
      middle( place )->used |= bit( middleSlot( place ) );
      root.used |= bit( rootSlot( place ) );
   }

   SmallKeyNode* remove( Place place ) {
      Leaf& page = *leaf( place );
      page.used &= ~bit( leafSlot( place ) );
      if ( page.used == 0 ) {
         Middle& above = *middle( place );
         above.used &= ~bit( middleSlot( place ) );
         if ( above.used == 0 ) {
            root.used &= ~bit( rootSlot( place ) );
         }
      }
      return std::exchange( page.slots[ leafSlot( place ) ], nullptr );
   }

   /// Calls `visit` with each place and its node, in order.
   template < class Visit >
   void each( const Visit& visit ) const {
      for ( unsigned r = bitFrom( root.used, 0 ); r < kSlots; r = bitFrom( root.used, r + 1 ) ) {
         const Middle& above = *root.slots[ r ];
         for ( unsigned m = bitFrom( above.used, 0 ); m < kSlots;
               m = bitFrom( above.used, m + 1 ) ) {
            const Leaf& page = *above.slots[ m ];
            for ( unsigned l = bitFrom( page.used, 0 ); l < kSlots;
                  l = bitFrom( page.used, l + 1 ) ) {
               visit( static_cast< Place >( r << 12 | m << 6 | l ), page.slots[ l ] );
            }
         }
      }
   }

 private:
   static SmallKeyNode* first( const Leaf& page ) { return page.slots[ bitFrom( page.used, 0 ) ]; }
   static SmallKeyNode* first( const Middle& page ) {
      return first( *page.slots[ bitFrom( page.used, 0 ) ] );
   }
};

KeyIndex::KeyIndex() = default;

KeyIndex::~KeyIndex() {
   clear();
}

SmallKeyNode*
KeyIndex::find( Place place ) const {
   return trie_ ? trie_->find( place ) : few_.find( place );
}

SmallKeyNode*
KeyIndex::findOrNext( std::uint32_t place ) const {
   if ( trie_ ) {
      return place <= kGreatest ? trie_->findOrNext( place ) : nullptr;
   }
   const std::size_t index = few_.notBelow( place );
   return index < few_.nodes.size() ? few_.nodes[ index ] : nullptr;
}

void
KeyIndex::reserve( Place place ) {
   if ( !trie_ ) {
      if ( size_ < kMostFew ) {
         few_.reserve( size_ + 1 );
         return;
      }
      toTrie();
   }
   trie_->reserve( place );
}

void
KeyIndex::toTrie() {
   auto trie = std::make_unique< Trie >();
   for ( std::size_t i = 0; i < few_.places.size(); ++i ) {
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
      few_.reserve( kMostFew );
   } catch ( const std::bad_alloc& ) {
      few_ = {};
      return;
   }
   trie_->each( [ this ]( Place place, SmallKeyNode* node ) {
      few_.places.push_back( place );
      few_.nodes.push_back( node );
   } );
   trie_.reset();
}

void
KeyIndex::insert( Place place, Ptr< SmallKeyNode > node ) {
   ZEL_ASSERT( !node->linked() && !find( place ) );
   reserve( place );
   SmallKeyNode* const linked = node.release();
   if ( trie_ ) {
      trie_->insert( place, linked );
   } else {
      few_.insert( place, linked );
   }
   linked->word_.flagIs( ReferenceWord::kLinked, true );
   ++size_;
   ++changes_;
}

Ptr< SmallKeyNode >
KeyIndex::unlink( Place place ) {
   ZEL_ASSERT( find( place ) );
   SmallKeyNode* const node = trie_ ? trie_->remove( place ) : few_.remove( place );
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
   std::ranges::for_each( few.nodes, release );
   if ( trie ) {
      trie->each( [ & ]( Place, SmallKeyNode* node ) { release( node ); } );
   }
}

void
KeyIndex::verify( std::int32_t extraReferences ) const {
   ZEL_ASSERT( !trie_ || few_.nodes.empty() );
   ZEL_ASSERT( few_.places.size() == few_.nodes.size() && few_.nodes.size() <= kMostFew );
   ZEL_ASSERT( std::ranges::adjacent_find( few_.places, std::ranges::greater_equal() ) ==
               few_.places.end() );
   std::uint32_t nodes = 0;
   std::int32_t references = 0;
   const auto count = [ & ]( const SmallKeyNode* node ) {
      ZEL_ASSERT( node->linked() );
      ++nodes;
      references += node->zelReferences();
   };
   std::ranges::for_each( few_.nodes, count );
   if ( trie_ ) {
      trie_->each( [ & ]( Place place, const SmallKeyNode* node ) {
         ZEL_ASSERT( trie_->find( place ) == node );
         count( node );
      } );
   }
   ZEL_ASSERT( nodes == size_ );
   ZEL_ASSERT( references == static_cast< std::int32_t >( size_ ) + extraReferences );
}

}   // namespace Zel
