// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The range-scale task under every yield policy with a hostile derived class, against a queue.
//
// A script plans acts; the derived class does those that are planned, one or two at each interface
// that it is handed, and one at each completion.

#include <algorithm>
#include <array>
#include <cstdint>
#include <deque>
#include <exception>
#include <functional>
#include <map>
#include <ostream>
#include <string>
#include <utility>

#include <gtest/gtest.h>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "tests/model/RangeScript.h"
#include "tests/support/Chain.h"
#include "tests/support/ModelRun.h"

namespace {

using Corvel::IntfId;
using RangeScript::Table;

constexpr std::uint64_t kInterfaces = 6;
constexpr double kTick = 0.03;                 // an interface takes so much of the quantum
constexpr std::uint64_t kTestsInQuantum = 4;   // the first test that finds 0.1 s used up

enum class Act {
   Schedule,
   Unschedule,
   UnscheduleThis,   // the interface that is being handed over
   AddVlan,
   DeleteVlan,
   DeleteRangeEntry,
   DeleteScaleEntry,
   DropCodef,
   Throw,
};

struct Doing {
   Act act = Act::Schedule;
   std::uint64_t intf = 1;
   unsigned vid = 1;
};

std::ostream&
operator<<( std::ostream& out, const Doing& doing ) {
   static constexpr const char* kNames[] = {
      "schedule",           "unschedule",         "unschedule this", "add vlan", "delete vlan",
      "delete range entry", "delete scale entry", "drop the codef",  "throw" };
   return out << kNames[ static_cast< int >( doing.act ) ] << " (interface " << doing.intf
              << ", vlan " << doing.vid << ")";
}

enum class Op { Do, Plan, Policy, RunOnce, RunUntilIdle, NewCodef };

struct Step {
   Op op;
   Doing doing;
   Quen::YieldPolicy policy;
   std::uint64_t tests;   // of the policy AfterTests
};

std::ostream&
operator<<( std::ostream& out, const Step& step ) {
   switch ( step.op ) {
   case Op::Do:
      return out << step.doing;
   case Op::Plan:
      return out << "plan: " << step.doing;
   case Op::Policy:
      return out << "yield " << valueToStrep( step.policy ).str() << " " << step.tests;
   case Op::RunOnce:
      return out << "run once";
   case Op::RunUntilIdle:
      return out << "run until idle";
   case Op::NewCodef:
      return out << "new codef";
   }
   return out;
}

class Thrown : public std::exception {};

std::string
handedText( std::uint64_t intf, const std::string& sorted ) {
   return std::to_string( intf ) + " " + sorted + "; ";
}

// Until nothing waits, or what the derived class throws ends it; planned acts are finite.
template < class Index >
void
run( Index& index, const Step& step ) {
   try {
      do {
         index.runOnce();
      } while ( step.op == Op::RunUntilIdle && index.waits() );
   } catch ( const Thrown& ) {
      index.log += "thrown";
   }
}

class Model {
 public:
   using Step = ::Step;
   std::string log;

   bool allows( const Step& step ) const {
      return step.op != Op::Do ||
             ( step.doing.act != Act::UnscheduleThis && step.doing.act != Act::Throw );
   }
   void apply( const Step& step ) {
      log.clear();
      switch ( step.op ) {
      case Op::Do:
         act( step.doing, 0 );
         break;
      case Op::Plan:
         plan_.push_back( step.doing );
         break;
      case Op::Policy:
         policy_ = step.policy;
         tests_ = step.tests;
         break;
      case Op::NewCodef:
         if ( !codef_ ) {
            codef_ = scheduled_ = true;
            sorted_.clear();
            done_ = pending_ = 0;
         }
         break;
      default:
         run( *this, step );
         break;
      }
   }

   bool waits() const { return codef_ && scheduled_; }
   void runOnce() {
      if ( !waits() ) {
         return;
      }
      scheduled_ = false;
      try {
         drain();
      } catch ( const Thrown& ) {
         scheduled_ = true;
         throw;
      }
   }

   std::string text() const {
      std::string all = log + "\nwaiting";
      for ( const std::uint64_t intf : waiting_ ) {
         all += " " + std::to_string( intf );
      }
      all += codef_ ? "\ndone " + std::to_string( done_ ) + " pending " +
                         std::to_string( pending_ ) + ( scheduled_ ? " scheduled\n" : "\n" )
                    : "\nno codef\n";
      for ( const auto& [ intf, table ] : tables_ ) {
         all += RangeScript::indexText( intf, table );
      }
      if ( codef_ ) {
         for ( const auto& [ intf, sorted ] : sorted_ ) {
            all += "sorted " + std::to_string( intf ) + " " + sorted + "\n";
         }
      }
      return all;
   }

 private:
   void drain() {
      if ( waiting_.empty() ) {
         log += "complete; ";
         if ( !plan_.empty() ) {
            doPlanned( 0 );
         }
         return;
      }
      doneInRun_ = 0;
      while ( !waiting_.empty() ) {
         const std::uint64_t intf = waiting_.front();
         try {
            process( intf );
         } catch ( const Thrown& ) {
            account();
            throw;
         }
         unschedule( intf );
         ++doneInRun_;
         if ( yields() ) {
            break;
         }
      }
      account();
      scheduled_ = scheduled_ || !waiting_.empty();
   }
   bool yields() const {
      switch ( policy_ ) {
      case Quen::YieldPolicy::Always:
         return true;
      case Quen::YieldPolicy::Never:
         return false;
      case Quen::YieldPolicy::AfterTests:
         return doneInRun_ > tests_;
      case Quen::YieldPolicy::Quantum:
         break;
      }
      return doneInRun_ >= kTestsInQuantum;
   }
   // Only what ended is counted, and only of a run that had something to drain.
   void account() {
      done_ += doneInRun_;
      doneInRun_ = 0;
      pending_ = waiting_.size();
   }
   void process( std::uint64_t intf ) {
      sorted_[ intf ] =
         RangeScript::text( RangeScript::bySize( RangeScript::runsOf( tables_[ intf ] ) ) );
      log += handedText( intf, sorted_[ intf ] );
      for ( std::uint64_t i = 0; i < 1 + intf % 2 && !plan_.empty(); ++i ) {
         doPlanned( intf );
      }
   }
   void doPlanned( std::uint64_t intf ) {
      const Doing doing = plan_.front();
      plan_.pop_front();
      act( doing, intf );
   }
   void act( const Doing& doing, std::uint64_t present ) {
      switch ( doing.act ) {
      case Act::Schedule:
         if ( std::ranges::find( waiting_, doing.intf ) == waiting_.end() ) {
            waiting_.push_back( doing.intf );
            scheduled_ = true;
         }
         break;
      case Act::Unschedule:
         unschedule( doing.intf );
         break;
      case Act::UnscheduleThis:
         unschedule( present );
         break;
      case Act::AddVlan:
         tables_[ doing.intf ][ doing.vid ] = 3001;
         break;
      case Act::DeleteVlan:
         tables_[ doing.intf ].erase( doing.vid );
         break;
      case Act::DeleteRangeEntry:
         tables_.erase( doing.intf );
         break;
      case Act::DeleteScaleEntry:
         sorted_.erase( doing.intf );
         break;
      case Act::DropCodef:
         codef_ = false;
         break;
      case Act::Throw:
         throw Thrown();
      }
   }
   // Leaving the schedule is a change, too, and asks for the task.
   void unschedule( std::uint64_t intf ) {
      scheduled_ = std::erase( waiting_, intf ) != 0 || scheduled_;
   }

   std::deque< std::uint64_t > waiting_;
   std::deque< Doing > plan_;
   std::map< std::uint64_t, Table > tables_;
   std::map< std::uint64_t, std::string > sorted_;
   Quen::YieldPolicy policy_ = Quen::YieldPolicy::Quantum;
   std::uint64_t tests_ = 0;
   bool codef_ = true;
   bool scheduled_ = true;
   std::uint64_t doneInRun_ = 0;
   std::uint64_t done_ = 0;
   std::uint64_t pending_ = 0;
};

class HostileCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "CodefModelTest::HostileCodef";
   void processSortedVlanRange( IntfId intfId ) override { process( intfId.value() ); }
   void vlanXlateCodefComplete() override { complete(); }

   std::function< void( std::uint64_t ) > process;
   std::function< void() > complete;

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
   ~HostileCodef() override { zelDoZombieReactors( true ); }
};

class Real : TestSupport::Chain {
 public:
   std::string log;

   Real() { makeCodef(); }

   void apply( const Step& step ) {
      log.clear();
      switch ( step.op ) {
      case Op::Do:
         act( step.doing, 0 );
         break;
      case Op::Plan:
         plan_.push_back( step.doing );
         break;
      case Op::Policy:
         scheduler_->yieldPolicyIs( step.policy, step.tests );
         break;
      case Op::NewCodef:
         if ( !codef_ ) {
            makeCodef();
         }
         break;
      default:
         run( *this, step );
         break;
      }
   }

   bool waits() const { return codef_ && codef_->task()->scheduled(); }
   void runOnce() { scheduler_->runOnce(); }

   std::string text() const {
      std::string all = log + "\nwaiting";
      for ( const auto& member : scheduleDir_->vlanXlateSchedule() ) {
         all += " " + std::to_string( member.key().value() );
      }
      scheduleDir_->vlanXlateSchedule().verify();
      if ( codef_ ) {
         const auto task = codef_->task();
         all += "\ndone " + std::to_string( task->taskWorkCount() ) + " pending " +
                std::to_string( task->taskWorkPending() ) +
                ( task->scheduled() ? " scheduled\n" : "\n" );
      } else {
         all += "\nno codef\n";
      }
      for ( std::uint64_t intf = 1; intf <= kInterfaces; ++intf ) {
         if ( const auto entry = rangeDir_->vlanRangeEntry( IntfId( intf ) ) ) {
            all += RangeScript::indexText( intf, *entry );
         }
      }
      for ( std::uint64_t intf = 1; codef_ && intf <= kInterfaces; ++intf ) {
         if ( const auto entry =
                 codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( intf ) ) ) {
            all += "sorted " + std::to_string( intf ) + " " +
                   RangeScript::sortedText( entry.get() ) + "\n";
         }
      }
      return all;
   }

 private:
   void makeCodef() {
      codef_ = Zel::newEntity< HostileCodef >( nullptr, scheduler_, rangeDir_, scheduleDir_ );
      HostileCodef* const codef = codef_.get();
      codef->process = [ this, codef ]( std::uint64_t intf ) { handed( *codef, intf ); };
      codef->complete = [ this ] {
         log += "complete; ";
         if ( !plan_.empty() ) {
            doPlanned( 0 );
         }
      };
   }
   void handed( const HostileCodef& codef, std::uint64_t intf ) {
      clock_->advance( kTick );
      const auto entry = codef.vlanXlateScaleEntryDir()->vlanXlateScaleEntry( IntfId( intf ) );
      log += handedText( intf, RangeScript::sortedText( entry.get() ) );
      for ( std::uint64_t i = 0; i < 1 + intf % 2 && !plan_.empty(); ++i ) {
         doPlanned( intf );
      }
   }
   void doPlanned( std::uint64_t intf ) {
      const Doing doing = plan_.front();
      plan_.pop_front();
      act( doing, intf );
   }
   void act( const Doing& doing, std::uint64_t present ) {
      const IntfId intfId( doing.intf );
      const Bridging::VlanId vid( doing.vid );
      switch ( doing.act ) {
      case Act::Schedule:
         scheduleDir_->vlanXlateScheduleIs( intfId );
         break;
      case Act::Unschedule:
         scheduleDir_->vlanXlateScheduleDel( intfId );
         break;
      case Act::UnscheduleThis:
         scheduleDir_->vlanXlateScheduleDel( IntfId( present ) );
         break;
      case Act::AddVlan:
         mgr_->addVlanToIdx( intfId, vid, Bridging::VlanXlateMapping::fromRaw( 3001 ) );
         break;
      case Act::DeleteVlan:
         mgr_->deleteVlanFromIdx( intfId, vid );
         break;
      case Act::DeleteRangeEntry:
         rangeDir_->vlanRangeEntryDel( intfId );
         break;
      case Act::DeleteScaleEntry:
         if ( codef_ ) {
            codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntryDel( intfId );
         }
         break;
      case Act::DropCodef:
         codef_ = nullptr;
         break;
      case Act::Throw:
         throw Thrown();
      }
   }

   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   Zel::Ptr< HostileCodef > codef_;
   std::deque< Doing > plan_;
};

rc::Gen< Step >
steps( bool hostile ) {
   return TestSupport::stepsOf(
      []( Op op, Act act, std::uint64_t intf, unsigned vid, Quen::YieldPolicy policy,
          std::uint64_t tests ) {
         return Step{ op, { act, intf, vid }, policy, tests };
      },
      rc::gen::weightedElement< Op >( { { 10, Op::Do },
                                        { hostile ? 8 : 0, Op::Plan },
                                        { 2, Op::Policy },
                                        { 5, Op::RunOnce },
                                        { 2, Op::RunUntilIdle },
                                        { hostile ? 1 : 0, Op::NewCodef } } ),
      rc::gen::weightedElement< Act >( { { 8, Act::Schedule },
                                         { 3, Act::Unschedule },
                                         { hostile ? 3 : 0, Act::UnscheduleThis },
                                         { 6, Act::AddVlan },
                                         { 3, Act::DeleteVlan },
                                         { hostile ? 1 : 0, Act::DeleteRangeEntry },
                                         { hostile ? 1 : 0, Act::DeleteScaleEntry },
                                         { hostile ? 1 : 0, Act::DropCodef },
                                         { hostile ? 2 : 0, Act::Throw } } ),
      rc::gen::inRange< std::uint64_t >( 1, kInterfaces + 1 ), rc::gen::inRange( 1u, 12u ),
      rc::gen::element( Quen::YieldPolicy::Never, Quen::YieldPolicy::Always,
                        Quen::YieldPolicy::AfterTests, Quen::YieldPolicy::Quantum ),
      rc::gen::inRange< std::uint64_t >( 0, 4 ) );
}

TEST( CodefModelTest, DrainsFirstInFirstOutUnderEveryPolicy ) {
   TestSupport::expectModelled< Model, Real >( steps( false ), { 1500, 150 } );
}

TEST( CodefModelTest, BearsADerivedClassThatThrowsReschedulesDeletesAndChangesRanges ) {
   TestSupport::expectModelled< Model, Real >( steps( true ), { 1500, 150 } );
}

}   // namespace
