// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Containers, notifiees, traces, rings and texts of the platform, each operation with each of its
// requests for memory refused.
#include <array>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <system_error>
#include <vector>

#include <gtest/gtest.h>
#include <unistd.h>

#include "Bridging/VlanId.h"
#include "Kirlog/PelrecMessage.h"
#include "Pelrec/Reader.h"
#include "Zel/GenericIf.h"
#include "Zel/Notifiee.h"
#include "Zel/TypeModule.h"
#include "tests/fault/Sweep.h"
#include "tests/unit/Pelrec/SmallTrace.h"
#include "tests/unit/Zel/Collections.h"

namespace {

class Bell : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "PlatformFaultTest::Bell";
   Zel::NotifieeList* notifieeList() const override { return &list_; }
   void ring() { list_.notify( 130, nullptr ); }

 protected:
   Bell() = default;
   ~Bell() override {
      zelDoZombieReactors( true );
      list_.notifieeDelAll();
   }

 private:
   mutable Zel::NotifieeList list_{ *this };
};

class Ear : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "PlatformFaultTest::Ear";
   void onAttribute( Zel::AttributeId, const void* ) override {
      if ( action ) {
         action();
      }
      ++heard;
   }

   std::function< void() > action;
   int heard = 0;

 protected:
   explicit Ear( const Zel::Ptr< Bell >& bell ) { zelNotifierIs( bell ); }
};

constexpr std::array kModuleTypes{
   Zel::TypeRecord{ "PlatformFaultTest::First", Zel::TypeKind::Value, 2 },
   Zel::TypeRecord{ "PlatformFaultTest::Second", Zel::TypeKind::Value, 2 },
};
constexpr Zel::TypeModule kModule{ "PlatformFaultTest/Module", kModuleTypes };

constinit Kirlog::PelrecMessage< 5, "is" > message( "PlatformFaultTest %s %s" );

/// A folder of its own, made when it is first needed.
class Folder {
 public:
   ~Folder() {
      if ( made_ ) {
         std::filesystem::remove_all( path_ );
      }
   }
   std::string file( const char* name ) {
      std::filesystem::create_directories( path_ );
      made_ = true;
      return path_ + "/" + name;
   }
   std::string show() const {
      std::set< std::string > names;
      if ( made_ ) {
         for ( const auto& entry : std::filesystem::directory_iterator( path_ ) ) {
            names.insert( entry.path().filename() );
         }
      }
      std::string text;
      for ( const std::string& name : names ) {
         text += name + " ";
      }
      return text;
   }

 private:
   const std::string path_ = testing::TempDir() + "PlatformFaultTest." + std::to_string( getpid() );
   bool made_ = false;
};

long
linesOf( const std::string& path, const std::string& part ) {
   std::ifstream file( path );
   long lines = 0;
   for ( std::string line; std::getline( file, line ); ) {
      lines += line.find( part ) != std::string::npos;
   }
   return lines;
}

long
descriptors() {
   const std::filesystem::directory_iterator all( "/proc/self/fd" );
   return std::distance( begin( all ), end( all ) );
}

long
mappings() {
   return linesOf( "/proc/self/maps", "PlatformFaultTest." );
}

struct Platform {
   Fault::Parts parts() const {
      return {
         { "hashed", hashed.show() },
         { "watched", std::to_string( bell->notifieeList()->notifiees() ) + ", " +
                         std::to_string( other->notifieeList()->notifiees() ) },
         { "heard", std::to_string( ear->heard ) },
         { "module", std::string( Zel::zelTypeByName( "PlatformFaultTest::First" ) ? "1" : "" ) +
                        ( Zel::zelTypeByName( "PlatformFaultTest::Second" ) ? "2" : "" ) },
         { "modules", std::to_string( Zel::zelModules().size() ) },
         { "levels", handle ? std::to_string( handle->mask() ) : "" },
         { "trace", trace.shown() },
         { "files", folder.show() },
         { "descriptors", std::to_string( descriptors() - descriptorsBefore ) },
         { "mapped", std::to_string( mappings() - mappingsBefore ) },
         { "text", text } };
   }
   void verify() const { hashed.verify(); }

   TestCollections::Hashed hashed;
   const Zel::Ptr< Bell > bell = Zel::newEntity< Bell >();
   const Zel::Ptr< Bell > other = Zel::newEntity< Bell >();
   const Zel::Ptr< Ear > ear = Zel::newEntity< Ear >( bell );
   Zel::Ptr< Ear > second;
   std::optional< Zel::ModuleRegistration > registered;
   mutable std::optional< Zel::TraceHandle > handle;
   mutable SmallTrace trace;
   Folder folder;
   std::string path;
   const long descriptorsBefore = descriptors();
   const long mappingsBefore = mappings();
   std::unique_ptr< Pelrec::ImageFile > opened;
   std::vector< Zel::Value > values;
   std::string text;
};

using Row = Fault::Row< Platform >;
using Fault::needsNoMemory;

void
nothing( Platform& ) {}

/// Elements 1 to `count` in each collection.
Row::Act
filled( int count ) {
   return [ count ]( Platform& p ) {
      for ( int number = 1; number <= count; ++number ) {
         const auto key = static_cast< std::uint32_t >( number );
         p.hashed.is( key, number );
      }
   };
}

/// An operation on one collection while an iterator stands on its first element.
template < class Member, class Act >
Row::Act
walked( Member member, const Act& act ) {
   return [ member, act ]( Platform& p ) {
      auto at = ( p.*member ).first();
      act( p.*member );
      std::size_t passed = 0;
      for ( ; at; ++at ) {
         ++passed;
      }
      EXPECT_NE( passed, 0u );
   };
}

template < class Member >
Row::Act
inserted( Member member, std::uint32_t number ) {
   return walked( member, [ number ]( auto& all ) { all.is( number, 100 ); } );
}

template < class Member >
Row::Act
erased( Member member, std::uint32_t number ) {
   return walked( member, [ number ]( auto& all ) { all.erase( number ); } );
}

template < class Exception >
Row::Act
parseRefused( const char* type, const char* text ) {
   return [ type, text ]( Platform& p ) {
      try {
         Zel::zelParse( type, text );
         ADD_FAILURE() << text << " was parsed";
      } catch ( const Exception& error ) {
         p.text = error.message();
      }
   };
}

const Row kRows[] = {
   // Containers.
   { "HashInserted", filled( 3 ), inserted( &Platform::hashed, 9 ) },
   { "HashGrown", filled( 4 ), inserted( &Platform::hashed, 9 ) },
   needsNoMemory( Row{ "HashOverwritten", filled( 3 ), inserted( &Platform::hashed, 2 ) } ),
   needsNoMemory( Row{ "HashErased", filled( 4 ), erased( &Platform::hashed, 1 ) } ),
   needsNoMemory( Row{ "AllErased", filled( 4 ), []( Platform& p ) { p.hashed.deleteAll(); } } ),
   // Notifiees.
   { "EarAdded", nothing, []( Platform& p ) { p.second = Zel::newEntity< Ear >( p.bell ); } },
   { "EarMoved", nothing, []( Platform& p ) { p.ear->zelNotifierIs( p.other ); } },
   { "EarAddedInsideARing",
     []( Platform& p ) { p.ear->action = [ &p ] { p.second = Zel::newEntity< Ear >( p.bell ); }; },
     []( Platform& p ) {
        if ( p.ear->heard == 0 ) {
           p.bell->ring();
        }
     } },
   needsNoMemory( Row{ "EarGoneInsideARing",
                       []( Platform& p ) {
                          p.second = Zel::newEntity< Ear >( p.bell );
                          p.ear->action = [ &p ] { p.second = nullptr; };
                       },
                       []( Platform& p ) { p.bell->ring(); } } ),
   needsNoMemory( Row{ "AllEarsGone", nothing,
                       []( Platform& p ) { p.bell->notifieeList()->notifieeDelAll(); } } ),
   // Registration.
   { "ModuleRegistered", nothing, []( Platform& p ) { p.registered.emplace( kModule ); } },
   needsNoMemory( Row{ "ModuleGone", []( Platform& p ) { p.registered.emplace( kModule ); },
                       []( Platform& p ) { p.registered.reset(); } } ),
   { "ModulesListed", nothing,
     []( Platform& p ) { p.text = std::to_string( Zel::zelModules().size() ); } },
   // Traces.
   { "TraceLevelsSet",
     []( Platform& p ) {
        p.handle.emplace( "PlatformFaultTest", true );
        Zel::traceLevelsIs( "PlatformFaultTest/1" );
     },
     []( Platform& ) { Zel::traceLevelsIs( "PlatformFaultTest/2-4;PlatformFaultTestToo/1,9" ); } },
   { "TraceSinkSet", nothing,
     []( Platform& p ) {
        const std::string prefix = "a prefix that is too long for the text object itself";
        Zel::traceSinkIs( [ prefix, &p ]( const Zel::TraceLine& ) { p.text = prefix; } );
        Zel::traceSinkIs( []( const Zel::TraceLine& ) {} );
     } },
   { "TraceHandlesListed",
     []( Platform& p ) {
        p.handle.emplace( "PlatformFaultTest", true );
        p.handle->mask();
     },
     []( Platform& p ) { p.text = Zel::traceHandles().empty() ? "none" : "some"; } },
   // Rings.
   needsNoMemory(
      Row{ "RecordWritten", nothing,
           []( Platform& p ) { p.trace.write( 5, "number %s", std::uint64_t{ 7 } ); } } ),
   needsNoMemory( Row{ "MessageWritten", nothing, []( Platform& ) { message( 7, "a text" ); } } ),
   { "RecordsRead",
     []( Platform& p ) {
        p.trace.write( 5, "the number %s in a long text", std::uint64_t{ 7 } );
        p.trace.write( 6, "the text %s", std::string_view( "in a text" ) );
     },
     []( Platform& p ) { p.text = p.trace.shown(); } },
   { "RingFiled",
     []( Platform& p ) {
        p.trace.write( 5, "number %s", std::uint64_t{ 7 } );
        p.path = p.folder.file( "ring" );
        SmallTrace().trace().fileIs( p.path );   // of before
     },
     []( Platform& p ) { p.trace.trace().fileIs( p.path ); } },
   { "RingFileRefused", []( Platform& p ) { p.path = p.folder.file( "no/ring" ); },
     []( Platform& p ) {
        try {
           p.trace.trace().fileIs( p.path );
        } catch ( const std::system_error& error ) {
           p.text = error.code().message();
        }
     } },
   { "ImageOpened",
     []( Platform& p ) {
        p.path = p.folder.file( "ring" );
        p.trace.trace().fileIs( p.path );
     },
     []( Platform& p ) { p.opened = std::make_unique< Pelrec::ImageFile >( p.path ); } },
   { "EmptyImageRefused",
     []( Platform& p ) {
        p.path = p.folder.file( "ring" );
        std::ofstream file( p.path );
     },
     []( Platform& p ) {
        try {
           const Pelrec::ImageFile image( p.path );
        } catch ( const Pelrec::ImageError& ) {
           p.text = "refused";
        }
     } },
   { "AllocationsCounted", nothing,
     []( Platform& p ) { p.text = Zel::allocationCounts().empty() ? "none" : "some"; } },
   { "WallTime", nothing, []( Platform& p ) { p.text = Pelrec::wallTime( 1234567890123456789 ); } },
   // Values and texts.
   { "ValuesCopied",
     []( Platform& p ) {
        p.values.push_back( Zel::Value::of( Bridging::VlanId( 7 ) ) );
        p.values.push_back(
           Zel::Value::of( Zel::String( "a text that needs memory of its own" ) ) );
     },
     []( Platform& p ) {
        std::vector< Zel::Value > copy = p.values;
        copy[ 0 ] = copy[ 1 ];
        p.text = Zel::zelStrep( copy[ 0 ] ).str();
     } },
   { "NothingParsed", nothing,
     parseRefused< Zel::ParseException >( "MoxVlanMapping::VlanRangeXlateMapping", "nonsense" ) },
   { "OutOfRangeParsed", nothing,
     parseRefused< Zel::RangeException >(
        "MoxVlanMapping::VlanRangeXlateMapping",
        "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 4095, 'highVid': 4095" ) },
   { "UnknownTypeRefused", nothing, parseRefused< Zel::TypeException >( "No::SuchType", "7" ) },
   { "Formatted", nothing,
     []( Platform& p ) {
        p.text = Zel::format( "%s in a text that is long, and %s", 7u, "another" ).str();
     } },
};

class PlatformFaultTest : public testing::TestWithParam< const Row* > {};

TEST_P( PlatformFaultTest, LeavesBeforeOrAfterAndCanBeDoneAgain ) {
   Fault::sweep( *GetParam() );
}

INSTANTIATE_TEST_SUITE_P( All, PlatformFaultTest, testing::ValuesIn( Fault::pointersTo( kRows ) ),
                          Fault::caseName< Row > );

}   // namespace
