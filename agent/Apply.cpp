// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Apply.h"

#include <fmt/format.h>

#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>

#include "Zel/FirstException.h"
#include "agent/ProgressBar.h"

namespace Agent {
namespace {

constexpr std::size_t kRecordsPerLook = 256;

std::size_t
recordsOf( const Configuration& configuration ) {
   std::size_t records = 0;
   for ( const Port& port : configuration.ports ) {
      records += port.ingress.size() + port.egress.size();
   }
   return records;
}

void
writeAll( ScaleAgent& agent, const Configuration& configuration, ProgressBar& progress,
          Zel::FirstException& failed ) {
   const std::size_t records = recordsOf( configuration );
   std::size_t written = 0;
   const auto step = [ & ] {
      if ( ++written % kRecordsPerLook == 0 ) {
         progress.doneIs( written, records );
      }
   };
   // Aggregates first, so that the records of their members say so from the beginning.
   for ( const Port& port : configuration.ports ) {
      failed.run( [ & ] {
         const Corvel::IntfId id = agent.ports().id( port.name );
         if ( port.lag ) {
            agent.acsd().portToLagIs( id, agent.ports().id( *port.lag ) );
         }
      } );
   }
   const auto writePort = [ & ]( const Port& port ) {
      const Corvel::IntfId id = agent.ports().id( port.name );
      const bool inLag = agent.acsd().portToLag().contains( id );
      const auto write = [ & ]( Mox::MoxVlanMappingConfigDir& dir, std::uint16_t vlan,
                                std::uint16_t translated ) {
         failed.run( [ & ] {
            dir.configIs( { { id, Bridging::VlanId::fromRaw( vlan ) },
                            Bridging::VlanXlateMapping::fromRaw( translated ),
                            inLag } );
         } );
         step();
      };
      for ( const IngressMapping& mapping : port.ingress ) {
         write( *agent.acsd().ingressConfigDir(), mapping.vlan, mapping.relay );
      }
      for ( const EgressMapping& mapping : port.egress ) {
         write( *agent.acsd().egressConfigDir(), mapping.relay, mapping.vlan );
      }
   };
   for ( const Port& port : configuration.ports ) {
      failed.run( [ & ] { writePort( port ); } );
   }
}

[[noreturn]] void
giveUp( const ScaleAgent& agent, const Configuration& configuration,
        const Zel::FirstException& failed ) {
   try {
      failed.throwOn();
   } catch ( const std::bad_alloc& ) {
      throw;
   } catch ( const std::exception& error ) {
      throw std::runtime_error( fmt::format( "gave up after {} tries, {} of {} mappings are not "
                                             "delivered: {}",
                                             kApplyTries, agent.stateMachine().undelivered(),
                                             recordsOf( configuration ), error.what() ) );
   }
   throw std::logic_error( "nothing failed" );
}

}   // namespace

void
applyConfiguration( ScaleAgent& agent, const Configuration& configuration ) {
   ProgressBar progress( "applying", agent.clock() );
   for ( unsigned tries = 1;; ++tries ) {
      Zel::FirstException failed;
      failed.run( [ & ] { agent.stateMachine().handleInitialized(); } );
      writeAll( agent, configuration, progress, failed );
      failed.run( [ & ] { agent.scheduler().runUntilIdle(); } );
      if ( !failed ) {
         return;
      }
      if ( tries == kApplyTries ) {
         giveUp( agent, configuration, failed );
      }
   }
}

}   // namespace Agent
