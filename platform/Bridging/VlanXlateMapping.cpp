// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Bridging/VlanXlateMapping.h"

#include <ostream>

#include "Zel/Hash.h"
#include "Zel/Parse.h"

namespace Bridging {

VlanXlateMapping::VlanXlateMapping( Zel::StringIterator& current, Zel::StringIterator end ) {
   Zel::parseLiteral( current, end, "Value('Bridging::VlanXlateMapping', ** {" );
   Zel::parseLiteral( current, end, "'vlanId': " );
   const auto vlanId = Zel::parseAttribute< std::uint16_t >( current, end, "vlanId" );
   Zel::parseLiteral( current, end, ", 'innerVlanId': " );
   const auto innerVlanId = Zel::parseAttribute< std::uint16_t >( current, end, "innerVlanId" );
   Zel::parseLiteral( current, end, ", 'tpid': " );
   const auto tpid = Zel::parseAttribute< std::uint16_t >( current, end, "tpid" );
   Zel::parseLiteral( current, end, ", 'priority': " );
   const auto priority = Zel::parseAttribute< std::uint8_t >( current, end, "priority" );
   Zel::parseLiteral( current, end, ", 'dropEligible': " );
   const auto dropEligible = Zel::parseAttribute< std::uint8_t >( current, end, "dropEligible" );
   Zel::parseLiteral( current, end, "})" );
   *this = fromRaw( vlanId, innerVlanId, tpid, priority, dropEligible );
}

std::uint32_t
VlanXlateMapping::hash( std::uint32_t seed ) const {
   Zel::HashAccumulator accumulator( seed );
   accumulator.mix( static_cast< std::uint32_t >( bits_ ) );
   accumulator.mix( static_cast< std::uint32_t >( bits_ >> 32 ) );
   return accumulator.result();
}

Zel::String
valueToStrep( const VlanXlateMapping& mapping ) {
   return Zel::format( "Value('Bridging::VlanXlateMapping', ** {'vlanId': %s, 'innerVlanId': %s, "
                       "'tpid': %s, 'priority': %s, 'dropEligible': %s})",
                       mapping.rawVlanId(), mapping.rawInnerVlanId(), mapping.tpid(),
                       mapping.priority(), mapping.dropEligible() );
}

std::ostream&
operator<<( std::ostream& out, const VlanXlateMapping& mapping ) {
   return out << valueToStrep( mapping );
}

}   // namespace Bridging
