// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/TypeModule.h"

#include <unordered_map>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/TypeModule";

struct Registry {
   std::vector< const TypeModule* > modules;
   std::unordered_map< std::string_view, TypeHandle > types;
};

// Built on first use and never destroyed: modules come and go in the order in which the loader
// runs the initialisers and finalisers of the libraries.
Registry&
registry() {
   static auto* all = new Registry;
   return *all;
}

}   // namespace

void
zelModuleIs( const TypeModule& module ) {
   registry().modules.push_back( &module );
   try {
      for ( std::uint32_t index = 0; index < module.types.size(); ++index ) {
         const TypeRecord& type = module.types[ index ];
         ZEL_ASSERT( !zelTypeByName( type.name ) );
         registry().types[ type.name ] = { &module, index };
      }
   } catch ( ... ) {
      zelModuleDel( module );   // all of its types or none
      throw;
   }
}

void
zelModuleDel( const TypeModule& module ) {
   for ( const TypeRecord& type : module.types ) {
      registry().types.erase( type.name );
   }
   std::erase( registry().modules, &module );
}

std::vector< const TypeModule* >
zelModules() {
   return registry().modules;
}

TypeHandle
zelTypeByName( std::string_view name ) {
   const auto found = registry().types.find( name );
   return found == registry().types.end() ? TypeHandle{} : found->second;
}

}   // namespace Zel
