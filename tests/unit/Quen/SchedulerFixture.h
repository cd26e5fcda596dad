// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// SchedulerFixture: a scheduler on a manual clock, with workers whose runs are logged by name.
#pragma once

#include <functional>
#include <map>
#include <string>

#include "Quen/Task.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Clock.h"
#include "Zel/NewEntity.h"
#include "Zel/Reactor.h"
#include "tests/support/NoneLeftTest.h"

namespace TestQuen {

/// A task and what to do when it runs.
struct Worker {
   Zel::Ptr< Quen::Task > task;
   std::function< void() > work;
};

class WorkerReactor : public Zel::Reactor< Quen::Task, Worker > {
 public:
   static constexpr char zelTypeName[] = "TestQuen::WorkerReactor";
   WorkerReactor( const Zel::Ptr< Quen::Task >& task, Worker* worker, std::string* log )
       : Reactor( task, worker ), log_( log ) {}

   void onAttribute( Zel::AttributeId attribute, const void* key ) override {
      EXPECT_EQ( attribute, Quen::Task::kRun );
      EXPECT_EQ( key, nullptr );
      *log_ += notifier()->name().str();
      if ( const auto work = owner()->work ) {
         work();
      }
   }

 private:
   std::string* const log_;
};

class SchedulerFixture : public TestSupport::NoneLeftTest {
 protected:
   /// Makes a worker whose task has the name and priority.
   Quen::Task& make( const std::string& name, std::uint8_t priority = 10 ) {
      Worker& worker = workers_[ name ];
      worker.task = Quen::taskFactory( scheduler_, Quen::TaskPriority( priority ), name );
      reactors_[ name ] = Zel::newEntity< WorkerReactor >( worker.task, &worker, &log_ );
      return *worker.task;
   }
   Quen::Task& task( const std::string& name ) { return *workers_.at( name ).task; }
   std::function< void() >& work( const std::string& name ) { return workers_.at( name ).work; }
   /// Drops the test's references to a task.
   void drop( const std::string& name ) {
      reactors_.erase( name );
      workers_.at( name ).task = nullptr;
   }
   void schedule( const std::string& names ) {
      for ( const char name : names ) {
         task( std::string( 1, name ) ).scheduleTask();
      }
   }
   /// Runs until idle and returns the names of the tasks that ran.
   std::string run() {
      log_.clear();
      scheduler_->runUntilIdle();
      return log_;
   }

   std::string log_;
   Zel::Ptr< Zel::ManualClock > clock_ = Zel::manualClockFactory();
   Zel::Ptr< Quen::TaskScheduler > scheduler_ = Quen::taskSchedulerFactory( clock_ );
   std::map< std::string, Worker > workers_;
   std::map< std::string, Zel::Ptr< WorkerReactor > > reactors_;
};

}   // namespace TestQuen
