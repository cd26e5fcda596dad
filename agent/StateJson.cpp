// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/StateJson.h"

#include <algorithm>
#include <map>
#include <tuple>
#include <vector>

#include "agent/JsonWriter.h"

namespace Agent {
namespace {

void
writeNames( JsonWriter& json, const ScaleAgent& agent, const auto& ids ) {
   json.array( [ & ] {
      for ( const Corvel::IntfId id : ids ) {
         json.value( agent.ports().name( id ) );
      }
   } );
}

void
writeRange( JsonWriter& json, const MoxVlanMapping::VlanRangeXlateMapping& range ) {
   json.array( [ & ] {
      json.value( range.lowVid().value() );
      json.value( range.highVid().value() );
      json.value( range.mapping().rawVlanId() );
   } );
}

void
writeRanges( JsonWriter& json, const MoxVlanMapping::VlanRangeEntry* entry ) {
   json.array( [ & ] {
      if ( entry ) {
         for ( const auto& element : entry->vlanIdRange() ) {
            writeRange( json, element.value() );
         }
      }
   } );
}

void
writeStarts( JsonWriter& json, const MoxVlanMapping::VlanRangeEntry* entry ) {
   json.array( [ & ] {
      if ( entry ) {
         for ( const auto& element : entry->revSortedStartVid() ) {
            json.value( element.key().value() );
         }
      }
   } );
}

void
writeSorted( JsonWriter& json, const MoxVlanMapping::VlanXlateScaleEntry* entry ) {
   if ( !entry ) {
      json.null();
      return;
   }
   json.array( [ & ] {
      for ( const auto& element : entry->vidRangeSorted() ) {
         writeRange( json, element.key() );
      }
   } );
}

void
writeExact( JsonWriter& json, const MoxVlanMapping::VlanXlateScaleEntry* entry ) {
   std::vector< std::uint16_t > vlans;
   if ( entry ) {
      for ( const auto& member : entry->vlanInXlateHashTable() ) {
         vlans.push_back( member.key().value() );
      }
   }
   std::ranges::sort( vlans );
   json.array( [ & ] {
      for ( const std::uint16_t vlan : vlans ) {
         json.value( vlan );
      }
   } );
}

// Every interface that has an entry in either directory.
void
writePorts( JsonWriter& json, const ScaleAgent& agent ) {
   const auto scaleEntryDir = agent.programmer().vlanXlateScaleEntryDir();
   std::map< std::string, Corvel::IntfId > ids;
   for ( const auto& element : agent.rangeEntryDir().vlanRangeEntry() ) {
      ids.emplace( agent.ports().name( element.key() ), element.key() );
   }
   for ( const auto& element : scaleEntryDir->vlanXlateScaleEntry() ) {
      ids.emplace( agent.ports().name( element.key() ), element.key() );
   }
   json.object( [ & ] {
      for ( const auto& [ name, id ] : ids ) {
         const auto rangeEntry = agent.rangeEntryDir().vlanRangeEntry( id );
         const auto scaleEntry = scaleEntryDir->vlanXlateScaleEntry( id );
         json.key( name );
         json.object( [ & ] {
            json.key( "exact" );
            writeExact( json, scaleEntry.get() );
            json.key( "ranges" );
            writeRanges( json, rangeEntry.get() );
            json.key( "sorted" );
            writeSorted( json, scaleEntry.get() );
            json.key( "starts" );
            writeStarts( json, rangeEntry.get() );
         } );
      }
   } );
}

void
writeSchedule( JsonWriter& json, const ScaleAgent& agent ) {
   std::vector< Corvel::IntfId > ids;
   for ( const auto& member : agent.scheduleDir().vlanXlateSchedule() ) {
      ids.push_back( member.key() );
   }
   writeNames( json, agent, ids );
}

void
writeStatus( JsonWriter& json, const ScaleAgent& agent ) {
   using Row = std::tuple< std::string, std::uint16_t, std::uint16_t >;
   std::vector< Row > rows;
   for ( const auto& element : agent.acsd().statusDir()->status() ) {
      rows.emplace_back( agent.ports().name( element.key().intfId() ),
                         element.key().vlanId().value(), element.value().mapping().rawVlanId() );
   }
   std::ranges::sort( rows );
   json.array( [ & ] {
      for ( const Row& row : rows ) {
         json.array( [ & ] {
            std::apply( [ & ]( const auto&... fields ) { ( json.value( fields ), ... ); }, row );
         } );
      }
   } );
}

}   // namespace

void
printState( std::ostream& out, ScaleAgent& agent ) {
   const RangeProgrammer::Progress progress = agent.programmer().takeProgress();
   const auto task = agent.programmer().task();
   JsonWriter json( out, JsonWriter::Layout::Line );
   json.object( [ & ] {
      json.key( "codef" );
      json.object( [ & ] {
         json.member( "completed", progress.completed );
         json.key( "handed" );
         writeNames( json, agent, progress.handed );
      } );
      json.key( "ports" );
      writePorts( json, agent );
      json.key( "schedule" );
      writeSchedule( json, agent );
      json.key( "status" );
      writeStatus( json, agent );
      json.key( "task" );
      json.object( [ & ] {
         json.member( "pending", task->taskWorkPending() );
         json.member( "scheduled", task->scheduled() );
         json.member( "work", task->taskWorkCount() );
      } );
   } );
}

}   // namespace Agent
