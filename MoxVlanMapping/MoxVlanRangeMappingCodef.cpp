// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"

#include <cstdint>
#include <utility>

#include "Kirlog/PelrecMessage.h"
#include "MoxVlanMapping/SizeOrder.h"
#include "Zel/NewEntity.h"
#include "Zel/Trace.h"

namespace MoxVlanMapping {
namespace {

constexpr char zelSourceTag[] = "MoxVlanMapping/MoxVlanRangeMappingCodef";
constinit Zel::TraceHandle trace( "MoxVlanRangeMappingCodef", false );

// A main event: written to the ring buffer of its level and as text to the trace handle. Each
// message keeps one source line number for good, whatever line its code stands on, so that
// whoever filters by it need not follow our edits.
template < unsigned level, Kirlog::PelrecTypes types = "" >
class Event {
 public:
   consteval Event( const char* function, const char* format, int line )
       : function_( function ), format_( format ), line_( line ), ring_( format ) {}

   template < class... Values >
   void operator()( const Values&... values ) {
      ring_( values... );
      if ( trace.enabled( level ) ) {
         Zel::traceLine( trace, level, zelSourceTag, line_, function_,
                         [ & ] { return Zel::format( format_, values... ); } );
      }
   }

 private:
   const char* const function_;
   const char* const format_;
   const int line_;
   Kirlog::PelrecMessage< level, types > ring_;
};

constinit Event< 5 > alreadyInitialized( "handleInitialized",
                                         "handleInitialized Already Initialized", 16 );
constinit Event< 5 > notInitialized( "drainBacklog", "drainBacklog Not Initialized", 33 );
constinit Event< 5 > codefCompleted( "drainBacklog", "drainBacklog Marking codef completed", 40 );
constinit Event< 6, "i" >
   yielding( "drainBacklog", "drainBacklog yeilding with pending vlanXlate backlogs: %s", 53 );
constinit Event< 5, "i" > pendingWork( "drainBacklog", "drainBacklog pending work count: %s", 59 );

// Keeps the task's counters true also when a run is left by an exception.
class RunAccount {
 public:
   RunAccount( Quen::Task& task, const VlanXlateScheduleDir& backlog )
       : task_( task ), backlog_( backlog ) {}
   ~RunAccount() {
      task_.taskWorkCountInc( processed_ );
      task_.taskWorkPendingIs( backlog_.vlanXlateSchedule().size() );
   }
   RunAccount( const RunAccount& ) = delete;
   RunAccount& operator=( const RunAccount& ) = delete;

   void interfaceProcessed() { ++processed_; }

 private:
   Quen::Task& task_;
   const VlanXlateScheduleDir& backlog_;
   std::uint32_t processed_ = 0;
};

}   // namespace

MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef(
   const Zel::Ptr< Mox::MoxCommonSmData >& acsd, const Zel::Ptr< Quen::TaskScheduler >& scheduler,
   const Zel::Ptr< VlanRangeEntryDir >& vlanRangeEntryDir,
   const Zel::Ptr< VlanXlateScheduleDir >& vlanXlateScheduleDir )
    : acsd_( acsd ? Zel::newEntity< ZelAcsd >( acsd, this ) : nullptr ),
      scheduler_( scheduler ),
      vlanRangeEntryDir_( vlanRangeEntryDir ),
      vlanXlateScheduleDir_( vlanXlateScheduleDir ? Zel::newEntity< ZelVlanXlateScheduleDir >(
                                                       vlanXlateScheduleDir, this )
                                                  : nullptr ) {
   taskIs( Quen::taskFactory( scheduler_, kTaskPriority, "VlanRangeScale" ) );
   // The second task takes the first one's place; that both are made is required as it stands.
   taskIs( Quen::taskFactory( scheduler_, kTaskPriority, "VlanRangeScale" ) );
   handleInitialized();
}

MoxVlanRangeMappingCodef::~MoxVlanRangeMappingCodef() {
   zelDoZombieReactors( true );
   if ( acsd_ ) {
      acsd_->ownerIs( nullptr );
   }
   if ( vlanXlateScheduleDir_ ) {
      vlanXlateScheduleDir_->ownerIs( nullptr );
   }
   if ( task_ ) {
      task_->ownerIs( nullptr );
   }
   vlanXlateScaleEntryDirDel();
}

void
MoxVlanRangeMappingCodef::ZelAcsd::onAttribute( Zel::AttributeId attribute, const void* key ) {
   if ( attribute != Mox::MoxCommonSmData::kAttrPortToLag || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< MoxVlanRangeMappingCodef > codef = heldOwner() ) {
      codef->zel_handleAcsd_portToLag( *static_cast< const Corvel::IntfId* >( key ) );
   }
}

void
MoxVlanRangeMappingCodef::ZelVlanXlateScheduleDir::onAttribute( Zel::AttributeId attribute,
                                                                const void* ) {
   if ( attribute != VlanXlateScheduleDir::kAttrVlanXlateSchedule || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< MoxVlanRangeMappingCodef > codef = heldOwner() ) {
      if ( const Zel::Ptr< Quen::Task > task = codef->task() ) {
         task->scheduleTask();
      }
   }
}

void
MoxVlanRangeMappingCodef::ZelTask::onAttribute( Zel::AttributeId attribute, const void* ) {
   if ( attribute != Quen::Task::kRun || zelMarkedForDeletion() ) {
      return;
   }
   if ( const Zel::Ptr< MoxVlanRangeMappingCodef > codef = heldOwner() ) {
      codef->drainBacklog();
   }
}

void
MoxVlanRangeMappingCodef::hasNotificationActiveIs( bool active ) {
   if ( hasNotificationActive() == active ) {
      return;
   }
   PtrInterface::hasNotificationActiveIs( active );
   if ( acsd_ ) {
      acsd_->hasNotificationActiveIs( active );
   }
   if ( vlanXlateScheduleDir_ ) {
      vlanXlateScheduleDir_->hasNotificationActiveIs( active );
   }
   if ( task_ ) {
      task_->hasNotificationActiveIs( active );
   }
}

void
MoxVlanRangeMappingCodef::zelDoZombieReactors( bool zombie ) {
   if ( zelMarkedForDeletion() == zombie ) {
      return;
   }
   if ( acsd_ ) {
      acsd_->zelDoZombieReactors( zombie );
   }
   if ( vlanXlateScheduleDir_ ) {
      vlanXlateScheduleDir_->zelDoZombieReactors( zombie );
   }
   if ( task_ ) {
      task_->zelDoZombieReactors( zombie );
   }
   zelMarkedForDeletionIs( zombie );
}

void
MoxVlanRangeMappingCodef::vlanXlateCodefComplete() {}

Zel::Ptr< Mox::MoxCommonSmData >
MoxVlanRangeMappingCodef::acsd() const {
   return acsd_ ? acsd_->notifier() : nullptr;
}

Zel::Ptr< VlanXlateScheduleDir >
MoxVlanRangeMappingCodef::vlanXlateScheduleDir() const {
   return vlanXlateScheduleDir_ ? vlanXlateScheduleDir_->notifier() : nullptr;
}

Zel::Ptr< Quen::Task >
MoxVlanRangeMappingCodef::task() const {
   return task_ ? task_->notifier() : nullptr;
}

void
MoxVlanRangeMappingCodef::taskIs( const Zel::Ptr< Quen::Task >& task ) {
   if ( !task ) {
      taskDel();
   } else if ( task_ ) {
      task_->notifierIs( task );
   } else {
      task_ = Zel::newEntity< ZelTask >( task, this );
   }
}

Zel::Ptr< Quen::Task >
MoxVlanRangeMappingCodef::taskDel() {
   const Zel::Ptr< ZelTask > gone = std::move( task_ );
   if ( !gone ) {
      return nullptr;
   }
   gone->zelDoZombieReactors( true );
   gone->ownerIs( nullptr );
   return gone->notifier();
}

Zel::Ptr< VlanXlateScaleEntryDir >
MoxVlanRangeMappingCodef::vlanXlateScaleEntryDirIs() {
   if ( !vlanXlateScaleEntryDir_ ) {
      vlanXlateScaleEntryDir_ = vlanXlateScaleEntryDirFactory();
   }
   return vlanXlateScaleEntryDir_;
}

void
MoxVlanRangeMappingCodef::vlanXlateScaleEntryDirDel() {
   const Zel::Ptr< VlanXlateScaleEntryDir > gone = std::move( vlanXlateScaleEntryDir_ );
}

void
MoxVlanRangeMappingCodef::handleInitialized() {
   ZEL_TRACE( trace, 0, 14, "handleInitialized" );
   if ( initialized_ ) {
      alreadyInitialized();
      return;
   }
   vlanXlateScaleEntryDirIs();
   const Zel::Ptr< Quen::Task > vlanRangeScale = task();
   vlanRangeScale->taskQuantumIs( kTaskQuantum );
   vlanRangeScale->scheduleTask();
   initialized_ = true;
}

void
MoxVlanRangeMappingCodef::drainBacklog() {
   const Zel::Ptr< MoxVlanRangeMappingCodef > self( this );   // the hooks may drop the last other
   if ( !initialized_ ) {
      notInitialized();
      return;
   }
   const Zel::Ptr< VlanXlateScheduleDir > backlog = vlanXlateScheduleDir();
   const auto& waiting = backlog->vlanXlateSchedule();
   ZEL_TRACE( trace, 6, 37, "drainBacklog", " pending vlanXlate backlogs: ", waiting.size() );
   if ( waiting.empty() ) {
      codefCompleted();
      vlanXlateCodefComplete();
      return;
   }
   const Zel::Ptr< Quen::Task > vlanRangeScale = task();
   {
      RunAccount account( *vlanRangeScale, *backlog );
      for ( auto at = waiting.first(); at; ++at ) {
         processVlanRange( at->key() );
         account.interfaceProcessed();
         // Only now: what throws above leaves the interface scheduled.
         backlog->vlanXlateScheduleDel( at->key() );
         if ( vlanRangeScale->taskShouldYield() ) {
            yielding( waiting.size() );
            break;
         }
      }
   }
   pendingWork( vlanRangeScale->taskWorkPending() );
   if ( !waiting.empty() ) {
      vlanRangeScale->scheduleTask();
   }
}

void
MoxVlanRangeMappingCodef::handlePortToLag( Corvel::IntfId intf ) {
   ZEL_TRACE( trace, 6, 68, "VlanXlateScaleSm::", "handlePortToLag", " intfId ", intf );
   if ( !acsd()->portToLag().contains( intf ) ) {
      vlanXlateScheduleDir()->vlanXlateScheduleIs( intf );
   }
}

// The colon behind the label stands here and not in processVlanRange(), on purpose.
void
MoxVlanRangeMappingCodef::sortVlanRangeBySize( Corvel::IntfId intfId ) {
   ZEL_TRACE( trace, 5, 78, "sortVlanRangeBySize", " intfId: ", intfId );
   const Zel::Ptr< VlanRangeEntry > rangeEntry = vlanRangeEntryDir_->vlanRangeEntryIs( intfId );
   const Zel::Ptr< VlanXlateScaleEntry > scaleEntry =
      vlanXlateScaleEntryDir_->vlanXlateScaleEntryIs( intfId );
   scaleEntry->sizeOrder().refill( rangeEntry->store() );
}

void
MoxVlanRangeMappingCodef::processVlanRange( Corvel::IntfId intfId ) {
   ZEL_TRACE( trace, 6, 90, "VlanXlateScaleSm::", "processVlanRange", " intfId ", intfId );
   sortVlanRangeBySize( intfId );
   processSortedVlanRange( intfId );
}

}   // namespace MoxVlanMapping
