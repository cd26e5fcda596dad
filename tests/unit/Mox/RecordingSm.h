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
   /// "!+1/100" an ingress addition that was refused.
   std::string log;
   /// By port and VLAN, as the range index: the translated VLAN.
   std::map< std::pair< std::uint64_t, std::uint16_t >, std::uint16_t > index;
   /// Egress mappings in force.
   std::map< std::string, std::uint16_t > egress;
   /// Run at the end of each hook, with what the hook logged.
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
      if ( vlan > Bridging::VlanId::kHighest ) {
         done( "!+" + name( pvKey ) );
         Zel::throwRangeException( "Bridging::VlanIdOrNone::value > 4094 not allowed" );
      }
      const auto place = std::pair( pvKey.intfId().value(), pvKey.vlanId().value() );
      // The range index does not displace a mapping that is there.
      EXPECT_TRUE( record_.index.emplace( place, vlan ).second ) << name( pvKey );
      done( "+" + name( pvKey ) + "=" + std::to_string( vlan ) );
   }
   void doDelIngressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      const auto place = std::pair( pvKey.intfId().value(), pvKey.vlanId().value() );
      EXPECT_EQ( record_.index.erase( place ), 1u ) << name( pvKey );
      done( "-" + name( pvKey ) );
   }
   void doAddEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      const std::uint16_t vlan = configured( *egressConfigDir(), pvKey );
      if ( vlan > Bridging::VlanId::kHighest ) {
         done( "!e+" + name( pvKey ) );
         Zel::throwRangeException( "Bridging::VlanIdOrNone::value > 4094 not allowed" );
      }
      record_.egress[ name( pvKey ) ] = vlan;
      done( "e+" + name( pvKey ) + "=" + std::to_string( vlan ) );
   }
   void doDelEgressVlanMapping( const Mox::PortVlanKey& pvKey ) override {
      EXPECT_EQ( record_.egress.erase( name( pvKey ) ), 1u ) << name( pvKey );
      done( "e-" + name( pvKey ) );
   }

 protected:
   ~RecordingSm() override { zelDoZombieReactors( true ); }

 private:
   static std::uint16_t configured( const Mox::MoxVlanMappingConfigDir& dir,
                                    const Mox::PortVlanKey& key ) {
      const Mox::MoxVlanMappingConfig* const config = dir.config().record( key );
      EXPECT_NE( config, nullptr ) << "added without a configuration: " << name( key );
      return config ? config->mapping().rawVlanId() : 0;
   }
   void done( const std::string& what ) {
      record_.log += ( record_.log.empty() ? "" : " " ) + what;
      if ( const auto after = record_.after ) {
         after( what );
      }
   }

   Record& record_;
};

}   // namespace TestMox
