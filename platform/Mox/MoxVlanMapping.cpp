// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Mox/MoxVlanMapping.h"

#include "Zel/Hash.h"
#include "Zel/Parse.h"

namespace Mox {

MoxVlanMappingRecord::MoxVlanMappingRecord( Zel::StringIterator& current, Zel::StringIterator end,
                                            const char* typeName ) {
   Zel::parseLiteral( current, end, Zel::format( "Value('%s', ** {'key': ", typeName ) );
   key_ = Zel::parseAttribute< PortVlanKey >( current, end, "key" );
   Zel::parseLiteral( current, end, ", 'mapping': " );
   mapping_ = Zel::parseAttribute< Bridging::VlanXlateMapping >( current, end, "mapping" );
   Zel::parseLiteral( current, end, ", 'inLag': " );
   inLag_ = Zel::parseAttribute< bool >( current, end, "inLag" );
   Zel::parseLiteral( current, end, ", 'xlateUntagged': " );
   xlateUntagged_ = Zel::parseAttribute< bool >( current, end, "xlateUntagged" );
   Zel::parseLiteral( current, end, ", 'origin': " );
   origin_ = Zel::parseAttribute< std::uint8_t >( current, end, "origin" );
   Zel::parseLiteral( current, end, "})" );
}

Zel::String
MoxVlanMappingRecord::strep( const char* typeName ) const {
   return Zel::format( "Value('%s', ** {'key': %s, 'mapping': %s, 'inLag': %s, "
                       "'xlateUntagged': %s, 'origin': %s})",
                       typeName, key_, mapping_, inLag_, xlateUntagged_, origin_ );
}

std::uint32_t
MoxVlanMappingRecord::hash( std::uint32_t seed ) const {
   Zel::HashAccumulator accumulator( seed );
   accumulator.mix( key_.hash( 0 ) );
   accumulator.mix( mapping_.hash( 0 ) );
   accumulator.mix( static_cast< std::uint32_t >( inLag_ ) << 9 |
                    static_cast< std::uint32_t >( xlateUntagged_ ) << 8 | origin_ );
   return accumulator.result();
}

Zel::String
valueToStrep( const MoxVlanMappingRecord& record ) {
   return record.strep( MoxVlanMappingRecord::zelTypeName );
}

Zel::String
valueToStrep( const MoxVlanMappingConfig& config ) {
   return config.strep( MoxVlanMappingConfig::zelTypeName );
}

Zel::String
valueToStrep( const MoxVlanMappingStatus& status ) {
   return status.strep( MoxVlanMappingStatus::zelTypeName );
}

}   // namespace Mox
