// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
#include "agent/Apply.h"

#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <stdexcept>
#include <string>
#include <utility>

#include "Zel/NewEntity.h"
#include "Zel/Trace.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/OperatorNew.h"
#include "tests/unit/agent/ProgramText.h"

namespace Agent {
namespace {

// A reactor that throws what it is told to.
class Hostile : public Zel::PtrInterface::NotifieeConst {
 public:
   static constexpr char zelTypeName[] = "Agent::ApplyTest::Hostile";
   void onAttribute( Zel::AttributeId, const void* ) override { act_(); }

 protected:
   Hostile( const Zel::Ptr< Zel::PtrInterface >& notifier, std::function< void() > act )
       : act_( std::move( act ) ) {
      zelNotifierIs( notifier );
   }

 private:
   const std::function< void() > act_;
};

class ApplyTest : public TestSupport::NoneLeftTest {
 protected:
   static Configuration oneToThree() {
      Configuration configuration{};
      Port& port = configuration.ports.emplace_back();
      port.name = "eth1";
      port.ingress = { { 10, 3001 }, { 11, 3001 }, { 20, 3002 } };
      port.egress = { { 3001, 10 } };
      return configuration;
   }
   std::string programmed() { return textOf( agent_.dataPlane().portProgram( port() ) ); }
   Corvel::IntfId port() { return agent_.ports().id( "eth1" ); }

   ScaleAgent agent_{ 8 };
};

constexpr char kAll[] = "ranges: 10-11>3001 20-20>3002 exact:";

TEST_F( ApplyTest, ProgramsAllThatIsConfigured ) {
   applyConfiguration( agent_, oneToThree() );
   EXPECT_EQ( programmed(), kAll );
   EXPECT_EQ( agent_.stateMachine().undelivered(), 0u );
   const Mox::PortVlanKey egress( port(), Bridging::VlanId( 3001 ) );
   const auto* const status = agent_.acsd().statusDir()->status().record( egress );
   ASSERT_NE( status, nullptr );
   EXPECT_EQ( status->mapping().rawVlanId(), 10 );
}

TEST_F( ApplyTest, TriesAgainWhatFailed ) {
   int left = 2;
   const auto hostile =
      Zel::newEntity< Hostile >( Zel::Ptr< Zel::PtrInterface >( &agent_.scheduleDir() ), [ & ] {
         if ( left-- > 0 ) {
            throw std::runtime_error( "once more" );
         }
      } );
   applyConfiguration( agent_, oneToThree() );
   EXPECT_EQ( programmed(), kAll );
}

// Wherever memory runs out once, all is in force in the end.
TEST_F( ApplyTest, TriesAgainWhatFoundNoMemory ) {
   const Configuration configuration = oneToThree();
   bool refused = true;
   for ( unsigned first = 0; refused; ++first ) {
      ScaleAgent agent( 8 );
      refused = false;
      {
         unsigned request = 0;
         const TestSupport::OperatorNewHook hook( [ & ] {
            if ( request++ == first ) {
               refused = true;
               throw std::bad_alloc();
            }
         } );
         applyConfiguration( agent, configuration );
      }
      EXPECT_EQ( textOf( agent.dataPlane().portProgram( agent.ports().id( "eth1" ) ) ), kAll )
         << "request " << first << " refused";
      EXPECT_EQ( agent.stateMachine().undelivered(), 0u );
   }
}

TEST_F( ApplyTest, SaysHowManyAreUndeliveredWhenItGivesUp ) {
   Zel::traceSinkIs(
      [ this ]( const Zel::TraceLine& ) { agent_.stateMachine().vlanRangeMgrDel(); } );
   Zel::traceLevelsIs( "MoxVlanMappingScaleSm/*" );
   std::string cause;
   try {
      applyConfiguration( agent_, oneToThree() );
   } catch ( const std::runtime_error& error ) {
      cause = error.what();
   }
   Zel::traceLevelsIs( "MoxVlanMappingScaleSm/" );
   Zel::traceSinkIs( {} );
   EXPECT_EQ( cause, "gave up after 3 tries, 3 of 4 mappings are not delivered: "
                     "VlanMappingScaleSlaveSm has no vlanRangeMgr" );
}

TEST_F( ApplyTest, GivesUpWhenMemoryStaysAway ) {
   const Configuration configuration = oneToThree();
   const TestSupport::OperatorNewHook hook( [] { throw std::bad_alloc(); } );
   EXPECT_THROW( applyConfiguration( agent_, configuration ), std::bad_alloc );
}

}   // namespace
}   // namespace Agent
