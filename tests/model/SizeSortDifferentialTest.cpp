// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The size sort against its literal form: every element goes, and each range of the interface is
// inserted by itself, in order of lowVid. Contents, order, changes and what iterators see are the
// same, though the collection is also edited between two sorts.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/NewEntity.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using MoxVlanMapping::VlanXlateScaleEntry;
using Range = MoxVlanMapping::VlanRangeXlateMapping;
using SortedMap = VlanXlateScaleEntry::VidRangeSortedMap;

// vidRangeSorted in its literal form.
class LiteralSorted {
 public:
   struct Element {
      Range range;
      bool flag;
      std::uint64_t arrival;
   };
   // The order of the ranges, written down once more; what it leaves open decides the arrival.
   struct Order {
      static std::array< std::int64_t, 4 > place( const Element& element ) {
         const int low = element.range.lowVid().value();
         return { low - element.range.highVid().value(), low, element.range.mapping().rawVlanId(),
                  static_cast< std::int64_t >( element.arrival ) };
      }
      bool operator()( const std::shared_ptr< Element >& a,
                       const std::shared_ptr< Element >& b ) const {
         return place( *a ) < place( *b );
      }
   };
   using Elements = std::set< std::shared_ptr< Element >, Order >;

   const Elements& elements() const { return elements_; }
   std::uint32_t changes() const { return changes_; }

   Elements::const_iterator find( const Range& range ) const {
      return std::ranges::find_if( elements_,
                                   [ & ]( const auto& each ) { return each->range == range; } );
   }
   /// The equal element, else the first that `range` is less than.
   Elements::const_iterator findOrNext( const Range& range ) const {
      const auto equal = find( range );
      return equal != elements_.end() ? equal : behind( { range, false, UINT32_MAX } );
   }
   void is( const Range& range, bool flag ) {
      if ( const auto stored = find( range ); stored != elements_.end() ) {
         ( *stored )->flag = flag;
      } else {
         elements_.insert( std::make_shared< Element >( Element{ range, flag, ++arrivals_ } ) );
         ++changes_;
      }
   }
   bool del( const Range& range ) {
      const auto stored = find( range );
      if ( stored == elements_.end() ) {
         return false;
      }
      const auto gone = *stored;
      elements_.erase( stored );
      ++changes_;
      return gone->flag;
   }
   void delAll() {
      changes_ += static_cast< std::uint32_t >( elements_.size() );
      elements_.clear();
   }
   /// Where an iterator goes from `element`, which may be gone. The same range that came again
   /// meanwhile is passed when it would be next.
   Elements::const_iterator next( const Element& element ) const {
      const auto found = behind( element );
      return found != elements_.end() && ( *found )->range == element.range ? std::next( found )
                                                                            : found;
   }

 private:
   Elements::const_iterator behind( const Element& element ) const {
      return elements_.upper_bound( std::make_shared< Element >( element ) );
   }

   Elements elements_;
   std::uint32_t changes_ = 0;
   std::uint64_t arrivals_ = 0;
};

class SilentCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "SilentCodef";
   void processSortedVlanRange( IntfId ) override {}

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~SilentCodef() override { zelDoZombieReactors( true ); }
};

struct Held {
   SortedMap::Iterator at;
   std::shared_ptr< LiteralSorted::Element > element;
};

class SizeSortDifferentialTest : public TestSupport::NoneLeftTest {
 protected:
   static constexpr std::size_t kInterfaces = 3;

   std::size_t any( std::size_t below ) { return static_cast< std::size_t >( random_() % below ); }
   bool oneIn( std::size_t times ) { return any( times ) == 0; }

   // Mostly what a switch stores; also what only an edit behind the manager's back can: many great
   // ranges, which overlap, and ranges that end before they start.
   Range anyRange() {
      static constexpr std::array kMappings{
         VlanXlateMapping(), VlanXlateMapping::fromRaw( 3001 ), VlanXlateMapping::fromRaw( 3002 ),
         VlanXlateMapping::fromRaw( 3002, 7 ), VlanXlateMapping::fromRaw( 3002, 0, 0x88a8 ) };
      static constexpr std::array< std::size_t, 6 > kSizes{ 1, 3, 64, 65, 66, 400 };
      std::size_t low = 1 + any( oneIn( 2 ) ? 12 : VlanId::kHighest );
      std::size_t high = low + any( kSizes[ any( kSizes.size() ) ] );
      if ( oneIn( 20 ) ) {
         low = any( 0x10000 );
         high = oneIn( 2 ) ? any( 0x10000 ) : 0xffff;
      }
      return { VlanId::fromRaw( static_cast< std::uint16_t >( low ) ),
               VlanId::fromRaw( static_cast< std::uint16_t >( high ) ),
               kMappings[ any( kMappings.size() ) ] };
   }
   // Also one that is stored, or stored but for its mapping.
   Range anyRangeLike( const LiteralSorted& sorted ) {
      const Range range = anyRange();
      const auto at = sorted.findOrNext( range );
      if ( at == sorted.elements().end() || oneIn( 4 ) ) {
         return range;
      }
      const Range& stored = ( *at )->range;
      return oneIn( 2 ) ? stored : Range( stored.lowVid(), stored.highVid(), range.mapping() );
   }

   void editRanges( IntfId intfId ) {
      const auto entry = rangeDir_->vlanRangeEntryIs( intfId );
      const auto& ranges = entry->vlanIdRange();
      if ( oneIn( 40 ) ) {
         entry->vlanIdRangeDelAll();
      }
      const std::size_t times = oneIn( 10 ) ? any( 400 ) : any( 4 );
      for ( std::uint64_t time = 0; time < times; ++time ) {
         const Range range = anyRange();
         const auto at = ranges.findElementOrNext( range.lowVid() );
         if ( at && oneIn( 3 ) ) {   // the same bounds, so that it has a twin among the sorted
            entry->vlanIdRangeIs(
               { at->value().lowVid(), at->value().highVid(), range.mapping() } );
         } else if ( oneIn( 3 ) ) {
            entry->vlanIdRangeDel( at );
         } else {
            entry->vlanIdRangeIs( range );
         }
      }
   }

   void editSorted( VlanXlateScaleEntry& entry, LiteralSorted& literal ) {
      const Range range = anyRangeLike( literal );
      if ( oneIn( 30 ) ) {
         entry.vidRangeSortedDelAll();
         literal.delAll();
      } else if ( oneIn( 3 ) ) {
         ASSERT_EQ( entry.vidRangeSortedDel( range ), literal.del( range ) );
      } else {
         const bool flag = oneIn( 2 );
         entry.vidRangeSortedIs( range, flag );
         literal.is( range, flag );
      }
   }

   void sort( IntfId intfId, LiteralSorted& literal ) {
      codef_->sortVlanRangeBySize( intfId );
      literal.delAll();
      for ( const auto& element : rangeDir_->vlanRangeEntryIs( intfId )->vlanIdRange() ) {
         literal.is( element.value(), true );
      }
   }

   void hold( const SortedMap& sorted, const LiteralSorted& literal, std::vector< Held >& held ) {
      const Range range = anyRangeLike( literal );
      const auto at = sorted.findElementOrNext( range );
      const auto found = literal.findOrNext( range );
      ASSERT_EQ( static_cast< bool >( at ), found != literal.elements().end() );
      if ( at && held.size() < 5 ) {
         held.push_back( { at, *found } );
      }
   }
   void advanceOrDrop( const LiteralSorted& literal, std::vector< Held >& held ) {
      if ( held.empty() ) {
         return;
      }
      const auto which = held.begin() + static_cast< std::ptrdiff_t >( any( held.size() ) );
      const auto next = literal.next( *which->element );
      if ( oneIn( 2 ) || next == literal.elements().end() ) {
         held.erase( which );
      } else {
         ++which->at;
         which->element = *next;
      }
   }

   static void expectSame( const SortedMap& sorted, const LiteralSorted& literal,
                           const std::vector< Held >& held ) {
      ASSERT_EQ( sorted.changes(), literal.changes() );
      ASSERT_EQ( sorted.size(), literal.elements().size() );
      auto expected = literal.elements().begin();
      for ( const auto& element : sorted ) {
         ASSERT_EQ( element.key(), ( *expected )->range )
            << TestSupport::rangeText( element.key() ) << " instead of "
            << TestSupport::rangeText( ( *expected )->range );
         ASSERT_EQ( element.value(), ( *expected )->flag )
            << TestSupport::rangeText( element.key() );
         ++expected;
      }
      for ( const auto& [ at, element ] : held ) {
         SCOPED_TRACE( "held " + TestSupport::rangeText( element->range ) );
         ASSERT_EQ( at->key(), element->range );
         ASSERT_EQ( at->value(), element->flag );
         ASSERT_EQ( at.linked(), literal.elements().contains( element ) );
         auto following = at;
         ++following;
         const auto next = literal.next( *element );
         ASSERT_EQ( following ? TestSupport::rangeText( following->key() ) : "the end",
                    next != literal.elements().end() ? TestSupport::rangeText( ( *next )->range )
                                                     : "the end" );
      }
      sorted.verify();
   }

   const std::uint64_t seed_ = TestSupport::testSeed();
   std::mt19937_64 random_{ seed_ };
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< SilentCodef > codef_ = Zel::newEntity< SilentCodef >(
      nullptr, Quen::taskSchedulerFactory( Zel::manualClockFactory() ), rangeDir_, nullptr );
   std::array< LiteralSorted, kInterfaces > literals_;
   // Behind the task, whose entries they walk.
   std::array< std::vector< Held >, kInterfaces > held_;
};

TEST_F( SizeSortDifferentialTest, EachSortDoesWhatDeletingAllAndInsertingEachDoes ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int step = 0; step < 10000; ++step ) {
      const std::size_t which = any( kInterfaces );
      const IntfId intfId( 1 + which );
      LiteralSorted& literal = literals_[ which ];
      std::vector< Held >& held = held_[ which ];
      const auto entry = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intfId );
      SCOPED_TRACE( "step " + std::to_string( step ) );
      switch ( any( 6 ) ) {
      case 0:
      case 1:
         editRanges( intfId );
         sort( intfId, literal );
         break;
      case 2:
         sort( intfId, literal );
         break;
      case 3:
         ASSERT_NO_FATAL_FAILURE( editSorted( *entry, literal ) );
         break;
      case 4:
         ASSERT_NO_FATAL_FAILURE( hold( entry->vidRangeSorted(), literal, held ) );
         break;
      default:
         advanceOrDrop( literal, held );
         break;
      }
      ASSERT_NO_FATAL_FAILURE( expectSame( entry->vidRangeSorted(), literal, held ) );
   }
}

}   // namespace
