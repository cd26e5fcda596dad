// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Finding: one problem in a configuration, with all that is needed to go and mend it.
#pragma once

#include <cstddef>
#include <string>

namespace Agent {

struct Finding {
   // As the user named it; "<stdin>" for standard input.
   std::string file;
   // From 1; 0 where the problem has no place in the text.
   std::size_t line = 0;
   // In characters, from 1; 0 where the line says enough.
   std::size_t column = 0;
   // Instance path, list entries by key: /m:list[name='x']/leaf; by position, from 1, where
   // an entry has no key: /m:list[3]. Empty where the problem concerns the whole text.
   std::string path;
   // What was found, as JSON or in the words of the problem; empty where nothing stands.
   std::string value;
   // The predicate of the sentence: "is not allowed".
   std::string problem;
   // What would be accepted; empty where that goes without saying.
   std::string allowed;

   // All in one line, with ":COLUMN" behind the line where there is one:
   // FILE:LINE: PATH: value 4095 is not allowed; allowed: 1..4094
   std::string text() const;
};

}   // namespace Agent
