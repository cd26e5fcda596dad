// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/console/Watch.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <utility>

#include "Zel/GenericIf.h"
#include "Zel/NewEntity.h"

namespace Agent::Console {

Watch::Watch( std::string path, Zel::TypeHandle type, std::ostream& out )
    : path_( std::move( path ) ), type_( type ), out_( out ) {}

void
Watch::onAttribute( Zel::AttributeId attribute, const void* key ) {
   const Zel::AttributeRecord* row = Zel::zelAttributeById( type_, attribute );
   fmt::print( out_, "{}: {}", path_, row ? row->name : fmt::format( "attribute {}", attribute ) );
   if ( row && key && *row->keyType ) {
      fmt::print( out_, "[{}]",
                  Zel::zelStrep( Zel::View{ Zel::zelTypeOf( row->keyType ), key } ).str() );
   }
   out_ << '\n';
}

Zel::Ptr< Watch >
watchOn( const Zel::Ptr< Zel::PtrInterface >& entity, const std::string& path, std::ostream& out ) {
   Zel::Ptr< Watch > watch = Zel::newEntity< Watch >( path, entity->fwkType(), out );
   watch->zelNotifierIs( entity );
   return watch;
}

}   // namespace Agent::Console
