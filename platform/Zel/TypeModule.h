// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TypeModule: the types of one source file, registered with the framework by name.
//
// A source's registration file holds one constant TypeModule and one ModuleRegistration, whose
// constructor runs when the library is loaded. A type is identified by (module, index), which is
// what fwkType() of its entities answers.
//
// Ownership  The registry keeps plain pointers to module records; they are constants. A handle, and
//            what its record points to, goes with the library that holds the module.
// Threads    Any: each function takes the registry's lock. Handles are values.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "Zel/Export.h"
#include "Zel/TypeRecord.h"

namespace Zel {

struct TypeModule {
   /// Source file without extension, such as "MoxVlanMapping/MoxVlanRangeMgr".
   const char* name;
   std::span< const TypeRecord > types;
};

struct TypeHandle {
   const TypeModule* module = nullptr;
   std::uint32_t index = 0;

   /// Null when the handle names no registered type.
   const TypeRecord* record() const { return module ? &module->types[ index ] : nullptr; }
   /// Requires: the handle names a type.
   const char* name() const { return record()->name; }
   explicit operator bool() const { return module != nullptr; }
   friend bool operator==( const TypeHandle&, const TypeHandle& ) = default;
};

/// Makes a module's types known; a type name that another module already has is asserted against.
ZEL_EXPORT void zelModuleIs( const TypeModule& module );
/// Takes the module out again when its library is unloaded.
ZEL_EXPORT void zelModuleDel( const TypeModule& module );

/// The registered modules in order of registration.
ZEL_EXPORT std::vector< const TypeModule* > zelModules();

/// A null handle when there is no such type. O(1) on average.
ZEL_EXPORT TypeHandle zelTypeByName( std::string_view name );

/// The handle of a type that `module` holds, found when it is compiled: what fwkType() answers.
consteval TypeHandle
typeIn( const TypeModule& module, std::string_view name ) {
   std::uint32_t index = 0;
   while ( module.types[ index ].name != name ) {
      ++index;   // past the end, for a name that is not there: no constant expression
   }
   return { &module, index };
}

class ModuleRegistration {
 public:
   explicit ModuleRegistration( const TypeModule& module ) : module_( module ) {
      zelModuleIs( module_ );
   }
   ~ModuleRegistration() { zelModuleDel( module_ ); }
   ModuleRegistration( const ModuleRegistration& ) = delete;
   ModuleRegistration& operator=( const ModuleRegistration& ) = delete;

 private:
   const TypeModule& module_;
};

}   // namespace Zel
