// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
// ModelRun: random scripts, carried out by a model and by the real thing side by side; a script on
// which they differ is shrunk to a minimal one.
//
//   Step    what a script consists of: copyable, written with << as one line
//   Model   allows( step ), apply( step ) and text(); copyable, holds nothing real
//   Real    apply( step ) and text(); what it reads back from the real thing
//
// Both texts are compared after each step, and the counted objects when the real thing is gone.
// The scripts run in a child process; when it fails, each in one of its own, so that whatever ends
// it - a broken invariant, a sanitizer's report - is shrunk like any difference. With
// MOX_MODEL_IN_PROCESS set there is no child, for a debugger and for line counts.
#pragma once

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/detail/TestListenerAdapter.h>
#include <rapidcheck/state.h>

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <unordered_map>
#include <utility>
#include <vector>

#include "tests/support/InChild.h"
#include "tests/support/NoneLeftTest.h"
#include "tests/support/TestSeed.h"

namespace TestSupport {

/// How many scripts a run tries, and how many steps the longest has.
struct ModelSize {
   int scripts;
   int steps;
};

template < class Model, class Real >
class StepCommand : public rc::state::Command< Model, Real > {
 public:
   using Step = typename Model::Step;
   explicit StepCommand( const Step& step ) : step_( step ) {}

   void checkPreconditions( const Model& model ) const override { RC_PRE( model.allows( step_ ) ); }
   void apply( Model& model ) const override { model.apply( step_ ); }
   void run( const Model& model, Real& real ) const override {
      const std::string wanted = this->nextState( model ).text();
      real.apply( step_ );
      const std::string got = real.text();
      if ( got != wanted ) {
         std::ostringstream fault;
         fault << "behind " << step_ << "\ngot\n" << got << "\nwanted\n" << wanted;
         throw std::runtime_error( fault.str() );
      }
   }
   void show( std::ostream& out ) const override { out << step_; }

 private:
   const Step step_;
};

template < class Model, class Real >
using ModelScript =
   std::vector< std::shared_ptr< const typename StepCommand< Model, Real >::CommandType > >;

/// A generator of scripts out of a generator of steps.
template < class Model, class Real >
rc::Gen< ModelScript< Model, Real > >
modelScripts( const rc::Gen< typename Model::Step >& steps ) {
   using Script = ModelScript< Model, Real >;
   using Command = typename Script::value_type;
   const auto commands = rc::gen::map( steps, []( const typename Model::Step& step ) -> Command {
      return std::make_shared< const StepCommand< Model, Real > >( step );
   } );
   return rc::state::gen::commands( Model(), [ commands ]( const Model& ) { return commands; } );
}

/// How model and real thing differ on the script; nothing when they agree throughout.
template < class Model, class Real >
std::optional< std::string >
difference( const ModelScript< Model, Real >& script ) {
   const auto before = liveObjects();
   try {
      Real real;
      rc::state::runAll( script, Model(), real );
   } catch ( const std::exception& fault ) {
      return fault.what();
   }
   return liveObjects() == before ? std::nullopt : std::optional( "objects are left" );
}

/// The same with the script in a child of its own, which it may end.
template < class Model, class Real >
std::optional< std::string >
differenceInChild( const ModelScript< Model, Real >& script ) {
   const ChildEnd end = inChild( [ & ] {
      if ( const auto fault = difference< Model, Real >( script ) ) {
         std::fprintf( stderr, "%s\n", fault->c_str() );
         std::_Exit( 1 );
      }
   } );
   return end.returned() ? std::nullopt : std::optional( end.text() );
}

/// One test. `opening`: what stands before every script when it is printed.
template < class Model, class Real >
void
expectModelled( const rc::Gen< typename Model::Step >& steps, ModelSize size,
                const std::string& opening = "" ) {
   const std::uint64_t seed = testSeed();
   SCOPED_TRACE( seedNote( seed ) );
   rc::detail::TestParams params;
   params.seed = seed;
   params.maxSuccess = size.scripts;
   params.maxSize = size.steps;
   const auto scripts = modelScripts< Model, Real >( steps );
   const auto tryAll = [ & ]( const auto& differs ) {
      rc::detail::TestListenerAdapter silent;
      return rc::detail::checkTestable(
         [ & ] { return differs( *scripts ).value_or( "" ); }, rc::detail::TestMetadata(), params,
         silent, std::unordered_map< std::string, rc::detail::Reproduce >() );
   };
   rc::detail::TestResult result = rc::detail::SuccessResult();
   if ( std::getenv( "MOX_MODEL_IN_PROCESS" ) ) {
      result = tryAll( difference< Model, Real > );
   } else {
      // One child for all; only when it does not end well a child for each, to shrink.
      params.disableShrinking = true;
      const ChildEnd end = inChild( [ & ] {
         rc::detail::SuccessResult success;
         if ( !tryAll( difference< Model, Real > ).match( success ) ) {
            std::_Exit( 1 );
         }
      } );
      if ( end.returned() ) {
         return;
      }
      params.disableShrinking = false;
      result = tryAll( differenceInChild< Model, Real > );
      ASSERT_FALSE( result.template is< rc::detail::SuccessResult >() )
         << "fails only where scripts share a process: " << end.text();
   }
   rc::detail::FailureResult failure;
   if ( result.match( failure ) ) {
      std::string script = opening;
      for ( const auto& [ type, text ] : failure.counterExample ) {
         script += text;
      }
      FAIL() << "shrunk script, found behind " << failure.numSuccess << " good ones:\n"
             << script << "\n"
             << failure.description;
   }
   rc::detail::SuccessResult success;
   std::ostringstream other;
   rc::detail::printResultMessage( result, other );
   ASSERT_TRUE( result.match( success ) ) << other.str();
}

/// A generator that calls `make` with one value of each of `fields`; all their values come, however
/// short the script.
template < class Make, class... Fields >
auto
stepsOf( const Make& make, const rc::Gen< Fields >&... fields ) {
   return rc::gen::map(
      rc::gen::resize( rc::kNominalSize, rc::gen::tuple( fields... ) ),
      [ make ]( const std::tuple< Fields... >& all ) { return std::apply( make, all ); } );
}

}   // namespace TestSupport
