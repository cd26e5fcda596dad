// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/MoxVlanMappingConfigDir.h"

#include "Zel/NewEntity.h"

namespace Mox {

MoxVlanMappingConfigDir::~MoxVlanMappingConfigDir() {
   zelDoZombieReactors( true );
   notifieeList_.notifieeDelAll();
}

Zel::Ptr< MoxVlanMappingConfigDir >
MoxVlanMappingConfigDir::MoxVlanMappingConfigDirIs() {
   return Zel::newEntity< MoxVlanMappingConfigDir >();
}

void
MoxVlanMappingConfigDir::configIs( const MoxVlanMappingConfig& record ) {
   const PortVlanKey key = record.key();
   if ( config_.recordIs( key, record ) ) {
      notifieeList_.notify( kAttrConfig, &key );
   }
}

MoxVlanMappingConfig
MoxVlanMappingConfigDir::configDel( const PortVlanKey& key ) {
   const Zel::Ptr< ZelConfig > gone = config_.del( key );
   if ( !gone ) {
      return {};
   }
   notifieeList_.notify( kAttrConfig, &gone->key() );
   return gone->value();
}

Zel::Ptr< MoxVlanMappingConfigDir >
moxVlanMappingConfigDirFactory() {
   return MoxVlanMappingConfigDir::MoxVlanMappingConfigDirIs();
}

}   // namespace Mox
