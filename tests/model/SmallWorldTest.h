// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SmallWorldTest: a range manager in a small world, brought to an index by calls alone, and what one
// more call does there.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <tuple>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"
#include "tests/model/SmallWorld.h"
#include "tests/support/NoneLeftTest.h"

namespace SmallWorld {

class SilentCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "SilentCodef";
   void processSortedVlanRange( IntfId ) override {}

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~SilentCodef() override { zelDoZombieReactors( true ); }
};

class SmallWorldTest :
    public TestSupport::NoneLeftTest,
    public testing::WithParamInterface< World > {
 protected:
   // The index as the oracle says that a call leaves it, or the assertion that ends it.
   struct Outcome {
      State state = 0;
      std::uint32_t changes = 0;
      std::string aborts;
      std::vector< std::string > lines;
   };

   SmallWorldTest() {
      Zel::traceSinkIs( [ this ]( const Zel::TraceLine& line ) {
         lines_.push_back( std::to_string( line.level ) + " " + std::string( line.text ) );
      } );
      tracedIs( "" );
   }
   ~SmallWorldTest() override {
      tracedIs( "" );
      Zel::traceSinkIs( {} );
   }

   static void tracedIs( const std::string& levels ) {
      Zel::traceLevelsIs( "MoxVlanRangeMgr/" + levels );
   }

   MoxVlanMapping::VlanRangeEntry& entry() { return *dir_->vlanRangeEntryIs( kIntf ); }
   void restart( const Path& path ) {
      dir_->vlanRangeEntryDel( kIntf );
      for ( const Call call : path ) {
         carryOut( *mgr_, world_, call );
      }
   }

   // One more call behind `path`, which has come to `from`. The lines are expected if `levels`
   // are given.
   void expectCall( const Path& path, State from, Call call, const Outcome& expected,
                    const std::string& levels ) {
      const auto failure = [ & ] {
         return pathText( world_, path ) + "then " + pathText( world_, { call } ) +
                "with traced levels \"" + levels + "\"";
      };
      restart( path );
      ASSERT_EQ( stateOf( world_, entry() ), from ) << failure();
      const std::uint32_t before = changes();
      lines_.clear();
      const bool traced = !levels.empty();
      if ( traced ) {
         tracedIs( levels );
      }
      carryOut( *mgr_, world_, call );
      if ( traced ) {
         tracedIs( "" );
      }
      if ( lines_ != ( traced ? expected.lines : std::vector< std::string >() ) ) {
         FAIL() << failure() << "\n  got" << linesText( lines_ ) << "\n  not"
                << linesText( expected.lines );
      }
      const State got = stateOf( world_, entry() );
      ASSERT_EQ( got, expected.state ) << failure() << "\n  got " << stateText( world_, got )
                                       << "\n  not " << stateText( world_, expected.state );
      ASSERT_EQ( changes() - before, expected.changes ) << failure();
      entry().vlanIdRange().verify();
      entry().revSortedStartVid().verify();
   }
   std::uint32_t changes() {
      return entry().vlanIdRange().changes() + entry().revSortedStartVid().changes();
   }

   // The size sort of the index as it stands, against the order of the ranges written down again.
   void expectSorted( State state ) {
      std::vector< std::tuple< int, unsigned, unsigned > > places;   // size, low, code
      for ( unsigned low = 0; low < kIds; ++low ) {
         if ( const unsigned code = rangeCode( state, low ) ) {
            places.emplace_back( int( low ) - int( ( code - 1 ) % kIds ), low, code );
         }
      }
      std::ranges::sort( places );
      std::string expected;
      for ( const auto& [ size, low, code ] : places ) {
         expected += ( expected.empty() ? "" : ", " ) +
                     TestSupport::rangeText( { world_.vid( low ), world_.vid( ( code - 1 ) % kIds ),
                                               world_.mapping( ( code - 1 ) / kIds ) } );
      }
      codef_->sortVlanRangeBySize( kIntf );
      const auto sorted = codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( kIntf );
      ASSERT_EQ( TestSupport::sortedText( *sorted ), expected ) << stateText( world_, state );
      sorted->vidRangeSorted().verify();
   }

   const World world_ = GetParam();
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > dir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
   const Zel::Ptr< SilentCodef > codef_ = Zel::newEntity< SilentCodef >(
      nullptr, Quen::taskSchedulerFactory( Zel::manualClockFactory() ), dir_, nullptr );
   std::vector< std::string > lines_;
};

}   // namespace SmallWorld
