// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/VlanRange.h"

#include <ostream>
#include <type_traits>

#include "Zel/Exception.h"
#include "Zel/Parse.h"

namespace MoxVlanMapping {

static_assert( std::is_trivially_copyable_v< VlanRangeXlateMapping > );
static_assert( std::is_trivially_copyable_v< ReverseStartIdVlanId > );

VlanRangeXlateMapping::VlanRangeXlateMapping( Zel::StringIterator& current,
                                              Zel::StringIterator end ) {
   Zel::parseLiteral( current, end, "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {" );
   Zel::parseLiteral( current, end, "'lowVid': " );
   lowVid_ = Zel::parseAttribute< Bridging::VlanId >( current, end, "lowVid" );
   Zel::parseLiteral( current, end, ", 'highVid': " );
   highVid_ = Zel::parseAttribute< Bridging::VlanId >( current, end, "highVid" );
   Zel::parseLiteral( current, end, ", 'mapping': " );
   mapping_ = Zel::parseAttribute< Bridging::VlanXlateMapping >( current, end, "mapping" );
   Zel::parseLiteral( current, end, "})" );
}

std::uint32_t
VlanRangeXlateMapping::hash( std::uint32_t seed ) const {
   Zel::HashAccumulator accumulator( seed );
   accumulator.mix( Zel::singleAttrHash( lowVid_.value(), 0 ) );
   accumulator.mix( Zel::singleAttrHash( highVid_.value(), 0 ) );
   accumulator.mix( mapping_.hash( 0 ) );
   return accumulator.result();
}

Zel::String
valueToStrep( const VlanRangeXlateMapping& range ) {
   return Zel::format( "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': %s, "
                       "'highVid': %s, 'mapping': %s})",
                       range.lowVid(), range.highVid(), range.mapping() );
}

std::ostream&
operator<<( std::ostream& out, const VlanRangeXlateMapping& range ) {
   return out << valueToStrep( range );
}

ReverseStartIdVlanId::ReverseStartIdVlanId( Zel::StringIterator& current, Zel::StringIterator end )
    : ReverseStartIdVlanId( Zel::parseAttribute< std::uint16_t >( current, end, "value" ) ) {}

Zel::String
valueToStrep( const ReverseStartIdVlanId& start ) {
   return Zel::valueToStrep( std::uint64_t{ start.value() } );
}

std::ostream&
operator<<( std::ostream& out, const ReverseStartIdVlanId& start ) {
   return out << start.value();
}

}   // namespace MoxVlanMapping
