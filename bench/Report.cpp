// Copyright 2026 The MoxVlanRangeMapping Authors
// SPDX-License-Identifier: Apache-2.0
//
#include "bench/Report.h"

#include <exception>
#include <fstream>
#include <iostream>
#include <map>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "bench/Tables.h"

namespace Bench {
namespace {

constexpr const char* kFigure = "figure";

bool tiny = false;
std::vector< RowFigures > rows;

RowFigures&
rowOf( const Row& row ) {
   for ( RowFigures& known : rows ) {
      if ( known.row.group == row.group && known.row.name == row.name ) {
         return known;
      }
   }
   return rows.emplace_back( RowFigures{ row, {} } );
}

std::string
benchmarkName( const Row& row, const std::string& subject ) {
   return row.group + "/" + row.name + "/" + subject;
}

benchmark::internal::Benchmark*
registerFigure( const Row& row, const std::string& subject, const Measurement& measurement ) {
   rowOf( row ).subjects.push_back( { subject, {} } );
   return benchmark::RegisterBenchmark( benchmarkName( row, subject ).c_str(),
                                        [ measurement ]( benchmark::State& state ) {
                                           state.counters[ kFigure ] = measurement( state );
                                        } )
      ->UseManualTime();
}

// Keeps the figures of every repetition.
class Collector : public benchmark::BenchmarkReporter {
 public:
   bool ReportContext( const Context& ) override { return true; }

   void ReportRuns( const std::vector< Run >& runs ) override {
      for ( const Run& run : runs ) {
         if ( run.run_type == Run::RT_Iteration ) {
            figures_[ run.run_name.function_name ].push_back( run.counters.at( kFigure ) );
         }
      }
   }

   /// Rows of which nothing ran (a filter) are left out.
   std::vector< RowFigures > results() {
      std::vector< RowFigures > results;
      for ( RowFigures row : rows ) {
         for ( SubjectFigures& subject : row.subjects ) {
            subject.figures = figures_[ benchmarkName( row.row, subject.name ) ];
         }
         std::erase_if( row.subjects,
                        []( const auto& subject ) { return subject.figures.empty(); } );
         if ( !row.subjects.empty() ) {
            results.push_back( std::move( row ) );
         }
      }
      return results;
   }

 private:
   std::map< std::string, std::vector< double > > figures_;
};

struct Options {
   std::string json;
   std::string chart;
   std::vector< std::string > library;   // for the benchmark library
};

Options
optionsOf( int argc, char** argv ) {
   Options options;
   options.library = { argv[ 0 ], "--benchmark_enable_random_interleaving=true" };
   std::vector< std::string > rest;
   for ( int i = 1; i < argc; ++i ) {
      const std::string_view argument = argv[ i ];
      if ( argument == "--tiny" ) {
         tiny = true;
      } else if ( argument.starts_with( "--json=" ) ) {
         options.json = argument.substr( argument.find( '=' ) + 1 );
      } else if ( argument.starts_with( "--chart=" ) ) {
         options.chart = argument.substr( argument.find( '=' ) + 1 );
      } else {
         rest.emplace_back( argument );
      }
   }
   options.library.push_back( tiny ? "--benchmark_repetitions=1" : "--benchmark_repetitions=15" );
   options.library.push_back( tiny ? "--benchmark_min_time=0.000001"
                                   : "--benchmark_min_time=0.04" );
   options.library.insert( options.library.end(), rest.begin(), rest.end() );   // the last one wins
   return options;
}

void
writeFile( const std::string& path, const std::string& text ) {
   std::ofstream file( path );
   file << text;
   if ( !file.flush() ) {
      throw std::runtime_error( "cannot write " + path );
   }
}

int
run( int argc, char** argv ) {
   Options options = optionsOf( argc, argv );
   std::vector< char* > arguments;
   for ( std::string& argument : options.library ) {
      arguments.push_back( argument.data() );
   }
   int count = static_cast< int >( arguments.size() );
   benchmark::Initialize( &count, arguments.data() );
   if ( benchmark::ReportUnrecognizedArguments( count, arguments.data() ) ) {
      return 2;
   }
   addRows();
   Collector collector;
   benchmark::RunSpecifiedBenchmarks( &collector );
   const std::vector< RowFigures > results = collector.results();
   std::cout << markdownOf( results );
   if ( !options.json.empty() ) {
      writeFile( options.json, jsonOf( results ) );
   }
   if ( !options.chart.empty() ) {
      writeFile( options.chart, chartOf( results ) );
   }
   return results.empty() ? 1 : 0;
}

}   // namespace

void
measure( const Row& row, const std::string& subject, const Measurement& measurement,
         int repetitions ) {
   const auto registered = registerFigure( row, subject, measurement );
   if ( repetitions > 0 && !tiny ) {
      registered->Repetitions( repetitions );
   }
}

void
measureOnce( const Row& row, const std::string& subject,
             const std::function< double() >& measurement ) {
   registerFigure( row, subject,
                   [ measurement ]( benchmark::State& state ) {
                      double figure = 0;
                      for ( [[maybe_unused]] auto _ : state ) {
                         figure = measurement();
                         state.SetIterationTime( 1 );
                      }
                      return figure;
                   } )
      ->Iterations( 1 )
      ->Repetitions( 1 );
}

bool
tinyRun() {
   return tiny;
}

double
median( std::vector< double > figures ) {
   std::ranges::sort( figures );
   const std::size_t half = figures.size() / 2;
   return figures.size() % 2 == 1 ? figures[ half ] : ( figures[ half - 1 ] + figures[ half ] ) / 2;
}

}   // namespace Bench

int
main( int argc, char** argv ) {
   try {
      return Bench::run( argc, argv );
   } catch ( const std::exception& fault ) {
      std::cerr << argv[ 0 ] << ": " << fault.what() << "\n";
      return 1;
   }
}
