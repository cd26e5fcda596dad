// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// RbTreeMap: ordered map as its readers see it; the class that derives from it stores the elements.
//
// Element    A plain value with key() and value(), stored in place. Iterators hold a copy of it,
//            which shows each overwrite while the element is stored, and its last value when it is
//            gone.
// Node       Counted element, made when an iterator's element() is first asked for, one for each
//            stored element. Notification-active, counted under its own type name. It is bound to
//            its element until that is deleted and keeps the last value afterwards.
// Ownership  Nodes belong to whoever holds them; the map holds none. Nodes and iterators may outlive
//            the map; all their elements are gone then.
// Iterators  Usable after any change, their own element's deletion included (StdIterator.h).
// Cost       Look-ups are the derived class's. An iterator is entered in a list of the map: O(1).
//            A change takes O(1) beyond its own cost while nobody stands on any element, else
//            O(iterators and nodes).
// Memory     Walking allocates nothing; element() makes the node.
// Throws     std::bad_alloc from element(), with nothing changed.
// Threads    One thread, no locks; that goes for dropping iterators and nodes, too.
#pragma once

#include <cstdint>
#include <iterator>
#include <optional>
#include <type_traits>
#include <utility>

#include "Zel/NewEntity.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/StdIterator.h"

namespace Zel {

template < class ElementType >
class RbTreeCursors;

/// An element of a map as the map's store finds it: where it is, in the store's own terms, and a
/// copy of it.
template < class ElementType >
struct RbTreeSpot {
   std::uint32_t position;
   ElementType element;
};

/// What stands on an element of a map: an iterator's position, or the inside of a node. The map
/// keeps it true through all changes.
template < class ElementType >
class RbTreeCursor {
 public:
   using Spot = RbTreeSpot< ElementType >;

   RbTreeCursor() = default;
   RbTreeCursor( const RbTreeCursors< ElementType >& list, const std::optional< Spot >& spot ) {
      if ( spot ) {
         enter( list );
         stand( *spot );
      }
   }
   RbTreeCursor( const RbTreeCursor& other ) : RbTreeCursor( other, nullptr ) {}
   RbTreeCursor( const RbTreeCursor& other, PtrInterface* node ) : node_( node ) { *this = other; }
   RbTreeCursor& operator=( const RbTreeCursor& other ) {
      if ( this != &other ) {
         leave();
         if ( other.list_ ) {
            enter( *other.list_ );
         }
         spot_ = other.spot_;
         state_ = other.state_;
         goneAt_ = other.goneAt_;
      }
      return *this;
   }
   ~RbTreeCursor() { leave(); }

   /// False at the end.
   explicit operator bool() const { return state_ != State::End; }
   const ElementType& operator*() const { return spot_.element; }
   bool linked() const { return state_ == State::Stored; }
   const Spot& spot() const { return spot_; }

   /// Steps to the element that `find( here, spot )` finds and writes into `spot`, or to the end.
   template < class Find >
   void moveTo( const Find& find ) {
      if ( find( *this, spot_ ) ) {
         state_ = State::Stored;
      } else {
         leave();
         state_ = State::End;
      }
   }

   /// Same element, or both at the end.
   friend bool operator==( const RbTreeCursor& a, const RbTreeCursor& b ) {
      return a.state_ == b.state_ &&
             ( !a || ( a.list_ == b.list_ && a.spot_.element.key() == b.spot_.element.key() &&
                       ( a.linked() || a.goneAt_ == b.goneAt_ ) ) );
   }

 private:
   friend class RbTreeCursors< ElementType >;
   enum class State : std::uint8_t { End, Stored, Gone };

   void enter( const RbTreeCursors< ElementType >& list );
   void leave();
   void stand( const Spot& spot ) {
      spot_ = spot;
      state_ = State::Stored;
   }

   const RbTreeCursors< ElementType >* list_ = nullptr;   // null at the end and behind the map
   RbTreeCursor* next_ = nullptr;
   RbTreeCursor** link_ = nullptr;   // what points here
   PtrInterface* node_ = nullptr;    // whose inside this is; null in an iterator
   Spot spot_{};
   State state_ = State::End;
   std::uint32_t goneAt_ = 0;   // the map's count of changes when the element went
};

/// All that stand on elements of one map.
template < class ElementType >
class RbTreeCursors {
 public:
   using Cursor = RbTreeCursor< ElementType >;

   RbTreeCursors() = default;
   ~RbTreeCursors() {
      while ( first_ ) {
         gone( *first_, 0 );
         first_->leave();
      }
   }
   RbTreeCursors( const RbTreeCursors& ) = delete;
   RbTreeCursors& operator=( const RbTreeCursors& ) = delete;

   bool empty() const { return !first_; }
   /// The node of the stored element at `position`; null when nobody holds one.
   PtrInterface* node( std::uint32_t position ) const {
      const Cursor* at = first_;
      while ( at && !( at->node_ && at->linked() && at->spot_.position == position ) ) {
         at = at->next_;
      }
      return at ? at->node_ : nullptr;
   }
   void overwritten( std::uint32_t position, const ElementType& element ) {
      for ( Cursor* at = first_; at; at = at->next_ ) {
         if ( at->linked() && at->spot_.position == position ) {
            at->spot_.element = element;
         }
      }
   }
   void erased( std::uint32_t position, std::uint32_t change ) {
      for ( Cursor* at = first_; at; at = at->next_ ) {
         if ( at->linked() && at->spot_.position == position ) {
            gone( *at, change );
         }
      }
   }
   void cleared( std::uint32_t change ) {
      for ( Cursor* at = first_; at; at = at->next_ ) {
         if ( at->linked() ) {
            gone( *at, change );
         }
      }
   }
   /// Gives each the position that `moved( cursor )` returns.
   template < class Moved >
   void reposition( const Moved& moved ) {
      for ( Cursor* at = first_; at; at = at->next_ ) {
         at->spot_.position = moved( *at );
      }
   }

 private:
   friend Cursor;
   static void gone( Cursor& cursor, std::uint32_t change ) {
      cursor.state_ = Cursor::State::Gone;
      cursor.goneAt_ = change;
   }

   mutable Cursor* first_ = nullptr;
};

template < class ElementType >
void
RbTreeCursor< ElementType >::enter( const RbTreeCursors< ElementType >& list ) {
   list_ = &list;
   next_ = list.first_;
   link_ = &list.first_;
   if ( next_ ) {
      next_->link_ = &next_;
   }
   list.first_ = this;
}

template < class ElementType >
void
RbTreeCursor< ElementType >::leave() {
   if ( list_ ) {
      *link_ = next_;
      if ( next_ ) {
         next_->link_ = link_;
      }
      list_ = nullptr;
   }
}

/// Counted element of a map: what element() of an iterator returns.
template < class ElementType >
class RbTreeNode : public PtrInterface {
 public:
   using Element = ElementType;

   decltype( auto ) key() const { return ( *cursor_ ).key(); }
   decltype( auto ) value() const { return ( *cursor_ ).value(); }
   /// Whether the element is stored.
   bool linked() const { return cursor_.linked(); }

 protected:
   /// Stands where `at` does.
   explicit RbTreeNode( const RbTreeCursor< Element >& at ) : cursor_( at, this ) {}

 private:
   RbTreeCursor< Element > cursor_;
};

template < class NodeType >
class RbTreeMap {
 public:
   using Node = NodeType;
   using Element = typename Node::Element;
   using Key = std::remove_cvref_t< decltype( std::declval< const Element& >().key() ) >;
   using Position = RbTreeCursor< Element >;
   using Iterator = StdIterator< RbTreeMap >;

   RbTreeMap( const RbTreeMap& ) = delete;
   RbTreeMap& operator=( const RbTreeMap& ) = delete;

   std::uint32_t size() const { return size_; }
   bool empty() const { return size_ == 0; }
   /// Elements ever inserted or deleted; wraps. An overwrite is none.
   std::uint32_t changes() const { return changes_; }

   Iterator first() const { return at( firstSpot() ); }
   Iterator begin() const { return first(); }
   std::default_sentinel_t end() const { return {}; }
   /// The element that equals `key`, else the end.
   Iterator findElement( const Key& key ) const { return at( spotOf( key ) ); }
   /// The element that equals `key`, else the first that follows it in the map's order, else the
   /// end.
   Iterator findElementOrNext( const Key& key ) const { return at( spotOrNext( key ) ); }
   bool contains( const Key& key ) const { return spotOf( key ).has_value(); }

   /// Moves to the element that now follows; for StdIterator.
   void advance( Position& position ) const {
      position.moveTo(
         [ this ]( const Position& here, Spot& spot ) { return spotBehind( here, spot ); } );
   }
   static bool linked( const Position& position ) { return position.linked(); }
   /// The counted element at a position that is not the end; for StdIterator.
   Ptr< Node > element( const Position& position ) const {
      if ( position.linked() ) {
         if ( PtrInterface* const node = cursors_.node( position.spot().position ) ) {
            return static_cast< Node* >( node );
         }
      }
      return newEntity< Node >( position );
   }

   /// For tests: asserts order, sizes and that each element is found.
   virtual void verify() const = 0;

 protected:
   using Spot = RbTreeSpot< Element >;

   RbTreeMap() = default;
   ~RbTreeMap() = default;

   virtual std::optional< Spot > firstSpot() const = 0;
   virtual std::optional< Spot > spotOf( const Key& key ) const = 0;
   virtual std::optional< Spot > spotOrNext( const Key& key ) const = 0;
   /// Writes the spot behind `position` into `spot`, which may be the position's own. False at the
   /// end, with nothing written.
   virtual bool spotBehind( const Position& position, Spot& spot ) const = 0;

   // What the derived class tells of its changes, behind each.
   void inserted() {
      ++size_;
      ++changes_;
   }
   void overwritten( std::uint32_t position, const Element& element ) {
      if ( !cursors_.empty() ) [[unlikely]] {
         cursors_.overwritten( position, element );
      }
   }
   void erased( std::uint32_t position ) {
      --size_;
      ++changes_;
      if ( !cursors_.empty() ) [[unlikely]] {
         cursors_.erased( position, changes_ );
      }
   }
   void cleared() {
      changes_ += size_;
      size_ = 0;
      cursors_.cleared( changes_ );
   }
   /// Several at once, told of by no other call.
   void inserted( std::uint32_t elements ) {
      size_ += elements;
      changes_ += elements;
   }
   RbTreeCursors< Element >& cursors() { return cursors_; }

 private:
   Iterator at( const std::optional< Spot >& spot ) const {
      return { *this, Position( cursors_, spot ) };
   }

   RbTreeCursors< Element > cursors_;
   std::uint32_t size_ = 0;
   std::uint32_t changes_ = 0;
};

}   // namespace Zel
