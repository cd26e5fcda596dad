// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// GenericIterator: walks a collection whose type is known at run time only.
//
// Stands on an element like the collection's own iterator (Zel/StdIterator.h) and, like it,
// survives any change. Holds the entity that the collection belongs to.
#pragma once

#include "Zel/Export.h"
#include "Zel/Value.h"

namespace Zel {

class ZEL_EXPORT GenericIterator {
 public:
   virtual ~GenericIterator();
   GenericIterator( const GenericIterator& ) = delete;
   GenericIterator& operator=( const GenericIterator& ) = delete;

   /// Whether it stands on an element, be it one that is gone.
   virtual explicit operator bool() const = 0;
   /// Requires, as object() and advance(): it stands on an element (asserted).
   virtual Value key() const = 0;
   /// The element's value, flag or entity.
   virtual Value object() const = 0;
   virtual void advance() = 0;
   /// Deletes the element it stands on, by the attribute's own mutator; false when it was gone.
   virtual bool del() = 0;

 protected:
   GenericIterator() = default;
};

}   // namespace Zel
