// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanXlateMapping: what a VLAN is translated to. A plain value of 64 bits.
//
//   bits    field         0 means            otherwise
//   16      vlanId        none               translated VLAN id, 1 to 4094
//   16      innerVlanId   leave as it is     VLAN id of the inner tag, 1 to 4094
//   16      tpid          leave as it is     tag protocol identifier (IEEE 802.1Q clause 9.5)
//   8       priority      leave as it is     priority code point plus one, 1 to 8
//   8       dropEligible  leave as it is     1: clear the indicator, 2: set it
//
// All bits zero is the empty mapping. Numbers are kept unchecked; vlanId() checks when asked.
#pragma once

#include <bit>
#include <cstdint>
#include <iosfwd>

#include "Bridging/VlanId.h"
#include "Zel/Export.h"
#include "Zel/String.h"

namespace Bridging {

class ZEL_EXPORT VlanXlateMapping {
 public:
   static constexpr const char* zelTypeName = "Bridging::VlanXlateMapping";
   constexpr VlanXlateMapping() = default;
   /// Translation to `vlanId`, everything else left as it is.
   explicit constexpr VlanXlateMapping( VlanIdOrNone vlanId ) : rawVlanId_( vlanId.value() ) {}
   /// Parses the string form; the numbers are taken unchecked.
   VlanXlateMapping( Zel::StringIterator& current, Zel::StringIterator end );
   static constexpr VlanXlateMapping fromRaw( std::uint16_t vlanId, std::uint16_t innerVlanId = 0,
                                              std::uint16_t tpid = 0, std::uint8_t priority = 0,
                                              std::uint8_t dropEligible = 0 ) {
      VlanXlateMapping mapping;
      mapping.rawVlanId_ = vlanId;
      mapping.rawInnerVlanId_ = innerVlanId;
      mapping.tpid_ = tpid;
      mapping.priority_ = priority;
      mapping.dropEligible_ = dropEligible;
      return mapping;
   }

   /// The translated VLAN; throws Zel::RangeException when the number is above 4094.
   VlanIdOrNone vlanId() const { return VlanIdOrNone( rawVlanId_ ); }
   constexpr std::uint16_t rawVlanId() const { return rawVlanId_; }
   constexpr std::uint16_t rawInnerVlanId() const { return rawInnerVlanId_; }
   constexpr std::uint16_t tpid() const { return tpid_; }
   constexpr std::uint8_t priority() const { return priority_; }
   constexpr std::uint8_t dropEligible() const { return dropEligible_; }

   /// All fields, at once.
   constexpr bool operator==( VlanXlateMapping other ) const {
      return std::bit_cast< std::uint64_t >( *this ) == std::bit_cast< std::uint64_t >( other );
   }
   std::uint32_t hash( std::uint32_t seed ) const;

 private:
   std::uint16_t rawVlanId_ = 0;
   std::uint16_t rawInnerVlanId_ = 0;
   std::uint16_t tpid_ = 0;
   std::uint8_t priority_ = 0;
   std::uint8_t dropEligible_ = 0;
};

static_assert( sizeof( VlanXlateMapping ) == 8 );

/// "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3001, 'innerVlanId': 0, ...})"
ZEL_EXPORT Zel::String valueToStrep( const VlanXlateMapping& mapping );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const VlanXlateMapping& mapping );

}   // namespace Bridging
