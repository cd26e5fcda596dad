// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Replay scripts: every line is carried out, answered with an error, or refused; and behind each the
// index holds exactly the ids that the events put there, merged as far as they go.
//
// Left out are the lines with which a caller breaks the library's conditions, so that it may assert:
// an id is added under a second mapping, or VLAN 1 meets the empty mapping. So that these can be
// told from the script alone, a port is driven either by its configuration or by hand (index events
// and ingress hooks), whichever comes first.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <istream>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <sstream>
#include <streambuf>
#include <string>
#include <string_view>
#include <tuple>
#include <vector>

#include "agent/Replay.h"
#include "agent/config/LocatedJson.h"
#include "tests/fuzz/Fuzz.h"

namespace {

using Fuzz::require;
using nlohmann::json;

constexpr std::size_t kRangeEntries = 2;
constexpr std::uint64_t kHighestVlan = 4094;

bool
isVlan( std::uint64_t number ) {
   return number >= 1 && number <= kHighestVlan;
}

struct Event {
   std::string op;
   std::string port;
   std::uint64_t vlan = 0;
   std::uint64_t relay = 0;
};

// What a line asks for as far as it can be read; the rest is for the replay to refuse.
std::optional< Event >
eventOf( const std::string& line ) {
   const Agent::ParsedJson parsed = Agent::parseJson( line );
   if ( !parsed.value || !parsed.value->object() ) {
      return std::nullopt;
   }
   Event event;
   for ( const Agent::JsonMember& member : *parsed.value->object() ) {
      if ( member.name == "op" && member.value.string() ) {
         event.op = *member.value.string();
      } else if ( member.name == "port" && member.value.string() ) {
         event.port = *member.value.string();
      } else if ( member.name == "vlan" && member.value.unsignedInteger() ) {
         event.vlan = *member.value.unsignedInteger();
      } else if ( member.name == "relay" && member.value.unsignedInteger() ) {
         event.relay = *member.value.unsignedInteger();
      }
   }
   return event;
}

struct Range {
   std::uint64_t low;
   std::uint64_t high;
   std::uint64_t relay;

   friend bool operator==( const Range&, const Range& ) = default;
};
using Ranges = std::vector< Range >;
// VLAN to relay.
using Table = std::map< std::uint64_t, std::uint64_t >;

Ranges
rangesOf( const json& triples ) {
   Ranges ranges;
   for ( const json& triple : triples ) {
      ranges.push_back( { triple[ 0 ], triple[ 1 ], triple[ 2 ] } );
   }
   return ranges;
}

Ranges
merged( const Table& table ) {
   Ranges ranges;
   for ( const auto& [ vlan, relay ] : table ) {
      if ( !ranges.empty() && ranges.back().high + 1 == vlan && ranges.back().relay == relay ) {
         ranges.back().high = vlan;
      } else {
         ranges.push_back( { vlan, vlan, relay } );
      }
   }
   return ranges;
}

Ranges
bySize( Ranges ranges ) {
   std::ranges::sort( ranges, {}, []( const Range& range ) {
      return std::tuple( kHighestVlan - ( range.high - range.low ), range.low );
   } );
   return ranges;
}

std::vector< std::uint64_t >
idsOf( const Ranges& ranges ) {
   std::vector< std::uint64_t > ids;
   for ( const Range& range : ranges ) {
      for ( std::uint64_t id = range.low; id <= range.high; ++id ) {
         ids.push_back( id );
      }
   }
   return ids;
}

struct PortModel {
   enum class Driver { None, Configuration, Hand };
   Driver driver = Driver::None;
   bool hadVlanOne = false;
   bool hadEmptyMapping = false;   // swallows what it meets: only the ids can be foretold
   Table configured;
   Table held;
   Ranges stored{};   // as the last state shows it

   bool drivenBy( Driver wanted ) {
      driver = driver == Driver::None ? wanted : driver;
      return driver == wanted;
   }
   // A record that is refused leaves the earlier mapping of its VLAN in force.
   void deliver( std::uint64_t vlan, std::uint64_t relay ) {
      if ( isVlan( vlan ) && isVlan( relay ) ) {
         held[ vlan ] = relay;
      }
   }
   std::optional< std::uint64_t > relayOf( std::uint64_t vlan ) const {
      for ( const Range& range : stored ) {
         if ( range.low <= vlan && vlan <= range.high ) {
            return range.relay;
         }
      }
      return std::nullopt;
   }
};

class Model {
 public:
   // Whether the line may be carried out; then the model has it, too.
   bool take( const Event& event, bool first ) {
      event_ = event;
      if ( ( first && event.op != "manual" ) || event.op == "initialize" ) {
         initialize();
      }
      PortModel& port = ports_[ event.port ];
      if ( event.op == "ingress-set" ) {
         if ( !port.drivenBy( PortModel::Driver::Configuration ) ) {
            return false;
         }
         port.configured[ event.vlan ] = event.relay;
         if ( initialized_ ) {
            port.deliver( event.vlan, event.relay );
         }
         return true;
      }
      if ( event.op == "ingress-del" ) {
         if ( port.configured.erase( event.vlan ) != 0 ) {
            port.held.erase( event.vlan );
         }
         return true;
      }
      if ( event.op == "index-add" || event.op == "hook-add-ingress" ) {
         event_.relay = event.op == "index-add" ? event.relay : 0;
         return port.drivenBy( PortModel::Driver::Hand ) && add( port );
      }
      if ( event.op == "index-del" || event.op == "hook-del-ingress" ) {
         const bool byHand = port.drivenBy( PortModel::Driver::Hand );
         port.held.erase( byHand ? event.vlan : 0 );
         return byHand;
      }
      return true;
   }

   void checkState( const json& state ) {
      for ( const auto& [ name, seen ] : state.at( "ports" ).items() ) {
         checkPort( ports_[ name ], seen );
      }
      for ( auto& [ name, port ] : ports_ ) {
         require( state.at( "ports" ).contains( name ) || port.held.empty(),
                  "a port that holds ids has no entry" );
      }
      require( event_.op != "run" || state.at( "schedule" ).empty(),
               "the schedule is not drained" );
   }

 private:
   void initialize() {
      initialized_ = true;
      for ( auto& [ name, port ] : ports_ ) {
         for ( const auto& [ vlan, relay ] : port.configured ) {
            port.deliver( vlan, relay );
         }
      }
   }
   bool add( PortModel& port ) {
      if ( !maySee( port ) ) {
         return false;
      }
      if ( const auto relay = port.relayOf( event_.vlan ) ) {
         return event_.relay == 0 || *relay == event_.relay;
      }
      if ( isVlan( event_.vlan ) ) {
         port.held[ event_.vlan ] = event_.relay;
      }
      return true;
   }
   bool maySee( PortModel& port ) const {
      const bool one = port.hadVlanOne || event_.vlan == 1;
      const bool empty = port.hadEmptyMapping || event_.relay == 0;
      if ( one && empty ) {
         return false;
      }
      port.hadVlanOne = one;
      port.hadEmptyMapping = empty;
      return true;
   }

   void checkPort( PortModel& port, const json& seen ) const {
      port.stored = rangesOf( seen.at( "ranges" ) );
      Ranges expected = merged( port.held );
      json starts = json::array();
      for ( const Range& range : port.stored ) {
         starts.insert( starts.begin(), range.low );
      }
      if ( Fuzz::planted() && starts.size() > 3 ) {
         starts.erase( 0 );
      }
      require( seen.at( "starts" ) == starts, "the starts are not those of the ranges" );
      require( idsOf( port.stored ) == idsOf( expected ), "not the ids that were put there" );
      require( port.hadEmptyMapping || port.stored == expected,
               "not the ranges that were to be expected" );
      if ( event_.op == "run" && port.driver == PortModel::Driver::Configuration ) {
         checkSorted( port.stored, seen );
      }
   }
   static void checkSorted( const Ranges& stored, const json& seen ) {
      if ( seen.at( "sorted" ).is_null() ) {
         require( stored.empty(), "ranges that were never sorted" );
         return;
      }
      Ranges rest = bySize( stored );
      require( rangesOf( seen.at( "sorted" ) ) == rest, "not sorted by size" );
      rest.erase( rest.begin(), rest.begin() + static_cast< std::ptrdiff_t >(
                                                  std::min( kRangeEntries, rest.size() ) ) );
      std::vector< std::uint64_t > exact = idsOf( rest );
      std::ranges::sort( exact );
      require( seen.at( "exact" ) == json( exact ), "not the exact entries of the smaller ranges" );
   }

   Event event_;
   bool initialized_ = false;
   std::map< std::string, PortModel > ports_;
};

// Hands the script out a line at a time, with a question for the state behind each, and looks at
// the answer before the next.
class WatchedScript : public std::streambuf {
 public:
   WatchedScript( std::string_view text, const std::ostringstream& out )
       : text_( std::string( text ) ), out_( out ) {}

 protected:
   int_type underflow() override {
      if ( asked_ ) {
         model_.checkState( json::parse( lastLine() ) );
         asked_ = false;
      } else if ( given_ ) {
         asked_ = true;
         return give( R"({"op":"state"})" );
      }
      for ( std::string line; std::getline( text_, line ); ) {
         if ( line.find_first_not_of( " \t\r" ) == std::string::npos ) {
            continue;
         }
         const std::optional< Event > event = eventOf( line );
         if ( !event || model_.take( *event, !given_ ) ) {
            given_ = true;
            return give( line );
         }
      }
      return traits_type::eof();
   }

 private:
   int_type give( const std::string& line ) {
      line_ = line + '\n';
      setg( line_.data(), line_.data(), line_.data() + line_.size() );
      return traits_type::to_int_type( line_.front() );
   }
   std::string lastLine() const {
      std::string lines = out_.str();
      require( lines.ends_with( '\n' ), "the state is not printed" );
      lines.pop_back();
      return lines.substr( lines.rfind( '\n' ) + 1 );
   }

   std::istringstream text_;
   const std::ostringstream& out_;
   Model model_;
   std::string line_;
   bool given_ = false;
   bool asked_ = false;
};

}   // namespace

extern "C" int
LLVMFuzzerTestOneInput( const std::uint8_t* data, std::size_t size ) {
   std::ostringstream out;
   WatchedScript script( { reinterpret_cast< const char* >( data ), size }, out );
   std::istream in( &script );
   in.exceptions( std::ios::badbit );   // what is thrown while reading must come through
   try {
      Agent::replay( "script", in, out, kRangeEntries );
   } catch ( const Agent::ReplayError& error ) {
      const std::string_view text = error.what();
      require( text.starts_with( "script:" ), "an error that does not say where" );
      require( text.find_first_of( std::string_view( "\0\n\r\x1b\x7f", 5 ) ) == text.npos,
               "an error with control characters" );
   }
   return 0;
}
