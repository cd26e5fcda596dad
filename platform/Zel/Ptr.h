// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Ptr: counted pointer to a framework object.
//
// Size       One pointer; the count lives in the object (PtrInterface, NotifieeConst).
// Ownership  Every non-null Ptr holds one reference. The last one to go destroys the object, at
//            once and on the spot: code reached from there runs before the Ptr's user goes on.
//            Empty a member before its reference is dropped (`auto gone = std::move( task_ );`).
// Passing    `const Ptr< T >&` when the callee may keep it, `T&` when it only looks.
// Threads    Copies may be made and dropped by several threads only under threadSafePtrIs( true ).
#pragma once

#include <concepts>
#include <cstddef>
#include <utility>

namespace Zel {

/// Says that a raw pointer's reference passes to the Ptr built from it.
struct AdoptReference {};
inline constexpr AdoptReference adoptReference{};

/// Whether a pointer to From is also one to To.
template < class From, class To >
concept PointsTo = std::convertible_to< From*, To* >;

template < class T >
class Ptr {
 public:
   using Element = T;

   Ptr() = default;
   Ptr( std::nullptr_t ) {}
   Ptr( T* object ) : object_( object ) {
      if ( object_ ) {
         object_->zelReferenceInc();
      }
   }
   Ptr( T* object, AdoptReference ) : object_( object ) {}
   Ptr( const Ptr& other ) : Ptr( other.object_ ) {}
   Ptr( Ptr&& other ) noexcept : object_( std::exchange( other.object_, nullptr ) ) {}
   template < PointsTo< T > U >
   Ptr( const Ptr< U >& other ) : Ptr( other.get() ) {}
   template < PointsTo< T > U >
   Ptr( Ptr< U >&& other ) noexcept : object_( other.release() ) {}
   ~Ptr() {
      if ( object_ ) {
         object_->zelReferenceDec();
      }
   }

   // By value and swap: the old object goes last, when this pointer already holds the new one.
   Ptr& operator=( Ptr other ) noexcept {
      std::swap( object_, other.object_ );
      return *this;
   }

   T* get() const { return object_; }
   T& operator*() const { return *object_; }
   T* operator->() const { return object_; }
   explicit operator bool() const { return object_ != nullptr; }

   /// Hands the reference to the caller and becomes null.
   [[nodiscard]] T* release() { return std::exchange( object_, nullptr ); }

   template < class U >
   friend bool operator==( const Ptr& a, const Ptr< U >& b ) {
      return a.get() == b.get();
   }
   friend bool operator==( const Ptr& a, std::nullptr_t ) { return a.object_ == nullptr; }

 private:
   T* object_ = nullptr;
};

}   // namespace Zel
