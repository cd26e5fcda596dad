// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
// The sample configurations beside the project arrive at the ranges beside them.
#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <tuple>
#include <vector>

#include <gtest/gtest.h>

#include "agent/config/ConfigurationReader.h"
#include "tests/unit/agent/config/ConfigurationTexts.h"

namespace Agent {
namespace {

std::string
samplePath( const std::string& name ) {
   return std::string( MOX_SAMPLES_DIR ) + '/' + name;
}

// The lines of an expected-*.tsv without its comments.
std::string
expectedRanges( const std::string& name ) {
   std::ifstream file( samplePath( name ) );
   std::string out;
   for ( std::string line; std::getline( file, line ); ) {
      if ( !line.starts_with( '#' ) ) {
         out += line + '\n';
      }
   }
   return out;
}

// The same lines from the mappings: maximal runs, the largest first.
std::string
rangesOf( const ReadResult& result ) {
   if ( !result.configuration ) {
      return findingsOf( result );
   }
   std::ostringstream out;
   for ( const Port& port : result.configuration->ports ) {
      std::vector< std::tuple< int, int, int > > ranges;   // minus size, low, relay
      const std::vector< IngressMapping >& all = port.ingress;
      for ( std::size_t i = 0; i < all.size(); ) {
         std::size_t end = i + 1;
         while ( end < all.size() && all[ end ].relay == all[ i ].relay &&
                 all[ end ].vlan == all[ end - 1 ].vlan + 1 ) {
            ++end;
         }
         ranges.emplace_back( all[ i ].vlan - all[ end - 1 ].vlan, all[ i ].vlan, all[ i ].relay );
         i = end;
      }
      std::sort( ranges.begin(), ranges.end() );
      int rank = 0;
      for ( const auto& [ minusSize, low, relay ] : ranges ) {
         out << port.name << '\t' << ++rank << '\t' << low << '\t' << low - minusSize << '\t'
             << -minusSize << '\t' << relay << '\n';
      }
   }
   return out.str();
}

struct Sample {
   const char* name;
   const char* file;
   const char* expected;
   std::size_t ports;
   std::size_t mappings;
   std::size_t members;
};

std::ostream&
operator<<( std::ostream& out, const Sample& sample ) {
   return out << sample.file;
}

class SampleFile : public testing::TestWithParam< Sample > {};

TEST_P( SampleFile, GivesTheExpectedRanges ) {
   const ReadResult result = readConfiguration( samplePath( GetParam().file ) );
   const std::string expected = expectedRanges( GetParam().expected );
   ASSERT_NE( expected, "" );
   EXPECT_EQ( rangesOf( result ), expected );
}

TEST_P( SampleFile, HasTheCountsThatItsPageTells ) {
   const ReadResult result = readConfiguration( samplePath( GetParam().file ) );
   ASSERT_TRUE( result.configuration ) << findingsOf( result );
   std::size_t mappings = 0;
   std::size_t members = 0;
   for ( const Port& port : result.configuration->ports ) {
      mappings += port.ingress.size();
      members += port.lag ? 1 : 0;
   }
   EXPECT_EQ( result.configuration->ports.size(), GetParam().ports );
   EXPECT_EQ( mappings, GetParam().mappings );
   EXPECT_EQ( members, GetParam().members );
}

INSTANTIATE_TEST_SUITE_P( Samples, SampleFile,
                          testing::Values( Sample{ "SmallIeee", "small-ieee.json",
                                                   "expected-small-ieee.tsv", 7, 126, 0 },
                                           Sample{ "SmallOpenConfig", "small-openconfig.json",
                                                   "expected-small-openconfig.tsv", 7, 242, 2 },
                                           Sample{ "Switch52Port", "switch-52port.json",
                                                   "expected-52port.tsv", 52, 36775, 0 } ),
                          []( const auto& sample ) { return std::string( sample.param.name ); } );

}   // namespace
}   // namespace Agent
