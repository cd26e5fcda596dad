// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The range manager against its literal form: same index, same changes, same exceptions, same
// aborts, same lines of trace, same views of those who hold an element.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/Trace.h"
#include "tests/support/AbortState.h"
#include "tests/support/LiteralRangeMgr.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeSteps.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Corvel::IntfId;
using MoxVlanMapping::MoxVlanRangeMgr;
using MoxVlanMapping::ReverseStartIdVlanId;
using MoxVlanMapping::VlanRangeEntry;
using TestSupport::entryText;
using TestSupport::LiteralRangeEntry;
using TestSupport::LiteralRangeMgr;
using TestSupport::Profile;
using TestSupport::Range;
using TestSupport::RangeSteps;
using TestSupport::Step;

// The elements of one collection in both forms, and the changes that it counted.
template < class Map, class Literal >
void
expectSameElements( const Map& map, const Literal& literal ) {
   ASSERT_EQ( map.changes(), literal.changes() );
   ASSERT_EQ( map.size(), literal.elements().size() );
   auto at = literal.elements().begin();
   for ( const auto& element : map ) {
      ASSERT_EQ( element.key().value(), at->first );
      ASSERT_EQ( element.value(), *at->second ) << "at " << at->first;
      ++at;
   }
}

// An iterator of one collection, beside the element that it stands on in the literal form.
template < class Map, class Literal >
struct Held {
   typename Map::Iterator at;
   typename Literal::Element element;
   std::uint16_t key;

   Held( const Map& map, const Literal& literal, const typename Map::Iterator& from )
       : at( from ), element( literal.find( from->key().value() ) ), key( from->key().value() ) {
      EXPECT_TRUE( element && at.walks( map ) );
   }
   void expectSame( const Literal& literal ) const {
      ASSERT_EQ( at->key().value(), key );
      ASSERT_EQ( at->value(), *element ) << "held " << key;
      ASSERT_EQ( at.linked(), literal.find( key ) == element ) << "held " << key;
      auto following = at;
      ++following;
      const auto expected = std::as_const( literal ).elements().upper_bound( key );
      ASSERT_EQ( following ? following->key().value() : -1,
                 expected != literal.elements().end() ? expected->first : -1 )
         << "behind held " << key;
   }
};
using HeldRange = Held< VlanRangeEntry::VlanIdRangeMap, decltype( LiteralRangeEntry::ranges ) >;
using HeldStart =
   Held< VlanRangeEntry::RevSortedStartVidMap, decltype( LiteralRangeEntry::starts ) >;

std::uint32_t
changesOf( const LiteralRangeEntry& entry ) {
   return entry.ranges.changes() + entry.starts.changes();
}

// A literal entry with the values that its elements had.
class SavedEntry {
 public:
   explicit SavedEntry( const LiteralRangeEntry& entry ) : entry_( entry ) {
      for ( const auto& [ key, element ] : entry.ranges.elements() ) {
         ranges_.push_back( *element );
      }
      for ( const auto& [ key, element ] : entry.starts.elements() ) {
         flags_.push_back( *element );
      }
   }
   std::uint32_t changes() const { return changesOf( entry_ ); }
   void restore( LiteralRangeEntry& entry ) const {
      entry = entry_;
      auto range = ranges_.begin();
      for ( const auto& [ key, element ] : entry.ranges.elements() ) {
         *element = *range++;
      }
      auto flag = flags_.begin();
      for ( const auto& [ key, element ] : entry.starts.elements() ) {
         *element = *flag++;
      }
   }

 private:
   const LiteralRangeEntry entry_;
   std::vector< Range > ranges_;
   std::vector< bool > flags_;
};

class RangeDifferentialDeathTest :
    public TestSupport::NoneLeftTest,
    public testing::WithParamInterface< Profile > {
 protected:
   ~RangeDifferentialDeathTest() override {
      Zel::traceLevelsIs( "MoxVlanRangeMgr/" );
      Zel::traceSinkIs( {} );
   }

   void SetUp() override {
      Zel::traceSinkIs( [ this ]( const Zel::TraceLine& line ) {
         lines_.push_back( std::to_string( line.level ) + " " + std::string( line.text ) );
         if ( profile_.watched ) {
            const auto entry = dir_->vlanRangeEntry( step_.intfId );
            lines_.back() += seen( entry.get() );
            if ( entry && lines_.size() == editAt_ ) {
               edit( *entry, interference_ );
            }
         }
      } );
      literal_.onLine = [ this ] {
         if ( profile_.watched ) {
            const auto entry = literal_.entries.find( step_.intfId.value() );
            const bool found = entry != literal_.entries.end();
            literal_.lines.back() += seen( found ? &entry->second : nullptr );
            if ( found && literal_.lines.size() == editAt_ ) {
               edit( entry->second, interference_ );
            }
         }
      };
      Zel::traceLevelsIs( std::string( "MoxVlanRangeMgr/" ) + profile_.levels );
   }

   static constexpr char kSeen[] = "   index: ";
   template < class Entry >
   static std::string seen( const Entry* entry ) {
      return kSeen + ( entry ? entryText( *entry ) : "none" );
   }

   // One a line, so that a failure reads as a diff.
   static std::string diffable( const std::vector< std::string >& lines ) {
      std::string all;
      for ( const std::string& line : lines ) {
         all += line + "\n";
      }
      return all;
   }

   void restart() {
      heldRanges_.clear();
      heldStarts_.clear();
      literal_.entries.clear();
      steps_.restart();
      dir_ = MoxVlanMapping::vlanRangeEntryDirFactory();
      mgr_ = MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
   }

   void runReal() {
      lines_.clear();
      if ( isEdit( step_.op ) ) {
         edit( *dir_->vlanRangeEntryIs( step_.intfId ), step_ );
         return;
      }
      // The stored range itself where there is one, as the manager's own caller passes it.
      const Range* range = &step_.range;
      std::optional< MoxVlanMapping::VlanRangeEntry::VlanIdRangeMap::Iterator > at;
      if ( const auto entry = dir_->vlanRangeEntry( step_.intfId ) ) {
         at = entry->vlanIdRange().findElement( range->lowVid() );
         range = *at && ( *at )->value() == *range ? &( *at )->value() : range;
      }
      answer_ = call( *mgr_, step_, *range );
   }

   // Where the literal form fails an assertion, both forms stay as they were.
   void runStep() {
      literal_.lines.clear();
      if ( isEdit( step_.op ) ) {
         edit( literal_.entry( step_.intfId ), step_ );
         runReal();
         return;
      }
      const bool existed = literal_.entries.contains( step_.intfId.value() );
      const SavedEntry saved( existed ? literal_.entry( step_.intfId ) : LiteralRangeEntry() );
      std::string answer;
      try {
         answer = call( literal_, step_, step_.range );
      } catch ( const TestSupport::AssertionFailed& failure ) {
         expectDeath( failure.what(), literal_.entry( step_.intfId ), saved.changes() );
         if ( existed ) {
            saved.restore( literal_.entry( step_.intfId ) );
         } else {
            literal_.entries.erase( step_.intfId.value() );
         }
         return;
      }
      runReal();
      ASSERT_EQ( answer_, answer );
      std::erase_if( literal_.lines, [ this ]( const std::string& line ) {
         return *profile_.levels != '*' && line[ 0 ] != *profile_.levels;
      } );
      ASSERT_EQ( diffable( lines_ ), diffable( literal_.lines ) );
   }

   // A process takes its time to die, so only the first few of a kind do: of those that fail the
   // same assertion in the same case behind as many changes.
   void expectDeath( const std::string& expression, const LiteralRangeEntry& entry,
                     std::uint32_t changesBefore ) {
      std::string decision;
      for ( const std::string& line : literal_.lines ) {
         decision = line[ 0 ] == '1' ? line.substr( 0, line.find( kSeen ) ) : decision;
      }
      if ( ++deaths_[ { decision, expression, changesOf( entry ) - changesBefore } ] > 2 ) {
         return;
      }
      const std::string state = entryText( entry );
      EXPECT_DEATH(
         {
            TestSupport::printOnAbort(
               [ this ] { return entryText( *dir_->vlanRangeEntry( step_.intfId ) ); } );
            runReal();
         },
         testing::AllOf( testing::HasSubstr( ": Assertion `" + expression + "' failed.\n" ),
                         testing::HasSubstr( "state at abort: " + state + "\n" ) ) );
   }

   void hold() {
      if ( steps_.oneIn( 6 ) && heldRanges_.size() < 4 ) {
         const IntfId intfId( 1 + steps_.any( 3 ) );
         const auto& ranges = dir_->vlanRangeEntryIs( intfId )->vlanIdRange();
         const auto& literal = literal_.entry( intfId );
         if ( const auto at = ranges.findElementOrNext( steps_.anyVid() ) ) {
            heldRanges_.emplace( intfId.value(), HeldRange( ranges, literal.ranges, at ) );
         }
         const auto& starts = dir_->vlanRangeEntryIs( intfId )->revSortedStartVid();
         const ReverseStartIdVlanId start( TestSupport::startNear( steps_.anyVid() ) );
         if ( const auto at = starts.findElementOrNext( start ) ) {
            heldStarts_.emplace( intfId.value(), HeldStart( starts, literal.starts, at ) );
         }
      }
      if ( steps_.oneIn( 8 ) ) {
         heldRanges_.erase( 1 + steps_.any( 3 ) );
         heldStarts_.erase( 1 + steps_.any( 3 ) );
      }
   }

   void expectSame() {
      ASSERT_EQ( dir_->vlanRangeEntry().size(), literal_.entries.size() );
      const auto at = literal_.entries.find( step_.intfId.value() );
      const auto entry = dir_->vlanRangeEntry( step_.intfId );
      ASSERT_EQ( entry != nullptr, at != literal_.entries.end() );
      if ( !entry ) {
         return;
      }
      const LiteralRangeEntry& literal = at->second;
      entry->vlanIdRange().verify();
      entry->revSortedStartVid().verify();
      ASSERT_NO_FATAL_FAILURE( expectSameElements( entry->vlanIdRange(), literal.ranges ) );
      ASSERT_NO_FATAL_FAILURE( expectSameElements( entry->revSortedStartVid(), literal.starts ) );
      for ( const auto& [ intf, held ] : heldRanges_ ) {
         ASSERT_NO_FATAL_FAILURE( held.expectSame( literal_.entry( IntfId( intf ) ).ranges ) );
      }
      for ( const auto& [ intf, held ] : heldStarts_ ) {
         ASSERT_NO_FATAL_FAILURE( held.expectSame( literal_.entry( IntfId( intf ) ).starts ) );
      }
   }

   const Profile profile_ = GetParam();
   const std::uint64_t seed_ = TestSupport::testSeed();

   Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > dir_;
   Zel::Ptr< MoxVlanRangeMgr > mgr_;
   LiteralRangeMgr literal_;
   RangeSteps steps_{ profile_, seed_, literal_ };
   Step step_{};
   Step interference_{};
   std::size_t editAt_ = 0;   // line behind which it comes; 0: not at all
   std::string answer_;
   std::vector< std::string > lines_;
   std::multimap< std::uint64_t, HeldRange > heldRanges_;   // by interface
   std::multimap< std::uint64_t, HeldStart > heldStarts_;
   std::map< std::tuple< std::string, std::string, std::uint32_t >, int > deaths_;
};

TEST_P( RangeDifferentialDeathTest, EachStepDoesWhatItsLiteralFormDoes ) {
   SCOPED_TRACE( TestSupport::seedNote( seed_ ) );
   for ( int sequence = 0; sequence < profile_.sequences; ++sequence ) {
      restart();
      for ( int number = 0; number < profile_.steps; ++number ) {
         step_ = steps_.anyStep();
         editAt_ = profile_.watched && steps_.oneIn( 4 ) ? 1 + steps_.any( 14 ) : 0;
         if ( editAt_ != 0 ) {
            interference_ = steps_.anyEdit( step_.intfId );
         }
         const std::string before = seen( literal_.find( step_.intfId ) );
         runStep();
         if ( !HasFailure() ) {
            expectSame();
         }
         ASSERT_FALSE( HasFailure() )
            << "sequence " << sequence << " step " << number << ": "
            << testing::PrintToString( step_ ) << "\nbehind line " << editAt_ << ": "
            << testing::PrintToString( interference_ ) << "\nbefore" << before << "\nafter "
            << seen( dir_->vlanRangeEntry( step_.intfId ).get() ) << "\nwanted"
            << seen( literal_.find( step_.intfId ) );
         hold();
      }
   }
   if ( profile_.crosses ) {
      EXPECT_GE( steps_.crossedDown(), 10 ) << "the index hardly changed its shape";
   }
}

using Windows = std::vector< std::pair< unsigned, unsigned > >;
const Windows kEnds{ { 1, 8 }, { 2000, 2008 }, { 4089, 4094 } };
const Windows kWide{ { 1, 300 }, { 2000, 2300 }, { 3800, 4094 } };
const Windows kAll{ { 1, 4094 } };

INSTANTIATE_TEST_SUITE_P(
   Profiles, RangeDifferentialDeathTest,
   testing::Values( Profile{ "EndsUntraced", kEnds, "", 200, 200, 0 },
                    Profile{ "EndsUntracedEdited", kEnds, "", 400, 100, 10 },
                    Profile{ "EndsTraced", kEnds, "*", 50, 100, 4 },
                    Profile{ "EndsTracedAtLevel1", kEnds, "1", 50, 100, 4 },
                    Profile{ "EndsTracedAtAnUnusedLevel", kEnds, "5", 50, 100, 4 },
                    Profile{ "EndsWatched", kEnds, "*", 300, 50, 4, true },
                    Profile{ "WideUntraced", kWide, "", 4, 9000, 0, false, true },
                    Profile{ "WideUntracedEdited", kWide, "", 6, 6000, 2, false, true },
                    Profile{ "WideTraced", kWide, "*", 4, 7000, 1, false, true },
                    Profile{ "AllUntraced", kAll, "", 8, 2000, 1, false, true },
                    Profile{ "AllTraced", kAll, "*", 6, 2000, 1, false, true } ),
   []( const auto& each ) { return std::string( each.param.name ); } );

}   // namespace
