// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Place: a value of the document together with the way to it.
//
// Ownership  A place points to the place above and to the document; both must outlive it.
//            Places live on the stack of the reader that walks the document.
// Cost       Making one allocates nothing; paths are put together only when asked for.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "agent/config/LocatedJson.h"

namespace Agent {

class Place {
 public:
   // The whole document. It belongs to no module, so its members must name theirs.
   explicit Place( const JsonValue& root ) : value_( &root ) {}
   // A member of the object at `parent`.
   Place( const Place& parent, const JsonMember& member );
   // Entry `position` (from 0) of the list at `parent`, named by the value of its leaf `keyName`
   // where it has that.
   Place( const Place& parent, std::size_t position, const JsonValue& entry,
          std::string_view keyName = {} );

   const JsonValue& value() const { return *value_; }
   // Null for the whole document.
   const Place* parent() const { return parent_; }
   // Of a member, with its module where that differs from the one above; empty for others.
   std::string_view name() const { return name_; }
   // The module that defines this node, which members without prefix belong to.
   std::string_view module() const { return module_; }

   // The first member of that name, nothing where there is none. Plain names are of the place's
   // own module and are found with its prefix too; a name of another module must stand with its
   // prefix.
   std::optional< Place > member( std::string_view name ) const;
   // The value at a path of such names below this place, null where there is none.
   const JsonValue* valueBelow( std::string_view path ) const;

   // With the keys of list entries: /ietf-interfaces:interfaces/interface[name='eth1']
   std::string path() const;
   // Without them: /ietf-interfaces:interfaces/interface
   std::string pattern() const;

 private:
   void append( std::string& out, bool withKeys ) const;

   const JsonValue* value_;
   const Place* parent_ = nullptr;
   std::string_view module_;
   bool isEntry_ = false;
   // Of a member; entries have none.
   std::string_view name_;
   std::string_view keyName_;
   std::size_t position_ = 0;
};

}   // namespace Agent
