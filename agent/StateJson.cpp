// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "agent/StateJson.h"

#include <algorithm>
#include <nlohmann/json.hpp>
#include <tuple>
#include <vector>

namespace Agent {
namespace {

using nlohmann::json;

json
namesOf( const ScaleAgent& agent, const auto& ids ) {
   json names = json::array();
   for ( const Corvel::IntfId id : ids ) {
      names.push_back( agent.ports().name( id ) );
   }
   return names;
}

json
rangeJson( const MoxVlanMapping::VlanRangeXlateMapping& range ) {
   return { range.lowVid().value(), range.highVid().value(), range.mapping().rawVlanId() };
}

json
rangesJson( const MoxVlanMapping::VlanRangeEntry* entry ) {
   json ranges = json::array();
   if ( entry ) {
      for ( const auto& element : entry->vlanIdRange() ) {
         ranges.push_back( rangeJson( element.value() ) );
      }
   }
   return ranges;
}

json
startsJson( const MoxVlanMapping::VlanRangeEntry* entry ) {
   json starts = json::array();
   if ( entry ) {
      for ( const auto& element : entry->revSortedStartVid() ) {
         starts.push_back( element.key().value() );
      }
   }
   return starts;
}

json
sortedJson( const MoxVlanMapping::VlanXlateScaleEntry* entry ) {
   if ( !entry ) {
      return nullptr;
   }
   json sorted = json::array();
   for ( const auto& element : entry->vidRangeSorted() ) {
      sorted.push_back( rangeJson( element.key() ) );
   }
   return sorted;
}

json
exactJson( const MoxVlanMapping::VlanXlateScaleEntry* entry ) {
   std::vector< std::uint16_t > vlans;
   if ( entry ) {
      for ( const auto& member : entry->vlanInXlateHashTable() ) {
         vlans.push_back( member.key().value() );
      }
   }
   std::ranges::sort( vlans );
   return vlans;
}

// Every interface that has an entry in either directory.
json
portsJson( const ScaleAgent& agent ) {
   const auto scaleEntryDir = agent.programmer().vlanXlateScaleEntryDir();
   std::vector< Corvel::IntfId > ids;
   for ( const auto& element : agent.rangeEntryDir().vlanRangeEntry() ) {
      ids.push_back( element.key() );
   }
   for ( const auto& element : scaleEntryDir->vlanXlateScaleEntry() ) {
      ids.push_back( element.key() );
   }
   json ports = json::object();
   for ( const Corvel::IntfId id : ids ) {
      const auto rangeEntry = agent.rangeEntryDir().vlanRangeEntry( id );
      const auto scaleEntry = scaleEntryDir->vlanXlateScaleEntry( id );
      ports[ agent.ports().name( id ) ] = { { "exact", exactJson( scaleEntry.get() ) },
                                            { "ranges", rangesJson( rangeEntry.get() ) },
                                            { "sorted", sortedJson( scaleEntry.get() ) },
                                            { "starts", startsJson( rangeEntry.get() ) } };
   }
   return ports;
}

json
scheduleJson( const ScaleAgent& agent ) {
   std::vector< Corvel::IntfId > ids;
   for ( const auto& member : agent.scheduleDir().vlanXlateSchedule() ) {
      ids.push_back( member.key() );
   }
   return namesOf( agent, ids );
}

json
statusJson( const ScaleAgent& agent ) {
   using Row = std::tuple< std::string, std::uint16_t, std::uint16_t >;
   std::vector< Row > rows;
   for ( const auto& element : agent.acsd().statusDir()->status() ) {
      rows.emplace_back( agent.ports().name( element.key().intfId() ),
                         element.key().vlanId().value(), element.value().mapping().rawVlanId() );
   }
   std::ranges::sort( rows );
   return rows;
}

}   // namespace

std::string
stateJson( ScaleAgent& agent ) {
   const RangeProgrammer::Progress progress = agent.programmer().takeProgress();
   const auto task = agent.programmer().task();
   const json state{
      { "codef",
        { { "completed", progress.completed }, { "handed", namesOf( agent, progress.handed ) } } },
      { "ports", portsJson( agent ) },
      { "schedule", scheduleJson( agent ) },
      { "status", statusJson( agent ) },
      { "task",
        { { "pending", task->taskWorkPending() },
          { "scheduled", task->scheduled() },
          { "work", task->taskWorkCount() } } } };
   return state.dump();
}

}   // namespace Agent
