// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Bridging/VlanXlateStatusDir.h"

#include "Zel/NewEntity.h"

namespace Bridging {

VlanXlateStatusDir::~VlanXlateStatusDir() {
   zelDoZombieReactors( true );
}

Zel::Ptr< VlanXlateStatusDir >
VlanXlateStatusDir::VlanXlateStatusDirIs() {
   return Zel::newEntity< VlanXlateStatusDir >();
}

void
VlanXlateStatusDir::vlanXlateStatusIs( Corvel::IntfId intfId ) {
   vlanXlateStatus_.findOrInsert(
      intfId, [ & ] { return Zel::newEntity< ZelVlanXlateStatus >( intfId ); } );
}

bool
VlanXlateStatusDir::vlanXlateStatusDel( Corvel::IntfId intfId ) {
   return static_cast< bool >( vlanXlateStatus_.del( intfId ) );
}

Zel::Ptr< VlanXlateStatusDir >
vlanXlateStatusDirFactory() {
   return VlanXlateStatusDir::VlanXlateStatusDirIs();
}

}   // namespace Bridging
