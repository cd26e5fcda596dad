// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RecordingSm: a slave state machine that keeps an index as the library's own does, logs its
// hooks, and lets a test act or throw inside them.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "Mox/VlanMappingSlaveSm.h"
#include "Zel/NewEntity.h"

namespace TestMox {

inline Mox::PortVlanKey
key( std::uint64_t port, std::uint16_t vlan, std::uint16_t inner = 0 ) {
   return { Corvel::IntfId( port ), Bridging::VlanId::fromRaw( vlan ), inner };
}

/// "PORT/VLAN" or "PORT/VLAN.INNER"
inline std::string
name( const Mox::PortVlanKey& key ) {
   return std::to_string( key.intfId().value() ) + "/" + std::to_string( key.vlanId().value() ) +
          ( key.innerVlanId() ? "." + std::to_string( key.innerVlanId() ) : "" );
}

/// What outlives the state machine, so that a test can look at it afterwards.
struct Record {
   /// "+1/100=3001" an ingress addition, "-1/100" a deletion, "e+..." and "e-..." for egress;
   /// "r1/100" memory reserved, "<1/100=3001" an addition put in force again.
   std::string log;
   /// By port and VLAN, as the range index: the translated VLAN.
   std::map< std::pair< std::uint64_t, std::uint16_t >, std::uint16_t > index;
   /// Egress mappings in force.
   std::map< std::string, std::uint16_t > egress;
   int reserved = 0;   ///< since the last release
   /// Run at the beginning and at the end of each hook, with what the hook logs.
   std::function< void( const std::string& ) > before;
   std::function< void( const std::string& ) > after;

   std::string take() { return std::exchange( log, "" ); }
   std::string shownIndex() const {
      std::string text;
      for ( const auto& [ place, vlan ] : index ) {
         text += ( text.empty() ? "" : " " ) + std::to_string( place.first ) + "/" +
                 std::to_string( place.second ) + "=" + std::to_string( vlan );
      }
      return text;
   }
   std::string shownEgress() const {
      std::string text;
      for ( const auto& [ place, vlan ] : egress ) {
         text += ( text.empty() ? "" : " " ) + place + "=" + std::to_string( vlan );
      }
      return text;
   }
};

class RecordingSm : public Mox::VlanMappingSlaveSm {
 public:
   static constexpr char zelTypeName[] = "TestMox::RecordingSm";
   RecordingSm( const Zel::Ptr< Mox::MoxCommonSmData >& acsd, Record& record )
       : VlanMappingSlaveSm( acsd, nullptr, nullptr, nullptr ), record_( record ) {}

   void doAddIngressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      const std::uint16_t vlan = configured( *ingressConfigDir(), pvKey );
      hook( "+" + name( pvKey ) + "=" + std::to_string( vlan ), [ & ] {
         // The range index does not displace a mapping that is there.
         EXPECT_TRUE( record_.index.emplace( placeOf( pvKey ), vlan ).second ) << name( pvKey );
      } );
   }
   void doDelIngressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      hook( "-" + name( pvKey ),
            [ & ] { EXPECT_EQ( record_.index.erase( placeOf( pvKey ) ), 1u ) << name( pvKey ); } );
   }
   void doAddEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      const std::uint16_t vlan = configured( *egressConfigDir(), pvKey );
      hook( "e+" + name( pvKey ) + "=" + std::to_string( vlan ),
            [ & ] { record_.egress[ name( pvKey ) ] = vlan; } );
   }
   /// Of what an addition that failed may not have put in force, too.
   void doDelEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      hook( "e-" + name( pvKey ), [ & ] { record_.egress.erase( name( pvKey ) ); } );
   }

 protected:
   ~RecordingSm() override { zelDoZombieReactors( true ); }

   static std::pair< std::uint64_t, std::uint16_t > placeOf( const Mox::PortVlanKey& key ) {
      return { key.intfId().value(), key.vlanId().value() };
   }
   template < class Change >
   void hook( const std::string& what, const Change& change ) {
      // Copies: what runs may replace them.
      if ( const auto before = record_.before ) {
         before( what );
      }
      change();
      record_.log += ( record_.log.empty() ? "" : " " ) + what;
      if ( const auto after = record_.after ) {
         after( what );
      }
   }

   Record& record_;

 private:
   static std::uint16_t configured( const Mox::MoxVlanMappingConfigDir& dir,
                                    const Mox::PortVlanKey& key ) {
      const Mox::MoxVlanMappingConfig* const config = dir.config().record( key );
      EXPECT_NE( config, nullptr ) << "added without a configuration: " << name( key );
      return config ? config->mapping().rawVlanId() : 0;
   }
};

/// One that tells its base what is in force.
class IndexedSm : public RecordingSm {
 public:
   static constexpr char zelTypeName[] = "TestMox::IndexedSm";
   IndexedSm( const Zel::Ptr< Mox::MoxCommonSmData >& acsd, Record& record )
       : RecordingSm( acsd, record ) {
      ingressIndexIs( &index_ );
   }

 protected:
   ~IndexedSm() override { EXPECT_EQ( record_.reserved, 0 ) << "not released"; }

 private:
   struct Index : IngressIndex {
      explicit Index( IndexedSm& owner ) : sm( owner ) {}
      bool holds( const Mox::PortVlanKey& key ) const override {
         return sm.record_.index.contains( placeOf( key ) );
      }
      void reserve( const Mox::PortVlanKey& key ) override {
         sm.hook( "r" + name( key ), [] {} );
         ++sm.record_.reserved;   // what throws reserves nothing
      }
      void restore( const Mox::MoxVlanMappingConfig& record ) override {
         const std::uint16_t vlan = record.mapping().rawVlanId();
         sm.hook( "<" + name( record.key() ) + "=" + std::to_string( vlan ),
                  [ & ] { sm.record_.index.emplace( placeOf( record.key() ), vlan ); } );
      }
      void release( const Mox::PortVlanKey& ) noexcept override { sm.record_.reserved = 0; }

      IndexedSm& sm;
   };
   Index index_{ *this };
};

}   // namespace TestMox
