// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/PortVlanKey.h"

#include <ostream>
#include <tuple>

#include "Zel/Hash.h"
#include "Zel/Parse.h"

namespace Mox {

PortVlanKey::PortVlanKey( Zel::StringIterator& current, Zel::StringIterator end ) {
   Zel::parseLiteral( current, end, "Value('Mox::PortVlanKey', ** {'intfId': " );
   intfId_ = Zel::parseAttribute< Corvel::IntfId >( current, end, "intfId" ).value();
   Zel::parseLiteral( current, end, ", 'vlanId': " );
   vlanId_ =
      Bridging::VlanId::fromRaw( Zel::parseAttribute< std::uint16_t >( current, end, "vlanId" ) );
   Zel::parseLiteral( current, end, ", 'innerVlanId': " );
   innerVlanId_ = Zel::parseAttribute< std::uint16_t >( current, end, "innerVlanId" );
   Zel::parseLiteral( current, end, "})" );
}

bool
operator<( const PortVlanKey& a, const PortVlanKey& b ) {
   return std::tuple( a.intfId(), a.vlanId_, a.innerVlanId_ ) <
          std::tuple( b.intfId(), b.vlanId_, b.innerVlanId_ );
}

std::uint32_t
PortVlanKey::hash( std::uint32_t seed ) const {
   Zel::HashAccumulator accumulator( Zel::singleAttrHash( intfId_, seed ) );
   accumulator.mix( static_cast< std::uint32_t >( vlanId_.value() << 16 | innerVlanId_ ) );
   return accumulator.result();
}

Zel::String
valueToStrep( const PortVlanKey& key ) {
   return Zel::format( "Value('Mox::PortVlanKey', ** {'intfId': %s, 'vlanId': %s, "
                       "'innerVlanId': %s})",
                       key.intfId(), key.vlanId(), key.innerVlanId() );
}

std::ostream&
operator<<( std::ostream& out, const PortVlanKey& key ) {
   return out << valueToStrep( key );
}

}   // namespace Mox
