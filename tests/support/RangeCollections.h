// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The three ordered collections of the range index, each as a map from numbers to numbers, for tests
// that run on every kind of collection.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"

namespace TestCollections {

/// What all have in common. `Derived` has map(), keyOf(), is() and erase().
template < class Derived, class MapType >
class RangeCollection {
 public:
   using Map = MapType;
   using Key = typename Map::Key;
   using Iterator = typename Map::Iterator;

   std::uint32_t size() const { return map().size(); }
   bool empty() const { return map().empty(); }
   std::uint32_t changes() const { return map().changes(); }
   Iterator first() const { return map().first(); }
   Iterator begin() const { return map().begin(); }
   auto end() const { return map().end(); }
   Iterator findElement( const Key& key ) const { return map().findElement( key ); }
   Iterator findElementOrNext( const Key& key ) const { return map().findElementOrNext( key ); }
   void verify() const { map().verify(); }

 private:
   const Map& map() const { return static_cast< const Derived* >( this )->map(); }
};

/// vlanIdRange: ranges of one id, whose mapping is the value.
class Ranges : public RangeCollection< Ranges, MoxVlanMapping::VlanRangeEntry::VlanIdRangeMap > {
 public:
   static Key keyOf( std::uint32_t number ) {
      return Key::fromRaw( static_cast< std::uint16_t >( number ) );
   }
   static std::uint32_t numberOf( Key key ) { return key.value(); }
   static int valueOf( int value ) { return value; }
   static int valueIn( const MoxVlanMapping::VlanRangeXlateMapping& range ) {
      return range.mapping().rawVlanId();
   }

   const Map& map() const { return entry_->vlanIdRange(); }
   void is( std::uint32_t number, int value ) {
      entry_->vlanIdRangeIs(
         { keyOf( number ), keyOf( number ),
           Bridging::VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( value ), 1 ) } );
   }
   /// The value of what was deleted.
   std::optional< int > erase( std::uint32_t number ) {
      return shown( entry_->vlanIdRangeDel( keyOf( number ) ) );
   }
   std::optional< int > del( const Iterator& at ) { return shown( entry_->vlanIdRangeDel( at ) ); }
   void deleteAll() { entry_->vlanIdRangeDelAll(); }

 private:
   static std::optional< int > shown( const MoxVlanMapping::VlanRangeXlateMapping& gone ) {
      return gone ? std::optional( valueIn( gone ) ) : std::nullopt;
   }

   const Zel::Ptr< MoxVlanMapping::VlanRangeEntry > entry_ =
      MoxVlanMapping::vlanRangeEntryFactory( Corvel::IntfId( 7 ) );
};

/// revSortedStartVid: an odd value is the flag true.
class Starts :
    public RangeCollection< Starts, MoxVlanMapping::VlanRangeEntry::RevSortedStartVidMap > {
 public:
   static Key keyOf( std::uint32_t number ) { return Key( number ); }
   static std::uint32_t numberOf( Key key ) { return key.value(); }
   static int valueOf( int value ) { return value % 2; }
   static int valueIn( bool flag ) { return flag; }

   const Map& map() const { return entry_->revSortedStartVid(); }
   void is( std::uint32_t number, int value ) {
      entry_->revSortedStartVidIs( keyOf( number ), valueOf( value ) != 0 );
   }
   std::optional< int > erase( std::uint32_t number ) {
      const auto before = size();
      const bool flag = entry_->revSortedStartVidDel( keyOf( number ) );
      return size() < before ? std::optional< int >( flag ) : std::nullopt;
   }
   std::optional< int > del( const Iterator& at ) {
      const auto before = size();
      const bool flag = entry_->revSortedStartVidDel( at );
      return size() < before ? std::optional< int >( flag ) : std::nullopt;
   }
   void deleteAll() { entry_->revSortedStartVidDelAll(); }

 private:
   const Zel::Ptr< MoxVlanMapping::VlanRangeEntry > entry_ =
      MoxVlanMapping::vlanRangeEntryFactory( Corvel::IntfId( 7 ) );
};

/// vidRangeSorted: ranges of one id, of which kTags have no order among them; an odd value is the
/// flag true.
class Sorted :
    public RangeCollection< Sorted, MoxVlanMapping::VlanXlateScaleEntry::VidRangeSortedMap > {
 public:
   static constexpr std::uint32_t kTags = 10;

   static Key keyOf( std::uint32_t number ) {
      const auto vid = Bridging::VlanId::fromRaw( static_cast< std::uint16_t >( number / kTags ) );
      const auto tag = static_cast< std::uint16_t >( number % kTags );
      return { vid, vid, Bridging::VlanXlateMapping::fromRaw( 300, tag ) };
   }
   static std::uint32_t numberOf( const Key& key ) {
      return key.lowVid().value() * kTags + key.mapping().rawInnerVlanId();
   }
   static int valueOf( int value ) { return value % 2; }
   static int valueIn( bool flag ) { return flag; }

   const Map& map() const { return entry_->vidRangeSorted(); }
   void is( std::uint32_t number, int value ) {
      entry_->vidRangeSortedIs( keyOf( number ), valueOf( value ) != 0 );
   }
   std::optional< int > erase( std::uint32_t number ) {
      const auto before = size();
      const bool flag = entry_->vidRangeSortedDel( keyOf( number ) );
      return size() < before ? std::optional< int >( flag ) : std::nullopt;
   }
   std::optional< int > del( const Iterator& at ) {
      const auto before = size();
      const bool flag = entry_->vidRangeSortedDel( at );
      return size() < before ? std::optional< int >( flag ) : std::nullopt;
   }
   void deleteAll() { entry_->vidRangeSortedDelAll(); }

 private:
   const Zel::Ptr< MoxVlanMapping::VlanXlateScaleEntry > entry_ =
      MoxVlanMapping::vlanXlateScaleEntryFactory( Corvel::IntfId( 7 ) );
};

}   // namespace TestCollections
