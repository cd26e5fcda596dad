// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeMgrTest: a range manager over an empty directory, with its state as text.
#pragma once

#include <cstdint>
#include <string>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

class RangeMgrTest : public TestSupport::NoneLeftTest {
 protected:
   RangeMgrTest() {
      // The first use of a trace handle takes memory; tests count requests for it.
      MoxVlanMapping::moxVlanRangeMgrFactory( MoxVlanMapping::vlanRangeEntryDirFactory() )
         ->deleteVlanFromIdx( kPort, vlan( 1 ) );
   }

   static constexpr char M = 'M';
   static constexpr char N = 'N';
   static constexpr char kEmpty = '-';
   static constexpr Corvel::IntfId kPort{ 7 };

   /// Ids are taken unchecked, here and below.
   static constexpr Bridging::VlanId vlan( unsigned number ) {
      return Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( number ) );
   }

   MoxVlanMapping::VlanRangeEntry& entry() { return *dir_->vlanRangeEntryIs( kPort ); }

   /// Stores ranges with their starts.
   void given( const std::string& ranges ) { TestSupport::store( entry(), ranges ); }
   void givenRangesAlone( const std::string& ranges ) {
      for ( const auto& range : TestSupport::rangesOf( ranges ) ) {
         entry().vlanIdRangeIs( range );
      }
   }

   void add( unsigned number, char letter ) {
      mgr_->addVlanToIdx( kPort, vlan( number ), TestSupport::mappingOf( letter ) );
   }
   void del( unsigned number ) { mgr_->deleteVlanFromIdx( kPort, vlan( number ) ); }
   bool inUpper( unsigned number, char letter ) const {
      return mgr_->isVidAndDot1qInUpperBoundRange( kPort, vlan( number ),
                                                   TestSupport::mappingOf( letter ) );
   }
   bool inLower( unsigned number, char letter ) const {
      return mgr_->isVidAndDot1qInLowerBoundRange( kPort, vlan( number ),
                                                   TestSupport::mappingOf( letter ) );
   }

   std::string ranges() { return TestSupport::rangesText( entry() ); }
   std::string starts() { return TestSupport::startsText( entry() ); }
   /// Everything in the directory.
   std::string state() const { return TestSupport::stateText( *dir_ ); }

   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > dir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
};
