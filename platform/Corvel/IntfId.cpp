// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Corvel/IntfId.h"

#include <ostream>

#include "Zel/Parse.h"

namespace Corvel {

IntfId::IntfId( Zel::StringIterator& current, Zel::StringIterator end )
    : value_( Zel::parseNumber< std::uint64_t >( current, end ) ) {}

Zel::String
valueToStrep( const IntfId& id ) {
   return Zel::valueToStrep( id.value() );
}

std::ostream&
operator<<( std::ostream& out, const IntfId& id ) {
   return out << id.value();
}

}   // namespace Corvel
