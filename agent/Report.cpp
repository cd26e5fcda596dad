// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/Report.h"

#include <fmt/format.h>
#include <fmt/ostream.h>

#include <algorithm>
#include <map>

#include "agent/JsonWriter.h"
#include "agent/config/Escaped.h"
#include "agent/config/VlanList.h"

namespace Agent {
namespace {

// 36,775
std::string
grouped( std::size_t number ) {
   std::string text = std::to_string( number );
   for ( std::size_t at = text.size(); at > 3; ) {
      at -= 3;
      text.insert( at, 1, ',' );
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

std::vector< const PortReport* >
byName( const std::vector< PortReport >& ports ) {
   std::vector< const PortReport* > sorted;
   for ( const PortReport& port : ports ) {
      sorted.push_back( &port );
   }
   std::ranges::sort( sorted, {}, &PortReport::name );
   return sorted;
}

void
writeRanges( JsonWriter& json, const PortReport& port, RangeOrder order ) {
   json.array( [ & ] {
      for ( const RangeReport& range : ordered( port.ranges, order ) ) {
         json.object( [ & ] {
            json.member( "high", range.high );
            json.member( "ids", range.ids() );
            json.member( "low", range.low );
            json.member( "rangeEntry", range.rangeEntry );
            json.member( "rank", range.rank );
            json.member( "relay", range.relay );
         } );
      }
   } );
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
closingLine( const Report& report ) {
   const Totals total = report.total();
   return fmt::format( "{} -> {} -> {} + {} at {} per port",
                       counted( total.mappings, "mapping", "mappings" ),
                       counted( total.ranges, "range", "ranges" ),
                       counted( total.rangeEntries, "range entry", "range entries" ),
                       counted( total.exactEntries, "exact entry", "exact entries" ),
                       counted( report.rangeEntriesPerPort, "entry", "entries" ) );
}

void
printSummary( std::ostream& out, const Report& report ) {
   constexpr const char* kLine = "{:<{}}  {:>8}  {:>6}  {:>13}  {:>13}\n";
   const std::string title = "port";
   std::size_t width = title.size();
   for ( const PortReport& port : report.ports ) {
      width = std::max( width, escaped( port.name ).size() );
   }
   fmt::print( out, kLine, title, width, "mappings", "ranges", "range entries", "exact entries" );
   for ( const PortReport& port : report.ports ) {
      fmt::print( out, kLine, escaped( port.name ), width, grouped( port.mappings ),
                  grouped( port.ranges.size() ), grouped( port.rangeEntries ),
                  grouped( port.exactEntries ) );
   }
   fmt::print( out, "\n{}\n", closingLine( report ) );
}

void
printRanges( std::ostream& out, const PortReport& port, RangeOrder order ) {
   for ( const RangeReport& range : ordered( port.ranges, order ) ) {
      const std::string entry = range.rangeEntry
                                 ? fmt::format( "range entry {}", *range.rangeEntry )
                                 : counted( range.ids(), "exact entry", "exact entries" );
      fmt::print( out, "{}  {}  -> {}  {}  {}\n", escaped( port.name ), span( range ), range.relay,
                  counted( range.ids(), "id", "ids" ), entry );
   }
}

void
printPort( std::ostream& out, const PortReport& port, RangeOrder order ) {
   fmt::print( out, "{}: {} -> {} -> {} + {}\n", escaped( port.name ),
               counted( port.mappings, "mapping", "mappings" ),
               counted( port.ranges.size(), "range", "ranges" ),
               counted( port.rangeEntries, "range entry", "range entries" ),
               counted( port.exactEntries, "exact entry", "exact entries" ) );
   if ( port.lag ) {
      fmt::print( out, "member of {}\n", escaped( *port.lag ) );
   }
   for ( const auto& [ relay, vlans ] : vlansByRelay( port ) ) {
      fmt::print( out, "to {}: {}\n", relay, formatVlanList( vlans ) );
   }
   printRanges( out, port, order );
}

void
printSummaryJson( std::ostream& out, const Report& report ) {
   JsonWriter json( out, JsonWriter::Layout::Indented );
   json.object( [ & ] {
      json.key( "ports" );
      json.object( [ & ] {
         for ( const PortReport* port : byName( report.ports ) ) {
            json.key( port->name );
            json.object( [ & ] {
               json.member( "exactEntries", port->exactEntries );
               json.member( "lag", port->lag );
               json.member( "mappings", port->mappings );
               json.member( "rangeEntries", port->rangeEntries );
               json.member( "ranges", port->ranges.size() );
            } );
         }
      } );
      json.member( "rangeEntriesPerPort", report.rangeEntriesPerPort );
      json.key( "total" );
      json.object( [ &, total = report.total() ] {
         json.member( "exactEntries", total.exactEntries );
         json.member( "mappings", total.mappings );
         json.member( "rangeEntries", total.rangeEntries );
         json.member( "ranges", total.ranges );
      } );
   } );
   out << '\n';
}

void
printRangesJson( std::ostream& out, const std::vector< PortReport >& ports, RangeOrder order ) {
   JsonWriter json( out, JsonWriter::Layout::Indented );
   json.object( [ & ] {
      for ( const PortReport* port : byName( ports ) ) {
         json.key( port->name );
         writeRanges( json, *port, order );
      }
   } );
   out << '\n';
}

void
printPortJson( std::ostream& out, const PortReport& port, RangeOrder order ) {
   JsonWriter json( out, JsonWriter::Layout::Indented );
   json.object( [ & ] {
      json.member( "exactEntries", port.exactEntries );
      json.member( "lag", port.lag );
      json.member( "mappings", port.mappings );
      json.member( "name", port.name );
      json.member( "rangeEntries", port.rangeEntries );
      json.key( "ranges" );
      writeRanges( json, port, order );
      json.key( "vlans" );
      json.object( [ & ] {
         // Keys are sorted as text.
         std::map< std::string, std::string > lists;
         for ( const auto& [ relay, vlans ] : vlansByRelay( port ) ) {
            lists.emplace( std::to_string( relay ), formatVlanList( vlans ) );
         }
         for ( const auto& [ relay, list ] : lists ) {
            json.member( relay, list );
         }
      } );
   } );
   out << '\n';
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
