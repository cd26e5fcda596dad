// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Bridging/VlanId.h"

#include <ostream>

#include "Zel/Exception.h"
#include "Zel/Parse.h"

namespace Bridging {

VlanId::VlanId( Zel::StringIterator& current, Zel::StringIterator end )
    : VlanId( Zel::parseNumber< std::uint16_t >( current, end ) ) {}

Zel::String
valueToStrep( const VlanId& id ) {
   return Zel::valueToStrep( id.value() );
}

std::ostream&
operator<<( std::ostream& out, const VlanId& id ) {
   return out << id.value();
}

VlanIdOrNone::VlanIdOrNone( std::uint64_t number )
    : value_( static_cast< std::uint16_t >( number ) ) {
   if ( number > VlanId::kHighest ) {
      Zel::throwRangeException( "Bridging::VlanIdOrNone::value > 4094 not allowed" );
   }
}

VlanIdOrNone::VlanIdOrNone( Zel::StringIterator& current, Zel::StringIterator end )
    : VlanIdOrNone( Zel::parseNumber< std::uint16_t >( current, end ) ) {}

Zel::String
valueToStrep( const VlanIdOrNone& id ) {
   return Zel::valueToStrep( id.value() );
}

std::ostream&
operator<<( std::ostream& out, const VlanIdOrNone& id ) {
   return id ? out << id.value() : out << "none";
}

}   // namespace Bridging
