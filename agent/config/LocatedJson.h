// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// LocatedJson: strict JSON (RFC 8259) as a tree in which every value knows its source line.
//
// Ownership  A value holds its children; the tree keeps nothing of the text it came from.
// Order      Members stand in text order; equal names are all kept, see duplicateMembers().
// Limits     Nesting ends at kMaxJsonDepth, so neither reading nor releasing a tree can
//            exhaust the stack.
// Cost       One pass over the text, one node per value.
// Threads    No shared state.
// Errors     parseJson() returns them; only memory exhaustion throws.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace Agent {

constexpr std::size_t kMaxJsonDepth = 128;

struct JsonValue;
struct JsonMember;
using JsonArray = std::vector< JsonValue >;
using JsonObject = std::vector< JsonMember >;

// A number that is no 64-bit integer, as it stands in the text: 1.5, 1e3, 99999999999999999999.
struct JsonDecimal {
   std::string text;
};

struct JsonValue {
   // Integers are uint64_t, negative ones int64_t; monostate is null.
   std::variant< std::monostate, bool, std::int64_t, std::uint64_t, JsonDecimal, std::string,
                 JsonArray, JsonObject >
      data;
   // Line of the first character, from 1.
   std::size_t line = 0;

   // Each gives null where the value is of another kind.
   const bool* boolean() const { return std::get_if< bool >( &data ); }
   const std::string* string() const { return std::get_if< std::string >( &data ); }
   const JsonArray* array() const { return std::get_if< JsonArray >( &data ); }
   const JsonObject* object() const { return std::get_if< JsonObject >( &data ); }
   // Zero or more; null for any other number.
   const std::uint64_t* unsignedInteger() const { return std::get_if< std::uint64_t >( &data ); }

   // Whether this is a number without fraction and exponent, whatever its size.
   bool isInteger() const;
   // Neither an array nor an object.
   bool isScalar() const { return !array() && !object(); }
   // The kind in words, with article: "a string", "a number with fraction or exponent".
   std::string_view kind() const;
   // The value as JSON, shortened to what fits an error line: 100, "abc", [...], {...}.
   std::string shown() const;
};

struct JsonMember {
   std::string name;
   JsonValue value;
   // Line of the name; that of the value may be a later one.
   std::size_t line = 0;
};

struct ParsedJson {
   // Absent exactly when there is an error.
   std::optional< JsonValue > value;
   // One line of plain ASCII.
   std::string error;
   // Where reading stopped, from 1; columns count characters.
   std::size_t errorLine = 0;
   std::size_t errorColumn = 0;
};

// Told now and then how much of the text is behind; may do nothing.
using JsonProgress = std::function< void( std::size_t bytes ) >;

// Reads `text` as one JSON value with nothing but white space round it. Refused besides
// syntax errors: a byte order mark, NUL bytes, ill-formed UTF-8, nesting deeper than
// kMaxJsonDepth. Numbers may have any size.
ParsedJson parseJson( std::string_view text, const JsonProgress& progress = {} );

// The name without `module` and its colon, where it starts so.
std::string_view withoutModule( std::string_view name, std::string_view module );

struct DuplicateMember {
   const JsonMember* first;
   const JsonMember* again;
};

// Members that repeat an earlier one of the same object. With a `module`, "module:name" and
// "name" are the same.
std::vector< DuplicateMember > duplicateMembers( const JsonObject& object,
                                                 std::string_view module = {} );

// `text` as error lines repeat it: escaped() and of bounded length, the middle of a long one
// replaced by "...". Valid UTF-8 stays valid.
std::string shownText( std::string_view text );

}   // namespace Agent
