// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// VlanRangeXlateMapping, ReverseStartIdVlanId: the values that the range index is made of.
// Trivially copyable; comparing them allocates nothing.
#pragma once

#include <cstdint>
#include <iosfwd>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Zel/Exception.h"
#include "Zel/Export.h"
#include "Zel/Hash.h"
#include "Zel/String.h"

namespace MoxVlanMapping {

/// VLAN ids lowVid to highVid, both inclusive, of one interface, all translated by one mapping.
///
/// The default, [1..1] with the empty mapping, also stands for "no range": it is what look-ups
/// and deletions of absent keys yield, and its truth test is false. lowVid <= highVid is not
/// checked here; the range manager sees to it.
class ZEL_EXPORT VlanRangeXlateMapping {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::VlanRangeXlateMapping";
   /// The order below leaves the mapping's later fields out, == does not.
   static constexpr bool kTwins = true;

   constexpr VlanRangeXlateMapping() = default;
   constexpr VlanRangeXlateMapping( Bridging::VlanId lowVid, Bridging::VlanId highVid,
                                    Bridging::VlanXlateMapping mapping )
       : lowVid_( lowVid ), highVid_( highVid ), mapping_( mapping ) {}
   /// Parses the string form. Throws Zel::ParseException, or a Zel::RangeException that names
   /// the attribute.
   VlanRangeXlateMapping( Zel::StringIterator& current, Zel::StringIterator end );

   constexpr Bridging::VlanId lowVid() const { return lowVid_; }
   constexpr Bridging::VlanId highVid() const { return highVid_; }
   constexpr Bridging::VlanXlateMapping mapping() const { return mapping_; }
   /// highVid - lowVid: 0 for a single VLAN id.
   constexpr std::int32_t size() const { return highVid_.value() - lowVid_.value(); }

   explicit constexpr operator bool() const { return !( *this == VlanRangeXlateMapping() ); }

   friend constexpr bool operator==( const VlanRangeXlateMapping& a,
                                     const VlanRangeXlateMapping& b ) {
      return a.lowVid_ == b.lowVid_ && a.highVid_ == b.highVid_ && a.mapping_ == b.mapping_;
   }
   /// Larger ranges first, then lower starts, then lower translated VLAN ids.
   friend constexpr bool operator<( const VlanRangeXlateMapping& a,
                                    const VlanRangeXlateMapping& b ) {
      if ( a.size() != b.size() ) {
         return a.size() > b.size();
      }
      if ( !( a.lowVid_ == b.lowVid_ ) ) {
         return a.lowVid_ < b.lowVid_;
      }
      return a.mapping_.rawVlanId() < b.mapping_.rawVlanId();
   }
   /// Depends on exactly the three fields, in their order.
   std::uint32_t hash( std::uint32_t seed ) const;

 private:
   Bridging::VlanId lowVid_;
   Bridging::VlanId highVid_;
   Bridging::VlanXlateMapping mapping_;
};

/// "Value('MoxVlanMapping::VlanRangeXlateMapping', ** {'lowVid': 10, 'highVid': 20,
/// 'mapping': ...})", in one line.
ZEL_EXPORT Zel::String valueToStrep( const VlanRangeXlateMapping& range );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const VlanRangeXlateMapping& range );

/// Start of a range as key of a collection that runs from the highest start to the lowest, so
/// that one search finds the nearest start at or below a VLAN id. 0 to 4094; 0 is the default.
class ZEL_EXPORT ReverseStartIdVlanId {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::ReverseStartIdVlanId";
   constexpr ReverseStartIdVlanId() = default;
   /// Not explicit: a VLAN id's number is a start wherever one is asked for. Throws
   /// Zel::RangeException "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed".
   constexpr ReverseStartIdVlanId( std::uint64_t value )
       : value_( static_cast< std::uint16_t >( value ) ) {
      if ( value > Bridging::VlanId::kHighest ) [[unlikely]] {
         Zel::throwRangeException(
            "MoxVlanMapping::ReverseStartIdVlanId::value > 4094 not allowed" );
      }
   }
   /// Parses a bare number; checked as above.
   ReverseStartIdVlanId( Zel::StringIterator& current, Zel::StringIterator end );

   constexpr std::uint16_t value() const { return value_; }
   explicit constexpr operator bool() const { return value_ != 0; }

   friend constexpr bool operator==( const ReverseStartIdVlanId&,
                                     const ReverseStartIdVlanId& ) = default;
   /// Higher numbers first.
   friend constexpr bool operator<( const ReverseStartIdVlanId& a, const ReverseStartIdVlanId& b ) {
      return a.value_ > b.value_;
   }
   constexpr std::uint32_t hash() const { return Zel::singleAttrHash( value_, 0 ); }

 private:
   std::uint16_t value_ = 0;
};

/// A bare number.
ZEL_EXPORT Zel::String valueToStrep( const ReverseStartIdVlanId& start );
ZEL_EXPORT std::ostream& operator<<( std::ostream& out, const ReverseStartIdVlanId& start );

}   // namespace MoxVlanMapping
