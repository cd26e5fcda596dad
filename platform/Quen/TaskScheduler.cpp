// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Quen/TaskScheduler.h"

#include <algorithm>
#include <array>

#include "Zel/Assert.h"
#include "Zel/NewEntity.h"
#include "Zel/Parse.h"

namespace Quen {
namespace {

constexpr char zelSourceTag[] = "Quen/TaskScheduler";

// In the order of the enumerators.
constexpr std::array kPolicyNames{ "Quantum", "Always", "Never", "AfterTests" };

// Puts a flag back when a scope is left, by an exception too.
class FlagGuard {
 public:
   explicit FlagGuard( bool& flag ) : flag_( flag ) { flag_ = true; }
   ~FlagGuard() { flag_ = false; }
   FlagGuard( const FlagGuard& ) = delete;
   FlagGuard& operator=( const FlagGuard& ) = delete;

 private:
   bool& flag_;
};

}   // namespace

Zel::String
valueToStrep( YieldPolicy policy ) {
   return kPolicyNames[ static_cast< std::size_t >( policy ) ];
}

void
zelParseValue( Zel::StringIterator& current, Zel::StringIterator end, YieldPolicy& policy ) {
   const std::size_t chosen = Zel::parseChoice( current, end, kPolicyNames );
   policy = static_cast< YieldPolicy >( chosen );
}

TaskScheduler::TaskScheduler( const Zel::Ptr< const Zel::Clock >& clock ) : clock_( clock ) {
   ZEL_ASSERT( clock_ );
}

TaskScheduler::~TaskScheduler() {
   zelDoZombieReactors( true );
   ZEL_ASSERT( tasks_ == 0 );
}

Zel::Ptr< TaskScheduler >
TaskScheduler::TaskSchedulerIs( const Zel::Ptr< const Zel::Clock >& clock ) {
   return Zel::newEntity< TaskScheduler >( clock );
}

// Room is made when a task comes, so that asking for its run never allocates.
void
TaskScheduler::taskAdded() {
   queue_.reserve( tasks_ + 1 );
   ++tasks_;
}

void
TaskScheduler::taskRemoved( Task& task ) {
   std::erase( queue_, &task );
   --tasks_;
}

void
TaskScheduler::enqueue( Task& task ) {
   const auto behind = std::ranges::upper_bound( queue_, task.priority(), {}, &Task::priority );
   queue_.insert( behind, &task );
   if ( queue_.size() == 1 ) {
      notifieeList_.notify( kWorkWaiting, nullptr );
   }
}

bool
TaskScheduler::runOnce() {
   if ( queue_.empty() || running_ ) {
      return false;
   }
   const Zel::Ptr< TaskScheduler > self( this );   // the task may drop the last other one
   const FlagGuard inProgress( running_ );
   const Zel::Ptr< Task > task( queue_.front() );
   queue_.erase( queue_.begin() );
   task->scheduled_ = false;
   task->run();
   return true;
}

std::uint64_t
TaskScheduler::runUntilIdle() {
   const Zel::Ptr< TaskScheduler > self( this );
   std::uint64_t runs = 0;
   while ( runOnce() ) {
      ++runs;
   }
   return runs;
}

void
TaskScheduler::yieldPolicyIs( YieldPolicy policy, std::uint64_t testsAllowed ) {
   yieldPolicy_ = policy;
   yieldTestsAllowed_ = testsAllowed;
}

Zel::Ptr< TaskScheduler >
taskSchedulerFactory( const Zel::Ptr< const Zel::Clock >& clock ) {
   return TaskScheduler::TaskSchedulerIs( clock );
}

}   // namespace Quen
