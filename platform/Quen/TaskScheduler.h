// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// TaskScheduler: runs scheduled tasks, one at a time, on the thread that asks for it.
//
// Order      The lowest priority value first; equal priorities in the order of their requests.
// Loop       An event loop calls runOnce() while workWaiting() says so; a notifiee on kWorkWaiting
//            is told when the first task is queued, so that the loop can be woken.
// Exceptions What leaves a task's run reaches the caller of runOnce(); the task is queued again
//            and the scheduler stays usable.
// Ownership  Holds its clock. Queued tasks are plain pointers; a task leaves the queue when it
//            goes.
// Threads    One thread, no locks.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Quen/Task.h"
#include "Zel/Clock.h"
#include "Zel/Export.h"
#include "Zel/Hash.h"
#include "Zel/Notifiee.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/String.h"
#include "Zel/TypeName.h"

namespace Quen {

/// What taskShouldYield() answers: the truth, or what a test or a trial wants to hear.
enum class YieldPolicy : std::uint8_t {
   Quantum,      ///< yes when the run has used its task's quantum
   Always,       ///< yes
   Never,        ///< no
   AfterTests,   ///< yes when the run has asked more often than yieldTestsAllowed()
};

constexpr std::uint32_t
zelHash( YieldPolicy policy, std::uint32_t seed ) {
   return Zel::singleAttrHash( static_cast< std::uint8_t >( policy ), seed );
}
/// The enumerator's name, such as "AfterTests".
ZEL_EXPORT Zel::String valueToStrep( YieldPolicy policy );
ZEL_EXPORT void zelParseValue( Zel::StringIterator& current, Zel::StringIterator end,
                               YieldPolicy& policy );

class ZEL_EXPORT TaskScheduler : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "Quen::TaskScheduler";
   /// Attribute that is notified, with no key, when the queue stops being empty.
   static constexpr Zel::AttributeId kWorkWaiting = 130;

   /// Requires: `clock` is set (asserted).
   static Zel::Ptr< TaskScheduler > TaskSchedulerIs( const Zel::Ptr< const Zel::Clock >& clock );

   const Zel::Ptr< const Zel::Clock >& clock() const { return clock_; }

   /// Whether a task is queued.
   bool workWaiting() const { return !queue_.empty(); }
   std::uint64_t tasksScheduled() const { return queue_.size(); }

   /// Runs the first task of the queue; false when there is none, or when a task asks for it
   /// from inside its own run.
   bool runOnce();
   /// Runs tasks until none is queued; returns how many runs that took.
   std::uint64_t runUntilIdle();

   YieldPolicy yieldPolicy() const { return yieldPolicy_; }
   /// Number of times that a run hears "no" under YieldPolicy::AfterTests.
   std::uint64_t yieldTestsAllowed() const { return yieldTestsAllowed_; }
   void yieldPolicyIs( YieldPolicy policy, std::uint64_t testsAllowed = 0 );

   Zel::NotifieeList* notifieeList() const override { return &notifieeList_; }
   Zel::TypeHandle fwkType() const override;

 protected:
   explicit TaskScheduler( const Zel::Ptr< const Zel::Clock >& clock );
   ~TaskScheduler() override;

 private:
   friend class Task;
   void taskAdded();
   void taskRemoved( Task& task );
   void enqueue( Task& task );

   mutable Zel::NotifieeList notifieeList_{ *this };
   const Zel::Ptr< const Zel::Clock > clock_;
   std::vector< Task* > queue_;   // in running order; room for every task that exists
   std::size_t tasks_ = 0;
   bool running_ = false;
   YieldPolicy yieldPolicy_ = YieldPolicy::Quantum;
   std::uint64_t yieldTestsAllowed_ = 0;
};

ZEL_EXPORT Zel::Ptr< TaskScheduler >
taskSchedulerFactory( const Zel::Ptr< const Zel::Clock >& clock );

}   // namespace Quen

template <>
struct Zel::TypeName< Quen::YieldPolicy > {
   static constexpr const char* value = "Quen::YieldPolicy";
};
