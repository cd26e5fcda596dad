// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Construction from arguments, and one storage seen as several types.
#include "tests/unit/MoxVlanMapping/GenericAccess.h"

#include <array>
#include <string>
#include <typeinfo>
#include <vector>

#include "Mox/MoxVlanMapping.h"
#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/TypeTable.h"

namespace {

using Zel::Value;

Value
constructed( const std::string& type, std::initializer_list< Value > arguments = {} ) {
   return Zel::zelConstruct( Zel::zelTypeOf( type ), arguments );
}

class GenericConstructTest : public GenericAccess {
 protected:
   /// The text of what a constructor throws, behind its kind.
   static std::string thrownBy( const std::string& type, Arguments arguments ) {
      try {
         constructed( type, arguments );
      } catch ( const Zel::RangeException& error ) {
         return "range: " + error.message();
      } catch ( const Zel::TypeException& error ) {
         return "type: " + error.message();
      }
      return "nothing";
   }
   static Value number( std::uint16_t value ) { return Value::of( value ); }
};

TEST_F( GenericConstructTest, ValuesAreMadeOfTheirParts ) {
   EXPECT_EQ( text( constructed( "MoxVlanMapping::ReverseStartIdVlanId", { number( 4094 ) } ) ),
              "4094" );
   EXPECT_EQ( rangeText( constructed( "MoxVlanMapping::VlanRangeXlateMapping",
                                      { vlan( 10 ), vlan( 20 ), mapping( 'M' ) } ) ),
              "10-20 M" );
}

TEST_F( GenericConstructTest, EntitiesAreMadeWithTheirNotificationsOn ) {
   const Value ranges = made( "VlanRangeEntryDir" );
   const Value schedule = made( "VlanXlateScheduleDir" );
   const std::vector< Value > all{
      made( "VlanRangeEntry", { intf( 7 ) } ),
      ranges,
      schedule,
      made( "MoxVlanRangeMgr", { ranges } ),
      made( "VlanXlateScaleEntry", { intf( 7 ) } ),
      made( "VlanXlateScaleEntryDir" ),
      made( "VlanMappingScaleSlaveSm",
            { constructed( "Mox::MoxCommonSmData" ), constructed( "Zel::SteadyClock" ),
              constructed( "Bridging::Config" ), constructed( "Bridging::VlanXlateStatusDir" ),
              ranges, schedule } ),
   };
   for ( const Value& entity : all ) {
      EXPECT_TRUE( entity.entity()->hasNotificationActive() ) << text( entity );
   }
}

TEST_F( GenericConstructTest, ARangeErrorOfTheValuePassesThrough ) {
   EXPECT_EQ( thrownBy( "MoxVlanMapping::ReverseStartIdVlanId", { number( 4095 ) } ),
              "range: MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
   EXPECT_EQ( thrownBy( "Bridging::VlanId", { number( 0 ) } ),
              "range: Bridging::VlanId::value < 1 or > 4094 not allowed" );
   EXPECT_EQ( thrownBy( "Bridging::VlanIdOrNone", { number( 4095 ) } ),
              "range: Bridging::VlanIdOrNone::value > 4094 not allowed" );
}

TEST_F( GenericConstructTest, AbstractTypesAreATypeErrorWhateverTheArguments ) {
   EXPECT_EQ( thrownBy( "MoxVlanMapping::MoxVlanRangeMappingCodef", {} ),
              "type: MoxVlanMapping::MoxVlanRangeMappingCodef cannot be constructed: it is "
              "abstract" );
   for ( const char* type : { "Mox::VlanMappingSlaveSm", "Zel::Clock", "Zel::PtrInterface" } ) {
      EXPECT_TRUE( thrownBy( type, {} ).starts_with( "type: " + std::string( type ) ) ) << type;
   }
}

TEST_F( GenericConstructTest, WrongArgumentsAreATypeErrorThatNamesWhatIsTaken ) {
   EXPECT_EQ( thrownBy( "MoxVlanMapping::VlanRangeEntry", {} ),
              "type: MoxVlanMapping::VlanRangeEntry takes ( Corvel::IntfId ), 0 given" );
   EXPECT_EQ( thrownBy( "MoxVlanMapping::VlanRangeEntryDir", { intf( 7 ) } ),
              "type: MoxVlanMapping::VlanRangeEntryDir takes no arguments, 1 given" );
   EXPECT_EQ( thrownBy( "MoxVlanMapping::MoxVlanRangeMgr", { made( "VlanXlateScheduleDir" ) } ),
              "type: MoxVlanMapping::MoxVlanRangeMgr takes a MoxVlanMapping::VlanRangeEntryDir as "
              "argument 1, MoxVlanMapping::VlanXlateScheduleDir given" );
}

TEST_F( GenericConstructTest, ADerivedArgumentStandsForItsBaseAndNotTheOtherWayRound ) {
   const Value steady = constructed( "Zel::SteadyClock" );
   const Value scheduler = constructed( "Quen::TaskScheduler", { steady } );
   EXPECT_EQ( Zel::zelAttribute( scheduler, "clock", Zel::OpCode::Get ).entity(), steady.entity() );
   const Value anyDir( Zel::zelTypeOf( "Zel::PtrInterface" ), nullptr );
   EXPECT_THROW( constructed( "MoxVlanMapping::MoxVlanRangeMgr", { anyDir } ), Zel::TypeException );
}

TEST_F( GenericConstructTest, TheReferencesOfTheArgumentsAreReleasedWithTheObject ) {
   const std::vector< Value > arguments{
      constructed( "Mox::MoxCommonSmData" ),
      constructed( "Zel::ManualClock" ),
      constructed( "Bridging::Config" ),
      constructed( "Bridging::VlanXlateStatusDir" ),
      constructed( "MoxVlanMapping::VlanRangeEntryDir" ),
      constructed( "MoxVlanMapping::VlanXlateScheduleDir" ),
   };
   const auto references = [ & ] {
      std::string all;
      for ( const Value& argument : arguments ) {
         all += std::to_string( argument.entity()->zelReferences() ) + " ";
      }
      return all;
   };
   const std::string before = references();
   {
      const Value sm = Zel::zelConstruct(
         Zel::zelTypeOf( "MoxVlanMapping::VlanMappingScaleSlaveSm" ), arguments );
      EXPECT_EQ( references(), "2 2 2 2 2 2 " );   // the machine's own, none from its making
   }
   EXPECT_EQ( references(), before );
   EXPECT_EQ( before, "1 1 1 1 1 1 " );
}

struct CannotBeMade {};

// Says how often its arguments were held while it was being made, and is never made.
class Unmakeable : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Test::Unmakeable";
   static inline std::string held;

   static Zel::Ptr< Unmakeable >
   UnmakeableIs( const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& rangeDir,
                 const Zel::Ptr< const Zel::Clock >& clock,
                 MoxVlanMapping::ReverseStartIdVlanId start ) {
      return Zel::newEntity< Unmakeable >( rangeDir, clock, start );
   }

 protected:
   Unmakeable( const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir >& rangeDir,
               const Zel::Ptr< const Zel::Clock >& clock,
               MoxVlanMapping::ReverseStartIdVlanId start )
       : rangeDir_( rangeDir ) {
      held = std::to_string( rangeDir->zelReferences() ) + " " +
             std::to_string( clock->zelReferences() ) + " " + std::to_string( start.value() );
      throw CannotBeMade();
   }
   ~Unmakeable() override = default;

 private:
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > rangeDir_;
};

// Value types that are related but do not agree in having a vtable.
class Flat {
 public:
   static constexpr char zelTypeName[] = "Test::Flat";
   Flat() = default;
   explicit Flat( std::uint16_t number ) : number_( number ) {}
   Flat( Zel::StringIterator& current, Zel::StringIterator end )
       : number_( Zel::parseNumber< std::uint16_t >( current, end ) ) {}
   std::uint16_t number() const { return number_; }
   std::uint32_t hash( std::uint32_t seed ) const { return Zel::zelHash( number_, seed ); }
   bool operator==( const Flat& other ) const { return number_ == other.number_; }

 private:
   std::uint16_t number_ = 0;
};

Zel::String
valueToStrep( const Flat& flat ) {
   return Zel::valueToStrep( flat.number() );
}

class Tall : public Flat {
 public:
   static constexpr char zelTypeName[] = "Test::Tall";
   using Flat::Flat;
   virtual ~Tall() = default;
   Tall() = default;
   Tall( const Tall& ) = default;
   Tall& operator=( const Tall& ) = default;
};

// Takes a Flat.
class Reader : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Test::Reader";
   static Zel::Ptr< Reader > ReaderIs() { return Zel::newEntity< Reader >(); }
   std::uint16_t numberOf( const Flat& flat ) { return flat.number(); }
   Zel::TypeHandle fwkType() const override;

 protected:
   Reader() = default;
   ~Reader() override = default;
};

constexpr std::array kReader{
   Zel::callableMethod< &Reader::numberOf >( 130, "numberOf", { "flat" } ),
};
constexpr std::array kTypes{
   Zel::entityType< Unmakeable >(
      Zel::constructor< &Unmakeable::UnmakeableIs >( { "rangeDir", "clock", "start" } ) ),
   Zel::valueType< Flat >( Zel::valueConstructor< Flat, std::uint16_t >( { "number" } ) ),
   Zel::valueType< Tall, Flat >( Zel::valueConstructor< Tall, std::uint16_t >( { "number" } ) ),
   Zel::entityType< Reader >( Zel::constructor< &Reader::ReaderIs >(), kReader ),
};
constexpr Zel::TypeModule kModule{ "Test/Construct", kTypes };

Zel::TypeHandle
Reader::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

class ThrowingCreatorTest : public GenericConstructTest {
   const Zel::ModuleRegistration registration_{ kModule };
};

TEST_F( ThrowingCreatorTest, HoldsItsArgumentsMeanwhileAndReleasesThemAfterwards ) {
   const Value rangeDir = made( "VlanRangeEntryDir" );
   const Value clock = constructed( "Zel::ManualClock" );
   const Value arguments[] = { rangeDir, clock, start( 5 ) };
   const auto before = rangeDir.entity()->zelReferences();
   ASSERT_EQ( before, 2 );
   EXPECT_THROW( Zel::zelConstruct( Zel::zelTypeOf( "Test::Unmakeable" ), arguments ),
                 CannotBeMade );
   // The two here, one taken for the call, and for the directory its member's.
   EXPECT_EQ( Unmakeable::held, "4 3 5" );
   EXPECT_EQ( rangeDir.entity()->zelReferences(), 2 );
   EXPECT_EQ( clock.entity()->zelReferences(), 2 );
}

TEST_F( ThrowingCreatorTest, IsNotCalledWithAWrongArgument ) {
   Unmakeable::held = "not called";
   const Value rangeDir = made( "VlanRangeEntryDir" );
   EXPECT_THROW( constructed( "Test::Unmakeable", { rangeDir, rangeDir, start( 5 ) } ),
                 Zel::TypeException );
   EXPECT_EQ( Unmakeable::held, "not called" );
   EXPECT_EQ( rangeDir.entity()->zelReferences(), 1 );
}

class GenericViewTest : public GenericAccess {
 protected:
   static Zel::View as( const Value& object, const std::string& type ) {
      return Zel::zelViewAs( object, Zel::zelTypeOf( type ) );
   }
   static void expectSameStorage( const Value& object, const std::string& type ) {
      const Zel::View view = as( object, type );
      EXPECT_EQ( view.object, Zel::View( object ).object ) << type;
      EXPECT_EQ( view.type, Zel::zelTypeOf( type ) );
   }

 private:
   const Zel::ModuleRegistration registration_{ kModule };
};

TEST_F( GenericViewTest, AValueIsSeenAsItsOwnTypeItsBaseAndADerivedTypeInTheSameStorage ) {
   const Value config = Value::of( Mox::MoxVlanMappingConfig() );
   expectSameStorage( config, "Mox::MoxVlanMappingConfig" );
   expectSameStorage( config, "Mox::MoxVlanMappingRecord" );
   const Value record = Value::of( Mox::MoxVlanMappingRecord() );
   expectSameStorage( record, "Mox::MoxVlanMappingStatus" );
}

TEST_F( GenericViewTest, AnEntityIsSeenAsItsBaseAndBack ) {
   const Value clock = constructed( "Zel::ManualClock" );
   expectSameStorage( clock, "Zel::Clock" );
   expectSameStorage( clock, "Zel::PtrInterface" );
   const Zel::View base = as( clock, "Zel::PtrInterface" );
   EXPECT_EQ( Zel::zelViewAs( base, clock.type() ).object, Zel::View( clock ).object );
}

TEST_F( GenericViewTest, UnrelatedTypesAreATypeError ) {
   EXPECT_THROW( as( vlan( 10 ), "Corvel::IntfId" ), Zel::TypeException );
   EXPECT_THROW( as( Value::of( Mox::MoxVlanMappingConfig() ), "Mox::MoxVlanMappingStatus" ),
                 Zel::TypeException );
   EXPECT_THROW( as( made( "VlanRangeEntryDir" ), "MoxVlanMapping::VlanXlateScheduleDir" ),
                 Zel::TypeException );
   EXPECT_THROW( as( Value(), "Corvel::IntfId" ), Zel::TypeException );
   EXPECT_THROW( Zel::zelViewAs( vlan( 10 ), Zel::TypeHandle() ), Zel::TypeException );
}

TEST_F( GenericViewTest, RelatedTypesThatDoNotAgreeInBeingPolymorphicAreATypeError ) {
   EXPECT_THROW(
      as( constructed( "Test::Tall", { Value::of( std::uint16_t{ 7 } ) } ), "Test::Flat" ),
      Zel::TypeException );
   EXPECT_THROW(
      as( constructed( "Test::Flat", { Value::of( std::uint16_t{ 7 } ) } ), "Test::Tall" ),
      Zel::TypeException );
}

// The base stands behind the vtable pointer there; read in place, it would be another number.
TEST_F( GenericViewTest, AnArgumentIsNotReadAsABaseThatDoesNotAgreeInBeingPolymorphic ) {
   const Value tall = constructed( "Test::Tall", { Value::of( std::uint16_t{ 7 } ) } );
   const Value flat = constructed( "Test::Flat", { Value::of( std::uint16_t{ 7 } ) } );
   const Value reader = constructed( "Test::Reader" );
   Value result;
   EXPECT_EQ( text( done( reader, 130, kCall, { flat } ) ), "7" );
   EXPECT_THROW( op( result, reader, 130, kCall, { tall } ), Zel::TypeException );
   EXPECT_THROW( op( result, flat, 0, kEqual, { tall } ), Zel::TypeException );
   EXPECT_THROW( tall.as< Flat >(), Zel::TypeException );
   EXPECT_EQ( tall.as< Tall >().number(), 7 );
}

}   // namespace
