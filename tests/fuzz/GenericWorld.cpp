// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "tests/fuzz/GenericWorld.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <string_view>
#include <utility>

#include "Zel/GenericIf.h"
#include "tests/support/GenericSamples.h"

namespace Fuzz {
namespace {

using Zel::TypeHandle;
using Zel::Value;

constexpr std::size_t kMostObjects = 40;

const std::vector< TypeHandle >&
types() {
   static const std::vector< TypeHandle > all = TestSupport::registeredTypes();
   return all;
}

Value
codefOf( const std::vector< Value >& parts ) {
   return Value::of( Zel::newEntity< TestSupport::SampleCodef >(
      parts[ 0 ].entity< Mox::MoxCommonSmData >(), parts[ 1 ].entity< Quen::TaskScheduler >(),
      parts[ 2 ].entity< MoxVlanMapping::VlanRangeEntryDir >(),
      parts[ 3 ].entity< MoxVlanMapping::VlanXlateScheduleDir >() ) );
}

bool
isNamed( TypeHandle type, std::string_view name ) {
   return type.name() == name;
}

/// Whether an object of one type may stand as argument for the other. Asked for each object at each
/// step, so the answers are kept.
bool
isUsableAs( TypeHandle type, TypeHandle wanted ) {
   using Record = const Zel::TypeRecord*;
   static std::map< std::pair< Record, Record >, bool > known;
   const auto [ at, isNew ] = known.try_emplace( { type.record(), wanted.record() } );
   if ( isNew ) {
      at->second = Zel::zelDerives( type, wanted ) &&
                   type.record()->polymorphic == wanted.record()->polymorphic;
   }
   return at->second;
}

}   // namespace

void
GenericWorld::add( const Value& object ) {
   if ( !Zel::View( object ).object ) {
      return;
   }
   if ( objects_.size() == kMostObjects ) {
      objects_.erase( objects_.begin() );
   }
   objects_.push_back( object );
}

void
GenericWorld::drop() {
   if ( !objects_.empty() ) {
      objects_.erase( objects_.begin() +
                      static_cast< std::ptrdiff_t >( input_.below( objects_.size() ) ) );
   }
}

void
GenericWorld::wire() {
   const auto made = [ this ]( const char* type, std::initializer_list< Value > arguments = {} ) {
      wired_.push_back( Zel::zelConstruct( Zel::zelTypeOf( type ), arguments ) );
      return wired_.back();
   };
   const Value clock = made( "Zel::ManualClock" );
   const Value scheduler = made( "Quen::TaskScheduler", { clock } );
   const Value acsd = made( "Mox::MoxCommonSmData" );
   const Value ranges = made( "MoxVlanMapping::VlanRangeEntryDir" );
   const Value schedule = made( "MoxVlanMapping::VlanXlateScheduleDir" );
   made( "MoxVlanMapping::VlanMappingScaleSlaveSm",
         { acsd, clock, made( "Bridging::Config" ), made( "Bridging::VlanXlateStatusDir" ), ranges,
           schedule } );
   const Value mgr = made( "MoxVlanMapping::MoxVlanRangeMgr", { ranges } );
   wired_.insert( wired_.end(), { mgr, mgr } );   // again, to be chosen more often
   wired_.push_back( codefOf( { acsd, scheduler, ranges, schedule } ) );
   wired_.push_back( Zel::zelAttribute( acsd, "ingressConfigDir", Zel::OpCode::Get ) );
}

Value
GenericWorld::any() {
   if ( !wired_.empty() && !input_.oneIn( 3 ) ) {
      return wired_[ input_.below( wired_.size() ) ];
   }
   if ( objects_.empty() ) {
      add( make( types()[ input_.below( types().size() ) ] ) );
   }
   return objects_[ input_.below( objects_.size() ) ];
}

const Value*
GenericWorld::known( TypeHandle type ) {
   std::vector< const Value* > fitting;
   for ( const std::vector< Value >* const all : { &wired_, &objects_ } ) {
      for ( const Value& object : *all ) {
         if ( isUsableAs( object.type(), type ) ) {
            fitting.push_back( &object );
         }
      }
   }
   return fitting.empty() ? nullptr : fitting[ input_.below( fitting.size() ) ];
}

Value
GenericWorld::argument( TypeHandle type ) {
   const Value* const old = input_.oneIn( 3 ) ? nullptr : known( type );
   if ( old ) {
      return *old;
   }
   const Value made = make( type );
   add( made );
   return made;
}

std::vector< Value >
GenericWorld::arguments( std::span< const char* const > types ) {
   std::vector< Value > values;
   for ( const char* type : types ) {
      values.push_back( argument( Zel::zelTypeOf( type ) ) );
   }
   return values;
}

Value
GenericWorld::make( TypeHandle type ) {
   return type.record()->hooks ? makeValue( type ) : makeEntity( type );
}

Value
GenericWorld::makeEntity( TypeHandle type ) {
   const auto& constructor = type.record()->constructor;
   if ( isNamed( type, "MoxVlanMapping::MoxVlanRangeMappingCodef" ) ) {
      return codefOf( arguments( constructor.types ) );
   }
   if ( !constructor.invoke ) {
      return make( TestSupport::Detail::concreteTypeOf( type ) );
   }
   std::vector< Value > parts = arguments( constructor.types );
   if ( isNamed( type, "MoxVlanMapping::VlanMappingScaleSlaveSm" ) ) {
      for ( Value& part : parts ) {
         if ( isNamed( part.type(), "MoxVlanMapping::VlanRangeEntryDir" ) ) {
            part = make( part.type() );
            add( part );
         }
      }
   }
   return Zel::zelConstruct( type, parts );
}

/// Mostly a VLAN id near either end, so that ids meet.
std::uint16_t
GenericWorld::number16() {
   const std::uint8_t choice = input_.byte();
   return choice < 160   ? static_cast< std::uint16_t >( 1 + choice % 8 )
        : choice < 224   ? static_cast< std::uint16_t >( 4088 + choice % 8 )
        : choice < 0xf8u ? std::uint16_t{ 0 }
                         : input_.raw< std::uint16_t >();
}

Value
GenericWorld::makeValue( TypeHandle type ) {
   const Zel::TypeRecord& record = *type.record();
   if ( isNamed( type, "bool" ) ) {
      return Value::of( !input_.oneIn( 4 ) );
   }
   if ( isNamed( type, "uint8_t" ) ) {
      return Value::of( input_.byte() );
   }
   if ( isNamed( type, "uint16_t" ) ) {
      return Value::of( number16() );
   }
   if ( isNamed( type, "uint32_t" ) ) {
      return Value::of( input_.raw< std::uint32_t >() );
   }
   if ( isNamed( type, "uint64_t" ) ) {
      return Value::of( input_.oneIn( 16 ) ? input_.raw< std::uint64_t >()
                                           : std::uint64_t{ input_.below( 12 ) } );
   }
   if ( isNamed( type, "double" ) ) {
      return Value::of( input_.oneIn( 4 ) ? input_.raw< double >()
                                          : static_cast< double >( input_.byte() ) / 64 );
   }
   if ( isNamed( type, "Zel::String" ) ) {
      return Value::of( Zel::String( input_.text() ) );
   }
   if ( !record.constructor.invoke ) {   // an enumeration, made of its own default
      static constexpr const char* kPolicies[] = { "Quantum", "Always", "Never", "AfterTests" };
      return Zel::zelParse( type, kPolicies[ input_.below( std::size( kPolicies ) ) ] );
   }
   std::vector< Value > parts;
   for ( const char* part : record.constructor.types ) {
      // Parts that are numbers are new each time; those of our types may be old ones.
      const TypeHandle partType = Zel::zelTypeOf( part );
      parts.push_back( partType.record()->constructor.invoke ? argument( partType )
                                                             : makeValue( partType ) );
   }
   return Zel::zelConstruct( type, parts );
}

}   // namespace Fuzz
