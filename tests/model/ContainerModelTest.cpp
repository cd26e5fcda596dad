// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Every collection with live iterators against a list of places: the ordered maps of the range index,
// of which one has twins, and the hash map across its rehashes.

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>

#include <gtest/gtest.h>

#include "tests/support/ModelRun.h"
#include "tests/support/RangeCollections.h"
#include "tests/unit/Zel/Collections.h"

namespace {

using TestCollections::Hashed;
using TestCollections::Ranges;
using TestCollections::Sorted;
using TestCollections::Starts;

constexpr std::size_t kIterators = 4;

template < class MapType >
constexpr bool kHashed = std::is_same_v< MapType, Hashed >;

enum class Op {
   Is,
   IsMany,
   Del,
   DelMany,
   DelAll,
   // With an iterator:
   Find,
   FindOrNext,
   First,
   Advance,
   DelAt,
};

struct Step {
   Op op;
   std::uint32_t key;
   std::uint32_t count;   // of many: keys from `key` on
   int value;
   std::size_t slot;   // which iterator
};

std::ostream&
operator<<( std::ostream& out, const Step& step ) {
   static constexpr const char* kNames[] = {
      "is",    "isMany", "del",   "delMany", "delAll", "findElement", "findElementOrNext",
      "first", "++",     "del at" };
   out << kNames[ static_cast< int >( step.op ) ];
   if ( step.op >= Op::Find ) {
      out << " iterator " << step.slot;
   }
   if ( step.op != Op::DelAll && step.op != Op::First && step.op != Op::Advance &&
        step.op != Op::DelAt ) {
      out << " key " << step.key;
   }
   if ( step.op == Op::IsMany || step.op == Op::DelMany ) {
      out << " and on, " << step.count;
   }
   if ( step.op == Op::Is || step.op == Op::IsMany ) {
      out << " value " << step.value;
   }
   return out;
}

std::string
elementText( std::uint32_t key, int value ) {
   return std::to_string( key ) + "=" + std::to_string( value );
}

// Elements by their place: what the order of keys says, then when they came.
template < class MapType >
class Model {
 public:
   using Step = ::Step;

   bool allows( const Step& step ) const {
      return ( step.op != Op::Advance || live_[ step.slot ].stands ) &&
             ( step.op != Op::FindOrNext || !kHashed< MapType > );
   }
   void apply( const Step& step ) {
      answer_.clear();
      Live& live = live_[ step.slot ];
      switch ( step.op ) {
      case Op::Is:
         is( step.key, step.value );
         break;
      case Op::IsMany:
         for ( std::uint32_t i = 0; i < step.count; ++i ) {
            is( step.key + i, step.value );
         }
         break;
      case Op::Del:
         del( find( step.key ) );
         break;
      case Op::DelMany:
         for ( std::uint32_t i = 0; i < step.count; ++i ) {
            del( find( step.key + i ) );
         }
         break;
      case Op::DelAll:
         changes_ += static_cast< std::uint32_t >( elements_.size() );
         elements_.clear();
         break;
      case Op::Find:
         live = at( find( step.key ) );
         break;
      case Op::FindOrNext: {
         const auto equal = find( step.key );
         live =
            at( equal != elements_.end() ? equal
                                         : elements_.upper_bound( { order( step.key ), kLast } ) );
         break;
      }
      case Op::First:
         live = at( elements_.begin() );
         break;
      case Op::Advance:
         live = at( behind( live ) );
         break;
      case Op::DelAt:
         del( live.stands ? elements_.find( live.place ) : elements_.end() );
         break;
      }
      for ( Live& each : live_ ) {
         if ( const auto stored = elements_.find( each.place ); stored != elements_.end() ) {
            each.value = stored->second.value;
         }
      }
   }

   std::string text() const {
      std::string all = answer_ + "\n" + std::to_string( changes_ ) + " changes\n";
      for ( const auto& [ place, element ] : elements_ ) {
         all += elementText( element.key, element.value ) + " ";
      }
      for ( const Live& live : live_ ) {
         all += live.stands ? "\n" + elementText( live.key, live.value ) +
                                 ( elements_.contains( live.place ) ? "" : " gone" )
                            : "\nend";
      }
      return all;
   }

 private:
   using Place = std::pair< std::int64_t, std::uint64_t >;
   static constexpr std::uint64_t kLast = ~std::uint64_t( 0 );
   struct Element {
      std::uint32_t key;
      int value;
   };
   struct Live {
      bool stands = false;
      Place place;
      std::uint32_t key = 0;
      int value = 0;   // the last one that it had
   };
   using Elements = std::map< Place, Element >;

   static std::int64_t order( std::uint32_t key ) {
      return kHashed< MapType >                ? 0
           : std::is_same_v< MapType, Sorted > ? key / Sorted::kTags
           : std::is_same_v< MapType, Starts > ? -std::int64_t( key )
                                               : std::int64_t( key );
   }

   typename Elements::iterator find( std::uint32_t key ) {
      return std::ranges::find_if( elements_,
                                   [ & ]( const auto& each ) { return each.second.key == key; } );
   }
   void is( std::uint32_t key, int drawn ) {
      const int value = MapType::valueOf( drawn );
      if ( const auto stored = find( key ); stored != elements_.end() ) {
         stored->second.value = value;
         return;
      }
      const Place place{ order( key ), ++arrivals_ };
      elements_[ place ] = { key, value };
      ++changes_;
   }
   void del( typename Elements::iterator gone ) {
      answer_ += gone == elements_.end()
                  ? "none "
                  : elementText( gone->second.key, gone->second.value ) + " ";
      if ( gone != elements_.end() ) {
         elements_.erase( gone );
         ++changes_;
      }
   }
   Live at( typename Elements::iterator element ) const {
      return element == elements_.end()
              ? Live()
              : Live{ true, element->first, element->second.key, element->second.value };
   }
   typename Elements::iterator behind( const Live& live ) {
      const auto found = elements_.upper_bound( live.place );
      // What went and came again where the iterator stood is passed where it comes next.
      const bool again =
         !kHashed< MapType > && found != elements_.end() && found->second.key == live.key;
      return again ? std::next( found ) : found;
   }

   Elements elements_;
   std::array< Live, kIterators > live_;
   std::string answer_;
   std::uint32_t changes_ = 0;
   std::uint64_t arrivals_ = 0;
};

template < class MapType >
class Real {
 public:
   void apply( const Step& step ) {
      answer_.clear();
      auto& live = live_[ step.slot ];
      switch ( step.op ) {
      case Op::Is:
         map_.is( step.key, step.value );
         break;
      case Op::IsMany:
         for ( std::uint32_t i = 0; i < step.count; ++i ) {
            map_.is( step.key + i, step.value );
         }
         break;
      case Op::Del:
         answer( step.key, map_.erase( step.key ) );
         break;
      case Op::DelMany:
         for ( std::uint32_t i = 0; i < step.count; ++i ) {
            answer( step.key + i, map_.erase( step.key + i ) );
         }
         break;
      case Op::DelAll:
         map_.deleteAll();
         break;
      case Op::Find:
         live = map_.findElement( MapType::keyOf( step.key ) );
         break;
      case Op::FindOrNext:
         if constexpr ( !kHashed< MapType > ) {
            live = map_.findElementOrNext( MapType::keyOf( step.key ) );
         }
         break;
      case Op::First:
         live = map_.first();
         break;
      case Op::Advance:
         ++live;
         break;
      case Op::DelAt:
         answer( live ? MapType::numberOf( live->key() ) : 0, map_.del( live ) );
         break;
      }
   }

   std::string text() const {
      std::string all = answer_ + "\n" + std::to_string( map_.changes() ) + " changes\n";
      for ( const auto& node : map_ ) {
         all += nodeText( node ) + " ";
      }
      [[maybe_unused]] std::int32_t onStored = 0;
      for ( const auto& live : live_ ) {
         all += live ? "\n" + nodeText( *live ) + ( live.linked() ? "" : " gone" ) : "\nend";
         onStored += live.linked();
      }
      if constexpr ( kHashed< MapType > ) {
         map_.verify( onStored );
      } else {
         map_.verify();
      }
      return all;
   }

 private:
   template < class Element >
   static std::string nodeText( const Element& element ) {
      return elementText( MapType::numberOf( element.key() ), MapType::valueIn( element.value() ) );
   }
   void answer( std::uint32_t key, const std::optional< int >& gone ) {
      answer_ += gone ? elementText( key, *gone ) + " " : "none ";
   }

   MapType map_;
   std::array< typename MapType::Iterator, kIterators > live_;
   std::string answer_;
};

rc::Gen< Step >
steps( std::uint32_t keys, std::uint32_t many ) {
   return TestSupport::stepsOf(
      []( Op op, std::uint32_t key, std::uint32_t count, int value, std::size_t slot ) {
         return Step{ op, key, count, value, slot };
      },
      rc::gen::weightedElement< Op >( { { 8, Op::Is },
                                        { many ? 3 : 0, Op::IsMany },
                                        { 6, Op::Del },
                                        { many ? 3 : 0, Op::DelMany },
                                        { 1, Op::DelAll },
                                        { 3, Op::Find },
                                        { 4, Op::FindOrNext },
                                        { 3, Op::First },
                                        { 8, Op::Advance },
                                        { 4, Op::DelAt } } ),
      rc::gen::inRange< std::uint32_t >( 1, keys + 1 ),
      rc::gen::inRange< std::uint32_t >( 1, std::max( 2u, many ) ),
      rc::gen::inRange< int >( 0, 10 ), rc::gen::inRange< std::size_t >( 0, kIterators ) );
}

template < class MapType >
class ContainerModelTest : public testing::Test {};

using Maps = testing::Types< Ranges, Starts, Sorted, Hashed >;
TYPED_TEST_SUITE( ContainerModelTest, Maps );

// Where the same few keys come and go under every iterator.
TYPED_TEST( ContainerModelTest, AgreesWithItsModelOnFewKeys ) {
   TestSupport::expectModelled< Model< TypeParam >, Real< TypeParam > >( steps( 12, 0 ),
                                                                         { 1500, 150 } );
}

// Across changes of shape: an array becomes pages and an array again, a table rehashes.
TYPED_TEST( ContainerModelTest, AgreesWithItsModelOnManyKeys ) {
   TestSupport::expectModelled< Model< TypeParam >, Real< TypeParam > >( steps( 300, 200 ),
                                                                         { 600, 60 } );
}

}   // namespace
