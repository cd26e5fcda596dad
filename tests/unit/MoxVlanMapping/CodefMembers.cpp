// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "tests/unit/MoxVlanMapping/CodefMembers.h"

#include "tests/support/PrivateMember.h"

namespace TestSupport {

using MoxVlanMapping::MoxVlanRangeMappingCodef;

struct CodefAcsd {
   friend auto privateMember( CodefAcsd );
};
struct CodefSchedule {
   friend auto privateMember( CodefSchedule );
};
struct CodefTask {
   friend auto privateMember( CodefTask );
};

template struct PrivateMember< CodefAcsd, &MoxVlanRangeMappingCodef::acsd_ >;
template struct PrivateMember< CodefSchedule, &MoxVlanRangeMappingCodef::vlanXlateScheduleDir_ >;
template struct PrivateMember< CodefTask, &MoxVlanRangeMappingCodef::task_ >;

}   // namespace TestSupport

namespace CodefMembers {

Zel::Ptr< Codef::ZelAcsd >&
acsd( Codef& codef ) {
   return codef.*privateMember( TestSupport::CodefAcsd() );
}

Zel::Ptr< Codef::ZelVlanXlateScheduleDir >&
schedule( Codef& codef ) {
   return codef.*privateMember( TestSupport::CodefSchedule() );
}

Zel::Ptr< Codef::ZelTask >&
task( Codef& codef ) {
   return codef.*privateMember( TestSupport::CodefTask() );
}

}   // namespace CodefMembers
