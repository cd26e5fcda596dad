// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanId, VlanIdOrNone: VLAN identifiers of IEEE 802.1Q (clause 9.6). Plain values.
//
// A number is checked as a whole, however wide, when a value is formed from it; one below zero is
// above all. fromRaw() takes any 16 bits unchecked, for
// records that come from outside; whoever uses such a value is where it is refused.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Zel/Exception.h"
#include "Zel/Export.h"
#include "Zel/Hash.h"
#include "Zel/String.h"

namespace Bridging {

/// A VLAN id, 1 to 4094; the default is 1.
class ZEL_EXPORT VlanId {
 public:
   static constexpr char zelTypeName[] = "Bridging::VlanId";
   static constexpr std::uint16_t kLowest = 1;
   static constexpr std::uint16_t kHighest = 4094;

   constexpr VlanId() = default;
   /// Throws Zel::RangeException "Bridging::VlanId::value < 1 or > 4094 not allowed".
   explicit constexpr VlanId( std::uint64_t number )
       : value_( static_cast< std::uint16_t >( number ) ) {
      if ( number < kLowest || number > kHighest ) [[unlikely]] {
         Zel::throwRangeException( "Bridging::VlanId::value < 1 or > 4094 not allowed" );
      }
   }
   /// Parses a bare number; checked as above.
   VlanId( Zel::StringIterator& current, Zel::StringIterator end );
   static constexpr VlanId fromRaw( std::uint16_t bits ) {
      VlanId id;
      id.value_ = bits;
      return id;
   }

   constexpr std::uint16_t value() const { return value_; }

   friend constexpr bool operator==( const VlanId&, const VlanId& ) = default;
   friend constexpr bool operator<( const VlanId& a, const VlanId& b ) {
      return a.value_ < b.value_;
   }

 private:
   std::uint16_t value_ = kLowest;
};

constexpr std::uint32_t
zelHash( const VlanId& id, std::uint32_t seed ) {
   return Zel::singleAttrHash( id.value(), seed );
}

ZEL_EXPORT Zel::String valueToStrep( const VlanId& id );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const VlanId& id );

/// A VLAN id, 1 to 4094, or 0 for none, the default.
class ZEL_EXPORT VlanIdOrNone {
 public:
   static constexpr char zelTypeName[] = "Bridging::VlanIdOrNone";
   constexpr VlanIdOrNone() = default;
   /// Throws Zel::RangeException "Bridging::VlanIdOrNone::value > 4094 not allowed".
   explicit VlanIdOrNone( std::uint64_t number );
   /// Parses a bare number; checked as above.
   VlanIdOrNone( Zel::StringIterator& current, Zel::StringIterator end );

   constexpr std::uint16_t value() const { return value_; }
   explicit constexpr operator bool() const { return value_ != 0; }

   friend constexpr bool operator==( const VlanIdOrNone&, const VlanIdOrNone& ) = default;
   friend constexpr bool operator<( const VlanIdOrNone& a, const VlanIdOrNone& b ) {
      return a.value_ < b.value_;
   }

 private:
   std::uint16_t value_ = 0;
};

constexpr std::uint32_t
zelHash( const VlanIdOrNone& id, std::uint32_t seed ) {
   return Zel::singleAttrHash( id.value(), seed );
}

ZEL_EXPORT Zel::String valueToStrep( const VlanIdOrNone& id );
/// A bare number, or "none".
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const VlanIdOrNone& id );

}   // namespace Bridging
