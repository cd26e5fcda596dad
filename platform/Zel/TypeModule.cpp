// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/TypeModule.h"

#include <mutex>
#include <unordered_map>

#include "Zel/Assert.h"

namespace Zel {
namespace {

constexpr char zelSourceTag[] = "Zel/TypeModule";

struct Registry {
   std::mutex lock;
   std::vector< const TypeModule* > modules;
   std::unordered_map< std::string_view, TypeHandle > types;

   void remove( const TypeModule& module ) {
      for ( const TypeRecord& type : module.types ) {
         types.erase( type.name );
      }
      std::erase( modules, &module );
   }
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
   Registry& all = registry();
   const std::lock_guard guard( all.lock );
   all.modules.push_back( &module );
   try {
      for ( std::uint32_t index = 0; index < module.types.size(); ++index ) {
         const TypeRecord& type = module.types[ index ];
         const bool isNew = all.types.try_emplace( type.name, TypeHandle{ &module, index } ).second;
         ZEL_ASSERT( isNew );
      }
   } catch ( ... ) {
      all.remove( module );   // all of its types or none
      throw;
   }
}

void
zelModuleDel( const TypeModule& module ) {
   const std::lock_guard guard( registry().lock );
   registry().remove( module );
}

std::vector< const TypeModule* >
zelModules() {
   const std::lock_guard guard( registry().lock );
   return registry().modules;
}

TypeHandle
zelTypeByName( std::string_view name ) {
   const std::lock_guard guard( registry().lock );
   const auto found = registry().types.find( name );
   return found == registry().types.end() ? TypeHandle{} : found->second;
}

}   // namespace Zel
