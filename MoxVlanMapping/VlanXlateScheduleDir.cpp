// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanXlateScheduleDir.h"

#include "Zel/FirstException.h"
#include "Zel/NewEntity.h"

namespace MoxVlanMapping {

VlanXlateScheduleDir::~VlanXlateScheduleDir() {
   zelDoZombieReactors( true );
   // Before the members go: nobody hears of members that vanish with the directory.
   notifieeList_.notifieeDelAll();
}

Zel::Ptr< VlanXlateScheduleDir >
VlanXlateScheduleDir::VlanXlateScheduleDirIs() {
   return Zel::newEntity< VlanXlateScheduleDir >();
}

void
VlanXlateScheduleDir::vlanXlateScheduleIs( Corvel::IntfId intfId ) {
   const auto make = [ & ] { return Zel::newEntity< ZelVlanXlateSchedule >( intfId ); };
   if ( vlanXlateSchedule_.findOrInsert( intfId, make ).second ) {
      notifieeList_.notify( kAttrVlanXlateSchedule, &intfId );
   }
}

void
VlanXlateScheduleDir::vlanXlateScheduleIs( const Zel::Ptr< ZelVlanXlateSchedule >& element ) {
   const Corvel::IntfId intfId = element->key();
   if ( vlanXlateSchedule_.findOrInsert( intfId, [ & ] { return element; } ).second ) {
      notifieeList_.notify( kAttrVlanXlateSchedule, &intfId );
   }
}

bool
VlanXlateScheduleDir::vlanXlateScheduleDel( Corvel::IntfId intfId ) {
   if ( !vlanXlateSchedule_.del( intfId ) ) {
      return false;
   }
   notifieeList_.notify( kAttrVlanXlateSchedule, &intfId );
   return true;
}

void
VlanXlateScheduleDir::vlanXlateScheduleDelAll() {
   const Zel::Ptr< VlanXlateScheduleDir > self( this );   // a reactor may drop the last other one
   const auto last = vlanXlateSchedule_.last();
   if ( !last ) {
      return;
   }
   // What reactors mark meanwhile stands behind the last one, which they may take away, too.
   const auto behindLast = [ & ] {
      auto at = last;
      return ++at;
   };
   Zel::FirstException failed;
   for ( auto at = vlanXlateSchedule_.first(); at != behindLast(); ++at ) {
      failed.run( [ & ] { vlanXlateScheduleDel( at->key() ); } );
   }
   failed.throwOn();
}

Zel::Ptr< VlanXlateScheduleDir >
vlanXlateScheduleDirFactory() {
   return VlanXlateScheduleDir::VlanXlateScheduleDirIs();
}

}   // namespace MoxVlanMapping
