// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "Quen/Task.h"

#include "Quen/TaskScheduler.h"
#include "Zel/Assert.h"
#include "Zel/Exception.h"
#include "Zel/NewEntity.h"
#include "Zel/Parse.h"

namespace Quen {
namespace {

constexpr char zelSourceTag[] = "Quen/Task";

}   // namespace

TaskPriority::TaskPriority( Zel::StringIterator& current, Zel::StringIterator end )
    : value_( Zel::parseNumber< std::uint8_t >( current, end ) ) {}

Zel::String
valueToStrep( const TaskPriority& priority ) {
   return Zel::valueToStrep( priority.value() );
}

Task::Task( const Zel::Ptr< TaskScheduler >& scheduler, TaskPriority priority,
            const Zel::String& name )
    : scheduler_( scheduler ), name_( name ), priority_( priority ) {
   ZEL_ASSERT( scheduler_ );
   scheduler_->taskAdded();
}

Task::~Task() {
   zelDoZombieReactors( true );
   scheduler_->taskRemoved( *this );
}

Zel::Ptr< Task >
Task::TaskIs( const Zel::Ptr< TaskScheduler >& scheduler, TaskPriority priority,
              const Zel::String& name ) {
   return Zel::newEntity< Task >( scheduler, priority, name );
}

void
Task::taskQuantumIs( Zel::Seconds quantum ) {
   if ( !( quantum >= 0 ) ) {
      Zel::throwRangeException( "Quen::Task::taskQuantum < 0 not allowed" );
   }
   quantum_ = quantum;
}

void
Task::scheduleTask() {
   if ( !scheduled_ ) {
      scheduled_ = true;
      scheduler_->enqueue( *this );
   }
}

bool
Task::taskShouldYield() {
   ++yieldTests_;
   switch ( scheduler_->yieldPolicy() ) {
   case YieldPolicy::Always:
      return true;
   case YieldPolicy::Never:
      return false;
   case YieldPolicy::AfterTests:
      return yieldTests_ > scheduler_->yieldTestsAllowed();
   case YieldPolicy::Quantum:
      break;
   }
   return running_ && scheduler_->clock()->now() - runStart_ >= quantum_;
}

void
Task::run() {
   running_ = true;
   yieldTests_ = 0;
   try {
      runStart_ = scheduler_->clock()->now();
      notifieeList_.notify( kRun, nullptr );
   } catch ( ... ) {
      // The run did not finish its work, so it is asked for again.
      running_ = false;
      scheduleTask();
      throw;
   }
   running_ = false;
}

Zel::Ptr< Task >
taskFactory( const Zel::Ptr< TaskScheduler >& scheduler, TaskPriority priority,
             const Zel::String& name ) {
   return Task::TaskIs( scheduler, priority, name );
}

}   // namespace Quen
