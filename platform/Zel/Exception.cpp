// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Zel/Exception.h"

namespace Zel {

// Out of line, so that the type information that a catch clause compares exists once.
Exception::~Exception() = default;
RangeException::~RangeException() = default;
ParseException::~ParseException() = default;
TypeException::~TypeException() = default;
SetFalseValueException::~SetFalseValueException() = default;

void
Exception::attributeIs( std::string_view name ) {
   attributes_.emplace( attributes_.begin(), name );
}

std::string
Exception::message() const {
   std::string text;
   for ( const std::string& name : attributes_ ) {
      text += name + ": ";
   }
   return text + what();
}

void
throwRangeException( const char* text ) {
   throw RangeException( text );
}

}   // namespace Zel
