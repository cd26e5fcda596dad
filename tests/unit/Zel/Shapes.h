// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Shapes: a small module of types for the tests of generic access.
//
// Point    value without an order; counts how many exist
// Shape    abstract entity: name, neighbour, area()
// Square   derives from it: side, grow(), fail()
#pragma once

#include <array>
#include <cstdint>
#include <stdexcept>
#include <string>

#include "Zel/Exception.h"
#include "Zel/Hash.h"
#include "Zel/NewEntity.h"
#include "Zel/Parse.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/String.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Shapes {

class Point {
 public:
   static constexpr char zelTypeName[] = "Shapes::Point";
   static inline int live = 0;

   Point() { ++live; }
   Point( std::uint16_t x, std::uint16_t y ) : x_( x ), y_( y ) {
      if ( x == 13 ) {
         Zel::throwRangeException( "Shapes::Point::x == 13 not allowed" );
      }
      ++live;
   }
   Point( Zel::StringIterator& current, Zel::StringIterator end ) : Point() {
      x_ = Zel::parseAttribute< std::uint16_t >( current, end, "x" );
      Zel::parseLiteral( current, end, "/" );
      y_ = Zel::parseAttribute< std::uint16_t >( current, end, "y" );
   }
   Point( const Point& other ) : x_( other.x_ ), y_( other.y_ ) { ++live; }
   Point& operator=( const Point& ) = default;
   ~Point() { --live; }

   std::uint16_t x() const { return x_; }
   std::uint16_t y() const { return y_; }
   std::uint32_t hash( std::uint32_t seed ) const { return Zel::zelHash( x_, seed ) + y_; }
   bool operator==( const Point& ) const = default;

 private:
   std::uint16_t x_ = 0;
   std::uint16_t y_ = 0;
};

inline Zel::String
valueToStrep( const Point& point ) {
   return Zel::format( "%s/%s", point.x(), point.y() );
}

class Shape : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Shapes::Shape";

   const Zel::String& name() const { return name_; }
   void nameIs( const Zel::String& name ) { name_ = name; }
   const Zel::Ptr< Shape >& neighbour() const { return neighbour_; }
   void neighbourIs( const Zel::Ptr< Shape >& neighbour ) { neighbour_ = neighbour; }
   virtual std::uint64_t area() const = 0;

   Zel::TypeHandle fwkType() const override;

 protected:
   Shape() = default;
   ~Shape() override = default;

 private:
   Zel::String name_;
   Zel::Ptr< Shape > neighbour_;
};

class Square : public Shape {
 public:
   static constexpr char zelTypeName[] = "Shapes::Square";
   static Zel::Ptr< Square > SquareIs( std::uint32_t side, const Point& corner ) {
      return Zel::newEntity< Square >( side, corner );
   }

   std::uint32_t side() const { return side_; }
   const Point& corner() const { return corner_; }
   /// Returns the new side.
   std::uint32_t grow( std::uint32_t by ) { return side_ += by; }
   void fail( std::uint32_t by ) {
      throw std::out_of_range( "no more than " + std::to_string( by ) );
   }
   std::uint64_t area() const override { return std::uint64_t{ side_ } * side_; }

   Zel::TypeHandle fwkType() const override;

 protected:
   Square( std::uint32_t side, const Point& corner ) : side_( side ), corner_( corner ) {}
   ~Square() override = default;

 private:
   std::uint32_t side_;
   const Point corner_;
};

/// A square without a registration of its own.
class Tile : public Square {
 public:
   static constexpr char zelTypeName[] = "Shapes::Tile";

 protected:
   Tile() : Square( 1, Point() ) {}
};

/// An entity that nobody registered, nor its base.
class Stranger : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Shapes::Stranger";
};

inline constexpr std::array kPointRows{
   Zel::field< &Point::x >( 2, "x" ),
   Zel::field< &Point::y >( 3, "y" ),
};
inline constexpr std::array kShapeRows{
   Zel::settableValue< &Shape::name, &Shape::nameIs >( 130, "name" ),
   Zel::settablePointer< &Shape::neighbour, &Shape::neighbourIs >( 131, "neighbour" ),
   Zel::callableMethod< &Shape::area >( 132, "area" ),
   Zel::notification( 133, "moved" ),
};
inline constexpr std::array kSquareRows{
   Zel::field< &Square::side >( 386, "side" ),
   Zel::field< &Square::corner >( 387, "corner" ),
   Zel::callableMethod< &Square::grow >( 388, "grow", { "by" } ),
   Zel::callableMethod< &Square::fail >( 389, "fail", { "by" } ),
};
inline constexpr std::array kTypes{
   Zel::valueType< Point >(
      Zel::valueConstructor< Point, std::uint16_t, std::uint16_t >( { "x", "y" } ), kPointRows ),
   Zel::entityType< Shape >( {}, kShapeRows ),
   Zel::entityType< Square, Shape >( Zel::constructor< &Square::SquareIs >( { "side", "corner" } ),
                                     kSquareRows ),
};
inline constexpr Zel::TypeModule kModule{ "Shapes/Shapes", kTypes };

inline Zel::TypeHandle
Shape::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

inline Zel::TypeHandle
Square::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace Shapes
