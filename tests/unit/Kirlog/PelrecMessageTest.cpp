// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0

#include "Kirlog/PelrecMessage.h"

#include <concepts>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Pelrec/Reader.h"
#include "Pelrec/Trace.h"

namespace {

struct Counted {
   int& conversions;
};
struct Throwing {};

}   // namespace

template <>
struct Kirlog::PelrecConverter< Counted > {
   static std::int64_t convert( const Counted& value ) { return ++value.conversions; }
};

template <>
struct Kirlog::PelrecConverter< Throwing > {
   static std::int64_t convert( const Throwing& ) { throw std::runtime_error( "no value" ); }
};

namespace {

using Kirlog::PelrecMessage;

constinit PelrecMessage< 5 > notInitialized( "drainBacklog Not Initialized" );
constinit PelrecMessage< 5, "i" > pendingWork( "drainBacklog pending work count: %s" );
constinit PelrecMessage< 6, "i" > yielding( "yielding with %s left" );

// The process's trace is the only one that messages write; each test sees what it wrote itself.
class PelrecMessageTest : public testing::Test {
 protected:
   PelrecMessageTest() {
      const auto records = Pelrec::Reader( Pelrec::trace().image() ).records();
      before_ = records.empty() ? 0 : records.back().sequence;
   }
   ~PelrecMessageTest() override { Pelrec::trace().levelMaskIs( mask_ ); }

   std::string written() const { return writtenIn( Pelrec::trace().image() ); }

   std::string writtenIn( std::span< const std::byte > image ) const {
      std::string lines;
      for ( const Pelrec::Record& record : Pelrec::Reader( image ).records() ) {
         if ( record.sequence > before_ ) {
            lines += std::to_string( record.level ) + ' ' + record.text + '\n';
         }
      }
      return lines;
   }

   std::uint64_t before_;
   const std::uint32_t mask_ = Pelrec::trace().levelMask();
};

TEST_F( PelrecMessageTest, WritesItsFormatWithTheArguments ) {
   notInitialized();
   pendingWork( 3u );
   EXPECT_EQ( written(), "5 drainBacklog Not Initialized\n"
                         "5 drainBacklog pending work count: 3\n" );
}

TEST_F( PelrecMessageTest, WritesToTheRingOfItsLevel ) {
   yielding( -1 );
   pendingWork( 0 );
   yielding( true );
   EXPECT_EQ( written(), "6 yielding with -1 left\n"
                         "5 drainBacklog pending work count: 0\n"
                         "6 yielding with 1 left\n" );
}

TEST_F( PelrecMessageTest, EvaluatesNothingWhileItsLevelIsOff ) {
   int conversions = 0;
   int evaluations = 0;
   const auto argument = [ & ] {
      ++evaluations;
      return Counted{ conversions };
   };
   const auto trace = [ & ] {
      if ( pendingWork.enabled() ) {
         pendingWork( argument() );
      }
      pendingWork( Counted{ conversions } );
   };
   Pelrec::trace().levelMaskIs( mask_ & ~( 1u << 5 ) );
   trace();
   EXPECT_EQ( evaluations, 0 );
   EXPECT_EQ( conversions, 0 );
   EXPECT_EQ( written(), "" );

   Pelrec::trace().levelMaskIs( 1u << 5 );
   trace();
   EXPECT_EQ( evaluations, 1 );
   EXPECT_EQ( conversions, 2 );
}

TEST_F( PelrecMessageTest, ADisabledLevelLeavesTheOthersOn ) {
   Pelrec::trace().levelMaskIs( mask_ & ~( 1u << 5 ) );
   pendingWork( 1 );
   yielding( 2 );
   EXPECT_EQ( written(), "6 yielding with 2 left\n" );
}

TEST_F( PelrecMessageTest, WritesNothingWhenAConverterThrows ) {
   EXPECT_THROW( pendingWork( Throwing{} ), std::runtime_error );
   EXPECT_EQ( written(), "" );
}

TEST_F( PelrecMessageTest, TakesEveryTypeOfArgument ) {
   static constinit PelrecMessage< 0, "idsi" > all( "%s %s %s %s" );
   all( std::int8_t{ -7 }, 0.25f, "eth1", ~0ull );
   EXPECT_EQ( written(), "0 -7 0.25 eth1 18446744073709551615\n" );
}

TEST_F( PelrecMessageTest, CutsTextToTheRoomThatNumbersLeave ) {
   static constinit PelrecMessage< 0, "siii" > mixed( "%s %s %s %s" );
   mixed( "abcdefghijklmnop", 1, 2, 3 );
   EXPECT_EQ( written(), "0 abcdefghijklmno... 1 2 3\n" );
}

TEST_F( PelrecMessageTest, LeavesLaterTextsWhatEarlierOnesDoNotTake ) {
   static constinit PelrecMessage< 0, "sss" > texts( "%s|%s|%s" );
   texts( "ab", std::string( 50, 'c' ), "de" );
   EXPECT_EQ( written(), "0 ab|" + std::string( 35, 'c' ) + "...|...\n" );
}

template < typename Message, typename... Args >
concept Takes = std::invocable< Message&, Args... >;

TEST_F( PelrecMessageTest, TheCompilerRefusesArgumentsOfOtherTypesOrNumber ) {
   using Message = PelrecMessage< 5, "i" >;
   EXPECT_TRUE( ( Takes< Message, int > ));
   EXPECT_TRUE( ( Takes< Message, bool > ));
   EXPECT_FALSE( ( Takes< Message > ));
   EXPECT_FALSE( ( Takes< Message, int, int > ));
   EXPECT_FALSE( ( Takes< Message, double > ));
   EXPECT_FALSE( ( Takes< Message, const char* > ));
   EXPECT_FALSE( ( Takes< Message, void* > ));
   EXPECT_TRUE( ( Takes< PelrecMessage< 5, "sd" >, std::string, float > ));
   EXPECT_FALSE( ( Takes< PelrecMessage< 5, "sd" >, float, std::string > ));
}

TEST_F( PelrecMessageTest, SurvivesAnAbortInAMappedFile ) {
   const std::string path = testing::TempDir() + "PelrecMessageTest." + std::to_string( getpid() );
   pendingWork( 1 );
   const pid_t child = fork();
   ASSERT_NE( child, -1 );
   if ( child == 0 ) {
      const rlimit noCore{ 0, 0 };
      setrlimit( RLIMIT_CORE, &noCore );
      std::signal( SIGABRT, SIG_DFL );
      Pelrec::trace().fileIs( path );
      pendingWork( 2 );
      static constinit PelrecMessage< 9, "s" > lastWords( "about to %s" );
      lastWords( "fall" );
      std::abort();
   }
   int status = 0;
   ASSERT_EQ( waitpid( child, &status, 0 ), child );
   ASSERT_TRUE( WIFSIGNALED( status ) );
   ASSERT_EQ( WTERMSIG( status ), SIGABRT );
   {
      const Pelrec::ImageFile file( path );
      EXPECT_EQ( writtenIn( file.bytes() ), "5 drainBacklog pending work count: 1\n"
                                            "5 drainBacklog pending work count: 2\n"
                                            "9 about to fall\n" );
   }
   std::remove( path.c_str() );
}

TEST( PelrecMessageFaultTest, NamesWhatIsWrong ) {
   using Kirlog::pelrecMessageFault;
   EXPECT_EQ( pelrecMessageFault( 9, "a %s b %s c %s d %s", "isdi" ), "" );
   EXPECT_EQ( pelrecMessageFault( 0, std::string( 120, 'x' ), "" ), "" );
   EXPECT_EQ( pelrecMessageFault( 10, "x", "" ), "level is not 0 to 9" );
   EXPECT_EQ( pelrecMessageFault( 0, "", "" ), "format is not 1 to 120 bytes long" );
   EXPECT_EQ( pelrecMessageFault( 0, std::string( 121, 'x' ), "" ),
              "format is not 1 to 120 bytes long" );
   EXPECT_EQ( pelrecMessageFault( 0, "%s%s%s%s%s", "iiiii" ), "more than 4 arguments" );
   EXPECT_EQ( pelrecMessageFault( 0, "%s", "u" ), "type letter is not i, d or s" );
   EXPECT_EQ( pelrecMessageFault( 0, "%s %s", "i" ), "type string is not one letter for each %s" );
   EXPECT_EQ( pelrecMessageFault( 0, "%d", "i" ), "type string is not one letter for each %s" );
}

}   // namespace
