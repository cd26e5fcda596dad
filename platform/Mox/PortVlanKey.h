// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// PortVlanKey: key of one VLAN mapping of one port. A plain value.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Bridging/VlanId.h"
#include "Corvel/IntfId.h"
#include "Zel/Export.h"
#include "Zel/String.h"

namespace Mox {

/// The VLAN id may be any 16 bits (VlanId::fromRaw): keys come from outside and are checked
/// where they are used. The default is the empty interface, VLAN 1, no inner VLAN.
class ZEL_EXPORT PortVlanKey {
 public:
   static constexpr char zelTypeName[] = "Mox::PortVlanKey";
   constexpr PortVlanKey() = default;
   constexpr PortVlanKey( Corvel::IntfId intfId, Bridging::VlanId vlanId,
                          std::uint16_t innerVlanId = 0 )
       : intfId_( intfId.value() ), vlanId_( vlanId ), innerVlanId_( innerVlanId ) {}
   /// Parses the string form.
   PortVlanKey( Zel::StringIterator& current, Zel::StringIterator end );

   constexpr Corvel::IntfId intfId() const { return Corvel::IntfId( intfId_ ); }
   constexpr Bridging::VlanId vlanId() const { return vlanId_; }
   /// VLAN id of the inner tag of a double-tagged frame; 0: any.
   constexpr std::uint16_t innerVlanId() const { return innerVlanId_; }

   friend constexpr bool operator==( const PortVlanKey&, const PortVlanKey& ) = default;
   /// By interface, VLAN, inner VLAN.
   ZEL_EXPORT friend bool operator<( const PortVlanKey& a, const PortVlanKey& b );
   std::uint32_t hash( std::uint32_t seed = 0 ) const;

 private:
   // A number, which alone can be packed: there is a key in each record, of which there are many.
   [[gnu::packed]] std::uint64_t intfId_ = 0;
   Bridging::VlanId vlanId_;
   std::uint16_t innerVlanId_ = 0;
};

inline std::uint32_t
zelHash( const PortVlanKey& key, std::uint32_t seed ) {
   return key.hash( seed );
}

/// "Value('Mox::PortVlanKey', ** {'intfId': 7, 'vlanId': 100, 'innerVlanId': 0})"
ZEL_EXPORT Zel::String valueToStrep( const PortVlanKey& key );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const PortVlanKey& key );

}   // namespace Mox
