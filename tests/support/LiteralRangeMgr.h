// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// LiteralRangeMgr: the range index as it is defined, step by step, for tests to compare with.
//
// Nothing is shared or spared: each test of a call searches for itself, each change deletes and
// inserts. An element is an object of its own, so that a test may hold one and see what becomes of
// it: overwriting changes the element that is stored, deleting only takes it out.
//
// Trace      Every line is appended to `lines`, whatever levels are enabled anywhere, and then
//            onLine() is called.
// Asserts    Throw AssertionFailed where the process would end; the index stays as it was then.
// Throws     Zel::RangeException where the values' own constructors do.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "Bridging/VlanId.h"
#include "Bridging/VlanXlateMapping.h"
#include "Corvel/IntfId.h"
#include "MoxVlanMapping/VlanRange.h"

namespace TestSupport {

/// what(): the asserted expression.
class AssertionFailed : public std::runtime_error {
 public:
   using runtime_error::runtime_error;
};

/// An ordered collection that counts its changes.
template < class Value, class Order >
class LiteralMap {
 public:
   using Element = std::shared_ptr< Value >;
   using Elements = std::map< std::uint16_t, Element, Order >;

   const Elements& elements() const { return elements_; }
   /// Elements ever inserted or deleted.
   std::uint32_t changes() const { return changes_; }

   /// Null when there is none.
   Element find( std::uint16_t key ) const {
      const auto at = elements_.find( key );
      return at == elements_.end() ? nullptr : at->second;
   }
   void is( std::uint16_t key, const Value& value ) {
      if ( const Element stored = find( key ) ) {
         *stored = value;
      } else {
         elements_.emplace( key, std::make_shared< Value >( value ) );
         ++changes_;
      }
   }
   /// The default value when there was none.
   Value del( std::uint16_t key ) {
      const Element gone = find( key );
      if ( !gone ) {
         return Value();
      }
      elements_.erase( key );
      ++changes_;
      return *gone;
   }
   void delAll() {
      changes_ += static_cast< std::uint32_t >( elements_.size() );
      elements_.clear();
   }

 private:
   Elements elements_;
   std::uint32_t changes_ = 0;
};

struct LiteralRangeEntry {
   using Range = MoxVlanMapping::VlanRangeXlateMapping;

   LiteralMap< Range, std::less<> > ranges;     ///< by lowVid
   LiteralMap< bool, std::greater<> > starts;   ///< flag by start

   /// The default range when there is none.
   Range range( Bridging::VlanId lowVid ) const;
   void rangeIs( const Range& range ) { ranges.is( range.lowVid().value(), range ); }
   Range rangeDel( Bridging::VlanId lowVid ) { return ranges.del( lowVid.value() ); }
   void startIs( MoxVlanMapping::ReverseStartIdVlanId start, bool flag ) {
      starts.is( start.value(), flag );
   }
   bool startDel( MoxVlanMapping::ReverseStartIdVlanId start ) {
      return starts.del( start.value() );
   }
};

class LiteralRangeMgr {
 public:
   using Range = MoxVlanMapping::VlanRangeXlateMapping;

   std::map< std::uint64_t, LiteralRangeEntry > entries;   ///< by interface
   std::vector< std::string > lines;                       ///< "LEVEL TEXT"
   std::function< void() > onLine = [] {};

   /// Made when there is none.
   LiteralRangeEntry& entry( Corvel::IntfId intfId ) { return entries[ intfId.value() ]; }

   /// Null when there is none.
   const LiteralRangeEntry* find( Corvel::IntfId intfId ) const {
      const auto at = entries.find( intfId.value() );
      return at == entries.end() ? nullptr : &at->second;
   }

   bool isVidInRange( const Range& range, Bridging::VlanId vid ) const;
   bool isVidAndDot1qInUpperBoundRange( Corvel::IntfId intfId, Bridging::VlanId vid,
                                        Bridging::VlanXlateMapping mapping );
   bool isVidAndDot1qInLowerBoundRange( Corvel::IntfId intfId, Bridging::VlanId vid,
                                        Bridging::VlanXlateMapping mapping );
   void addVlanToIdx( Corvel::IntfId intfId, Bridging::VlanId vid,
                      Bridging::VlanXlateMapping mapping );
   void deleteVlanFromIdx( Corvel::IntfId intfId, Bridging::VlanId vid );
   void deleteVlanFromRange( Corvel::IntfId intfId, Bridging::VlanId vid, const Range& vidRange );

 private:
   template < class... Pieces >
   void trace( const char* level, const Pieces&... pieces );
   void merge( LiteralRangeEntry& entry, Bridging::VlanId vid, Bridging::VlanXlateMapping mapping );
   void extendFront( LiteralRangeEntry& entry, Bridging::VlanId vid,
                     Bridging::VlanXlateMapping mapping );
   void extendBack( LiteralRangeEntry& entry, Bridging::VlanId vid,
                    Bridging::VlanXlateMapping mapping );
   void insertNew( LiteralRangeEntry& entry, const Range& range );
};

}   // namespace TestSupport
