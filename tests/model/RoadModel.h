// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RoadModel: the whole road - configuration, state machine, index, schedule, task, sorted ranges,
// and status - beside the configuration alone.
//
// Ids and translations that are none are written, too: those are refused, and what was in force stays.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "Zel/Clock.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "tests/model/RangeScript.h"
#include "tests/support/Chain.h"
#include "tests/support/ModelRun.h"

namespace RoadModel {

constexpr std::uint64_t kPorts = 4;
constexpr std::uint64_t kLag = 100;

enum class Op {
   IngressSet,
   IngressDel,
   EgressSet,
   EgressDel,
   LagSet,
   LagDel,
   Schedule,
   Yield,
   Step,
   Run,
   Initialize,
};

struct Step {
   Op op;
   std::uint64_t port;
   unsigned vid;
   unsigned relay;
   Quen::YieldPolicy policy;

   bool acceptable() const {
      const auto isVlanId = []( unsigned id ) {
         return id >= 1 && id <= Bridging::VlanId::kHighest;
      };
      return isVlanId( vid ) && isVlanId( relay );
   }
};

inline std::ostream&
operator<<( std::ostream& out, const Step& step ) {
   static constexpr const char* kNames[] = {
      "ingress-set", "ingress-del", "egress-set", "egress-del", "lag-set",   "lag-del",
      "schedule",    "yield",       "step",       "run",        "initialize" };
   std::string members;
   if ( step.op <= Op::Schedule ) {
      members += RangeScript::member( "port", RangeScript::portName( step.port ) );
   }
   if ( step.op <= Op::EgressDel ) {
      members += RangeScript::member( "vlan", step.vid );
   }
   if ( step.op == Op::IngressSet || step.op == Op::EgressSet ) {
      members += RangeScript::member( "relay", step.relay );
   }
   if ( step.op == Op::LagSet ) {
      members += RangeScript::member( "lag", "lag" );
   }
   if ( step.op == Op::Yield ) {
      members +=
         RangeScript::member( "policy", step.policy == Quen::YieldPolicy::Always  ? "always"
                                        : step.policy == Quen::YieldPolicy::Never ? "never"
                                                                                  : "quantum" );
   }
   return out << RangeScript::event( kNames[ static_cast< int >( step.op ) ], members );
}

/// What stands before every script: the state machine starts when the script says so.
inline const std::string kOpening = RangeScript::event( "manual" ) + "\n";

using Key = std::pair< std::uint64_t, unsigned >;   ///< port, VLAN
using Relays = std::map< Key, unsigned >;

inline std::string
statusText( const Relays& status ) {
   std::string all;
   for ( const auto& [ key, relay ] : status ) {
      all += ( all.empty() ? "[\"" : ",[\"" ) + RangeScript::portName( key.first ) + "\"," +
             std::to_string( key.second ) + "," + std::to_string( relay ) + "]";
   }
   return "status [" + all + "]\n";
}

class Model {
 public:
   using Step = RoadModel::Step;

   bool allows( const Step& step ) const { return step.op != Op::Initialize || !initialized_; }
   void apply( const Step& step ) {
      const Key key{ step.port, step.vid };
      ran_ = step.op == Op::Run;
      switch ( step.op ) {
      case Op::IngressSet:
         set( ingress_, step );
         break;
      case Op::IngressDel:
         ingress_.erase( key );
         break;
      case Op::EgressSet:
         set( egress_, step );
         break;
      case Op::EgressDel:
         egress_.erase( key );
         break;
      case Op::Initialize:
         initialized_ = true;
         break;
      default:
         break;
      }
   }
   std::string indexText() const {
      std::string all;
      for ( const auto& [ port, table ] : tables() ) {
         all += RangeScript::indexText( port, table );
      }
      return all + statusText( initialized_ ? egress_ : Relays() );
   }
   std::string text() const {
      std::string all = indexText();
      if ( ran_ ) {
         for ( const auto& [ port, table ] : tables() ) {
            all += RangeScript::portName( port ) + " sorted " +
                   RangeScript::text( RangeScript::bySize( RangeScript::runsOf( table ) ) ) + "\n";
         }
      }
      return all;
   }

 private:
   // Before the state machine starts, nothing is in force that a refused record could leave standing.
   void set( Relays& relays, const Step& step ) const {
      const Key key{ step.port, step.vid };
      if ( step.acceptable() ) {
         relays[ key ] = step.relay;
      } else if ( !initialized_ ) {
         relays.erase( key );
      }
   }
   // What is in force, of each port that has any.
   std::map< std::uint64_t, RangeScript::Table > tables() const {
      std::map< std::uint64_t, RangeScript::Table > tables;
      for ( const auto& [ key, relay ] : ingress_ ) {
         if ( initialized_ ) {
            tables[ key.first ][ key.second ] = relay;
         }
      }
      return tables;
   }

   Relays ingress_;
   Relays egress_;
   bool initialized_ = false;
   bool ran_ = false;
};

/// Takes what the task hands over, and lets the quantum tick.
class TickingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "RoadModel::TickingCodef";
   Zel::Ptr< Zel::ManualClock > clock;
   void processSortedVlanRange( Corvel::IntfId ) override { clock->advance( 0.03 ); }

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~TickingCodef() override { zelDoZombieReactors( true ); }
};

class Real : TestSupport::Chain {
 public:
   Real() { codef_->clock = clock_; }

   void apply( const Step& step ) {
      ran_ = step.op == Op::Run;
      try {
         carryOut( step );
         complaint_.clear();
      } catch ( const Zel::RangeException& ) {
         const bool wrote = ( step.op == Op::IngressSet || step.op == Op::EgressSet ) &&
                            initialized_ && !step.acceptable();
         complaint_ = wrote || step.op == Op::Initialize ? "" : "refused what is acceptable\n";
      }
   }
   std::string indexText() const {
      std::string all;
      for ( std::uint64_t port = 1; port <= kPorts; ++port ) {
         if ( const auto entry = rangeDir_->vlanRangeEntry( Corvel::IntfId( port ) ) ) {
            all += RangeScript::indexText( port, *entry );
         }
      }
      Relays status;
      for ( const auto& node : acsd_->statusDir()->status() ) {
         const auto& record = node.value();
         all += record.xlateUntagged() ? "a status translates untagged frames\n" : "";
         status[ { record.key().intfId().value(), record.key().vlanId().value() } ] =
            record.mapping().rawVlanId();
      }
      return all + statusText( status );
   }
   std::string text() const {
      std::string all = complaint_ + indexText();
      const auto& schedule = scheduleDir_->vlanXlateSchedule();
      schedule.verify();
      if ( !schedule.empty() && ( ran_ || !codef_->task()->scheduled() ) ) {
         all += "nobody sees to those that wait\n";
      }
      if ( ran_ ) {
         for ( std::uint64_t port = 1; port <= kPorts; ++port ) {
            const std::string sorted = sortedText( port );
            all += sorted == "[]" ? "" : RangeScript::portName( port ) + " sorted " + sorted + "\n";
         }
      }
      return all;
   }
   std::string sortedText( std::uint64_t port ) const {
      const Corvel::IntfId intfId( port );
      return RangeScript::sortedText(
         codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intfId ).get() );
   }
   /// As the agent prints it.
   std::string scheduleText() const {
      std::string all;
      for ( const auto& member : scheduleDir_->vlanXlateSchedule() ) {
         all +=
            ( all.empty() ? "\"" : ",\"" ) + RangeScript::portName( member.key().value() ) + "\"";
      }
      return "[" + all + "]";
   }

 private:
   void carryOut( const Step& step ) {
      const Corvel::IntfId port( step.port );
      const auto vid = Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( step.vid ) );
      const Mox::PortVlanKey key{ port, vid };
      const Mox::MoxVlanMappingConfig config(
         key, Bridging::VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( step.relay ) ),
         step.vid % 2 == 1, step.vid % 3 == 1 );   // neither flag reaches index or status
      switch ( step.op ) {
      case Op::IngressSet:
         acsd_->ingressConfigDir()->configIs( config );
         break;
      case Op::IngressDel:
         acsd_->ingressConfigDir()->configDel( key );
         break;
      case Op::EgressSet:
         acsd_->egressConfigDir()->configIs( config );
         break;
      case Op::EgressDel:
         acsd_->egressConfigDir()->configDel( key );
         break;
      case Op::LagSet:
         acsd_->portToLagIs( port, Corvel::IntfId( kLag ) );
         break;
      case Op::LagDel:
         acsd_->portToLagDel( port );
         break;
      case Op::Schedule:
         scheduleDir_->vlanXlateScheduleIs( port );
         break;
      case Op::Yield:
         scheduler_->yieldPolicyIs( step.policy );
         break;
      case Op::Step:
         scheduler_->runOnce();
         break;
      case Op::Run:
         scheduler_->runUntilIdle();
         break;
      case Op::Initialize:
         initialized_ = true;
         sm_->handleInitialized();
         break;
      }
   }

   const Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > sm_ =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd_, clock_, nullptr, nullptr, rangeDir_,
                                                      scheduleDir_ );
   const Zel::Ptr< TickingCodef > codef_ =
      Zel::newEntity< TickingCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );
   bool initialized_ = false;
   bool ran_ = false;
   std::string complaint_;
};

/// `noVlans`: ids and translations that are none are among them.
inline rc::Gen< Step >
steps( bool noVlans, bool quantum ) {
   return TestSupport::stepsOf(
      [ noVlans ]( Op op, std::uint64_t port, unsigned vid, unsigned relay, unsigned odd,
                   Quen::YieldPolicy policy ) {
         static constexpr std::array< unsigned, 3 > kNoVlans{ 0, 4095, 65535 };
         const bool noVlan = noVlans && odd < kNoVlans.size();
         const bool noRelay = noVlans && odd >= kNoVlans.size() && odd < 6;
         return Step{ op, port, noVlan ? kNoVlans[ odd ] : RangeScript::vidAt( vid ),
                      noRelay ? kNoVlans[ odd - kNoVlans.size() ] : 3000 + relay, policy };
      },
      rc::gen::weightedElement< Op >( { { 16, Op::IngressSet },
                                        { 8, Op::IngressDel },
                                        { 6, Op::EgressSet },
                                        { 3, Op::EgressDel },
                                        { 1, Op::LagSet },
                                        { 1, Op::LagDel },
                                        { 1, Op::Schedule },
                                        { 1, Op::Yield },
                                        { 3, Op::Step },
                                        { 2, Op::Run },
                                        { 2, Op::Initialize } } ),
      rc::gen::inRange< std::uint64_t >( 1, kPorts + 1 ),
      rc::gen::inRange( 0u, RangeScript::kVids ), rc::gen::inRange( 1u, 4u ),
      rc::gen::inRange( 0u, 60u ),
      quantum ? rc::gen::element( Quen::YieldPolicy::Never, Quen::YieldPolicy::Always,
                                  Quen::YieldPolicy::Quantum )
              : rc::gen::element( Quen::YieldPolicy::Never, Quen::YieldPolicy::Always ) );
}

}   // namespace RoadModel
