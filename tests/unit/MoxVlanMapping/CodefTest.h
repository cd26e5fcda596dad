// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// CodefTest: a codef whose derived class writes down what it is handed and does what the test
// wants, with scheduler and directories around it.
#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <string>
#include <utility>

#include "MoxVlanMapping/MoxVlanRangeMappingCodef.h"
#include "MoxVlanMapping/MoxVlanRangeMgr.h"
#include "Zel/NewEntity.h"
#include "tests/support/Chain.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/RangeText.h"

/// What was handed over, in order: "7: 10-20 M, 5-5 M" for an interface, "complete".
class RecordingCodef : public MoxVlanMapping::MoxVlanRangeMappingCodef {
 public:
   static constexpr char zelTypeName[] = "RecordingCodef";

   void processSortedVlanRange( Corvel::IntfId intfId ) override {
      const auto entry = vlanXlateScaleEntryDir()->vlanXlateScaleEntry( intfId );
      record_ += std::to_string( intfId.value() ) + ": " +
                 ( entry ? TestSupport::sortedText( *entry ) : "no entry" ) + "\n";
      if ( const auto process = process_ ) {   // held: it may be replaced from inside itself
         ( *process )( intfId );
      }
   }
   void vlanXlateCodefComplete() override {
      record_ += "complete\n";
      if ( const auto complete = complete_ ) {
         ( *complete )();
      }
   }

   std::string record() { return std::exchange( record_, "" ); }
   void processIs( std::function< void( Corvel::IntfId ) > process ) {
      process_ = shared( std::move( process ) );
   }
   void completeIs( std::function< void() > complete ) {
      complete_ = shared( std::move( complete ) );
   }

 protected:
   using MoxVlanRangeMappingCodef::MoxVlanRangeMappingCodef;

 private:
   template < class Function >
   static std::shared_ptr< Function > shared( Function function ) {
      return function ? std::make_shared< Function >( std::move( function ) ) : nullptr;
   }

   std::string record_;
   std::shared_ptr< std::function< void( Corvel::IntfId ) > > process_;
   std::shared_ptr< std::function< void() > > complete_;
};

class CodefTest : public TestSupport::NoneLeftTest, protected TestSupport::Chain {
 protected:
   using Codef = MoxVlanMapping::MoxVlanRangeMappingCodef;

   Zel::Ptr< RecordingCodef > newCodef() const {
      return Zel::newEntity< RecordingCodef >( acsd_, scheduler_, rangeDir_, scheduleDir_ );
   }

   void add( std::uint64_t intf, unsigned vid, char letter ) {
      mgr_->addVlanToIdx( Corvel::IntfId( intf ), Bridging::VlanId( vid ),
                          TestSupport::mappingOf( letter ) );
   }
   void del( std::uint64_t intf, unsigned vid ) {
      mgr_->deleteVlanFromIdx( Corvel::IntfId( intf ), Bridging::VlanId( vid ) );
   }
   void given( std::uint64_t intf, const std::string& ranges ) {
      TestSupport::store( *rangeDir_->vlanRangeEntryIs( Corvel::IntfId( intf ) ), ranges );
   }
   void schedule( std::initializer_list< std::uint64_t > interfaces ) {
      for ( const std::uint64_t intf : interfaces ) {
         scheduleDir_->vlanXlateScheduleIs( Corvel::IntfId( intf ) );
      }
   }
   void unschedule( std::uint64_t intf ) {
      scheduleDir_->vlanXlateScheduleDel( Corvel::IntfId( intf ) );
   }
   /// Lets the run that construction asked for pass, and forgets it.
   void settle() {
      scheduler_->runUntilIdle();
      codef_->record();
   }

   std::string waiting() const {
      return TestSupport::interfacesText( scheduleDir_->vlanXlateSchedule() );
   }
   std::string sorted( std::uint64_t intf ) const {
      const auto entry =
         codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry( Corvel::IntfId( intf ) );
      return entry ? TestSupport::sortedText( *entry ) : "no entry";
   }
   std::string rangeEntries() const {
      return TestSupport::interfacesText( rangeDir_->vlanRangeEntry() );
   }
   std::string scaleEntries() const {
      return TestSupport::interfacesText( codef_->vlanXlateScaleEntryDir()->vlanXlateScaleEntry() );
   }
   /// "done 3, pending 2, scheduled".
   std::string work() const {
      const auto task = codef_->task();
      return "done " + std::to_string( task->taskWorkCount() ) + ", pending " +
             std::to_string( task->taskWorkPending() ) + ( task->scheduled() ? ", scheduled" : "" );
   }

   const Zel::Ptr< MoxVlanMapping::MoxVlanRangeMgr > mgr_ =
      MoxVlanMapping::moxVlanRangeMgrFactory( rangeDir_ );
   Zel::Ptr< RecordingCodef > codef_ = newCodef();
};
