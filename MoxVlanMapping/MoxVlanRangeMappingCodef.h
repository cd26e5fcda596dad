// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// MoxVlanRangeMappingCodef: owner of the cooperative task "VlanRangeScale". Abstract: derive from
// it to program the sorted ranges into hardware.
//
//   class RangeProgrammer : public MoxVlanMapping::MoxVlanRangeMappingCodef {
//    public:
//      static constexpr char zelTypeName[] = "RangeProgrammer";   // counts under this name
//    protected:
//      using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;
//      ~RangeProgrammer() override { zelDoZombieReactors( true ); }
//      void processSortedVlanRange( Corvel::IntfId intfId ) override;   // read vidRangeSorted
//   };
//   auto programmer = Zel::newEntity< RangeProgrammer >( acsd, scheduler, rangeDir, scheduleDir );
//
// Whenever an interface enters or leaves the schedule, the task is asked for. A run takes the
// interfaces in the order in which they were scheduled: it sorts the interface's ranges by size,
// calls processSortedVlanRange(), takes the interface out of the schedule, and stops after the
// first interface at which the task's quantum is used up. The run after the one that emptied the
// schedule calls vlanXlateCodefComplete().
//
// Hooks       processSortedVlanRange() may schedule and unschedule other interfaces, change any
//             ranges, drop the codef, and throw: then its interface stays first in the schedule,
//             the task is asked for again, and the exception reaches the caller of the scheduler.
//             A mark that it makes for the interface it is called for does not outlast the call;
//             schedule that one from vlanXlateCodefComplete().
// Ownership   Holds scheduler, directories and task; its notifiees hold what they watch.
// Slots       Behind the framework's: vlanXlateCodefComplete, processSortedVlanRange.
// Threads     One thread, no locks.
// Trace       "MoxVlanRangeMappingCodef", levels 0, 5 and 6; main events also in the Pelrec rings
//             of the same level numbers.
#pragma once

#include "Corvel/IntfId.h"
#include "Mox/MoxCommonSmData.h"
#include "MoxVlanMapping/VlanRangeEntry.h"
#include "MoxVlanMapping/VlanXlateScaleEntry.h"
#include "MoxVlanMapping/VlanXlateScheduleDir.h"
#include "Quen/Task.h"
#include "Quen/TaskScheduler.h"
#include "Zel/Export.h"
#include "Zel/Ptr.h"
#include "Zel/PtrInterface.h"
#include "Zel/Reactor.h"

namespace MoxVlanMapping {

class ZEL_EXPORT MoxVlanRangeMappingCodef : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "MoxVlanMapping::MoxVlanRangeMappingCodef";
   static constexpr Quen::TaskPriority kTaskPriority{ 3 };
   static constexpr Zel::Seconds kTaskQuantum = 0.1;

   /// Watches portToLag: an interface that leaves its aggregate is scheduled.
   class ZelAcsd : public Zel::Reactor< Mox::MoxCommonSmData, MoxVlanRangeMappingCodef > {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::MoxVlanRangeMappingCodef::ZelAcsd";
      void onAttribute( Zel::AttributeId attribute, const void* key ) override;

    protected:
      using Reactor::Reactor;
   };

   /// Watches the schedule: asks for the task.
   class ZelVlanXlateScheduleDir :
       public Zel::Reactor< VlanXlateScheduleDir, MoxVlanRangeMappingCodef > {
    public:
      static constexpr char zelTypeName[] =
         "MoxVlanMapping::MoxVlanRangeMappingCodef::ZelVlanXlateScheduleDir";
      void onAttribute( Zel::AttributeId attribute, const void* key ) override;

    protected:
      using Reactor::Reactor;
   };

   /// Watches the task: drains the schedule when it runs.
   class ZelTask : public Zel::Reactor< Quen::Task, MoxVlanRangeMappingCodef > {
    public:
      static constexpr char zelTypeName[] = "MoxVlanMapping::MoxVlanRangeMappingCodef::ZelTask";
      void onAttribute( Zel::AttributeId attribute, const void* key ) override;

    protected:
      using Reactor::Reactor;
   };

   void hasNotificationActiveIs( bool active ) override;
   Zel::TypeHandle fwkType() const override;

 protected:
   /// Ends initialised, with the task scheduled. Requires: `scheduler` is set. `acsd` and
   /// `vlanXlateScheduleDir` may be null and are then not watched; without the latter nothing
   /// may be drained.
   MoxVlanRangeMappingCodef( const Zel::Ptr< Mox::MoxCommonSmData >& acsd,
                             const Zel::Ptr< Quen::TaskScheduler >& scheduler,
                             const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
                             const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir );
   ~MoxVlanRangeMappingCodef() override;

 public:
   void zelDoZombieReactors( bool zombie ) override;

   /// Called by the run that finds the schedule empty. Does nothing here.
   virtual void vlanXlateCodefComplete();
   /// Called for each scheduled interface when its ranges stand sorted in its scale entry.
   virtual void processSortedVlanRange( Corvel::IntfId intfId ) = 0;

   Zel::Ptr< Mox::MoxCommonSmData > acsd() const;
   const Zel::Ptr< Quen::TaskScheduler >& scheduler() const { return scheduler_; }
   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir() const { return vlanRangeEntryDir_; }
   Zel::Ptr< VlanXlateScheduleDir > vlanXlateScheduleDir() const;

   Zel::Ptr< Quen::Task > task() const;
   /// Watches `task` from now on; null is as taskDel().
   void taskIs( const Zel::Ptr< Quen::Task >& task );
   /// Stops watching the task and hands it over; null when there was none.
   Zel::Ptr< Quen::Task > taskDel();

   const Zel::Ptr< VlanXlateScaleEntryDir >& vlanXlateScaleEntryDir() const {
      return vlanXlateScaleEntryDir_;
   }
   /// The scale entry directory; an empty one is made when there is none.
   Zel::Ptr< VlanXlateScaleEntryDir > vlanXlateScaleEntryDirIs();
   void vlanXlateScaleEntryDirDel();

   /// One run of the task. Requires: schedule and, once initialised, task and scale entry
   /// directory.
   void drainBacklog();
   /// Schedules `intf` unless it is a member of a link aggregate. Requires: acsd and schedule.
   void handlePortToLag( Corvel::IntfId intf );
   void zel_handleAcsd_portToLag( Corvel::IntfId intf ) { handlePortToLag( intf ); }
   /// Rebuilds the interface's vidRangeSorted from its vlanIdRange; makes both entries when they
   /// are missing. O(n) in the interface's ranges while they do not overlap.
   void sortVlanRangeBySize( Corvel::IntfId intfId );
   /// Sorts, then calls processSortedVlanRange().
   void processVlanRange( Corvel::IntfId intfId );

   /// The task works only while true.
   bool initialized() const { return initialized_; }
   void initializedIs( bool initialized ) { initialized_ = initialized; }
   /// Called by the constructor; a later call only traces. Requires: a task.
   void handleInitialized();

 private:
   Zel::Ptr< ZelAcsd > acsd_;
   const Zel::Ptr< Quen::TaskScheduler > scheduler_;
   const Zel::Ptr< VlanRangeEntryDir > vlanRangeEntryDir_;
   Zel::Ptr< ZelVlanXlateScheduleDir > vlanXlateScheduleDir_;
   Zel::Ptr< ZelTask > task_;
   Zel::Ptr< VlanXlateScaleEntryDir > vlanXlateScaleEntryDir_;
   bool initialized_ = false;
};

}   // namespace MoxVlanMapping
