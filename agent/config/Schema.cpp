// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/config/Schema.h"

#include <algorithm>
#include <cctype>
#include <optional>
#include <unordered_map>
#include <utility>

#include <fmt/format.h>

#include "agent/config/Escaped.h"
#include "agent/config/PortConfiguration.h"

namespace Agent {

namespace {

constexpr NumberRange kRange8[] = { { 0, 255 } };
constexpr NumberRange kRange16[] = { { 0, 65535 } };
constexpr NumberRange kRange32[] = { { 0, 4294967295 } };
constexpr NumberRange kVlanIds[] = { { kMinVlanId, kMaxVlanId } };

bool
isName( std::string_view text ) {
   return !text.empty() && !hasControls( text );
}

// A scalar as text that is the same for equal ones.
std::string
keyText( const JsonValue& value ) {
   return value.string() ? *value.string() : value.shown();
}

bool
isNumberOf( const LeafType& type, const JsonValue& value ) {
   const std::uint64_t* number = value.unsignedInteger();
   return number &&
          std::any_of( type.numbers.begin(), type.numbers.end(), [ & ]( const NumberRange& range ) {
             return *number >= range.low && *number <= range.high;
          } );
}

bool
isNameOf( const LeafType& type, const std::string& value ) {
   const auto& names = type.names;
   return std::find( names.begin(), names.end(), withoutModule( value, type.module ) ) !=
          names.end();
}

// Whether an identity lacks the prefix that its leaf cannot do without.
bool
lacksModule( const LeafType& type, const Place& leaf, const std::string& value ) {
   return !type.module.empty() && leaf.module() != type.module &&
          withoutModule( value, type.module ).size() == value.size();
}

bool
fits( const LeafType& type, const Place& leaf ) {
   const JsonValue& value = leaf.value();
   const std::string* text = value.string();
   return ( type.boolean && value.boolean() ) || isNumberOf( type, value ) ||
          ( text && type.text && type.text( *text ) ) ||
          ( text && isNameOf( type, *text ) && !lacksModule( type, leaf, *text ) );
}

// What keeps a leaf that does not fit from fitting.
void
explain( Document& document, const LeafType& type, const Place& leaf ) {
   const JsonValue& value = leaf.value();
   const std::string* text = value.string();
   if ( text && isNameOf( type, *text ) ) {
      document.finding( leaf, "lacks its module name",
                        fmt::format( "\"{}:{}\"", type.module, *text ) );
   } else if ( text && !type.names.empty() ) {
      document.finding( leaf, "is unknown", type.allowed );
   } else if ( ( text && type.text ) || ( value.isInteger() && !type.numbers.empty() ) ) {
      document.finding( leaf, "is not allowed", type.allowed );
   } else {
      const bool numberAlone = !type.numbers.empty() && !type.text;
      document.wrongType( leaf, fmt::format( "{}{}", type.allowed,
                                             numberAlone ? ", a JSON number without fraction and "
                                                           "exponent"
                                                         : "" ) );
   }
}

bool
checkLeaf( Document& document, const LeafType& type, const Place& leaf ) {
   const bool good = fits( type, leaf );
   if ( !good ) {
      explain( document, type, leaf );
   }
   return good;
}

// The name that `wrong` was probably meant to be, empty where nothing comes near.
std::string_view
nearest( const std::vector< SchemaNode >& nodes, std::string_view wrong ) {
   std::string_view best;
   std::size_t bestLength = wrong.size() / 2;
   for ( const SchemaNode& node : nodes ) {
      const auto end =
         std::mismatch( wrong.begin(), wrong.end(), node.name.begin(), node.name.end() );
      const auto length = static_cast< std::size_t >( end.first - wrong.begin() );
      if ( length > bestLength && node.kind != NodeKind::state ) {
         best = node.name;
         bestLength = length;
      }
   }
   return best;
}

class Walk {
 public:
   Walk( Document& document, const Schema& schema ) : document_( document ), schema_( schema ) {}

   // The members of a container, of a list entry or of the document.
   void object( const Place& place, const std::vector< SchemaNode >& nodes ) {
      const JsonObject* members = place.value().object();
      if ( !members ) {
         document_.wrongType( place, "an object" );
         return;
      }
      std::uint64_t present = 0;
      const std::vector< bool > again = repeated( place, *members );
      for ( std::size_t i = 0; i < members->size(); ++i ) {
         if ( again.empty() || !again[ i ] ) {
            member( Place( place, ( *members )[ i ] ), nodes, present );
         }
      }
      const SchemaNode* chosen = nullptr;
      for ( std::size_t i = 0; i < nodes.size(); ++i ) {
         if ( ( present >> i & 1 ) == 0 ) {
            absent( place, nodes[ i ], "" );
         } else if ( nodes[ i ].choice && chosen ) {
            document_.finding( *place.member( nodes[ i ].name ), "",
                               fmt::format( "stands beside {}", chosen->name ), "one of the two" );
         } else if ( nodes[ i ].choice ) {
            chosen = &nodes[ i ];
         }
      }
   }

 private:
   // Marks the members that repeat an earlier one; empty where none does.
   std::vector< bool > repeated( const Place& place, const JsonObject& members ) {
      std::vector< bool > marks;
      for ( const auto& [ first, again ] : duplicateMembers( members, place.module() ) ) {
         document_.finding(
            Place( place, *again ),
            fmt::format( "is given twice, on lines {} and {}", first->line, again->line ),
            "each member once" );
         marks.resize( members.size() );
         marks[ static_cast< std::size_t >( again - members.data() ) ] = true;
      }
      return marks;
   }

   void member( const Place& place, const std::vector< SchemaNode >& nodes,
                std::uint64_t& present ) {
      const std::string_view name = place.name();
      for ( std::size_t i = 0; i < nodes.size(); ++i ) {
         if ( nodes[ i ].name == name ) {
            present |= std::uint64_t( 1 ) << i;
            value( place, nodes[ i ] );
            return;
         }
      }
      const std::size_t colon = name.find( ':' );
      if ( colon != std::string_view::npos ) {
         const std::string_view other = name.substr( 0, colon );
         if ( std::find( schema_.modules.begin(), schema_.modules.end(), other ) ==
              schema_.modules.end() ) {
            otherModule( place );
            return;
         }
      } else if ( place.parent()->module().empty() ) {
         document_.finding( place, "", "the top-level member lacks its module name",
                            "names of the form MODULE:NAME" );
         return;
      } else if ( const SchemaNode* node = inOtherModule( nodes, name ) ) {
         document_.finding( place, "lacks its module name", fmt::format( "\"{}\"", node->name ) );
         present |= std::uint64_t( 1 ) << ( node - nodes.data() );
         return;
      }
      const std::string_view meant = nearest( nodes, name );
      document_.finding( place, "", "is unknown",
                         meant.empty() ? std::string( "what the module defines here" )
                                       : fmt::format( "{} perhaps", meant ) );
   }

   // The node that `name` would be if its module stood in front of it.
   static const SchemaNode* inOtherModule( const std::vector< SchemaNode >& nodes,
                                           std::string_view name ) {
      const auto at = std::find_if( nodes.begin(), nodes.end(), [ & ]( const SchemaNode& node ) {
         return node.name.ends_with( name ) && node.name.size() > name.size() &&
                node.name[ node.name.size() - name.size() - 1 ] == ':';
      } );
      return at == nodes.end() ? nullptr : &*at;
   }

   void value( const Place& place, const SchemaNode& node ) {
      switch ( node.kind ) {
      case NodeKind::container:
         object( place, node.children );
         rule( place, node );
         break;
      case NodeKind::list:
         entries( place, node );
         break;
      case NodeKind::leaf:
         checkLeaf( document_, *node.type, place );
         use( place, node );
         break;
      case NodeKind::leafList:
         items( place, node );
         use( place, node );
         break;
      case NodeKind::state:
         document_.finding( place, "", "is state of the switch", "configuration" );
         return;
      }
      condition( place, node );
   }

   void use( const Place& place, const SchemaNode& node ) {
      if ( node.use != Use::read ) {
         document_.unused( place, node.use == Use::checked ? kCheckedOnly : kNotUsed );
      }
   }

   void rule( const Place& place, const SchemaNode& node ) {
      if ( node.rule && place.value().object() ) {
         node.rule( document_, place );
      }
   }

   void condition( const Place& place, const SchemaNode& node ) {
      const JsonArray* array = place.value().array();
      if ( node.whenLeaf.empty() || ( array && array->empty() ) ) {
         return;
      }
      const JsonValue* leaf = place.parent()->valueBelow( node.whenLeaf );
      const std::string* found = leaf ? leaf->string() : nullptr;
      const std::size_t colon = found ? found->find( ':' ) : std::string::npos;
      const std::string_view value =
         !found ? std::string_view()
                : std::string_view( *found ).substr( colon == std::string::npos ? 0 : colon + 1 );
      const auto& values = node.whenValues;
      if ( std::find( values.begin(), values.end(), value ) == values.end() ) {
         document_.finding( place, "",
                            value.empty() ? fmt::format( "needs {}", node.whenLeaf )
                                          : fmt::format( "does not go with {} {}", node.whenLeaf,
                                                         shownText( value ) ),
                            fmt::format( "{} {}", node.whenLeaf, fmt::join( values, ", " ) ) );
      }
   }

   // A leaf-list.
   void items( const Place& place, const SchemaNode& node ) {
      const JsonArray* array = place.value().array();
      if ( !array ) {
         document_.wrongType( place, fmt::format( "an array, each item {}", node.type->allowed ) );
         return;
      }
      std::unordered_map< std::string, std::size_t > seen;
      for ( std::size_t i = 0; i < array->size(); ++i ) {
         const Place item( place, i, ( *array )[ i ] );
         if ( checkLeaf( document_, *node.type, item ) ) {
            once( seen, item, keyText( item.value() ), "each value once" );
         }
      }
   }

   void entries( const Place& place, const SchemaNode& node ) {
      const JsonArray* array = place.value().array();
      if ( !array ) {
         document_.wrongType( place, "an array, one object for each entry" );
         return;
      }
      std::unordered_map< std::string, std::size_t > keys( array->size() );
      std::unordered_map< std::string, std::size_t > values;
      for ( std::size_t i = 0; i < array->size(); ++i ) {
         const Place entry( place, i, ( *array )[ i ], node.keys.front() );
         object( entry, node.children );
         key( entry, node, keys );
         const auto unique = node.unique.empty() ? std::nullopt : entry.member( node.unique );
         if ( unique && unique->value().string() ) {
            once( values, *unique, *unique->value().string(), "each value once" );
         }
         rule( entry, node );
      }
   }

   void key( const Place& entry, const SchemaNode& node,
             std::unordered_map< std::string, std::size_t >& keys ) {
      std::optional< Place > first;
      std::string text;
      for ( const std::string_view name : node.keys ) {
         const std::optional< Place > leaf = entry.member( name );
         const auto at = std::find_if( node.children.begin(), node.children.end(),
                                       [ & ]( const auto& child ) { return child.name == name; } );
         if ( !leaf || !fits( *at->type, *leaf ) ) {
            return;
         }
         if ( !first ) {
            first.emplace( *leaf );
         }
         text += keyText( leaf->value() ) + '\0';
      }
      once( keys, *first, std::move( text ), "each key once" );
      const auto config = node.keyInConfig ? entry.member( "config" ) : std::nullopt;
      const auto again = config ? config->member( node.keys.front() ) : std::nullopt;
      if ( again && keyText( again->value() ) != keyText( first->value() ) ) {
         document_.finding( *again, "differs from the key of its list entry",
                            first->value().shown() );
      }
   }

   void once( std::unordered_map< std::string, std::size_t >& seen, const Place& leaf,
              std::string key, std::string_view allowed ) {
      const auto [ at, fresh ] = seen.try_emplace( std::move( key ), leaf.value().line );
      if ( !fresh ) {
         document_.finding( leaf, fmt::format( "is already used on line {}", at->second ),
                            allowed );
      }
   }

   // A container that is not there may still hold what must be.
   void absent( const Place& parent, const SchemaNode& node, const std::string& way ) {
      if ( node.mandatory ) {
         document_.missing( parent, way + std::string( node.name ), node.type->allowed );
      }
      if ( node.kind == NodeKind::container ) {
         for ( const SchemaNode& child : node.children ) {
            absent( parent, child, fmt::format( "{}{}/", way, node.name ) );
         }
      }
   }

   void otherModule( const Place& place ) {
      const JsonValue& value = place.value();
      const JsonObject* object = value.object();
      if ( object && !object->empty() ) {
         const std::vector< bool > again = repeated( place, *object );
         for ( std::size_t i = 0; i < object->size(); ++i ) {
            if ( again.empty() || !again[ i ] ) {
               otherModule( Place( place, ( *object )[ i ] ) );
            }
         }
         return;
      }
      const JsonArray* array = value.array();
      if ( !array || std::all_of( array->begin(), array->end(),
                                  []( const JsonValue& item ) { return item.isScalar(); } ) ) {
         document_.unused( place, kOtherModule );
         return;
      }
      for ( std::size_t i = 0; i < array->size(); ++i ) {
         otherModule( Place( place, i, ( *array )[ i ] ) );
      }
   }

   Document& document_;
   const Schema& schema_;
};

}   // namespace

constinit const LeafType kBoolean = { .allowed = "true or false", .boolean = true };
constinit const LeafType kUnsigned8 = { .allowed = "0..255", .numbers = kRange8 };
constinit const LeafType kUnsigned16 = { .allowed = "0..65535", .numbers = kRange16 };
constinit const LeafType kUnsigned32 = { .allowed = "0..4294967295", .numbers = kRange32 };
constinit const LeafType kVlanId = { .allowed = "1..4094", .numbers = kVlanIds };
constinit const LeafType kText = { .allowed = "a JSON string",
                                   .text = []( std::string_view ) { return true; } };
constinit const LeafType kName = {
   .allowed = "a name of one or more characters without control characters", .text = isName };

SchemaNode
container( std::string_view name, std::vector< SchemaNode > children ) {
   return { .name = name, .kind = NodeKind::container, .children = std::move( children ) };
}

SchemaNode
list( std::string_view name, std::vector< std::string_view > keys,
      std::vector< SchemaNode > children ) {
   for ( SchemaNode& child : children ) {
      child.mandatory |= std::find( keys.begin(), keys.end(), child.name ) != keys.end();
   }
   return { .name = name,
            .kind = NodeKind::list,
            .keys = std::move( keys ),
            .children = std::move( children ) };
}

SchemaNode
leaf( std::string_view name, const LeafType& type, Use use ) {
   return { .name = name, .kind = NodeKind::leaf, .type = &type, .use = use };
}

SchemaNode
leafList( std::string_view name, const LeafType& type, Use use ) {
   return { .name = name, .kind = NodeKind::leafList, .type = &type, .use = use };
}

SchemaNode
state( std::string_view name ) {
   return { .name = name, .kind = NodeKind::state };
}

SchemaNode
mandatory( SchemaNode node ) {
   node.mandatory = true;
   return node;
}

SchemaNode
choice( SchemaNode node ) {
   node.choice = true;
   return node;
}

SchemaNode
when( SchemaNode node, std::string_view leaf, std::vector< std::string_view > values ) {
   node.whenLeaf = leaf;
   node.whenValues = std::move( values );
   return node;
}

SchemaNode
withRule( SchemaNode node, void ( *rule )( Document&, const Place& ) ) {
   node.rule = rule;
   return node;
}

void
checkDocument( Document& document, const Schema& schema, const Place& root ) {
   Walk( document, schema ).object( root, schema.top );
}

bool
hasForm( std::string_view text, std::string_view mask ) {
   return std::equal( text.begin(), text.end(), mask.begin(), mask.end(), []( char c, char form ) {
      return form == 'h' ? std::isxdigit( static_cast< unsigned char >( c ) ) != 0 : c == form;
   } );
}

}   // namespace Agent
