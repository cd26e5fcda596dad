// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Apply.h"

#include <cstddef>

#include "agent/ProgressBar.h"

namespace Agent {

void
applyConfiguration( ScaleAgent& agent, const Configuration& configuration ) {
   std::size_t records = 0;
   for ( const Port& port : configuration.ports ) {
      records += port.ingress.size() + port.egress.size();
   }
   ProgressBar progress( "applying", records );

   agent.stateMachine().handleInitialized();
   // Aggregates first, so that the records of their members say so from the beginning.
   for ( const Port& port : configuration.ports ) {
      const Corvel::IntfId id = agent.ports().id( port.name );
      if ( port.lag ) {
         agent.acsd().portToLagIs( id, agent.ports().id( *port.lag ) );
      }
   }
   for ( const Port& port : configuration.ports ) {
      for ( const IngressMapping& mapping : port.ingress ) {
         agent.acsd().ingressConfigDir()->configIs(
            agent.record( port.name, mapping.vlan, mapping.relay ) );
         progress.step();
      }
      for ( const EgressMapping& mapping : port.egress ) {
         agent.acsd().egressConfigDir()->configIs(
            agent.record( port.name, mapping.relay, mapping.vlan ) );
         progress.step();
      }
   }
   agent.scheduler().runUntilIdle();
}

}   // namespace Agent
