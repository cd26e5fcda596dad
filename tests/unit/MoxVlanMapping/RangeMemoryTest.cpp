// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What add and delete leave behind when memory runs out: the index as it was.
#include <gtest/gtest.h>

#include <cstddef>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include "Zel/NewEntity.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/MoxVlanMapping/RangeMgrTest.h"

namespace {

// Holds all memory that new elements could have without asking operator new.
class Exhausted {
 public:
   Exhausted() {
      nodes_.reserve( kMostFreeCells );
      const TestSupport::OperatorNewHook refuse( [] { throw std::bad_alloc(); } );
      takeAll( [] {
         return Zel::newEntity< MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange >(
            MoxVlanMapping::VlanRangeXlateMapping() );
      } );
      takeAll( [] {
         return Zel::newEntity< MoxVlanMapping::VlanRangeEntry::ZelRevSortedStartVid >(
            MoxVlanMapping::ReverseStartIdVlanId( 1 ), true );
      } );
   }

 private:
   static constexpr std::size_t kMostFreeCells = 100000;

   template < class Take >
   void takeAll( Take take ) {
      try {
         while ( nodes_.size() < kMostFreeCells ) {
            nodes_.push_back( take() );
         }
      } catch ( const std::bad_alloc& ) {
         return;   // there is none left
      }
      ADD_FAILURE() << "there is more memory than this can hold";
   }

   std::vector< Zel::Ptr< Zel::PtrInterface > > nodes_;
};

struct ShortageRow {
   const char* name;
   const char* before;
   bool add;
   unsigned vid;
   const char* after;
   bool inserts;

   friend void PrintTo( const ShortageRow& row, std::ostream* out ) { *out << row.name; }
};

class RangeShortageTable : public RangeMgrTest, public testing::WithParamInterface< ShortageRow > {
 protected:
   // Runs the operation with the request for memory number `refused`, from 0, refused. Returns
   // whether it came to its end.
   bool succeeds( unsigned refused ) {
      const Exhausted exhausted;
      unsigned request = 0;
      const TestSupport::OperatorNewHook hook( [ & ] {
         if ( request++ == refused ) {
            throw std::bad_alloc();
         }
      } );
      try {
         if ( GetParam().add ) {
            add( GetParam().vid, M );
         } else {
            del( GetParam().vid );
         }
         return true;
      } catch ( const std::bad_alloc& ) {
         return false;
      }
   }
};

TEST_P( RangeShortageTable, LeavesTheIndexAsItWas ) {
   given( GetParam().before );
   const std::string before = state();
   unsigned refused = 0;
   while ( !succeeds( refused ) ) {
      ASSERT_EQ( state(), before ) << "request " << refused << " refused";
      entry().vlanIdRange().verify();
      entry().revSortedStartVid().verify();
      ASSERT_LT( ++refused, 10u );
   }
   EXPECT_EQ( state(), GetParam().after );
   EXPECT_EQ( refused > 0, GetParam().inserts ) << "no request was refused";
}

INSTANTIATE_TEST_SUITE_P(
   Cases, RangeShortageTable,
   testing::Values(
      ShortageRow{ "Merge", "10-12 M, 14-20 M", true, 13, "7: 10-20 M / 10\n", true },
      ShortageRow{ "FrontExtension", "10-20 M", true, 9, "7: 9-20 M / 9\n", true },
      ShortageRow{ "BackExtension", "10-20 M", true, 21, "7: 10-21 M / 10\n", true },
      ShortageRow{ "NewRange", "10-20 M", true, 30, "7: 10-20 M, 30-30 M / 30, 10\n", true },
      ShortageRow{ "OnlyId", "5-5 M", false, 5, "7:  / \n", false },
      ShortageRow{ "LowestId", "10-20 M", false, 10, "7: 11-20 M / 11\n", true },
      ShortageRow{ "HighestId", "10-20 M", false, 20, "7: 10-19 M / 10\n", true },
      ShortageRow{ "Split", "10-20 M", false, 15, "7: 10-14 M, 16-20 M / 16, 10\n", true } ),
   []( const auto& row ) { return std::string( row.param.name ); } );

}   // namespace
