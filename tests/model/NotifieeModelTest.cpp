// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// Notifiee lists under every re-entrancy against a ledger of who began to watch what, and when.
//
// A probe may be taught up to two acts that it does whenever it is told of a change: the same acts
// that a script does from outside.

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <map>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Zel/NewEntity.h"
#include "Zel/Notifiee.h"
#include "tests/support/ModelRun.h"

namespace {

constexpr std::size_t kSubjects = 2;
constexpr std::size_t kProbes = 5;
constexpr std::size_t kActsOfProbe = 2;
// Enough to nest, few enough to end: from then on who is told only listens.
constexpr int kActiveTellings = 40;

enum class Act {
   Nothing,
   Change,
   Watch,
   Leave,
   Destroy,
   Make,
   Replace,
   RemoveAll,
   SwitchSubject,
   SwitchProbe,
   Zombie,
   Throw,
};

struct Doing {
   Act act = Act::Nothing;
   std::size_t subject = 0;
   std::size_t probe = 0;
};

std::ostream&
operator<<( std::ostream& out, const Doing& doing ) {
   static constexpr const char* kNames[] = { "nothing",         "change",        "watch",
                                             "leave",           "destroy",       "make and watch",
                                             "replace subject", "remove all of", "switch subject",
                                             "switch probe",    "zombie",        "throw" };
   return out << kNames[ static_cast< int >( doing.act ) ] << " (subject " << doing.subject
              << ", probe " << doing.probe << ")";
}

struct Step {
   bool teaches;
   std::size_t pupil;
   std::size_t lesson;
   Doing doing;
};

std::ostream&
operator<<( std::ostream& out, const Step& step ) {
   if ( step.teaches ) {
      out << "teach probe " << step.pupil << " as act " << step.lesson << ": ";
   }
   return out << step.doing;
}

using Lessons = std::array< std::array< Doing, kActsOfProbe >, kProbes >;

class Thrown : public std::exception {};

std::string
flagText( bool active ) {
   return active ? "" : " off";
}

// Subjects and probes are numbered as they come. A watch is a ticket; who is told of a change are
// the holders of the tickets that were there when it began and still are when it is their turn.
class Model {
 public:
   using Step = ::Step;

   Model() {
      for ( std::size_t i = 0; i < kSubjects; ++i ) {
         replace( i );
      }
   }
   bool allows( const Step& ) const { return true; }
   void apply( const Step& step ) {
      log_.clear();
      tellings_ = 0;
      if ( step.teaches ) {
         lessons_[ step.pupil ][ step.lesson ] = step.doing;
         return;
      }
      try {
         act( step.doing );
      } catch ( const Thrown& ) {
         log_ += "thrown";
      }
   }
   std::string text() const {
      std::string all = log_;
      for ( const int subject : handles_ ) {
         all += "\nsubject at " + std::to_string( subjects_.at( subject ).number ) + " of " +
                std::to_string( std::ranges::count_if(
                   tickets_,
                   [ & ]( const auto& ticket ) { return ticket.second.subject == subject; } ) ) +
                flagText( subjects_.at( subject ).active );
      }
      for ( const int probe : probeHandles_ ) {
         all += probe == kNone ? "\nno probe"
                               : "\nprobe" + flagText( probes_.at( probe ).active ) +
                                    ( probes_.at( probe ).zombie ? " zombie" : "" );
      }
      const auto lives = std::ranges::count_if(
         subjects_, []( const auto& subject ) { return subject.second.holds > 0; } );
      return all + "\n" + std::to_string( lives ) + " subjects live";
   }

 private:
   static constexpr int kNone = -1;
   struct Subject {
      int holds = 0;   // the script's, those who watch it, and notifications that run
      int number = 0;
      bool active = true;
   };
   struct Probe {
      std::size_t name = 0;
      int holds = 0;   // the script's and those of the notifications that are at it
      bool active = true;
      bool zombie = false;
   };
   struct Ticket {
      int subject;
      int probe;
   };

   void replace( std::size_t which ) {
      const int old = std::exchange( handles_[ which ], ++made_ );
      subjects_[ made_ ] = { 1, 0, true };
      if ( old != kNone ) {
         dropSubject( old );
      }
   }
   void dropSubject( int subject ) {
      if ( --subjects_.at( subject ).holds == 0 ) {
         log_ += "~" + std::to_string( subjects_.at( subject ).number ) + " ";
      }
   }
   void dropProbe( int probe ) {
      if ( --probes_.at( probe ).holds == 0 ) {
         leave( probe );
         log_ += "~probe" + std::to_string( probes_.at( probe ).name ) + " ";
      }
   }
   void removeTicket( std::map< int, Ticket >::iterator ticket ) {
      const int subject = ticket->second.subject;
      tickets_.erase( ticket );
      dropSubject( subject );
   }
   std::map< int, Ticket >::iterator ticketOf( int probe ) {
      return std::ranges::find_if(
         tickets_, [ & ]( const auto& each ) { return each.second.probe == probe; } );
   }
   void leave( int probe ) {
      if ( const auto ticket = ticketOf( probe ); ticket != tickets_.end() ) {
         removeTicket( ticket );
      }
   }
   void watch( int probe, int subject ) {
      const auto before = ticketOf( probe );
      if ( before != tickets_.end() && before->second.subject == subject ) {
         return;
      }
      ++subjects_.at( subject ).holds;
      leave( probe );
      tickets_[ ++made_ ] = { subject, probe };
   }
   void removeAll( int subject ) {
      ++subjects_.at( subject ).holds;
      for ( auto at = tickets_.begin(); at != tickets_.end(); ) {
         const auto ticket = at++;
         if ( ticket->second.subject == subject ) {
            removeTicket( ticket );
         }
      }
      dropSubject( subject );
   }
   void change( int subject ) {
      ++subjects_.at( subject ).number;
      std::vector< int > known;
      for ( const auto& [ number, ticket ] : tickets_ ) {
         if ( ticket.subject == subject ) {
            known.push_back( number );
         }
      }
      ++subjects_.at( subject ).holds;
      bool thrown = false;
      for ( const int number : known ) {
         const auto ticket = tickets_.find( number );
         if ( ticket != tickets_.end() && subjects_.at( subject ).active ) {
            try {
               tell( ticket->second.probe, subject );
            } catch ( const Thrown& ) {
               thrown = true;   // the others are told all the same
            }
         }
      }
      dropSubject( subject );
      if ( thrown ) {
         throw Thrown();
      }
   }
   void tell( int probe, int subject ) {
      const Probe told = probes_.at( probe );
      if ( !told.active || told.zombie ) {
         return;
      }
      log_ +=
         std::to_string( told.name ) + "=" + std::to_string( subjects_.at( subject ).number ) + " ";
      ++probes_.at( probe ).holds;
      try {
         if ( ++tellings_ <= kActiveTellings ) {
            for ( const Doing& doing : lessons_[ told.name ] ) {
               act( doing );
            }
         }
      } catch ( ... ) {
         dropProbe( probe );
         throw;
      }
      dropProbe( probe );
   }
   void act( const Doing& doing ) {
      const int subject = handles_[ doing.subject ];
      const int probe = probeHandles_[ doing.probe ];
      switch ( doing.act ) {
      case Act::Nothing:
         return;
      case Act::Change:
         return change( subject );
      case Act::Make:
         if ( probe == kNone ) {
            probeHandles_[ doing.probe ] = ++made_;
            probes_[ made_ ] = { doing.probe, 1, true, false };
            watch( made_, subject );
         }
         return;
      case Act::Replace:
         return replace( doing.subject );
      case Act::RemoveAll:
         return removeAll( subject );
      case Act::SwitchSubject:
         subjects_.at( subject ).active = !subjects_.at( subject ).active;
         return;
      case Act::Throw:
         throw Thrown();
      default:
         break;
      }
      if ( probe == kNone ) {
         return;
      }
      switch ( doing.act ) {
      case Act::Watch:
         return watch( probe, subject );
      case Act::Leave:
         return leave( probe );
      case Act::Destroy:
         probeHandles_[ doing.probe ] = kNone;
         return dropProbe( probe );
      case Act::SwitchProbe:
         probes_.at( probe ).active = !probes_.at( probe ).active;
         return;
      default:
         probes_.at( probe ).zombie = !probes_.at( probe ).zombie;
         return;
      }
   }

   int made_ = 0;
   std::map< int, Subject > subjects_;   // all that ever were
   std::map< int, Probe > probes_;
   std::map< int, Ticket > tickets_;
   std::array< int, kSubjects > handles_{ kNone, kNone };
   std::array< int, kProbes > probeHandles_{ kNone, kNone, kNone, kNone, kNone };
   Lessons lessons_{};
   std::string log_;
   int tellings_ = 0;
};

class Subject : public Zel::PtrInterface {
 public:
   static constexpr char zelTypeName[] = "NotifieeModelTest::Subject";
   int number = 0;

   explicit Subject( std::string& log ) : log_( log ) {}
   ~Subject() override {
      zelDoZombieReactors( true );
      log_ += "~" + std::to_string( number ) + " ";
   }
   Zel::NotifieeList* notifieeList() const override { return &list_; }
   // Nothing is touched behind the notification: the last reference may be gone by then.
   void change() {
      ++number;
      list_.notify( 130, &number );
   }

 private:
   mutable Zel::NotifieeList list_{ *this };
   std::string& log_;
};

class Probe : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "NotifieeModelTest::Probe";
   Probe( std::size_t name, std::string& log, std::function< void( int ) > told )
       : name_( name ), log_( log ), told_( std::move( told ) ) {}
   ~Probe() override { log_ += "~probe" + std::to_string( name_ ) + " "; }
   void onAttribute( Zel::AttributeId, const void* key ) override {
      told_( *static_cast< const int* >( key ) );
   }

 private:
   const std::size_t name_;
   std::string& log_;
   const std::function< void( int ) > told_;
};

class Real {
 public:
   void apply( const Step& step ) {
      log_.clear();
      tellings_ = 0;
      if ( step.teaches ) {
         lessons_[ step.pupil ][ step.lesson ] = step.doing;
         return;
      }
      try {
         act( step.doing );
      } catch ( const Thrown& ) {
         log_ += "thrown";
      }
   }
   std::string text() const {
      std::string all = log_;
      for ( const auto& subject : subjects_ ) {
         all += "\nsubject at " + std::to_string( subject->number ) + " of " +
                std::to_string( subject->notifieeList()->notifiees() ) +
                flagText( subject->hasNotificationActive() );
      }
      for ( const auto& probe : probes_ ) {
         all += !probe ? "\nno probe"
                       : "\nprobe" + flagText( probe->hasNotificationActive() ) +
                            ( probe->zelMarkedForDeletion() ? " zombie" : "" );
      }
      return all + "\n" + std::to_string( TestSupport::liveObjects()[ Subject::zelTypeName ] ) +
             " subjects live";
   }

 private:
   void told( std::size_t name, int number ) {
      log_ += std::to_string( name ) + "=" + std::to_string( number ) + " ";
      if ( ++tellings_ <= kActiveTellings ) {
         for ( const Doing& doing : lessons_[ name ] ) {
            act( doing );
         }
      }
   }
   void act( const Doing& doing ) {
      Subject* const subject = subjects_[ doing.subject ].get();   // no reference: hostile
      Probe* const probe = probes_[ doing.probe ].get();
      switch ( doing.act ) {
      case Act::Nothing:
         return;
      case Act::Change:
         return subject->change();
      case Act::Make:
         if ( !probe ) {
            probes_[ doing.probe ] = Zel::newEntity< Probe >(
               doing.probe, log_,
               [ this, name = doing.probe ]( int number ) { told( name, number ); } );
            probes_[ doing.probe ]->zelNotifierIs( Zel::Ptr< Subject >( subject ) );
         }
         return;
      case Act::Replace:
         subjects_[ doing.subject ] = Zel::newEntity< Subject >( log_ );
         return;
      case Act::RemoveAll:
         return subject->notifieeList()->notifieeDelAll();
      case Act::SwitchSubject:
         return subject->hasNotificationActiveIs( !subject->hasNotificationActive() );
      case Act::Throw:
         throw Thrown();
      default:
         break;
      }
      if ( !probe ) {
         return;
      }
      switch ( doing.act ) {
      case Act::Watch:
         return probe->zelNotifierIs( Zel::Ptr< Subject >( subject ) );
      case Act::Leave:
         return probe->zelNotifierIs( nullptr );
      case Act::Destroy:
         probes_[ doing.probe ] = nullptr;
         return;
      case Act::SwitchProbe:
         return probe->hasNotificationActiveIs( !probe->hasNotificationActive() );
      default:
         return probe->zelDoZombieReactors( !probe->zelMarkedForDeletion() );
      }
   }

   std::string log_;   // outlives those who write into it
   std::array< Zel::Ptr< Subject >, kSubjects > subjects_{ Zel::newEntity< Subject >( log_ ),
                                                           Zel::newEntity< Subject >( log_ ) };
   std::array< Zel::Ptr< Probe >, kProbes > probes_;
   Lessons lessons_{};
   int tellings_ = 0;
};

rc::Gen< Step >
steps() {
   return TestSupport::stepsOf(
      []( bool teaches, std::size_t pupil, std::size_t lesson, Act act, std::size_t subject,
          std::size_t probe ) {
         return Step{ teaches, pupil, lesson, { act, subject, probe } };
      },
      rc::gen::weightedElement< bool >( { { 2, false }, { 1, true } } ),
      rc::gen::inRange< std::size_t >( 0, kProbes ),
      rc::gen::inRange< std::size_t >( 0, kActsOfProbe ),
      rc::gen::weightedElement< Act >( { { 1, Act::Nothing },
                                         { 8, Act::Change },
                                         { 4, Act::Watch },
                                         { 3, Act::Leave },
                                         { 3, Act::Destroy },
                                         { 8, Act::Make },
                                         { 2, Act::Replace },
                                         { 1, Act::RemoveAll },
                                         { 1, Act::SwitchSubject },
                                         { 1, Act::SwitchProbe },
                                         { 1, Act::Zombie },
                                         { 1, Act::Throw } } ),
      rc::gen::inRange< std::size_t >( 0, kSubjects ),
      rc::gen::inRange< std::size_t >( 0, kProbes ) );
}

TEST( NotifieeModelTest, WhoIsToldFollowsFromTheLedger ) {
   TestSupport::expectModelled< Model, Real >( steps(), { 10000, 100 } );
}

}   // namespace
