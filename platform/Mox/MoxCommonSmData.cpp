// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/MoxCommonSmData.h"

#include "Zel/NewEntity.h"

namespace Mox {

MoxCommonSmData::MoxCommonSmData()
    : ingressConfigDir_( moxVlanMappingConfigDirFactory() ),
      egressConfigDir_( moxVlanMappingConfigDirFactory() ),
      statusDir_( moxVlanMappingStatusDirFactory() ) {}

MoxCommonSmData::~MoxCommonSmData() {
   zelDoZombieReactors( true );
   notifieeList_.notifieeDelAll();
}

Zel::Ptr< MoxCommonSmData >
MoxCommonSmData::MoxCommonSmDataIs() {
   return Zel::newEntity< MoxCommonSmData >();
}

void
MoxCommonSmData::portToLagIs( Corvel::IntfId port, Corvel::IntfId lag ) {
   const auto [ member, isNew ] = portToLag_.findOrInsert(
      port, [ & ] { return Zel::newEntity< ZelPortToLag >( port, lag ); } );
   if ( !isNew && member->value() == lag ) {
      return;
   }
   member->valueIs( lag );
   notifieeList_.notify( kAttrPortToLag, &port );
}

Corvel::IntfId
MoxCommonSmData::portToLagDel( Corvel::IntfId port ) {
   const Zel::Ptr< ZelPortToLag > gone = portToLag_.del( port );
   if ( !gone ) {
      return {};
   }
   notifieeList_.notify( kAttrPortToLag, &port );
   return gone->value();
}

Zel::Ptr< MoxCommonSmData >
moxCommonSmDataFactory() {
   return MoxCommonSmData::MoxCommonSmDataIs();
}

}   // namespace Mox
