// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PrivateMember: a pointer to a private data member, for tests that put an observer in its place.
//
// The arguments of an explicit instantiation are not subject to access control, so the members
// need no friend declaration for the sake of tests:
//
//   struct TaskTag { friend auto privateMember( TaskTag ); };
//   template struct TestSupport::PrivateMember< TaskTag, &Codef::task_ >;
//   codef.*privateMember( TaskTag() ) = observer;
#pragma once

namespace TestSupport {

template < class Tag, auto member >
struct PrivateMember {
   friend auto privateMember( Tag ) { return member; }
};

}   // namespace TestSupport
