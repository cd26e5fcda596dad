// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Generic access: objects are made, and any operation is asked of any attribute of any of them, with
// arguments of the right types or of wrong ones; iterators stand in the collections meanwhile.
//
// Checked: only the declared errors come; what is refused changes nothing; values print and read
// back; the two collections of a range entry agree behind every call of the range manager; nothing
// is left in the end. Null pointers are no arguments here: which operation takes one is its own
// affair, and the others assert.
//
// The range manager asserts when the two collections were made to disagree, and may do so when an
// id is added under a second mapping. So it is called only for an entry that is in order and free
// of such an id; sequences may bring any entry out of order by hand, and into order again.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "Mox/MoxVlanMappingConfigDir.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "Zel/Exception.h"
#include "Zel/GenericIf.h"
#include "tests/fuzz/Bytes.h"
#include "tests/fuzz/Fuzz.h"
#include "tests/fuzz/GenericWorld.h"
#include "tests/support/GenericSamples.h"
#include "tests/support/LiveObjects.h"

namespace {

using Fuzz::GenericWorld;
using Fuzz::require;
using MoxVlanMapping::VlanRangeEntry;
using MoxVlanMapping::VlanRangeEntryDir;
using MoxVlanMapping::VlanRangeXlateMapping;
using Zel::AttributeRecord;
using Zel::OpCode;
using Zel::TypeHandle;
using Zel::Value;

using Live = std::map< std::string, std::int64_t >;

constexpr unsigned kCodes = 16;
constexpr std::size_t kMostWalks = 6;

unsigned
number( OpCode code ) {
   return static_cast< unsigned >( code );
}

// The object as a T, or null.
template < class T >
T*
as( const Value& object ) {
   return dynamic_cast< T* >( object.entity().get() );
}

bool
isConfigured( Corvel::IntfId intf ) {
   return intf.value() >= GenericWorld::kFirstConfigured;
}

// Whether the entry is as range managers leave it: a start for each range, ranges apart from each
// other and, unless the empty mapping took one over, not to be merged; and no [1..1] of it.
bool
inOrder( const VlanRangeEntry& entry ) {
   const Bridging::VlanXlateMapping empty;
   std::vector< std::uint16_t > starts;
   VlanRangeXlateMapping before;
   for ( const auto& element : entry.vlanIdRange() ) {
      const VlanRangeXlateMapping& range = element.value();
      const int gap = range.lowVid().value() - before.highVid().value();
      const bool joins =
         gap == 1 && range.mapping() == before.mapping() && !( range.mapping() == empty );
      if ( range.highVid() < range.lowVid() || range == VlanRangeXlateMapping() ||
           ( !starts.empty() && ( gap < 1 || joins ) ) ) {
         return false;
      }
      before = range;
      starts.insert( starts.begin(), range.lowVid().value() );
   }
   auto start = starts.begin();
   for ( const auto& element : entry.revSortedStartVid() ) {
      if ( start == starts.end() || element.key().value() != *start || !element.value() ) {
         return false;
      }
      ++start;
   }
   return start == starts.end();
}

// The range that holds the id.
std::optional< VlanRangeXlateMapping >
rangeAround( const VlanRangeEntry& entry, Bridging::VlanId vid ) {
   for ( const auto& element : entry.vlanIdRange() ) {
      const VlanRangeXlateMapping& range = element.value();
      if ( !( vid < range.lowVid() ) && !( range.highVid() < vid ) ) {
         return range;
      }
   }
   return std::nullopt;
}

bool
heldUnderAnother( const VlanRangeEntry& entry, Bridging::VlanId vid,
                  Bridging::VlanXlateMapping mapping ) {
   const auto range = rangeAround( entry, vid );
   return range && !( range->mapping() == mapping ) && !( mapping == Bridging::VlanXlateMapping() );
}

struct Walk {
   std::unique_ptr< Zel::GenericIterator > at;
   bool mayDelete;
};

class Session {
 public:
   explicit Session( std::span< const std::uint8_t > bytes ) : input_( bytes ) {}

   void run() {
      if ( input_.oneIn( 2 ) ) {
         world_.wire();
      }
      while ( !input_.atEnd() ) {
         try {
            step();
         } catch ( const Zel::TypeException& error ) {
            if ( !wrong_ ) {
               Fuzz::finding( "right arguments are refused: " + error.message() );
            }
         } catch ( const Zel::Exception& error ) {
            require( *error.what() != 0, "an error without a text" );
         }
         wrong_ = false;
         checkConfiguredEntries();
      }
   }

 private:
   void step() {
      switch ( input_.below( 8 ) ) {
      case 0:
         return startWalk();
      case 1:
         return walk();
      case 2:
         return world_.drop();
      default:
         return operate();
      }
   }

   void operate() {
      const Value object = world_.any();
      const std::vector< TypeHandle > types = TestSupport::typeAndBases( object.type() );
      const TypeHandle type = types[ input_.below( types.size() ) ];
      const AttributeRecord* const row = rowOf( type );
      const unsigned code =
         row ? codeOf( *row ) : static_cast< unsigned >( input_.below( kCodes ) );
      const Zel::AttributeId id =
         row ? row->id : static_cast< Zel::AttributeId >( input_.below( 3 ) * 128 );
      std::vector< Value > arguments = argumentsOf( type, row, code );
      if ( !row || isAllowed( object, *row, code, arguments ) ) {
         carryOut( object, type, id, code, arguments );
      }
   }

   // Mostly one with which something can be done; null for an id that may be none of the type's.
   const AttributeRecord* rowOf( TypeHandle type ) {
      if ( input_.oneIn( 16 ) ) {
         return nullptr;
      }
      const bool any = input_.oneIn( 16 );
      std::vector< const AttributeRecord* > rows;
      for ( const AttributeRecord& row : type.record()->attributes ) {
         if ( any || row.kind != Zel::AttributeKind::Method ) {
            rows.push_back( &row );
         }
      }
      return rows.empty() ? nullptr : rows[ input_.below( rows.size() ) ];
   }

   // Mostly one that the row supports.
   unsigned codeOf( const AttributeRecord& row ) {
      std::vector< unsigned > supported;
      for ( unsigned code = 0; code < kCodes; ++code ) {
         if ( Zel::zelOperation( row, code ).invoke ) {
            supported.push_back( code );
         }
      }
      return supported.empty() || input_.oneIn( 16 )
              ? static_cast< unsigned >( input_.below( kCodes ) )
              : supported[ input_.below( supported.size() ) ];
   }

   std::vector< Value > argumentsOf( TypeHandle type, const AttributeRecord* row, unsigned code ) {
      std::vector< Value > arguments;
      if ( row ) {
         arguments = world_.arguments( Zel::zelOperation( *row, code ).types );
      } else if ( type.record()->hooks &&
                  ( code == number( OpCode::Equal ) || code == number( OpCode::Less ) ) ) {
         arguments = { world_.argument( type ) };
      }
      if ( input_.oneIn( 16 ) ) {
         wrong_ = true;
         if ( arguments.empty() || input_.oneIn( 2 ) ) {
            arguments.push_back( world_.any() );
         } else if ( input_.oneIn( 2 ) ) {
            arguments.pop_back();
         } else {
            arguments.front() = input_.oneIn( 4 ) ? Value() : world_.any();
         }
      }
      return arguments;
   }

   // Whether the operation keeps the conditions that the library asks of its caller.
   static bool isAllowed( const Value& object, const AttributeRecord& row, unsigned code,
                          const std::vector< Value >& arguments ) {
      const bool changes = code == number( OpCode::Set ) || code == number( OpCode::Delete );
      if ( const auto* entry = as< VlanRangeEntry >( object ) ) {
         return !changes || !isConfigured( entry->intfId() );
      }
      if ( const auto* mgr = as< MoxVlanMapping::MoxVlanRangeMgr >( object ) ) {
         return code != number( OpCode::Call ) || mayCall( *mgr, row, arguments );
      }
      if ( as< Mox::MoxVlanMappingConfigDir >( object ) ) {
         return code != number( OpCode::Set ) || mayConfigure( arguments );
      }
      if ( const auto* sm = as< MoxVlanMapping::VlanMappingScaleSlaveSm >( object ) ) {
         // What it delivered stands in its own directory.
         return code != number( OpCode::Set ) || arguments.size() != 1 ||
                arguments[ 0 ].entity() == sm->vlanRangeEntryDir();
      }
      return true;
   }

   static bool mayCall( const MoxVlanMapping::MoxVlanRangeMgr& mgr, const AttributeRecord& row,
                        const std::vector< Value >& arguments ) {
      if ( !row.call.invoke || arguments.size() != row.call.types.size() ||
           !std::ranges::equal( arguments, row.call.types, []( const Value& value, auto type ) {
              return value && value.type().name() == std::string_view( type );
           } ) ) {
         return true;   // refused
      }
      const auto intf = arguments[ 0 ].as< Corvel::IntfId >();
      const auto entry = mgr.vlanRangeEntryDir()->vlanRangeEntry( intf );
      if ( isConfigured( intf ) || !entry ) {
         return !isConfigured( intf );
      }
      return inOrder( *entry ) &&
             ( arguments.size() < 3 ||
               !heldUnderAnother( *entry, arguments[ 1 ].as< Bridging::VlanId >(),
                                  arguments[ 2 ].as< Bridging::VlanXlateMapping >() ) );
   }

   // VLAN 1 and the empty mapping are for different interfaces.
   static bool mayConfigure( const std::vector< Value >& arguments ) {
      const TypeHandle configType = Zel::zelTypeOf( Mox::MoxVlanMappingConfig::zelTypeName );
      if ( arguments.size() != 1 || arguments[ 0 ].type() != configType ) {
         return true;   // refused
      }
      const auto& config = arguments[ 0 ].as< Mox::MoxVlanMappingConfig >();
      const Corvel::IntfId intf = config.key().intfId();
      return isConfigured( intf ) &&
             ( intf.value() % 2 == 0 ? config.key().vlanId().value() != 1
                                     : !( config.mapping() == Bridging::VlanXlateMapping() ) );
   }

   void carryOut( const Value& object, TypeHandle type, Zel::AttributeId id, unsigned code,
                  const std::vector< Value >& arguments ) {
      // Counting takes time; only what may be refused is counted.
      const AttributeRecord* const row = Zel::zelAttributeById( type, id );
      const bool counted = wrong_ || !row || !Zel::zelOperation( *row, code ).invoke;
      const auto liveBefore = counted ? TestSupport::liveObjects() : Live();
      const Value untouched = Value::of( Zel::String( "untouched" ) );
      Value result = untouched;
      int answer = Zel::kDone;
      try {
         answer = Zel::genericIfAttributeOp( result, { type, Zel::View( object ).object }, id, code,
                                             arguments );
      } catch ( const Zel::TypeException& ) {
         require( !counted || liveBefore == TestSupport::liveObjects(),
                  "a refused operation made something" );
         throw;
      }
      if ( answer != Zel::kDone ) {
         require( answer == Zel::kUnsupported || answer == Zel::kNoAttribute, "an unknown answer" );
         require( Zel::zelStrep( result ).str() == "untouched", "a refused operation answered" );
         require( !counted || liveBefore == TestSupport::liveObjects(),
                  "a refused operation made something" );
         return;
      }
      checkCalled( object, code, arguments );
      keep( result );
   }

   static void checkCalled( const Value& object, unsigned code,
                            const std::vector< Value >& arguments ) {
      const auto* mgr = as< MoxVlanMapping::MoxVlanRangeMgr >( object );
      if ( !mgr || code != number( OpCode::Call ) ) {
         return;
      }
      const auto entry =
         mgr->vlanRangeEntryDir()->vlanRangeEntry( arguments[ 0 ].as< Corvel::IntfId >() );
      const auto vid = arguments[ 1 ].as< Bridging::VlanId >();
      require( entry.get() != nullptr, "a call of the range manager left no entry" );
      // [1..1] of the empty mapping counts as no range; a call may leave it.
      require( inOrder( *entry ) || isOneToOneEmpty( *entry ),
               "a call of the range manager left the collections apart" );
      const bool added = arguments.size() == 3;
      const bool holds = rangeAround( *entry, vid ).has_value();
      require( holds == added, "the id is not there, or still there" );
   }
   static bool isOneToOneEmpty( const VlanRangeEntry& entry ) {
      return entry.vlanIdRange().contains( Bridging::VlanId( 1 ) ) &&
             entry.vlanIdRange( Bridging::VlanId( 1 ) ) == VlanRangeXlateMapping();
   }

   void keep( const Value& result ) {
      if ( !result ) {
         return;
      }
      if ( const Zel::ValueHooks* hooks = result.type().record()->hooks ) {
         checkReadsBack( result, *hooks );
      }
      world_.add( result );
   }
   static void checkReadsBack( const Value& value, const Zel::ValueHooks& hooks ) {
      if ( value.type() == Zel::zelTypeOf( "double" ) && !std::isfinite( value.as< double >() ) ) {
         return;   // prints, but has no form that is read
      }
      const Value again = Zel::zelParse( value.type(), Zel::zelStrep( value ) );
      require( hooks.equal( Zel::View( value ).object, Zel::View( again ).object ),
               "a value is not read back as it was printed" );
   }

   void startWalk() {
      const Value object = world_.any();
      const std::vector< TypeHandle > types = TestSupport::typeAndBases( object.type() );
      const TypeHandle type = types[ input_.below( types.size() ) ];
      std::vector< const AttributeRecord* > collections;
      for ( const AttributeRecord& row : type.record()->attributes ) {
         if ( row.iterate ) {
            collections.push_back( &row );
         }
      }
      if ( collections.empty() ) {
         return;
      }
      const AttributeRecord& row = *collections[ input_.below( collections.size() ) ];
      const auto* entry = as< VlanRangeEntry >( object );
      if ( walks_.size() == kMostWalks ) {
         walks_.erase( walks_.begin() );
      }
      walks_.push_back(
         { Zel::zelIterate( object, row.name ), !entry || !isConfigured( entry->intfId() ) } );
   }

   void walk() {
      if ( walks_.empty() ) {
         return;
      }
      Walk& walk = walks_[ input_.below( walks_.size() ) ];
      if ( !*walk.at ) {
         return;
      }
      keep( walk.at->key() );
      const Value element = walk.at->object();
      keep( element );
      const bool gone = walk.mayDelete && input_.oneIn( 4 ) && walk.at->del();
      if ( Fuzz::planted() && gone && element.entity() && walks_.size() == kMostWalks ) {
         static std::vector< Value > kept;
         kept.push_back( element );
      }
      walk.at->advance();
   }

   static bool configuredInOrder( const VlanRangeEntryDir& dir ) {
      for ( const auto& element : dir.vlanRangeEntry() ) {
         if ( isConfigured( element.key() ) && !inOrder( *element.entity() ) ) {
            return false;
         }
      }
      return true;
   }
   // Nobody but a state machine changes them.
   void checkConfiguredEntries() const {
      for ( const auto* all : { &world_.wired(), &world_.objects() } ) {
         for ( const Value& object : *all ) {
            const auto* dir = as< VlanRangeEntryDir >( object );
            require( !dir || configuredInOrder( *dir ),
                     "a state machine left the collections apart" );
         }
      }
   }

   Fuzz::Bytes input_;
   GenericWorld world_{ input_ };
   std::vector< Walk > walks_;
   // Whether the arguments of this step were made wrong, so that a refusal is right.
   bool wrong_ = false;
};

}   // namespace

extern "C" int
LLVMFuzzerTestOneInput( const std::uint8_t* data, std::size_t size ) {
   const auto before = TestSupport::liveObjects();
   Session( { data, size } ).run();
   require( before == TestSupport::liveObjects(), "objects are left" );
   return 0;
}
