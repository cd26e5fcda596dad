// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// What a trace call site costs, disabled and enabled, and a call by generic access.
#include <array>
#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <vector>

#include "Kirlog/PelrecMessage.h"
#include "Pelrec/Trace.h"
#include "Zel/GenericIf.h"
#include "Zel/Trace.h"
#include "bench/LibraryIndex.h"
#include "bench/Passes.h"
#include "bench/Report.h"
#include "bench/Workloads.h"

namespace {

using namespace Bench;

constexpr const char* zelSourceTag = "bench/CallBench";
constexpr std::size_t kCalls = 10000;

Zel::TraceHandle traceHandle( "CallBench", false );
constinit Kirlog::PelrecMessage< 5, "ii" > message( "call %s of %s" );

// `call` sits in a loop that the compiler cannot shorten.
template < class Call >
void
measureCall( const Row& row, const char* subject, std::uint32_t pelrecLevels, const Call& call ) {
   measure( row, subject, [ = ]( benchmark::State& state ) {
      const std::uint32_t before = Pelrec::trace().levelMask();
      Pelrec::trace().levelMaskIs( pelrecLevels );
      const double figure = nanosecondsPerOperation( state, [ & ] {
         return [ & ] {
            for ( std::size_t i = 0; i < kCalls; ++i ) {
               benchmark::DoNotOptimize( i );
               call( i );
            }
            return kCalls;
         };
      } );
      Pelrec::trace().levelMaskIs( before );
      return figure;
   } );
}

void
addTraceRows() {
   constexpr const char* kNone = "empty loop";
   const auto nothing = []( std::size_t ) {};
   const auto zelTrace = []( std::size_t i ) { ZEL_TRACE( traceHandle, 3, 1, "call ", i ); };
   const auto pelrec = []( std::size_t i ) { message( i, kCalls ); };
   const std::string group = "Trace: ns per call site";

   const Row zel{ group, "Zel trace, disabled", { over( kNone, 1 ) } };
   measureCall( zel, kLibrary, 0, zelTrace );
   measureCall( zel, kNone, 0, nothing );
   const Row disabled{ group, "Pelrec record, disabled", { over( kNone, 1 ) } };
   measureCall( disabled, kLibrary, 0, pelrec );
   measureCall( disabled, kNone, 0, nothing );
   const Row enabled{ group, "Pelrec record, enabled", { atMost( 20 ) } };
   measureCall( enabled, kLibrary, ~0u, pelrec );
   measureCall( enabled, kNone, ~0u, nothing );
}

/// addVlanToIdx with its arguments made beforehand.
struct Generic {
   LibraryIndex index{};
   Zel::Value mgr = Zel::Value::of( index.mgr() );
   Zel::AttributeId attribute;
   std::vector< std::array< Zel::Value, 3 > > arguments{};

   explicit Generic( const Script& script )
       : attribute( Zel::zelAttributeByName( mgr.type(), "addVlanToIdx" )->id ) {
      for ( const Operation& operation : script.timed ) {
         arguments.push_back( { Zel::Value::of( operation.intf ), Zel::Value::of( operation.vid ),
                                Zel::Value::of( operation.mapping ) } );
      }
   }
   std::size_t operator()() {
      Zel::Value result;
      for ( const auto& each : arguments ) {
         if ( Zel::genericIfAttributeOp( result, mgr, attribute,
                                         static_cast< unsigned >( Zel::OpCode::Call ),
                                         each ) != Zel::kDone ) {
            throw std::logic_error( "the generic call was refused" );
         }
      }
      return arguments.size();
   }
};

void
addGenericRow( const Workload& workload ) {
   constexpr const char* kDirect = "direct call";
   Random random( 10 );
   const Script script = workload.draw( random );
   Pass< LibraryIndex > direct( script );
   Generic generic( script );
   direct();
   generic();
   if ( direct.index.ranges() != generic.index.ranges() ) {
      throw std::runtime_error( "generic access leads to another index" );
   }
   const Row row{ "Generic access: ns per call of addVlanToIdx",
                  workload.name,
                  { over( kDirect, 8 ), shownBeside( kDirect ) } };
   measurePasses< Generic >( row, kLibrary, workload );
   measurePasses< Pass< LibraryIndex > >( row, kDirect, workload );
}

}   // namespace

void
Bench::addRows() {
   addTraceRows();
   addGenericRow( sequentialAdd() );
   addGenericRow( randomAdd() );
   addGenericRow( distinctAdd() );
}
