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
   config_.recordIs( record );
   notifieeList_.notify( kAttrConfig, &key );
}

MoxVlanMappingConfig
MoxVlanMappingConfigDir::configDel( const PortVlanKey& key ) {
   const PortVlanKey told = key;   // it may be the record's own
   const Zel::Ptr< ZelConfig > gone = config_.del( key );
   notifieeList_.notify( kAttrConfig, &told );
   return gone ? gone->value() : MoxVlanMappingConfig();
}

Zel::Ptr< MoxVlanMappingConfigDir >
moxVlanMappingConfigDirFactory() {
   return MoxVlanMappingConfigDir::MoxVlanMappingConfigDirIs();
}

}   // namespace Mox
