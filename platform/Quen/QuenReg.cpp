// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// The types of this folder, by name.
#include <array>

#include "Quen/Task.h"
#include "Quen/TaskScheduler.h"
#include "Zel/TypeModule.h"
#include "Zel/TypeTable.h"

namespace Quen {
namespace {

constexpr std::array kTaskPriority{
   Zel::field< &TaskPriority::value >( 2, "value" ),
};

constexpr std::array kTask{
   Zel::notification( Task::kRun, "run" ),
   Zel::pointer< &Task::scheduler >( 131, "scheduler" ),
   Zel::field< &Task::priority >( 132, "priority" ),
   Zel::field< &Task::name >( 133, "name" ),
   Zel::settableValue< &Task::taskQuantum, &Task::taskQuantumIs >( 134, "taskQuantum" ),
   Zel::callableMethod< &Task::scheduleTask >( 135, "scheduleTask" ),
   Zel::field< &Task::scheduled >( 136, "scheduled" ),
   Zel::callableMethod< &Task::taskShouldYield >( 137, "taskShouldYield" ),
   Zel::field< &Task::taskWorkCount >( 138, "taskWorkCount" ),
   Zel::settableValue< &Task::taskWorkPending, &Task::taskWorkPendingIs >( 139, "taskWorkPending" ),
};

constexpr std::array kTaskScheduler{
   Zel::field< &TaskScheduler::workWaiting >( TaskScheduler::kWorkWaiting, "workWaiting" ),
   Zel::pointer< &TaskScheduler::clock >( 131, "clock" ),
   Zel::field< &TaskScheduler::tasksScheduled >( 132, "tasksScheduled" ),
   Zel::callableMethod< &TaskScheduler::runOnce >( 133, "runOnce" ),
   Zel::callableMethod< &TaskScheduler::runUntilIdle >( 134, "runUntilIdle" ),
   Zel::field< &TaskScheduler::yieldPolicy >( 135, "yieldPolicy" ),
   Zel::field< &TaskScheduler::yieldTestsAllowed >( 136, "yieldTestsAllowed" ),
   Zel::callableMethod< &TaskScheduler::yieldPolicyIs >( 137, "yieldPolicyIs",
                                                         { "policy", "testsAllowed" } ),
};

constexpr std::array kTypes{
   Zel::valueType< TaskPriority >(
      Zel::valueConstructor< TaskPriority, std::uint8_t >( { "value" } ), kTaskPriority ),
   Zel::valueType< YieldPolicy >(),
   Zel::entityType< Task >(
      Zel::constructor< &Task::TaskIs >( { "scheduler", "priority", "name" } ), kTask ),
   Zel::entityType< TaskScheduler >(
      Zel::constructor< &TaskScheduler::TaskSchedulerIs >( { "clock" } ), kTaskScheduler ),
};

constexpr Zel::TypeModule kModule{ "Quen/Quen", kTypes };
const Zel::ModuleRegistration registration( kModule );

}   // namespace

Zel::TypeHandle
Task::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

Zel::TypeHandle
TaskScheduler::fwkType() const {
   return Zel::typeIn( kModule, zelTypeName );
}

}   // namespace Quen
