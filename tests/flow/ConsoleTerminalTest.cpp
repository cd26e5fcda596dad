// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// The console at a terminal: prompt, completion, history.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <pty.h>

#include <chrono>
#include <csignal>
#include <string>

#include "tests/flow/RunAgent.h"

namespace FlowTest {
namespace {

using testing::HasSubstr;
using testing::Not;

// The console as child at a terminal of its own; killed when the test ends without it.
class Terminal {
 public:
   explicit Terminal( const std::string& stateFolder ) {
      child_ = forkpty( &terminal_, nullptr, nullptr, nullptr );
      if ( child_ == 0 ) {
         setenv( "XDG_STATE_HOME", stateFolder.c_str(), 1 );
         setenv( "TERM", "xterm", 1 );
         execl( MOX_AGENT, MOX_AGENT, "console", nullptr );
         _exit( 127 );
      }
      if ( child_ < 0 ) {
         throw std::system_error( errno, std::generic_category(), "forkpty" );
      }
   }
   ~Terminal() {
      if ( child_ > 0 ) {
         kill( child_, SIGKILL );
         waitpid( child_, nullptr, 0 );
      }
      close( terminal_ );
   }
   Terminal( const Terminal& ) = delete;
   Terminal& operator=( const Terminal& ) = delete;

   // All that is shown until the next prompt.
   std::string untilPrompt() { return until( "> " ); }

   // What is shown for one line, its echo included.
   std::string answer( const std::string& typed ) {
      type( typed + "\n" );
      return until( "\n> " );
   }

   // Presses Ctrl-C until the prompt stands on a new line. Once is enough for a console that waits for
   // a key; one that is still at work on the last keys may need another.
   std::string interrupt() {
      std::string text;
      for ( int presses = 0; presses < 100 && !closed_ && !text.ends_with( "\n> " ); ++presses ) {
         type( "\x03" );
         pollfd ready{ terminal_, POLLIN, 0 };
         while ( !closed_ && !text.ends_with( "\n> " ) && poll( &ready, 1, 300 ) > 0 ) {
            readInto( text );
         }
      }
      EXPECT_TRUE( text.ends_with( "\n> " ) ) << text;
      return text;
   }

   // Types the last line; the exit code, or -1 when the console does not end by itself.
   int end( const std::string& typed ) {
      type( typed );
      until( "no such text" );   // the terminal closes
      int status = 0;
      if ( !closed_ || waitpid( child_, &status, 0 ) != child_ ) {
         return -1;
      }
      child_ = 0;
      return WIFEXITED( status ) ? WEXITSTATUS( status ) : -1;
   }

   void type( const std::string& text ) {
      ASSERT_EQ( write( terminal_, text.data(), text.size() ),
                 static_cast< ssize_t >( text.size() ) );
   }

   // Reads until the text ends with `end`, the terminal closes, or patience is at its end.
   std::string until( const std::string& end ) {
      const auto deadline = std::chrono::steady_clock::now() + kPatience;
      std::string text;
      while ( !closed_ && !text.ends_with( end ) ) {
         const auto left = std::chrono::duration_cast< std::chrono::milliseconds >(
            deadline - std::chrono::steady_clock::now() );
         pollfd ready{ terminal_, POLLIN, 0 };
         if ( left.count() <= 0 || poll( &ready, 1, static_cast< int >( left.count() ) ) <= 0 ) {
            ADD_FAILURE() << "still waiting for \"" << end << "\" after: " << text;
            break;
         }
         readInto( text );
      }
      return text;
   }

 private:
   void readInto( std::string& text ) {
      char part[ 4096 ];
      const ssize_t got = read( terminal_, part, sizeof part );
      closed_ = got <= 0;
      text.append( part, closed_ ? 0 : static_cast< std::size_t >( got ) );
   }

   static constexpr std::chrono::seconds kPatience{ 30 };

   pid_t child_ = 0;
   int terminal_ = -1;
   bool closed_ = false;
};

class AgentConsoleTerminal : public testing::Test {
 protected:
   ScratchFolder folder_;
   Terminal terminal_{ folder_.path() };
};

TEST_F( AgentConsoleTerminal, commandsRootsAndAttributesAreCompleted ) {
   EXPECT_EQ( terminal_.untilPrompt(), "> " );
   EXPECT_THAT( terminal_.answer( "ge\tcod\t.ta\t.na\t" ), HasSubstr( "\nVlanRangeScale\r\n" ) );
}

TEST_F( AgentConsoleTerminal, typeNamesAreCompleted ) {
   terminal_.untilPrompt();
   EXPECT_THAT( terminal_.answer( "type MoxVlanMapping::VlanXlateSch\t" ),
                HasSubstr( "\nMoxVlanMapping::VlanXlateScheduleDir: entity" ) );
}

TEST_F( AgentConsoleTerminal, attributesOfMembersAreCompleted ) {
   terminal_.untilPrompt();
   terminal_.answer( "set ranges.vlanRangeEntry 5" );
   EXPECT_THAT( terminal_.answer( "get ranges.vlanRangeEntry[5].in\t" ), HasSubstr( "\n5\r\n" ) );
}

TEST_F( AgentConsoleTerminal, wordsThatHoldBlanksAreCompleted ) {
   terminal_.untilPrompt();
   EXPECT_THAT( terminal_.answer( "get acsd.ingressConfigDir.config[Value('Mox::PortVlanKey', ** "
                                  "{'intfId': 1, 'vlanId': 2, 'innerVlanId': 0})].ori\t" ),
                HasSubstr( "\n0\r\n" ) );
}

TEST_F( AgentConsoleTerminal, anErrorHasNoLineNumberAndTheExitCodeIsZero ) {
   terminal_.untilPrompt();
   const std::string answer = terminal_.answer( "frob" );
   EXPECT_THAT( answer, HasSubstr( "\nthere is no command \"frob\"; `help` lists them\r\n" ) );
   EXPECT_THAT( answer, Not( HasSubstr( "line 1" ) ) );
   EXPECT_EQ( terminal_.end( "quit\n" ), 0 );
}

TEST_F( AgentConsoleTerminal, theEndOfInputEndsIt ) {
   terminal_.untilPrompt();
   // The terminal passes on an end of input only once line editing has taken it over, and that
   // is sure when it completes a word.
   terminal_.type( "ge\t" );
   terminal_.until( "t " );
   EXPECT_EQ( terminal_.end( "\x15\x04" ), 0 );
}

TEST_F( AgentConsoleTerminal, theInterruptKeyEndsTheLineAndNotTheSession ) {
   terminal_.untilPrompt();
   EXPECT_THAT( terminal_.answer( "get codef.initialized" ), HasSubstr( "\ntrue\r\n" ) );
   for ( int again = 0; again < 2; ++again ) {
      terminal_.type( "frob" );
      EXPECT_THAT( terminal_.interrupt(), Not( HasSubstr( "there is no" ) ) );
   }
   EXPECT_THAT( terminal_.answer( "get codef.task.name" ), HasSubstr( "\nVlanRangeScale\r\n" ) );
   EXPECT_EQ( terminal_.end( "quit\n" ), 0 );
}

TEST_F( AgentConsoleTerminal, theHistoryOutlivesTheSession ) {
   terminal_.untilPrompt();
   terminal_.answer( "get codef.task.name" );
   EXPECT_EQ( terminal_.end( "quit\n" ), 0 );
   Terminal next( folder_.path() );
   next.untilPrompt();
   EXPECT_THAT( next.answer( "\x10\x10" ), HasSubstr( "\nVlanRangeScale\r\n" ) );   // Ctrl-P
}

TEST( AgentConsoleHistory, isGivenUpWithoutAWordWhenItCannotBeWritten ) {
   Terminal terminal( "/dev/null" );
   EXPECT_EQ( terminal.untilPrompt(), "> " );
   EXPECT_THAT( terminal.answer( "get codef.initialized" ),
                HasSubstr( "get codef.initialized\r\ntrue\r\n> " ) );
   EXPECT_EQ( terminal.end( "quit\n" ), 0 );
}

}   // namespace
}   // namespace FlowTest
