// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Task: a piece of work that a scheduler runs when it is asked for, a quantum at a time.
//
// A run is a notification: whoever is to work watches the task with a notifiee and reacts to
// kRun. The reaction asks taskShouldYield() between units of work and comes back soon after it
// says yes; what is left is asked for again with scheduleTask().
//
// Ownership  The task holds its scheduler; the scheduler keeps a plain pointer to a scheduled
//            task, which leaves the queue when it goes.
// Requests   scheduleTask() only queues. Two requests before a run give one run; a request made
//            during the task's own run gives one more run.
// Threads    One thread, no locks.
#pragma once

#include <compare>
#include <cstdint>

#include "Zel/Clock.h"
#include "Zel/Export.h"
#include "Zel/Hash.h"
#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/String.h"

namespace Quen {

class TaskScheduler;

/// Lower values run first; equal ones take turns. The default, 0, is the first.
class ZEL_EXPORT TaskPriority {
 public:
   static constexpr char zelTypeName[] = "Quen::TaskPriority";

   constexpr TaskPriority() = default;
   /// Parses a bare number.
   TaskPriority( Zel::StringIterator& current, Zel::StringIterator end );
   explicit constexpr TaskPriority( std::uint8_t value ) : value_( value ) {}
   constexpr std::uint8_t value() const { return value_; }
   friend constexpr auto operator<=>( const TaskPriority&, const TaskPriority& ) = default;

 private:
   std::uint8_t value_ = 0;
};

constexpr std::uint32_t
zelHash( const TaskPriority& priority, std::uint32_t seed ) {
   return Zel::singleAttrHash( priority.value(), seed );
}
/// A bare number.
ZEL_EXPORT Zel::String valueToStrep( const TaskPriority& priority );

class ZEL_EXPORT Task : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Quen::Task";
   /// Attribute that is notified, with no key, to run the task.
   static constexpr Zel::AttributeId kRun = 130;
   static constexpr Zel::Seconds kDefaultQuantum = 0.01;

   /// Requires: `scheduler` is set (asserted).
   static Zel::Ptr< Task > TaskIs( const Zel::Ptr< TaskScheduler >& scheduler,
                                   TaskPriority priority, const Zel::String& name );

   const Zel::Ptr< TaskScheduler >& scheduler() const { return scheduler_; }
   TaskPriority priority() const { return priority_; }
   const Zel::String& name() const { return name_; }

   /// How long one run may take before taskShouldYield() says yes.
   Zel::Seconds taskQuantum() const { return quantum_; }
   /// Throws Zel::RangeException "Quen::Task::taskQuantum < 0 not allowed".
   void taskQuantumIs( Zel::Seconds quantum );

   /// Asks for a run. Allocates nothing.
   void scheduleTask();
   /// Whether a run was asked for and has not begun.
   bool scheduled() const { return scheduled_; }

   /// Whether the run has used its quantum, or what the scheduler's yield policy says instead.
   /// Outside of a run the quantum does not tick and nothing has to be yielded to.
   bool taskShouldYield();

   /// Work items done since the task was made.
   std::uint64_t taskWorkCount() const { return workCount_; }
   void taskWorkCountInc( std::uint64_t items ) { workCount_ += items; }
   /// Work items still to do, as the worker last said.
   std::uint64_t taskWorkPending() const { return workPending_; }
   void taskWorkPendingIs( std::uint64_t items ) { workPending_ = items; }

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   Task( const Zel::Ptr< TaskScheduler >& scheduler, TaskPriority priority,
         const Zel::String& name );
   ~Task() override;

 private:
   friend class TaskScheduler;
   void run();

   mutable Zel::NotifieeList notifieeList_{ *this };
   const Zel::Ptr< TaskScheduler > scheduler_;
   const Zel::String name_;
   const TaskPriority priority_;
   bool scheduled_ = false;
   bool running_ = false;
   Zel::Seconds quantum_ = kDefaultQuantum;
   Zel::Seconds runStart_ = 0;
   std::uint64_t yieldTests_ = 0;   // in the present run
   std::uint64_t workCount_ = 0;
   std::uint64_t workPending_ = 0;
};

ZEL_EXPORT Zel::Ptr< Task > taskFactory( const Zel::Ptr< TaskScheduler >& scheduler,
                                         TaskPriority priority, const Zel::String& name );

}   // namespace Quen
