// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/Report.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <streambuf>

#include "tests/support/OperatorNew.h"

namespace Agent {
namespace {

// Output that itself asks for no memory.
class FixedBuffer : public std::streambuf {
 public:
   FixedBuffer() { setp( room_, room_ + sizeof room_ ); }
   std::string text() const { return { pbase(), pptr() }; }

 private:
   char room_[ 8192 ];
};

Report
twoPorts() {
   Report report;
   for ( const std::string name : { "b-with-a-name-that-is-not-short", "a-with-a-name-as-long" } ) {
      PortReport& port = report.ports.emplace_back();
      port.name = name;
      port.lag = "lag";
      port.ranges = { { 10, 20, 3001, 1, 1 }, { 30, 30, 3002, 2, std::nullopt } };
   }
   return report;
}

using Print = std::function< void( std::ostream& ) >;

// Prints with the n-th request for memory refused, for each n; how many there were.
unsigned
refuseEach( const Print& print ) {
   FixedBuffer whole;
   std::ostream out( &whole );
   print( out );
   for ( unsigned n = 0;; ++n ) {
      FixedBuffer part;
      std::ostream broken( &part );
      bool refused = false;
      bool thrown = false;
      {
         unsigned request = 0;
         const TestSupport::OperatorNewHook hook( [ & ] {
            if ( request++ == n ) {
               refused = true;
               throw std::bad_alloc();
            }
         } );
         try {
            print( broken );
         } catch ( const std::bad_alloc& ) {
            thrown = true;
         }
      }
      EXPECT_EQ( thrown, refused ) << "request " << n;
      EXPECT_TRUE( whole.text().starts_with( part.text() ) ) << part.text();
      if ( !refused ) {
         EXPECT_EQ( part.text(), whole.text() );
         return n;
      }
   }
}

TEST( Report, MemoryThatRunsOutWhileItIsPrintedIsAnException ) {
   const Report report = twoPorts();
   const PortReport& port = report.ports.front();
   const auto order = RangeOrder::Vid;
   const std::vector< Print > prints{
      [ & ]( std::ostream& out ) { printSummary( out, report ); },
      [ & ]( std::ostream& out ) { printRanges( out, port, order ); },
      [ & ]( std::ostream& out ) { printPort( out, port, order ); },
      [ & ]( std::ostream& out ) { printSummaryJson( out, report ); },
      [ & ]( std::ostream& out ) { printRangesJson( out, report.ports, order ); },
      [ & ]( std::ostream& out ) { printPortJson( out, port, order ); },
   };
   for ( const Print& print : prints ) {
      EXPECT_GT( refuseEach( print ), 2u );
   }
}

}   // namespace
}   // namespace Agent
