// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RangeText: ranges, starts and whole directories as text, and back.
//
//   10-12 M, 14-20 M      the ranges of an entry, ascending; or a sorted set, in its own order
//   14, 10                the starts of an entry, in their own order
//   7: 10-12 M / 10       one line of a directory: interface, ranges, starts
//
// A letter A to Z stands for a mapping of its own, "-" for the empty mapping. A flag that is
// false shows behind its element ("10=false").
#pragma once

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

namespace TestSupport {

inline constexpr std::uint16_t kFirstTranslatedVlan = 3001;

inline Bridging::VlanXlateMapping
mappingOf( char letter ) {
   return letter == '-' ? Bridging::VlanXlateMapping()
                        : Bridging::VlanXlateMapping::fromRaw(
                             static_cast< std::uint16_t >( kFirstTranslatedVlan + letter - 'A' ) );
}

inline std::string
mappingText( Bridging::VlanXlateMapping mapping ) {
   for ( const char letter : std::string( "-ABCDEFGHIJKLMNOPQRSTUVWXYZ" ) ) {
      if ( mapping == mappingOf( letter ) ) {
         return std::string( 1, letter );
      }
   }
   return valueToStrep( mapping ).str();
}

/// Ids are taken unchecked.
inline MoxVlanMapping::VlanRangeXlateMapping
rangeOf( unsigned low, unsigned high, char letter ) {
   return { Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( low ) ),
            Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( high ) ),
            mappingOf( letter ) };
}

inline std::string
rangeText( const MoxVlanMapping::VlanRangeXlateMapping& range ) {
   return std::to_string( range.lowVid().value() ) + "-" +
          std::to_string( range.highVid().value() ) + " " + mappingText( range.mapping() );
}

inline std::vector< MoxVlanMapping::VlanRangeXlateMapping >
rangesOf( const std::string& text ) {
   std::vector< MoxVlanMapping::VlanRangeXlateMapping > ranges;
   std::istringstream in( text );
   unsigned low = 0;
   unsigned high = 0;
   char dash = 0;
   char letter = 0;
   char comma = ',';
   while ( in >> low ) {
      if ( comma != ',' || !( in >> dash >> high >> letter ) || dash != '-' ) {
         throw std::invalid_argument( "not a list of ranges: " + text );
      }
      ranges.push_back( rangeOf( low, high, letter ) );
      comma = 0;
      in >> comma;
   }
   return ranges;
}

template < class Elements, class Text >
std::string
joined( const Elements& elements, Text text ) {
   std::string all;
   for ( const auto& element : elements ) {
      all += ( all.empty() ? "" : ", " ) + text( element );
   }
   return all;
}

inline std::string
rangesText( const MoxVlanMapping::VlanRangeEntry& entry ) {
   return joined( entry.vlanIdRange(),
                  []( const auto& element ) { return rangeText( element.value() ); } );
}

inline std::string
flagText( bool flag ) {
   return flag ? "" : "=false";
}

inline std::string
startsText( const MoxVlanMapping::VlanRangeEntry& entry ) {
   return joined( entry.revSortedStartVid(), []( const auto& element ) {
      return std::to_string( element.key().value() ) + flagText( element.value() );
   } );
}

inline std::string
sortedText( const MoxVlanMapping::VlanXlateScaleEntry& entry ) {
   return joined( entry.vidRangeSorted(), []( const auto& element ) {
      return rangeText( element.key() ) + flagText( element.value() );
   } );
}

/// Everything that a directory holds, one line for each entry.
inline std::string
stateText( const MoxVlanMapping::VlanRangeEntryDir& dir ) {
   std::string all;
   for ( const auto& element : dir.vlanRangeEntry() ) {
      all += std::to_string( element.key().value() ) + ": " + rangesText( *element.entity() ) +
             " / " + startsText( *element.entity() ) + "\n";
   }
   return all;
}

/// Numbers of the interfaces that a collection of interfaces or of their entries holds.
template < class Collection >
std::string
interfacesText( const Collection& collection ) {
   return joined( collection,
                  []( const auto& node ) { return std::to_string( node.key().value() ); } );
}

/// Stores ranges and their starts as the range manager would.
inline void
store( MoxVlanMapping::VlanRangeEntry& entry, const std::string& ranges ) {
   for ( const auto& range : rangesOf( ranges ) ) {
      entry.vlanIdRangeIs( range );
      entry.revSortedStartVidIs( range.lowVid().value(), true );
   }
}

}   // namespace TestSupport
