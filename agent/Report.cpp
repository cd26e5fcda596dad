// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Report.h"

#include <fmt/format.h>

#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "agent/config/VlanList.h"

namespace Agent {
namespace {

// 36,775
std::string
grouped( std::size_t number ) {
   std::string text = std::to_string( number );
   for ( std::size_t at = text.size(); at > 3; ) {
      at -= 3;
      text.insert( at, "," );
   }
   return text;
}

std::vector< RangeReport >
ordered( std::vector< RangeReport > ranges, RangeOrder order ) {
   if ( order == RangeOrder::Vid ) {
      std::ranges::sort( ranges, {}, &RangeReport::low );
   }
   return ranges;
}

// "10-20", or "10" for one id.
std::string
span( const RangeReport& range ) {
   return range.low == range.high ? std::to_string( range.low )
                                  : fmt::format( "{}-{}", range.low, range.high );
}

std::map< std::uint16_t, std::vector< std::uint16_t > >
vlansByRelay( const PortReport& port ) {
   std::map< std::uint16_t, std::vector< std::uint16_t > > vlans;
   for ( const RangeReport& range : ordered( port.ranges, RangeOrder::Vid ) ) {
      for ( std::uint32_t vlan = range.low; vlan <= range.high; ++vlan ) {
         vlans[ range.relay ].push_back( static_cast< std::uint16_t >( vlan ) );
      }
   }
   return vlans;
}

nlohmann::json
jsonOf( const PortReport& port ) {
   nlohmann::json json{ { "mappings", port.mappings },
                        { "ranges", port.ranges.size() },
                        { "rangeEntries", port.rangeEntries },
                        { "exactEntries", port.exactEntries } };
   json[ "lag" ] = port.lag ? nlohmann::json( *port.lag ) : nlohmann::json();
   return json;
}

nlohmann::json
jsonOf( const std::vector< RangeReport >& ranges, RangeOrder order ) {
   nlohmann::json list = nlohmann::json::array();
   for ( const RangeReport& range : ordered( ranges, order ) ) {
      nlohmann::json json{ { "low", range.low },
                           { "high", range.high },
                           { "relay", range.relay },
                           { "ids", range.ids() },
                           { "rank", range.rank } };
      json[ "rangeEntry" ] =
         range.rangeEntry ? nlohmann::json( *range.rangeEntry ) : nlohmann::json();
      list.push_back( std::move( json ) );
   }
   return list;
}

}   // namespace

std::string
counted( std::size_t number, const char* one, const char* many ) {
   return grouped( number ) + " " + ( number == 1 ? one : many );
}

Totals
Report::total() const {
   Totals sum;
   for ( const PortReport& port : ports ) {
      sum.mappings += port.mappings;
      sum.ranges += port.ranges.size();
      sum.rangeEntries += port.rangeEntries;
      sum.exactEntries += port.exactEntries;
   }
   return sum;
}

Report
makeReport( const ScaleAgent& agent, const Configuration& configuration ) {
   Report report;
   report.rangeEntriesPerPort = agent.dataPlane().rangeEntriesPerPort();
   PortNames names = agent.ports();
   for ( const Port& port : configuration.ports ) {
      const Corvel::IntfId id = names.id( port.name );
      const PortProgram& program = agent.dataPlane().portProgram( id );
      PortReport& row = report.ports.emplace_back();
      row.name = port.name;
      row.lag = port.lag;
      row.mappings = port.ingress.size();
      row.rangeEntries = program.ranges.size();
      row.exactEntries = program.exact.size();
      const auto scaleEntry =
         agent.programmer().vlanXlateScaleEntryDir()->vlanXlateScaleEntry( id );
      if ( !scaleEntry ) {
         continue;
      }
      for ( const auto& element : scaleEntry->vidRangeSorted() ) {
         const std::size_t rank = row.ranges.size() + 1;
         row.ranges.push_back( { element.key().lowVid().value(), element.key().highVid().value(),
                                 element.key().mapping().rawVlanId(), rank, std::nullopt } );
         if ( rank <= row.rangeEntries ) {
            row.ranges.back().rangeEntry = rank;
         }
      }
   }
   return report;
}

std::string
summaryText( const Report& report ) {
   std::size_t width = std::string( "port" ).size();
   for ( const PortReport& port : report.ports ) {
      width = std::max( width, port.name.size() );
   }
   std::string text = fmt::format( "{:<{}}  {:>8}  {:>6}  {:>13}  {:>13}\n", "port", width,
                                   "mappings", "ranges", "range entries", "exact entries" );
   for ( const PortReport& port : report.ports ) {
      text += fmt::format( "{:<{}}  {:>8}  {:>6}  {:>13}  {:>13}\n", port.name, width,
                           grouped( port.mappings ), grouped( port.ranges.size() ),
                           grouped( port.rangeEntries ), grouped( port.exactEntries ) );
   }
   return text + "\n" + closingLine( report ) + "\n";
}

std::string
closingLine( const Report& report ) {
   const Totals total = report.total();
   return fmt::format( "{} -> {} -> {} + {} at {} per port",
                       counted( total.mappings, "mapping", "mappings" ),
                       counted( total.ranges, "range", "ranges" ),
                       counted( total.rangeEntries, "range entry", "range entries" ),
                       counted( total.exactEntries, "exact entry", "exact entries" ),
                       counted( report.rangeEntriesPerPort, "entry", "entries" ) );
}

std::string
rangesText( const PortReport& port, RangeOrder order ) {
   std::string text;
   for ( const RangeReport& range : ordered( port.ranges, order ) ) {
      const std::string entry = range.rangeEntry
                                 ? fmt::format( "range entry {}", *range.rangeEntry )
                                 : counted( range.ids(), "exact entry", "exact entries" );
      text += fmt::format( "{}  {}  -> {}  {}  {}\n", port.name, span( range ), range.relay,
                           counted( range.ids(), "id", "ids" ), entry );
   }
   return text;
}

std::string
portText( const PortReport& port, RangeOrder order ) {
   std::string text = fmt::format( "{}: {} -> {} -> {} + {}\n", port.name,
                                   counted( port.mappings, "mapping", "mappings" ),
                                   counted( port.ranges.size(), "range", "ranges" ),
                                   counted( port.rangeEntries, "range entry", "range entries" ),
                                   counted( port.exactEntries, "exact entry", "exact entries" ) );
   if ( port.lag ) {
      text += fmt::format( "member of {}\n", *port.lag );
   }
   for ( const auto& [ relay, vlans ] : vlansByRelay( port ) ) {
      text += fmt::format( "to {}: {}\n", relay, formatVlanList( vlans ) );
   }
   return text + rangesText( port, order );
}

std::string
summaryJson( const Report& report ) {
   nlohmann::json json;
   json[ "ports" ] = nlohmann::json::object();
   for ( const PortReport& port : report.ports ) {
      json[ "ports" ][ port.name ] = jsonOf( port );
   }
   json[ "rangeEntriesPerPort" ] = report.rangeEntriesPerPort;
   const Totals total = report.total();
   json[ "total" ] = { { "mappings", total.mappings },
                       { "ranges", total.ranges },
                       { "rangeEntries", total.rangeEntries },
                       { "exactEntries", total.exactEntries } };
   return json.dump( 2 ) + "\n";
}

std::string
rangesJson( const std::vector< PortReport >& ports, RangeOrder order ) {
   nlohmann::json json = nlohmann::json::object();
   for ( const PortReport& port : ports ) {
      json[ port.name ] = jsonOf( port.ranges, order );
   }
   return json.dump( 2 ) + "\n";
}

std::string
portJson( const PortReport& port, RangeOrder order ) {
   nlohmann::json json = jsonOf( port );
   json[ "name" ] = port.name;
   json[ "ranges" ] = jsonOf( port.ranges, order );
   json[ "vlans" ] = nlohmann::json::object();
   for ( const auto& [ relay, vlans ] : vlansByRelay( port ) ) {
      json[ "vlans" ][ std::to_string( relay ) ] = formatVlanList( vlans );
   }
   return json.dump( 2 ) + "\n";
}

PortReport
onlyVlans( PortReport port, const std::vector< std::uint16_t >& vlans ) {
   std::erase_if( port.ranges, [ & ]( const RangeReport& range ) {
      const auto next = std::ranges::lower_bound( vlans, range.low );
      return next == vlans.end() || *next > range.high;
   } );
   return port;
}

}   // namespace Agent
