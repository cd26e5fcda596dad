// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// consumer: a program of somebody else's, built against the installed package.
//
// It derives from the abstract class of the library, feeds the range index, lets the task run
// and compares what the derived class was handed with what it must be.
#include <iostream>
#include <string>

#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"

namespace {

class Collector : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "Collector";

   void processSortedVlanRange( Corvel::IntfId intf ) override {
      const auto entry = vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intf );
      for ( const auto& element : entry->vidRangeSorted() ) {
         const auto& range = element.key();
         text_ += std::to_string( range.lowVid().value() ) + '-' +
                  std::to_string( range.highVid().value() ) + ' ';
      }
   }

   const std::string& text() const { return text_; }

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;

 private:
   std::string text_;
};

}   // namespace

int
main() {
   const Corvel::IntfId port( 1 );
   const auto ranges = MoxVlanMapping::vlanRangeEntryDirFactory();
   const auto schedule = MoxVlanMapping::vlanXlateScheduleDirFactory();
   const auto scheduler = Quen::taskSchedulerFactory( Zel::steadyClockFactory() );
   const auto collector = Zel::newEntity< Collector >( Mox::MoxCommonSmData::MoxCommonSmDataIs(),
                                                       scheduler, ranges, schedule );

   const auto manager = MoxVlanMapping::moxVlanRangeMgrFactory( ranges );
   const Bridging::VlanXlateMapping mapping( Bridging::VlanIdOrNone( 3001 ) );
   for ( const auto vlan : { 5u, 12u, 10u, 11u, 20u, 21u } ) {
      manager->addVlanToIdx( port, Bridging::VlanId( vlan ), mapping );
   }
   schedule->vlanXlateScheduleIs( port );
   scheduler->runUntilIdle();

   const std::string expected = "10-12 20-21 5-5 ";
   std::cout << "sorted ranges: " << collector->text() << '\n';
   if ( collector->text() != expected ) {
      std::cerr << "expected:      " << expected << '\n';
      return 1;
   }
   return 0;
}
