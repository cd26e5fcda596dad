// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// IntfId: identifies one interface of the switch. A plain value.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Zel/Export.h"
#include "Zel/Hash.h"
#include "Zel/String.h"

namespace Corvel {

/// 64 bits that mean nothing to the library; 0, the default, is the empty interface id.
class ZEL_EXPORT IntfId {
 public:
   static constexpr char zelTypeName[] = "Corvel::IntfId";
   constexpr IntfId() = default;
   explicit constexpr IntfId( std::uint64_t value ) : value_( value ) {}
   /// Parses a bare number.
   IntfId( Zel::StringIterator& current, Zel::StringIterator end );

   constexpr std::uint64_t value() const { return value_; }
   explicit constexpr operator bool() const { return value_ != 0; }

   friend constexpr bool operator==( const IntfId&, const IntfId& ) = default;
   friend constexpr bool operator<( const IntfId& a, const IntfId& b ) {
      return a.value_ < b.value_;
   }

 private:
   std::uint64_t value_ = 0;
};

constexpr std::uint32_t
zelHash( const IntfId& id, std::uint32_t seed ) {
   return Zel::singleAttrHash( id.value(), seed );
}

/// A bare decimal number.
ZEL_EXPORT Zel::String valueToStrep( const IntfId& id );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const IntfId& id );

}   // namespace Corvel
