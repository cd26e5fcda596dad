// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Kirlog/PelrecMessage.h"

namespace Kirlog {

void
PelrecFormat::enter() {
   id_ = Pelrec::trace().formatIs( text_ );
}

}   // namespace Kirlog
