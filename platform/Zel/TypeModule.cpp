// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/TypeModule.h"

#include <algorithm>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/TypeModule";

// Built on first use and never destroyed: modules come and go in the order in which the loader
// runs the initialisers and finalisers of the libraries.
std::vector< const TypeModule* >&
registry() {
   static auto* modules = new std::vector< const TypeModule* >;
   return *modules;
}

}   // namespace

void
zelModuleIs( const TypeModule& module ) {
   for ( const TypeRecord& type : module.types ) {
      ZEL_ASSERT( !zelTypeByName( type.name ) );
   }
   registry().push_back( &module );
}

void
zelModuleDel( const TypeModule& module ) {
   std::erase( registry(), &module );
}

std::vector< const TypeModule* >
zelModules() {
   return registry();
}

TypeHandle
zelTypeByName( std::string_view name ) {
   for ( const TypeModule* module : registry() ) {
      const auto type = std::ranges::find( module->types, name, &TypeRecord::name );
      if ( type != module->types.end() ) {
         return { module, static_cast< std::uint32_t >( type - module->types.begin() ) };
      }
   }
   return {};
}

}   // namespace Zel
