// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PrivateMember: a pointer to a private data member, for tests that put an observer in its place.
//
// The arguments of an explicit instantiation are not subject to access control, so the members
// need no friend declaration for the sake of tests:
//
//   namespace TestSupport {
//   struct CodefTask { friend auto privateMember( CodefTask ); };
//   template struct PrivateMember< CodefTask, &Codef::task_ >;
//   }
//   codef.*privateMember( TestSupport::CodefTask() ) = observer;
//
// The tag stands in this namespace, where the function that it declares is defined.
#pragma once

namespace TestSupport {

template < class Tag, auto member >
struct PrivateMember {
   friend auto privateMember( Tag ) { return member; }
};

}   // namespace TestSupport
