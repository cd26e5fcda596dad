// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// soak [--minutes N | --seconds N]: random configuration writes on 64 ports, with state machine,
// range manager, schedule, task and derived class at work, held against plain arrays.
//
// Warm-up     Each port is once as full of ranges as can be, so that later memory is reused.
// Check       Between rounds of writes everything is drained. Then index, sorted ranges and
//             status must equal the arrays, and each counted type must have as many objects as
//             the arrays ask for.
// Memory      After the warm-up the resident memory may not grow by more than 1 MiB.
// Exit code   0 all held, 1 a difference, which is printed, 2 bad arguments.
// Seed        MOX_TEST_SEED gives the same writes, runs and checks again; how many of them there is
//             time for differs. The task's clock is turned by hand for that.
#include <sys/prctl.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fstream>
#include <map>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "MoxVlanMapping/MoxVlanMappingScaleSlaveSm.h"
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/AllocationTracker.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "tests/support/Chain.h"
#include "tests/support/TestSeed.h"

namespace {

using Bridging::VlanId;
using Bridging::VlanXlateMapping;
using Corvel::IntfId;
using MoxVlanMapping::VlanRangeXlateMapping;
using SteadyTime = std::chrono::steady_clock;

constexpr unsigned kPorts = 64;
constexpr unsigned kHighest = VlanId::kHighest;
constexpr std::int64_t kGrowthAllowed = 1 << 20;

/// Translated VLAN by VLAN id; 0: not configured.
using PortArray = std::array< std::uint16_t, kHighest + 1 >;

// The sum of what is mapped: /proc/self/statm lags behind by some pages a processor.
std::int64_t
residentBytes() {
   std::ifstream mapped( "/proc/self/smaps_rollup" );
   std::int64_t kibibytes = 0;
   for ( std::string word; mapped >> word; ) {
      if ( word == "Rss:" && mapped >> kibibytes ) {
         return kibibytes * 1024;
      }
   }
   throw std::runtime_error( "/proc/self/smaps_rollup: no \"Rss:\"" );
}

// A page that the kernel makes huge on its own would look like growth.
void
refuseHugePages() {
   if ( prctl( PR_SET_THP_DISABLE, 1, 0, 0, 0 ) != 0 ) {
      std::fputs( "soak: huge pages cannot be turned off, memory may jump by 2 MiB\n", stderr );
   }
}

void
require( bool holds, const std::string& what ) {
   if ( !holds ) {
      throw std::runtime_error( what );
   }
}

void
requireEqual( std::int64_t actual, std::int64_t expected, const std::string& what ) {
   require( actual == expected,
            what + ": " + std::to_string( actual ) + ", expected " + std::to_string( expected ) );
}

/// The ranges that an array stands for, ascending.
std::vector< VlanRangeXlateMapping >
rangesOf( const PortArray& port ) {
   std::vector< VlanRangeXlateMapping > ranges;
   for ( unsigned low = 1; low <= kHighest; ) {
      unsigned behind = low + 1;
      if ( port[ low ] != 0 ) {
         while ( behind <= kHighest && port[ behind ] == port[ low ] ) {
            ++behind;
         }
         ranges.emplace_back( VlanId( static_cast< std::uint16_t >( low ) ),
                              VlanId( static_cast< std::uint16_t >( behind - 1 ) ),
                              VlanXlateMapping::fromRaw( port[ low ] ) );
      }
      low = behind;
   }
   return ranges;
}

/// Whether each element of a collection goes with the range at its place, and none is left.
template < class Collection, class Ranges, class Same >
bool
agree( const Collection& collection, const Ranges& ranges, Same same ) {
   auto range = ranges.begin();
   for ( const auto& element : collection ) {
      if ( range == ranges.end() || !same( element, *range ) ) {
         return false;
      }
      ++range;
   }
   return range == ranges.end();
}

class CountingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr const char* zelTypeName = "CountingCodef";

   void processSortedVlanRange( IntfId intfId ) override {
      const auto ranges = vlanRangeEntryDir()->vlanRangeEntry( intfId );
      const auto sorted = vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intfId );
      require( ranges && sorted && ranges->vlanIdRange().size() == sorted->vidRangeSorted().size(),
               "handed over without all of its ranges sorted" );
      ++handedOver;
      clock->advance( kSecondsAnInterface );
   }
   void vlanXlateCodefComplete() override { ++drains; }

   Zel::Ptr< Zel::ManualClock > clock;   // the scheduler's
   std::uint64_t handedOver = 0;
   std::uint64_t drains = 0;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;

 private:
   // Three interfaces use up a quantum.
   static constexpr Zel::Seconds kSecondsAnInterface = 0.4 * Quen::Task::kDefaultQuantum;
};

class Soak : TestSupport::Chain {
 public:
   Soak() {
      codef_->clock = clock_;
      sm_->handleInitialized();
   }

   void warmUp() {
      for ( unsigned port = 0; port < kPorts; ++port ) {
         for ( unsigned vid = 1; vid <= kHighest; ++vid ) {
            ingressIs( port, vid, 1 + vid % 2 );
            egressIs( port, vid, 1 );
         }
      }
      check();
      for ( int round = 0; round < 20; ++round ) {
         churn();
      }
      check();
      warmedUp_ = peak_ = residentBytes();
   }

   /// A round: some thirty thousand writes in bursts, with runs of the task in between.
   void churn() {
      for ( int burst = 0; burst < 400; ++burst ) {
         burstOfWrites();
         if ( random( 0, 3 ) == 0 ) {
            constexpr std::array kPolicies{ Quen::YieldPolicy::Quantum, Quen::YieldPolicy::Always,
                                            Quen::YieldPolicy::Never };
            scheduler_->yieldPolicyIs( kPolicies[ random( 0, kPolicies.size() - 1 ) ] );
            scheduler_->runOnce();
         }
      }
   }

   void check() {
      scheduler_->runUntilIdle();
      require( !scheduler_->workWaiting(), "the scheduler still has work" );
      require( scheduleDir_->vlanXlateSchedule().empty(), "interfaces are left in the schedule" );
      requireEqual( static_cast< std::int64_t >( codef_->task()->taskWorkPending() ), 0,
                    "pending work" );
      requireEqual( static_cast< std::int64_t >( codef_->task()->taskWorkCount() ),
                    static_cast< std::int64_t >( codef_->handedOver ), "work counted" );
      for ( unsigned port = 0; port < kPorts; ++port ) {
         checkPort( port );
      }
      checkStatus();
      checkCounts();
      peak_ = std::max( peak_, residentBytes() );
      ++checks_;
   }

   void report( double seconds ) const {
      const std::int64_t end = residentBytes();
      const auto rate = static_cast< double >( writes_ ) / seconds;
      std::printf(
         "seconds            %.1f\n"
         "writes             %llu (%.0f a second)\n"
         "handed over        %llu\n"
         "drains             %llu\n"
         "checks             %llu\n"
         "resident, warm     %lld KiB\n"
         "resident, highest  %lld KiB\n"
         "resident, end      %lld KiB\n",
         seconds, static_cast< unsigned long long >( writes_ ), rate,
         static_cast< unsigned long long >( codef_->handedOver ),
         static_cast< unsigned long long >( codef_->drains ),
         static_cast< unsigned long long >( checks_ ), static_cast< long long >( warmedUp_ / 1024 ),
         static_cast< long long >( peak_ / 1024 ), static_cast< long long >( end / 1024 ) );
      for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
         std::printf( "%-60s %9lld of %lld\n", count.typeName.c_str(),
                      static_cast< long long >( count.live ),
                      static_cast< long long >( count.total ) );
      }
   }
   void requireFlat() const {
      require( peak_ <= warmedUp_ + kGrowthAllowed,
               "resident memory grew by " + std::to_string( peak_ - warmedUp_ ) + " bytes" );
   }

 private:
   unsigned random( std::size_t low, std::size_t high ) {
      return std::uniform_int_distribution< unsigned >(
         static_cast< unsigned >( low ), static_cast< unsigned >( high ) )( engine_ );
   }

   static Mox::PortVlanKey keyOf( unsigned port, unsigned vid ) {
      return { IntfId( port + 1 ), VlanId( static_cast< std::uint16_t >( vid ) ) };
   }
   static Mox::MoxVlanMappingConfig configOf( unsigned port, unsigned vid, unsigned translated ) {
      return { keyOf( port, vid ),
               VlanXlateMapping::fromRaw( static_cast< std::uint16_t >( translated ) ) };
   }
   void ingressIs( unsigned port, unsigned vid, unsigned translated ) {
      write( ingress_[ port ][ vid ], *acsd_->ingressConfigDir(), port, vid, translated );
   }
   void egressIs( unsigned port, unsigned vid, unsigned translated ) {
      write( egress_[ port ][ vid ], *acsd_->egressConfigDir(), port, vid, translated );
   }
   void write( std::uint16_t& expected, Mox::MoxVlanMappingConfigDir& dir, unsigned port,
               unsigned vid, unsigned translated ) {
      expected = static_cast< std::uint16_t >( translated );
      if ( translated == 0 ) {
         dir.configDel( keyOf( port, vid ) );
      } else {
         dir.configIs( configOf( port, vid, translated ) );
      }
      ++writes_;
   }

   // One id, a block, a whole port, a flicker on one id; or the port changes its aggregate.
   void burstOfWrites() {
      const unsigned port = random( 0, kPorts - 1 );
      const unsigned first = random( 1, kHighest );
      const unsigned translated = random( 0, 2 );
      switch ( random( 0, 99 ) ) {
      case 0:
         for ( unsigned vid = 1; vid <= kHighest; ++vid ) {
            ingressIs( port, vid, translated );
         }
         break;
      case 1:
         for ( unsigned vid = first; vid <= std::min( first + 200, kHighest ); ++vid ) {
            egressIs( port, vid, translated );
         }
         break;
      case 2:
         flipAggregate( port );
         break;
      default:
         if ( random( 0, 1 ) == 0 ) {
            for ( unsigned vid = first; vid <= std::min( first + 30, kHighest ); ++vid ) {
               ingressIs( port, vid, translated );
            }
         } else {
            for ( int i = 0; i < 30; ++i ) {
               ingressIs( port, random( 1, kHighest ), random( 0, 2 ) );
            }
         }
      }
   }
   void flipAggregate( unsigned port ) {
      inAggregate_[ port ] = !inAggregate_[ port ];
      const IntfId intf( port + 1 );
      if ( inAggregate_[ port ] ) {
         acsd_->portToLagIs( intf, IntfId( 1000 ) );
      } else {
         acsd_->portToLagDel( intf );
      }
   }

   void checkPort( unsigned port ) const {
      const std::string name = "port " + std::to_string( port + 1 );
      std::vector< VlanRangeXlateMapping > expected = rangesOf( ingress_[ port ] );
      const auto entry = rangeDir_->vlanRangeEntry( IntfId( port + 1 ) );
      const auto scale =
         codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( port + 1 ) );
      require( entry && scale, name + " has no entries" );
      require(
         agree( entry->vlanIdRange(), expected,
                []( const auto& element, const auto& range ) { return element.value() == range; } ),
         name + ": its ranges differ" );
      const std::vector< VlanRangeXlateMapping > descending( expected.rbegin(), expected.rend() );
      require( agree( entry->revSortedStartVid(), descending,
                      []( const auto& element, const auto& range ) {
                         return element.key().value() == range.lowVid().value() && element.value();
                      } ),
               name + ": its starts differ" );
      std::stable_sort( expected.begin(), expected.end(), []( const auto& a, const auto& b ) {
         return a.highVid().value() - a.lowVid().value() > b.highVid().value() - b.lowVid().value();
      } );
      require( agree( scale->vidRangeSorted(), expected,
                      []( const auto& element, const auto& range ) {
                         return element.key() == range && element.value();
                      } ),
               name + ": its sorted ranges differ" );
   }

   void checkStatus() const {
      for ( const auto& node : acsd_->statusDir()->status() ) {
         const auto& key = node.value().key();
         requireEqual( node.value().mapping().rawVlanId(),
                       egress_[ static_cast< std::size_t >( key.intfId().value() - 1 ) ]
                              [ key.vlanId().value() ],
                       "status of port " + std::to_string( key.intfId().value() ) );
      }
   }

   static std::int64_t configured( const std::array< PortArray, kPorts >& ports ) {
      std::int64_t records = 0;
      for ( const PortArray& port : ports ) {
         records +=
            std::ranges::count_if( port, []( auto translated ) { return translated != 0; } );
      }
      return records;
   }

   // The arrays say how many there must be; of all other types as many as after the first check.
   void checkCounts() {
      const std::int64_t egress = configured( egress_ );
      const std::int64_t both = configured( ingress_ ) + egress;
      const std::map< std::string, std::int64_t > expected{
         { "MoxVlanMapping::VlanRangeEntry", kPorts },
         { "MoxVlanMapping::VlanRangeEntry::ZelVlanIdRange", 0 },
         { "MoxVlanMapping::VlanRangeEntry::ZelRevSortedStartVid", 0 },
         { "MoxVlanMapping::VlanRangeEntryDir::ZelVlanRangeEntry", kPorts },
         { "MoxVlanMapping::VlanXlateScheduleDir::ZelVlanXlateSchedule", 0 },
         { "MoxVlanMapping::VlanXlateScaleEntry", kPorts },
         { "MoxVlanMapping::VlanXlateScaleEntry::ZelVidRangeSorted", 0 },
         { "Mox::MoxVlanMappingConfigDir::ZelConfig", both },
         { "Mox::MoxVlanMappingStatusDir::ZelStatus", egress },
         { "Mox::MoxCommonSmData::ZelPortToLag", std::ranges::count( inAggregate_, true ) },
      };
      requireEqual( sm_->undelivered(), 0, "undelivered mappings" );
      for ( const auto& [ typeName, live ] : expected ) {
         requireEqual( Zel::allocationCount( typeName ).live, live, typeName );
      }
      for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
         if ( !expected.contains( count.typeName ) ) {
            const auto known = others_.emplace( count.typeName, count.live ).first;
            requireEqual( count.live, known->second, count.typeName );
         }
      }
   }

   std::mt19937_64 engine_{ TestSupport::testSeed() };
   const Zel::Ptr< MoxVlanMapping::VlanMappingScaleSlaveSm > sm_ =
      MoxVlanMapping::vlanMappingScaleSlaveSmFactory( acsd_, clock_, nullptr, nullptr, rangeDir_,
                                                      scheduleDir_ );
   const Zel::Ptr< CountingCodef > codef_ =
      Zel::newEntity< CountingCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );

   std::array< PortArray, kPorts > ingress_{};
   std::array< PortArray, kPorts > egress_{};
   std::array< bool, kPorts > inAggregate_{};
   std::map< std::string, std::int64_t > others_;
   std::uint64_t writes_ = 0;
   std::uint64_t checks_ = 0;
   std::int64_t warmedUp_ = 0;
   std::int64_t peak_ = 0;
};

// Seconds to run; none for bad arguments.
double
secondsOf( int argc, char** argv ) {
   if ( argc == 1 ) {
      return 3600;
   }
   char* end = nullptr;
   const bool minutes = std::strcmp( argv[ 1 ], "--minutes" ) == 0;
   const double number = argc == 3 ? std::strtod( argv[ 2 ], &end ) : 0;
   if ( !( minutes || std::strcmp( argv[ 1 ], "--seconds" ) == 0 ) || argc != 3 || *end != '\0' ||
        !( number > 0 ) ) {
      return 0;
   }
   return minutes ? number * 60 : number;
}

void
run( double seconds ) {
   Soak soak;
   soak.warmUp();
   const auto start = SteadyTime::now();
   const auto elapsed = [ & ] {
      return std::chrono::duration< double >( SteadyTime::now() - start ).count();
   };
   do {
      soak.churn();
      soak.check();
   } while ( elapsed() < seconds );
   soak.report( elapsed() );
   soak.requireFlat();
}

}   // namespace

int
main( int argc, char** argv ) {
   const double seconds = secondsOf( argc, argv );
   if ( !( seconds > 0 ) ) {
      std::fputs( "usage: soak [--minutes N | --seconds N], N above 0; an hour when not given\n",
                  stderr );
      return 2;
   }
   std::puts( TestSupport::seedNote( TestSupport::testSeed() ).c_str() );
   refuseHugePages();
   try {
      run( seconds );
      for ( const Zel::AllocationCount& count : Zel::allocationCounts() ) {
         requireEqual( count.live, 0, count.typeName + " at the end" );
      }
   } catch ( const std::exception& difference ) {
      std::fflush( stdout );
      std::fprintf( stderr, "soak: %s\n", difference.what() );
      return 1;
   }
   std::puts( "all equal, none left" );
   return 0;
}
