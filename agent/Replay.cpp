// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Replay.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <string_view>

#include "Zel/Exception.h"
#include "agent/JsonWriter.h"
#include "agent/ScaleAgent.h"
#include "agent/StateJson.h"
#include "agent/config/LocatedJson.h"

namespace Agent {
namespace {

constexpr std::uint64_t kHighestNumber = 65535;
// In bytes; an event of the longest port names that anybody has is far below.
constexpr std::size_t kLongestLine = std::size_t( 1024 ) * 1024;

// Why a line cannot be carried out; the caller adds where.
[[noreturn]] void
refuse( const std::string& cause ) {
   throw std::invalid_argument( cause );
}

// The members of one event, by name and kind.
class Event {
 public:
   explicit Event( const JsonObject& members ) : members_( members ) {}

   const std::string& text( std::string_view name ) const {
      const JsonValue& value = member( name );
      if ( !value.string() ) {
         refuse(
            fmt::format( "\"{}\": {} is not allowed; allowed: a string", name, value.shown() ) );
      }
      return *value.string();
   }

   // Any 16 bits: ids are passed on unchecked, so that the library's own checks can be seen.
   std::uint16_t number( std::string_view name ) const {
      const JsonValue& value = member( name );
      if ( !value.unsignedInteger() || *value.unsignedInteger() > kHighestNumber ) {
         refuse( fmt::format( "\"{}\": {} is not allowed; allowed: 0..{}", name, value.shown(),
                              kHighestNumber ) );
      }
      return static_cast< std::uint16_t >( *value.unsignedInteger() );
   }

   void onlyMembers( std::span< const std::string_view > names ) const {
      for ( const JsonMember& member : members_ ) {
         if ( member.name != "op" && std::ranges::find( names, member.name ) == names.end() ) {
            refuse( fmt::format( "\"{}\" is not allowed; allowed: {}", shownText( member.name ),
                                 names.empty()
                                    ? "nothing besides \"op\""
                                    : fmt::format( "\"{}\"", fmt::join( names, "\", \"" ) ) ) );
         }
      }
   }

 private:
   const JsonValue& member( std::string_view name ) const {
      const auto at = std::ranges::find( members_, name, &JsonMember::name );
      if ( at == members_.end() ) {
         refuse( fmt::format( "\"{}\" is missing", name ) );
      }
      return at->value;
   }

   const JsonObject& members_;
};

// The library as a script sees it.
class Player {
 public:
   Player( std::ostream& out, std::size_t rangeEntriesPerPort )
       : out_( out ), agent_( rangeEntriesPerPort ) {}

   void initialize() { agent_.stateMachine().handleInitialized(); }

   ScaleAgent& agent() { return agent_; }
   // Lines are there at once, for whoever drives the script by a pipe.
   void printState() {
      Agent::printState( out_, agent_ );
      out_ << std::endl;
   }
   void printError( const char* text ) {
      JsonWriter json( out_, JsonWriter::Layout::Line );
      json.object( [ & ] { json.member( "error", text ); } );
      out_ << std::endl;
   }

   // Refuses what would reach a range manager that does not exist yet.
   MoxVlanMapping::MoxVlanRangeMgr& rangeMgr() {
      if ( !agent_.stateMachine().vlanRangeMgr() ) {
         refuse( "there is no range manager before \"initialize\"" );
      }
      return *agent_.stateMachine().vlanRangeMgr();
   }

   Corvel::IntfId port( const Event& event ) { return agent_.ports().id( event.text( "port" ) ); }
   Mox::PortVlanKey key( const Event& event ) { return { port( event ), vlan( event ) }; }
   static Bridging::VlanId vlan( const Event& event ) {
      return Bridging::VlanId::fromRaw( event.number( "vlan" ) );
   }
   Mox::MoxVlanMappingConfig record( const Event& event ) {
      const auto translated = Bridging::VlanXlateMapping::fromRaw( event.number( "relay" ) );
      const Mox::PortVlanKey at = key( event );
      return { at, translated, agent_.acsd().portToLag().contains( at.intfId() ) };
   }

 private:
   std::ostream& out_;
   ScaleAgent agent_;
};

void
ingressSet( Player& player, const Event& event ) {
   player.agent().acsd().ingressConfigDir()->configIs( player.record( event ) );
}

void
ingressDel( Player& player, const Event& event ) {
   player.agent().acsd().ingressConfigDir()->configDel( player.key( event ) );
}

void
egressSet( Player& player, const Event& event ) {
   player.agent().acsd().egressConfigDir()->configIs( player.record( event ) );
}

void
egressDel( Player& player, const Event& event ) {
   player.agent().acsd().egressConfigDir()->configDel( player.key( event ) );
}

void
hookAddIngress( Player& player, const Event& event ) {
   player.rangeMgr();
   player.agent().stateMachine().doAddIngressVlanMapping( player.key( event ) );
}

void
hookDelIngress( Player& player, const Event& event ) {
   player.rangeMgr();
   player.agent().stateMachine().doDelIngressVlanMapping( player.key( event ) );
}

void
hookAddEgress( Player& player, const Event& event ) {
   player.agent().stateMachine().doAddEgressVlanMapping( player.key( event ) );
}

void
hookDelEgress( Player& player, const Event& event ) {
   player.agent().stateMachine().doDelEgressVlanMapping( player.key( event ) );
}

void
indexAdd( Player& player, const Event& event ) {
   player.rangeMgr().addVlanToIdx( player.port( event ), Player::vlan( event ),
                                   Bridging::VlanXlateMapping::fromRaw( event.number( "relay" ) ) );
}

void
indexDel( Player& player, const Event& event ) {
   player.rangeMgr().deleteVlanFromIdx( player.port( event ), Player::vlan( event ) );
}

void
lagSet( Player& player, const Event& event ) {
   player.agent().acsd().portToLagIs( player.port( event ),
                                      player.agent().ports().id( event.text( "lag" ) ) );
}

void
lagDel( Player& player, const Event& event ) {
   player.agent().acsd().portToLagDel( player.port( event ) );
}

void
schedule( Player& player, const Event& event ) {
   player.agent().scheduleDir().vlanXlateScheduleIs( player.port( event ) );
}

void
yieldPolicy( Player& player, const Event& event ) {
   const std::string& policy = event.text( "policy" );
   if ( policy == "quantum" ) {
      player.agent().scheduler().yieldPolicyIs( Quen::YieldPolicy::Quantum );
   } else if ( policy == "always" ) {
      player.agent().scheduler().yieldPolicyIs( Quen::YieldPolicy::Always );
   } else if ( policy == "never" ) {
      player.agent().scheduler().yieldPolicyIs( Quen::YieldPolicy::Never );
   } else {
      refuse( fmt::format( "\"policy\": \"{}\" is not allowed; allowed: \"quantum\", \"always\", "
                           "\"never\"",
                           shownText( policy ) ) );
   }
}

void
step( Player& player, const Event& ) {
   player.agent().scheduler().runOnce();
}

void
run( Player& player, const Event& ) {
   player.agent().scheduler().runUntilIdle();
}

void
initialize( Player& player, const Event& ) {
   player.initialize();
}

void
manual( Player&, const Event& ) {
   refuse( "\"manual\" is allowed on the first line alone" );
}

void
state( Player& player, const Event& ) {
   player.printState();
}

struct Operation {
   std::string_view name;
   // Members that the event has besides "op"; all are required.
   std::span< const std::string_view > members;
   void ( *carryOut )( Player&, const Event& );
};

constexpr std::string_view kManual = "manual";
constexpr std::array< std::string_view, 3 > kPortVlanRelay{ "port", "vlan", "relay" };
constexpr std::array< std::string_view, 2 > kPortVlan{ "port", "vlan" };
constexpr std::array< std::string_view, 2 > kPortLag{ "port", "lag" };
constexpr std::array< std::string_view, 1 > kPort{ "port" };
constexpr std::array< std::string_view, 1 > kPolicy{ "policy" };

constexpr std::array kOperations{
   Operation{ "ingress-set", kPortVlanRelay, ingressSet },
   Operation{ "ingress-del", kPortVlan, ingressDel },
   Operation{ "egress-set", kPortVlanRelay, egressSet },
   Operation{ "egress-del", kPortVlan, egressDel },
   Operation{ "hook-add-ingress", kPortVlan, hookAddIngress },
   Operation{ "hook-del-ingress", kPortVlan, hookDelIngress },
   Operation{ "hook-add-egress", kPortVlan, hookAddEgress },
   Operation{ "hook-del-egress", kPortVlan, hookDelEgress },
   Operation{ "index-add", kPortVlanRelay, indexAdd },
   Operation{ "index-del", kPortVlan, indexDel },
   Operation{ "lag-set", kPortLag, lagSet },
   Operation{ "lag-del", kPort, lagDel },
   Operation{ "schedule", kPort, schedule },
   Operation{ "yield", kPolicy, yieldPolicy },
   Operation{ "step", {}, step },
   Operation{ "run", {}, run },
   Operation{ "initialize", {}, initialize },
   Operation{ kManual, {}, manual },
   Operation{ "state", {}, state },
};

const Operation&
operationNamed( const std::string& name ) {
   const auto operation = std::ranges::find( kOperations, name, &Operation::name );
   if ( operation == kOperations.end() ) {
      std::string names;
      for ( const Operation& known : kOperations ) {
         names += fmt::format( "{}{}", names.empty() ? "" : ", ", known.name );
      }
      refuse(
         fmt::format( "\"op\": \"{}\" is not allowed; allowed: {}", shownText( name ), names ) );
   }
   return *operation;
}

void
carryOut( Player& player, std::string_view line, bool first ) {
   const ParsedJson parsed = parseJson( line );
   if ( !parsed.value ) {
      refuse( parsed.error );
   }
   if ( !parsed.value->object() ) {
      refuse( fmt::format( "{} is not allowed; allowed: an object", parsed.value->shown() ) );
   }
   const JsonObject& members = *parsed.value->object();
   if ( const auto duplicates = duplicateMembers( members ); !duplicates.empty() ) {
      refuse( fmt::format( "\"{}\" stands twice", shownText( duplicates.front().again->name ) ) );
   }
   const Event event( members );
   const Operation& operation = operationNamed( event.text( "op" ) );
   event.onlyMembers( operation.members );
   if ( first && operation.name == kManual ) {
      return;
   }
   try {
      if ( first ) {
         player.initialize();
      }
      operation.carryOut( player, event );
   } catch ( const Zel::RangeException& error ) {
      player.printError( error.what() );
   }
}

// Of the line that getline() took last.
std::size_t
lengthOf( const std::istream& script ) {
   const auto taken = static_cast< std::size_t >( script.gcount() );
   return script.good() ? taken - 1 : taken;   // a line that ended has its end counted
}

}   // namespace

void
replay( const std::string& name, std::istream& script, std::ostream& out,
        std::size_t rangeEntriesPerPort ) {
   Player player( out, rangeEntriesPerPort );
   // Has room for one byte too many, and for the end.
   std::string buffer( kLongestLine + 2, '\0' );
   const auto room = static_cast< std::streamsize >( buffer.size() );
   bool first = true;
   // Without output there is no point in going on; the caller sees it from the stream.
   for ( std::size_t number = 1; out && script.getline( buffer.data(), room ).gcount() > 0;
         ++number ) {
      const std::string_view line( buffer.data(), lengthOf( script ) );
      if ( line.find_first_not_of( " \t\r" ) == std::string::npos ) {
         continue;
      }
      try {
         if ( line.size() > kLongestLine ) {
            refuse( fmt::format( "the line is longer than {} bytes", kLongestLine ) );
         }
         carryOut( player, line, first );
      } catch ( const std::invalid_argument& cause ) {
         throw ReplayError( fmt::format( "{}:{}: {}", name, number, cause.what() ) );
      }
      first = false;
   }
   if ( script.bad() ) {
      throw ReplayError( fmt::format( "{}: cannot be read to its end", name ) );
   }
}

}   // namespace Agent
