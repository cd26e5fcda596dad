// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// LibraryIndex: the range index of the built library, in the form of its peers.
//
// Throws   std::logic_error from rangesOf() when ranges and starts do not agree.
// Threads  One.
#pragma once

#include <algorithm>
#include <stdexcept>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "bench/Peers.h"
#include "bench/Report.h"

namespace Bench {

/// All that the directory holds.
inline std::vector< StoredRange >
rangesOf( const MoxVlanMapping::VlanRangeEntryDir& dir ) {
   std::vector< StoredRange > all;
   for ( const auto& element : dir.vlanRangeEntry() ) {
      const MoxVlanMapping::VlanRangeEntry& entry = *element.entity();
      std::vector< Vid > lows;
      for ( const auto& stored : entry.vlanIdRange() ) {
         const auto& range = stored.value();
         all.push_back( { entry.intfId().value(), range.lowVid().value(), range.highVid().value(),
                          bitsOf( range.mapping() ) } );
         lows.push_back( range.lowVid().value() );
      }
      std::vector< Vid > starts;
      for ( const auto& start : entry.revSortedStartVid() ) {
         starts.push_back( start.key().value() );
      }
      std::ranges::reverse( starts );
      if ( starts != lows ) {
         throw std::logic_error( "the library's starts are not the first ids of its ranges" );
      }
   }
   std::ranges::sort( all );
   return all;
}

class LibraryIndex {
 public:
   static constexpr const char* kName = kLibrary;
   static constexpr const char* kAlone = "index alone";   ///< where it is what others stand beside

   void add( Corvel::IntfId intf, Bridging::VlanId vid, Mapping mapping ) {
      mgr_->addVlanToIdx( intf, vid, mapping );
   }
   void del( Corvel::IntfId intf, Bridging::VlanId vid ) { mgr_->deleteVlanFromIdx( intf, vid ); }
   void of( Corvel::IntfId intf ) { dir_->vlanRangeEntryIs( intf ); }

   std::vector< StoredRange > ranges() const { return rangesOf( *dir_ ); }

   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr >& mgr() const { return mgr_; }

 private:
   Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > dir_ = MoxVlanMapping::vlanRangeEntryDirFactory();
   Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
};

}   // namespace Bench
