// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Watch: prints the changes of one entity as they are told.
#pragma once

#include <ostream>
#include <string>

#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/TypeModule.h"

namespace Agent::Console {

/// Holds the entity that it watches.
class Watch : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "Agent::Console::Watch";

   /// Prints "PATH: attribute[key]".
   void onAttribute( Zel::AttributeId attribute, const void* key ) override;

 protected:
   /// `out` outlives the watch.
   Watch( std::string path, Zel::TypeHandle type, std::ostream& out );

 private:
   const std::string path_;
   const Zel::TypeHandle type_;
   std::ostream& out_;
};

/// Requires: the entity has a notifiee list.
Zel::Ptr< Watch > watchOn( const Zel::Ptr< Zel::PtrInterface >& entity, const std::string& path,
                           std::ostream& out );

}   // namespace Agent::Console
