// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Changes every other input as a JSON tree instead of as bytes: else hardly one stays JSON, let
// alone an accepted configuration.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <string>

extern "C" std::size_t LLVMFuzzerMutate( std::uint8_t* data, std::size_t size, std::size_t most );

namespace {

// Members keep their order.
using Json = nlohmann::ordered_json;
using Random = std::minstd_rand;

Json*
anyNode( Json& tree, Random& random ) {
   Json* node = &tree;
   while ( node->is_structured() && !node->empty() && random() % 8 != 0 ) {
      auto at = node->begin();
      std::advance( at, random() % node->size() );
      node = &*at;
   }
   return node;
}

void
changeText( std::string& text, Random& random ) {
   const std::size_t at = random() % ( text.size() + 1 );
   if ( random() % 2 == 0 && at < text.size() ) {
      text.erase( at, 1 );
   } else {
      text.insert( at, 1, static_cast< char >( ' ' + random() % 95 ) );
   }
}

void
change( Json& node, Random& random ) {
   if ( node.is_number_unsigned() ) {
      const std::uint64_t number = node.get< std::uint64_t >();
      const std::uint64_t choices[] = { number + 1, number - 1, random() % 8, 4090 + random() % 8 };
      node = choices[ random() % std::size( choices ) ];
   } else if ( node.is_string() ) {
      changeText( node.get_ref< std::string& >(), random );
   } else if ( node.is_boolean() ) {
      node = !node.get< bool >();
   } else if ( node.is_array() && !node.empty() && random() % 2 == 0 ) {
      node.push_back( Json( node[ random() % node.size() ] ) );
   } else if ( node.is_structured() && !node.empty() ) {
      auto at = node.begin();
      std::advance( at, random() % node.size() );
      node.erase( at );
   } else {
      node = 1;
   }
}

}   // namespace

extern "C" std::size_t
LLVMFuzzerCustomMutator( std::uint8_t* data, std::size_t size, std::size_t most,
                         unsigned int seed ) {
   Random random( seed );
   Json tree = random() % 2 == 0 ? Json::parse( data, data + size, nullptr, false )
                                 : Json( Json::value_t::discarded );
   if ( tree.is_discarded() ) {
      return LLVMFuzzerMutate( data, size, most );
   }
   change( *anyNode( tree, random ), random );
   // A change may have cut a character of several bytes.
   const std::string text = tree.dump( -1, ' ', false, Json::error_handler_t::replace );
   if ( text.size() > most ) {
      return LLVMFuzzerMutate( data, size, most );
   }
   std::memcpy( data, text.data(), text.size() );
   return text.size();
}
