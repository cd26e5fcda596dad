// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/MoxVlanMappingStatusDir.h"

#include "Zel/NewEntity.h"

namespace Mox {

MoxVlanMappingStatusDir::~MoxVlanMappingStatusDir() {
   zelDoZombieReactors( true );
   notifieeList_.notifieeDelAll();
}

Zel::Ptr< MoxVlanMappingStatusDir >
MoxVlanMappingStatusDir::MoxVlanMappingStatusDirIs() {
   return Zel::newEntity< MoxVlanMappingStatusDir >();
}

void
MoxVlanMappingStatusDir::statusIs( const MoxVlanMappingStatus& record ) {
   const PortVlanKey key = record.key();
   if ( status_.recordIs( record ) ) {
      notifieeList_.notify( kAttrStatus, &key );
   }
}

MoxVlanMappingStatus
MoxVlanMappingStatusDir::statusDel( const PortVlanKey& key ) {
   const Zel::Ptr< ZelStatus > gone = status_.del( key );
   if ( !gone ) {
      return {};
   }
   notifieeList_.notify( kAttrStatus, &gone->key() );
   return gone->value();
}

Zel::Ptr< MoxVlanMappingStatusDir >
moxVlanMappingStatusDirFactory() {
   return MoxVlanMappingStatusDir::MoxVlanMappingStatusDirIs();
}

}   // namespace Mox
