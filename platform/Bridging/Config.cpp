// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Bridging/Config.h"

#include "Zel/NewEntity.h"

namespace Bridging {

Config::~Config() {
   zelDoZombieReactors( true );
}

Zel::Ptr< Config >
Config::ConfigIs() {
   return Zel::newEntity< Config >();
}

Zel::Ptr< Config >
configFactory() {
   return Config::ConfigIs();
}

}   // namespace Bridging
