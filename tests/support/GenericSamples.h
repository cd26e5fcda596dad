// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// GenericSamples: an object of any registered type, and any object as text, by generic access.
//
//   const Zel::Value mgr = sample( Zel::zelTypeOf( "MoxVlanMapping::MoxVlanRangeMgr" ), 1 );
//   EXPECT_EQ( objectText( mgr ), ... );
//
// A sample's parts all carry its number; the collections of an entity hold two elements, those of
// the numbers 1 and 2. The samples of an abstract type are of a class that derives from it.
#pragma once

#include <algorithm>
#include <cctype>
#include <iterator>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/GenericIf.h"
#include "Zel/NewEntity.h"
#include "Zel/TypeModule.h"
#include "Zel/Value.h"

namespace TestSupport {

class SampleCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "SampleCodef";
   void processSortedVlanRange( Corvel::IntfId ) override {}

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~SampleCodef() override { zelDoZombieReactors( true ); }
};

inline std::vector< Zel::TypeHandle >
registeredTypes() {
   std::vector< Zel::TypeHandle > types;
   for ( const Zel::TypeModule* module : Zel::zelModules() ) {
      for ( std::uint32_t index = 0; index < module->types.size(); ++index ) {
         types.push_back( { module, index } );
      }
   }
   return types;
}

inline std::vector< std::string >
typeNames() {
   std::vector< std::string > names;
   for ( const Zel::TypeHandle type : registeredTypes() ) {
      names.emplace_back( type.name() );
   }
   return names;
}

/// Names the cases of a suite whose parameters are type names; `Info` is what the framework passes.
template < class Info >
std::string
typeCaseName( const Info& info ) {
   std::string name;
   std::ranges::copy_if( info.param, std::back_inserter( name ),
                         []( unsigned char c ) { return std::isalnum( c ) || c == '_'; } );
   return name;
}

/// The type, its base, and so on.
inline std::vector< Zel::TypeHandle >
typeAndBases( Zel::TypeHandle type ) {
   std::vector< Zel::TypeHandle > types;
   for ( ; type; type = Zel::zelTypeByName( type.record()->base ) ) {
      types.push_back( type );
   }
   return types;
}

inline Zel::Value sample( Zel::TypeHandle type, unsigned number );

inline std::vector< Zel::Value >
samples( std::span< const char* const > types, unsigned number ) {
   std::vector< Zel::Value > values;
   for ( const char* type : types ) {
      values.push_back( sample( Zel::zelTypeOf( type ), number ) );
   }
   return values;
}

namespace Detail {

/// Of a value type that is not made of parts.
inline std::string
plainText( std::string_view type, unsigned number ) {
   const std::string digits = std::to_string( number );
   return type == "bool"              ? "true"
        : type == "double"            ? digits + ".5"
        : type == "Quen::YieldPolicy" ? "Never"
                                      : digits;
}

/// The last, for among the clocks that is the one that stands still.
inline Zel::TypeHandle
concreteTypeOf( Zel::TypeHandle base ) {
   Zel::TypeHandle found;
   for ( const Zel::TypeHandle type : registeredTypes() ) {
      if ( type.record()->constructor.invoke && Zel::zelDerives( type, base ) ) {
         found = type;
      }
   }
   return found;
}

inline Zel::Value
sampleCodef( unsigned number ) {
   using Codef = MoxVlanMapping::MoxVlanRangeMappingCodef;
   const auto parts =
      samples( Zel::zelTypeOf( Codef::zelTypeName ).record()->constructor.types, number );
   const Zel::Ptr< Codef > codef = Zel::newEntity< SampleCodef >(
      parts.at( 0 ).entity< Mox::MoxCommonSmData >(), parts.at( 1 ).entity< Quen::TaskScheduler >(),
      parts.at( 2 ).entity< MoxVlanMapping::VlanRangeEntryDir >(),
      parts.at( 3 ).entity< MoxVlanMapping::VlanXlateScheduleDir >() );
   return Zel::Value::of( codef );
}

inline void
fill( const Zel::Value& entity ) {
   for ( const Zel::TypeHandle type : typeAndBases( entity.type() ) ) {
      for ( const Zel::AttributeRecord& row : type.record()->attributes ) {
         for ( unsigned number = 1; row.iterate && number <= 2; ++number ) {
            Zel::Value element;
            row.set.invoke( Zel::View( entity ).object, samples( row.set.types, number ).data(),
                            element );
            fill( element );
         }
      }
   }
}

class ObjectText {
 public:
   std::string of( const Zel::Value& value ) {
      if ( !value ) {
         return "nothing";
      }
      if ( value.type().record()->hooks ) {
         return Zel::zelStrep( value ).str();
      }
      return std::string( value.type().name() ) + entityText( value );
   }

 private:
   std::string entityText( const Zel::Value& value ) {
      const Zel::PtrInterface* entity = value.entity().get();
      if ( !entity ) {
         return " null";
      }
      const auto [ known, first ] = numbers_.try_emplace( entity, numbers_.size() );
      std::string text = " #" + std::to_string( known->second );
      if ( !first ) {
         return text;
      }
      text += " references " + std::to_string( entity->zelReferences() ) + " { ";
      for ( const Zel::TypeHandle type : typeAndBases( value.type() ) ) {
         for ( const Zel::AttributeRecord& row : type.record()->attributes ) {
            text += attributeText( row, value );
         }
      }
      return text + "}";
   }
   std::string attributeText( const Zel::AttributeRecord& row, const Zel::Value& object ) {
      std::string text = std::string( row.name ) + ": ";
      if ( row.iterate ) {
         text += of( read( row.size, object ) ) + " elements, " +
                 of( read( row.changes, object ) ) + " changes ";
         for ( const auto at = row.iterate( Zel::View( object ).object ); *at; at->advance() ) {
            text += "[ " + of( at->key() ) + ": " + of( at->object() ) + " ] ";
         }
         return text + "\n";
      }
      // The machine's time goes on by itself.
      if ( !row.get.invoke || object.type().name() == std::string_view( "Zel::SteadyClock" ) ) {
         return "";
      }
      return text + of( read( row.get, object ) ) + "\n";
   }
   static Zel::Value read( const Zel::Operation& operation, const Zel::Value& object ) {
      Zel::Value result;
      operation.invoke( Zel::View( object ).object, nullptr, result );
      return result;
   }

   std::map< const Zel::PtrInterface*, std::size_t > numbers_;
};

}   // namespace Detail

inline Zel::Value
sample( Zel::TypeHandle type, unsigned number ) {
   const Zel::TypeRecord& record = *type.record();
   if ( record.name == std::string_view( "MoxVlanMapping::MoxVlanRangeMappingCodef" ) ) {
      return Detail::sampleCodef( number );
   }
   if ( record.kind == Zel::TypeKind::Value ) {
      return record.constructor.invoke
              ? Zel::zelConstruct( type, samples( record.constructor.types, number ) )
              : Zel::zelParse( type, Detail::plainText( record.name, number ) );
   }
   if ( !record.constructor.invoke ) {
      return sample( Detail::concreteTypeOf( type ), number );
   }
   const Zel::Value entity = Zel::zelConstruct( type, samples( record.constructor.types, number ) );
   Detail::fill( entity );
   return entity;
}

/// A value's string form; of an entity, everything that its attributes and those of the entities
/// behind them answer, with the counts of references.
inline std::string
objectText( const Zel::Value& object ) {
   return Detail::ObjectText().of( object );
}

}   // namespace TestSupport
