// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeMgrModel: the range manager beside a table of what each id of each port is translated to.
//
// An id is removed before another mapping takes it, as the manager asks of its callers.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <ostream>
#include <string>

#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "tests/model/RangeScript.h"
#include "tests/support/ModelRun.h"

namespace RangeMgrModel {

constexpr std::uint64_t kPorts = 3;
constexpr std::array< unsigned, 2 > kRelays{ 3001, 3002 };

enum class Op {
   Add,   // allowed where no other mapping holds the id
   Put,   // removes, then adds
   Del,
};

/// One call, or more at ids `stride` apart.
struct Step {
   Op op;
   std::uint64_t port;
   unsigned vid;
   unsigned relay;
   unsigned count = 1;
   unsigned stride = 1;

   template < class Visit >
   void eachVid( const Visit& visit ) const {
      for ( unsigned i = 0; i < count && vid + i * stride <= Bridging::VlanId::kHighest; ++i ) {
         visit( vid + i * stride );
      }
   }
};

inline std::ostream&
operator<<( std::ostream& out, const Step& step ) {
   const char* separator = "";
   const std::string port = RangeScript::member( "port", RangeScript::portName( step.port ) );
   step.eachVid( [ & ]( unsigned vid ) {
      const std::string place = port + RangeScript::member( "vlan", vid );
      if ( step.op != Op::Add ) {
         out << separator << RangeScript::event( "index-del", place );
         separator = "\n";
      }
      if ( step.op != Op::Del ) {
         out << separator
             << RangeScript::event( "index-add",
                                    place + RangeScript::member( "relay", step.relay ) );
         separator = "\n";
      }
   } );
   return out;
}

/// Answers of the bound tests around an id, under any mapping and under each.
template < class Lower, class Upper >
std::string
answersText( unsigned vid, const Lower& lower, const Upper& upper ) {
   std::string all;
   for ( unsigned asked = vid == 1 ? 1 : vid - 1; asked <= vid + 1 && asked <= 4094; ++asked ) {
      for ( const unsigned relay : { 0u, kRelays[ 0 ], kRelays[ 1 ] } ) {
         all += lower( asked, relay ) ? "l" : "-";
         all += upper( asked, relay ) ? "u" : "-";
      }
   }
   return all;
}

class Model {
 public:
   using Step = RangeMgrModel::Step;

   bool allows( const Step& step ) const {
      bool allowed = true;
      step.eachVid( [ & ]( unsigned vid ) {
         const unsigned held = relayAt( step.port, vid );
         allowed = allowed && ( step.op != Op::Add || held == 0 || held == step.relay );
      } );
      return allowed;
   }
   void apply( const Step& step ) {
      step.eachVid( [ & ]( unsigned vid ) {
         if ( step.op == Op::Del ) {
            tables_[ step.port ].erase( vid );
         } else {
            tables_[ step.port ][ vid ] = step.relay;
         }
      } );
      lastPort_ = step.port;
      lastVid_ = step.vid;
   }
   std::string indexText() const {
      std::string all;
      for ( const auto& [ port, table ] : tables_ ) {
         all += RangeScript::indexText( port, table );
      }
      return all;
   }
   std::string text() const {
      const auto holds = [ this ]( unsigned vid, unsigned relay ) {
         const unsigned held = relayAt( lastPort_, vid );
         return held != 0 && ( relay == 0 || relay == held );
      };
      const auto starts = [ & ]( unsigned vid, unsigned relay ) {
         return holds( vid, relay ) && relayAt( lastPort_, vid - 1 ) != relayAt( lastPort_, vid );
      };
      return indexText() + answersText( lastVid_, holds, starts );
   }

 private:
   unsigned relayAt( std::uint64_t port, unsigned vid ) const {
      const auto table = tables_.find( port );
      const auto entry =
         table == tables_.end() ? RangeScript::Table::const_iterator() : table->second.find( vid );
      return table == tables_.end() || entry == table->second.end() ? 0 : entry->second;
   }

   std::map< std::uint64_t, RangeScript::Table > tables_;
   std::uint64_t lastPort_ = 1;
   unsigned lastVid_ = 1;
};

class Real {
 public:
   void apply( const Step& step ) {
      const Corvel::IntfId port( step.port );
      step.eachVid( [ & ]( unsigned vid ) {
         if ( step.op != Op::Add ) {
            mgr_->deleteVlanFromIdx( port, Bridging::VlanId( vid ) );
         }
         if ( step.op != Op::Del ) {
            mgr_->addVlanToIdx( port, Bridging::VlanId( vid ), mappingOf( step.relay ) );
         }
      } );
      lastPort_ = port;
      lastVid_ = step.vid;
   }
   std::string indexText() const {
      std::string all;
      for ( std::uint64_t port = 1; port <= kPorts; ++port ) {
         if ( const auto entry = dir_->vlanRangeEntry( Corvel::IntfId( port ) ) ) {
            all += RangeScript::indexText( port, *entry );
         }
      }
      return all;
   }
   std::string text() const {
      const auto holds = [ this ]( unsigned vid, unsigned relay ) {
         return mgr_->isVidAndDot1qInLowerBoundRange( lastPort_, Bridging::VlanId( vid ),
                                                      mappingOf( relay ) );
      };
      const auto starts = [ this ]( unsigned vid, unsigned relay ) {
         return mgr_->isVidAndDot1qInUpperBoundRange( lastPort_, Bridging::VlanId( vid ),
                                                      mappingOf( relay ) );
      };
      return indexText() + answersText( lastVid_, holds, starts );
   }

 private:
   static Bridging::VlanXlateMapping mappingOf( unsigned relay ) {
      return Bridging::VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( relay ) );
   }

   const Zel::Ptr< MoxVlanMapping::VlanRangeEntryDir > dir_ =
      MoxVlanMapping::vlanRangeEntryDirFactory();
   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( dir_ );
   Corvel::IntfId lastPort_{ 1 };
   unsigned lastVid_ = 1;
};

/// Single calls among few ids.
inline rc::Gen< Step >
fewIds() {
   return TestSupport::stepsOf(
      []( Op op, std::uint64_t port, unsigned vid, unsigned relay ) {
         return Step{ op, port, RangeScript::vidAt( vid ), relay };
      },
      rc::gen::weightedElement< Op >( { { 2, Op::Add }, { 2, Op::Put }, { 3, Op::Del } } ),
      rc::gen::inRange< std::uint64_t >( 1, kPorts + 1 ),
      rc::gen::inRange( 0u, RangeScript::kVids ), rc::gen::elementOf( kRelays ) );
}

/// Many calls a step, so that an interface gets and loses hundreds of ranges.
inline rc::Gen< Step >
manyIds() {
   return TestSupport::stepsOf(
      []( Op op, std::uint64_t port, unsigned vid, unsigned relay, unsigned count,
          unsigned stride ) { return Step{ op, port, vid, relay, count, stride }; },
      rc::gen::weightedElement< Op >( { { 3, Op::Put }, { 2, Op::Del } } ),
      rc::gen::inRange< std::uint64_t >( 1, 3 ), rc::gen::inRange( 1u, 4095u ),
      rc::gen::elementOf( kRelays ), rc::gen::inRange( 1u, 300u ), rc::gen::inRange( 1u, 5u ) );
}

}   // namespace RangeMgrModel
