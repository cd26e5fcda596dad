// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanXlateMapping: what a VLAN is translated to. A plain value of 64 bits, here from the lowest on:
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

#include <cstdint>
#include <iosfwd>

#include "Bridging/VlanId.h"
#include "Zel/Export.h"
#include "Zel/String.h"

namespace Bridging {

class ZEL_EXPORT VlanXlateMapping {
 public:
   static constexpr char zelTypeName[] = "Bridging::VlanXlateMapping";
   constexpr VlanXlateMapping() = default;
   /// Translation to `vlanId`, everything else left as it is.
   explicit constexpr VlanXlateMapping( VlanIdOrNone vlanId )
       : VlanXlateMapping( fromRaw( vlanId.value() ) ) {}
   /// Parses the string form; the numbers are taken unchecked.
   VlanXlateMapping( Zel::StringIterator& current, Zel::StringIterator end );
   static constexpr VlanXlateMapping fromRaw( std::uint16_t vlanId, std::uint16_t innerVlanId = 0,
                                              std::uint16_t tpid = 0, std::uint8_t priority = 0,
                                              std::uint8_t dropEligible = 0 ) {
      VlanXlateMapping mapping;
      mapping.bits_ = std::uint64_t{ dropEligible } << 56 | std::uint64_t{ priority } << 48 |
                      std::uint64_t{ tpid } << 32 | std::uint64_t{ innerVlanId } << 16 | vlanId;
      return mapping;
   }

   /// The translated VLAN; throws Zel::RangeException when the number is above 4094.
   VlanIdOrNone vlanId() const { return VlanIdOrNone( rawVlanId() ); }
   constexpr std::uint16_t rawVlanId() const { return field< std::uint16_t >( 0 ); }
   constexpr std::uint16_t rawInnerVlanId() const { return field< std::uint16_t >( 16 ); }
   constexpr std::uint16_t tpid() const { return field< std::uint16_t >( 32 ); }
   constexpr std::uint8_t priority() const { return field< std::uint8_t >( 48 ); }
   constexpr std::uint8_t dropEligible() const { return field< std::uint8_t >( 56 ); }

   constexpr bool operator==( VlanXlateMapping other ) const { return bits_ == other.bits_; }
   std::uint32_t hash( std::uint32_t seed ) const;

 private:
   template < class Field >
   constexpr Field field( unsigned lowestBit ) const {
      return static_cast< Field >( bits_ >> lowestBit );
   }

   // One word, not five fields: it is compared and copied at once. Packed, so that it needs no padding
   // beside VLAN ids.
   [[gnu::packed]] std::uint64_t bits_ = 0;
};

static_assert( sizeof( VlanXlateMapping ) == 8 );

/// "Value('Bridging::VlanXlateMapping', ** {'vlanId': 3001, 'innerVlanId': 0, ...})"
ZEL_EXPORT Zel::String valueToStrep( const VlanXlateMapping& mapping );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const VlanXlateMapping& mapping );

}   // namespace Bridging
