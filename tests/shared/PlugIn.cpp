// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// A plug-in as a user writes one: a class derived from the library's, a type, a trace handle and a
// message of the rings, all of which are to be gone when it is closed.
#include <array>

#include "Kirlog/PelrecMessage.h"
#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"
#include "Zel/TypeModule.h"

namespace {

constexpr char zelSourceTag[] = "tests/shared/PlugIn";
constinit Zel::TraceHandle trace( "PlugIn", false );
constinit Kirlog::PelrecMessage< 5, "i" > ranges( "PlugIn was handed %s ranges" );

class Programmer : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "PlugIn::Programmer";
   int handed = 0;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~Programmer() override { zelDoZombieReactors( true ); }

   void processSortedVlanRange( Corvel::IntfId intfId ) override {
      const auto entry = vlanXlateScaleEntryDir()->vlanXlateScaleEntryIs( intfId );
      handed += static_cast< int >( entry->vidRangeSorted().size() );
      ZEL_TRACE( trace, 1, 10, "ranges: ", handed );
      ranges( handed );
   }
};

constexpr std::array kTypes{
   Zel::TypeRecord{ Programmer::zelTypeName, Zel::TypeKind::Entity, sizeof( Programmer ) } };
constexpr Zel::TypeModule kModule{ "tests/shared/PlugIn", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

/// The ranges that one Programmer is handed of three ids.
extern "C" ZEL_EXPORT int
plugInRanges() {
   const Corvel::IntfId port( 1 );
   const auto dir = MoxVlanMapping::vlanRangeEntryDirFactory();
   const auto schedule = MoxVlanMapping::vlanXlateScheduleDirFactory();
   const auto scheduler = Quen::taskSchedulerFactory( Zel::manualClockFactory() );
   const auto programmer =
      Zel::newEntity< Programmer >( Mox::moxCommonSmDataFactory(), scheduler, dir, schedule );
   const auto mgr = MoxVlanMapping::moxVlanRangeMgrFactory( dir );
   for ( const unsigned vlan : { 10u, 11u, 20u } ) {
      mgr->addVlanToIdx( port, Bridging::VlanId( vlan ),
                         Bridging::VlanXlateMapping( Bridging::VlanIdOrNone( 100 ) ) );
   }
   schedule->vlanXlateScheduleIs( port );
   scheduler->runUntilIdle();
   return programmer->handed;
}
