// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// CodefMembers: the codef's three notifiees, which only it can see otherwise.
#pragma once

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"

namespace CodefMembers {

using Codef = MoxVlanMapping::MoxVlanRangeMappingCodef;

Zel::Ptr< Codef::ZelAcsd >& acsd( Codef& codef );
Zel::Ptr< Codef::ZelVlanXlateScheduleDir >& schedule( Codef& codef );
Zel::Ptr< Codef::ZelTask >& task( Codef& codef );

}   // namespace CodefMembers
