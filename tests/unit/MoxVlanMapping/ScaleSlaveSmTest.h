// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ScaleSlaveSmTest: a scale slave state machine with all that it works on, and its state as text.
#pragma once

#include <string>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "tests/support/Chain.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

class ScaleSlaveSmTest : public TestSupport::NoneLeftTest, protected TestSupport::Chain {
 protected:
   using Sm = MoxVlanMapping::VlanMappingScaleSlaveSm;
   static constexpr Corvel::IntfId kPort{ 7 };

   /// Ids are taken unchecked.
   static Mox::PortVlanKey key( unsigned vlan ) {
      return { kPort, Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( vlan ) ) };
   }
   static Mox::MoxVlanMappingConfig config( unsigned vlan, char letter, bool inLag = false,
                                            bool xlateUntagged = false, std::uint8_t origin = 0 ) {
      return { key( vlan ), TestSupport::mappingOf( letter ), inLag, xlateUntagged, origin };
   }

   Zel::Ptr< Sm > newSm() const {
      return MoxVlanMapping::vlanMappingScaleSlaveSmFactory(
         acsd_, clock_, bridgingConfig_, vlanXlateStatusDir_, rangeDir_, scheduleDir_ );
   }
   /// The range manager alone: the base class delivers nothing yet, the test calls the hooks.
   void givenManager() { sm_->vlanRangeMgrIs( rangeDir_ ); }
   void ingressIs( const Mox::MoxVlanMappingConfig& config ) {
      acsd_->ingressConfigDir()->configIs( config );
   }
   void egressIs( const Mox::MoxVlanMappingConfig& config ) {
      acsd_->egressConfigDir()->configIs( config );
   }

   std::string index() const { return TestSupport::stateText( *rangeDir_ ); }
   std::string schedule() const {
      return TestSupport::interfacesText( scheduleDir_->vlanXlateSchedule() );
   }
   /// "7/100 M lag untagged origin 3", one a line.
   std::string status() const {
      std::string all;
      for ( const auto& node : acsd_->statusDir()->status() ) {
         const auto& record = node.value();
         all += std::to_string( record.key().intfId().value() ) + "/" +
                std::to_string( record.key().vlanId().value() ) + " " +
                TestSupport::mappingText( record.mapping() ) + ( record.inLag() ? " lag" : "" ) +
                ( record.xlateUntagged() ? " untagged" : "" ) + " origin " +
                std::to_string( record.origin() ) + "\n";
      }
      return all;
   }

   const Zel::Ptr< Bridging::Config > bridgingConfig_ = Bridging::configFactory();
   const Zel::Ptr< Bridging::VlanXlateStatusDir > vlanXlateStatusDir_ =
      Bridging::vlanXlateStatusDirFactory();
   Zel::Ptr< Sm > sm_ = newSm();
};
