// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Schema: the YANG modules that a reader owns, as a tree of what may stand where, and the one
// walk that holds a document to it. RFC 7951 says how YANG data is written as JSON.
//
// What the walk reports, a reader need not look at again: it reads what fits and passes over what
// does not.
//
// Ownership  Nodes hold their children; names and types are constants.
// Cost       Linear in the document; linear in the members of the model at one place.
// Threads    A schema is constant once made; checkDocument() has no shared state.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "agent/config/Document.h"

namespace Agent {

// Both ends belong to it.
struct NumberRange {
   std::uint64_t low;
   std::uint64_t high;
};

// The values of a leaf. One that is allowed in several ways is a union.
struct LeafType {
   // What a finding says is allowed.
   std::string_view allowed;
   bool boolean = false;
   // Numbers in one of these ranges.
   std::span< const NumberRange > numbers = {};
   // Strings that this is true of.
   bool ( *text )( std::string_view ) = nullptr;
   // These strings.
   std::span< const std::string_view > names = {};
   // Makes the names identities of this module, whose prefix must stand in front of them except
   // in leaves of the same module.
   std::string_view module = {};
};

// What becomes of a leaf that is in order.
enum class Use { none, checked, read };

enum class NodeKind { container, list, leaf, leafList, state };

// One node of the model and what is below it.
struct SchemaNode {
   // With its module where that differs from the one above.
   std::string_view name;
   NodeKind kind;
   // Of leaves and leaf-lists.
   const LeafType* type = nullptr;
   Use use = Use::none;
   bool mandatory = false;
   // At most one of the children of a parent that are marked stands in a document.
   bool choice = false;
   // Of lists; `keyInConfig` asks for the key once more, in the entry's container "config".
   std::vector< std::string_view > keys = {};
   bool keyInConfig = false;
   // A member whose values must not repeat in a list.
   std::string_view unique = {};
   // The node stands only where the leaf at this path from its parent has one of the values.
   std::string_view whenLeaf = {};
   std::vector< std::string_view > whenValues = {};
   // Rules that take more than one member of a container or of a list entry.
   void ( *rule )( Document&, const Place& ) = nullptr;
   // At most 64.
   std::vector< SchemaNode > children = {};
};

SchemaNode container( std::string_view name, std::vector< SchemaNode > children );
SchemaNode list( std::string_view name, std::vector< std::string_view > keys,
                 std::vector< SchemaNode > children );
SchemaNode leaf( std::string_view name, const LeafType& type, Use use = Use::none );
SchemaNode leafList( std::string_view name, const LeafType& type, Use use = Use::none );
// Known, and refused: what the switch reports is no configuration.
SchemaNode state( std::string_view name );

SchemaNode mandatory( SchemaNode node );
SchemaNode choice( SchemaNode node );
SchemaNode when( SchemaNode node, std::string_view leaf, std::vector< std::string_view > values );
SchemaNode withRule( SchemaNode node, void ( *rule )( Document&, const Place& ) );

struct Schema {
   // Members of other modules are left alone.
   std::vector< std::string_view > modules;
   std::vector< SchemaNode > top;
};

// Reports all that the schema does not allow, and what is allowed and has no use.
void checkDocument( Document& document, const Schema& schema, const Place& root );

// --- types of both models

extern const LeafType kBoolean;
extern const LeafType kUnsigned8;
extern const LeafType kUnsigned16;
extern const LeafType kUnsigned32;
// 1..4094
extern const LeafType kVlanId;
extern const LeafType kText;
// Something that output can name: not empty, without control characters.
extern const LeafType kName;

// `text` has the form of `mask`, in which h stands for a hexadecimal digit.
bool hasForm( std::string_view text, std::string_view mask );

}   // namespace Agent
